// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/web/httpanswer.h"

#include <algorithm>
#include <optional>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr qsizetype LongestChunkLine = 1024; ///< extensions included
constexpr int NoContent = 204;
constexpr int NotModified = 304;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// A character of a field's name.
bool isTokenCharacter(char c)
{
    const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return isLetter || isDigit(c) || QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
}

bool isControl(char c)
{
    const auto code = static_cast<unsigned char>(c);
    return (code < 0x20 && c != '\t') || code == 0x7F;
}

/// The server's words, short and without characters that disguise others.
QString shownWords(const QByteArray &bytes)
{
    constexpr qsizetype Longest = 80;
    QString words = QString::fromUtf8(bytes);
    words.removeIf([](QChar c) { return !c.isPrint(); });
    return words.left(Longest).trimmed();
}

/// A number without sign or blanks, short enough for qint64.
std::optional<qint64> numberIn(const QByteArray &text, int base)
{
    constexpr qsizetype MostDigits = 15;
    const auto fits = [base](char c) {
        return isDigit(c) || (base == 16 && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
    };
    if (text.isEmpty() || text.size() > MostDigits || !std::all_of(text.begin(), text.end(), fits))
        return {};
    return text.toLongLong(nullptr, base);
}

} // namespace

QByteArray HttpAnswer::take(QByteArrayView bytes)
{
    QByteArray content;
    while (!bytes.isEmpty() && (m_state == State::Head || m_state == State::Content)) {
        if (m_part == Part::Content)
            takeContent(bytes, content);
        else if (takeLine(bytes))
            readLine();
    }
    return content;
}

void HttpAnswer::end()
{
    if (m_state == State::Content && !isEndMarked())
        m_state = State::Whole;
    else if (m_state != State::Whole && m_state != State::Broken)
        breakOff(WebFailureKind::Incomplete, {});
}

/// Moves bytes to m_line up to the end of the line. Returns whether that was there.
bool HttpAnswer::takeLine(QByteArrayView &bytes)
{
    const qsizetype feed = bytes.indexOf('\n');
    const QByteArrayView part = feed < 0 ? bytes : bytes.first(feed);
    bytes = bytes.sliced(feed < 0 ? bytes.size() : feed + 1);
    const bool isChunkLine = m_part == Part::ChunkSize || m_part == Part::ChunkEnd;
    if (!isChunkLine)
        m_headSize += part.size() + (feed < 0 ? 0 : 1);
    if (isChunkLine ? m_line.size() + part.size() > LongestChunkLine : m_headSize > MaximumHead) {
        breakOff(WebFailureKind::Garbage, isChunkLine ? u"malformed chunk"_s : u"head too long"_s);
        return false;
    }
    m_line += part;
    // Tell garbage from HTTP before its first line ends, which may never happen.
    const QByteArrayView start("HTTP/1.");
    if (m_part == Part::StatusLine && !m_line.startsWith(start.first(std::min(start.size(), m_line.size())))) {
        breakOff(WebFailureKind::Garbage, u"not HTTP"_s);
        return false;
    }
    if (feed < 0)
        return false;
    if (m_line.endsWith('\r'))
        m_line.chop(1);
    return true;
}

void HttpAnswer::readLine()
{
    switch (m_part) {
    case Part::StatusLine:
        readStatusLine();
        break;
    case Part::Fields:
        if (m_line.isEmpty())
            endHead();
        else
            readField();
        break;
    case Part::ChunkSize:
        readChunkSize();
        break;
    case Part::ChunkEnd:
        if (m_line.isEmpty())
            m_part = Part::ChunkSize;
        else
            breakOff(WebFailureKind::Garbage, u"malformed chunk"_s);
        break;
    case Part::Trailers: // of no interest
        if (m_line.isEmpty())
            m_state = State::Whole;
        break;
    case Part::Content:
        break;
    }
    m_line.clear();
}

