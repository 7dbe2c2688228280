// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"
#include "core/storage/safewrite.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"

#include <QString>

#include <functional>
#include <optional>

namespace ravlin {

class TagObject;

/// The program's only access to the tags of MP3 files: reads a file's tag into a TagRecord, writes a TagRecord by the
/// tag-save mode, removes one tag kind. Reads every file, but writes only MP3 files (see writerule.h). Each operation
/// opens the file anew and stops at its first error, without undoing what it has done. Callers decide whether to show
/// an error.
class TagStore
{
public:
    /// state provides the tag-save mode, the options for writing (version of new ID3v2 tags, whether files keep their
    /// modification time), whether any content may be written into, and the free space of the current drive, and
    /// receives the cancelled flag.
    /// journal: where each change is recorded first, with the values that it changes; may be null.
    TagStore(ProgramState &state, platform::FileSystem &fileSystem, storage::Journal *journal = nullptr)
        : m_state(state), m_fileSystem(fileSystem), m_journal(journal)
    {
    }

    /// Fills the whole record from the file. If opening or reading fails all texts are empty. GenreOutOfRange: the
    /// genre number is above 125; all fields are filled, Genre has the number in digits, and a missing track is "0".
    /// TagTooLarge: the fields found in the part of the tag that is read are filled.
    /// state: gets the file's state at that time, if it could be opened; may be null.
    Result<void> ReadTag(const QString &path, TagRecord &record, platform::FileInfo *state = nullptr) const;
    /// The record for rules that work on tag values. Unlike ReadTag, a genre number above 125 is not an error, and a
    /// missing track is always empty.
    Result<TagRecord> readRecordLeniently(const QString &path) const;
    /// The same of a file that is to be saved. Also fails if the file may not be written (NotMp3Name, NotMp3Content).
    Result<TagRecord> readForSaving(const QString &path) const;

    /// Writes the record into the tag kinds of the tag-save mode, both in one step; any mode but 1 to 5 writes nothing.
    /// LowSpace, with the cancelled flag set: the drive has less free space than the file's size and 5 MB, and nothing
    /// was written. A read-only file is written and is read-only afterwards; if the write fails it may stay writable.
    /// If only the second kind can't be written (BrokenTag, TooLarge), the first one is.
    Result<void> SaveTag(const QString &path, const TagRecord &record);

    /// What a save changes, made from what the file has. It is made anew when another program changes the file between
    /// reading and writing.
    using MakeEdits = std::function<Result<TagEdits>(const TagRecord &present)>;

    /// Reads the file's tag as readForSaving does, and saves it with the edits as SaveTag would. Returns the record
    /// that was to be saved.
    ///
    /// While savesOnlyEdited(), nothing but the edits is written: what else the tags have stays byte for byte, unless
    /// the tag-save mode removes its kind or makes a new one. An edit that no tag can hold is left out: NotStorable,
    /// and all others are saved.
    ///
    /// seen: the state in which the user saw the file. If that has changed since, and everything is written, the
    /// journal is told.
    Result<TagRecord> save(
        const QString &path, const MakeEdits &make, const std::optional<platform::FileInfo> &seen = {});
    /// Whether a save leaves alone what was not edited, as the options say.
    bool savesOnlyEdited() const { return m_state.options.onlyEditedFields; }

    /// One pass of SaveTag: "1" saves ID3v1, "2" saves ID3v2, "4" removes ID3v1, "5" removes ID3v2.
    Result<storage::WriteOutcome> WriteTagKind(const QString &path, const TagRecord &record, QChar kind);

    /// Remove one tag kind. ReadOnly: the file has the read-only attribute.
    Result<void> RemoveV1(const QString &path);
    Result<void> RemoveV2(const QString &path);

private:
    struct Prepared;

    TagObject newObject() const;
    Result<Prepared> prepare(TagObject &object, const QString &path, const MakeEdits &make) const;
    Result<TagRecord> saveOnce(
        const QString &path, const MakeEdits &make, const std::optional<platform::FileInfo> &seen);
    storage::WriteOptions savingOptions() const;
    Result<storage::WriteOutcome> write(const QString &path, const TagRecord &record, const QString &kinds) const;
    Result<void> remove(const QString &path, QChar kind) const;
    storage::WriteOptions writeOptions() const;
    Result<void> checkFreeSpace(const QString &path);

    ProgramState &m_state;
    platform::FileSystem &m_fileSystem;
    storage::Journal *m_journal;
};

} // namespace ravlin
