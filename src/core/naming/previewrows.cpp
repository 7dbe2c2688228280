// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/previewrows.h"

#include "core/app/idiomas.h"
#include "core/naming/extraction.h"
#include "core/naming/filename.h"
#include "core/platform/namecheck.h"
#include "core/platform/path.h"
#include "core/tags/record/genres.h"
#include "core/tags/store/tagstore.h"

namespace ravlin {

namespace {

PreviewRow unreadableRow(const QString &path, const Error &error)
{
    PreviewRow row;
    row.path = path;
    row.name = platform::nameOf(path);
    row.isLongName = isLongName(row.name);
    row.isUntouched = true;
    row.problem = error;
    return row;
}

template <typename MakeRow>
std::vector<PreviewRow> rowsOf(const QStringList &paths, const ProgressReport &progress, MakeRow makeRow)
{
    std::vector<PreviewRow> rows;
    rows.reserve(static_cast<std::size_t>(paths.size()));
    for (const QString &path : paths) {
        if (progress)
            progress({static_cast<qsizetype>(rows.size()) + 1, paths.size(), path});
        rows.push_back(makeRow(path));
    }
    return rows;
}

} // namespace

PreviewRow previewExtraction(const QString &path, const QString &pattern, const TagStore &store)
{
    Result<Extraction> extraction = prepareExtraction(path, pattern, store);
    if (!extraction)
        return unreadableRow(path, extraction.error());
    PreviewRow row;
    row.path = path;
    row.name = platform::nameOf(path);
    row.record = std::move(extraction->record);
    row.isLongName = isLongName(row.name);
    row.isUntouched = !extraction->isMatched;
    if (extraction->isMatched)
        row.lost = store.savesOnlyEdited() ? lostByEdits(extraction->present, extraction->edits)
                                           : lostFields(extraction->present, row.record);
    return row;
}

PreviewRow previewRenaming(const QString &path, const NamingRule &rule, const TagStore &store)
{
    // Its last four characters would go, whatever they are, and it would pass for music.
    if (!platform::isMp3Name(path))
        return unreadableRow(path, Error{ErrorCode::NotMp3Name, path, {}});
    Result<TagRecord> record = store.readRecordLeniently(path);
    if (!record)
        return unreadableRow(path, record.error());
    PreviewRow row;
    row.path = path;
    row.record = *std::move(record);
    row.name = BuildNewName(bareName(path), row.record, rule);
    row.name += NewExtension;
    row.isLongName = isLongName(row.name);
    row.isUntouched = row.name == platform::nameOf(path);
    return row;
}

std::vector<PreviewRow> previewExtraction(
    const QStringList &paths, const QString &pattern, const TagStore &store, const ProgressReport &progress)
{
    return rowsOf(paths, progress, [&](const QString &path) { return previewExtraction(path, pattern, store); });
}

std::vector<PreviewRow> previewRenaming(
    const QStringList &paths, const NamingRule &rule, const TagStore &store, const ProgressReport &progress)
{
    return rowsOf(paths, progress, [&](const QString &path) { return previewRenaming(path, rule, store); });
}

QStringList extractionRemarks(const PreviewRow &row, const Captions &captions)
{
    QStringList remarks;
    if (row.problem)
        remarks << captions.errorText(row.problem->code);
    else if (row.isUntouched)
        remarks << captions.text(Text::RemarkNoMatch);
    remarks << remarksAbout(row.lost, captions);
    if (row.isLongName)
        remarks << captions.text(Text::RemarkLongName);
    return remarks;
}

TagRecord asSaved(const TagRecord &record)
{
    TagRecord saved = record;
    if (!isWritableYear(saved.Year))
        saved.Year.clear();
    const int track = isWritableTrack(saved.Track) ? saved.Track.toInt() : 0;
    saved.Track = track > 0 ? QString::number(track) : QString();
    const int genre = GenreNameToNumber(saved.Genre);
    saved.Genre = genre == GenreNone ? QString() : genreName(genre);
    return saved;
}

} // namespace ravlin
