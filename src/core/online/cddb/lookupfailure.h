// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/web/webfailure.h"

#include <QString>

#include <tl/expected.hpp>

namespace ravlin {

/// Why a CD database gave no usable answer, for callers to branch on. Extends WebFailureKind, whose values it keeps.
enum class LookupFailureKind
{
    NoConnection = int(WebFailureKind::NoConnection),
    Proxy = int(WebFailureKind::Proxy),
    TimedOut = int(WebFailureKind::TimedOut),
    TooLarge = int(WebFailureKind::TooLarge),
    TooManyRedirects = int(WebFailureKind::TooManyRedirects),
    InsecureRedirect = int(WebFailureKind::InsecureRedirect),
    ForeignRedirect = int(WebFailureKind::ForeignRedirect),
    BadRedirect = int(WebFailureKind::BadRedirect),
    Certificate = int(WebFailureKind::Certificate),
    HttpStatus = int(WebFailureKind::HttpStatus),
    Garbage = int(WebFailureKind::Garbage),       ///< also: the answer makes no sense
    Incomplete = int(WebFailureKind::Incomplete), ///< also: the end mark is missing
    BadAddress,                                   ///< the server's address is not one
    BadContents,                                  ///< the files' playing times do not make a disc
    NoEntry,                                      ///< the entry that was offered is not there (401)
    BrokenEntry,                                  ///< the entry is damaged (403)
    ServerTrouble,                                ///< the database has a problem (402, 530)
    NotGreeted,                                   ///< the database wants to know who asks (409)
    Refused,                                      ///< the database does not understand the question (500 and others)
};

/// A failure as a value.
struct LookupFailure
{
    LookupFailureKind kind = LookupFailureKind::Garbage;
    QString detail; ///< plain English, or the server's words
};

template <typename T>
using LookupResult = tl::expected<T, LookupFailure>;

/// A failure to get an answer at all.
LookupFailure lookupFailureOf(const WebFailure &failure);

/// One sentence for the user in the interface language, followed by the detail in brackets.
QString lookupFailureText(const Captions &captions, const LookupFailure &failure);

} // namespace ravlin
