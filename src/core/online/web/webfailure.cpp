// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/web/webfailure.h"

#include "core/app/idiomas.h"

namespace ravlin {

QString webFailureText(const Captions &captions, WebFailureKind kind)
{
    switch (kind) {
    case WebFailureKind::NoConnection:
        return captions.text(Text::LookupNoConnection);
    case WebFailureKind::Proxy:
        return captions.text(Text::LookupProxy);
    case WebFailureKind::TimedOut:
        return captions.text(Text::LookupTimedOut);
    case WebFailureKind::TooLarge:
        return captions.text(Text::LookupTooLarge);
    case WebFailureKind::TooManyRedirects:
        return captions.text(Text::LookupTooManyRedirects);
    case WebFailureKind::InsecureRedirect:
        return captions.text(Text::LookupInsecureRedirect);
    case WebFailureKind::ForeignRedirect:
        return captions.text(Text::LookupForeignRedirect);
    case WebFailureKind::BadRedirect:
        return captions.text(Text::LookupBadRedirect);
    case WebFailureKind::Certificate:
        return captions.text(Text::LookupCertificate);
    case WebFailureKind::HttpStatus:
        return captions.text(Text::LookupHttpStatus);
    case WebFailureKind::Garbage:
        return captions.text(Text::LookupGarbage);
    case WebFailureKind::Incomplete:
        return captions.text(Text::LookupIncomplete);
    }
    Q_UNREACHABLE();
    return {};
}

QString withDetail(const QString &sentence, const QString &detail)
{
    return detail.isEmpty() ? sentence : sentence + QStringLiteral(" (") + detail + u')';
}

} // namespace ravlin
