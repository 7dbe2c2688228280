// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/nodes.h"

#include "core/platform/posix/file.h"
#include "core/platform/posix/systemerror.h"

#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <array>

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

bool isOnNetwork(const QString &path)
{
    // NFS, SMB (three of its drivers), AFS, 9P, Coda, FUSE, shared folders of virtual machines; see statfs(2).
    constexpr std::array<quint32, 9> Kinds{
        0x6969, 0x517B, 0xFF53'4D42, 0xFE53'4D42, 0x5346'414F, 0x0102'1997, 0x7375'7245, 0x6573'5546, 0x786F'4256};
    struct statfs status = {};
    return ::statfs(encodePath(folderOf(path)).constData(), &status) == 0 &&
           std::ranges::find(Kinds, static_cast<quint32>(status.f_type)) != Kinds.end();
}

} // namespace ravlin::platform
