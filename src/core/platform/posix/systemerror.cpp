// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/posix/systemerror.h"

#include <system_error>

namespace ravlin::platform {
namespace {

ErrorCode codeFor(int number)
{
    switch (number) {
    case ENOENT:
    case ENOTDIR:
        return ErrorCode::NotFound;
    case EISDIR:
    case ELOOP:
    case ENXIO:
    case ENODEV:
        return ErrorCode::NotAFile;
    case EACCES:
    case EPERM:
    case ETXTBSY:
        return ErrorCode::AccessDenied;
    case EROFS:
        return ErrorCode::ReadOnlyDrive;
    case ENOSPC:
    case EDQUOT:
        return ErrorCode::NoSpace;
    case EFBIG:
        return ErrorCode::FileSizeLimit;
    case EEXIST:
    case ENOTEMPTY:
        return ErrorCode::AlreadyExists;
    case EINVAL:
        return ErrorCode::InvalidArgument;
    case ENAMETOOLONG:
        return ErrorCode::NameTooLong;
    case EXDEV:
    case ENOSYS:
    case ENOLCK:
    case EOPNOTSUPP:
        return ErrorCode::Unsupported;
    default:
        return ErrorCode::Io;
    }
}

} // namespace

tl::unexpected<Error> systemError(int number, const QString &path, const char *call)
{
    // std::generic_category instead of strerror, which is not thread-safe.
    const std::string text = std::generic_category().message(number);
    return tl::unexpected(
        Error{codeFor(number), path, QString::fromLatin1(call) + QStringLiteral(": ") + QString::fromStdString(text)});
}

} // namespace ravlin::platform
