// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/clsfilefunc.h"
#include "core/files/operations/undo.h"

#include <functional>
#include <optional>

namespace ravlin {

/// What an operation did and did not do, for the user.
struct OperationReport
{
    OperationKind kind = OperationKind::Copy;
    OperationKind undone = OperationKind::Copy; ///< by an undo
    qsizetype doneCount = 0;
    std::vector<FileFailure> failures;
    QStringList skipped;                   ///< by the user's answers
    QStringList notDone;                   ///< because of a stop or a full disk
    QStringList lost;                      ///< see UndoReport and TransferReport
    std::vector<FileFailure> inBothPlaces; ///< see TransferReport
    bool wasStopped = false;

    /// Whether the user knows all of it already.
    bool isComplete() const { return failures.empty() && notDone.isEmpty() && lost.isEmpty() && inBothPlaces.empty(); }
};

/// Why something can only be deleted for good.
enum class NoWayBack
{
    NoTrash,  ///< its drive has none, or the trash is not wanted
    TrashFull ///< its drive is too full to put anything into the trash
};

/// What FileOperations needs of the window. All calls come on the thread that FileOperations is called on.
class FileOperationHost
{
public:
    virtual ~FileOperationHost() = default;

    /// A name is taken. Stop calls the whole operation off.
    virtual ClashDecision askClash(const Clash &clash) = 0;
    /// Asks before files and folders go into the trash.
    virtual bool confirmTrash(const QStringList &paths) = 0;
    /// Asks before files and folders are deleted for good.
    virtual bool confirmDeleteForGood(const QStringList &paths, NoWayBack reason) = 0;
    /// Runs the work on a thread of its own, shows its progress and lets the user stop it; returns when it is done.
    /// Short work may show nothing. Returns false, with nothing done, while other work is running.
    virtual bool runLong(OperationKind kind, const std::function<void(const Watch &)> &work) = 0;
    /// Shows what was not done, and why. Called only when isComplete() is false.
    virtual void tell(const OperationReport &report) = 0;
};

/// The service behind clsFileFunc: copies, moves, renames and deletes, asks the user where needed, and records what it
/// did for undo. Overwrites nothing and deletes nothing for good without a yes.
class FileOperations final : public FileService
{
public:
    FileOperations(platform::FileSystem &fileSystem, FileOperationHost &host, UndoHistory &history)
        : m_fileSystem(fileSystem), m_host(host), m_history(history)
    {
    }

    /// Copies and moves into the destination if it is a folder; else it becomes a single source's path. Deletes into
    /// the trash with FlagAllowUndo, else for good, and asks before either.
    int perform(const FileRequest &request) override;

    /// Undoes the last operation, if any.
    int undo();

private:
    int transfer(const FileRequest &request, TransferKind kind);
    int remove(const FileRequest &request);
    bool removeForGood(const QStringList &paths, NoWayBack reason, DeletionReport &done);
    int rename(const FileRequest &request);
    int finish(const OperationReport &report);

    platform::FileSystem &m_fileSystem;
    FileOperationHost &m_host;
    UndoHistory &m_history;
};

/// Returns the folder itself or, if it is gone, the nearest one above it that exists, with the separator at its end.
/// Empty if its drive is gone.
QString nearestFolder(platform::FileSystem &fileSystem, const QString &path);

} // namespace ravlin
