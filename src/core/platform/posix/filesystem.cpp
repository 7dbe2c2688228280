// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/filesystem.h"

#include "core/platform/fileio.h"
#include "core/platform/posix/exclusiverename.h"
#include "core/platform/posix/file.h"
#include "core/platform/posix/heldfolder.h"
#include "core/platform/posix/systemerror.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <limits>

namespace ravlin::platform {
namespace {

class PosixFileSystem final : public FileSystem
{
public:
    Result<std::unique_ptr<File>> open(const QString &path, OpenMode mode) override;
    Result<FileInfo> info(const QString &path) override;
    Result<QString> canonicalPath(const QString &path) override;
    Result<std::shared_ptr<HeldFolder>> openFolder(const QString &path) override { return openHeldFolder(path); }
    Result<Place> follow(const QString &path) override { return followLinks(path); }
    Result<void> renameNew(const QString &from, const QString &to) override;
    Result<void> createFolder(const QString &path) override;
    Result<qint64> freeBytes(const QString &path) override;
    Result<std::vector<QString>> names(const QString &folder) override;
    quint32 currentUser() override { return ::geteuid(); }
    quint32 currentGroup() override { return ::getegid(); }
};

/// Runs a system call on a path and turns its failure into an error value.
template <typename Call>
Result<void> callOnPath(const QString &path, const char *name, Call call)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(EINVAL, path, name);
    if (uninterrupted([&] { return call(native.bytes()); }) != 0)
        return systemError(errno, path, name);
    return {};
}

Result<std::unique_ptr<File>> PosixFileSystem::open(const QString &path, OpenMode mode)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(EINVAL, path, "open");
    return openPlainFile(AT_FDCWD, native.bytes(), mode == OpenMode::Read ? O_RDONLY : O_RDWR, path);
}

Result<FileInfo> PosixFileSystem::info(const QString &path)
{
    struct stat status = {};
    return callOnPath(path, "stat", [&](const char *native) { return ::stat(native, &status); }).map([&] {
        return fileInfo(status);
    });
}

Result<QString> PosixFileSystem::canonicalPath(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(EINVAL, path, "realpath");
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(native.bytes(), nullptr), &std::free);
    if (!resolved)
        return systemError(errno, path, "realpath");
    return decodePath(resolved.get(), static_cast<qsizetype>(std::strlen(resolved.get())));
}

Result<void> PosixFileSystem::renameNew(const QString &from, const QString &to)
{
    const NativePath source(from);
    const NativePath target(to);
    if (!source.isValid() || !target.isValid())
        return systemError(EINVAL, source.isValid() ? to : from, "rename");
    const int number = renameInOneStep({AT_FDCWD, source.bytes()}, {AT_FDCWD, target.bytes()});
    if (number == 0)
        return {};
    if (!isUnknownHere(number))
        return systemError(number, number == EEXIST ? to : from, "rename");
    // The other ways take two steps. Between them nobody may exchange a folder of the path.
    const auto here = placeAt(*this, from);
    const auto there = placeAt(*this, to);
    if (!here || !there)
        return tl::unexpected(here ? there.error() : here.error());
    return here->folder->renameNew(here->name, *there->folder, there->name);
}

Result<void> PosixFileSystem::createFolder(const QString &path)
{
    return callOnPath(path, "mkdir", [](const char *native) { return ::mkdir(native, 0777); });
}

Result<qint64> PosixFileSystem::freeBytes(const QString &path)
{
    struct statvfs status = {};
    const auto asked = callOnPath(path, "statvfs", [&](const char *native) { return ::statvfs(native, &status); });
    if (!asked)
        return tl::unexpected(asked.error());
    quint64 bytes = 0;
    const bool tooMany = __builtin_mul_overflow(quint64(status.f_bavail), quint64(status.f_frsize), &bytes);
    constexpr qint64 Most = std::numeric_limits<qint64>::max();
    return tooMany || bytes > quint64(Most) ? Most : qint64(bytes);
}

Result<std::vector<QString>> PosixFileSystem::names(const QString &folder)
{
    return openFolder(folder).and_then([](const std::shared_ptr<HeldFolder> &held) { return held->names(); });
}

} // namespace

FileSystem &FileSystem::native()
{
    static PosixFileSystem fileSystem; // without state
    return fileSystem;
}

} // namespace ravlin::platform
