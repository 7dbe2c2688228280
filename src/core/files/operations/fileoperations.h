// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/clsfilefunc.h"
#include "core/files/operations/undo.h"

#include <functional>
#include <optional>

namespace ravlin {

/// What an operation did and did not do, for people.
struct OperationReport
{
    OperationKind kind = OperationKind::Copy;
    OperationKind undone = OperationKind::Copy; ///< for an undo: of what
    qsizetype doneCount = 0;
    std::vector<FileFailure> failures;
    QStringList skipped; ///< by the user's answers
    QStringList notDone; ///< because of a stop, or a full disk
    QStringList lost;    ///< see UndoReport
    bool wasStopped = false;

    /// Whether there is nothing that the user does not know already.
    bool isComplete() const { return failures.empty() && notDone.isEmpty() && lost.isEmpty(); }
};

/// What FileOperations needs of the window. All calls come on the thread that FileOperations is called on.
class FileOperationHost
{
public:
    virtual ~FileOperationHost() = default;

    /// A name is taken. Stop calls the whole operation off.
    virtual ClashDecision askClash(const Clash &clash) = 0;
    /// Before files and folders go into the trash. True: yes.
    virtual bool confirmTrash(const QStringList &paths) = 0;
    /// Before those whose drive has no trash are deleted for good; or all, when no trash was asked for. True: yes.
    virtual bool confirmDeleteForGood(const QStringList &paths) = 0;
    /// Runs the work on a thread of its own, with a way to stop it and its progress shown, which is told on that
    /// thread; returns when it is done. May not show anything for short work. False, with nothing done: other work is
    /// under way.
    virtual bool runLong(OperationKind kind, const std::function<void(const Watch &)> &work) = 0;
    /// Shows what was not done, and why. Called only when isComplete() is false.
    virtual void tell(const OperationReport &report) = 0;
};

/// The service behind clsFileFunc: copies, moves, renames and deletes with the questions that this asks for, and
/// remembers what it did for undoing. Overwrites nothing and deletes nothing for good without a yes.
class FileOperations final : public FileService
{
public:
    FileOperations(platform::FileSystem &fileSystem, FileOperationHost &host, UndoHistory &history)
        : m_fileSystem(fileSystem), m_host(host), m_history(history)
    {
    }

    /// Copies and moves go into the destination if that is a folder; else a single source gets it as its path.
    /// Deletions go into the trash with FlagAllowUndo, and without it are for good. The user is asked before either.
    int perform(const FileRequest &request) override;

    /// Takes the last operation back; nothing happens when there is none.
    int undo();

private:
    int transfer(const FileRequest &request, TransferKind kind);
    int remove(const FileRequest &request);
    int rename(const FileRequest &request);
    int finish(const OperationReport &report);

    platform::FileSystem &m_fileSystem;
    FileOperationHost &m_host;
    UndoHistory &m_history;
};

/// The folder itself or, when it is gone, the nearest one above it that is left, with the separator at its end; empty
/// when none is, since its drive is gone.
QString nearestFolder(platform::FileSystem &fileSystem, const QString &path);

} // namespace ravlin
