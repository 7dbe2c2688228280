// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/mpeg/mpegtags.h"

#include <QByteArrayView>

#include <algorithm>
#include <array>

namespace ravlin::mpeg {

using platform::ByteSource;

namespace {

constexpr qint64 Id3v1Size = 128;
constexpr qint64 Id3v1ExtensionSize = 227; // "TAG+", stands before an ID3v1 tag
constexpr qint64 Id3v2HeaderSize = 10;     // its footer too
constexpr qint64 ApeHeaderSize = 32;       // its footer too
constexpr int MaximumTrailingTags = 64;    // no real file has ten; bounds the reads for a hostile one

bool startsWith(std::span<const uchar> bytes, QByteArrayView magic)
{
    return bytes.size() >= size_t(magic.size()) &&
           std::equal(magic.begin(), magic.end(), bytes.begin(), [](char a, uchar b) { return uchar(a) == b; });
}

quint32 littleEndian32(const uchar *bytes)
{
    return quint32(bytes[3]) << 24U | quint32(bytes[2]) << 16U | quint32(bytes[1]) << 8U | bytes[0];
}

/// The size in an ID3v2 header or footer: four bytes of seven bits. -1 if the ten bytes are neither.
qint64 id3v2Content(std::span<const uchar> bytes, QByteArrayView magic)
{
    if (bytes.size() < size_t(Id3v2HeaderSize) || !startsWith(bytes, magic) || bytes[3] == 0xFF || bytes[4] == 0xFF)
        return -1;
    qint64 size = 0;
    for (size_t i = 6; i < 10; ++i) {
        if (bytes[i] > 0x7F)
            return -1;
        size = size << 7 | bytes[i];
    }
    return size;
}

struct ApeBlock
{
    qint64 content = -1; ///< bytes of the items and the footer
    bool isHeader = false;
    bool hasHeader = false;
};

/// The fields of an APE header or footer. content is -1 if the bytes are neither.
ApeBlock apeBlock(std::span<const uchar> bytes)
{
    ApeBlock block;
    if (bytes.size() < size_t(ApeHeaderSize) || !startsWith(bytes, "APETAGEX"))
        return block;
    const quint32 version = littleEndian32(bytes.data() + 8);
    const quint32 flags = version >= 2000 ? littleEndian32(bytes.data() + 20) : 0;
    block.content = littleEndian32(bytes.data() + 12);
    block.hasHeader = (flags & 0x80000000U) != 0;
    block.isHeader = (flags & 0x20000000U) != 0;
    return block;
}

/// The last bytes of what is left of a source, and access to the rest of it.
class Tail
{
public:
    explicit Tail(ByteSource &source) : m_source(source), m_end(source.size()) {}

