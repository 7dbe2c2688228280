// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

/// The genres of ID3v1 with their extension up to number 125.
///
/// The program's own names are written without spaces and keep two odd spellings ("Psychadelic", "Bebob"); saved names
/// are matched against them. standardGenreNumber() knows the names as other programs write them.
namespace ravlin {

inline constexpr int GenreCount = 126;
inline constexpr int GenreNone = 255; ///< "no genre" in an ID3v1 tag

/// All names in the order of their numbers, in one text with "|" between them.
QStringView genreTable();
/// The names, each at the index of its number.
const QStringList &genreNames();
/// The name of a genre; empty outside of 0 to 125.
QString genreName(int number);

/// The number that is written for a genre's name: 1 to 124, or GenreNone.
///
/// Spaces (U+0020) around the name and the case of letters are ignored. Names outside of the table have no number.
/// Neither have its first and last: "Blues" counts as none because no bar precedes it, and "DanceHall" because no bar
/// follows it.
int GenreNameToNumber(QStringView name);

/// The number of a genre's name, 0 to 125, or GenreNone. Like GenreNameToNumber, but it knows the first and the last.
int tableGenreNumber(QStringView name);

/// The number (0 to 125) of a genre in any of its usual spellings, or -1: "Classic Rock", "hip hop", "Bebop", "A
/// Cappella". Case, spaces, "-", "_" and "." are ignored.
int standardGenreNumber(QStringView text);

} // namespace ravlin
