// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/lettercase.h"

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr char16_t DotAbove = 0x0307;
constexpr char16_t Dialytika = 0x0308;
constexpr char16_t Ypogegrammeni = 0x0345;
constexpr int ClassAbove = 230; ///< canonical combining class of marks above a letter

constexpr QStringView GreekVowels = u"ΑΕΗΙΟΥΩ";
constexpr QStringView GreekAccents = u"\u0300\u0301\u0302\u0303\u0311\u0342";
constexpr QStringView OtherGreekMarks = u"\u0304\u0306\u0308\u0313\u0314\u0343\u0345";

using CodePoints = QList<uint>;

QString textOf(const CodePoints &codePoints)
{
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(codePoints.constData()), codePoints.size());
}

/// Case_Ignorable (The Unicode Standard, D136): what may occur inside a word without being a letter of it.
bool isIgnorable(char32_t character)
{
    constexpr QStringView InsideWords = u"'.:\u00B7\u0387\u055F\u05F4\u2018\u2019\u2024\u2027\uFE13\uFE52\uFE55\uFF07"
                                        u"\uFF0E\uFF1A";
    switch (QChar::category(character)) {
    case QChar::Mark_NonSpacing:
    case QChar::Mark_Enclosing:
    case QChar::Other_Format:
    case QChar::Letter_Modifier:
    case QChar::Symbol_Modifier:
        return true;
    default:
        return character <= 0xFFFF && InsideWords.contains(QChar(char16_t(character)));
    }
}

/// Cased (D135) among what is not ignorable: letters with a case, and signs made of them.
bool isCased(char32_t character)
{
    const QChar::Category category = QChar::category(character);
    return category == QChar::Letter_Uppercase || category == QChar::Letter_Lowercase ||
           category == QChar::Letter_Titlecase || character == U'ª' || character == U'º' ||
           QChar::toUpper(character) != character || QChar::toLower(character) != character;
}

bool isBehindCased(const CodePoints &text, qsizetype at)
{
    do
        --at;
    while (at >= 0 && isIgnorable(text[at]));
    return at >= 0 && isCased(text[at]);
}

bool isBeforeCased(const CodePoints &text, qsizetype at)
{
    do
        ++at;
    while (at < text.size() && isIgnorable(text[at]));
    return at < text.size() && isCased(text[at]);
}

/// Index of the first mark above the letter at an index; -1 if there is none.
qsizetype markAbove(const CodePoints &text, qsizetype at)
{
    for (++at; at < text.size() && QChar::combiningClass(text[at]) != 0; ++at) {
        if (QChar::combiningClass(text[at]) == ClassAbove)
            return at;
    }
    return -1;
}

/// Turns "Σ" at the end of a word into "ς"; the others are left to Qt.
void lowerFinalSigmas(CodePoints &text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == U'Σ' && isBehindCased(text, at) && !isBeforeCased(text, at))
            text[at] = U'ς';
    }
}

/// The letter and mark "I\u0307" are one letter like "İ".
void lowerTurkish(CodePoints &text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == U'İ') {
            text[at] = U'i';
        } else if (text[at] == U'I') {
            const qsizetype mark = markAbove(text, at);
            const bool isDotted = mark >= 0 && text[mark] == DotAbove;
            text[at] = isDotted ? U'i' : U'ı';
            if (isDotted)
                text.removeAt(mark);
        }
    }
}

/// A small i under an accent keeps its dot.
void lowerLithuanian(CodePoints &text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        constexpr QStringView Accented = u"ÌÍĨ";
        constexpr QStringView Accents = u"\u0300\u0301\u0303";
        const qsizetype accented = text[at] <= 0xFFFF ? Accented.indexOf(QChar(char16_t(text[at]))) : -1;
        if (accented >= 0) {
            text[at] = U'i';
            text.insert(at + 1, Accents[accented].unicode());
            text.insert(at + 1, DotAbove);
        } else if ((text[at] == U'I' || text[at] == U'J' || text[at] == U'Į') && markAbove(text, at) >= 0) {
            text.insert(at + 1, DotAbove);
        }
    }
}

/// Removes the dot that a small i kept under an accent.
void upperLithuanian(CodePoints &text)
{
    for (qsizetype at = 0; at < text.size(); ++at) {
        const qsizetype mark = text[at] == U'i' || text[at] == U'j' || text[at] == U'į' ? markAbove(text, at) : -1;
        if (mark >= 0 && text[mark] == DotAbove)
            text.removeAt(mark);
    }
}

