// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QtGlobal>

#include <optional>

/// The four-byte header of every MPEG audio frame (ISO/IEC 11172-3 §2.4.1.3, ISO/IEC 13818-3 §2.4.1, and the unofficial
/// but common MPEG-2.5 for the lowest sampling rates). Pure values: no reading, no state.
namespace ravlin::mpeg {

inline constexpr int HeaderSize = 4; ///< bytes

enum class Version
{
    Mpeg25,
    Mpeg1,
    Mpeg2
};
enum class ChannelMode
{
    Stereo,
    JointStereo,
    DualChannel,
    Mono
};

/// A header whose fields all have values that the standard allows.
struct FrameHeader
{
    quint32 word = 0; ///< the four bytes, the first one highest
    Version version = Version::Mpeg1;
    int layer = 3;            ///< 1 to 3
    int bitRate = 0;          ///< kilobits per second; 0 for free format, which does not state it
    int sampleRate = 0;       ///< hertz, 8000 to 48000
    bool padded = false;      ///< one slot longer
    bool hasChecksum = false; ///< two bytes of CRC follow the header
    ChannelMode channelMode = ChannelMode::Stereo;

    /// Parses four bytes. Returns nothing if they are not a header.
    static std::optional<FrameHeader> parse(quint32 word);

    bool isFreeFormat() const { return bitRate == 0; }
    /// Samples per channel that a decoder makes of the frame: 384, 576 or 1152.
    int samples() const;
    /// Bytes of a padding slot: 4 in Layer I, else 1.
    int slotSize() const { return layer == 1 ? 4 : 1; }
    /// Bytes of the frame with its header and padding. freeLength: the unpadded length of the stream's frames, for free
    /// format only.
    int length(int freeLength = 0) const;
    /// Bytes of the side information of Layer III.
    int sideInfoSize() const;
};

/// The bits that are the same in all frames of a stream: sync, version, layer and sampling rate.
inline constexpr quint32 AgreeMask = 0xFFFE0C00U;
/// The bits that are the same in free format as well: checksum and bit rate (none).
inline constexpr quint32 FreeFormatMask = AgreeMask | 0x0001F000U;

/// Whether two headers can belong to one stream.
inline bool agree(quint32 a, quint32 b)
{
    return ((a ^ b) & AgreeMask) == 0;
}

/// The index of a header's bit rate and padding in a table of 32 frame lengths.
inline quint32 lengthIndex(quint32 word)
{
    return ((word >> 11U) & 0x1EU) | ((word >> 9U) & 1U);
}

inline quint32 bigEndian32(const uchar *bytes)
{
    return quint32(bytes[0]) << 24U | quint32(bytes[1]) << 16U | quint32(bytes[2]) << 8U | bytes[3];
}

} // namespace ravlin::mpeg
