// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/update/sequentialtext.h"

#include "core/online/web/webtext.h"

#include <algorithm>

namespace ravlin {

namespace {

constexpr char ControlZ = 0x1A;
constexpr char Delete = 0x7F;

bool isBlank(char byte)
{
    return byte == ' ' || byte == '\t';
}

bool isLineEnd(char byte)
{
    return byte == '\r' || byte == '\n';
}

bool isControl(char byte)
{
    return (static_cast<unsigned char>(byte) < ' ' && byte != '\t') || byte == Delete;
}

QByteArrayView withoutMarks(QByteArrayView bytes)
{
    constexpr QByteArrayView ByteOrderMark("\xEF\xBB\xBF");
    if (bytes.startsWith(ByteOrderMark))
        bytes = bytes.sliced(ByteOrderMark.size());
    const qsizetype end = bytes.indexOf(ControlZ);
    return end < 0 ? bytes : bytes.first(end);
}

} // namespace

SequentialReader::SequentialReader(QByteArrayView bytes) : m_bytes(withoutMarks(bytes)) {}

bool SequentialReader::atEnd()
{
    skipToField();
    return isPastLast() && !m_isPromised && !m_error;
}

tl::expected<QString, SequentialError> SequentialReader::field()
{
    if (m_error)
        return tl::unexpected(*m_error);
    skipToField();
    if (isPastLast())
        return fail(SequentialError::EndOfText);
    QByteArrayView bytes;
    if (current() == '"') {
        const auto inside = quoted();
        if (!inside)
            return tl::unexpected(inside.error());
        bytes = *inside;
    } else {
        bytes = unquoted();
    }
    if (std::any_of(bytes.begin(), bytes.end(), isControl))
        return fail(SequentialError::NotText);
    skipDivider();
    return decodedText(bytes);
}

void SequentialReader::skipBlanks()
{
    while (!isPastLast() && isBlank(current()))
        ++m_position;
}

/// Empty lines may come before a record, but not between a comma and its field.
void SequentialReader::skipToField()
{
    skipBlanks();
    while (!m_isPromised && !isPastLast() && isLineEnd(current())) {
        ++m_position;
        skipBlanks();
    }
}

void SequentialReader::skipDivider()
{
    m_isPromised = !isPastLast() && current() == ',';
    if (isPastLast())
        return;
    const bool isPair = current() == '\r' && m_position + 1 < m_bytes.size() && m_bytes[m_position + 1] == '\n';
    m_position += isPair ? 2 : 1;
}

tl::unexpected<SequentialError> SequentialReader::fail(SequentialError error)
{
    m_error = error;
    return tl::unexpected(error);
}

tl::expected<QByteArrayView, SequentialError> SequentialReader::quoted()
{
    const qsizetype start = ++m_position;
    while (!isPastLast() && current() != '"' && !isLineEnd(current()))
        ++m_position;
    if (isPastLast() || current() != '"')
        return fail(SequentialError::UnclosedQuote);
    const QByteArrayView inside = m_bytes.sliced(start, m_position - start);
    ++m_position;
    skipBlanks();
    if (!isPastLast() && current() != ',' && !isLineEnd(current()))
        return fail(SequentialError::TextAfterQuote);
    return inside;
}

QByteArrayView SequentialReader::unquoted()
{
    const qsizetype start = m_position;
    while (!isPastLast() && current() != ',' && !isLineEnd(current()))
        ++m_position;
    qsizetype end = m_position;
    while (end > start && isBlank(m_bytes[end - 1]))
        --end;
    return m_bytes.sliced(start, end - start);
}

} // namespace ravlin
