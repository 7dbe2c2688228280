// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/posix/exclusiverename.h"

#include "core/platform/posix/systemerror.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

namespace ravlin::platform {
namespace {

/// Runs a call and returns its errno value, 0 for success.
template <typename Call>
int numberOf(Call call)
{
    return uninterrupted(call) == 0 ? 0 : errno;
}

/// What link() fails with if there are no hard links, and for folders.
bool cannotLink(int number)
{
    return isUnknownHere(number) || number == EPERM || number == EMLINK || number == EACCES;
}

} // namespace

bool isUnknownHere(int number)
{
    return number == EINVAL || number == ENOSYS || number == EOPNOTSUPP;
}

int renameInOneStep(NameAt from, NameAt to)
{
    return numberOf([&] { return ::renameat2(from.folder, from.name, to.folder, to.name, RENAME_NOREPLACE); });
}

int renameByLinking(NameAt from, NameAt to)
{
    if (const int number = numberOf([&] { return ::linkat(from.folder, from.name, to.folder, to.name, 0); });
        number != 0)
        return number;
    const int number = numberOf([&] { return ::unlinkat(from.folder, from.name, 0); });
    if (number != 0)
        ::unlinkat(to.folder, to.name, 0); // or the file would have two names
    return number;
}

int renameAfterLooking(NameAt from, NameAt to)
{
    struct stat status = {};
    const int looked = numberOf([&] { return ::fstatat(to.folder, to.name, &status, AT_SYMLINK_NOFOLLOW); });
    if (looked == 0)
        return EEXIST;
    if (looked != ENOENT)
        return looked;
    return numberOf([&] { return ::renameat(from.folder, from.name, to.folder, to.name); });
}

int renameExclusively(NameAt from, NameAt to)
{
    int number = renameInOneStep(from, to);
    if (!isUnknownHere(number))
        return number;
    number = renameByLinking(from, to);
    return cannotLink(number) ? renameAfterLooking(from, to) : number;
}

} // namespace ravlin::platform
