// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <string_view>

/// The frames that the program reads and edits: their identifiers, and what the texts of the number-like ones mean.
namespace ravlin {

/// The kinds, by the numbers of the program's tag interface.
enum class FrameKind : quint8
{
    Other = 0,        ///< frames that the program only carries along
    Comment = 3,      ///< COMM
    Album = 24,       ///< TALB
    ContentType = 27, ///< TCON
    Title = 36,       ///< TIT2
    LeadArtist = 48,  ///< TPE1
    TrackNumber = 54, ///< TRCK
    Year = 62,        ///< TYER, in ID3v2.4 TDRC
};

/// The kind for a frame identifier: four characters (ID3v2.3 §4, ID3v2.4 frames §4), three (ID3v2.2 §4), or three and a
/// space or NUL, as some programs wrote them into newer tags. Both year frames are Year in every version.
FrameKind frameKindOf(std::string_view identifier);

/// The identifier for a new frame of that kind in a tag of that major version (2, 3 or 4).
std::string_view frameIdentifier(FrameKind kind, int majorVersion);

} // namespace ravlin

namespace ravlin::id3 {

/// The first genre number in a content-type text (ID3v2.3 §4.2.1 TCON, ID3v2.4 frames §4.2.3): "(17)", "17", "(17)Rock"
/// and a standard name in any of its spellings give 17. Numbers from 126 to 254 count only in digits. GenreNone for
/// everything else, such as "(RX)" or a free text.
int genreNumber(const QString &text);
/// The content-type text for a number in a tag of that major version: "(17)", in ID3v2.4 "17".
QString genreText(int number, int majorVersion);

/// The number before the slash of a track text: 3 for "3/12". 0 if there is none.
int trackNumber(const QString &text);
/// The track text with the number replaced. The total after the slash and the width of leading zeros stay.
QString trackText(const QString &old, int number);

/// The year in a year or recording-time text: the first four digits of "1999-05-01", "1999, 2001" or "19990501". A text
/// of any other form is returned as it is, without surrounding spaces.
QString yearOf(const QString &text);

} // namespace ravlin::id3
