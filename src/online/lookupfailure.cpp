#include "online/lookupfailure.h"

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

} // namespace

QString lookupFailureText(const Captions &captions, const LookupFailure &failure)
{
    const QString sentence = captions.text(textOf(failure.kind));
    return failure.detail.isEmpty() ? sentence : sentence + u" ("_s + failure.detail + u')';
}

} // namespace ravlin
