// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/disccontents.h"

#include <QList>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr int MaximumSeconds = 0xFFFF;
/// A day: longer than any track; keeps sums of frames from overflowing.
constexpr double LongestPlayingTime = 24.0 * 60 * 60;

struct DiscTime
{
    qint64 seconds = 0;
    int frames = 0;

    qint64 inFrames() const { return seconds * FramesPerSecond + frames; }

    void add(double playingTime)
    {
        // NaN fails the comparison and counts as 0.
        const double length = playingTime > 0 ? std::min(playingTime, LongestPlayingTime) : 0;
        const double wholeSeconds = std::trunc(length);
        const double exactFrames = (length - wholeSeconds) * FramesPerSecond;
        int added = int(exactFrames);
        // Count a frame that was begun, but not a rounding error.
        constexpr double Tolerance = 0.01;
        if (exactFrames - added > Tolerance)
            ++added;
        frames += added;
        if (frames >= FramesPerSecond) {
            ++seconds;
            frames -= FramesPerSecond;
        }
        seconds += qint64(wholeSeconds);
    }
};

tl::unexpected<Error> invalid(const QString &detail)
{
    return tl::unexpected(Error{ErrorCode::InvalidArgument, {}, detail});
}

int digitSum(qint64 number)
{
    int sum = 0;
    for (; number > 0; number /= 10)
        sum += int(number % 10);
    return sum;
}

} // namespace

PlayedAudio PlayedAudio::of(const StreamInfo &stream)
{
    if (!stream.hasFrame())
        return {};
    return {stream.playedSamples, stream.sampleRate, stream.encoderDelay.has_value()};
}

double PlayedAudio::seconds() const
{
    return sampleRate > 0 ? double(samples) / sampleRate : 0;
}

qint64 PlayedAudio::frames() const
{
    return qRound64(seconds() * FramesPerSecond);
}

PlayedAudio PlayedAudio::withUsualDelayTakenOff() const
{
    PlayedAudio shorter = *this;
    if (!tellsDelay)
        shorter.samples = std::max<qint64>(0, samples - UsualEncoderSamples);
    return shorter;
}

QString offsetText(std::span<const double> playingTimes)
{
    DiscTime now{LeadInFrames / FramesPerSecond, 0};
    QString text = QString::number(now.inFrames());
    for (const double playingTime : playingTimes) {
        now.add(playingTime);
        text += u' ' + QString::number(now.inFrames());
    }
    return text;
}

QString offsetText(std::span<const PlayedAudio> files)
{
    std::vector<double> times;
    std::ranges::transform(files, std::back_inserter(times), &PlayedAudio::seconds);
    return offsetText(times);
}

QString offsetTextWithUsualDelay(std::span<const PlayedAudio> files)
{
    if (std::ranges::all_of(files, &PlayedAudio::tellsDelay))
        return {};
    const auto estimate = [](const PlayedAudio &file) {
        // The usual delay is an estimate: the nearest frame is likelier than the next.
        return file.tellsDelay ? file.seconds() : double(file.withUsualDelayTakenOff().frames()) / FramesPerSecond;
    };
    std::vector<double> times;
    std::ranges::transform(files, std::back_inserter(times), estimate);
    return offsetText(times);
}

Result<DiscContents> DiscContents::parse(QStringView offsetText)
{
    std::vector<qint64> numbers;
    for (const QStringView word : offsetText.split(u' ', Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const qint64 number = word.toLongLong(&isNumber);
        if (!isNumber || number < 0)
            return invalid(u"an offset is no number"_s);
        if (!numbers.empty() && number < numbers.back())
            return invalid(u"a track ends before it begins"_s);
        if (numbers.size() > MaximumTracks)
            return invalid(u"a disc has no more than %1 tracks"_s.arg(MaximumTracks));
        numbers.push_back(number);
    }
    if (numbers.size() < 2)
        return invalid(u"a disc has at least one track"_s);
    DiscContents contents;
    contents.m_leadOut = numbers.back();
    numbers.pop_back();
    contents.m_offsets = std::move(numbers);
    if (contents.m_leadOut / FramesPerSecond > MaximumSeconds)
        return invalid(u"longer than a disc can be"_s);
    return contents;
}

qint64 DiscContents::trackFrames(int index) const
{
    const auto position = size_t(index);
    const qint64 end = position + 1 < m_offsets.size() ? m_offsets[position + 1] : m_leadOut;
    return end - m_offsets[position];
}

quint32 DiscContents::discId() const
{
    quint32 checksum = 0;
    for (const qint64 offset : m_offsets)
        checksum += quint32(digitSum(offset / FramesPerSecond));
    const auto playing = quint32(m_leadOut / FramesPerSecond - m_offsets.front() / FramesPerSecond);
    return checksum % 0xFF << 24 | playing << 8 | quint32(m_offsets.size());
}

QString DiscContents::discIdText() const
{
    return u"%1"_s.arg(discId(), 8, 16, QLatin1Char('0'));
}

} // namespace ravlin
