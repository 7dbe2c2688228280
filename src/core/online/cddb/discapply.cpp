// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/discapply.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"
#include "core/tags/store/tagstore.h"

namespace ravlin {

void applyDisc(TagRecord &record, const DiscFields &disc, const DiscRow &row)
{
    record.Track = row.track;
    record.Title = row.title;
    record.Artist = disc.artist;
    record.Album = disc.album;
    if (!disc.year.isEmpty())
        record.Year = disc.year;
    if (!disc.genre.isEmpty())
        record.Genre = disc.genre;
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
        Result<TagRecord> record = tagStore.readForSaving(path);
        if (!record)
            return tl::unexpected(record.error());
        applyDisc(*record, disc, row);
        return tagStore.SaveTag(path, *record);
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
