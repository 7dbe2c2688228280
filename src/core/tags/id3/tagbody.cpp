// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/tagbody.h"

#include "core/tags/id3/id3v2.h"

#include <algorithm>
#include <cstring>

namespace ravlin::id3 {

namespace {

/// With the byte before it a block fills the window over a tag.
constexpr qint64 BlockSize = static_cast<qint64>(WindowSize) - 1;
/// Blocks that are read at once on the way to a frame far behind.
constexpr qint64 LongStep = 16;

/// Where a block begins in the file. The first one is shorter, so that it lies in one window with the tag's header.
qint64 encodedBegin(qint64 block)
{
    return block == 0 ? TagHeaderSize : 1 + BlockSize * block;
}

/// For each of the eight bytes at a place a 1 if it is 0xFF and a zero follows, else a 0.
quint64 stuffedBytes(const char *bytes)
{
    constexpr quint64 Low = 0x7F7F'7F7F'7F7F'7F7F;
    quint64 first = 0;
    quint64 second = 0;
    std::memcpy(&first, bytes, sizeof first);
    std::memcpy(&second, bytes + 1, sizeof second);
    const quint64 wrong = ~first | second; // a byte of it is 0 where both are right
    return ~(((wrong & Low) + Low) | wrong | Low) >> 7U;
}

/// How many zeros the scheme has put behind the bytes but the last one. A zero is never 0xFF, so pairs don't overlap.
/// Counts in each byte of a number at once: megabytes are walked through on the way to a frame behind a picture.
qint64 countStuffing(std::string_view bytes)
{
    constexpr int MostAtOnce = 31; // so that the sum of all eight fits into a byte
    constexpr quint64 Ones = 0x0101'0101'0101'0101;
    qint64 count = 0;
    size_t i = 0;
    while (i + 8 < bytes.size()) {
        quint64 counts = 0;
        for (int round = 0; round < MostAtOnce && i + 8 < bytes.size(); ++round, i += 8)
            counts += stuffedBytes(bytes.data() + i);
        count += static_cast<qint64>((counts * Ones) >> 56U);
    }
    for (; i + 1 < bytes.size(); ++i)
        count += bytes[i] == '\xFF' && bytes[i + 1] == '\0' ? 1 : 0;
    return count;
}

} // namespace

TagBody::TagBody(platform::ByteWindow &window, qint64 end, bool isUnsynchronised, const std::stop_token &stop)
    : m_window(window), m_stop(stop), m_fileEnd(end), m_isUnsynchronised(isUnsynchronised),
      m_end(isUnsynchronised ? std::min(TagHeaderSize, end) : end)
{
}

bool TagBody::walkTo(qint64 offset)
{
    while (offset > m_end && !m_isWhole) {
        const qint64 missing = (offset - m_end) / BlockSize;
        walkBlocks(missing >= LongStep ? LongStep : 1);
    }
    return offset <= m_end;
}

/// Walks through the next blocks, as far as there are any.
void TagBody::walkBlocks(qint64 count)
{
    const qint64 first = std::ssize(m_blockBegins);
    m_isWhole = true; // unless all goes well
    if (encodedBegin(first) >= m_fileEnd || m_stop.stop_requested())
        return;
    if (encodedBegin(first) >= MaximumUnsynchronisedSize) {
        m_isCut = true;
        return;
    }
    std::string_view bytes = encodedBlocks(first, count);
    if (bytes.empty())
        return; // the window has the error
    m_isWhole = false;
    for (qint64 block = first; bytes.size() > 1; ++block) {
        const qint64 size = std::min<qint64>(encodedBegin(block + 1) - encodedBegin(block), std::ssize(bytes) - 1);
        m_blockBegins.push_back(m_end);
        m_end += size - countStuffing(bytes.substr(0, static_cast<size_t>(size) + 1));
        bytes.remove_prefix(static_cast<size_t>(size));
    }
}

/// The blocks as they are in the file, with the byte before them.
std::string_view TagBody::encodedBlocks(qint64 first, qint64 count)
{
    const qint64 begin = encodedBegin(first) - 1;
    return m_window.exactly(begin, std::min(encodedBegin(first + count), m_fileEnd) - begin);
}

/// The last block that begins at that offset or before it.
qint64 TagBody::blockOf(qint64 offset) const
{
    return std::upper_bound(m_blockBegins.begin(), m_blockBegins.end(), offset) - m_blockBegins.begin() - 1;
}

bool TagBody::appendBlock(qint64 block, QByteArray &bytes)
{
    std::string_view encoded = encodedBlocks(block, 1);
    if (encoded.empty())
        return false;
    encoded.remove_prefix(encoded.starts_with(std::string_view("\xFF\0", 2)) ? 2 : 1);
    bytes += removeUnsynchronisation(encoded);
    return true;
}

std::string_view TagBody::decoded(qint64 offset, qint64 size)
{
    if (offset < TagHeaderSize || size <= 0 || !reaches(offset + size))
        return {};
    const auto lies = [&] { return offset >= m_blockBegin && offset + size <= m_blockBegin + m_block.size(); };
    qint64 block = blockOf(offset);
    if (!lies()) {
        m_block.resize(0); // keeps the memory
        m_blockBegin = m_blockBegins[static_cast<size_t>(block)];
        if (!appendBlock(block, m_block))
            return {};
    }
    if (lies())
        return {m_block.constData() + (offset - m_blockBegin), static_cast<size_t>(size)};
    m_large = m_block.mid(offset - m_blockBegin);
    while (m_large.size() < size) {
        if (!appendBlock(++block, m_large))
            return {};
    }
    return {m_large.constData(), static_cast<size_t>(size)};
}

qint64 TagBody::encodedOffset(qint64 offset)
{
    if (offset < TagHeaderSize || m_blockBegins.empty() || !reaches(offset))
        return offset;
    const qint64 block = blockOf(offset);
    const qint64 blockBegin = encodedBegin(block);
    const std::string_view bytes = encodedBlocks(block, 1); // with the byte before, so that bytes[i + 1] follows it
    qint64 known = m_blockBegins[static_cast<size_t>(block)];
    qint64 place = blockBegin;
    if (m_knownOffset >= known && m_knownOffset <= offset && m_knownFileOffset >= blockBegin) {
        known = m_knownOffset;
        place = m_knownFileOffset;
    }
    for (; place - blockBegin + 1 < std::ssize(bytes); ++place) {
        const auto i = static_cast<size_t>(place - blockBegin);
        if (bytes[i] == '\xFF' && bytes[i + 1] == '\0')
            continue;
        if (known == offset)
            break;
        ++known;
    }
    m_knownOffset = offset;
    m_knownFileOffset = place;
    return place;
}

} // namespace ravlin::id3