/// "HTTP/1.1 200 OK"
void HttpAnswer::readStatusLine()
{
    constexpr qsizetype VersionEnd = 8;
    constexpr qsizetype CodeEnd = 12;
    const QByteArray code = m_line.mid(VersionEnd + 1, CodeEnd - VersionEnd - 1);
    const std::optional<qint64> status = numberIn(code, 10);
    const bool isFormed = m_line.size() >= CodeEnd && isDigit(m_line[VersionEnd - 1]) && m_line[VersionEnd] == ' ' &&
                          status && *status >= 100 && (m_line.size() == CodeEnd || m_line[CodeEnd] == ' ');
    if (!isFormed || std::any_of(m_line.begin(), m_line.end(), isControl)) {
        breakOff(WebFailureKind::Garbage, u"malformed status"_s);
        return;
    }
    m_status = int(*status);
    m_reason = shownWords(m_line.mid(CodeEnd + 1));
    m_part = Part::Fields;
}

/// "Name: value". A line that continues the one before is no longer allowed and could hide a field from us.
void HttpAnswer::readField()
{
    const qsizetype colon = m_line.indexOf(':');
    const QByteArray name = m_line.left(std::max<qsizetype>(colon, 0));
    if (name.isEmpty() || !std::all_of(name.begin(), name.end(), isTokenCharacter) ||
        std::any_of(m_line.begin(), m_line.end(), isControl)) {
        breakOff(WebFailureKind::Garbage, u"malformed field"_s);
        return;
    }
    if (++m_fieldCount > MaximumFields) {
        breakOff(WebFailureKind::Garbage, u"too many fields"_s);
        return;
    }
    const QByteArray value = m_line.mid(colon + 1).trimmed();
    const auto known = m_fields.find(name.toLower());
    if (known == m_fields.end())
        m_fields.insert(name.toLower(), value);
    else
        *known += ',' + value;
}

void HttpAnswer::endHead()
{
    constexpr int Final = 200;
    constexpr int SwitchingProtocols = 101;
    if (m_status == SwitchingProtocols) { // to what?
        breakOff(WebFailureKind::Garbage, u"unasked-for change of protocol"_s);
        return;
    }
    if (m_status < Final) { // the answer itself follows
        m_status = 0;
        m_fields.clear();
        m_part = Part::StatusLine;
        return;
    }
    readFraming();
}

/// How the content ends. Both marks at once, or two of one kind, are the stuff of which attacks are made.
void HttpAnswer::readFraming()
{
    const QByteArray coding = field("transfer-encoding").toLower();
    const bool hasSize = hasField("content-length");
    m_isChunked = hasField("transfer-encoding");
    if (m_isChunked && (coding != "chunked" || hasSize)) {
        breakOff(WebFailureKind::Garbage, u"malformed Transfer-Encoding"_s);
        return;
    }
    if (hasSize) {
        const std::optional<qint64> size = numberIn(field("content-length"), 10);
        if (!size) {
            breakOff(WebFailureKind::Garbage, u"malformed Content-Length"_s);
            return;
        }
        m_size = *size;
    }
    m_left = m_size;
    m_part = m_isChunked ? Part::ChunkSize : Part::Content;
    const bool isEmpty = m_size == 0 || m_status == NoContent || m_status == NotModified;
    m_state = isEmpty ? State::Whole : State::Content;
}

/// "1f4", perhaps with extensions: "1f4;name=value"
void HttpAnswer::readChunkSize()
{
    const QByteArray digits = m_line.split(';').front().trimmed();
    const std::optional<qint64> size = numberIn(digits, 16);
    if (!size) {
        breakOff(WebFailureKind::Garbage, u"malformed chunk"_s);
        return;
    }
    m_left = *size;
    m_part = m_left == 0 ? Part::Trailers : Part::Content;
}

void HttpAnswer::takeContent(QByteArrayView &bytes, QByteArray &content)
{
    const qsizetype count = m_left < 0 ? bytes.size() : qsizetype(std::min<qint64>(m_left, bytes.size()));
    content += bytes.first(count);
    bytes = bytes.sliced(count);
    if (m_left < 0)
        return;
    m_left -= count;
    if (m_left == 0 && m_isChunked)
        m_part = Part::ChunkEnd;
    else if (m_left == 0)
        m_state = State::Whole;
}

void HttpAnswer::breakOff(WebFailureKind kind, const QString &detail)
{
    m_state = State::Broken;
    m_failure = {kind, detail, m_status};
}

} // namespace ravlin
