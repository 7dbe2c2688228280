// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/fileio.h"
#include "core/storage/safewrite.h"

#include <QDir>

#include <algorithm>
#include <filesystem>

#ifndef _WIN32
#include <unistd.h>
#endif

/// Single steps on files by their paths, as tests prepare and clear up with them.
namespace ravlin::test {

/// POSIX permission bits, without the code under test.
inline bool setPermissions(const QString &path, quint32 permissions)
{
    std::error_code error;
    std::filesystem::permissions(path.toStdU16String(), static_cast<std::filesystem::perms>(permissions), error);
    return !error;
}

/// Makes a file somebody else's. False where the system has no owners, or not for this user to give.
inline bool giveTo([[maybe_unused]] const QString &path, [[maybe_unused]] quint32 owner)
{
#ifdef _WIN32
    return false;
#else
    return ::lchown(platform::encodePath(path).constData(), owner, static_cast<gid_t>(-1)) == 0;
#endif
}

/// Whether this is a new file whose writer was killed between giving it its permissions and giving it its name: by then
/// nothing tells it from a file of the user's, so it stays.
inline bool isWholeLeftover(const QString &path)
{
    const auto info = platform::FileSystem::native().info(path);
    return storage::isLeftoverName(platform::nameOf(path)) && info && info->isFile && info->permissions != 0600;
}

/// Whether there is a file in the folder that an interrupted operation was still writing. Folders don't count: nothing
/// tells who has made them.
inline bool holdsUnfinishedFile(const QString &folder)
{
    const QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    return std::ranges::any_of(names, [&](const QString &name) {
        return storage::isLeftoverName(name) && !isWholeLeftover(platform::inFolder(folder, name));
    });
}

/// Steps of a HeldFolder by a path.
inline Result<std::unique_ptr<platform::File>> createNew(
    const QString &path, platform::FileSystem &fileSystem = platform::FileSystem::native())
{
    return platform::placeAt(fileSystem, path).and_then([](const platform::Place &place) {
        return place.folder->createNew(place.name);
    });
}
inline Result<void> removeFile(const QString &path, platform::FileSystem &fileSystem = platform::FileSystem::native())
{
    return platform::placeAt(fileSystem, path).and_then([](const platform::Place &place) {
        return place.folder->remove(place.name);
    });
}
inline Result<void> replaceFile(
    const QString &from, const QString &to, platform::FileSystem &fileSystem = platform::FileSystem::native())
{
    const auto target = platform::placeAt(fileSystem, to);
    if (!target)
        return tl::unexpected(target.error());
    return platform::placeAt(fileSystem, from).and_then([&](const platform::Place &place) {
        return place.folder->replace(place.name, *target->folder, target->name);
    });
}

} // namespace ravlin::test
