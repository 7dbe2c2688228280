// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "core/platform/filesystem.h"

#include <string>
#include <utility>

#include <windows.h>

#ifndef ERROR_DISK_QUOTA_EXCEEDED // missing in MinGW-w64's headers
#define ERROR_DISK_QUOTA_EXCEEDED 1295L
#endif

/// What all Windows sources share: paths as the system takes them, handles, error numbers.
namespace ravlin::platform {

/// A path of any length in the form that the system takes literally: \\?\C:\folder\file. Names that end in a blank or
/// full stop, as other systems create them, stay as they are.
class NativePath
{
public:
    explicit NativePath(const QString &path);

    /// False for an empty path and for one with a NUL in it, where the system would stop reading.
    bool isValid() const { return !m_text.empty(); }
    const wchar_t *text() const { return m_text.c_str(); }

private:
    std::wstring m_text;
};

/// The path without the prefix \\?\.
QString withoutPrefix(const QString &native);

/// A system handle, closed on destruction.
class Handle
{
public:
    Handle() = default;
    explicit Handle(HANDLE handle) : m_handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    ~Handle()
    {
        if (m_handle != nullptr)
            ::CloseHandle(m_handle);
    }
    Handle(Handle &&other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    Handle &operator=(Handle &&other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    Handle(const Handle &) = delete;
    Handle &operator=(const Handle &) = delete;

    HANDLE get() const { return m_handle; }
    explicit operator bool() const { return m_handle != nullptr; }

private:
    HANDLE m_handle = nullptr;
};

/// While we have a file open, others may do with it as they like, as on other systems.
inline constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Opens an existing file or folder; flags as for CreateFileW.
Handle openExisting(const NativePath &path, DWORD access, DWORD flags = 0);

/// The error for a system call on path that failed with a number of GetLastError.
tl::unexpected<Error> systemError(DWORD number, const QString &path, const char *call);
inline tl::unexpected<Error> lastError(const QString &path, const char *call)
{
    return systemError(::GetLastError(), path, call);
}

/// The state of an open file or folder.
Result<FileInfo> infoOf(HANDLE handle, const QString &path);

/// Whether it stands for another place: a symbolic link, or a folder that a drive or another folder is mounted on. A
/// file whose content is in a cloud store is not such a link.
bool isLink(HANDLE handle);

/// What an open name stands for; opened as a link itself if it is one.
Result<Node> nodeOf(HANDLE handle, const QString &path);

/// Repeats a call a few times while the file is in use by somebody: virus scanners and indexers open what has just been
/// written for some milliseconds. The call returns whether it succeeded.
template <typename Call>
bool patiently(Call call)
{
    constexpr DWORD LongestWait = 80; // milliseconds; 155 in total
    for (DWORD wait = 5;; wait *= 2) {
        if (call())
            return true;
        if (::GetLastError() != ERROR_SHARING_VIOLATION || wait > LongestWait)
            return false;
        ::Sleep(wait);
    }
}

inline QString fromWide(const wchar_t *text)
{
    return QString::fromWCharArray(text);
}

} // namespace ravlin::platform
