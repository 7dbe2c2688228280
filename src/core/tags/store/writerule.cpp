// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/store/writerule.h"

#include "core/platform/namecheck.h"
#include "core/platform/path.h"
#include "core/tags/mpeg/mpegheader.h"
#include "core/tags/mpeg/mpegtags.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

namespace ravlin {

namespace {

using namespace std::string_view_literals;
using platform::ByteWindow;

constexpr qsizetype HeadSize = 4096;         ///< bytes of the content that are looked at
constexpr qint64 MostSearched = 1024 * 1024; ///< bytes of the content that are searched for frames
constexpr int MostTags = 64;                 ///< in front of the content; no real file has ten
constexpr int MostChunks = 64;               ///< of a RIFF file before its format is told

struct Format
{
    QStringView name;
    std::string_view magic;
    std::size_t offset = 0;
};

constexpr std::array Formats{
    Format{u"PNG", "\x89PNG\r\n\x1A\n"sv},
    Format{u"JPEG", "\xFF\xD8\xFF"sv},
    Format{u"FLAC", "fLaC"sv},
    Format{u"MP4", "ftyp"sv, 4},
    Format{u"ZIP", "PK\3\4"sv},
    Format{u"ELF", "\x7F"
                   "ELF"sv},
    Format{u"RIFF", "RIFF"sv},
};

std::string_view headAt(ByteWindow &window, qint64 offset)
{
    const std::span<const uchar> bytes = window.at(offset, HeadSize);
    const std::size_t length = std::min(bytes.size(), std::size_t(HeadSize));
    return {reinterpret_cast<const char *>(bytes.data()), length};
}

bool isFrameHeader(std::string_view bytes)
{
    return bytes.size() >= std::size_t(mpeg::HeaderSize) &&
           mpeg::FrameHeader::parse(mpeg::bigEndian32(reinterpret_cast<const uchar *>(bytes.data())));
}

quint32 littleEndian(std::string_view bytes)
{
    quint32 number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8U | static_cast<uchar>(bytes[i]);
    return number;
}

/// Whether a RIFF file says that its audio is MPEG Layer III (mmreg.h: WAVE_FORMAT_MPEGLAYER3).
bool isMp3InRiff(ByteWindow &window, qint64 start)
{
    constexpr quint32 MpegLayer3 = 0x55;
    constexpr std::size_t ChunkHead = 8; // identifier and size
    const std::string_view riff = headAt(window, start);
    if (riff.size() < ChunkHead || !riff.substr(ChunkHead).starts_with("WAVE"sv))
        return false;
    qint64 offset = start + qint64(ChunkHead) + 4;
    for (int count = 0; count < MostChunks; ++count) {
        const std::string_view chunk = headAt(window, offset);
        if (chunk.size() < ChunkHead + 2)
            return false;
        if (chunk.starts_with("fmt "sv))
            return littleEndian(chunk.substr(ChunkHead, 2)) == MpegLayer3;
        const qint64 size = littleEndian(chunk.substr(4, 4));
        offset += qint64(ChunkHead) + size + size % 2;
    }
    return false;
}

bool isControl(char c)
{
    const auto byte = static_cast<uchar>(c);
    const bool isBlank = byte >= '\t' && byte <= '\r';
    return (byte < 0x20 && !isBlank) || byte == 0x7F;
}

/// Whether the bytes are lines of text, in UTF-8 or a code page of single bytes.
bool isText(std::string_view head)
{
    if (head.find_first_of("\r\n"sv) == std::string_view::npos || std::ranges::any_of(head, isControl))
        return false;
    // Many other bytes without a control character among them are no accident.
    constexpr std::size_t FewestOfCodePage = 64;
    if (head.size() >= FewestOfCodePage)
        return true;
    QStringDecoder utf8(QStringDecoder::Utf8);
    const QString text = utf8.decode(QByteArrayView(head));
    return !text.isEmpty() && !utf8.hasError();
}

/// The name of the format that the content's first bytes are of; empty for audio and the unknown.
QStringView formatOf(ByteWindow &window, std::string_view head, qint64 start)
{
    const auto found = std::ranges::find_if(Formats, [head](const Format &format) {
        return head.size() > format.offset && head.substr(format.offset).starts_with(format.magic);
    });
    if (found == Formats.end())
        return isText(head) ? QStringView(u"text") : QStringView();
    const bool isRiff = found->name == u"RIFF";
    return isRiff && isMp3InRiff(window, start) ? QStringView() : found->name;
}

/// The header at offset, if it is one that counts where another format's signature stands. Programs are full of what
/// looks like Layer I, quiet PCM of what looks like free format.
std::optional<mpeg::FrameHeader> frameAt(ByteWindow &window, qint64 offset)
{
    constexpr quint32 EmphasisMask = 3;
    constexpr quint32 ReservedEmphasis = 2;
    const std::span<const uchar> bytes = window.at(offset, mpeg::HeaderSize);
    if (bytes.size() < std::size_t(mpeg::HeaderSize))
        return {};
    const auto header = mpeg::FrameHeader::parse(mpeg::bigEndian32(bytes.data()));
    const bool counts =
        header && header->layer != 1 && !header->isFreeFormat() && (header->word & EmphasisMask) != ReservedEmphasis;
    return counts ? header : std::nullopt;
}

/// Whether two frames of one stream follow each other in the first MostSearched bytes from start.
Result<bool> hasFrames(platform::ByteSource &source, qint64 start, qint64 end)
{
    // What stays the same within a stream: all but bit rate, padding, private bit and the way to join the channels.
    constexpr quint32 SameMask = 0xFFFF0CCF;
    constexpr qsizetype LookAhead = 4096; // more than a frame and the next header
    std::vector<char> buffer(std::size_t(LookAhead) * 16);
    ByteWindow window(source, buffer);
    window.setEnd(std::min(end, start + MostSearched));
    for (qint64 offset = start;; ++offset) {
        const std::span<const uchar> bytes = window.at(offset, LookAhead);
        const auto sync = std::ranges::find(bytes, uchar(0xFF));
        offset += sync - bytes.begin();
        if (window.error())
            return tl::unexpected(*window.error());
        if (offset >= window.end())
            return false;
        const auto first = frameAt(window, offset);
        const auto second = first ? frameAt(window, offset + first->length()) : std::nullopt;
        if (second && ((first->word ^ second->word) & SameMask) == 0)
            return true;
    }
}

/// Where the content starts: behind the tags at the start of the file.
qint64 contentStart(ByteWindow &window)
{
    qint64 start = 0;
    for (int count = 0; count < MostTags; ++count) {
        const qint64 length = mpeg::tagLengthAt(window, start);
        if (length <= 0)
            break;
        start += length;
    }
    return start;
}

} // namespace

Result<void> checkMp3Name(const QString &canonical)
{
    // A colon: on Windows the name may be that of a stream of another file.
    if (platform::isMp3Name(canonical) && platform::isPlainName(platform::nameOf(canonical)))
        return {};
    return tl::unexpected(Error{ErrorCode::NotMp3Name, canonical, {}});
}

Result<void> checkMp3Content(platform::ByteSource &source)
{
    std::array<char, HeadSize> buffer{};
    ByteWindow window(source, buffer);
    const qint64 start = contentStart(window);
    if (isFrameHeader(headAt(window, start)))
        return {};
    const Result<qint64> end = mpeg::trailingTagsStart(source);
    if (!end)
        return tl::unexpected(end.error());
    const std::string_view head = headAt(window, start).substr(0, std::size_t(std::max<qint64>(0, *end - start)));
    const QStringView format = formatOf(window, head, start);
    if (window.error())
        return tl::unexpected(*window.error());
    if (format.isEmpty())
        return {};
    return hasFrames(source, start, *end).and_then([format](bool found) -> Result<void> {
        if (found)
            return {};
        return tl::unexpected(Error{ErrorCode::NotMp3Content, {}, format.toString()});
    });
}

} // namespace ravlin
