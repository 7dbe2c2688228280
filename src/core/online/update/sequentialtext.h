// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <tl/expected.hpp>

#include <optional>

namespace ravlin {

/// What ends the reading of a sequential text.
enum class SequentialError
{
    EndOfText,      ///< there is no further field
    UnclosedQuote,  ///< a field's second double quote is missing in its line
    TextAfterQuote, ///< something stands between a field's second double quote and the next comma
    NotText,        ///< a control character
};

/// Reads the fields of a sequential text one after the other: the format of BASIC's statements "write" and "input".
///
/// Commas and line ends (CR LF, LF or CR) divide fields. A text field stands in double quotes, with commas and anything
/// else but double quotes and line ends in it; others, such as numbers, stand as they are. Blanks around a field don't
/// count, nor do empty lines; nothing between two commas is an empty field. The text ends with the bytes or with a
/// Ctrl+Z. Fields are UTF-8 or else Windows-1252.
///
/// The first error is the last thing read: what follows it can't be known.
class SequentialReader
{
public:
    /// The bytes outlive the reader.
    explicit SequentialReader(QByteArrayView bytes);

    /// True when there is no further field. A comma at the very end promises one that is not there, so this is false
    /// there, and field() an error.
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
    bool m_isPromised = false; ///< a comma was read last
    std::optional<SequentialError> m_error;
};

} // namespace ravlin
