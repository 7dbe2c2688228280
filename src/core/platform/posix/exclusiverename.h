// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Renaming that never replaces another file, by whatever means the file system has. Each function returns 0 or an
/// errno value, EEXIST if the new name is taken.
namespace ravlin::platform {

/// A name, in the system's bytes, in an open folder. AT_FDCWD for paths.
struct NameAt
{
    int folder;
    const char *name;
};

/// The best of those below that the file system supports. Both folders should be open: some ways take two steps.
int renameExclusively(NameAt from, NameAt to);

/// One step of the kernel. EINVAL or ENOSYS: not supported here, although EINVAL has other causes too, such as moving a
/// folder below itself.
int renameInOneStep(NameAt from, NameAt to);

/// For files: adds the new name as a hard link, which fails if it is taken, then removes the old one. A crash in
/// between leaves the file with both names. EPERM and the like: a folder, or no hard links here.
int renameByLinking(NameAt from, NameAt to);

/// Checks that the new name is free, then renames. A file that another program creates in between is lost, so this is
/// for file systems that have nothing better.
int renameAfterLooking(NameAt from, NameAt to);

/// Whether renameInOneStep failed because it is not supported.
bool isUnknownHere(int number);

} // namespace ravlin::platform
