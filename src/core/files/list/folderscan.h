// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "core/files/list/listrow.h"
#include "core/platform/error.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <optional>
#include <vector>

namespace ravlin {

class TagCache;

/// A file that has no row because it could not be read.
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
    /// Folders in which an interrupted rename left something under a name for the time being (see saferename.h).
    QStringList interruptedRenames;
    bool isComplete = true; ///< false: a stop was requested meanwhile, files are missing
};

/// What a scan may use, each of which can be left out.
struct ScanOptions
{
    TagCache *cache = nullptr;
    /// Called only by the thread that called the scan: with each folder searched (done is 0, total the files found so
    /// far), now and then while other threads read files, and when the last one is done.
    ProgressReport progress = {};
    std::stop_token stop = {}; ///< ends the scan early
};

/// The rows for the MP3 files directly in a folder (a path that ends in the separator), in the order of the file
/// system: names that end in ".mp3" whatever their case, plain files only, none that is hidden. The tags are read on
/// all cores. A file that can't be read has no row. Errors: the folder can't be listed.
Result<Listing> ListFolder(const QString &folderPath, const QString &relativePrefix, const ScanOptions &options = {});

/// The rows of a folder and of all folders below it: its own files first, then those of each direct subfolder in
/// GetSubfolders' order, then, subfolder by subfolder, what lies below them in the same way. A folder below that can't
/// be listed is a failure; one that is reached twice (by symbolic links) is listed once.
Result<Listing> ListFolderTree(const QString &folderPath, const ScanOptions &options = {});

/// The full paths of a folder's direct subfolders, each with the separator at its end, ordered by the character codes
/// of their upper-case forms. Hidden ones count, but not those that a copy is being made in (isLeftoverName). After a
/// request to stop: those found so far, in no order.
Result<QStringList> GetSubfolders(const QString &folderPath, const std::stop_token &stop = {});

/// Reads the tags of files again: those of the folder (a path that ends in the separator) followed by each text. One
/// element for each text; none for a file that can't be read, or that was not reached before a stop.
std::vector<std::optional<ListedFile>> readListTags(
    const QString &folderPath, const QStringList &texts, const ScanOptions &options = {});

} // namespace ravlin
