// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/discfiles.h"

#include "core/tags/mpeg/xanalyze.h"

using namespace Qt::StringLiterals;

namespace ravlin::cli {

std::optional<DiscFiles> analyseDisc(const QStringList &paths, Console &console)
{
    XAnalyzer analyzer(platform::FileSystem::native());
    clsXAnalyzer properties;
    std::vector<PlayedAudio> files;
    bool areAllSound = true;
    for (const QString &path : paths) {
        const XAnalyzer::Outcome outcome = analyzer.analyse(path);
        properties.take(outcome.code, outcome.record(), path);
        if (!properties.errorText().isEmpty()) {
            console.fail(path, properties.errorText().section(u"\r\n"_s, 0, 0));
            areAllSound = false;
        }
        files.push_back(PlayedAudio::of(outcome.stream));
    }
    if (!areAllSound)
        return {};
    DiscFiles disc{offsetText(files), offsetTextWithUsualDelay(files), {}};
    Result<DiscContents> contents = DiscContents::parse(disc.offsets);
    if (!contents) {
        console.fail(paths.front(), u"these files make no disc: "_s + contents.error().detail);
        return {};
    }
    disc.contents = *std::move(contents);
    return disc;
}

} // namespace ravlin::cli
