// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/mpegsync.h"

#include "core/tags/mpeg/mpegtags.h"

#include <algorithm>
#include <cstring>

namespace ravlin::mpeg {

std::optional<FrameHeader> Synchroniser::headerAt(qint64 offset)
{
    const std::span<const uchar> bytes = m_window.at(offset, HeaderSize);
    return bytes.size() < size_t(HeaderSize) ? std::nullopt : FrameHeader::parse(bigEndian32(bytes.data()));
}

/// Whether no header is due at offset: the audio ends there or within a header, or a tag follows.
bool Synchroniser::endsAt(qint64 offset)
{
    return offset + HeaderSize > m_window.end() || tagLengthAt(m_window, offset) > 0;
}

std::optional<SyncPoint> Synchroniser::frameAt(qint64 offset, int followers)
{
    // One block of the window then serves the whole look ahead.
    if (m_window.at(offset, LookAhead).size() < size_t(HeaderSize))
        return std::nullopt;
    const std::optional<FrameHeader> header = headerAt(offset);
    if (!header)
        return std::nullopt;
    const int freeLength = header->isFreeFormat() ? freeLengthAt(offset, *header) : 0;
    if (header->isFreeFormat() && freeLength == 0)
        return std::nullopt;
    const SyncPoint point{offset, *header, freeLength};
    return isConfirmed(point, followers) ? std::optional(point) : std::nullopt;
}

bool Synchroniser::isConfirmed(const SyncPoint &point, int followers)
{
    qint64 next = point.offset;
    FrameHeader header = point.header;
    int freeLength = point.freeLength;
    for (int found = 0; found < followers; ++found) {
        next += header.length(freeLength);
        if (next > m_window.end())
            return found > 0; // the last frame is cut off, but headers before it agreed
        const std::optional<FrameHeader> follower = headerAt(next);
        if (!follower || !agree(follower->word, point.header.word))
            return endsAt(next);
        // The info frame may have a bit rate where the others are in free format.
        if (follower->isFreeFormat() && freeLength == 0)
            freeLength = freeLengthAt(next, *follower);
        if (follower->isFreeFormat() && freeLength == 0)
            return false;
        header = *follower;
    }
    return true;
}

/// Bytes of an unpadded frame of the free format stream with a frame at offset; 0 if there is none. The next similar
/// header gives the length if the one after it is equally far away.
int Synchroniser::freeLengthAt(qint64 offset, const FrameHeader &header)
{
    constexpr int MaximumTries = 3; // chance headers inside a frame are rare; more tries only serve hostile files
    const std::span<const uchar> bytes = m_window.at(offset, MaximumFreeLength + HeaderSize);
    const auto limit = std::min<qsizetype>(qsizetype(bytes.size()) - HeaderSize, MaximumFreeLength);
    const int padding = header.padded ? header.slotSize() : 0;
    int tries = 0;
    for (qsizetype distance = HeaderSize + header.sideInfoSize(); distance <= limit && tries < MaximumTries;
         ++distance) {
        const void *sync = std::memchr(bytes.data() + distance, 0xFF, size_t(limit - distance + 1));
        if (sync == nullptr)
            break;
        distance = static_cast<const uchar *>(sync) - bytes.data();
        if (((bigEndian32(bytes.data() + distance) ^ header.word) & FreeFormatMask) != 0)
            continue;
        ++tries;
        if (repeats(offset + distance, header, int(distance) - padding))
            return int(distance) - padding;
    }
    return 0;
}

/// Whether the free format frame at second, if it has that length, is followed by another or by the end.
bool Synchroniser::repeats(qint64 second, const FrameHeader &first, int freeLength)
{
    const std::optional<FrameHeader> header = headerAt(second);
    if (!header)
        return false;
    const qint64 third = second + header->length(freeLength);
    if (endsAt(third))
        return third <= m_window.end();
    const std::optional<FrameHeader> next = headerAt(third);
    return next && ((next->word ^ first.word) & FreeFormatMask) == 0;
}

std::optional<SyncPoint> Synchroniser::search(qint64 offset, int followers)
{
    const qint64 limit = offset + MaximumSearch;
    while (offset < limit) {
        const std::span<const uchar> bytes = m_window.at(offset, LookAhead);
        if (bytes.size() < size_t(HeaderSize))
            return std::nullopt;
        const void *sync = std::memchr(bytes.data(), 0xFF, bytes.size());
        if (sync == nullptr) {
            offset += qint64(bytes.size());
            continue;
        }
        offset += static_cast<const uchar *>(sync) - bytes.data();
        if (std::optional<SyncPoint> point = frameAt(offset, followers))
            return point;
        ++offset;
    }
    return std::nullopt;
}

} // namespace ravlin::mpeg
