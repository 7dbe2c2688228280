// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <limits>
#include <string_view>

/// Texts as ID3v2 stores them (ID3v2.3 §3.3, ID3v2.4 structure §4): a byte for the encoding, then the characters.
namespace ravlin::id3 {

enum class TextEncoding : quint8
{
    Latin1 = 0,
    Utf16 = 1,   ///< with a byte order mark; without one the order is guessed from the zero bytes
    Utf16Be = 2, ///< ID3v2.4
    Utf8 = 3,    ///< ID3v2.4
};

/// Separates the values of a text frame with several, as the user sees it.
inline constexpr QStringView ValueSeparator = u" / ";

/// The text of a text frame's body: an encoding byte, then one or more values separated by a terminator. Several values
/// are joined by ValueSeparator; empty ones at the end (terminators, stray zeros) don't count. Bytes that are invalid
/// in the encoding become U+FFFD. An encoding byte above 3 is read as Latin-1. What goes beyond a number of characters
/// is cut off.
struct TextBody
{
    QString text;
    int valueCount = 0;
    bool isCut = false;
};
TextBody decodeTextBody(std::string_view body, qsizetype maximumSize = std::numeric_limits<qsizetype>::max());

/// A comment frame's body: encoding, language, description, terminator, text (ID3v2.3 §4.11).
struct CommentBody
{
    QByteArray language; ///< three bytes, usually an ISO 639-2 code
    QString description;
    QString text;
};

/// Returns false if the body is too short to be a comment.
bool decodeCommentBody(std::string_view body, CommentBody &comment);

/// A text frame's body for a tag of that major version (2, 3 or 4): Latin-1 if it can hold the text, else UTF-16 with a
/// byte order mark (2.2, 2.3) or UTF-8 (2.4). Unpaired surrogates become U+FFFD. Zero characters, and byte order marks
/// at the start, are left out.
QByteArray encodeTextBody(const QStringList &values, int majorVersion);
QByteArray encodeCommentBody(const CommentBody &comment, int majorVersion);

} // namespace ravlin::id3
