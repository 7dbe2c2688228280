// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/windows/file.h"
#include "core/platform/windows/relative.h"

#include <cstddef>
#include <vector>

namespace ravlin::platform {
namespace {

constexpr DWORD UsersAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                  FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

/// Failures that must not pass in silence; all others mean that a stream is refused.
bool isDamage(DWORD number)
{
    return number == ERROR_DISK_FULL || number == ERROR_HANDLE_DISK_FULL || number == ERROR_DISK_QUOTA_EXCEEDED ||
           number == ERROR_CRC || number == ERROR_IO_DEVICE;
}

/// The names of the streams beside the content, as ":name:$DATA"; none if the file system has no streams.
std::vector<QString> streamNames(HANDLE handle)
{
    constexpr size_t MostBytes = 1024 * 1024; // more names than any file system keeps for a file
    std::vector<std::byte> buffer(MostBytes);
    std::vector<QString> names;
    if (!::GetFileInformationByHandleEx(handle, FileStreamInfo, buffer.data(), MostBytes))
        return names;
    const std::byte *at = buffer.data();
    while (true) {
        const auto *const entry = reinterpret_cast<const FILE_STREAM_INFO *>(at);
        const auto length = static_cast<qsizetype>(entry->StreamNameLength / sizeof(wchar_t));
        const QString name = QString::fromWCharArray(static_cast<const wchar_t *>(entry->StreamName), length);
        if (name.startsWith(u':') && name != QStringLiteral("::$DATA"))
            names.push_back(name);
        if (entry->NextEntryOffset == 0)
            return names;
        at += entry->NextEntryOffset;
    }
}

/// Returns the number of the error, 0 for success.
DWORD copyStream(HANDLE from, HANDLE to, const QString &name)
{
    const Handle source = openIn(from, name, {GENERIC_READ});
    if (!source)
        return 0; // removed meanwhile, or not for us to read
    const Handle target = openIn(to, name, {GENERIC_WRITE, FILE_NON_DIRECTORY_FILE, FILE_OVERWRITE_IF});
    if (!target)
        return ::GetLastError();
    constexpr DWORD ChunkSize = 64 * 1024;
    std::vector<char> buffer(ChunkSize);
    DWORD got = 0;
    while (::ReadFile(source.get(), buffer.data(), ChunkSize, &got, nullptr) != 0 && got > 0) {
        DWORD written = 0;
        if (!::WriteFile(target.get(), buffer.data(), got, &written, nullptr))
            return ::GetLastError();
        if (written != got)
            return ERROR_DISK_FULL;
    }
    return 0;
}

bool isEncrypted(HANDLE handle)
{
    FILE_BASIC_INFO basic{};
    return ::GetFileInformationByHandleEx(handle, FileBasicInfo, &basic, sizeof basic) != 0 &&
           (basic.FileAttributes & FILE_ATTRIBUTE_ENCRYPTED) != 0;
}

/// Whether an account is the one that owns what this process creates: the user, or for an administrator perhaps their
/// group.
bool isOwn(PSID account)
{
    HANDLE opened = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened))
        return false;
    const Handle token(opened);
    constexpr DWORD MostBytes = 1024;
    alignas(std::max_align_t) std::byte buffer[MostBytes];
    DWORD size = 0;
    if (::GetTokenInformation(token.get(), TokenUser, buffer, MostBytes, &size) &&
        ::EqualSid(account, reinterpret_cast<const TOKEN_USER *>(buffer)->User.Sid))
        return true;
    return ::GetTokenInformation(token.get(), TokenOwner, buffer, MostBytes, &size) &&
           ::EqualSid(account, reinterpret_cast<const TOKEN_OWNER *>(buffer)->Owner);
}

bool keepsOwners(HANDLE handle)
{
    DWORD flags = 0;
    return ::GetVolumeInformationByHandleW(handle, nullptr, 0, nullptr, nullptr, &flags, nullptr, 0) != 0 &&
           (flags & FILE_PERSISTENT_ACLS) != 0;
}

} // namespace

