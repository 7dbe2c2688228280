// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/writeplan.h"

#include <optional>

/// Rewriting a file without giving it a new inode, protected against a crash by a redo file beside it.
///
/// The redo file holds the new content and the old one. Once it has its final name on the disk, the file is overwritten
/// from it; whoever finds the redo file later can finish that. A failure that the program survives is undone from the
/// old content. Layout, in bytes, numbers big-endian:
///
///     0            header: magic, version, inode, sizes, modification time, name; padded to one block
///     4096         the new content
///     next block   the old content
///     after it     trailer: magic and the BLAKE2b-256 digest of all before it
namespace ravlin::storage {

struct RedoHeader
{
    quint64 inode = 0;         ///< of the file that it belongs to
    qint64 newSize = 0;        ///< bytes
    qint64 oldSize = 0;        ///< bytes
    qint64 oldModified = 0;    ///< nanoseconds since 1970, UTC
    bool keepModified = false; ///< the new content bears the old modification time
    QString name;              ///< the file's name in the redo file's folder

    qint64 newOffset() const;
    qint64 oldOffset() const;
    qint64 trailerOffset() const;
};

Result<void> writeRedoHeader(platform::File &redo, const RedoHeader &header);
/// Makes the redo file valid; to be called once everything else is in it.
Result<void> writeRedoTrailer(platform::File &redo, const RedoHeader &header);
/// The header of a complete and undamaged redo file, otherwise nothing. An error if it cannot be read.
Result<std::optional<RedoHeader>> readRedo(platform::File &redo);

/// The file to rewrite.
struct RewriteTarget
{
    const platform::Place &place;
    platform::File &file;    ///< open for reading; for rewriteUnderRedo also for writing
    platform::FileInfo info; ///< its state when the content was planned
};

/// Gives the target the new content. On error it has the old one. AccessDenied if an earlier rewriting of it was
/// interrupted and may not be finished.
Result<void> rewriteUnderRedo(platform::FileSystem &fileSystem, const RewriteTarget &target, const NewContent &content,
    const WriteOptions &options);

enum class RedoState
{
    None,    ///< there is none that concerns us
    Gone,    ///< the rewriting is finished, or needs no finishing, and the redo file is removed
    Pending, ///< the file is neither old nor new and is not for us to finish: all stays as it is
    Kept     ///< the file was changed since, or is not in this folder any more: nobody can tell what it has to become,
             ///< and the redo file holds all that is left of both contents
};

/// Finishes the rewriting that a redo file was made for and removes the redo file. ChangedMeanwhile while another
/// program uses it. targetName: the file that it belongs to; if empty, the file of the recorded name or else of the
/// recorded inode.
///
/// Others may have planted the redo file, or a stranger's archive may have brought it. So it has to be a file of the
/// current user's alone (File::isPrivate). Its target has to be a plain file of the same folder with the recorded inode
/// and a name that ends in ".mp3"; each of its bytes has to be the old or the new one. It is finished only if it
/// belongs to the current user. A file that was changed since is left as it is, and so is its redo file.
Result<RedoState> finishRedo(platform::FileSystem &fileSystem, platform::HeldFolder &folder, const QString &redoName,
    const QString &targetName = {});
/// In the folder that the path leads to now.
Result<RedoState> finishRedo(platform::FileSystem &fileSystem, const QString &folder, const QString &redoName);

} // namespace ravlin::storage
