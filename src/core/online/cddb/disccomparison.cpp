// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/disccomparison.h"

#include "core/app/idiomas.h"
#include "core/tags/mpeg/xanalyze.h"

#include <algorithm>
#include <cstdlib>

namespace ravlin {

QString shownTitle(const DiscTrack &track)
{
    return track.artist.isEmpty() ? track.title : track.artist + QStringLiteral(" / ") + track.title;
}

QString shownTime(std::optional<qint64> frames)
{
    constexpr qint64 MillisecondsPerSecond = 1000;
    return frames ? clsXAnalyzer::FormatTime(*frames * MillisecondsPerSecond / FramesPerSecond) : QString();
}

QString shownDifference(std::optional<qint64> frames)
{
    if (!frames)
        return {};
    const QString seconds = QString::number(double(*frames) / FramesPerSecond, 'f', 1) + QStringLiteral(" s");
    return *frames > 0 ? u'+' + seconds : seconds;
}

std::vector<qint64> notableDifferences(const Lengths &files, const Lengths &tracks)
{
    constexpr qint64 LeastNotable = qint64{2} * FramesPerSecond;
    std::vector<qint64> differences(tracks.size());
    for (std::size_t row = 0; row < std::min(files.size(), tracks.size()); ++row) {
        const qint64 more = files[row] && tracks[row] ? *files[row] - *tracks[row] : 0;
        differences[row] = std::abs(more) > LeastNotable ? more : 0;
    }
    return differences;
}

QString differenceRemark(const Captions &captions, qint64 frames)
{
    if (frames == 0)
        return {};
    const QString seconds = QString::number(double(std::abs(frames)) / FramesPerSecond, 'f', 1);
    return captions.text(frames > 0 ? Text::LookupFileLonger : Text::LookupFileShorter).arg(seconds);
}

QStringList comparisonRemarks(const Captions &captions, qsizetype files, qsizetype tracks, qsizetype differing)
{
    QStringList remarks;
    if (files != tracks)
        remarks
            << captions.text(files > tracks ? Text::LookupMoreFiles : Text::LookupMoreTracks).arg(files).arg(tracks);
    if (differing > 0)
        remarks << captions.text(Text::LookupTimesDiffer).arg(differing);
    return remarks;
}

} // namespace ravlin
