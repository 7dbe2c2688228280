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
    QStringList notDone; ///< not begun because of a stop
    bool wasStopped = false;
};

/// Returns the paths whose drive has no trash, in their order. Creates nothing.
QStringList withoutTrash(const QStringList &paths);

/// Puts files, links and folders into the trash of their drive. One that can't go there stays where it is: it is never
/// deleted for good instead. Reports paths, not bytes.
DeletionReport putIntoTrash(const QStringList &paths, const Watch &watch = {});

/// Deletes for good, folders with their contents. A stop takes effect between two paths. A folder with something in it
/// that can't be deleted is a failure; what was deleted of it before is gone.
DeletionReport deleteForGood(platform::FileSystem &fileSystem, const QStringList &paths, const Watch &watch = {});

} // namespace ravlin
