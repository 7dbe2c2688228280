// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/filesystem.h"

#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/platform/windows/file.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace ravlin::platform {
namespace {

// Newer than the compiler's headers (Windows 10 1809, winnt.h).
constexpr auto RenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD RenameReplacing = 0x1;
constexpr DWORD RenamePosix = 0x2;
constexpr DWORD RenameIgnoringReadOnly = 0x40;

class WindowsFileSystem final : public FileSystem
{
public:
    Result<std::unique_ptr<File>> open(const QString &path, OpenMode mode) override;
    Result<std::unique_ptr<File>> openUnlinked(const QString &path, OpenMode mode) override;
    Result<std::unique_ptr<File>> createNew(const QString &path) override;
    Result<FileInfo> info(const QString &path) override;
    Result<QString> canonicalPath(const QString &path) override;
    Result<void> replace(const QString &from, const QString &to) override;
    Result<void> renameNew(const QString &from, const QString &to) override;
    Result<void> createFolder(const QString &path) override;
    Result<void> removeFolder(const QString &path) override;
    Result<void> remove(const QString &path) override;
    Result<void> setPermissions(const QString &path, quint32 permissions) override;
    Result<void> syncFolder(const QString &folder) override;
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

/// Clears a file's read-only attribute, which unlike on other systems keeps the file from being removed or replaced.
/// Restores it on destruction unless done() was called.
class Writable
{
public:
    explicit Writable(const wchar_t *path) : m_path(path), m_attributes(::GetFileAttributesW(path))
    {
        if (isReadOnly())
            ::SetFileAttributesW(m_path, m_attributes & ~DWORD(FILE_ATTRIBUTE_READONLY));
    }
    ~Writable()
    {
        if (!isReadOnly() || m_isDone)
            return;
        const DWORD number = ::GetLastError(); // of the call in between
        ::SetFileAttributesW(m_path, m_attributes);
        ::SetLastError(number);
    }
    Writable(const Writable &) = delete;
    Writable &operator=(const Writable &) = delete;

    void done() { m_isDone = true; }

private:
    bool isReadOnly() const
    {
        return m_attributes != INVALID_FILE_ATTRIBUTES && (m_attributes & FILE_ATTRIBUTE_READONLY) != 0;
    }

