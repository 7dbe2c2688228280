// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/multiedit.h"

#include "core/naming/sessionchoices.h"
#include "core/tags/store/tagstore.h"

namespace ravlin {

namespace {

/// The number that a run starts with.
qint64 firstTrack(const QString &text)
{
    // From here on no number of files leads to a track that is written, so a longer text needs no more.
    constexpr qint64 Unwritable = 1'000'000'000;
    if (text.isEmpty())
        return 1;
    bool isNumber = false;
    const qint64 number = text.toLongLong(&isNumber);
    return isNumber && number >= 0 && number < Unwritable ? number : Unwritable;
}

} // namespace

bool MultiEditPage::changesAnything() const
{
    return setsArtist || setsAlbum || setsYear || setsGenre || setsComment || setsTrack || letterCase.on ||
           replacement.on;
}

void MultiEditPage::takeConversions(const SessionChoices &choices)
{
    letterCase = choices.conversions[MultiCasePair];
    replacement = choices.conversions[MultiReplacePair];
}

MultiEdit::MultiEdit(MultiEditPage page) : m_page(std::move(page)), m_nextTrack(firstTrack(m_page.boxes.Track)) {}

void MultiEdit::convert(ConversionKind kind, ConversionChoice choice, TagRecord &record)
{
    TagRecord &boxes = m_page.boxes;
    for (QString *text :
        {&boxes.Artist, &boxes.Album, &boxes.Comment, &record.Title, &record.Artist, &record.Album, &record.Comment})
        *text = applyConversion(kind, choice, *text);
}

void MultiEdit::applyBoxes(TagRecord &record, qint64 track) const
{
    const TagRecord &boxes = m_page.boxes;
    if (m_page.setsArtist)
        record.Artist = boxes.Artist;
    if (m_page.setsAlbum)
        record.Album = boxes.Album;
    if (m_page.setsYear)
        record.Year = boxes.Year;
    if (m_page.setsGenre)
        record.Genre = boxes.Genre;
    if (m_page.setsComment)
        record.Comment = boxes.Comment;
    if (m_page.setsTrack)
        record.Track = QString::number(track);
}

Result<TagRecord> MultiEdit::prepare(const QString &path, const TagStore &store)
{
    Result<TagRecord> record = store.readForSaving(path);
    if (!record && isRefusal(record.error().code) && record.error().code != ErrorCode::TagTooLarge)
        return record; // it is no song, so the next one gets the number
    const qint64 track = m_nextTrack++;
    if (!record)
        return record;
    convert(ConversionKind::Case, m_page.letterCase, *record);
    convert(ConversionKind::Replace, m_page.replacement, *record);
    applyBoxes(*record, track);
    return record;
}

Result<TagRecord> MultiEdit::edit(const QString &path, TagStore &store)
{
    Result<TagRecord> record = prepare(path, store);
    if (!record)
        return record;
    if (Result<void> saved = store.SaveTag(path, *record); !saved)
        return tl::unexpected(saved.error());
    return record;
}

BatchOutcome runMultiEdit(const QStringList &paths, MultiEdit &edit, TagStore &store, const ProgramState &state,
    const ProgressReport &progress, const RecordSaved &saved)
{
    const auto work = [&](const QString &path) -> Result<void> {
        const Result<TagRecord> record = edit.edit(path, store);
        if (!record)
            return tl::unexpected(record.error());
        if (saved)
            saved(path, *record);
        return {};
    };
    return runBatch(paths, state, progress, work, TagWritingPolicy);
}

} // namespace ravlin
