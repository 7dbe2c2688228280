// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/text.h"

#include "core/platform/filesystem.h"
#include "core/platform/standardstreams.h"

#include <algorithm>

namespace ravlin::cli {

namespace {

bool isControl(char16_t unit)
{
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
}

/// Whether the unit at the position belongs to a surrogate pair.
bool isPaired(QStringView text, qsizetype position)
{
    const QChar unit = text[position];
    if (unit.isHighSurrogate())
        return position + 1 < text.size() && text[position + 1].isLowSurrogate();
    return unit.isLowSurrogate() && position > 0 && text[position - 1].isHighSurrogate();
}

void appendEscape(QByteArray &json, char16_t unit)
{
    constexpr int Digits = 4;
    json += "\\u";
    json += QByteArray::number(unit, 16).rightJustified(Digits, '0');
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
    if (isControl(unit.unicode()) || unit == u'"' || unit == u'\\')
        return false;
    return !unit.isSurrogate() || isPaired(text, position);
}

} // namespace

QString printable(const QString &text)
{
    QString result = text;
    for (qsizetype i = 0; i < result.size(); ++i) {
        if (isControl(result[i].unicode()) || (result[i].isSurrogate() && !isPaired(text, i)))
            result[i] = QChar::ReplacementCharacter;
    }
    return result;
}

QByteArray encoded(const QString &text, bool forTerminal)
{
    if (!forTerminal)
        return platform::encodePath(text);
    QStringList lines = text.split(u'\n');
    std::ranges::transform(lines, lines.begin(), printable);
    return lines.join(u'\n').toUtf8();
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
