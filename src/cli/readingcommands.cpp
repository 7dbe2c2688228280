// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/files/list/folderscan.h"
#include "core/platform/path.h"
#include "core/tags/mpeg/xanalyze.h"
#include "core/tags/store/tagstore.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin::cli {

namespace {

/// The part of a row's text before the file's name.
QStringView folderOf(QStringView rowText)
{
    return rowText.first(platform::nameStart(rowText));
}

/// Sorts the rows of each folder by name without regard to case; keeps the order of folders.
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
    if (folder.isEmpty()) // with a separator appended it would be the root
        return tl::unexpected(Error{ErrorCode::NotFound, folder, {}});
    if (recursive)
        return ListFolderTree(folder, {.skipTrashFolders = FurtherOptions::restored(Settings()).skipTrashFolders});
    return ListFolder(platform::withEndSeparator(folder), {});
}

void failFolder(const QString &path, const Error &error, Console &console)
{
    if (error.code == ErrorCode::NotAFile)
        console.fail(path, u"this is not a folder"_s);
    else
        console.fail(path, error);
}

/// What a record says in addition of a tag that is too large, so that fields may be missing.
const Extra TagTooLarge{{u"tagTooLarge", true}};

int runList(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Table);
    RecordWriter writer(
        console.out(), format, {u"file", u"track", u"title", u"artist", u"album", u"year", u"id3v1", u"id3v2"});
    const QString &folder = arguments.paths().front();
    Result<Listing> found = listing(folder, arguments.has(u"--recursive"));
    if (found) {
        sortInsideFolders(found->rows);
        for (const ListRow &row : found->rows) {
            const ListFields tag = row.file.tag();
            const Record record{
                row.text(), row.trackColumn(), tag.title, tag.artist, tag.album, tag.year, tag.hasV1, tag.hasV2};
            writer.write(record, tag.isCut ? TagTooLarge : Extra());
            if (tag.isCut)
                console.fail(platform::inFolder(folder, row.text()), Error{ErrorCode::TagTooLarge, {}, {}});
        }
        for (const ListFailure &failure : found->failures)
            console.fail(failure.path, failure.error);
    } else {
        failFolder(folder, found.error(), console);
    }
    writer.finish();
    return console.status();
}

int runShow(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    ProgramState state;
    const TagStore store(state, platform::FileSystem::native());
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Blocks);
    RecordWriter writer(console.out(), format,
        {u"file", u"title", u"artist", u"album", u"year", u"comment", u"track", u"genre", u"hasV1", u"hasV2"});
    for (const QString &path : arguments.paths()) {
        if (console.out().isBroken())
            break;
        TagRecord tag;
        const Result<void> read = store.ReadTag(path, tag);
        const bool isCut = !read && read.error().code == ErrorCode::TagTooLarge;
        if (!read && read.error().code == ErrorCode::GenreOutOfRange) {
            // Everything else was read, and the number is shown.
            console.warn(path + u": "_s + describe(read.error()));
            if (tag.Track == u"0"_s) // means no track
                tag.Track.clear();
        } else if (!read) {
            console.fail(path, read.error());
            if (!isCut)
                continue;
        }
        const Record record{
            path, tag.Title, tag.Artist, tag.Album, tag.Year, tag.Comment, tag.Track, tag.Genre, tag.HasV1, tag.HasV2};
        writer.write(record, isCut ? TagTooLarge : Extra());
    }
    writer.finish();
    return console.status();
}

/// The part of an error text that goes after the file's name.
QString firstLine(const QString &errorText)
{
    const QString line = errorText.section(u"\r\n"_s, 0, 0);
    return line.endsWith(u':') ? line.chopped(1) : line;
}

Record recordOf(const QString &path, const XAnalyzer::Outcome &outcome, const clsXAnalyzer &properties)
{
    const qint64 code = outcome.code;
    if (!properties.errorText().isEmpty())
        return {path, {}, {}, {}, {}, {}, {}, {}, {}, {}, code, properties.errorText()};
    const StreamInfo &stream = outcome.stream;
    return {path, properties.versionName(), properties.channelModeName(), qint64(properties.bitRate()),
        qint64(properties.frequency()), stream.milliseconds, stream.samples, stream.playedSamples, stream.frames,
        properties.isVariable(), code, QString()};
}

int runInfo(const Arguments &arguments, Session &session)
{
    Console &console = session.console();
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Blocks);
    RecordWriter writer(console.out(), format,
        {u"file", u"version", u"mode", u"bitrate", u"frequency", u"lengthMs", u"samples", u"playedSamples", u"frames",
            u"vbr", u"code", u"error"});
    XAnalyzer analyzer(platform::FileSystem::native());
    clsXAnalyzer properties;
    for (const QString &path : arguments.paths()) {
        if (console.out().isBroken())
            break;
        const XAnalyzer::Outcome outcome = analyzer.analyse(path);
        properties.take(outcome.code, outcome.record(), path);
        writer.write(recordOf(path, outcome, properties));
        if (!properties.errorText().isEmpty())
            console.fail(path, firstLine(properties.errorText()));
        else if (properties.isDamaged() && format != Format::Json) // programs have the code
            console.warn(path + (properties.isCutOff() ? u": the audio is cut off"_s : u": the audio is damaged"_s) +
                         u"; the values hold for what there is"_s);
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

Command showCommand()
{
    return {u"show", u"show all fields of files' tags",
        u"Shows the fields of each file's tag: an ID3v2 tag's where it has the field, else an ID3v1 tag's. On a "
        u"terminal\n"
        "each field has a line; elsewhere each file has one, with tabs between the fields, and the first line has\n"
        "their names.",
        u"FILE", true, {JsonOption}, runShow};
}

Command infoCommand()
{
    return {u"info", u"analyse the audio of files",
        u"Walks through each file's audio and tells its MPEG version, channel mode, bit rate (kbit/s), sampling "
        u"frequency\n"
        "(Hz), playing time (ms), samples (all, and those played when the encoder's delay and padding are left\n"
        "out), frames, and whether the bit rate varies. Code 0 is success; -8 a cut or damaged stream, whose\n"
        "values hold for what there is; with any other the values are missing and the error tells why.",
        u"FILE", true, {JsonOption}, runInfo};
}

} // namespace ravlin::cli
