// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/tags/id3/id3v1.h"
#include "core/tags/id3/id3v2.h"

#include <QByteArray>
#include <QList>

#include <algorithm>
#include <optional>
#include <vector>

/// What a save of some fields must leave alone. Header-only because fuzz targets link only the core.
namespace ravlin::test {

/// The ID3v2 tag at the start of a file of size bytes.
inline Result<std::optional<id3::Tag>> tagOf(platform::File &file, qint64 size)
{
    const auto v1 = id3::readV1Block(file, size);
    if (!v1)
        return tl::unexpected(v1.error());
    platform::FileSource withoutV1(file, size - (*v1 ? id3::V1Size : 0));
    return id3::Tag::parse(withoutV1, id3::Detail::Everything);
}

/// The bytes of the frames of kinds other than the edited ones, in order, and of what follows the last frame in the
/// tag, without the padding around it. content: the file of the tag.
inline QList<QByteArray> foreignParts(
    const std::optional<id3::Tag> &tag, const QByteArray &content, const std::vector<FrameKind> &editedKinds)
{
    QList<QByteArray> parts;
    if (!tag)
        return parts;
    // Offsets are those in the file; what lies between them may be unsynchronised.
    const auto bytesOf = [&](qint64 begin, qint64 end) {
        const QByteArray stored = content.mid(begin, end - begin);
        return tag->isUnsynchronised() ? id3::removeUnsynchronisation({stored.constData(), size_t(stored.size())})
                                       : stored;
    };
    for (const id3::Frame &frame : tag->frames()) {
        const bool isEdited = std::find(editedKinds.begin(), editedKinds.end(), frame.kind) != editedKinds.end();
        if (isEdited && !frame.isPrivateComment())
            continue;
        // A save corrects sizes that are stored in the form of another version, so compare the size as it is read.
        const qsizetype sizeAt = frame.header.headerSize == 6 ? 3 : 4;
        const QByteArray bytes = bytesOf(frame.header.offset, frame.header.end);
        parts += bytes.first(sizeAt) + QByteArray::number(frame.header.bodySize) + bytes.mid(2 * sizeAt);
    }
    QByteArray rest = bytesOf(tag->framesEnd(), tag->bodyEnd());
    while (rest.startsWith('\0'))
        rest.remove(0, 1);
    while (rest.endsWith('\0'))
        rest.chop(1);
    if (!rest.isEmpty())
        parts += rest;
    return parts;
}

/// All kinds that the program edits.
inline const std::vector<FrameKind> &editedKinds()
{
    static const std::vector<FrameKind> kinds{FrameKind::Title, FrameKind::LeadArtist, FrameKind::Album,
        FrameKind::Year, FrameKind::Comment, FrameKind::TrackNumber, FrameKind::ContentType};
    return kinds;
}

} // namespace ravlin::test
