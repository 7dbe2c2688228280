#pragma once

#include "core/platform/filesystem.h"

#include <QString>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

/// Names for the time being, for renames that take two steps: rings (a to b and b to a), and names that differ in case
/// alone where the file system ignores case.
///
/// A file under such a name can be seen, listed and played like any other, and the name holds the one that the file
/// had, so that nothing is lost or hidden when the program is killed between the steps.
namespace ravlin {

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

} // namespace ravlin
