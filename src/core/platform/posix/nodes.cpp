// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/nodes.h"

#include "core/platform/posix/file.h"
#include "core/platform/posix/systemerror.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <climits>

namespace ravlin::platform {
namespace {

constexpr char AccessList[] = "system.posix_acl_access";
constexpr char DefaultAccessList[] = "system.posix_acl_default";

NodeKind kindOf(mode_t mode)
{
    if (S_ISREG(mode))
        return NodeKind::File;
    if (S_ISDIR(mode))
        return NodeKind::Folder;
    return S_ISLNK(mode) ? NodeKind::Link : NodeKind::Other;
}

/// Failures that must not pass in silence; all others mean that attributes are refused.
bool isDamage(int number)
{
    return number == ENOSPC || number == EDQUOT || number == EIO || number == ENOENT;
}

std::vector<QByteArray> attributeNames(const char *path)
{
    QByteArray list(64 * 1024, '\0'); // the system's limit
    const ssize_t size = ::llistxattr(path, list.data(), static_cast<size_t>(list.size()));
    std::vector<QByteArray> names;
    for (ssize_t start = 0; start < size;) {
        const QByteArray name(list.constData() + start);
        start += name.size() + 1;
        names.push_back(name);
    }
    return names;
}

Result<void> takeExtendedAttributes(const char *from, const char *to, const QString &path)
{
    const std::vector<QByteArray> names = attributeNames(from);
    // A new file may have inherited an access control list from its folder that the other does not have.
    for (const char *list : {AccessList, DefaultAccessList}) {
        if (std::find(names.begin(), names.end(), list) == names.end())
            ::lremovexattr(to, list);
    }
    for (const QByteArray &name : names) {
        const ssize_t size = ::lgetxattr(from, name.constData(), nullptr, 0);
        QByteArray value(std::max<ssize_t>(size, 0), Qt::Uninitialized);
        const ssize_t got = ::lgetxattr(from, name.constData(), value.data(), static_cast<size_t>(value.size()));
        if (size < 0 || got < 0)
            continue; // removed meanwhile, or not for us to read
        if (::lsetxattr(to, name.constData(), value.constData(), static_cast<size_t>(got), 0) != 0 && isDamage(errno))
            return systemError(errno, path, "lsetxattr");
    }
    return {};
}

} // namespace

Result<Node> nodeAt(const QString &path)
{
    struct stat status = {};
    const QByteArray native = encodePath(path);
    if (native.contains('\0'))
        return systemError(EINVAL, path, "lstat");
    if (::lstat(native.constData(), &status) != 0)
        return systemError(errno, path, "lstat");
    return Node{kindOf(status.st_mode), fileInfo(status)};
}

bool isTaken(const QString &path)
{
    const Result<Node> node = nodeAt(path);
    return node || node.error().code != ErrorCode::NotFound;
}

Result<void> copyLink(const QString &from, const QString &to)
{
    QByteArray target(PATH_MAX, '\0');
    const ssize_t size = ::readlink(encodePath(from).constData(), target.data(), static_cast<size_t>(target.size()));
    if (size < 0)
        return systemError(errno, from, "readlink");
    target.truncate(size);
    if (::symlink(target.constData(), encodePath(to).constData()) != 0)
        return systemError(errno, to, "symlink");
    return {};
}

Result<void> takeAttributes(const QString &from, const QString &to)
{
    const QByteArray source = encodePath(from);
    const QByteArray target = encodePath(to);
    struct stat wanted = {};
    struct stat present = {};
    if (::lstat(source.constData(), &wanted) != 0)
        return systemError(errno, from, "lstat");
    if (::lstat(target.constData(), &present) != 0)
        return systemError(errno, to, "lstat");

    mode_t mode = wanted.st_mode & 07777U;
    if (wanted.st_gid != present.st_gid && ::lchown(target.constData(), static_cast<uid_t>(-1), wanted.st_gid) != 0)
        mode &= ~static_cast<mode_t>(S_ISGID);
    if (wanted.st_uid != present.st_uid && ::lchown(target.constData(), wanted.st_uid, static_cast<gid_t>(-1)) != 0)
        mode &= ~static_cast<mode_t>(S_ISUID);
    // The permissions first: with an access control list in place they would set its mask.
    if (!S_ISLNK(wanted.st_mode) && ::chmod(target.constData(), mode) != 0 && isDamage(errno))
        return systemError(errno, to, "chmod");
    if (auto taken = takeExtendedAttributes(source.constData(), target.constData(), to); !taken)
        return taken;
    const timespec times[2] = {wanted.st_atim, wanted.st_mtim};
    if (::utimensat(AT_FDCWD, target.constData(), times, AT_SYMLINK_NOFOLLOW) != 0 && isDamage(errno))
        return systemError(errno, to, "utimensat");
    return {};
}

void forgetCached(const QString &path)
{
    const int descriptor = ::open(encodePath(path).constData(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (descriptor < 0)
        return;
    ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_DONTNEED);
    ::close(descriptor);
}

} // namespace ravlin::platform
