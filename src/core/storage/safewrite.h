// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"

#include <vector>

/// Changes a file so that a killed program, a full disk or a pulled plug leaves the old content or the new one,
/// never a mixture. Knows nothing of tags: the new content is told as pieces, each either new bytes or a range of
/// the old file.
namespace ravlin::storage {

/// One piece of a file's new content.
struct Segment
{
    QByteArray bytes;      ///< the piece itself, or empty for a range of the old file
    qint64 oldOffset = -1; ///< where the range starts in the old file; -1 for new bytes
    qint64 length = 0;     ///< bytes

    static Segment fresh(QByteArray data)
    {
        const qint64 size = data.size();
        return {std::move(data), -1, size};
    }
    static Segment kept(qint64 offset, qint64 length) { return {{}, offset, length}; }
};

/// How the change was made.
enum class WriteOutcome
{
    Unchanged, ///< the file has this content already: nothing was written
    InPlace,   ///< one write inside one block of the file, or a cut at its end
    Replaced,  ///< a new file was put in the place of the old one
    Rewritten, ///< written over the old file under the protection of a redo file (several hard links, or an
               ///< owner that a new file could not be given)
};

/// What to do with a file that bears the read-only attribute, when there is something to write.
enum class ReadOnlyFile
{
    Refuse,
    MakeWritable
};

struct WriteOptions
{
    ReadOnlyFile readOnlyFile = ReadOnlyFile::Refuse;
    bool keepModified = false; ///< give the file its old modification time back, where the system allows it
};

/// Gives the file at path the content that segments make up, in their order.
///
/// before: the file's state when the caller read it; when size, modification time or identity differ by now, nothing
/// is written (ChangedMeanwhile). A symbolic link is followed and stays a link. On any error the file is as it was,
/// unless undoing fails as well, which the error's detail tells; with MakeWritable it may have become writable.
/// Nothing waits for the disk but what the safety of the content needs: a caller that wants the outcome to outlast
/// a power cut syncs the folder, or the file where it was written in place, once it is through.
Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, const QString &path,
    const platform::FileInfo &before, const std::vector<Segment> &segments, const WriteOptions &options = {});

/// Whether a rewriting under a redo file may have been interrupted on a file of that state: asks nothing of the disk.
bool mayNeedRecovery(platform::FileSystem &fileSystem, const platform::FileInfo &info);

/// Completes a rewriting under a redo file that was interrupted (see WriteOutcome::Rewritten), if one was.
/// Cheap where there can be none. Call before reading a file that may be written afterwards.
Result<void> recoverFile(platform::FileSystem &fileSystem, const QString &path);

/// True for names of files that an interrupted write may leave behind; no listing shows them.
bool isLeftoverName(const QString &fileName);

/// Removes what interrupted writes left in a folder and completes interrupted rewritings. Files that a running
/// program is writing are left alone. Returns how many leftovers are gone.
Result<int> cleanLeftovers(platform::FileSystem &fileSystem, const QString &folder);

} // namespace ravlin::storage
