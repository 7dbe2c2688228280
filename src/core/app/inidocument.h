// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QStringView>

#include <optional>

namespace ravlin {

/// An ini file's content, line by line. A change touches one line and keeps every other byte: comments, foreign
/// sections and keys, order, line ends.
///
/// A value is written after "key=" in the first of these forms that can hold it:
///   - as it is: commas, backslashes, quotes and percent signs are ordinary characters, no comment can follow, blanks
///   at
///     the ends do not count;
///   - "..." : the text between the first and the last quote, as it is; keeps blanks at the ends;
///   - @escaped(...) : with \uXXXX for a UTF-16 unit and \\ for a backslash; for control characters and for units that
///     UTF-8 cannot hold.
/// Text is UTF-8; a value that is not valid UTF-8 is read as Latin-1. A blank in a key may be written "%20". If a key
/// occurs more than once, the last one counts. Lines that start with ";" or "#" are comments.
class IniDocument
{
public:
    IniDocument() = default;

    /// Returns nothing if the bytes are not text: they contain zero bytes, as UTF-16 and files damaged by a crash do.
    static std::optional<IniDocument> parse(const QByteArray &bytes);
    QByteArray toBytes() const;

    /// Empty if there is no such key.
    QString value(QStringView section, QStringView key) const;
    /// Sets an existing key's value in its line, or adds a line at the end of the section. Section and key must be
    /// plain words: no line break, "=", "]" or "%", no blank at either end.
    void setValue(QStringView section, QStringView key, const QString &text);

private:
    struct Place
    {
        qsizetype keyLine = -1;       ///< the line that holds the key
        qsizetype lastInSection = -1; ///< the section's last line that is not blank
    };

    Place find(QStringView section, QStringView key) const;
    void terminateLastLine();

    QByteArray m_byteOrderMark;
    QByteArray m_lineEnd = "\n";
    QByteArrayList m_lines; ///< each with its line end, if it has one
};

} // namespace ravlin
