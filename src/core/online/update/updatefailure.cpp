// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/updatefailure.h"

#include "core/app/idiomas.h"

namespace ravlin {

namespace {

QString sentenceOf(const Captions &captions, const UpdateFailure &failure)
{
    switch (failure.kind) {
    case UpdateFailureKind::Web:
        return webFailureText(captions, failure.web);
    case UpdateFailureKind::File:
        return captions.errorText(failure.file);
    case UpdateFailureKind::NoAddress:
        return captions.text(Text::UpdateByPackages);
    case UpdateFailureKind::BadAddress:
        return captions.text(Text::UpdateBadAddress);
    case UpdateFailureKind::BadVersionFile:
        return captions.text(Text::UpdateBadVersionFile);
    case UpdateFailureKind::BadName:
        return captions.text(Text::UpdateBadName);
    case UpdateFailureKind::BadLocation:
        return captions.text(Text::UpdateBadLocation);
    case UpdateFailureKind::BadChecksum:
        return captions.text(Text::UpdateBadChecksum);
    case UpdateFailureKind::WrongChecksum:
        return captions.text(Text::UpdateWrongChecksum);
    }
    Q_UNREACHABLE();
    return {};
}

bool isOfOneAddress(WebFailureKind kind)
{
    return kind == WebFailureKind::HttpStatus || kind == WebFailureKind::TooLarge ||
           kind == WebFailureKind::TooManyRedirects || kind == WebFailureKind::InsecureRedirect ||
           kind == WebFailureKind::ForeignRedirect || kind == WebFailureKind::BadRedirect;
}

} // namespace

UpdateFailure UpdateFailure::ofWeb(const WebFailure &failure)
{
    return {.kind = UpdateFailureKind::Web, .detail = failure.detail, .web = failure.kind};
}

UpdateFailure UpdateFailure::ofFile(const Error &error)
{
    return {.kind = UpdateFailureKind::File, .detail = error.path, .file = error.code};
}

bool UpdateFailure::isOfOneFile() const
{
    switch (kind) {
    case UpdateFailureKind::Web:
        return isOfOneAddress(web);
    case UpdateFailureKind::File:
        return file == ErrorCode::AlreadyExists || file == ErrorCode::NotAFile;
    case UpdateFailureKind::NoAddress:
    case UpdateFailureKind::BadAddress:
    case UpdateFailureKind::BadVersionFile:
        return false;
    case UpdateFailureKind::BadName:
    case UpdateFailureKind::BadLocation:
    case UpdateFailureKind::BadChecksum:
    case UpdateFailureKind::WrongChecksum:
        return true;
    }
    Q_UNREACHABLE();
    return false;
}

QString updateFailureText(const Captions &captions, const UpdateFailure &failure)
{
    return withDetail(sentenceOf(captions, failure), failure.detail);
}

} // namespace ravlin
