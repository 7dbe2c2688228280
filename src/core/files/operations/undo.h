// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/transfer.h"
#include "core/history/history.h"

#include <optional>
#include <set>

/// Takes back what the history has recorded, and repeats what was taken back. As careful as the operations themselves:
/// overwrites nothing, and puts copies that it removes into the trash. What was replaced comes back from there. Files
/// are found where they are by now.
namespace ravlin {

struct UndoRequest
{
    std::optional<qint64> entry = {}; ///< of the history; else the newest that was not tried yet
    std::set<qint64> onlyFiles = {};  ///< the changes to take back; all if it is empty
    bool withLater = false;           ///< takes back first what later entries did to the same files
    bool isDryRun = false;            ///< only looks at what could be done
};

/// What became of the changes of an entry. Paths of what was done are those where the files are now; for copies, and
/// for lists that were made, where they were.
///
/// Errors of single files: AlreadyExists (the old name is taken), NotFound (the file is gone), ChangedMeanwhile (it was
/// changed since and stays), NoTrash and NoSpace (a copy that can't go into the trash), Unsupported (it was deleted for
/// good, or replaced a file that could not go into the trash). What a transfer replaced comes back from the trash; if
/// it can't, that is a failure of its own.
struct UndoReport
{
    history::Entry entry; ///< id 0: there was nothing to take back
    /// Not empty: these have changed the same files since, and nothing was done. Newest first.
    std::vector<history::Entry> later;
    QStringList undone;
    std::vector<FileFailure> failures;
    QStringList lost;    ///< targets whose former files a move had replaced: these files are lost
    QStringList notDone; ///< because of a stop; the next undo takes them back
    bool wasStopped = false;
    history::Summary summary; ///< for the notice
};

/// An entry is not the next one any more once all of it was tried.
Result<UndoReport> undo(history::History &history, platform::FileSystem &fileSystem, const UndoRequest &request = {},
    const Watch &watch = {});
/// Repeats what was taken back last. Nothing once a later change has touched the same files.
Result<UndoReport> redo(history::History &history, platform::FileSystem &fileSystem, const Watch &watch = {});

} // namespace ravlin
