// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/storage/writeplan.h"

/// Rewriting a file without giving it a new inode, protected against a crash by a redo file beside
/// it.
///
/// The redo file holds the new content and the old one. Once it bears its final name on the disk
/// the file is overwritten from it; whoever finds the redo file later can finish that. A failure
/// that the program lives to see is undone from the old content. Layout, in bytes, numbers
/// big-endian:
///
///     0                header: magic, version, inode, sizes, modification time, name; padded to
///     one block 4096             the new content next block       the old content after it
///     trailer: magic and the BLAKE2b-256 digest of all before it
namespace ravlin::storage {

/// The file to rewrite, as opened by its canonical path.
struct RewriteTarget
{
    QString path;
    platform::File &file;    ///< open for reading and writing
    platform::FileInfo info; ///< its state when the content was planned
};

/// Gives the target the content. On error it has the old one.
Result<void> rewriteUnderRedo(platform::FileSystem &fileSystem, const RewriteTarget &target, const NewContent &content,
    const WriteOptions &options);

/// Finishes what a redo file was made for and removes it. True when a redo file was there and is
/// gone now; false when there was none that is any of our business. ChangedMeanwhile while another
/// program is at it. targetPath: the file it belongs to, canonical; when empty, the file of the
/// recorded name or else inode.
///
/// Whoever planted the redo file can make nothing of it but write to a file that is already his: it
/// has to belong to the current user or to the target's owner, the target is a plain file of the
/// same folder with the recorded inode, and each of its bytes is the old or the new one. A file
/// that was changed since is left as it is.
Result<bool> finishRedo(platform::FileSystem &fileSystem, const QString &redoPath, const QString &targetPath = {});

} // namespace ravlin::storage
