// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/id3v2.h"

#include "core/tags/id3/tagbody.h"
#include "core/tags/id3/tagreader.h"

#include <algorithm>

namespace ravlin::id3 {

using platform::ByteWindow;

namespace {

bool isIdentifierCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
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

Result<std::optional<Tag>> Tag::parse(platform::ByteSource &source, Detail detail, const std::stop_token &stop)
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
    tag.m_isWritable = header->regionSize() <= end;
    tag.m_bodyEnd = std::min(TagHeaderSize + header->bodySize, end);
    const bool known = header->majorVersion >= 2 && header->majorVersion <= 4;
    const bool compressed = header->majorVersion == 2 && (header->flags & TagHeader::ExtendedHeader) != 0;
    if (!known || compressed) {
        tag.m_isWritable = false;
        return tag;
    }

    TagBody body(window, tag.m_bodyEnd, tag.isUnsynchronised(), stop);
    TagReader(tag, body, detail).read(stop);
    if (window.error())
        return tl::unexpected(*window.error());
    if (stop.stop_requested())
        return tl::unexpected(Error{ErrorCode::Cancelled, {}, {}});
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

} // namespace ravlin::id3
