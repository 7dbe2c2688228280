// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/filesystem.h"

#include "core/platform/windows/file.h"
#include "core/platform/windows/heldfolder.h"
#include "core/platform/windows/relative.h"

#include <vector>

namespace ravlin::platform {
namespace {

class WindowsFileSystem final : public FileSystem
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
    // Access lists decide here, not owners.
    quint32 currentUser() override { return 0; }
    quint32 currentGroup() override { return 0; }
};

/// Runs a system call on a path and turns its failure into an error value.
template <typename Call>
Result<void> callOnPath(const QString &path, const char *name, Call call)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, name);
    if (!patiently([&] { return call(native.text()) != 0; }))
        return lastError(path, name);
    return {};
}

Result<std::unique_ptr<File>> WindowsFileSystem::open(const QString &path, OpenMode mode)
{
    return openPlainFile(path, mode);
}

Result<FileInfo> WindowsFileSystem::info(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    const Handle handle = openExisting(native, FILE_READ_ATTRIBUTES);
    return handle ? infoOf(handle.get(), path) : lastError(path, "CreateFileW");
}

Result<QString> WindowsFileSystem::canonicalPath(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    const Handle handle = openExisting(native, FILE_READ_ATTRIBUTES);
    if (!handle)
        return lastError(path, "CreateFileW");
    const QString found = finalPath(handle.get());
    return found.isEmpty() ? withoutPrefix(fromWide(native.text())) : found;
}

Result<void> WindowsFileSystem::renameNew(const QString &from, const QString &to)
{
    const NativePath source(from);
    const NativePath target(to);
    if (!source.isValid() || !target.isValid())
        return systemError(ERROR_INVALID_NAME, source.isValid() ? to : from, "MoveFileExW");
    if (patiently([&] { return ::MoveFileExW(source.text(), target.text(), MOVEFILE_WRITE_THROUGH) != 0; }))
        return {};
    const DWORD number = ::GetLastError();
    const bool isTaken = number == ERROR_ALREADY_EXISTS || number == ERROR_FILE_EXISTS;
    return systemError(number, isTaken ? to : from, "MoveFileExW");
}

Result<void> WindowsFileSystem::createFolder(const QString &path)
{
    return callOnPath(
        path, "CreateDirectoryW", [](const wchar_t *native) { return ::CreateDirectoryW(native, nullptr); });
}

Result<qint64> WindowsFileSystem::freeBytes(const QString &path)
{
    const auto there = info(path);
    if (!there)
        return tl::unexpected(there.error());
    ULARGE_INTEGER available{};
    return callOnPath(there->isFolder ? path : folderOf(path), "GetDiskFreeSpaceExW", [&](const wchar_t *native) {
        return ::GetDiskFreeSpaceExW(native, &available, nullptr, nullptr);
    }).map([&] { return static_cast<qint64>(available.QuadPart); });
}

Result<std::vector<QString>> WindowsFileSystem::names(const QString &folder)
{
    return openHeldFolder(folder).and_then([](const std::shared_ptr<HeldFolder> &held) { return held->names(); });
}

} // namespace

FileSystem &FileSystem::native()
{
    static WindowsFileSystem fileSystem; // without state
    return fileSystem;
}

} // namespace ravlin::platform
