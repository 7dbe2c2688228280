// SPDX-License-Identifier: GPL-3.0-or-later
// Prints the analysis of each file on the command line as a line of JSON, for the tests that compare it with decoders.
#include "core/platform/filesystem.h"
#include "core/tags/mpeg/xanalyze.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>

#include <cstdio>

using namespace ravlin;

namespace {

QJsonObject toJson(const QString &path, const XAnalyzer::Outcome &outcome)
{
    const StreamInfo &stream = outcome.stream;
    const XAnalyzeRecord record = outcome.record();
    QJsonObject json{{QStringLiteral("file"), path}, {QStringLiteral("code"), outcome.code},
        {QStringLiteral("version"), record.version}, {QStringLiteral("layer"), record.layer},
        {QStringLiteral("channelMode"), record.channelMode}, {QStringLiteral("bitRate"), record.bitRate},
        {QStringLiteral("frequency"), record.frequency}, {QStringLiteral("milliseconds"), stream.milliseconds},
        {QStringLiteral("samples"), stream.samples}, {QStringLiteral("playedSamples"), stream.playedSamples},
        {QStringLiteral("frames"), stream.frames}, {QStringLiteral("variable"), stream.isVariable},
        {QStringLiteral("audioBytes"), stream.audioBytes}, {QStringLiteral("firstFrame"), stream.firstFrame},
        {QStringLiteral("infoFrame"), stream.hasInfoFrame}, {QStringLiteral("checksum"), stream.hasChecksum},
        {QStringLiteral("truncated"), stream.isTruncated},
        {QStringLiteral("resynchronisations"), stream.resynchronisations},
        {QStringLiteral("bytesSearched"), stream.bytesSearched}};
    if (stream.encoderDelay)
        json.insert(QStringLiteral("delay"), *stream.encoderDelay);
    if (stream.encoderPadding)
        json.insert(QStringLiteral("padding"), *stream.encoderPadding);
    return json;
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    XAnalyzer analyzer(platform::FileSystem::native());
    const QStringList paths = QCoreApplication::arguments().mid(1);
    for (const QString &path : paths) {
        const QJsonDocument line(toJson(path, analyzer.analyse(path)));
        std::puts(line.toJson(QJsonDocument::Compact).constData());
    }
    return 0;
}
