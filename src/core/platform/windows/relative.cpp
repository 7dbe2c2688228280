// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/windows/relative.h"

#include <bit>
#include <cstddef>
#include <cstring>

namespace ravlin::platform {
namespace {

// Newer than the compiler's headers (Windows 10 1709; ntddk.h and winbase.h).
constexpr auto RenameInformationEx = std::bit_cast<FILE_INFORMATION_CLASS>(65);
constexpr auto DispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
constexpr DWORD RenameReplacing = 0x1;
constexpr DWORD RenamePosix = 0x2; ///< also while somebody has the other file open
constexpr DWORD RenameIgnoringReadOnly = 0x40;
constexpr DWORD DisposeDelete = 0x1;
constexpr DWORD DisposePosix = 0x2;
constexpr DWORD DisposeIgnoringReadOnly = 0x10;

bool succeeds(NTSTATUS status)
{
    if (status >= 0)
        return true;
    ::SetLastError(::RtlNtStatusToDosError(status));
    return false;
}

/// Whether a newer kind of call failed only because the system or the file system does not know it.
bool isUnknownHere(DWORD number)
{
    return number == ERROR_INVALID_PARAMETER || number == ERROR_NOT_SUPPORTED || number == ERROR_INVALID_FUNCTION ||
           number == ERROR_CALL_NOT_IMPLEMENTED || number == ERROR_INVALID_LEVEL;
}

bool rename(HANDLE opened, HANDLE folder, const QString &newName, FILE_INFORMATION_CLASS kind, DWORD flags)
{
    const std::wstring name = newName.toStdWString();
    const size_t nameSize = name.size() * sizeof(wchar_t);
    std::vector<std::byte> buffer(sizeof(FILE_RENAME_INFO) + nameSize);
    auto *const info = reinterpret_cast<FILE_RENAME_INFO *>(buffer.data());
    std::memcpy(info, &flags, sizeof flags); // the structure's first member, under its older or newer meaning
    info->RootDirectory = folder;
    info->FileNameLength = static_cast<DWORD>(nameSize);
    std::memcpy(static_cast<void *>(info->FileName), name.data(), nameSize);
    IO_STATUS_BLOCK outcome{};
    return succeeds(::NtSetInformationFile(opened, &outcome, info, static_cast<ULONG>(buffer.size()), kind));
}

DWORD attributesOf(HANDLE opened)
{
    FILE_BASIC_INFO basic{};
    return ::GetFileInformationByHandleEx(opened, FileBasicInfo, &basic, sizeof basic) != 0 ? basic.FileAttributes : 0;
}

const Opening Attributes{FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, FILE_OPEN_REPARSE_POINT};

DWORD attributesIn(HANDLE folder, const QString &name)
{
    const Handle opened = openIn(folder, name, Attributes);
    return opened ? attributesOf(opened.get()) : 0;
}

void setReadOnlyIn(HANDLE folder, const QString &name, bool isReadOnly)
{
    if (const Handle opened = openIn(folder, name, Attributes))
        setReadOnly(opened.get(), isReadOnly);
}

} // namespace

Handle openIn(HANDLE root, const QString &name, const Opening &opening)
{
    std::wstring text = name.toStdWString();
    UNICODE_STRING counted{};
    counted.Buffer = text.data();
    counted.Length = static_cast<USHORT>(text.size() * sizeof(wchar_t));
    counted.MaximumLength = counted.Length;
    OBJECT_ATTRIBUTES object{};
    InitializeObjectAttributes(&object, &counted, OBJ_CASE_INSENSITIVE, root, nullptr);
    IO_STATUS_BLOCK outcome{};
    HANDLE opened = nullptr;
    const ULONG options = opening.options | FILE_SYNCHRONOUS_IO_NONALERT | FILE_OPEN_FOR_BACKUP_INTENT;
    const NTSTATUS status = ::NtCreateFile(&opened, opening.access | SYNCHRONIZE, &object, &outcome, nullptr,
        FILE_ATTRIBUTE_NORMAL, ShareAll, opening.disposition, options, nullptr, 0);
    return succeeds(status) ? Handle(opened) : Handle();
}

bool renameTo(HANDLE opened, HANDLE folder, const QString &newName, Existing existing)
{
    constexpr DWORD Replacing = RenameReplacing | RenamePosix | RenameIgnoringReadOnly;
    if (existing == Existing::Keep)
        return rename(opened, folder, newName, FileRenameInformation, FALSE);
    if (rename(opened, folder, newName, RenameInformationEx, Replacing))
        return true;
    if (!isUnknownHere(::GetLastError()))
        return false;
    // An older call, which needs the other file to be writable and closed.
    const bool wasReadOnly = (attributesIn(folder, newName) & FILE_ATTRIBUTE_READONLY) != 0;
    if (wasReadOnly)
        setReadOnlyIn(folder, newName, false);
    if (rename(opened, folder, newName, FileRenameInformation, TRUE))
        return true;
    const DWORD number = ::GetLastError();
    if (wasReadOnly)
        setReadOnlyIn(folder, newName, true);
    ::SetLastError(number);
    return false;
}

bool removeOpened(HANDLE opened)
{
    DWORD flags = DisposeDelete | DisposePosix | DisposeIgnoringReadOnly;
    if (::SetFileInformationByHandle(opened, DispositionInfoEx, &flags, sizeof flags))
        return true;
    if (!isUnknownHere(::GetLastError()))
        return false;
    const bool wasReadOnly = (attributesOf(opened) & FILE_ATTRIBUTE_READONLY) != 0;
    if (wasReadOnly)
        setReadOnly(opened, false);
    FILE_DISPOSITION_INFO older{};
    older.DeleteFile = TRUE;
    if (::SetFileInformationByHandle(opened, FileDispositionInfo, &older, sizeof older))
        return true;
    const DWORD number = ::GetLastError();
    if (wasReadOnly)
        setReadOnly(opened, true);
    ::SetLastError(number);
    return false;
}

bool setReadOnly(HANDLE opened, bool isReadOnly)
{
    FILE_BASIC_INFO basic{};
    if (!::GetFileInformationByHandleEx(opened, FileBasicInfo, &basic, sizeof basic))
        return false;
    const DWORD others = basic.FileAttributes & ~DWORD(FILE_ATTRIBUTE_READONLY);
    const DWORD wanted = isReadOnly ? others | FILE_ATTRIBUTE_READONLY : others;
    if (wanted == basic.FileAttributes)
        return true;
    FILE_BASIC_INFO given{}; // zero leaves a time as it is
    given.FileAttributes = wanted != 0 ? wanted : FILE_ATTRIBUTE_NORMAL;
    return ::SetFileInformationByHandle(opened, FileBasicInfo, &given, sizeof given) != 0;
}

Result<std::vector<QString>> namesIn(HANDLE folder, const QString &path)
{
    constexpr size_t BufferSize = 64 * 1024;
    std::vector<std::byte> buffer(BufferSize);
    std::vector<QString> names;
    FILE_INFO_BY_HANDLE_CLASS kind = FileIdBothDirectoryRestartInfo;
    while (::GetFileInformationByHandleEx(folder, kind, buffer.data(), BufferSize)) {
        kind = FileIdBothDirectoryInfo;
        const std::byte *at = buffer.data();
        while (true) {
            const auto *const entry = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO *>(at);
            const auto length = static_cast<qsizetype>(entry->FileNameLength / sizeof(wchar_t));
            const QString name = QString::fromWCharArray(static_cast<const wchar_t *>(entry->FileName), length);
            if (name != QStringLiteral(".") && name != QStringLiteral(".."))
                names.push_back(name);
            if (entry->NextEntryOffset == 0)
                break;
            at += entry->NextEntryOffset;
        }
    }
    const DWORD number = ::GetLastError();
    if (number != ERROR_NO_MORE_FILES && number != ERROR_FILE_NOT_FOUND) // the latter: the root of an empty drive
        return systemError(number, path, "GetFileInformationByHandleEx");
    return names;
}

QString finalPath(HANDLE opened)
{
    const DWORD size = ::GetFinalPathNameByHandleW(opened, nullptr, 0, FILE_NAME_NORMALIZED);
    std::wstring found(size, L'\0');
    const DWORD length = ::GetFinalPathNameByHandleW(opened, found.data(), size, FILE_NAME_NORMALIZED);
    // Some third-party drivers do not support this.
    if (size == 0 || length == 0 || length >= size)
        return {};
    return withoutPrefix(QString::fromWCharArray(found.data(), length));
}

} // namespace ravlin::platform
