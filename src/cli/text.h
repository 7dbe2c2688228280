// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

/// Text for output.
namespace ravlin::cli {

/// Makes control characters and bytes that are not Unicode visible, so that a file's name or tag can't command the
/// terminal.
QString printable(const QString &text);

/// UTF-8, with a path's bytes as on disk. For a terminal, all but line breaks is made printable.
QByteArray encoded(const QString &text, bool forTerminal);

/// A field of a tab-separated line: backslash, tab, line feed and carriage return become \\ \t \n \r.
QByteArray tabSeparatedField(const QString &text);

/// The number of columns a text takes on a terminal.
int displayWidth(const QString &text);

/// Appends a JSON string (RFC 8259 §7). The result is valid UTF-8 for any text: an unpaired surrogate, such as a byte
/// of a file name that is not UTF-8 (see platform::decodePath), becomes a \u escape.
void appendJsonString(QByteArray &json, QStringView text);

} // namespace ravlin::cli
