#pragma once

#include "platform/error.h"
#include "tags/listreader.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace ravlin {

/// One row of the file list: its text (relative prefix and file name) and what its columns show of the file's tags.
struct ListRow
{
    QString text;
    ListTag tag;

    /// The track column: a number below 10 with a zero in front.
    QString trackColumn() const;
};

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
};

/// The rows for the MP3 files directly in a folder (a path that ends in the separator), in the order of the file
/// system: names that end in ".mp3" whatever their case, plain files only, none that is hidden. The tags are read on
/// all cores. A file that can't be read has no row. Errors: the folder can't be listed.
Result<Listing> ListFolder(const QString &folderPath, const QString &relativePrefix);

/// The rows of a folder and of all folders below it: its own files first, then those of each direct subfolder in
/// GetSubfolders' order, then, subfolder by subfolder, what lies below them in the same way. A folder below that can't
/// be listed is a failure; one that is reached twice (by symbolic links) is listed once.
Result<Listing> ListFolderTree(const QString &folderPath);

/// The full paths of a folder's direct subfolders, each with the separator at its end, ordered by the character codes
/// of their upper-case forms. Hidden ones count.
Result<QStringList> GetSubfolders(const QString &folderPath);

} // namespace ravlin
