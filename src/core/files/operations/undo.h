// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/deletion.h"
#include "core/files/operations/transfer.h"
#include "core/files/renaming/renaming.h"

#include <deque>
#include <optional>
#include <variant>

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

/// What an undo would take back.
struct UndoSubject
{
    OperationKind kind = OperationKind::Copy;
    qsizetype count = 0;     ///< files and folders
    QString firstPath;       ///< one of them, to name it if it is the only one
    QString formerPath = {}; ///< where firstPath was before
};

struct UndoReport
{
    OperationKind kind = OperationKind::Copy; ///< what was undone
    QStringList undone;                       ///< present paths; for copies, their former ones
    std::vector<FileFailure> failures;        ///< what can no longer be undone, and why
    /// Targets whose former files a move had replaced: these files are lost.
    QStringList lost;
    QStringList notDone; ///< because of a stop
    bool wasStopped = false;
};

/// The last operations of this run that changed names or places. Undoes them one by one, the last one first. Undo is as
/// careful as the operation: it overwrites nothing and puts copies that it removes into the trash. An operation is
/// forgotten once its undo was tried; what a stop left untried remains for the next undo.
///
/// Errors of single paths: AlreadyExists (the old name is taken), NotFound (the file is gone), ChangedMeanwhile (an
/// edited copy stays), NoTrash and NoSpace (so does a copy that can't go into the trash), Unsupported (it was deleted
/// for good, or replaced a file that could not go into the trash). What a transfer replaced comes back from the trash;
/// if it can't, that is a failure of its own.
class UndoHistory
{
public:
    /// Each records what was done, if anything.
    void addTransfer(TransferKind kind, const TransferReport &report);
    void addDeletion(const DeletionReport &report);
    void addRenames(const std::vector<RenameDone> &renames, const QStringList &foldersMade = {});

    /// What undo() would take back, if anything.
    std::optional<UndoSubject> next() const;
    UndoReport undo(platform::FileSystem &fileSystem, const Watch &watch = {});

private:
    static constexpr std::size_t Most = 100; ///< operations remembered

    struct Transfers
    {
        TransferKind kind = TransferKind::Copy;
        std::vector<TransferStep> steps;
    };
    struct Deletions
    {
        std::vector<platform::TrashedItem> trashed;
        QStringList deleted;
    };
    struct Renames
    {
        std::vector<RenameDone> renames;
        QStringList foldersMade;
    };
    using Operation = std::variant<Transfers, Deletions, Renames>;

    void add(Operation operation);
    static UndoSubject subjectOf(const Operation &operation);
    /// Undoes one operation and keeps what a stop left of it.
    UndoReport take(platform::FileSystem &fileSystem, const Transfers &transfers, const Watch &watch);
    UndoReport take(platform::FileSystem &fileSystem, const Deletions &deletions, const Watch &watch);
    UndoReport take(platform::FileSystem &fileSystem, const Renames &renames, const Watch &watch);

    std::deque<Operation> m_operations; ///< the last one last
};

} // namespace ravlin
