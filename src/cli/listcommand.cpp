// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/files/list/folderscan.h"
#include "core/platform/path.h"

#include <algorithm>

namespace ravlin::cli {

namespace {

/// The part of a row's text before the file's name.
QStringView folderOf(QStringView rowText)
{
    return rowText.first(platform::nameStart(rowText));
}

/// Sorts the rows of each folder by name without regard to case; the folders stay in their order.
void sortInsideFolders(std::vector<ListRow> &rows)
{
    struct Entry
    {
        QString key;
        QString text;
        ListRow *row;
    };
    std::vector<Entry> entries;
    entries.reserve(rows.size());
    for (ListRow &row : rows) {
        const QString text = row.text();
        entries.push_back({text.toCaseFolded(), text, &row});
    }

    const auto isBefore = [](const Entry &one, const Entry &other) {
        const int order = one.key.compare(other.key);
        return order != 0 ? order < 0 : one.text < other.text;
    };
    for (auto start = entries.begin(); start != entries.end();) {
        const QStringView folder = folderOf(start->text);
        const auto end =
            std::find_if(start, entries.end(), [folder](const Entry &entry) { return folderOf(entry.text) != folder; });
        std::sort(start, end, isBefore);
        start = end;
    }

    std::vector<ListRow> sorted;
    sorted.reserve(rows.size());
    for (const Entry &entry : entries)
        sorted.push_back(std::move(*entry.row));
    rows = std::move(sorted);
}

Result<Listing> listing(const QString &folder, bool recursive)
{
    if (folder.isEmpty()) // with a separator behind it, it would be the root
        return tl::unexpected(Error{ErrorCode::NotFound, folder, {}});
    if (recursive)
        return ListFolderTree(folder);
    return ListFolder(platform::withEndSeparator(folder), {});
}

void failFolder(const QString &path, const Error &error, Console &console)
{
    if (error.code == ErrorCode::NotAFile)
        console.fail(path, QStringLiteral("this is not a folder"));
    else
        console.fail(path, error);
}

int runList(const Arguments &arguments, Console &console)
{
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table);
    RecordWriter writer(
        console.out(), format, {u"file", u"track", u"title", u"artist", u"album", u"year", u"id3v1", u"id3v2"});
    const QString &folder = arguments.paths().front();
    Result<Listing> found = listing(folder, arguments.has(u"--recursive"));
    if (found) {
        sortInsideFolders(found->rows);
        for (const ListRow &row : found->rows) {
            const ListFields tag = row.file.tag();
            writer.write(
                {row.text(), row.trackColumn(), tag.title, tag.artist, tag.album, tag.year, tag.hasV1, tag.hasV2});
        }
        for (const ListFailure &failure : found->failures)
            console.fail(failure.path, failure.error);
    } else {
        failFolder(folder, found.error(), console);
    }
    writer.finish();
    return console.status();
}

} // namespace

Command listCommand()
{
    return {u"list", u"list the MP3 files of a folder with their tags",
        u"Lists the MP3 files of a folder: file, track, title, artist, album, year, and whether it has an ID3v1 and "
        u"an\n"
        "ID3v2 tag. The files of a folder are ordered by name, without regard to case. Columns are aligned on a\n"
        "terminal; elsewhere a tab stands between them and the first line has their names.",
        u"FOLDER", false, {{u"--recursive", {}, u"also list the folders below it"}, JsonOption}, runList};
}

} // namespace ravlin::cli
