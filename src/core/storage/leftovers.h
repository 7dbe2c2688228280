// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

/// The helper files that a write creates beside its file. Their names alone say what a later start of the program has
/// to do with them.
namespace ravlin::storage {

/// The name of a file's redo file. It holds the inode only: both are in one folder, and device numbers may change with
/// the next start of the system.
QString redoName(quint64 inode);
bool isTemporaryName(const QString &fileName);
bool isRedoName(const QString &fileName);

/// A new file that is removed again unless it gets its final name. Until then nobody but the user may open it, and it
/// is locked while it is open.
class TemporaryFile
{
public:
    static Result<TemporaryFile> create(const std::shared_ptr<platform::HeldFolder> &folder);
    /// In the folder that path leads to now.
    static Result<TemporaryFile> create(platform::FileSystem &fileSystem, const QString &path);
    TemporaryFile(TemporaryFile &&other) noexcept;
    TemporaryFile &operator=(TemporaryFile &&) = delete;
    ~TemporaryFile();

    platform::File &file() { return *m_file; }
    /// Its state after creation.
    const platform::FileInfo &info() const { return m_info; }
    /// Until it gets its final name.
    const std::shared_ptr<platform::HeldFolder> &folder() const { return m_place.folder; }
    /// Its path until it gets its final name; for messages.
    QString path() const { return m_place.path(); }
    /// Gives it its final name in its folder and replaces what has that name.
    Result<void> moveTo(const QString &name);
    /// Gives it its final name in its folder unless that is taken (AlreadyExists).
    Result<void> moveToNew(const QString &name);
    /// Hands over the open file, still locked. Only after a move.
    std::unique_ptr<platform::File> release() { return std::move(m_file); }

private:
    TemporaryFile(platform::Place place, std::unique_ptr<platform::File> file, platform::FileInfo info);

    platform::Place m_place; ///< without a folder once the file is to stay
    std::unique_ptr<platform::File> m_file;
    platform::FileInfo m_info;
};

/// A new folder of the user's alone that is removed again, with all that is in it, unless it gets its final name.
class TemporaryFolder
{
public:
    static Result<TemporaryFolder> create(const std::shared_ptr<platform::HeldFolder> &parent);
    TemporaryFolder(TemporaryFolder &&other) noexcept;
    TemporaryFolder &operator=(TemporaryFolder &&) = delete;
    ~TemporaryFolder();

    const std::shared_ptr<platform::HeldFolder> &folder() const { return m_folder; }
    /// Its path until it gets its final name; for messages.
    QString path() const { return m_place.path(); }
    /// Gives it its final name beside it unless that is taken (AlreadyExists).
    Result<void> moveToNew(const QString &name);

private:
    TemporaryFolder(platform::Place place, std::shared_ptr<platform::HeldFolder> folder);

    platform::Place m_place; ///< without a folder once it is to stay
    std::shared_ptr<platform::HeldFolder> m_folder;
};

} // namespace ravlin::storage
