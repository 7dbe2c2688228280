// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"
#include "core/tags/mpeg/mpegheader.h"

#include <optional>
#include <vector>

namespace ravlin {

/// The properties of an MPEG audio stream, measured frame by frame over the whole file.
struct StreamInfo
{
    mpeg::Version version = mpeg::Version::Mpeg1; ///< of the first audio frame, like the next three
    int layer = 0;                                ///< 1 to 3
    int sampleRate = 0;                           ///< hertz
    mpeg::ChannelMode channelMode = mpeg::ChannelMode::Stereo;
    bool hasChecksum = false;  ///< of the first audio frame: a CRC protects its header
    bool hasInfoFrame = false; ///< a Xing, Info or VBRI frame stands first
    bool isVariable = false;   ///< the audio frames have different bit rates

    qint64 frames = 0;                 ///< whole audio frames, without the info frame
    qint64 audioBytes = 0;             ///< bytes of these frames
    qint64 samples = 0;                ///< per channel, as a decoder without trimming gives them
    qint64 playedSamples = 0;          ///< as a gapless player plays them: without the encoder's delay and padding
    std::optional<int> encoderDelay;   ///< samples before the music, 0 to 4095, if the info frame states it
    std::optional<int> encoderPadding; ///< samples after it, stated together with the delay
    int bitRate = 0;                   ///< kilobits per second: the bit rate of every frame, or their average, rounded
    qint64 milliseconds = 0;           ///< playing time of playedSamples, rounded down

    qint64 firstFrame = -1;     ///< offset of the first frame, which may be the info frame; -1 if there is none
    int resynchronisations = 0; ///< times that no frame followed a frame
    bool isTruncated = false;   ///< the last frame is cut off; it is not counted
    qint64 bytesSearched = 0;   ///< bytes looked at for the first frame
    bool hasFrame() const { return firstFrame >= 0; }
    /// Whether the stream is damaged. Its values then hold for what there is.
    bool isDamaged() const { return resynchronisations > 0 || isTruncated; }
};

namespace mpeg {

/// Bytes read at once. Blocks of this size stay in the processor's second-level cache while they are walked: measured
/// faster than mapping the file and than larger blocks (docs/decisions/0005-analyser-reading.md).
inline constexpr qsizetype WindowSize = 128 * 1024;

/// Walks all frames of a source: MPEG-1, 2 and 2.5, Layers I to III, free format. Skips tags before, between and after
/// frames, unknown data before the first frame (up to 64 MiB) and zeros behind the last one. Other unknown data count
/// as lost sync.
///
/// What decoders make of the stream counts. Where mpg123 and FFmpeg differ:
/// - A frame cut off by the end is not counted (mpg123), though FFmpeg decodes the part. If tags follow, mpg123 takes
///   them for the rest of the frame; here it stays cut off.
/// - An info frame behind unknown data is not audio (mpg123), and neither is a VBRI frame (FFmpeg). A second info
///   frame, in joined files, is audio (both); see docs/decisions/0023-second-info-frame.md.
/// - A frame followed by something other than a frame is audio (mpg123); FFmpeg leaves out one or two there.
///
/// buffer: memory for reading, kept by the caller so that many files share it. Fails only if reading does. A source
/// without frames gives a StreamInfo whose hasFrame() is false.
Result<StreamInfo> analyseStream(platform::ByteSource &source, std::vector<char> &buffer);

} // namespace mpeg
} // namespace ravlin