    const wchar_t *m_path;
    DWORD m_attributes;
    bool m_isDone = false;
};

/// Replaces a file in one step, even while somebody has it open, as other systems do. Few file systems support it:
/// NTFS, but not all versions of it over a network.
bool replaceInOneStep(const NativePath &from, const NativePath &to)
{
    const Handle source = openExisting(from, DELETE | SYNCHRONIZE, FILE_FLAG_OPEN_REPARSE_POINT);
    if (!source)
        return false;
    const size_t nameSize = std::wcslen(to.text()) * sizeof(wchar_t);
    std::vector<std::byte> buffer(sizeof(FILE_RENAME_INFO) + nameSize);
    auto *const rename = reinterpret_cast<FILE_RENAME_INFO *>(buffer.data());
    const DWORD flags = RenameReplacing | RenamePosix | RenameIgnoringReadOnly;
    std::memcpy(rename, &flags, sizeof flags); // the structure's first member, under its newer meaning
    rename->FileNameLength = static_cast<DWORD>(nameSize);
    std::memcpy(static_cast<void *>(rename->FileName), to.text(), nameSize);
    return ::SetFileInformationByHandle(source.get(), RenameInfoEx, rename, static_cast<DWORD>(buffer.size())) != 0;
}

Result<std::unique_ptr<File>> WindowsFileSystem::open(const QString &path, OpenMode mode)
{
    return openPlainFile(path, mode, LinkAtEnd::Follow);
}

Result<std::unique_ptr<File>> WindowsFileSystem::openUnlinked(const QString &path, OpenMode mode)
{
    return openPlainFile(path, mode, LinkAtEnd::Refuse);
}

Result<std::unique_ptr<File>> WindowsFileSystem::createNew(const QString &path)
{
    const NativePath native(path);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, path, "CreateFileW");
    Handle handle(::CreateFileW(native.text(), GENERIC_READ | GENERIC_WRITE | WRITE_DAC, ShareAll, nullptr, CREATE_NEW,
        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!handle)
        return lastError(path, "CreateFileW");
    const auto info = infoOf(handle.get(), path);
    if (!info)
        return tl::unexpected(info.error());
    return std::make_unique<WindowsFile>(std::move(handle), path, *info);
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
    const DWORD size = ::GetFinalPathNameByHandleW(handle.get(), nullptr, 0, FILE_NAME_NORMALIZED);
    std::wstring found(size, L'\0');
    const DWORD length = ::GetFinalPathNameByHandleW(handle.get(), found.data(), size, FILE_NAME_NORMALIZED);
    // Some third-party drivers do not support this.
    if (size == 0 || length == 0 || length >= size)
        return withoutPrefix(fromWide(native.text()));
    return withoutPrefix(QString::fromWCharArray(found.data(), length));
}

Result<void> WindowsFileSystem::replace(const QString &from, const QString &to)
{
    const NativePath source(from);
    const NativePath target(to);
    if (!source.isValid() || !target.isValid())
        return systemError(ERROR_INVALID_NAME, source.isValid() ? to : from, "MoveFileExW");
    if (patiently([&] { return replaceInOneStep(source, target); }))
        return {};
    Writable writable(target.text());
    if (!patiently([&] {
            return ::MoveFileExW(source.text(), target.text(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != 0;
        }))
        return lastError(from, "MoveFileExW");
    writable.done();
    return {};
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

Result<void> WindowsFileSystem::removeFolder(const QString &path)
{
    return callOnPath(path, "RemoveDirectoryW", [](const wchar_t *native) {
        Writable writable(native);
        const BOOL removed = ::RemoveDirectoryW(native);
        if (removed != 0)
            writable.done();
        return removed;
    });
}

Result<void> WindowsFileSystem::remove(const QString &path)
{
    return callOnPath(path, "DeleteFileW", [](const wchar_t *native) {
        const DWORD attributes = ::GetFileAttributesW(native);
        const bool isFolderLink = attributes != INVALID_FILE_ATTRIBUTES &&
                                  (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
                                  (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        Writable writable(native);
        const BOOL removed = isFolderLink ? ::RemoveDirectoryW(native) : ::DeleteFileW(native);
        if (removed != 0)
            writable.done();
        return removed;
    });
}

Result<void> WindowsFileSystem::setPermissions(const QString &path, quint32 permissions)
{
    constexpr quint32 OwnerMayWrite = 0200;
    return callOnPath(path, "SetFileAttributesW", [&](const wchar_t *native) -> BOOL {
        const DWORD attributes = ::GetFileAttributesW(native);
        if (attributes == INVALID_FILE_ATTRIBUTES)
            return FALSE;
        const DWORD wanted = (permissions & OwnerMayWrite) != 0 ? attributes & ~DWORD(FILE_ATTRIBUTE_READONLY)
                                                                : attributes | FILE_ATTRIBUTE_READONLY;
        return wanted == attributes ? TRUE : ::SetFileAttributesW(native, wanted);
    });
}

Result<void> WindowsFileSystem::syncFolder(const QString &folder)
{
    const NativePath native(folder);
    if (!native.isValid())
        return systemError(ERROR_INVALID_NAME, folder, "CreateFileW");
    if (const auto there = info(folder); !there)
        return tl::unexpected(there.error());
    // Fails if the user may not add to the folder, and on drives that need no such call. NTFS keeps an ordered journal
    // of names anyway.
    const Handle handle = openExisting(native, GENERIC_WRITE);
    if (handle && !::FlushFileBuffers(handle.get())) {
        const DWORD number = ::GetLastError();
        if (number == ERROR_DISK_FULL || number == ERROR_IO_DEVICE || number == ERROR_CRC)
            return systemError(number, folder, "FlushFileBuffers");
    }
    return {};
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
    const NativePath native(inFolder(folder, QStringLiteral("*")));
    if (folder.isEmpty() || !native.isValid())
        return systemError(ERROR_INVALID_NAME, folder, "FindFirstFileExW");
    WIN32_FIND_DATAW found{};
    HANDLE search = ::FindFirstFileExW(
        native.text(), FindExInfoBasic, &found, FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    std::vector<QString> names;
    if (search == INVALID_HANDLE_VALUE) {
        if (::GetLastError() == ERROR_FILE_NOT_FOUND) // the root of an empty drive: it has no "." either
            return names;
        return lastError(folder, "FindFirstFileExW");
    }
    do {
        const QString name = fromWide(found.cFileName);
        if (name != QStringLiteral(".") && name != QStringLiteral(".."))
            names.push_back(name);
    } while (::FindNextFileW(search, &found) != 0);
    const DWORD number = ::GetLastError();
    ::FindClose(search);
    if (number != ERROR_NO_MORE_FILES)
        return systemError(number, folder, "FindNextFileW");
    return names;
}

} // namespace

FileSystem &FileSystem::native()
{
    static WindowsFileSystem fileSystem; // without state
    return fileSystem;
}

} // namespace ravlin::platform
