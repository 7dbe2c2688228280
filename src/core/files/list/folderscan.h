// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "core/files/list/listrow.h"
#include "core/platform/error.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

namespace ravlin {

class TagCache;

/// A file or folder that could not be read and has no rows.
struct ListFailure
{
    QString path;
    Error error;
};

struct Listing
{
    std::vector<ListRow> rows;
    std::vector<ListFailure> failures;
    std::size_t filesRead = 0; ///< files that were opened; the cache knew the others
    /// Folders in which an interrupted rename left a file under a temporary name (see saferename.h).
    QStringList interruptedRenames;
    bool isComplete = true; ///< false: a stop was requested, files may be missing; the rows are as good as any
};

/// What a scan may use; all of it is optional.
struct ScanOptions
{
    TagCache *cache = nullptr;
    /// Called only by the thread that called the scan: with each folder searched (total is the number of files found so
    /// far), now and then while other threads read files, and when the last one is done.
    ProgressReport progress = {};
    std::stop_token stop = {};     ///< ends the scan early
    bool skipTrashFolders = false; ///< ListFolderTree leaves out what isTrashFolderName() says at the top of a drive
    /// The files found in so long a search are read before it goes on: if it is stopped, there are rows.
    std::chrono::milliseconds longSearch = std::chrono::seconds(1);
};

/// Whether a folder of that name at the top of a drive holds what was deleted, or is the system's own.
bool isTrashFolderName(const QString &name);

/// Lists the MP3 files directly in a folder, in the order of the file system: plain files that are not hidden and whose
/// names end in ".mp3" in any case. Reads their tags on all cores. A file that can't be read has no row. relativePrefix
/// becomes the rows' prefix. Error: the folder can't be listed.
Result<Listing> ListFolder(const QString &folderPath, const QString &relativePrefix, const ScanOptions &options = {});

/// Lists a folder and all folders below it: first its own files, then those of each direct subfolder in the order of
/// GetSubfolders(), then, subfolder by subfolder, what lies below them in the same way. A folder below that can't be
/// listed is a failure; one reached twice, by symbolic links, is listed once.
Result<Listing> ListFolderTree(const QString &folderPath, const ScanOptions &options = {});

/// Returns the full paths of a folder's direct subfolders, with the separator at their ends, ordered by the character
/// codes of their upper-case forms. Includes hidden ones, but not those in which a copy is being made (isLeftoverName).
/// After a stop: those found so far, in no order.
Result<QStringList> GetSubfolders(const QString &folderPath, const std::stop_token &stop = {});

/// Reads again the files whose rows in a listing of that folder have these texts. Returns an element for each text,
/// empty for a file that can't be read or was not reached before a stop.
std::vector<std::optional<ListedFile>> rereadFiles(
    const QString &folderPath, const QStringList &texts, const ScanOptions &options = {});

} // namespace ravlin
