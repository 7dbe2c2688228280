// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/transfer.h"
#include "core/platform/trash.h"

namespace ravlin {

/// What became of files and folders that were to be deleted.
struct DeletionReport
{
    std::vector<platform::TrashedItem> trashed;
    QStringList deleted; ///< for good
    std::vector<FileFailure> failures;
    QStringList notDone; ///< not begun because of a stop
    bool wasStopped = false;
};

/// The paths whose drive has no trash, in their order. Makes nothing.
QStringList withoutTrash(const QStringList &paths);

/// Puts files, links and folders into the trash of their drive. One that can't go there stays where it is: nothing is
/// ever deleted for good instead. The progress counts paths, no bytes.
DeletionReport putIntoTrash(const QStringList &paths, const Watch &watch = {});

/// Deletes for good, folders with all that is in them. A stop takes effect between two paths. A folder of which
/// something can't be deleted is a failure; what had been deleted of it by then is gone.
DeletionReport deleteForGood(platform::FileSystem &fileSystem, const QStringList &paths, const Watch &watch = {});

} // namespace ravlin
