// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/platform/folderlock.h"

/// The helper files that a write makes beside its file, and their names. A name says all that a
/// later start of the program needs to know what to do with it.
namespace ravlin::storage {

/// A redo file is found by the file it belongs to. Only the inode is in the name: both are in one
/// folder, and device numbers may be others after the next start of the system.
QString redoName(quint64 inode);
bool isTemporaryName(const QString &fileName);
bool isRedoName(const QString &fileName);

/// A new file in a folder that is removed again unless it gets its final name. It is locked while
/// it is open.
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
    /// Its name until it gets its final one.
    const QString &path() const { return m_path; }
    /// Gives it its final name, in the place of what bears that name.
    Result<void> moveTo(const QString &path);
    /// Gives it its final name unless that is taken (AlreadyExists).
    Result<void> moveToNew(const QString &path);
    /// The open file, still locked, once it has been moved.
    std::unique_ptr<platform::File> release() { return std::move(m_file); }

private:
    TemporaryFile(
        platform::FileSystem &fileSystem, QString path, std::unique_ptr<platform::File> file, platform::FileInfo info);

    platform::FileSystem *m_fileSystem;
    QString m_path; ///< empty once the file is not to be removed any more
    std::unique_ptr<platform::File> m_file;
    platform::FileInfo m_info;
};

/// The same for a folder with all that is put into it: removed again unless it gets its final name, and locked so long.
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
    QString m_path; ///< empty once the folder is not to be removed any more
    std::unique_ptr<platform::FolderLock> m_lock;
};

} // namespace ravlin::storage
