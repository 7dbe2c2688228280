// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/inidocument.h"

#include <QByteArrayView>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr QStringView EscapedStart = u"@escaped(";
constexpr QStringView EscapedEnd = u")";

/// The name in a line such as "[name]", or nothing.
std::optional<QString> sectionName(QByteArrayView line)
{
    line = line.trimmed();
    const qsizetype end = line.indexOf(']');
    if (!line.startsWith('[') || end < 0)
        return std::nullopt;
    return QString::fromUtf8(line.first(end).sliced(1).trimmed());
}

/// The key of a line such as "key=value", or nothing.
std::optional<QString> keyName(QByteArrayView line)
{
    line = line.trimmed();
    const qsizetype equals = line.indexOf('=');
    if (line.startsWith(';') || line.startsWith('#') || equals < 0)
        return std::nullopt;
    return QString::fromUtf8(line.first(equals).trimmed()).replace(u"%20"_s, u" "_s);
}

bool isIn(QStringView text, QStringView start, QStringView end)
{
    return text.size() >= start.size() + end.size() && text.startsWith(start) && text.endsWith(end);
}

QStringView inside(QStringView text, QStringView start, QStringView end)
{
    return text.sliced(start.size()).chopped(end.size());
}

bool isQuoted(QStringView text)
{
    return isIn(text, u"\"", u"\"");
}
bool isEscaped(QStringView text)
{
    return isIn(text, EscapedStart, EscapedEnd);
}

/// Whether editors or UTF-8 might move or lose this unit of a valid text.
bool isControl(QChar unit)
{
    const char16_t code = unit.unicode();
    return code < 0x20 || (code >= 0x7f && code <= 0x9f) || code == 0x2028 || code == 0x2029 || code == 0xfeff;
}

bool isHalfPair(QStringView text, qsizetype at)
{
    if (text[at].isHighSurrogate())
        return at + 1 >= text.size() || !text[at + 1].isLowSurrogate();
    return text[at].isLowSurrogate() && (at == 0 || !text[at - 1].isHighSurrogate());
}

bool needsEscape(QStringView text, qsizetype at)
{
    return isControl(text[at]) || isHalfPair(text, at);
}

QString escaped(QStringView text)
{
    QString result = EscapedStart.toString();
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (needsEscape(text, at))
            result += u"\\u%1"_s.arg(uint(text[at].unicode()), 4, 16, QChar(u'0'));
        else if (text[at] == u'\\')
            result += u"\\\\"_s;
        else
            result += text[at];
    }
    result += EscapedEnd;
    return result;
}

/// Returns nothing if escaped() cannot have made the text.
std::optional<QString> unescaped(QStringView text)
{
    QString result;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] != u'\\') {
            result += text[at];
            continue;
        }
        const QStringView escape = text.sliced(at + 1);
        if (escape.startsWith(u'\\')) {
            result += u'\\';
            ++at;
            continue;
        }
        if (!escape.startsWith(u'u') || escape.size() < 5)
            return std::nullopt;
        bool isNumber = false;
        const ushort unit = escape.sliced(1, 4).toUShort(&isNumber, 16);
        if (!isNumber)
            return std::nullopt;
        result += QChar(unit);
        at += 5;
    }
    return result;
}

QByteArray encodeValue(const QString &text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (needsEscape(text, at))
            return escaped(text).toUtf8();
    }
    const bool losesBlanks = text.startsWith(u' ') || text.endsWith(u' ');
    if (losesBlanks || isQuoted(text) || isEscaped(text))
        return '"' + text.toUtf8() + '"';
    return text.toUtf8();
}

QString decodeValue(QByteArrayView bytes)
{
    bytes = bytes.trimmed();
    const bool isUtf8 = QUtf8StringView(bytes.data(), bytes.size()).isValidUtf8();
    const QString text = isUtf8 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
    if (isQuoted(text))
        return inside(text, u"\"", u"\"").toString();
    if (isEscaped(text))
        return unescaped(inside(text, EscapedStart, EscapedEnd)).value_or(text);
    return text;
}

} // namespace

std::optional<IniDocument> IniDocument::parse(const QByteArray &bytes)
{
    if (bytes.contains('\0'))
        return std::nullopt;

    IniDocument document;
    const QByteArray mark("\xEF\xBB\xBF");
    if (bytes.startsWith(mark))
        document.m_byteOrderMark = mark;
    for (qsizetype at = document.m_byteOrderMark.size(); at < bytes.size();) {
        const qsizetype lineFeed = bytes.indexOf('\n', at);
        const qsizetype end = lineFeed < 0 ? bytes.size() : lineFeed + 1;
        document.m_lines += bytes.sliced(at, end - at);
        at = end;
    }
    if (!document.m_lines.isEmpty() && document.m_lines.front().endsWith("\r\n"))
        document.m_lineEnd = "\r\n";
    return document;
}

QByteArray IniDocument::toBytes() const
{
    return m_byteOrderMark + m_lines.join();
}

IniDocument::Place IniDocument::find(QStringView section, QStringView key) const
{
    Place place;
    bool inSection = false;
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        const QByteArrayView line = m_lines[i];
        if (const auto name = sectionName(line))
            inSection = *name == section;
        else if (inSection && keyName(line) == key)
            place.keyLine = i;
        if (inSection && !line.trimmed().isEmpty())
            place.lastInSection = i;
    }
    return place;
}

QString IniDocument::value(QStringView section, QStringView key) const
{
    const qsizetype at = find(section, key).keyLine;
    if (at < 0)
        return {};
    const QByteArrayView line = m_lines[at];
    return decodeValue(line.sliced(line.indexOf('=') + 1));
}

void IniDocument::setValue(QStringView section, QStringView key, const QString &text)
{
    const Place place = find(section, key);
    if (place.keyLine >= 0) {
        QByteArray &line = m_lines[place.keyLine];
        const QByteArray upToEquals = line.first(line.indexOf('=') + 1);
        const QByteArray end = line.endsWith("\r\n") ? "\r\n" : line.endsWith('\n') ? "\n" : "";
        line = upToEquals + encodeValue(text) + end;
        return;
    }

    terminateLastLine();
    const QByteArray line = key.toUtf8() + '=' + encodeValue(text) + m_lineEnd;
    if (place.lastInSection >= 0) {
        m_lines.insert(place.lastInSection + 1, line);
        return;
    }
    if (!m_lines.isEmpty())
        m_lines += m_lineEnd;
    m_lines += '[' + section.toUtf8() + ']' + m_lineEnd;
    m_lines += line;
}

void IniDocument::terminateLastLine()
{
    if (!m_lines.isEmpty() && !m_lines.back().endsWith('\n'))
        m_lines.back() += m_lineEnd;
}

} // namespace ravlin
