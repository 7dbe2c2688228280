// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/windows/native.h"

#include <optional>

/// A plain file behind a handle.
namespace ravlin::platform {

class WindowsFile final : public File
{
public:
    /// atOpening: its state, which info() gives away once without asking the system again.
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
    const QString m_path; ///< for error values, and for what only goes by path
    std::optional<FileInfo> m_atOpening;
};

enum class LinkAtEnd
{
    Follow,
    Refuse ///< NotAFile
};

/// Opens a plain file that exists; folders and devices are NotAFile.
Result<std::unique_ptr<File>> openPlainFile(const QString &path, OpenMode mode, LinkAtEnd link);

/// From metadata_windows.cpp.

/// The attributes that users set: read-only, hidden, system, archive; the times of creation and, where wanted, of the
/// last change; both handles may write attributes.
enum class TakeTimes
{
    Creation,
    All
};
Result<void> copyBasics(HANDLE from, HANDLE to, TakeTimes times, const QString &path);
/// The streams beside the content, such as where a file was downloaded from. One that the target's file system or the
/// system refuses is left out.
Result<void> copyStreams(const QString &from, const QString &to);
/// Who may do what with it. Errors are those of an access list that is there and can't be given.
Result<void> copyAccessList(HANDLE from, HANDLE to, const QString &path);

} // namespace ravlin::platform
