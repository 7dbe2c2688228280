// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Renaming that never replaces another file, by whatever means the file system has. Paths are the system's bytes. Each
/// function returns 0 or an errno value, EEXIST if the new name is taken.
namespace ravlin::platform {

/// The best of those below that the file system supports.
int renameExclusively(const char *from, const char *to);

/// One step of the kernel. EINVAL or ENOSYS: not supported here, although EINVAL has other causes too, such as moving a
/// folder below itself.
int renameInOneStep(const char *from, const char *to);

/// For files: adds the new name as a hard link, which fails if it is taken, then removes the old one. A crash in
/// between leaves the file with both names. EPERM and the like: a folder, or no hard links here.
int renameByLinking(const char *from, const char *to);

/// Checks that the new name is free, then renames. A file that another program creates in between is lost, so this is
/// for file systems that have nothing better.
int renameAfterLooking(const char *from, const char *to);

} // namespace ravlin::platform
