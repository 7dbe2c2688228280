// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "core/tags/mpeg/mpegstream.h"

#include <QString>
#include <QStringView>

#include <span>
#include <vector>

/// What identifies a CD: where its tracks begin and where the last one ends, in frames of 1/75 second.
namespace ravlin {

inline constexpr int FramesPerSecond = 75;
inline constexpr int LeadInFrames = 150; ///< before the first track; counted in every offset
inline constexpr int MaximumTracks = 99; ///< of a CD
/// Samples that an encoder usually adds to a track, before and behind it, where a file does not tell.
inline constexpr qint64 UsualEncoderSamples = 1728;

/// How long a file plays.
struct PlayedAudio
{
    qint64 samples = 0;      ///< per channel, as far as known without what the encoder added
    int sampleRate = 0;      ///< hertz; 0 when the file has no audio, which then plays for no time
    bool tellsDelay = false; ///< the file told what the encoder added, and samples leaves it out

    static PlayedAudio of(const StreamInfo &stream);
    double seconds() const;
    qint64 frames() const; ///< of a CD, rounded
    /// Without the usual samples of an encoder, if the file does not tell them; never below nothing.
    PlayedAudio withUsualDelayTakenOff() const;
};

/// The playing times in seconds as the offset text of a disc: the start of each track and the end of the last one, in
/// frames, with single blanks between them. A time below nothing counts as nothing.
QString offsetText(std::span<const double> playingTimes);
QString offsetText(std::span<const PlayedAudio> files);
/// For another try when a disc is not found: the same with the usual samples taken off the files that do not tell
/// theirs. Empty when all files tell them, because nothing would differ.
QString offsetTextWithUsualDelay(std::span<const PlayedAudio> files);

/// A disc's table of contents.
class DiscContents
{
public:
    /// From an offset text. InvalidArgument: no numbers with blanks between, fewer than two or more than a disc has,
    /// descending, or longer than an identifier can say (65,535 seconds).
    static Result<DiscContents> parse(QStringView offsetText);

    int trackCount() const { return int(m_offsets.size()); }
    const std::vector<qint64> &frameOffsets() const { return m_offsets; } ///< of the tracks' starts
    qint64 leadOut() const { return m_leadOut; }                          ///< frame where the last track ends
    qint64 trackFrames(int index) const;                                  ///< length of a track, index from 0
    /// Of the whole disc from the beginning of the lead-in on, rounded down.
    int totalSeconds() const { return int(m_leadOut / FramesPerSecond); }
    /// The identifier by which CD databases know the disc: a checksum of the tracks' starting seconds, the playing
    /// seconds and the number of tracks.
    quint32 discId() const;
    /// The same as eight hexadecimal digits in lower case.
    QString discIdText() const;

private:
    std::vector<qint64> m_offsets;
    qint64 m_leadOut = 0;
};

} // namespace ravlin
