// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/lookupfailure.h"

#include "core/app/idiomas.h"

namespace ravlin {

namespace {

QString sentenceOf(const Captions &captions, LookupFailureKind kind)
{
    switch (kind) {
    case LookupFailureKind::BadAddress:
        return captions.text(Text::LookupBadAddress);
    case LookupFailureKind::BadContents:
        return captions.text(Text::LookupBadContents);
    case LookupFailureKind::NoEntry:
        return captions.text(Text::LookupNoEntry);
    case LookupFailureKind::BrokenEntry:
        return captions.text(Text::LookupBrokenEntry);
    case LookupFailureKind::ServerTrouble:
        return captions.text(Text::LookupServerTrouble);
    case LookupFailureKind::NotGreeted:
        return captions.text(Text::LookupNotGreeted);
    case LookupFailureKind::Refused:
        return captions.text(Text::LookupRefused);
    default:
        return webFailureText(captions, static_cast<WebFailureKind>(kind));
    }
}

} // namespace

LookupFailure lookupFailureOf(const WebFailure &failure)
{
    return {static_cast<LookupFailureKind>(failure.kind), failure.detail};
}

QString lookupFailureText(const Captions &captions, const LookupFailure &failure)
{
    return withDetail(sentenceOf(captions, failure.kind), failure.detail);
}

} // namespace ravlin
