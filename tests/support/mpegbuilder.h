// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/mpeg/mpegheader.h"

#include <QByteArray>

#include <optional>

/// Builds MPEG audio files from parts, byte by byte by the standards. The frames carry only filling, no sound.
namespace ravlin::test {

struct FrameSpec
{
    mpeg::Version version = mpeg::Version::Mpeg1;
    int layer = 3;
    int bitRate = 128; ///< kilobits per second; 0 for free format
    int sampleRate = 44100;
    mpeg::ChannelMode channelMode = mpeg::ChannelMode::JointStereo;
    bool padded = false;
    bool checksum = false;
    int freeLength = 0; ///< unpadded bytes of a frame in free format

    quint32 header() const;
    int length() const;
};

/// An MPEG-1 Layer III frame of that bit rate in kilobits per second.
FrameSpec ofBitRate(int bitRate);
/// An MPEG-1 frame in free format, its length in bytes without padding.
FrameSpec freeFormatFrame(int length, int layer = 3);
/// The same frame with a padding slot.
FrameSpec padded(FrameSpec spec);
/// Bytes without a pattern in which no header can be found (0xFF is not among them).
QByteArray junk(int size);

/// The content of an info frame.
struct InfoSpec
{
    QByteArray mark = "Info"; ///< or "Xing"
    std::optional<quint32> frames = std::nullopt;
    QByteArray encoder = "LAME3.100"; ///< nine characters; empty for no extension
    int delay = 0;
    int padding = 0;
    int shift = 0; ///< bytes between the usual place of the block and the block
};

class MpegBuilder
{
public:
    explicit MpegBuilder(const FrameSpec &spec = {}) : m_spec(spec) {}

    /// Frames as the builder's, or as another specification.
    MpegBuilder &frames(int count) { return frames(count, m_spec); }
    MpegBuilder &frames(int count, const FrameSpec &spec);
    MpegBuilder &xing(const InfoSpec &info);
    MpegBuilder &vbri(quint32 frames);
    MpegBuilder &bytes(const QByteArray &bytes);

    MpegBuilder &id3v2(int contentSize, bool footer = false);
    MpegBuilder &id3v1(bool extended = false);
    MpegBuilder &ape(int version = 2000, bool header = true);
    MpegBuilder &lyrics3v1();
    MpegBuilder &lyrics3v2();

    /// Removes bytes from the end.
    MpegBuilder &cut(qsizetype count);

    const QByteArray &data() const { return m_data; }

private:
    FrameSpec m_spec;
    QByteArray m_data;
};

} // namespace ravlin::test
