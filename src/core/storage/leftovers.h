// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/storage/journal.h"

/// The helper files that a write creates beside its file. Their names alone say what a later start of the program has
/// to do with them.
namespace ravlin::storage {

/// The name of a file's redo file. It holds the inode only: both are in one folder, and device numbers may change with
/// the next start of the system.
QString redoName(quint64 inode);
bool isTemporaryName(const QString &fileName);
bool isRedoName(const QString &fileName);

/// The journal's record of a temporary file or folder.
class Announcement
{
public:
    Announcement() = default;
    /// Records it; to be called before it is made. journal: may be null.
    Announcement(Journal *journal, const QString &folder, const QString &name);
    Announcement(Announcement &&other) noexcept;
    Announcement &operator=(Announcement &&other) noexcept;
    ~Announcement() = default;

    /// It is gone, or has got its final name.
    void end();

private:
    Journal *m_journal = nullptr;
    std::optional<Journal::Ticket> m_ticket;
};

/// A new file that is removed again unless it gets its final name. Until then nobody but the user may open it, and it
/// is locked while it is open. The journal is told when it is made and when it goes; it may be moved by another thread.
class TemporaryFile
{
public:
    static Result<TemporaryFile> create(
        const std::shared_ptr<platform::HeldFolder> &folder, Journal *journal = nullptr);
    /// In the folder that path leads to now.
    static Result<TemporaryFile> create(
        platform::FileSystem &fileSystem, const QString &path, Journal *journal = nullptr);
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
    TemporaryFile(platform::Place place, std::unique_ptr<platform::File> file, platform::FileInfo info,
        Announcement announcement);

    platform::Place m_place; ///< without a folder once the file is to stay
    Announcement m_announcement;
    std::unique_ptr<platform::File> m_file;
    platform::FileInfo m_info;
};

/// A new folder of the user's alone that is removed again, with all that is in it, unless it gets its final name. It is
/// locked meanwhile where folders have locks.
class TemporaryFolder
{
public:
    static Result<TemporaryFolder> create(
        const std::shared_ptr<platform::HeldFolder> &parent, Journal *journal = nullptr);
    TemporaryFolder(TemporaryFolder &&other) noexcept;
    TemporaryFolder &operator=(TemporaryFolder &&) = delete;
    ~TemporaryFolder();

    const std::shared_ptr<platform::HeldFolder> &folder() const { return m_folder; }
    /// Its path until it gets its final name; for messages.
    QString path() const { return m_place.path(); }
    /// Gives it its final name beside it unless that is taken (AlreadyExists).
    Result<void> moveToNew(const QString &name);

private:
    TemporaryFolder(platform::Place place, std::shared_ptr<platform::HeldFolder> folder, Announcement announcement);

    platform::Place m_place; ///< without a folder once it is to stay
    Announcement m_announcement;
    std::shared_ptr<platform::HeldFolder> m_folder;
};

/// Removes a temporary file or folder that a journal has recorded, and tells whether it is gone. A file has to be
/// certainly ours and its writer dead, as for cleanLeftovers. A folder has to be the current user's alone (mode 0700),
/// and its lock free: a random name that our own record bears out, in a folder that nobody else could fill, tells who
/// has made it. Where folders have no locks it stays, for its writer may be at work.
bool removeTemporary(platform::FileSystem &fileSystem, const QString &folder, const QString &name);

} // namespace ravlin::storage
