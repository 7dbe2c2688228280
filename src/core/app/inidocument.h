// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QString>
#include <QStringView>

#include <optional>

namespace ravlin {

/// An ini file's content, line by line: a change touches the one line that it is about, and every other byte (comments,
/// foreign sections and keys, order, line ends) stays.
///
/// A value is written after "key=" in the first of these forms that can hold it:
///   - as it stands: commas, backslashes, quotes and percent signs are ordinary characters, no comment can
///     follow; blanks at its ends do not count;
///   - "..." : what stands between the first and the last quote, as it stands; keeps blanks at the ends;
///   - @escaped(...) : with \uXXXX for a UTF-16 unit and \\ for a backslash; for control characters and whatever UTF-8
///     cannot hold.
/// Text is UTF-8; a value that is not valid UTF-8 is read as Latin-1. A blank in a key may be written "%20". Where a
/// key occurs more than once, the last one counts. Lines that start with ";" or "#" are comments.
class IniDocument
{
public:
    IniDocument() = default;

    /// Nothing when the bytes are no text at all (zero bytes, as UTF-16 and files damaged by a crash have).
    static std::optional<IniDocument> parse(const QByteArray &bytes);
    QByteArray toBytes() const;

    /// Empty where there is no such key.
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
    QByteArrayList m_lines; ///< each with its line end, where it has one
};

} // namespace ravlin
