// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/bytewindow.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <string_view>

/// The ID3v1 and ID3v1.1 tag: 128 bytes at the end of the file (id3.org/ID3v1).
namespace ravlin::id3 {

inline constexpr qint64 V1Size = 128;
inline constexpr qsizetype V1TextSize = 30;               ///< bytes of title, artist, album and comment
inline constexpr qsizetype V1CommentBeforeTrackSize = 28; ///< of a comment with a track behind it

/// The seven fields of the tag as the program has them.
struct V1Fields
{
    QString title;
    QString artist;
    QString album;
    QString year;
    QString comment;
    int track = 0;   ///< 0: none
    int genre = 255; ///< 255: none

    bool operator==(const V1Fields &) const = default;
};

/// The tag block at the end of the file. Returns nothing if there is none; the end of an APE footer that looks like one
/// is not one.
Result<std::optional<QByteArray>> readV1Block(platform::File &file, qint64 fileSize);
/// The same at that place of a source.
Result<std::optional<QByteArray>> readV1Block(platform::ByteSource &source, qint64 end);

/// The fields of a block of 128 bytes: Latin-1, each up to its first zero byte, without trailing spaces.
V1Fields parseV1(std::string_view block);

/// The block for those fields. Texts are transliterated and cut (see toLatin1Visibly). With a track the comment has 28
/// bytes and the tag is ID3v1.1. A field that already holds the value keeps its bytes of oldBlock (which may be empty),
/// whatever follows the terminator there.
QByteArray buildV1(const V1Fields &fields, const QByteArray &oldBlock);

} // namespace ravlin::id3
