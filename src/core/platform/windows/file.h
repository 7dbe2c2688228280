// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/windows/native.h"

#include <optional>

/// A plain file behind a handle.
namespace ravlin::platform {

class WindowsFile final : public File
{
public:
    /// atOpening: its state, which the first info() returns without a system call.
    WindowsFile(Handle handle, QString path, const FileInfo &atOpening);

    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;
    Result<qint64> writeAt(std::span<const char> bytes, qint64 offset) override;
    Result<void> truncate(qint64 size) override;
    Result<void> sync() override;
    Result<FileInfo> info() override;
    Result<FileIdentity> identity() override;
    Result<qint64> copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length) override;
    /// Access lists decide here, not owners.
    Result<void> takeOwner(File & /*source*/) override { return {}; }
    Result<void> takeAttributes(File &source) override;
    Result<void> takePermissions(File &source) override;
    void takeTimes(File &source) override;
    Result<void> setPermissions(quint32 permissions) override;
    Result<void> setModified(qint64 nanoseconds) override;
    void forgetCached() override;
    Result<bool> isPrivate() override;
    Result<bool> tryLock() override;

private:
    static HANDLE handleOf(File &file);

    Handle m_handle;
    const QString m_path; ///< for error values, and for what needs a path
    std::optional<FileInfo> m_atOpening;
};

/// Opens a plain file that exists, following links; folders and devices are NotAFile.
Result<std::unique_ptr<File>> openPlainFile(const QString &path, OpenMode mode);
/// The plain file that is open; NotAFile if it is none.
Result<std::unique_ptr<File>> fileBehind(Handle handle, const QString &path);

// In metadata.cpp.

enum class TakeTimes
{
    Creation,
    All
};
/// Copies the attributes that users set (read-only, hidden, system, archive), the time of creation and, if wanted,
/// those of the last access and change. to has to permit writing attributes.
Result<void> copyBasics(HANDLE from, HANDLE to, TakeTimes times, const QString &path);
/// A file that its owner has encrypted must not end up on the disk for everyone to read: AccessDenied then.
Result<void> checkEncryption(HANDLE from, HANDLE to, const QString &path);
/// Copies the streams beside the content, such as where a file was downloaded from. Leaves out one that the target's
/// file system or the system refuses.
Result<void> copyStreams(HANDLE from, HANDLE to, const QString &path);
/// Copies the access list. An error if there is one and it cannot be copied.
Result<void> copyAccessList(HANDLE from, HANDLE to, const QString &path);
/// Does the work of File::isPrivate: the file is the user's own, has one name, and the file system keeps owners. Who
/// else may change it is up to the folder's access list.
Result<bool> isPrivateFile(HANDLE handle, const QString &path);

} // namespace ravlin::platform
