// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

/// Text as it leaves the program.
namespace ravlin::cli {

/// The text with its control characters, and bytes that are no Unicode, made visible, so that a file's name or tag
/// can't command the terminal it is shown on.
QString printable(const QString &text);

/// UTF-8; a path's bytes as they are on the disk. For a terminal only what is printable, line breaks aside.
QByteArray encoded(const QString &text, bool forTerminal);

/// One field of a line of fields with tabs between them: backslash, tab, line feed and carriage return are written as
/// \\ \t \n \r, everything else as it is.
QByteArray tabSeparatedField(const QString &text);

/// Columns that a text takes on a terminal.
int displayWidth(const QString &text);

/// Appends a text as a JSON string (RFC 8259 §7). The result is valid UTF-8 whatever the text: a surrogate without its
/// partner, as a byte of a file name that is no UTF-8 (see platform::decodePath), is written as its \u escape.
void appendJsonString(QByteArray &json, QStringView text);

} // namespace ravlin::cli
