// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/discapply.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"
#include "core/tags/store/tagstore.h"

namespace ravlin {

TagEdits discEdits(const DiscFields &disc, const DiscRow &row, bool onlyChosen)
{
    TagEdits edits;
    const auto set = [&](TagEdits::Field field, const QString &text, bool isKeptWhenEmpty) {
        if (!text.isEmpty() || !isKeptWhenEmpty)
            edits.set(field, text);
    };
    set(&TagRecord::Track, row.track, onlyChosen);
    set(&TagRecord::Title, row.title, onlyChosen);
    set(&TagRecord::Artist, disc.artist, onlyChosen);
    set(&TagRecord::Album, disc.album, onlyChosen);
    set(&TagRecord::Year, disc.year, true);
    set(&TagRecord::Genre, disc.genre, true);
    return edits;
}

void applyDisc(TagRecord &record, const DiscFields &disc, const DiscRow &row)
{
    record = discEdits(disc, row, false).appliedTo(std::move(record));
}

BatchOutcome saveDisc(const std::vector<DiscFile> &files, const DiscFields &disc, TagStore &tagStore,
    const ProgramState &state, const ProgressReport &progress)
{
    QStringList paths;
    for (const DiscFile &file : files)
        paths << file.path;
    size_t next = 0; // count, since the same path may be there twice
    const auto save = [&](const QString &path) -> Result<void> {
        const DiscRow &row = files[next++].row;
        const TagEdits edits = discEdits(disc, row, tagStore.savesOnlyEdited());
        return tagStore.save(path, [&](const TagRecord &) { return edits; }).map([](const TagRecord &) {});
    };
    return runBatch(paths, state, progress, save, {OnFailure::GoOn, OnCancelled::StopTaking});
}

QStringList notSavedLines(const Captions &captions, const BatchOutcome &outcome, const std::vector<DiscFile> &files)
{
    QStringList lines;
    for (qsizetype row = 0; row < outcome.rowCount(); ++row) {
        if (outcome.outcome(row) == RowOutcome::Done)
            continue;
        const Error *error = outcome.error(row);
        const QString reason =
            error != nullptr ? captions.errorText(error->code) : captions.text(Text::OutcomeUntouched);
        lines << shownName(files[static_cast<size_t>(row)].path) + captions.mark(u':') + u' ' + reason;
    }
    return lines;
}

} // namespace ravlin
