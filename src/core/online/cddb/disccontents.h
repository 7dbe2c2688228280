// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"
#include "core/tags/mpeg/mpegstream.h"

#include <QString>
#include <QStringView>

#include <span>
#include <vector>

/// The table of contents of a CD, which identifies it: where its tracks start and the last one ends, in frames of 1/75
/// second.
namespace ravlin {

inline constexpr int FramesPerSecond = 75;
inline constexpr int LeadInFrames = 150; ///< before the first track; part of every offset
inline constexpr int MaximumTracks = 99; ///< of a CD
/// Samples that an encoder usually adds to a track, before and after it; used if a file does not state them.
inline constexpr qint64 UsualEncoderSamples = 1728;

/// How long a file plays.
struct PlayedAudio
{
    qint64 samples = 0;      ///< per channel, without those that the encoder added if the file states them
    int sampleRate = 0;      ///< hertz; 0 for a file without audio, which lasts 0 seconds
    bool tellsDelay = false; ///< the file states what the encoder added

    static PlayedAudio of(const StreamInfo &stream);
    double seconds() const;
    qint64 frames() const; ///< of a CD, rounded
    /// Without the usual encoder samples, if the file does not state them; at least 0.
    PlayedAudio withUsualDelayTakenOff() const;
};

/// The offset text of a disc with these playing times in seconds: the start of each track and the end of the last, in
/// frames, separated by single blanks. A negative time counts as 0.
QString offsetText(std::span<const double> playingTimes);
QString offsetText(std::span<const PlayedAudio> files);
/// A second offset text to try if a disc is not found: without the usual encoder samples of files that do not state
/// theirs, each rounded to the nearest frame. Empty if all files state them, since nothing would differ.
QString offsetTextWithUsualDelay(std::span<const PlayedAudio> files);

/// A disc's table of contents.
class DiscContents
{
public:
    /// Parses an offset text. InvalidArgument unless it has numbers separated by blanks, at least two and no more than
    /// a disc has, ascending, and no longer than an identifier can express (65,535 seconds).
    static Result<DiscContents> parse(QStringView offsetText);

    int trackCount() const { return int(m_offsets.size()); }
    const std::vector<qint64> &frameOffsets() const { return m_offsets; } ///< of the tracks' starts
    qint64 leadOut() const { return m_leadOut; }                          ///< frame where the last track ends
    qint64 trackFrames(int index) const;                                  ///< length of a track, index from 0
    /// Of the whole disc, lead-in included, rounded down.
    int totalSeconds() const { return int(m_leadOut / FramesPerSecond); }
    /// The identifier of the disc in CD databases: a checksum of the tracks' starting seconds, the playing seconds and
    /// the number of tracks.
    quint32 discId() const;
    /// The identifier as eight lower-case hexadecimal digits.
    QString discIdText() const;

private:
    std::vector<qint64> m_offsets;
    qint64 m_leadOut = 0;
};

} // namespace ravlin
