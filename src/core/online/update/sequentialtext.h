// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace ravlin {

/// Why reading a sequential text ended.
enum class SequentialError
{
    EndOfText,      ///< there is no further field
    UnclosedQuote,  ///< no second double quote in the line of the field
    TextAfterQuote, ///< text between the second double quote and the next comma
    NotText,        ///< a control character
};

/// Reads the fields of a sequential text: the format of BASIC's statements "write" and "input".
///
/// Commas and line ends (CR LF, LF or CR) separate fields. A text field is in double quotes and may hold anything but
/// double quotes and line ends; others, such as numbers, are bare. Blanks around fields and empty lines are ignored;
/// two adjacent commas enclose an empty field. The text ends with the bytes or at a Ctrl+Z. Fields are UTF-8 or else
/// Windows-1252.
///
/// The first error ends the reading: nothing after it can be trusted.
class SequentialReader
{
public:
    /// The bytes must outlive the reader.
    explicit SequentialReader(QByteArrayView bytes);

    /// Whether there is no further field. After a trailing comma, which promises another field, this is false and
    /// field() fails.
    bool atEnd();
    tl::expected<QString, SequentialError> field();

private:
    bool isPastLast() const { return m_position >= m_bytes.size(); }
    char current() const { return m_bytes[m_position]; }
    void skipBlanks();
    void skipToField();
    void skipDivider();
    tl::unexpected<SequentialError> fail(SequentialError error);
    tl::expected<QByteArrayView, SequentialError> quoted();
    QByteArrayView unquoted();

    QByteArrayView m_bytes;
    qsizetype m_position = 0;
    bool m_isPromised = false; ///< the last divider was a comma
    std::optional<SequentialError> m_error;
};

} // namespace ravlin
