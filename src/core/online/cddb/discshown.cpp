// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/discshown.h"

#include "core/tags/mpeg/xanalyze.h"

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

} // namespace ravlin
