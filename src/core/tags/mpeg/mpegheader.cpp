// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/mpegheader.h"

namespace ravlin::mpeg {

namespace {

constexpr quint32 SyncMask = 0xFFE00000U;

// Kilobits per second by bit rate index 1 to 14; rows: MPEG-1 Layer I, II, III, then MPEG-2 and 2.5
// Layer I, II and III.
constexpr int BitRates[5][14] = {
    {32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
    {32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
    {32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},
    {32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
    {8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
};

constexpr int Mpeg1SampleRates[3] = {44100, 48000, 32000};

int bitRateRow(Version version, int layer)
{
    if (version == Version::Mpeg1)
        return layer - 1;
    return layer == 1 ? 3 : 4;
}

int sampleRateOf(Version version, quint32 index)
{
    switch (version) {
    case Version::Mpeg1:
        return Mpeg1SampleRates[index];
    case Version::Mpeg2:
        return Mpeg1SampleRates[index] / 2;
    case Version::Mpeg25:
        break;
    }
    return Mpeg1SampleRates[index] / 4;
}

} // namespace

std::optional<FrameHeader> FrameHeader::parse(quint32 word)
{
    const quint32 versionBits = (word >> 19U) & 3U;
    const quint32 layerBits = (word >> 17U) & 3U;
    const quint32 bitRateIndex = (word >> 12U) & 15U;
    const quint32 sampleRateIndex = (word >> 10U) & 3U;
    if ((word & SyncMask) != SyncMask || versionBits == 1 || layerBits == 0 || bitRateIndex == 15 ||
        sampleRateIndex == 3)
        return std::nullopt;

    FrameHeader header;
    header.word = word;
    header.version = versionBits == 3 ? Version::Mpeg1 : versionBits == 2 ? Version::Mpeg2 : Version::Mpeg25;
    header.layer = 4 - int(layerBits);
    header.bitRate = bitRateIndex == 0 ? 0 : BitRates[bitRateRow(header.version, header.layer)][bitRateIndex - 1];
    header.sampleRate = sampleRateOf(header.version, sampleRateIndex);
    header.padded = (word & 0x200U) != 0;
    header.hasChecksum = (word & 0x10000U) == 0;
    header.channelMode = ChannelMode((word >> 6U) & 3U);
    return header;
}

int FrameHeader::samples() const
{
    if (layer == 1)
        return 384;
    return layer == 3 && version != Version::Mpeg1 ? 576 : 1152;
}

int FrameHeader::length(int freeLength) const
{
    const int padding = padded ? slotSize() : 0;
    if (isFreeFormat())
        return freeLength + padding;
    // The standard rounds down to whole slots: 4 bytes in Layer I, single bytes otherwise.
    const int slotsPerFrame = samples() / 8 / slotSize();
    return slotsPerFrame * bitRate * 1000 / sampleRate * slotSize() + padding;
}

int FrameHeader::sideInfoSize() const
{
    const bool mono = channelMode == ChannelMode::Mono;
    if (version == Version::Mpeg1)
        return mono ? 17 : 32;
    return mono ? 9 : 17;
}

} // namespace ravlin::mpeg