/// A Greek letter without its marks, and what they were.
struct GreekLetter
{
    char32_t base = 0; ///< 0 if it is not a Greek letter
    bool isVowel = false;
    bool hasAccent = false;
    bool hasDialytika = false;
    int ypogegrammeni = 0; ///< number of small iotas below it
    qsizetype end = 0;     ///< index behind its marks
    bool isOneCodePoint = true;

    void add(QChar mark)
    {
        hasAccent = hasAccent || GreekAccents.contains(mark);
        hasDialytika = hasDialytika || mark == Dialytika;
        ypogegrammeni += mark == Ypogegrammeni ? 1 : 0;
    }
};

GreekLetter greekLetterAt(const CodePoints &text, qsizetype at)
{
    GreekLetter letter;
    const QString parts = textOf({text[at]}).normalized(QString::NormalizationForm_D);
    if (QChar::script(parts.front().unicode()) != QChar::Script_Greek || !parts.front().isLetter())
        return letter;
    letter.base = parts.front().unicode();
    letter.isVowel = GreekVowels.contains(parts.front().toUpper());
    for (const QChar mark : QStringView(parts).sliced(1))
        letter.add(mark);
    letter.end = at + 1;
    for (; letter.end < text.size() && text[letter.end] <= 0xFFFF; ++letter.end) {
        const QChar mark{char16_t(text[letter.end])};
        if (!GreekAccents.contains(mark) && !OtherGreekMarks.contains(mark))
            break;
        letter.isOneCodePoint = false;
        letter.add(mark);
    }
    return letter;
}

/// Removes the accents. Where an accent showed that two vowels are spoken separately, the second gets a dialytika
/// instead. The one-letter word "ή" keeps its accent, without which it would be another word.
CodePoints withoutGreekAccents(const CodePoints &text)
{
    CodePoints result;
    bool isBehindAccentedVowel = false;
    for (qsizetype at = 0; at < text.size();) {
        const GreekLetter letter = greekLetterAt(text, at);
        if (letter.base == 0) {
            isBehindAccentedVowel = false;
            result += text[at++];
            continue;
        }
        const char32_t capital = QChar::toUpper(letter.base);
        const bool isWord = !isBehindCased(text, at) && !isBeforeCased(text, letter.end - 1);
        const bool keepsAccent = capital == U'Η' && letter.hasAccent && letter.ypogegrammeni == 0 && isWord;
        const bool hasDialytika =
            letter.hasDialytika || (isBehindAccentedVowel && (capital == U'Ι' || capital == U'Υ'));
        isBehindAccentedVowel = letter.isVowel && letter.hasAccent && !hasDialytika;

        QString capitalWithMarks{QChar(char16_t(capital))};
        if (hasDialytika)
            capitalWithMarks += QChar(Dialytika);
        if (keepsAccent)
            capitalWithMarks += u'\u0301';
        if (letter.isOneCodePoint)
            capitalWithMarks = capitalWithMarks.normalized(QString::NormalizationForm_C);
        capitalWithMarks += QString(letter.ypogegrammeni, u'Ι');
        result += capitalWithMarks.toUcs4();
        at = letter.end;
    }
    return result;
}

bool isTurkic(const QLocale &locale)
{
    return locale.language() == QLocale::Turkish || locale.language() == QLocale::Azerbaijani;
}

} // namespace

// Convert the letters with rules of their own first. Qt leaves alone what already has its case.

QString upperCase(const QString &text, const QLocale &locale)
{
    if (isTurkic(locale))
        return QString(text).replace(u'i', u'İ').toUpper();
    if (locale.language() == QLocale::Armenian)
        return QString(text).replace(u"և"_s, u"ԵՎ"_s).toUpper();
    if (locale.language() == QLocale::Greek)
        return textOf(withoutGreekAccents(text.toUcs4())).toUpper();
    if (locale.language() == QLocale::Lithuanian && text.contains(QChar(DotAbove))) {
        CodePoints codePoints = text.toUcs4();
        upperLithuanian(codePoints);
        return textOf(codePoints).toUpper();
    }
    return text.toUpper();
}

QString lowerCase(const QString &text, const QLocale &locale)
{
    const bool isOfLanguage = isTurkic(locale) || locale.language() == QLocale::Lithuanian;
    if (!isOfLanguage && !text.contains(u'Σ'))
        return text.toLower();
    CodePoints codePoints = text.toUcs4();
    lowerFinalSigmas(codePoints);
    if (isTurkic(locale))
        lowerTurkish(codePoints);
    else if (isOfLanguage)
        lowerLithuanian(codePoints);
    return textOf(codePoints).toLower();
}

} // namespace ravlin
