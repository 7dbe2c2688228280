// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

/// What the texts of number-like frames mean, and how a new number is written into such a text.
namespace ravlin::id3 {

/// No genre, as the ID3v1 genre byte has it.
inline constexpr int NoGenre = 255;

/// The genre number that a content-type text tells first (ID3v2.3 §4.2.1 TCON, ID3v2.4 frames §4.2.3): "(17)", "17",
/// "(17)Rock" and a standard name in any of its spellings give 17. Numbers from 126 to 254 are given as they are, in
/// digits only. NoGenre for all else, such as "(RX)" or a free text.
int genreNumber(const QString &text);
/// The content-type text for a number in a tag of that major version: "(17)", in ID3v2.4 "17".
QString genreText(int number, int majorVersion);

/// The number before the slash of a track text ("3/12" gives 3); 0 when there is none.
int trackNumber(const QString &text);
/// The track text with the number replaced: the total after the slash and leading zeros' width stay.
QString trackText(const QString &old, int number);

/// The year of a year or recording-time text: the first four digits of "1999-05-01", "1999, 2001" or "19990501", the
/// text itself (without blanks at its ends) where it has another form.
QString yearOf(const QString &text);

} // namespace ravlin::id3
