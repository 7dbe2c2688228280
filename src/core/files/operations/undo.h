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
    QString firstPath;       ///< one of them, to name it when it is the only one
    QString formerPath = {}; ///< where that one was before
};

struct UndoReport
{
    OperationKind kind = OperationKind::Copy; ///< what was undone
    QStringList undone;                       ///< paths as they are now; for a copy, where it was
    std::vector<FileFailure> failures;        ///< what can't be undone any more, and why
    /// Files that were replaced by what was moved back: nobody has them any more.
    QStringList lost;
    QStringList notDone; ///< because of a stop
    bool wasStopped = false;
};

/// The last operations of this run that changed names or places, to be undone one by one, the last one first. An undo
/// is as careful as the operation: it overwrites nothing, and what it takes away again (a copy) goes into the trash. An
/// operation is forgotten once its undo was tried; what a stop kept from being tried is what the next undo takes back.
///
/// Errors of single paths: AlreadyExists (the old name is taken), NotFound (it is not there any more),
/// ChangedMeanwhile (a copy that was edited since stays), NoTrash (so does one that can't be put into the trash),
/// Unsupported (it was deleted for good, took the place of another file, or was moved in part only).
class UndoHistory
{
public:
    /// Each remembers what was done; nothing when nothing was.
    void addTransfer(TransferKind kind, const TransferReport &report);
    void addDeletion(const DeletionReport &report);
    void addRenames(const std::vector<RenameDone> &renames, const QStringList &foldersMade = {});

    /// What undo() would take back; nothing when nothing is left.
    std::optional<UndoSubject> next() const;
    UndoReport undo(platform::FileSystem &fileSystem, const Watch &watch = {});

private:
    static constexpr std::size_t Most = 100; ///< operations that are remembered

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
    /// Undoes one and remembers what a stop has left of it.
    UndoReport take(platform::FileSystem &fileSystem, const Transfers &transfers, const Watch &watch);
    UndoReport take(platform::FileSystem &fileSystem, const Deletions &deletions, const Watch &watch);
    UndoReport take(platform::FileSystem &fileSystem, const Renames &renames, const Watch &watch);

    std::deque<Operation> m_operations; ///< the last one last
};

} // namespace ravlin