Result<bool> isPrivateFile(HANDLE handle, const QString &path)
{
    const auto info = infoOf(handle, path);
    if (!info)
        return tl::unexpected(info.error());
    if (!info->isFile || info->linkCount != 1 || !keepsOwners(handle))
        return false;
    DWORD size = 0;
    ::GetKernelObjectSecurity(handle, OWNER_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<std::byte> descriptor(size);
    PSID owner = nullptr;
    BOOL isDefault = FALSE;
    return size != 0 &&
           ::GetKernelObjectSecurity(handle, OWNER_SECURITY_INFORMATION, descriptor.data(), size, &size) != 0 &&
           ::GetSecurityDescriptorOwner(descriptor.data(), &owner, &isDefault) != 0 && owner != nullptr && isOwn(owner);
}

Result<void> checkEncryption(HANDLE from, HANDLE to, const QString &path)
{
    if (isEncrypted(from) && !isEncrypted(to))
        return systemError(ERROR_ACCESS_DENIED, path, "taking over the encryption");
    return {};
}

Result<void> copyBasics(HANDLE from, HANDLE to, TakeTimes times, const QString &path)
{
    if (auto checked = checkEncryption(from, to, path); !checked)
        return checked;
    FILE_BASIC_INFO wanted{};
    FILE_BASIC_INFO present{};
    if (!::GetFileInformationByHandleEx(from, FileBasicInfo, &wanted, sizeof wanted) ||
        !::GetFileInformationByHandleEx(to, FileBasicInfo, &present, sizeof present))
        return lastError(path, "GetFileInformationByHandleEx");
    FILE_BASIC_INFO given{}; // zero leaves a time as it is
    given.CreationTime = wanted.CreationTime;
    if (times == TakeTimes::All) {
        given.LastAccessTime = wanted.LastAccessTime;
        given.LastWriteTime = wanted.LastWriteTime;
    }
    given.FileAttributes = (present.FileAttributes & ~UsersAttributes) | (wanted.FileAttributes & UsersAttributes);
    if (given.FileAttributes == 0)
        given.FileAttributes = FILE_ATTRIBUTE_NORMAL;
    if (!::SetFileInformationByHandle(to, FileBasicInfo, &given, sizeof given))
        return lastError(path, "SetFileInformationByHandle");
    return {};
}

Result<void> copyStreams(HANDLE from, HANDLE to, const QString &path)
{
    for (const QString &name : streamNames(from)) {
        const DWORD number = copyStream(from, to, name);
        if (isDamage(number))
            return systemError(number, path, "copying a stream");
    }
    return {};
}

Result<void> copyAccessList(HANDLE from, HANDLE to, const QString &path)
{
    constexpr SECURITY_INFORMATION AccessList = DACL_SECURITY_INFORMATION;
    DWORD size = 0;
    ::GetKernelObjectSecurity(from, AccessList, nullptr, 0, &size);
    std::vector<std::byte> descriptor(size);
    if (size == 0 || !::GetKernelObjectSecurity(from, AccessList, descriptor.data(), size, &size))
        return {}; // no access lists on this file system, or not for us to read
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (::GetSecurityDescriptorControl(descriptor.data(), &control, &revision) &&
        (control & SE_DACL_AUTO_INHERITED) != 0) // or entries inherited from the folder would become the file's own
        ::SetSecurityDescriptorControl(descriptor.data(), SE_DACL_AUTO_INHERIT_REQ, SE_DACL_AUTO_INHERIT_REQ);
    if (!::SetKernelObjectSecurity(to, AccessList, descriptor.data()) && ::GetLastError() == ERROR_ACCESS_DENIED)
        return lastError(path, "SetKernelObjectSecurity");
    return {};
}

} // namespace ravlin::platform
