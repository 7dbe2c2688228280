// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/showntext.h"

#include "core/platform/textsafety.h"

#include <QStringBuilder>
#include <QStringView>

#include <utility>

namespace ravlin {

namespace {

constexpr QStringView Ellipsis = u"\u2026";
constexpr QChar LineBreak = u'\u21B5'; ///< a picture of one

/// Embeddings, overrides and isolates. Marks such as U+200F affect only what stands right beside them, and ordinary
/// text needs them.
bool turnsDirection(char16_t code)
{
    return (code >= u'\u202A' && code <= u'\u202E') || (code >= u'\u2066' && code <= u'\u2069');
}

QChar shown(QChar character)
{
    if (character == u'\t')
        return u' ';
    if (character == u'\n' || character == u'\r')
        return LineBreak;
    if (platform::isControl(character) || turnsDirection(character.unicode()))
        return QChar::ReplacementCharacter;
    return character;
}

/// Replaces, in place, all that is not fit to be shown, but keeps line feeds if asked to.
QString made(QString text, bool keepsLines)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = std::as_const(text)[i];
        QChar fit = shown(character);
        if (character.isHighSurrogate() && i + 1 < text.size() && std::as_const(text)[i + 1].isLowSurrogate())
            ++i; // a pair stays
        else if (character.isSurrogate())
            fit = QChar::ReplacementCharacter;
        if (fit != character && !(keepsLines && character == u'\n'))
            text[i] = fit;
    }
    return text;
}

/// As much of the text's start or end, without half of a surrogate pair.
QStringView start(QStringView text, qsizetype letters)
{
    const bool cutsPair = letters > 0 && letters < text.size() && text[letters].isLowSurrogate();
    return text.first(cutsPair ? letters - 1 : letters);
}

QStringView end(QStringView text, qsizetype letters)
{
    const bool cutsPair = letters > 0 && letters < text.size() && text[text.size() - letters].isLowSurrogate();
    return text.last(cutsPair ? letters - 1 : letters);
}

} // namespace

QString shownLine(const QString &text, qsizetype mostLetters)
{
    if (text.size() <= mostLetters)
        return made(text, false);
    const qsizetype last = (mostLetters - 1) / 2;
    return made(start(text, mostLetters - 1 - last) % Ellipsis % end(text, last), false);
}

QString shownLines(const QString &text, qsizetype mostLetters, qsizetype mostLines)
{
    QStringView left = text;
    if (left.size() > mostLetters)
        left = start(left, mostLetters - 1);
    qsizetype lineEnd = -1;
    for (qsizetype line = 0; line < mostLines; ++line) {
        lineEnd = left.indexOf(u'\n', lineEnd + 1);
        if (lineEnd < 0)
            break;
    }
    if (lineEnd >= 0)
        left = left.first(lineEnd);
    const bool isCut = left.size() < text.size();
    return made(isCut ? QString(left % Ellipsis) : text, true);
}

} // namespace ravlin
