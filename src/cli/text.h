// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

/// Text for output. Everything that the program prints goes through one of these functions, since names, tags and
/// servers' answers may hold what breaks lines or commands terminals.
namespace ravlin::cli {

/// Text on one line, without anything that a terminal obeys or that hides. Line feed, carriage return and tab become
/// \n \r \t; other control characters, and the characters that disguise names (see platform::isDisguise), become \x1b
/// or \u202e; a byte of a name that is no text becomes \xff. A backslash stays.
QString printable(const QString &text);

/// Who reads a line.
enum class Reader
{
    Terminal, ///< a person
    Log,      ///< whoever gets the messages, now or later: what a terminal obeys is escaped, a name's bytes stay
    Program   ///< only line breaks are escaped
};

/// The text as one line for that reader, without its end. UTF-8 but for bytes of names, which are as on disk.
QByteArray encodedLine(const QString &text, Reader reader);

/// A field of a tab-separated line: backslash, tab, line feed and carriage return become \\ \t \n \r.
QByteArray tabSeparatedField(const QString &text);

/// The number of columns a text takes on a terminal.
int displayWidth(const QString &text);

/// Appends a JSON string (RFC 8259 §7). The result is valid UTF-8 for any text: an unpaired surrogate, such as a byte
/// of a file name that is not UTF-8 (see platform::decodePath), becomes a \u escape. So does what a terminal obeys or
/// that hides.
void appendJsonString(QByteArray &json, QStringView text);

} // namespace ravlin::cli
