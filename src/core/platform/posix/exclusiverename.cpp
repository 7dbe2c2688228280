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

bool isUnknownHere(int number)
{
    return number == EINVAL || number == ENOSYS || number == EOPNOTSUPP;
}

/// What link() fails with if there are no hard links, and for folders.
bool cannotLink(int number)
{
    return isUnknownHere(number) || number == EPERM || number == EMLINK || number == EACCES;
}

} // namespace

int renameInOneStep(const char *from, const char *to)
{
    return numberOf([&] { return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE); });
}

int renameByLinking(const char *from, const char *to)
{
    if (const int number = numberOf([&] { return ::link(from, to); }); number != 0)
        return number;
    const int number = numberOf([&] { return ::unlink(from); });
    if (number != 0)
        ::unlink(to); // or the file would have two names
    return number;
}

int renameAfterLooking(const char *from, const char *to)
{
    struct stat status = {};
    const int looked = numberOf([&] { return ::lstat(to, &status); });
    if (looked == 0)
        return EEXIST;
    if (looked != ENOENT)
        return looked;
    return numberOf([&] { return std::rename(from, to); });
}

int renameExclusively(const char *from, const char *to)
{
    int number = renameInOneStep(from, to);
    if (isUnknownHere(number))
        number = renameByLinking(from, to);
    else
        return number;
    return cannotLink(number) ? renameAfterLooking(from, to) : number;
}

} // namespace ravlin::platform