    qint64 end() const { return m_end; }
    /// Moves the end of the tail.
    Result<void> setEnd(qint64 end)
    {
        m_end = end;
        return read(std::max<qint64>(0, m_end - qint64(m_bytes.size())), m_bytes).map([this](qint64 length) {
            m_length = length;
        });
    }
    /// The last count bytes. Empty if the tail is shorter, or holds fewer.
    std::span<const uchar> last(qint64 count) const
    {
        if (count > m_length)
            return {};
        return std::span(m_bytes).subspan(size_t(m_length - count), size_t(count));
    }
    Result<qint64> read(qint64 offset, std::span<uchar> buffer)
    {
        const qint64 length = std::min<qint64>(qint64(buffer.size()), m_end - offset);
        if (offset < 0 || length <= 0)
            return 0;
        return m_source.readAt({reinterpret_cast<char *>(buffer.data()), size_t(length)}, offset);
    }
    /// Whether the bytes at offset are these.
    bool has(qint64 offset, QByteArrayView magic)
    {
        std::array<uchar, 16> bytes{};
        const Result<qint64> got = read(offset, std::span(bytes).first(size_t(magic.size())));
        return got && *got == magic.size() && startsWith(bytes, magic);
    }

private:
    ByteSource &m_source;
    qint64 m_end = 0;
    qint64 m_length = 0;
    std::array<uchar, 512> m_bytes{};
};

qint64 trailingApe(const Tail &tail)
{
    const ApeBlock footer = apeBlock(tail.last(ApeHeaderSize));
    if (footer.content < ApeHeaderSize || footer.isHeader)
        return 0;
    return footer.content + (footer.hasHeader ? ApeHeaderSize : 0);
}

qint64 trailingId3v2(Tail &tail)
{
    const qint64 content = id3v2Content(tail.last(Id3v2HeaderSize), "3DI");
    const qint64 size = content + 2 * Id3v2HeaderSize;
    return content >= 0 && tail.has(tail.end() - size, "ID3") ? size : 0;
}

qint64 trailingLyrics3v2(Tail &tail)
{
    constexpr qint64 SizeAndMark = 15; // six digits and "LYRICS200"
    const std::span<const uchar> bytes = tail.last(SizeAndMark);
    if (bytes.empty() || !startsWith(bytes.subspan(6), "LYRICS200"))
        return 0;
    qint64 size = 0;
    for (const uchar digit : bytes.first(6)) {
        if (digit < '0' || digit > '9')
            return 0;
        size = size * 10 + (digit - '0');
    }
    size += SizeAndMark;
    return tail.has(tail.end() - size, "LYRICSBEGIN") ? size : 0;
}

qint64 trailingLyrics3v1(Tail &tail)
{
    if (!startsWith(tail.last(9), "LYRICSEND"))
        return 0;
    // Up to 5,100 bytes of text between the two marks; search from the end.
    std::array<uchar, 11 + 5100 + 9> bytes{};
    const qint64 start = std::max<qint64>(0, tail.end() - qint64(bytes.size()));
    const qint64 length = tail.read(start, bytes).value_or(0);
    const QByteArrayView text(reinterpret_cast<const char *>(bytes.data()), length);
    const qsizetype begin = text.lastIndexOf("LYRICSBEGIN");
    return begin < 0 ? 0 : length - begin;
}

qint64 trailingId3v1(const Tail &tail)
{
    if (!startsWith(tail.last(Id3v1Size), "TAG"))
        return 0;
    const bool isExtended = startsWith(tail.last(Id3v1Size + Id3v1ExtensionSize), "TAG+");
    return Id3v1Size + (isExtended ? Id3v1ExtensionSize : 0);
}

/// Bytes of the tag at the end of the tail; 0 if there is none.
qint64 trailingTag(Tail &tail)
{
    // APE first: the header of a short APE tag has "TAG" where an ID3v1 tag would begin.
    for (const auto &sizeOf : {+[](Tail &t) { return trailingApe(t); }, trailingId3v2, trailingLyrics3v2,
             trailingLyrics3v1, +[](Tail &t) { return trailingId3v1(t); }}) {
        const qint64 size = sizeOf(tail);
        if (size > 0 && size <= tail.end())
            return size;
    }
    return 0;
}

} // namespace

qint64 tagLengthAt(platform::ByteWindow &window, qint64 offset)
{
    const std::span<const uchar> bytes = window.at(offset, ApeHeaderSize);
    qint64 length = 0;
    if (startsWith(bytes, "ID3")) {
        const qint64 content = id3v2Content(bytes, "ID3");
        const bool hasFooter = content >= 0 && bytes[3] >= 4 && (bytes[5] & 0x10U) != 0;
        length = content < 0 ? 0 : content + (hasFooter ? 2 : 1) * Id3v2HeaderSize;
    } else if (startsWith(bytes, "APETAGEX")) {
        const ApeBlock block = apeBlock(bytes);
        length = block.isHeader ? block.content + ApeHeaderSize : 0;
    } else if (startsWith(bytes, "TAG")) {
        length = startsWith(bytes, "TAG+") ? Id3v1ExtensionSize : Id3v1Size;
    }
    return offset + length <= window.end() ? length : 0;
}

Result<qint64> trailingTagsStart(ByteSource &source)
{
    Tail tail(source);
    Result<void> read = tail.setEnd(source.size());
    for (int count = 0; read && count < MaximumTrailingTags; ++count) {
        const qint64 size = trailingTag(tail);
        if (size == 0)
            break;
        read = tail.setEnd(tail.end() - size);
    }
    return read.map([&tail] { return tail.end(); });
}

} // namespace ravlin::mpeg
