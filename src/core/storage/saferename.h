// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Renaming a file or folder so that it is never lost and takes no other's place. Some renames take two steps: rings (a
/// to b and b to a), and names that differ in case alone where the file system ignores case. In between the file bears
/// a temporary name, under which it can be seen, listed and played like any other. The name holds the former one, so
/// nothing is lost or hidden when the program is killed between the steps.
namespace ravlin::storage {

/// Gives a file or folder another path on the same file system. Nothing happens when either text is empty or both are
/// the same. Never overwrites what has the new name already: AlreadyExists. A change of case alone also works where the
/// file system ignores case.
Result<void> renameFile(platform::FileSystem &fileSystem, const QString &from, const QString &to);

/// Whether what bears the new path is the file itself, because the file system ignores case.
bool isSameButForCase(platform::FileSystem &fileSystem, const QString &from, const QString &to);

/// "Song.mp3" becomes "Song (ravlin-0123456789abcdef).mp3", with the number's sixteen hexadecimal digits; what does not
/// fit into platform::MaxNameLength is cut off before the brackets.
QString asideName(const QString &name, quint64 number);
/// The name that was put aside; none when the name is no such name.
std::optional<QString> nameBeforeAside(const QString &name);

/// The same for a whole path, with a number that nobody can foresee.
QString asidePath(const QString &path);

/// Takes a file's lock while it is under a name for the time being, so that nobody takes it for a leftover. What can't
/// be locked (a folder, a file that can't be read) is left so: nullptr.
std::unique_ptr<platform::File> lockAside(platform::FileSystem &fileSystem, const QString &path);

/// Gives what an interrupted rename left in a folder its former name back, or that name with a number when it is taken.
/// Files that a running program is renaming are left alone. Returns the paths of those that were brought back, the one
/// for the time being first; those that can't be stay as they are.
Result<std::vector<std::pair<QString, QString>>> bringBackAside(
    platform::FileSystem &fileSystem, const QString &folder);

} // namespace ravlin::storage
