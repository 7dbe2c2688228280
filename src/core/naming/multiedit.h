// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/batch.h"
#include "core/naming/conversion.h"
#include "core/platform/error.h"
#include "core/tags/record/tagrecord.h"

#include <QString>
#include <QStringList>

/// Chosen fields into the tags of many files at once.
namespace ravlin {

class TagStore;
struct SessionChoices;

/// What the page of many files is set to: the boxes' texts and which of them are ticked.
struct MultiEditPage
{
    /// The boxes: `Tmartista`, `tmalbum`, `tma_o`, `cmestilo`, `tmcomentarios`; Track is `tmpista`, the number of the
    /// first file, empty for 1. There is none for the title.
    TagRecord boxes;
    bool setsArtist = false;
    bool setsAlbum = false;
    bool setsYear = false;
    bool setsGenre = false;
    bool setsComment = false;
    bool setsTrack = false;       ///< a running number in the order of the files
    ConversionChoice letterCase;  ///< `op4_1`: runs first
    ConversionChoice replacement; ///< `op4_4`: of blanks and underscores

    /// Whether anything is ticked, so that a run makes sense.
    bool changesAnything() const;
    /// Takes the page's conversions from what the working modes are set to.
    void takeConversions(const SessionChoices &choices);
};

/// One run over file after file. A conversion works on the boxes' texts too, ticked or not, once for each file, and
/// what it makes of them is what the next file starts from and what the boxes show at the end.
class MultiEdit
{
public:
    explicit MultiEdit(MultiEditPage page);

    /// The next file's tag as the run would save it; counts the file. Fails when the tag cannot be read: then the boxes
    /// stay as they are and the file has its number all the same.
    Result<TagRecord> prepare(const QString &path, const TagStore &store);
    /// The same, saved: what was saved, or the errors of TagStore::SaveTag.
    Result<TagRecord> edit(const QString &path, TagStore &store);

    /// The page with its boxes as they are by now.
    const MultiEditPage &page() const { return m_page; }

private:
    void convert(ConversionKind kind, ConversionChoice choice, TagRecord &record);
    void applyBoxes(TagRecord &record, qint64 track) const;

    MultiEditPage m_page;
    qint64 m_nextTrack;
};

/// Edits file after file. The first failure ends the run, and none is taken once the cancelled flag is set; see
/// runBatch.
BatchOutcome runMultiEdit(const QStringList &paths, MultiEdit &edit, TagStore &store, const ProgramState &state,
    const ProgressReport &progress, const RecordSaved &saved = {});

} // namespace ravlin
