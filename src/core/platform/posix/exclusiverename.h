// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Renaming that never takes the place of another file, by whatever the file system knows for it. Paths are as the
/// system takes them; each function returns 0 or an errno value, EEXIST when the new name is taken.
namespace ravlin::platform {

/// The best of those below that the file system supports.
int renameExclusively(const char *from, const char *to);

/// One step of the kernel. EINVAL or ENOSYS: not known here (EINVAL has other causes too, such as a folder that is to
/// go below itself).
int renameInOneStep(const char *from, const char *to);

/// For files: gives the file its new name, which fails when that is taken, then takes the old one away. A crash
/// between the two leaves the file with both names. EPERM and the like: a folder, or no hard links here.
int renameByLinking(const char *from, const char *to);

/// Looks whether the new name is free, then renames. A file that another program makes in between is lost, so this is
/// for file systems that have nothing better.
int renameAfterLooking(const char *from, const char *to);

} // namespace ravlin::platform
