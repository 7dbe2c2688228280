// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/idiomas.h"
#include "core/online/web/webget.h"

#include <QString>

#include <tl/expected.hpp>

namespace ravlin {

/// Why a CD database gave no answer that is of use, for callers to branch on.
enum class LookupFailureKind
{
    BadAddress,       ///< the server's address is none
    BadContents,      ///< the files' playing times make no disc
    NoConnection,     ///< no such host, or it does not take calls
    Proxy,            ///< the proxy between does not let us through
    TimedOut,         ///< no whole answer in time
    TooLarge,         ///< more than an answer can be
    TooManyRedirects, ///< sent from one address to the next
    InsecureRedirect, ///< sent from an encrypted address to one that is not, or to what is no web address
    Certificate,      ///< the server cannot prove who it is
    HttpStatus,       ///< the web server refuses
    Garbage,          ///< the answer makes no sense
    Incomplete,       ///< the answer ends too early
    NoEntry,          ///< the entry that was offered is not there (401)
    BrokenEntry,      ///< the entry is damaged (403)
    ServerTrouble,    ///< the database has a problem (402, 530)
    NotGreeted,       ///< the database wants to know who asks (409)
    Refused,          ///< the database does not understand the question (500 and others)
};

/// A failure as a value: the kind and detail in plain English or in the server's words.
struct LookupFailure
{
    LookupFailureKind kind = LookupFailureKind::Garbage;
    QString detail;
};

template <typename T>
using LookupResult = tl::expected<T, LookupFailure>;

/// What kept an answer from coming at all.
LookupFailure lookupFailureOf(const WebFailure &failure);

/// One sentence for the user in the interface language, the detail behind it in brackets.
QString lookupFailureText(const Captions &captions, const LookupFailure &failure);

} // namespace ravlin
