// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/storage/journal.h"

#include <memory>
#include <optional>
#include <vector>

/// Changes a file so that a killed program, a full disk or a power cut leaves the old content or the new one, never a
/// mixture. Knows nothing of tags: the new content is a list of segments, each either new bytes or a range of the old
/// file.
namespace ravlin::storage {

/// How the change was made.
enum class WriteOutcome
{
    Unchanged, ///< the file had this content already; nothing was written
    InPlace,   ///< a write inside one block of the file, or in a few blocks under the journal's protection
    Replaced,  ///< a new file replaced the old one
    Rewritten, ///< the old file was overwritten under the protection of a redo file (several hard links, or an
               ///< owner that a new file could not be given)
};

/// What to do with a file that has the read-only attribute, if there is something to write.
enum class ReadOnlyFile
{
    Refuse,
    MakeWritable ///< afterwards it has the attribute again
};

struct WriteOptions
{
    ReadOnlyFile readOnlyFile = ReadOnlyFile::Refuse;
    bool keepModified = false;            ///< restore the modification time, if the system allows it
    std::optional<qint64> modified = {};  ///< the modification time to set instead, in nanoseconds since 1970, UTC
    Journal *journal = nullptr;           ///< where the change is recorded first
    std::vector<ValueChange> values = {}; ///< for the journal
};

/// A file that is to be changed. Links in its path are followed once; from then on it is reached by its name in a
/// folder that is held open, and only as long as it is the same file: what somebody puts there meanwhile is
/// ChangedMeanwhile.
class HeldFile
{
public:
    /// Errors: those of FileSystem::follow.
    static Result<HeldFile> follow(platform::FileSystem &fileSystem, const QString &path);

    /// Errors: those of HeldFolder::openFile, and ChangedMeanwhile.
    Result<std::unique_ptr<platform::File>> open(platform::OpenMode mode);
    /// Its state when it was opened last.
    const platform::FileInfo &info() const { return *m_known; }
    const platform::Place &place() const { return m_place; }
    /// From now on the name stands for another file, one of our own making.
    void becomes(const platform::FileInfo &info) { m_known = info; }

private:
    explicit HeldFile(platform::Place place) : m_place(std::move(place)) {}

    platform::Place m_place;
    std::optional<platform::FileInfo> m_known; ///< its identity once it was open
};

/// Gives the file at path the content that the segments make up, in their order.
///
/// before: the file's state when the caller read it. If size, modification time or identity have changed since, nothing
/// is written (ChangedMeanwhile). A symbolic link is followed and stays a link. After an error the file is as it was;
/// if undoing fails as well, the error's detail says so. Syncs only what the safety of the content needs: for the
/// outcome to survive a power cut, the caller syncs the folder, or the file if it was written in place, when all is
/// done.
Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, HeldFile &held, const platform::FileInfo &before,
    const std::vector<Segment> &segments, const WriteOptions &options = {});
Result<WriteOutcome> rewriteFile(platform::FileSystem &fileSystem, const QString &path,
    const platform::FileInfo &before, const std::vector<Segment> &segments, const WriteOptions &options = {});

/// Completes an interrupted overwriting under a redo file (see WriteOutcome::Rewritten), if there is one beside the
/// file: one look for a name if there is none. Returns whether there was one. Call before a file is read, copied, moved
/// or deleted. Interrupted if the file was changed since: it and the redo file stay as they are. info: the file's
/// state.
Result<bool> recoverFile(
    platform::FileSystem &fileSystem, const platform::Place &place, const platform::FileInfo &info);
/// Follows links.
Result<bool> recoverFile(platform::FileSystem &fileSystem, const QString &path);
/// For what the path itself names. No error if nothing has it.
Result<bool> recoverNamed(platform::FileSystem &fileSystem, const QString &path);
/// For all files of a folder in which these names were found. Costs nothing if no redo file is among them. True if any
/// was completed.
bool recoverFolder(platform::FileSystem &fileSystem, const QString &path, const std::vector<QString> &names);

/// Whether an interrupted write may leave a file of this name behind; no listing shows such files.
bool isLeftoverName(const QString &fileName);

/// Removes what interrupted writes left in a folder and completes interrupted overwritings. Touches only what is
/// certainly ours: a file of our name for which platform::File::isPrivate holds and that no running program is writing.
/// Folders stay: nothing tells who has made them. Returns how many leftovers are gone.
Result<int> cleanLeftovers(platform::FileSystem &fileSystem, const QString &path);

} // namespace ravlin::storage
