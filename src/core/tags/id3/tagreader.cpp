// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/tagreader.h"

#include <algorithm>

#include <zlib.h>

namespace ravlin::id3 {

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

constexpr int ListFieldCount = 5;

bool isListField(FrameKind kind)
{
    return kind == FrameKind::Title || kind == FrameKind::LeadArtist || kind == FrameKind::Album ||
           kind == FrameKind::Year || kind == FrameKind::TrackNumber;
}

std::string_view view(const QByteArray &bytes)
{
    return {bytes.constData(), static_cast<size_t>(bytes.size())};
}

qint64 heldSize(const Frame &frame)
{
    const qsizetype characters = frame.text.size() + frame.description.size();
    return static_cast<qint64>(sizeof frame) + characters * qsizetype{sizeof(QChar)};
}

} // namespace

void TagReader::read(const std::stop_token &stop)
{
    const bool isForList = m_detail == Detail::ListFields;
    qint64 offset = skipExtendedHeader();
    m_tag.m_framesBegin = isForList ? offset : m_body.fileOffset(offset);
    m_tag.m_framesEnd = m_tag.m_framesBegin;
    m_tag.m_frames.reserve(12);
    while (!stop.stop_requested()) {
        std::optional<FrameHeader> header = frameHeaderAt(offset);
        if (!header)
            break;
        const qint64 bodyOffset = offset + header->headerSize;
        offset += header->size();
        header->offset = m_tag.m_framesEnd;
        header->bodyOffset = isForList ? bodyOffset : m_body.fileOffset(bodyOffset);
        header->end = isForList ? offset : m_body.fileOffset(offset);
        if (m_frameCount++ == MaximumFrameCount || !takeFrame(*header, bodyOffset)) {
            m_tag.m_isCut = true;
            return;
        }
        m_tag.m_framesEnd = header->end;
        if (m_settledCount == ListFieldCount)
            return;
    }
    m_tag.m_isCut = m_body.isCut();
}

/// Adds a frame to the directory, if it is of use there. Returns false if that is over a budget.
bool TagReader::takeFrame(const FrameHeader &header, qint64 bodyOffset)
{
    Frame frame;
    frame.header = header;
    frame.kind = frameKindOf(header.identifier());
    const bool isForList = m_detail == Detail::ListFields;
    if (isForList && !decideOnList(frame))
        return true;
    if (frame.kind != FrameKind::Other) {
        const Content content = readFrame(frame, bodyOffset);
        if (content == Content::OverBudget)
            return false;
        if (content == Content::Unreadable)
            frame.kind = FrameKind::Other;
    }
    if (isForList) {
        if (frame.kind == FrameKind::Other || frame.text.isEmpty())
            return true;
        Known &known = m_known.at(static_cast<size_t>(frame.kind));
        known = isPreferred(frame) ? Known::Settled : Known::Text;
        m_settledCount += known == Known::Settled ? 1 : 0;
    }
    m_heldLeft -= heldSize(frame);
    if (m_heldLeft < 0)
        return false;
    m_tag.m_frames.push_back(std::move(frame));
    return true;
}

/// Whether no other frame of that kind comes before this one, if it has a text (see Tag::programFrame).
bool TagReader::isPreferred(const Frame &frame) const
{
    return frame.kind != FrameKind::Year ||
           frame.header.identifier() == frameIdentifier(FrameKind::Year, m_tag.m_header.majorVersion);
}

/// Whether the list has to know the frame's text. What nobody asks for is not even decompressed.
bool TagReader::decideOnList(const Frame &frame)
{
    if (!isListField(frame.kind))
        return false;
    const Known known = m_known.at(static_cast<size_t>(frame.kind));
    return known == Known::Nothing || (known == Known::Text && isPreferred(frame));
}

