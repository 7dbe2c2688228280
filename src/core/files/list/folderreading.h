// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/folderscan.h"

#include <vector>

namespace ravlin {

/// Files of one folder to read.
struct FolderFiles
{
    QString path;   ///< of the folder, ends in the separator
    QString prefix; ///< of the rows, see ListRow
    std::vector<QString> names;
};

/// A row for each file, in the order of the folders and their names.
struct FolderRows
{
    std::vector<ListRow> rows;
    std::vector<bool> hasTag; ///< of each row: it was read, or the cache knew it
    std::vector<ListFailure> failures;
    std::size_t readCount = 0; ///< files that were opened
};

/// Reads the tags of the folders' files on all cores. With a cache, an unchanged file costs one stat, and each folder's
/// entries become those of the files given. Each folder may be given only once.
FolderRows readFolders(std::vector<FolderFiles> folders, const ScanOptions &options);

} // namespace ravlin
