// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/lookupfailure.h"

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

Text textOf(LookupFailureKind kind)
{
    switch (kind) {
    case LookupFailureKind::BadAddress:
        return Text::LookupBadAddress;
    case LookupFailureKind::BadContents:
        return Text::LookupBadContents;
    case LookupFailureKind::NoConnection:
        return Text::LookupNoConnection;
    case LookupFailureKind::Proxy:
        return Text::LookupProxy;
    case LookupFailureKind::TimedOut:
        return Text::LookupTimedOut;
    case LookupFailureKind::TooLarge:
        return Text::LookupTooLarge;
    case LookupFailureKind::TooManyRedirects:
        return Text::LookupTooManyRedirects;
    case LookupFailureKind::InsecureRedirect:
        return Text::LookupInsecureRedirect;
    case LookupFailureKind::Certificate:
        return Text::LookupCertificate;
    case LookupFailureKind::HttpStatus:
        return Text::LookupHttpStatus;
    case LookupFailureKind::Garbage:
        return Text::LookupGarbage;
    case LookupFailureKind::Incomplete:
        return Text::LookupIncomplete;
    case LookupFailureKind::NoEntry:
        return Text::LookupNoEntry;
    case LookupFailureKind::BrokenEntry:
        return Text::LookupBrokenEntry;
    case LookupFailureKind::ServerTrouble:
        return Text::LookupServerTrouble;
    case LookupFailureKind::NotGreeted:
        return Text::LookupNotGreeted;
    case LookupFailureKind::Refused:
        return Text::LookupRefused;
    }
    Q_UNREACHABLE();
    return {};
}

LookupFailureKind kindOf(WebFailureKind kind)
{
    switch (kind) {
    case WebFailureKind::NoConnection:
        return LookupFailureKind::NoConnection;
    case WebFailureKind::Proxy:
        return LookupFailureKind::Proxy;
    case WebFailureKind::TimedOut:
        return LookupFailureKind::TimedOut;
    case WebFailureKind::TooLarge:
        return LookupFailureKind::TooLarge;
    case WebFailureKind::TooManyRedirects:
        return LookupFailureKind::TooManyRedirects;
    case WebFailureKind::InsecureRedirect:
        return LookupFailureKind::InsecureRedirect;
    case WebFailureKind::Certificate:
        return LookupFailureKind::Certificate;
    case WebFailureKind::HttpStatus:
        return LookupFailureKind::HttpStatus;
    case WebFailureKind::Garbage:
        return LookupFailureKind::Garbage;
    case WebFailureKind::Incomplete:
        return LookupFailureKind::Incomplete;
    }
    Q_UNREACHABLE();
    return {};
}

} // namespace

LookupFailure lookupFailureOf(const WebFailure &failure)
{
    return {kindOf(failure.kind), failure.detail};
}

QString lookupFailureText(const Captions &captions, const LookupFailure &failure)
{
    const QString sentence = captions.text(textOf(failure.kind));
    return failure.detail.isEmpty() ? sentence : sentence + u" ("_s + failure.detail + u')';
}

} // namespace ravlin