qint64 TagReader::skipExtendedHeader()
{
    const TagHeader &header = m_tag.m_header;
    if (header.majorVersion == 2 || (header.flags & TagHeader::ExtendedHeader) == 0)
        return TagHeaderSize;
    const std::string_view sizeBytes = m_body.exactly(TagHeaderSize, 4);
    if (sizeBytes.empty())
        return TagHeaderSize;
    // ID3v2.3 counts without the size field (6 or 10), ID3v2.4 with it and syncsafe (at least 6).
    const qint64 size = header.majorVersion == 3 ? readBigEndian(sizeBytes) + 4 : readSyncsafe(sizeBytes);
    // Some programs set the flag without writing an extended header: then a frame begins here.
    const bool isFrame = isIdentifier(sizeBytes);
    return size < 6 || isFrame || !m_body.reaches(TagHeaderSize + size) ? TagHeaderSize : TagHeaderSize + size;
}

/// The header of the frame at that offset, which is not yet one in the file.
std::optional<FrameHeader> TagReader::frameHeaderAt(qint64 offset)
{
    const int majorVersion = m_tag.m_header.majorVersion;
    const bool old = majorVersion == 2;
    FrameHeader frame;
    frame.headerSize = old ? 6 : 10;
    if (!m_body.reaches(offset + frame.headerSize))
        return std::nullopt;
    const std::string_view bytes = m_body.exactly(offset, frame.headerSize);
    if (bytes.empty() || !isIdentifier(bytes.substr(0, old ? 3 : 4)))
        return std::nullopt;
    std::copy_n(bytes.begin(), old ? 3 : 4, frame.id.begin());
    if (!old)
        frame.flags = static_cast<quint16>(readBigEndian(bytes.substr(8, 2)));
    // Copy the size bytes: the next read invalidates the view.
    const std::array<char, 4> size{bytes[old ? 3 : 4], bytes[old ? 4 : 5], bytes[old ? 5 : 6], old ? '\0' : bytes[7]};
    frame.bodySize = frameSize({size.data(), old ? size_t{3} : size_t{4}}, offset + frame.headerSize);
    const qint64 syncsafe = old ? -1 : readSyncsafe({size.data(), size_t{4}});
    frame.hasForeignSize =
        syncsafe >= 0 && frame.bodySize != (majorVersion == 4 ? syncsafe : readBigEndian({size.data(), 4}));
    if (frame.bodySize < 0 || !m_body.reaches(offset + frame.size()))
        return std::nullopt;
    return frame;
}

/// ID3v2.4 sizes are syncsafe, ID3v2.3's are not, and programs have mixed them up both ways. Where the two readings
/// differ, the right one is the one that leads to a frame, padding or the end of the tag.
qint64 TagReader::frameSize(std::string_view sizeBytes, qint64 bodyOffset)
{
    const int majorVersion = m_tag.m_header.majorVersion;
    const qint64 plain = readBigEndian(sizeBytes);
    if (majorVersion == 2)
        return plain;
    const qint64 syncsafe = readSyncsafe(sizeBytes);
    if (syncsafe < 0 || syncsafe == plain)
        return plain;
    const qint64 right = majorVersion == 4 ? syncsafe : plain;
    const qint64 other = majorVersion == 4 ? plain : syncsafe;
    if (plausibleFrameStart(bodyOffset + right) || !plausibleFrameStart(bodyOffset + other))
        return right;
    return other;
}

bool TagReader::plausibleFrameStart(qint64 offset)
{
    if (!m_body.reaches(offset))
        return false;
    const qint64 size = m_body.reaches(offset + 10) ? 10 : m_body.end() - offset;
    if (size == 0)
        return true;
    const std::string_view next = m_body.exactly(offset, size);
    return !next.empty() && canFollowFrame(next);
}

/// Characters that the next text may have.
qsizetype TagReader::textRoom() const
{
    const qsizetype held = static_cast<qsizetype>(m_heldLeft) / qsizetype{sizeof(QChar)};
    return m_detail == Detail::ListFields ? MaximumListText + 1 : held;
}

