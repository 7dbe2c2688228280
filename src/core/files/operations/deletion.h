// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/transfer.h"
#include "core/platform/trash.h"

namespace ravlin {

/// What became of the files and folders to delete.
struct DeletionReport
{
    std::vector<platform::TrashedItem> trashed;
    QStringList deleted; ///< for good
    std::vector<FileFailure> failures;
    QStringList notDone; ///< not begun because of a stop, or on a drive that turned out to be read-only
    bool wasStopped = false;
};

/// Returns the paths whose drive has no trash, in their order. Not among them is what can't be deleted at all. Creates
/// nothing.
QStringList withoutTrash(const QStringList &paths);

/// What can't be deleted at all, so that nobody need be asked about it: what is gone, and what is on a read-only drive,
/// which is told once a drive.
DeletionReport undeletable(const QStringList &paths);

/// Puts files, links and folders into the trash of their drive. One that can't go there stays where it is: it is never
/// deleted for good instead. Reports paths, not bytes.
DeletionReport putIntoTrash(const QStringList &paths, const Watch &watch = {}, storage::Journal *journal = nullptr);

/// Deletes for good, folders with their contents. A stop takes effect between two paths. A folder with something in it
/// that can't be deleted is a failure; what was deleted of it before is gone.
DeletionReport deleteForGood(platform::FileSystem &fileSystem, const QStringList &paths, const Watch &watch = {},
    storage::Journal *journal = nullptr);

} // namespace ravlin
