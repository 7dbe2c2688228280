// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command.h"
#include "cli/recordwriter.h"
#include "core/tags/mpeg/xanalyze.h"

namespace ravlin::cli {

namespace {

/// The part of an error text for one line that names the file itself.
QString firstLine(const QString &errorText)
{
    const QString line = errorText.section(QStringLiteral("\r\n"), 0, 0);
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

int runInfo(const Arguments &arguments, Console &console)
{
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
    }
    writer.finish();
    return console.status();
}

} // namespace

Command infoCommand()
{
    return {u"info", u"analyse the audio of files",
        u"Walks through each file's audio and tells its MPEG version, channel mode, bit rate (kbit/s), sampling "
        u"frequency\n"
        "(Hz), playing time (ms), samples (all, and those played when the encoder's delay and padding are left\n"
        "out), frames, and whether the bit rate varies. Code 0 is success; -8 a damaged stream, whose values hold\n"
        "for what there is; with any other the values are missing and the error tells why.",
        u"FILE", true, {JsonOption}, runInfo};
}

} // namespace ravlin::cli
