// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/text.h"

#include "core/platform/path.h"
#include "core/platform/standardstreams.h"
#include "core/platform/textsafety.h"

#include <algorithm>

namespace ravlin::cli {

namespace {

using platform::isControl;
using platform::isDisguise;

/// Whether the unit at the position belongs to a surrogate pair.
bool isPaired(QStringView text, qsizetype position)
{
    const QChar unit = text[position];
    if (unit.isHighSurrogate())
        return position + 1 < text.size() && text[position + 1].isLowSurrogate();
    return unit.isLowSurrogate() && position > 0 && text[position - 1].isHighSurrogate();
}

QByteArray hexadecimal(char16_t number, qsizetype digits)
{
    return QByteArray::number(number, 16).rightJustified(digits, '0');
}

void appendEscape(QByteArray &json, char16_t unit)
{
    json += "\\u" + hexadecimal(unit, 4);
}

void appendJsonUnit(QByteArray &json, char16_t unit)
{
    switch (unit) {
    case u'"':
        json += "\\\"";
        return;
    case u'\\':
        json += "\\\\";
        return;
    case u'\n':
        json += "\\n";
        return;
    case u'\r':
        json += "\\r";
        return;
    case u'\t':
        json += "\\t";
        return;
    default:
        appendEscape(json, unit);
    }
}

/// Whether the unit at the position needs no escape in a JSON string.
bool isPlain(QStringView text, qsizetype position)
{
    const QChar unit = text[position];
    // JSON allows DEL and the C1 controls, but a terminal could obey them.
    if (isControl(unit) || isDisguise(unit) || unit == u'"' || unit == u'\\')
        return false;
    return !unit.isSurrogate() || isPaired(text, position);
}

/// The byte that an unpaired surrogate stands for (see platform::decodePath), or 0.
char16_t byteOf(QChar unit)
{
    const char16_t code = unit.unicode();
    return code >= 0xDC80 && code <= 0xDCFF ? char16_t(code - 0xDC00) : char16_t(0);
}

/// ASCII.
QByteArray visible(QChar unit)
{
    switch (unit.unicode()) {
    case u'\n':
        return "\\n";
    case u'\r':
        return "\\r";
    case u'\t':
        return "\\t";
    default:
        break;
    }
    if (const char16_t byte = byteOf(unit); byte != 0)
        return "\\x" + hexadecimal(byte, 2);
    return unit.unicode() < 0x80 ? "\\x" + hexadecimal(unit.unicode(), 2) : "\\u" + hexadecimal(unit.unicode(), 4);
}

/// Whether a reader must not get the unit at the position as it is.
bool needsEscape(const QString &text, qsizetype position, Reader reader)
{
    const QChar unit = text[position];
    if (unit == u'\n' || unit == u'\r')
        return true;
    if (reader == Reader::Program)
        return false;
    if (isControl(unit) || isDisguise(unit))
        return true;
    if (!unit.isSurrogate() || isPaired(text, position))
        return false;
    // Bytes below 0xA0 are control characters to terminals with an 8-bit code page.
    return reader == Reader::Terminal || byteOf(unit) < 0xA0;
}

QString escaped(const QString &text, Reader reader)
{
    qsizetype plainStart = 0;
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (!needsEscape(text, i, reader))
            continue;
        result += QStringView(text).sliced(plainStart, i - plainStart);
        result += QLatin1StringView(visible(text[i]));
        plainStart = i + 1;
    }
    if (plainStart == 0)
        return text;
    return result += QStringView(text).sliced(plainStart);
}

} // namespace

QString printable(const QString &text)
{
    return escaped(text, Reader::Terminal);
}

QByteArray encodedLine(const QString &text, Reader reader)
{
    return platform::encodePath(escaped(text, reader));
}

QByteArray tabSeparatedField(const QString &text)
{
    QByteArray field = platform::encodePath(text);
    if (std::none_of(
            field.cbegin(), field.cend(), [](char c) { return c == '\\' || c == '\t' || c == '\n' || c == '\r'; }))
        return field;
    // Backslashes first: the other escapes add new ones.
    return field.replace('\\', "\\\\").replace('\t', "\\t").replace('\n', "\\n").replace('\r', "\\r");
}

int displayWidth(const QString &text)
{
    int width = 0;
    for (const char32_t character : text.toUcs4())
        width += std::max(0, platform::displayWidth(character));
    return width;
}

void appendJsonString(QByteArray &json, QStringView text)
{
    json += '"';
    qsizetype plainStart = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (isPlain(text, i))
            continue;
        json += text.sliced(plainStart, i - plainStart).toUtf8();
        appendJsonUnit(json, text[i].unicode());
        plainStart = i + 1;
    }
    json += text.sliced(plainStart).toUtf8();
    json += '"';
}

} // namespace ravlin::cli
