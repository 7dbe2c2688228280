// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/discfiles.h"
#include "cli/recordwriter.h"

namespace ravlin::cli {

namespace {

int runToc(const Arguments &arguments, Console &console)
{
    const Format format = chooseFormat(arguments.has(JsonOption.name), console.out(), Format::Blocks);
    RecordWriter writer(
        console.out(), format, {u"discId", u"tracks", u"seconds", u"offsets", u"offsetsWithUsualDelay"});
    if (const std::optional<DiscFiles> disc = analyseDisc(arguments.paths(), console)) {
        const DiscContents &contents = disc->contents;
        writer.write({contents.discIdText(), qint64(contents.trackCount()), qint64(contents.totalSeconds()),
            disc->offsets, disc->offsetsWithUsualDelay});
    }
    writer.finish();
    return console.status();
}

} // namespace

Command tocCommand()
{
    return {u"toc", u"tell the table of contents of the CD that files come from",
        u"Takes the files, in the order given, for the tracks of a CD and tells its identifier, the number of tracks,\n"
        "its seconds and the frames (1/75 s) where each track begins and the last one ends. Where files don't tell\n"
        "what their encoder added, the frames with its usual amount taken off are told, too. Nothing is sent.",
        u"FILE", true, {JsonOption}, runToc};
}

} // namespace ravlin::cli
