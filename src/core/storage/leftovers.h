// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/platform/folder.h"

/// The helper files that a write creates beside its file. Their names alone say what a later start of the program has
/// to do with them.
namespace ravlin::storage {

/// The name of a file's redo file. It holds the inode only: both are in one folder, and device numbers may change with
/// the next start of the system.
QString redoName(quint64 inode);
bool isTemporaryName(const QString &fileName);
bool isRedoName(const QString &fileName);

/// A new file that is removed again unless it gets its final name. It is locked while it is open.
class TemporaryFile
{
public:
    static Result<TemporaryFile> create(platform::FileSystem &fileSystem, const QString &folder);
    TemporaryFile(TemporaryFile &&other) noexcept;
    TemporaryFile &operator=(TemporaryFile &&) = delete;
    ~TemporaryFile();

    platform::File &file() { return *m_file; }
    /// Its state after creation.
    const platform::FileInfo &info() const { return m_info; }
    /// Its path until it gets its final name.
    const QString &path() const { return m_path; }
    /// Gives it its final name and replaces what has that name.
    Result<void> moveTo(const QString &path);
    /// Gives it its final name unless that is taken (AlreadyExists).
    Result<void> moveToNew(const QString &path);
    /// Hands over the open file, still locked. Only after a move.
    std::unique_ptr<platform::File> release() { return std::move(m_file); }

private:
    TemporaryFile(
        platform::FileSystem &fileSystem, QString path, std::unique_ptr<platform::File> file, platform::FileInfo info);

    platform::FileSystem *m_fileSystem;
    QString m_path; ///< empty once the file is to stay
    std::unique_ptr<platform::File> m_file;
    platform::FileInfo m_info;
};

/// A new folder that is removed again, with all that is in it, unless it gets its final name. It is locked until then.
class TemporaryFolder
{
public:
    static Result<TemporaryFolder> create(platform::FileSystem &fileSystem, const QString &folder);
    TemporaryFolder(TemporaryFolder &&other) noexcept;
    TemporaryFolder &operator=(TemporaryFolder &&) = delete;
    ~TemporaryFolder();

    const QString &path() const { return m_path; }
    /// Gives it its final name unless that is taken (AlreadyExists).
    Result<void> moveToNew(const QString &path);

private:
    TemporaryFolder(platform::FileSystem &fileSystem, QString path, std::unique_ptr<platform::FolderLock> lock);

    platform::FileSystem *m_fileSystem;
    QString m_path; ///< empty once the folder is to stay
    std::unique_ptr<platform::FolderLock> m_lock;
};

} // namespace ravlin::storage
