// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/multiedit.h"

#include "core/naming/sessionchoices.h"
#include "core/tags/store/tagstore.h"

#include <array>

namespace ravlin {

namespace {

struct Tick
{
    bool MultiEditPage::*sets;
    TagEdits::Field field;
};

constexpr std::array Ticks{Tick{&MultiEditPage::setsArtist, &TagRecord::Artist},
    Tick{&MultiEditPage::setsAlbum, &TagRecord::Album}, Tick{&MultiEditPage::setsYear, &TagRecord::Year},
    Tick{&MultiEditPage::setsGenre, &TagRecord::Genre}, Tick{&MultiEditPage::setsComment, &TagRecord::Comment},
    Tick{&MultiEditPage::setsTrack, &TagRecord::Track}};

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

/// The texts after both conversions.
TagRecord MultiEdit::converted(TagRecord record) const
{
    for (QString *text : {&record.Title, &record.Artist, &record.Album, &record.Comment}) {
        *text = applyConversion(ConversionKind::Case, m_page.letterCase, *text);
        *text = applyConversion(ConversionKind::Replace, m_page.replacement, *text);
    }
    return record;
}

/// What the page does to a file that has that.
TagEdits MultiEdit::edits(const TagRecord &present, bool changesBoxes)
{
    TagEdits edits = TagEdits::between(present, converted(present));
    TagRecord boxes = converted(m_page.boxes);
    if (changesBoxes)
        m_page.boxes = boxes;
    boxes.Track = QString::number(m_nextTrack);
    for (const auto &[sets, field] : Ticks) {
        if (m_page.*sets)
            edits.set(field, boxes.*field);
    }
    return edits;
}

/// A file that is no song gets no number, so the next one gets it.
void MultiEdit::countTrack(const Result<TagRecord> &taken)
{
    if (taken || !isRefusal(taken.error().code) || taken.error().code == ErrorCode::TagTooLarge)
        ++m_nextTrack;
}

Result<TagRecord> MultiEdit::prepare(const QString &path, const TagStore &store)
{
    return look(path, store).map(&PreparedSave::wanted);
}

Result<PreparedSave> MultiEdit::look(const QString &path, const TagStore &store)
{
    const Result<TagRecord> present = store.readForSaving(path);
    const Result<PreparedSave> save = present.map([&](const TagRecord &record) {
        const TagEdits edits = this->edits(record, !store.savesOnlyEdited());
        return PreparedSave{record, (store.savesOnlyEdited() ? edits.storable() : edits).appliedTo(record)};
    });
    countTrack(present);
    return save;
}

Result<TagRecord> MultiEdit::edit(const QString &path, TagStore &store)
{
    const auto make = [&](const TagRecord &present) { return edits(present, !store.savesOnlyEdited()); };
    Result<TagRecord> record = store.save(path, make);
    countTrack(record);
    return record;
}

std::optional<TagEdits::Field> MultiEdit::fieldNotStorable(const TagStore &store) const
{
    TagEdits texts;
    for (const auto &[sets, field] : Ticks) {
        if (m_page.*sets && field != &TagRecord::Track)
            texts.set(field, m_page.boxes.*field);
    }
    return store.savesOnlyEdited() ? ravlin::fieldNotStorable(texts) : std::nullopt;
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
