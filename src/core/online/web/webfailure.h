// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

namespace ravlin {

class Captions;

/// Why there is no complete answer.
enum class WebFailureKind
{
    NoConnection,     ///< no such host, or it refuses connections
    Proxy,            ///< the proxy in between refuses
    TimedOut,         ///< no complete answer in time
    TooLarge,         ///< over the size limit
    TooManyRedirects, ///< sent from one address to the next
    InsecureRedirect, ///< sent from an encrypted address to one that is not
    ForeignRedirect,  ///< sent to an address that is not on the web
    BadRedirect,      ///< sent to nowhere, or to something that is no address
    Certificate,      ///< the server cannot prove its identity
    HttpStatus,       ///< the web server refuses
    Garbage,          ///< the answer is not HTTP, or not what was asked for
    Incomplete,       ///< the answer ends too early
};

struct WebFailure
{
    WebFailureKind kind = WebFailureKind::Garbage;
    QString detail; ///< plain English, or the server's words
    int status = 0; ///< HTTP status; 0 if there was none
};

/// One sentence for the user in the interface language.
QString webFailureText(const Captions &captions, WebFailureKind kind);

/// The sentence, followed by the detail in brackets if there is one.
QString withDetail(const QString &sentence, const QString &detail);

} // namespace ravlin
