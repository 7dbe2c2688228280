// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/clsfilefunc.h"
#include "core/files/operations/deletion.h"
#include "core/files/operations/undo.h"

#include <functional>
#include <optional>

namespace ravlin {

enum class OperationKind
{
    Copy,
    Move,
    Trash,
    DeleteForGood,
    Rename,
    Undo
};

/// What an operation did and did not do, for the user.
struct OperationReport
{
    OperationKind kind = OperationKind::Copy;
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
    /// What the history has of an operation, once it has ended. Comes before tell().
    virtual void recorded(const history::Summary &summary) { Q_UNUSED(summary) }
    /// The same of what was taken back or repeated.
    virtual void takenBack(const history::Summary &summary) { Q_UNUSED(summary) }
};

/// The service behind clsFileFunc: copies, moves, renames and deletes, asks the user where needed, and makes an entry
/// of the history of each request. Overwrites nothing and deletes nothing for good without a yes.
class FileOperations final : public FileService
{
public:
    FileOperations(platform::FileSystem &fileSystem, FileOperationHost &host, history::History &history)
        : m_fileSystem(fileSystem), m_host(host), m_history(history)
    {
    }

    /// Copies and moves into the destination if it is a folder; else it becomes a single source's path. Deletes into
    /// the trash with FlagAllowUndo, else for good, and asks before either.
    int perform(const FileRequest &request) override;

    /// Takes back what is asked for; without a request the newest entry that was not tried yet, if any. report: all
    /// that is known of it, also the later entries that keep an older one from being taken back.
    int undo(const UndoRequest &request = {}, UndoReport *report = nullptr);
    /// Repeats what was taken back last, if that is still possible.
    int redo();

private:
    int transfer(const FileRequest &request, TransferKind kind);
    int remove(const FileRequest &request);
    int rename(const FileRequest &request);
    using TakeBack = std::function<Result<UndoReport>(const Watch &)>;
    int takeBack(const TakeBack &work, UndoReport *told);
    QString folderOfEntry(const QStringList &paths);
    int finish(const OperationReport &report);

    platform::FileSystem &m_fileSystem;
    FileOperationHost &m_host;
    history::History &m_history;
};

/// Returns the folder itself or, if it is gone, the nearest one above it that exists, with the separator at its end.
/// Empty if its drive is gone.
QString nearestFolder(platform::FileSystem &fileSystem, const QString &path);

} // namespace ravlin
