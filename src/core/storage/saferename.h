// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Renames a file or folder so that it is never lost and never replaces another. Some renames take two steps: rings (a
/// to b and b to a), and names that differ in case alone where the file system ignores case. In between the file has a
/// temporary name, under which it can be seen, listed and played like any other. That name contains the former one, so
/// nothing is lost or hidden if the program is killed between the steps.
namespace ravlin::storage {

/// Gives a file or folder another path on the same file system. Does nothing if either path is empty or both are equal.
/// Never overwrites what has the new name already: AlreadyExists. A folder can't go into itself: IntoItself. A change
/// of case alone works even where the file system ignores case; aside is the temporary path that it takes then, one of
/// its own if empty.
Result<void> renameFile(
    platform::FileSystem &fileSystem, const QString &from, const QString &to, const QString &aside = {});

/// Whether the file at the new path is the file itself, because the file system ignores case.
bool isSameButForCase(platform::FileSystem &fileSystem, const QString &from, const QString &to);

/// The temporary name: "Song.mp3" becomes "Song (ravlin-0123456789abcdef).mp3", with the number's sixteen hexadecimal
/// digits. What exceeds platform::MaxNameLength is cut off before the brackets.
QString asideName(const QString &name, quint64 number);
/// The former name in a temporary one; nothing if the name is not a temporary one.
std::optional<QString> nameBeforeAside(const QString &name);

/// The temporary name for a whole path, with an unpredictable number.
QString asidePath(const QString &path);

/// Locks a file while it has a temporary name, so that nobody takes it for a leftover. Returns nothing for what cannot
/// be locked: a folder, or a file that cannot be read.
std::unique_ptr<platform::File> lockAside(platform::FileSystem &fileSystem, const QString &path);

/// Gives what interrupted renames left in a folder its former name back, or that name with a number if it is taken:
/// songs (".mp3" in any case) and folders that belong to the current user and whose name does not begin with a full
/// stop. Leaves files alone that a running program is renaming. Returns the paths of what was brought back, first the
/// temporary one, then the new one; what cannot be brought back stays as it is.
Result<std::vector<std::pair<QString, QString>>> bringBackAside(platform::FileSystem &fileSystem, const QString &path);

} // namespace ravlin::storage
