// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/id3v2.h"

#include <QtEndian>

#include <algorithm>

#include <zlib.h>

namespace ravlin::id3 {

using platform::ByteWindow;

namespace {

/// Frame flags, second byte (ID3v2.3 §3.3.1, ID3v2.4 structure §4.1.2).
constexpr quint16 V23Compressed = 0x80;
constexpr quint16 V23Encrypted = 0x40;
constexpr quint16 V23Grouped = 0x20;
constexpr quint16 V24Grouped = 0x40;
constexpr quint16 V24Compressed = 0x08;
constexpr quint16 V24Encrypted = 0x04;
constexpr quint16 V24Unsynchronised = 0x02;
constexpr quint16 V24DataLength = 0x01;

/// No real tag has more frames than this. What follows them is not read.
constexpr size_t MaximumFrameCount = 65536;

constexpr unsigned AllListFields = 0x1F;
/// Bytes of an unsynchronised tag that hold the texts of nearly all files. Read before the rest.
constexpr qint64 MostlyEnough = 64 * 1024;

/// A bit for each kind that the file list shows.
unsigned listFieldBit(FrameKind kind)
{
    switch (kind) {
    case FrameKind::Title:
        return 0x01;
    case FrameKind::LeadArtist:
        return 0x02;
    case FrameKind::Album:
        return 0x04;
    case FrameKind::Year:
        return 0x08;
    case FrameKind::TrackNumber:
        return 0x10;
    default:
        return 0;
    }
}

bool isIdentifierCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

/// Decompresses a zlib stream of a claimed size. Fails if the claim is beyond reason or wrong, or the data are broken.
/// Never produces more than the claim.
bool decompress(std::string_view data, qint64 claimedSize, QByteArray &out)
{
    if (claimedSize < 0 || claimedSize > MaximumTextFrameSize)
        return false;
    out.resize(claimedSize);
    auto size = static_cast<uLongf>(claimedSize);
    const int status = ::uncompress(reinterpret_cast<Bytef *>(out.data()), &size,
        reinterpret_cast<const Bytef *>(data.data()), static_cast<uLong>(data.size()));
    return status == Z_OK && static_cast<qint64>(size) == claimedSize;
}

} // namespace

bool isIdentifier(std::string_view id)
{
    const bool start = std::all_of(id.begin(), id.begin() + 3, isIdentifierCharacter);
    return start && (id.size() == 3 || isIdentifierCharacter(id[3]) || id[3] == ' ' || id[3] == '\0');
}

bool canFollowFrame(std::string_view next)
{
    const bool isPadding = next.find_first_not_of('\0') == std::string_view::npos;
    return isPadding || (next.size() == 10 && isIdentifier(next.substr(0, 4)));
}

std::optional<TagHeader> parseTagHeader(std::string_view bytes)
{
    if (bytes.size() < static_cast<size_t>(TagHeaderSize) || !bytes.starts_with("ID3"))
        return std::nullopt;
    TagHeader header;
    header.majorVersion = static_cast<unsigned char>(bytes[3]);
    header.revision = static_cast<quint8>(bytes[4]);
    header.flags = static_cast<quint8>(bytes[5]);
    header.bodySize = readSyncsafe(bytes.substr(6, 4));
    if (header.majorVersion == 0xFF || header.revision == 0xFF || header.bodySize < 0)
        return std::nullopt;
    return header;
}

qint64 readSyncsafe(std::string_view bytes)
{
    qint64 value = 0;
    for (const char c : bytes) {
        if ((static_cast<unsigned char>(c) & 0x80U) != 0)
            return -1;
        value = (value << 7) | static_cast<unsigned char>(c);
    }
    return value;
}

void writeSyncsafe(char *out, qint64 value, int size)
{
    for (int i = size - 1; i >= 0; --i) {
        out[i] = static_cast<char>(value & 0x7F);
        value >>= 7;
    }
}

qint64 readBigEndian(std::string_view bytes)
{
    qint64 value = 0;
    for (const char c : bytes)
        value = (value << 8) | static_cast<unsigned char>(c);
    return value;
}

QByteArray removeUnsynchronisation(std::string_view bytes)
{
    QByteArray out;
    out.reserve(static_cast<qsizetype>(bytes.size()));
    while (!bytes.empty()) {
        const size_t marker = bytes.find('\xFF');
        const size_t count = marker == std::string_view::npos ? bytes.size() : marker + 1;
        out.append(bytes.data(), static_cast<qsizetype>(count));
        bytes.remove_prefix(count);
        if (marker != std::string_view::npos && bytes.starts_with('\0'))
            bytes.remove_prefix(1);
    }
    return out;
}

QByteArray applyUnsynchronisation(std::string_view bytes)
{
    QByteArray out;
    const auto size = static_cast<qsizetype>(bytes.size());
    out.reserve(size + size / 64);
    for (size_t i = 0; i < bytes.size(); ++i) {
        out += bytes[i];
        if (bytes[i] != '\xFF')
            continue;
        const bool last = i + 1 == bytes.size();
        const auto next = last ? 0U : static_cast<unsigned char>(bytes[i + 1]);
        if (last || next == 0 || next >= 0xE0)
            out += '\0';
    }
    return out;
}

bool Frame::isPrivateComment() const
{
    static constexpr std::array<QStringView, 5> Prefixes{
        u"iTun", u"Songs-DB_", u"MusicMatch_", u"Media Jukebox:", u"LAME "};
    return kind == FrameKind::Comment && std::any_of(Prefixes.begin(), Prefixes.end(), [this](QStringView prefix) {
        return description.startsWith(prefix, Qt::CaseInsensitive);
    });
}

Result<std::optional<Tag>> Tag::parse(platform::ByteSource &source, Detail detail)
{
    std::array<char, WindowSize> buffer; // NOLINT(*-init): clearing it would cost more than most reads
    ByteWindow window(source, buffer);
    const qint64 end = window.end();
    const std::optional<TagHeader> header = parseTagHeader(window.exactly(0, TagHeaderSize));
    if (!header) {
        if (window.error())
            return tl::unexpected(*window.error());
        return std::nullopt;
    }

    Tag tag;
    tag.m_header = *header;
    tag.m_writable = header->regionSize() <= end;
    tag.m_bodyEnd = std::min(TagHeaderSize + header->bodySize, end);
    const bool known = header->majorVersion >= 2 && header->majorVersion <= 4;
    const bool compressed = header->majorVersion == 2 && (header->flags & TagHeader::ExtendedHeader) != 0;
    if (!known || compressed) {
        tag.m_writable = false;
        return tag;
    }

    if (header->majorVersion < 4 && (header->flags & TagHeader::Unsynchronisation) != 0)
        tag.walkUnsynchronised(window, detail);
    else
        tag.walk(window, detail);
    if (window.error())
        return tl::unexpected(*window.error());
    return tag;
}

const Frame *Tag::programFrame(FrameKind kind) const
{
    const Frame *best = nullptr;
    int bestRank = -1;
    for (const Frame &frame : m_frames) {
        if (frame.kind != kind || frame.isPrivateComment())
            continue;
        const bool preferred =
            kind == FrameKind::Comment
                ? frame.description.isEmpty()
                : kind != FrameKind::Year ||
                      frame.header.identifier() == frameIdentifier(FrameKind::Year, m_header.majorVersion);
        const int rank = (frame.text.isEmpty() ? 0 : 2) + (preferred ? 1 : 0);
        if (rank > bestRank) {
            best = &frame;
            bestRank = rank;
        }
    }
    return best;
}

bool Tag::walk(ByteWindow &window, Detail detail)
{
    m_framesBegin = skipExtendedHeader(window);
    m_framesEnd = m_framesBegin;
    m_frames.reserve(12);
    unsigned settled = 0;
    std::array<qint64, 64> room{}; // for the text of each kind
    room.fill(MaximumTextSizePerKind);
    for (size_t count = 0; count < MaximumFrameCount; ++count) {
        const std::optional<FrameHeader> header = frameHeaderAt(window, m_framesEnd);
        if (!header)
            return false;
        m_framesEnd += header->size();
        Frame frame;
        frame.header = *header;
        frame.kind = frameKindOf(header->identifier());
        const unsigned bit = listFieldBit(frame.kind);
        if (detail == Detail::ListFields && bit == 0)
            continue;
        if (frame.kind != FrameKind::Other)
            readFrame(window, frame, room.at(static_cast<size_t>(frame.kind)));
        const bool ownVersions = frame.kind != FrameKind::Year ||
                                 header->identifier() == frameIdentifier(FrameKind::Year, m_header.majorVersion);
        if (ownVersions && !frame.text.isEmpty())
            settled |= bit;
        m_frames.push_back(std::move(frame));
        if (detail == Detail::ListFields && settled == AllListFields)
            return true;
    }
    m_writable = false; // a frame appended to those would not be read again
    return false;
}

/// Decodes the tag in memory and walks it there. For the list its beginning usually suffices, so a picture behind the
/// texts is not read.
void Tag::walkUnsynchronised(ByteWindow &window, Detail detail)
{
    const qint64 end = m_bodyEnd;
    const auto walkUpTo = [&](qint64 size) {
        const std::string_view bytes = window.exactly(0, size);
        if (bytes.empty())
            return true; // the window has the error
        m_frames.clear();
        m_decoded = QByteArray(bytes.data(), TagHeaderSize);
        m_decoded += removeUnsynchronisation(bytes.substr(static_cast<size_t>(TagHeaderSize)));
        m_bodyEnd = m_decoded.size();
        ByteWindow decoded(std::string_view(m_decoded.constData(), static_cast<size_t>(m_decoded.size())));
        return walk(decoded, detail);
    };
    if (detail == Detail::ListFields && end > MostlyEnough && walkUpTo(MostlyEnough))
        return;
    walkUpTo(end);
}

qint64 Tag::skipExtendedHeader(ByteWindow &window) const
{
    if (m_header.majorVersion == 2 || (m_header.flags & TagHeader::ExtendedHeader) == 0)
        return TagHeaderSize;
    const std::string_view sizeBytes = window.exactly(TagHeaderSize, 4);
    if (sizeBytes.empty())
        return TagHeaderSize;
    // ID3v2.3 counts without the size field (6 or 10), ID3v2.4 with it and syncsafe (at least 6).
    qint64 size = m_header.majorVersion == 3 ? readBigEndian(sizeBytes) + 4 : readSyncsafe(sizeBytes);
    // Some programs set the flag without writing an extended header: then a frame begins here.
    if (size < 6 || TagHeaderSize + size > m_bodyEnd || isIdentifier(sizeBytes))
        size = 0;
    return TagHeaderSize + size;
}

std::optional<FrameHeader> Tag::frameHeaderAt(ByteWindow &window, qint64 offset) const
{
    const bool old = m_header.majorVersion == 2;
    FrameHeader frame;
    frame.headerSize = old ? 6 : 10;
    frame.offset = offset;
    if (offset + frame.headerSize > m_bodyEnd)
        return std::nullopt;
    const std::string_view bytes = window.exactly(offset, frame.headerSize);
    if (bytes.empty() || !isIdentifier(bytes.substr(0, old ? 3 : 4)))
        return std::nullopt;
    std::copy_n(bytes.begin(), old ? 3 : 4, frame.id.begin());
    if (!old)
        frame.flags = static_cast<quint16>(readBigEndian(bytes.substr(8, 2)));
    // Copy the size bytes: the next read invalidates the view.
    const std::array<char, 4> size{bytes[old ? 3 : 4], bytes[old ? 4 : 5], bytes[old ? 5 : 6], old ? '\0' : bytes[7]};
    frame.bodySize = frameSize(window, {size.data(), old ? size_t{3} : size_t{4}}, offset + frame.headerSize);
    const qint64 syncsafe = old ? -1 : readSyncsafe({size.data(), size_t{4}});
    frame.hasForeignSize =
        syncsafe >= 0 &&
        frame.bodySize != (m_header.majorVersion == 4 ? syncsafe : readBigEndian({size.data(), size_t{4}}));
    if (frame.bodySize < 0 || frame.bodySize > m_bodyEnd - offset - frame.headerSize)
        return std::nullopt;
    return frame;
}

/// ID3v2.4 sizes are syncsafe, ID3v2.3's are not, and programs have mixed them up both ways. Where the two readings
/// differ, the right one is the one that leads to a frame, padding or the end of the tag.
qint64 Tag::frameSize(ByteWindow &window, std::string_view sizeBytes, qint64 bodyOffset) const
{
    const qint64 plain = readBigEndian(sizeBytes);
    if (m_header.majorVersion == 2)
        return plain;
    const qint64 syncsafe = readSyncsafe(sizeBytes);
    if (syncsafe < 0 || syncsafe == plain)
        return plain;
    const qint64 right = m_header.majorVersion == 4 ? syncsafe : plain;
    const qint64 other = m_header.majorVersion == 4 ? plain : syncsafe;
    if (plausibleFrameStart(window, bodyOffset + right) || !plausibleFrameStart(window, bodyOffset + other))
        return right;
    return other;
}

bool Tag::plausibleFrameStart(ByteWindow &window, qint64 offset) const
{
    if (offset >= m_bodyEnd)
        return offset == m_bodyEnd;
    const std::string_view next = window.exactly(offset, std::min<qint64>(10, m_bodyEnd - offset));
    return !next.empty() && canFollowFrame(next);
}

/// Decodes a frame, if its kind has that many bytes of room left. A frame that can't be read becomes an Other.
void Tag::readFrame(ByteWindow &window, Frame &frame, qint64 &room) const
{
    std::string_view content;
    QByteArray scratch;
    if (!frameContent(window, frame.header, content, scratch) || std::ssize(content) > room) {
        frame.kind = FrameKind::Other;
        return;
    }
    room -= std::ssize(content);
    if (frame.kind != FrameKind::Comment) {
        TextBody body = decodeTextBody(content);
        frame.text = std::move(body.text);
        frame.valueCount = body.valueCount;
        return;
    }
    CommentBody comment;
    if (!decodeCommentBody(content, comment)) {
        frame.kind = FrameKind::Other;
        return;
    }
    frame.text = comment.text;
    frame.description = comment.description;
    frame.language = comment.language;
}

/// The frame's body without what its flags add around it. Returns false if it can't be read here.
bool Tag::frameContent(
    ByteWindow &window, const FrameHeader &frame, std::string_view &content, QByteArray &scratch) const
{
    content = {};
    if (frame.bodySize == 0)
        return true;
    if (frame.bodySize > MaximumTextFrameSize)
        return false;
    content = window.exactly(frame.offset + frame.headerSize, frame.bodySize);
    if (content.empty())
        return false;
    const bool v24 = m_header.majorVersion == 4;
    const quint16 flags = m_header.majorVersion == 2 ? 0 : frame.flags & 0xFF;
    if ((flags & (v24 ? V24Encrypted : V23Encrypted)) != 0)
        return false;
    const bool compressed = (flags & (v24 ? V24Compressed : V23Compressed)) != 0;
    const bool grouped = (flags & (v24 ? V24Grouped : V23Grouped)) != 0;
    const bool unsynchronised =
        v24 && ((flags & V24Unsynchronised) != 0 || (m_header.flags & TagHeader::Unsynchronisation) != 0);
    const bool dataLength = v24 ? (flags & V24DataLength) != 0 : compressed;
    const size_t extra = (grouped ? 1 : 0) + (dataLength ? 4 : 0);
    if (content.size() < extra || (compressed && !dataLength))
        return false;
    // ID3v2.3 puts the decompressed size before the group, ID3v2.4 the group before the data length.
    const size_t lengthAt = v24 && grouped ? 1 : 0;
    const qint64 claimed = !dataLength ? 0
                           : v24       ? readSyncsafe(content.substr(lengthAt, 4))
                                       : readBigEndian(content.substr(lengthAt, 4));
    content.remove_prefix(extra);
    if (unsynchronised) {
        scratch = removeUnsynchronisation(content);
        content = {scratch.constData(), static_cast<size_t>(scratch.size())};
    }
    if (compressed) {
        QByteArray inflated;
        if (!decompress(content, claimed, inflated))
            return false;
        scratch = inflated;
        content = {scratch.constData(), static_cast<size_t>(scratch.size())};
    }
    return true;
}

} // namespace ravlin::id3
