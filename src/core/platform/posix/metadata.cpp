// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/posix/metadata.h"

#include "core/platform/posix/systemerror.h"

#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace ravlin::platform {
namespace {

constexpr char AccessList[] = "system.posix_acl_access";
constexpr char DefaultAccessList[] = "system.posix_acl_default";

/// Reads something of unknown size that may grow between the query of its size and the read. The callable takes a
/// buffer and its size and returns the size like flistxattr(2). Returns nothing on failure.
template <typename Read>
std::optional<QByteArray> readGrowing(Read read)
{
    while (true) {
        const ssize_t size = read(nullptr, size_t(0));
        if (size < 0)
            return std::nullopt;
        QByteArray bytes(size, Qt::Uninitialized);
        if (size == 0)
            return bytes;
        const ssize_t got = read(bytes.data(), static_cast<size_t>(size));
        if (got >= 0) {
            bytes.truncate(got);
            return bytes;
        }
        if (errno != ERANGE)
            return std::nullopt;
    }
}

/// The names of all attributes; none if the file system has no attributes.
std::vector<QByteArray> attributeNames(int descriptor)
{
    const auto list = readGrowing([&](char *buffer, size_t size) { return ::flistxattr(descriptor, buffer, size); });
    std::vector<QByteArray> names;
    for (qsizetype start = 0; list && start < list->size();) {
        const QByteArray name(list->constData() + start);
        start += name.size() + 1;
        names.push_back(name);
    }
    return names;
}

std::optional<QByteArray> attribute(int descriptor, const char *name)
{
    return readGrowing([&](char *buffer, size_t size) { return ::fgetxattr(descriptor, name, buffer, size); });
}

/// Gives to the attribute that from has. One that may not be read or set is left out.
Result<void> copyAttribute(int from, const char *name, int to, const QString &path)
{
    const auto value = attribute(from, name);
    if (!value)
        return {}; // removed meanwhile, or not for us to read
    const auto size = static_cast<size_t>(value->size());
    if (::fsetxattr(to, name, value->constData(), size, 0) != 0 && isDamage(errno))
        return systemError(errno, path, "fsetxattr");
    return {};
}

bool isAccessList(const QByteArray &name)
{
    return name == AccessList || name == DefaultAccessList;
}

/// Gives to the access list that from has, or none: a new file may have inherited one from its folder.
Result<void> copyAccessList(int from, const char *name, int to, const QString &path)
{
    if (attribute(from, name))
        return copyAttribute(from, name, to, path);
    const bool isGone = ::fremovexattr(to, name) == 0 || errno == ENODATA || errno == EOPNOTSUPP;
    return isGone ? Result<void>() : systemError(errno, path, "fremovexattr");
}

/// The kinds of file systems that keep each file's own owner and permissions. On all others these may be made up, the
/// same for every file: memory sticks, foreign systems' drives, most of what comes over a network or from a program.
constexpr std::array<quint32, 12> SystemsWithOwners{
    0xef53,     // ext2 to ext4
    0x58465342, // XFS
    0x9123683e, // btrfs
    0xf2f52010, // F2FS
    0x2fc12fc1, // ZFS
    0xca451a4e, // bcachefs
    0x3153464a, // JFS
    0x52654973, // ReiserFS
    0x3434,     // NILFS
    0x01021994, // tmpfs
    0x794c7630, // overlayfs
    0x6969,     // NFS
};

bool keepsOwners(int descriptor)
{
    struct statfs status = {};
    if (::fstatfs(descriptor, &status) != 0)
        return false;
    return std::ranges::find(SystemsWithOwners, static_cast<quint32>(status.f_type)) != SystemsWithOwners.end();
}

} // namespace

bool isDamage(int number)
{
    return number == ENOSPC || number == EDQUOT || number == EIO;
}

Result<void> copyOwner(int from, int to, const QString &path)
{
    struct stat wanted = {};
    struct stat present = {};
    if (::fstat(from, &wanted) != 0 || ::fstat(to, &present) != 0)
        return systemError(errno, path, "fstat");
    // One by one: a group can often be given although the owner cannot. The group first, as long as the file is ours.
    int number = 0;
    if (wanted.st_gid != present.st_gid && ::fchown(to, static_cast<uid_t>(-1), wanted.st_gid) != 0)
        number = errno;
    if (wanted.st_uid != present.st_uid && ::fchown(to, wanted.st_uid, static_cast<gid_t>(-1)) != 0)
        number = errno;
    return number == 0 ? Result<void>() : systemError(number, path, "fchown");
}

Result<void> copyAttributes(int from, int to, const QString &path)
{
    for (const QByteArray &name : attributeNames(from)) {
        if (isAccessList(name))
            continue;
        if (auto copied = copyAttribute(from, name.constData(), to, path); !copied)
            return copied;
    }
    return {};
}

Result<void> copyPermissions(int from, int to, const QString &path)
{
    struct stat wanted = {};
    struct stat present = {};
    if (::fstat(from, &wanted) != 0 || ::fstat(to, &present) != 0)
        return systemError(errno, path, "fstat");
    mode_t mode = wanted.st_mode & 07777U;
    if (wanted.st_uid != present.st_uid)
        mode &= ~static_cast<mode_t>(S_ISUID);
    if (wanted.st_gid != present.st_gid)
        mode &= ~static_cast<mode_t>(S_ISGID);
    // In this order: with an access list in place fchmod would set the list's mask instead of the group's bits.
    const bool hadList = attribute(to, AccessList).has_value();
    if (hadList && !attribute(from, AccessList)) {
        if (auto dropped = copyAccessList(from, AccessList, to, path); !dropped)
            return dropped;
    }
    if (::fchmod(to, mode) != 0)
        return systemError(errno, path, "fchmod");
    if (attribute(from, AccessList)) {
        if (auto copied = copyAttribute(from, AccessList, to, path); !copied)
            return copied;
    }
    return S_ISDIR(wanted.st_mode) ? copyAccessList(from, DefaultAccessList, to, path) : Result<void>();
}

Result<void> copyTimes(int from, int to, const QString &path)
{
    struct stat wanted = {};
    if (::fstat(from, &wanted) != 0)
        return systemError(errno, path, "fstat");
    const timespec times[2] = {wanted.st_atim, wanted.st_mtim};
    if (::futimens(to, times) != 0)
        return systemError(errno, path, "futimens");
    return {};
}

Result<bool> isPrivateFile(int descriptor, const QString &path)
{
    constexpr mode_t OwnerOnly = 0600;
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        return systemError(errno, path, "fstat");
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && (status.st_mode & 07777U) == OwnerOnly &&
           status.st_nlink == 1 && keepsOwners(descriptor);
}

bool mayBeOwnFolder(int descriptor)
{
    constexpr mode_t Others = 0077;
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0)
        return false;
    return !keepsOwners(descriptor) || (status.st_uid == ::geteuid() && (status.st_mode & Others) == 0);
}

} // namespace ravlin::platform
