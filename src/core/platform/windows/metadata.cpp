// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/windows/file.h"

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
std::vector<QString> streamNames(const NativePath &path)
{
    std::vector<QString> names;
    WIN32_FIND_STREAM_DATA found{};
    HANDLE search = ::FindFirstStreamW(path.text(), FindStreamInfoStandard, &found, 0);
    if (search == INVALID_HANDLE_VALUE)
        return names;
    do {
        const QString name = fromWide(found.cStreamName);
        if (name != QStringLiteral("::$DATA"))
            names.push_back(name);
    } while (::FindNextStreamW(search, &found) != 0);
    ::FindClose(search);
    return names;
}

/// Returns the number of the error, 0 for success.
DWORD copyStream(const NativePath &from, const NativePath &to)
{
    const Handle source = openExisting(from, GENERIC_READ);
    if (!source)
        return 0; // removed meanwhile, or not for us to read
    const Handle target(
        ::CreateFileW(to.text(), GENERIC_WRITE, ShareAll, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
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

} // namespace

Result<void> copyBasics(HANDLE from, HANDLE to, TakeTimes times, const QString &path)
{
    // A file that its owner has encrypted must not end up on the disk for everyone to read.
    if (isEncrypted(from) && !isEncrypted(to))
        return systemError(ERROR_ACCESS_DENIED, path, "taking over the encryption");
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

Result<void> copyStreams(const QString &from, const QString &to)
{
    const NativePath source(from);
    if (!source.isValid())
        return systemError(ERROR_INVALID_NAME, from, "FindFirstStreamW");
    for (const QString &name : streamNames(source)) {
        const DWORD number = copyStream(NativePath(from + name), NativePath(to + name));
        if (isDamage(number))
            return systemError(number, to, "copying a stream");
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
