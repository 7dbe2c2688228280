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
    Result<qint64> copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length) override;
    Result<void> takeMetadata(File &source) override;
    Result<void> setModified(qint64 nanoseconds) override;
    Result<bool> tryLock() override;

private:
    Handle m_handle;
    const QString m_path; ///< for error values, and for what needs a path
    std::optional<FileInfo> m_atOpening;
};

enum class LinkAtEnd
{
    Follow,
    Refuse ///< NotAFile
};

/// Opens a plain file that exists; folders and devices are NotAFile.
Result<std::unique_ptr<File>> openPlainFile(const QString &path, OpenMode mode, LinkAtEnd link);

// In metadata.cpp.

enum class TakeTimes
{
    Creation,
    All
};
/// Copies the attributes that users set (read-only, hidden, system, archive), the time of creation and, if wanted, that
/// of the last change. Both handles have to permit writing attributes.
Result<void> copyBasics(HANDLE from, HANDLE to, TakeTimes times, const QString &path);
/// Copies the streams beside the content, such as where a file was downloaded from. Leaves out one that the target's
/// file system or the system refuses.
Result<void> copyStreams(const QString &from, const QString &to);
/// Copies the access list. An error if there is one and it cannot be copied.
Result<void> copyAccessList(HANDLE from, HANDLE to, const QString &path);

} // namespace ravlin::platform
