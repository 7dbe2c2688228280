// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/folderscan.h"

#include <vector>

namespace ravlin {

/// Files of one folder whose tags are wanted.
struct FolderFiles
{
    QString path;   ///< of the folder, ends in the separator
    QString prefix; ///< stands before the names in the rows' texts
    std::vector<QString> names;
};

/// What reading them gave, file by file in the order of the folders and their names.
struct ReadFiles
{
    std::vector<ListRow> rows;
    std::vector<bool> hasTag; ///< of each row: it was read, or known from the cache
    std::vector<ListFailure> failures;
    std::size_t readCount = 0; ///< files that were opened
};

/// Reads their tags on all cores. With a cache, a file that did not change costs one question to the file system, and
/// each folder's entries in the cache become those of the files told here. A folder may be told once only.
ReadFiles readTags(std::vector<FolderFiles> folders, const ScanOptions &options);

} // namespace ravlin
