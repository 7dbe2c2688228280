// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <optional>

struct stat;

/// A plain file behind a descriptor.
namespace ravlin::platform {

FileInfo fileInfo(const struct stat &status);
NodeKind kindOfMode(quint32 mode);

class PosixFile final : public File
{
public:
    /// Owns the descriptor. atOpening: its state, which the first info() returns without a system call.
    PosixFile(int descriptor, QString path, const FileInfo &atOpening);
    ~PosixFile() override;
    PosixFile(const PosixFile &) = delete;
    PosixFile &operator=(const PosixFile &) = delete;

    Result<qint64> readAt(std::span<char> buffer, qint64 offset) override;
    Result<qint64> writeAt(std::span<const char> bytes, qint64 offset) override;
    Result<void> truncate(qint64 size) override;
    Result<void> sync() override;
    Result<FileInfo> info() override;
    Result<FileIdentity> identity() override;
    Result<qint64> copyFrom(File &source, qint64 sourceOffset, qint64 offset, qint64 length) override;
    Result<void> takeOwner(File &source) override;
    Result<void> takeAttributes(File &source) override;
    Result<void> takePermissions(File &source) override;
    void takeTimes(File &source) override;
    Result<void> setPermissions(quint32 permissions) override;
    Result<void> setModified(qint64 nanoseconds) override;
    void forgetCached() override;
    Result<bool> isPrivate() override;
    Result<bool> tryLock() override;

private:
    static int descriptorOf(File &file);
    Result<qint64> copyThroughMemory(File &source, qint64 sourceOffset, qint64 offset, qint64 length);

    const int m_descriptor;
    const QString m_path; ///< for error values only
    std::optional<FileInfo> m_atOpening;
};

/// Opens a plain file by a name in an open folder, or by a path with AT_FDCWD. flags: of open(2). path: for errors.
Result<std::unique_ptr<File>> openPlainFile(int folder, const char *name, int flags, const QString &path);

} // namespace ravlin::platform