TagReader::Content TagReader::readFrame(Frame &frame, qint64 bodyOffset)
{
    std::string_view content;
    QByteArray scratch;
    const Content status = frameContent(frame.header, bodyOffset, content, scratch);
    if (status != Content::Readable)
        return status;
    if (frame.kind != FrameKind::Comment) {
        TextBody body = decodeTextBody(content, textRoom());
        frame.text = std::move(body.text);
        frame.valueCount = body.valueCount;
        return body.isCut && m_detail == Detail::Everything ? Content::OverBudget : Content::Readable;
    }
    CommentBody comment;
    if (std::ssize(content) > textRoom())
        return Content::OverBudget;
    if (!decodeCommentBody(content, comment))
        return Content::Unreadable;
    frame.text = comment.text;
    frame.description = comment.description;
    frame.language = comment.language;
    return Content::Readable;
}

/// The frame's body without what its flags add around it.
TagReader::Content TagReader::frameContent(
    const FrameHeader &frame, qint64 bodyOffset, std::string_view &content, QByteArray &scratch)
{
    content = {};
    if (frame.bodySize == 0)
        return Content::Readable;
    if (frame.bodySize > MaximumTextFrameSize)
        return Content::Unreadable;
    if (frame.bodySize > m_textLeft)
        return Content::OverBudget;
    m_textLeft -= frame.bodySize;
    content = m_body.exactly(bodyOffset, frame.bodySize);
    if (content.empty())
        return Content::Unreadable;
    const TagHeader &header = m_tag.m_header;
    const bool v24 = header.majorVersion == 4;
    const quint16 flags = header.majorVersion == 2 ? 0 : frame.flags & 0xFF;
    if ((flags & (v24 ? V24Encrypted : V23Encrypted)) != 0)
        return Content::Unreadable;
    const bool compressed = (flags & (v24 ? V24Compressed : V23Compressed)) != 0;
    const bool grouped = (flags & (v24 ? V24Grouped : V23Grouped)) != 0;
    const bool unsynchronised =
        v24 && ((flags & V24Unsynchronised) != 0 || (header.flags & TagHeader::Unsynchronisation) != 0);
    const bool dataLength = v24 ? (flags & V24DataLength) != 0 : compressed;
    const size_t extra = (grouped ? 1 : 0) + (dataLength ? 4 : 0);
    if (content.size() < extra || (compressed && !dataLength))
        return Content::Unreadable;
    // ID3v2.3 puts the decompressed size before the group, ID3v2.4 the group before the data length.
    const size_t lengthAt = v24 && grouped ? 1 : 0;
    const qint64 claimed = !dataLength ? 0
                           : v24       ? readSyncsafe(content.substr(lengthAt, 4))
                                       : readBigEndian(content.substr(lengthAt, 4));
    content.remove_prefix(extra);
    if (unsynchronised) {
        scratch = removeUnsynchronisation(content);
        content = view(scratch);
    }
    if (!compressed)
        return Content::Readable;
    QByteArray inflated;
    const Content status = decompress(content, claimed, inflated);
    scratch = inflated;
    content = view(scratch);
    return status;
}

/// Decompresses a zlib stream of a claimed size. Fails if the claim is beyond reason or wrong, or the data are broken.
/// Never produces more than the claim.
TagReader::Content TagReader::decompress(std::string_view data, qint64 claimedSize, QByteArray &out)
{
    if (claimedSize < 0 || claimedSize > MaximumTextFrameSize)
        return Content::Unreadable;
    if (claimedSize > MaximumDecompressedSize - m_tag.m_decompressedSize)
        return Content::OverBudget;
    out.resize(claimedSize);
    auto size = static_cast<uLongf>(claimedSize);
    const int status = ::uncompress(reinterpret_cast<Bytef *>(out.data()), &size,
        reinterpret_cast<const Bytef *>(data.data()), static_cast<uLong>(data.size()));
    m_tag.m_decompressedSize += static_cast<qint64>(size);
    return status == Z_OK && static_cast<qint64>(size) == claimedSize ? Content::Readable : Content::Unreadable;
}

} // namespace ravlin::id3
