// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/posix/file.h"
#include "core/platform/posix/systemerror.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

/// Owner, permissions, extended attributes, and the access control list, which is an attribute too (acl(5)).
namespace ravlin::platform {
namespace {

constexpr char AccessList[] = "system.posix_acl_access";

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

std::optional<QByteArray> attribute(int descriptor, const QByteArray &name)
{
    return readGrowing(
        [&](char *buffer, size_t size) { return ::fgetxattr(descriptor, name.constData(), buffer, size); });
}

/// Whether we may not set the attribute here. Losing it is no reason to fail as a whole.
bool isRefusal(int number)
{
    return number == EOPNOTSUPP || number == EPERM || number == EACCES || number == EINVAL;
}

Result<void> copyAttributes(int from, const std::vector<QByteArray> &names, int to, const QString &path)
{
    for (const QByteArray &name : names) {
        const auto value = attribute(from, name);
        if (!value)
            continue; // removed meanwhile, or not for us to read
        const auto size = static_cast<size_t>(value->size());
        if (::fsetxattr(to, name.constData(), value->constData(), size, 0) != 0 && !isRefusal(errno))
            return systemError(errno, path, "fsetxattr");
    }
    return {};
}

/// A new file may have inherited an access control list from its folder that the old one does not have.
Result<void> dropInheritedAccessList(const std::vector<QByteArray> &wanted, int to, const QString &path)
{
    if (std::find(wanted.begin(), wanted.end(), AccessList) != wanted.end())
        return {};
    if (::fremovexattr(to, AccessList) != 0 && errno != ENODATA && errno != EOPNOTSUPP)
        return systemError(errno, path, "fremovexattr");
    return {};
}

} // namespace

Result<void> copyMetadata(int from, int to, const QString &path)
{
    struct stat wanted = {};
    struct stat present = {};
    if (::fstat(from, &wanted) != 0 || ::fstat(to, &present) != 0)
        return systemError(errno, path, "fstat");

    const bool otherOwner = wanted.st_uid != present.st_uid || wanted.st_gid != present.st_gid;
    if (otherOwner && ::fchown(to, wanted.st_uid, wanted.st_gid) != 0)
        return systemError(errno, path, "fchown");

    // In this order: with an access control list in place fchmod would set the list's mask instead of the group's bits,
    // and a change of owner or permissions may clear attributes.
    const std::vector<QByteArray> names = attributeNames(from);
    if (auto dropped = dropInheritedAccessList(names, to, path); !dropped)
        return dropped;
    if (::fchmod(to, wanted.st_mode & 07777U) != 0)
        return systemError(errno, path, "fchmod");
    return copyAttributes(from, names, to, path);
}

} // namespace ravlin::platform
