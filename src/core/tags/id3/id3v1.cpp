// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/id3v1.h"

#include "core/tags/id3/transliterate.h"

#include <algorithm>
#include <array>

namespace ravlin::id3 {

namespace {

struct Slot
{
    qsizetype offset;
    qsizetype size;
};

constexpr Slot Title{3, V1TextSize};
constexpr Slot Artist{33, V1TextSize};
constexpr Slot Album{63, V1TextSize};
constexpr Slot Year{93, 4};
constexpr Slot Comment{97, V1TextSize};
constexpr Slot CommentBeforeTrack{97, V1CommentBeforeTrackSize};
constexpr qsizetype TrackMark = 125; ///< zero when the next byte is a track number
constexpr qsizetype Track = 126;
constexpr qsizetype Genre = 127;

QString textAt(std::string_view block, Slot slot)
{
    std::string_view field = block.substr(static_cast<size_t>(slot.offset), static_cast<size_t>(slot.size));
    field = field.substr(0, field.find('\0'));
    while (field.ends_with(' '))
        field.remove_suffix(1);
    return QString::fromLatin1(field.data(), static_cast<qsizetype>(field.size()));
}

bool hasTrack(std::string_view block)
{
    return block[TrackMark] == '\0' && block[Track] != '\0';
}

/// Writes a text into its slot, unless the slot already reads as that text.
void putText(QByteArray &block, Slot slot, const QString &text)
{
    const QByteArray latin = toLatin1Visibly(text, slot.size);
    QByteArray field = latin.leftJustified(slot.size, '\0', true);
    const std::string_view old(block.constData(), static_cast<size_t>(block.size()));
    QByteArray candidate = block;
    candidate.replace(slot.offset, slot.size, field);
    if (textAt({candidate.constData(), static_cast<size_t>(candidate.size())}, slot) != textAt(old, slot))
        block = candidate;
}

} // namespace

Result<std::optional<QByteArray>> readV1Block(platform::File &file, qint64 fileSize)
{
    platform::FileSource source(file, fileSize);
    return readV1Block(source, fileSize);
}

Result<std::optional<QByteArray>> readV1Block(platform::ByteSource &source, qint64 end)
{
    if (end < V1Size)
        return std::nullopt;
    // Three more bytes, to recognise the end of "APETAGEX".
    std::array<char, V1Size + 3> buffer{};
    const qint64 before = std::min<qint64>(3, end - V1Size);
    const auto read = source.readAt({buffer.data(), static_cast<size_t>(V1Size + before)}, end - V1Size - before);
    if (!read)
        return tl::unexpected(read.error());
    if (*read < V1Size + before)
        return tl::unexpected(
            Error{ErrorCode::ChangedMeanwhile, {}, QStringLiteral("the file became shorter while it was read")});
    const std::string_view all(buffer.data(), static_cast<size_t>(*read));
    const std::string_view block = all.substr(static_cast<size_t>(before));
    if (!block.starts_with("TAG") || all.starts_with("APETAGEX"))
        return std::nullopt;
    return QByteArray(block.data(), V1Size);
}

V1Fields parseV1(std::string_view block)
{
    V1Fields fields;
    fields.title = textAt(block, Title);
    fields.artist = textAt(block, Artist);
    fields.album = textAt(block, Album);
    fields.year = textAt(block, Year);
    const bool track = hasTrack(block);
    fields.comment = textAt(block, track ? CommentBeforeTrack : Comment);
    fields.track = track ? static_cast<unsigned char>(block[Track]) : 0;
    fields.genre = static_cast<unsigned char>(block[Genre]);
    return fields;
}

QByteArray buildV1(const V1Fields &fields, const QByteArray &oldBlock)
{
    QByteArray block = oldBlock;
    if (block.size() != V1Size) {
        block = QByteArray(V1Size, '\0');
        block.replace(0, 3, "TAG");
        block[Genre] = static_cast<char>(255);
    }
    putText(block, Title, fields.title);
    putText(block, Artist, fields.artist);
    putText(block, Album, fields.album);
    putText(block, Year, fields.year);
    const bool hadTrack = hasTrack({block.constData(), static_cast<size_t>(V1Size)});
    if (fields.track > 0) {
        putText(block, CommentBeforeTrack, fields.comment);
        block[TrackMark] = '\0';
        block[Track] = static_cast<char>(fields.track);
    } else {
        if (hadTrack)
            block[Track] = '\0';
        putText(block, Comment, fields.comment);
    }
    block[Genre] = static_cast<char>(fields.genre);
    return block;
}

} // namespace ravlin::id3
