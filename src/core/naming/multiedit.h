// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/batch.h"
#include "core/naming/conversion.h"
#include "core/platform/error.h"
#include "core/tags/record/tagrecord.h"
#include "core/tags/store/tagedits.h"

#include <QString>
#include <QStringList>

#include <optional>

/// Writes chosen fields into the tags of many files.
namespace ravlin {

class TagStore;
struct SessionChoices;

/// The state of the page for many files: the boxes' texts and which of them are ticked.
struct MultiEditPage
{
    /// The boxes `Tmartista`, `tmalbum`, `tma_o`, `cmestilo`, `tmcomentarios`. Track is `tmpista`, the number of the
    /// first file; empty means 1. There is no box for the title.
    TagRecord boxes;
    bool setsArtist = false;
    bool setsAlbum = false;
    bool setsYear = false;
    bool setsGenre = false;
    bool setsComment = false;
    bool setsTrack = false;       ///< a running number in the order of the files
    ConversionChoice letterCase;  ///< `op4_1`: runs first
    ConversionChoice replacement; ///< `op4_4`: of spaces and underscores

    /// Whether anything is ticked, so that a run has an effect.
    bool changesAnything() const;
    /// Sets the page's conversions from those of the working modes.
    void takeConversions(const SessionChoices &choices);
};

/// One run over file after file. The conversions apply to the boxes' texts too, ticked or not, once for each file:
/// their result for one file is the input for the next, and what the boxes show at the end. While
/// TagStore::savesOnlyEdited(), the boxes stay, and only what is ticked or converted is written.
class MultiEdit
{
public:
    explicit MultiEdit(MultiEditPage page);

    /// The next file's tag as the run would save it. Fails if the tag cannot be read or may not be written: the boxes
    /// then stay as they are, but a song that fails uses up its track number.
    Result<TagRecord> prepare(const QString &path, const TagStore &store);
    /// The same beside what the file has.
    Result<PreparedSave> look(const QString &path, const TagStore &store);
    /// Also saves it. Returns what was saved, or the errors of TagStore::save.
    Result<TagRecord> edit(const QString &path, TagStore &store);
    /// Which of the ticked boxes has a text that no tag can hold, if a run would refuse it. The running number is not
    /// looked at.
    std::optional<TagEdits::Field> fieldNotStorable(const TagStore &store) const;

    /// The page with its boxes as converted so far.
    const MultiEditPage &page() const { return m_page; }

private:
    TagEdits edits(const TagRecord &present, bool changesBoxes);
    TagRecord converted(TagRecord record) const;
    void countTrack(const Result<TagRecord> &taken);

    MultiEditPage m_page;
    qint64 m_nextTrack;
};

/// Edits file after file. Stops at the first failure, and once the cancelled flag is set; see runBatch.
BatchOutcome runMultiEdit(const QStringList &paths, MultiEdit &edit, TagStore &store, const ProgramState &state,
    const ProgressReport &progress, const RecordSaved &saved = {});

} // namespace ravlin
