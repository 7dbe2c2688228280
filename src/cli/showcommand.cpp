// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/app/programstate.h"
#include "core/tags/store/tagstore.h"

namespace ravlin::cli {

namespace {

int runShow(const Arguments &arguments, Console &console)
{
    ProgramState state;
    const TagStore store(state, platform::FileSystem::native());
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Blocks);
    RecordWriter writer(console.out(), format,
        {u"file", u"title", u"artist", u"album", u"year", u"comment", u"track", u"genre", u"hasV1", u"hasV2"});
    for (const QString &path : arguments.paths()) {
        if (console.out().isBroken())
            break;
        TagRecord tag;
        if (const Result<void> read = store.ReadTag(path, tag); !read) {
            if (read.error().code != ErrorCode::GenreOutOfRange) {
                console.fail(path, read.error());
                continue;
            }
            // All the rest has been read, and the number is shown.
            console.warn(path + QStringLiteral(": ") + describe(read.error()));
            if (tag.Track == QStringLiteral("0")) // stands for none
                tag.Track.clear();
        }
        writer.write({path, tag.Title, tag.Artist, tag.Album, tag.Year, tag.Comment, tag.Track, tag.Genre, tag.HasV1,
            tag.HasV2});
    }
    writer.finish();
    return console.status();
}

} // namespace

Command showCommand()
{
    return {u"show", u"show all fields of files' tags",
        u"Shows the fields of each file's tag: an ID3v2 tag's where it has the field, else an ID3v1 tag's. On a "
        u"terminal\n"
        "each field has a line; elsewhere each file has one, with tabs between the fields, and the first line has\n"
        "their names.",
        u"FILE", true, {JsonOption}, runShow};
}

} // namespace ravlin::cli
