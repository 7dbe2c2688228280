// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/nodes.h"

#include "core/platform/posix/file.h"
#include "core/platform/posix/systemerror.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

namespace ravlin::platform {

Result<Node> nodeAt(const QString &path)
{
    struct stat status = {};
    const QByteArray native = encodePath(path);
    if (native.contains('\0'))
        return systemError(EINVAL, path, "lstat");
    if (::lstat(native.constData(), &status) != 0)
        return systemError(errno, path, "lstat");
    return Node{kindOfMode(status.st_mode), fileInfo(status)};
}

bool isTaken(const QString &path)
{
    const Result<Node> node = nodeAt(path);
    return node || node.error().code != ErrorCode::NotFound;
}

bool isOnReadOnlyDrive(const QString &path)
{
    struct statvfs status = {};
    return ::statvfs(encodePath(folderOf(path)).constData(), &status) == 0 && (status.f_flag & ST_RDONLY) != 0;
}

} // namespace ravlin::platform
