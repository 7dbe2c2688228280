// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/mpeginfoframe.h"

#include <QByteArrayView>

#include <algorithm>

namespace ravlin::mpeg {

namespace {

bool hasMark(std::span<const uchar> bytes, size_t offset, QByteArrayView mark)
{
    return bytes.size() >= offset + size_t(mark.size()) &&
           QByteArrayView(reinterpret_cast<const char *>(bytes.data()) + offset, mark.size()) == mark;
}

/// LAME's extension, which LAME's and FFmpeg's encoders and a few relatives write. Other programs store other things in
/// this place.
std::optional<InfoFrame::Trimming> trimming(std::span<const uchar> extension)
{
    constexpr size_t DelayOffset = 21;
    constexpr QByteArrayView Encoders[] = {"LAME", "Lavc", "Lavf", "L3.9", "GOGO"};
    const bool isKnown = std::any_of(std::begin(Encoders), std::end(Encoders),
        [extension](QByteArrayView name) { return hasMark(extension, 0, name); });
    if (!isKnown || extension.size() < DelayOffset + 3)
        return std::nullopt;
    const uchar *bytes = extension.data() + DelayOffset;
    InfoFrame::Trimming told;
    told.delay = bytes[0] << 4 | bytes[1] >> 4;
    told.padding = (bytes[1] & 0x0F) << 8 | bytes[2];
    // No encoder is without delay: two zeros mean that nothing was filled in.
    return told.delay == 0 && told.padding == 0 ? std::nullopt : std::optional(told);
}

InfoFrame parseXing(std::span<const uchar> block)
{
    constexpr quint32 HasFrames = 1;
    constexpr quint32 HasBytes = 2;
    constexpr quint32 HasTable = 4;
    constexpr quint32 HasQuality = 8;

    InfoFrame info;
    info.isVariable = block[0] == 'X';
    if (block.size() < 8)
        return info;
    const quint32 flags = bigEndian32(block.data() + 4);
    size_t offset = 8;
    if ((flags & HasFrames) != 0 && block.size() >= offset + 4)
        info.frames = bigEndian32(block.data() + offset);
    offset += ((flags & HasFrames) != 0 ? 4U : 0U) + ((flags & HasBytes) != 0 ? 4U : 0U) +
              ((flags & HasTable) != 0 ? 100U : 0U) + ((flags & HasQuality) != 0 ? 4U : 0U);
    if (offset < block.size())
        info.trimming = trimming(block.subspan(offset));
    return info;
}

InfoFrame parseVbri(std::span<const uchar> block)
{
    // "VBRI", version, delay and quality in two bytes each, bytes and frames in four each. The delay is an assumption
    // about decoders and says nothing of the end; players ignore it.
    constexpr size_t FramesOffset = 14;
    InfoFrame info;
    info.isVariable = true;
    if (block.size() >= FramesOffset + 4)
        info.frames = bigEndian32(block.data() + FramesOffset);
    return info;
}

} // namespace

std::optional<InfoFrame> InfoFrame::parse(const FrameHeader &header, std::span<const uchar> frame)
{
    constexpr size_t VbriOffset = 36;
    if (header.layer != 3)
        return std::nullopt;
    const auto xingOffset = size_t(HeaderSize) + size_t(header.sideInfoSize());
    // Some encoders move the block by the two bytes of a checksum, some don't.
    for (const size_t offset : {xingOffset, xingOffset + 2}) {
        if (hasMark(frame, offset, "Xing") || hasMark(frame, offset, "Info"))
            return parseXing(frame.subspan(offset));
        if (!header.hasChecksum)
            break;
    }
    if (hasMark(frame, VbriOffset, "VBRI"))
        return parseVbri(frame.subspan(VbriOffset));
    return std::nullopt;
}

} // namespace ravlin::mpeg
