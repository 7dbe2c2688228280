// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/naming/texttransforms.h"

#include "core/naming/lettercase.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

using namespace Qt::StringLiterals;

namespace ravlin {

namespace {

constexpr QStringView CapitalSeparators = u" ()?¿=¡!/\\_-+&%$#@,.";

/// Number of UTF-16 units (1 or 2) of the code point at an index; a lone surrogate counts as one.
qsizetype codePointSize(QStringView text, qsizetype at)
{
    const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
    return isPair ? 2 : 1;
}

char32_t codePointAt(QStringView text, qsizetype at)
{
    return codePointSize(text, at) == 2 ? QChar::surrogateToUcs4(text[at], text[at + 1]) : char32_t(text[at].unicode());
}

/// The upper-case form of the code point that starts a word.
QString capital(const QString &codePoint, const QLocale &locale)
{
    // A mark has no case of its own; U+0345 would turn into a letter.
    if (QChar::isMark(codePointAt(codePoint, 0)))
        return codePoint;
    // Greek drops accents only in words of capitals, not on a capital before small letters.
    const QString upper = locale.language() == QLocale::Greek ? codePoint.toUpper() : upperCase(codePoint, locale);
    // If the capital would be several letters ("ß", "ﬁ"), keep the character.
    return upper.size() == codePointSize(upper, 0) ? upper : codePoint;
}

/// The text from its second code point on, in lower case.
QString lowerRest(const QString &text, qsizetype firstSize, const QLocale &locale)
{
    // Lower case may depend on what precedes (the final sigma of a two-letter word), so convert the whole text if the
    // first code point can be told apart afterwards.
    const QString lower = lowerCase(text, locale);
    const QString firstLower = lowerCase(text.first(firstSize), locale);
    return lower.startsWith(firstLower) ? lower.sliced(firstLower.size()) : lowerCase(text.sliced(firstSize), locale);
}

QString capitalize(const QString &text, const QLocale &locale)
{
    if (text.isEmpty())
        return text;

    const qsizetype firstSize = codePointSize(text, 0);
    const QString rest = lowerRest(text, firstSize, locale);

    QString result;
    result.reserve(text.size() + 8);
    result += capital(text.first(firstSize), locale);
    // Looks for the first separator in the text before conversion, because conversion may change its length.
    bool capitalDue = CapitalSeparators.contains(text.front());
    for (qsizetype at = 0; at < rest.size();) {
        const qsizetype size = codePointSize(rest, at);
        if (capitalDue)
            result += capital(rest.sliced(at, size), locale);
        else
            result += QStringView(rest).sliced(at, size);
        capitalDue = size == 1 && CapitalSeparators.contains(rest[at]);
        at += size;
    }
    return result;
}

/// A text whose characters are struck out one by one. Finds the next remaining one in nearly constant time.
class StrikeableText
{
public:
    explicit StrikeableText(const QString &text) : m_text(text), m_next(size_t(text.size()) + 1)
    {
        std::iota(m_next.begin(), m_next.end(), qsizetype(0));
    }

    /// Index of the first remaining unit at or after an index; the text's size if there is none.
    qsizetype remainingFrom(qsizetype at)
    {
        while (m_next[size_t(at)] != at) {
            m_next[size_t(at)] = m_next[size_t(m_next[size_t(at)])];
            at = m_next[size_t(at)];
        }
        return at;
    }

    void strike(qsizetype at) { m_next[size_t(at)] = at + 1; }

    /// Strikes out the first remaining code point from an index on, and the combining marks behind it.
    void strikeCharacterFrom(qsizetype at)
    {
        at = remainingFrom(at);
        if (!strikeCodePoint(at))
            return;
        for (at = remainingFrom(at); QChar::isMark(codePointAt(at)); at = remainingFrom(at))
            strikeCodePoint(at);
    }

    QString remaining() const
    {
        QString result;
        result.reserve(m_text.size());
        for (qsizetype at = 0; at < m_text.size(); ++at) {
            if (m_next[size_t(at)] == at)
                result += m_text[at];
        }
        return result;
    }

private:
    /// Index of the low surrogate that completes the unit at an index to a pair, or -1.
    qsizetype secondHalf(qsizetype at)
    {
        if (!m_text[at].isHighSurrogate())
            return -1;
        const qsizetype following = remainingFrom(at + 1);
        return following < m_text.size() && m_text[following].isLowSurrogate() ? following : -1;
    }

    /// The code point at a remaining index; 0 at the end.
    char32_t codePointAt(qsizetype at)
    {
        if (at >= m_text.size())
            return 0;
        const qsizetype second = secondHalf(at);
        return second < 0 ? char32_t(m_text[at].unicode()) : QChar::surrogateToUcs4(m_text[at], m_text[second]);
    }

    /// Returns false at the end of the text.
    bool strikeCodePoint(qsizetype at)
    {
        if (at >= m_text.size())
            return false;
        const qsizetype second = secondHalf(at);
        strike(at);
        if (second >= 0)
            strike(second);
        return true;
    }

    const QString &m_text;
    std::vector<qsizetype> m_next; ///< at an index: itself while it remains, else one further on
};

struct ForbiddenKind
{
    QChar character;
    bool takesFollower = false; ///< also removes the character behind it
    qsizetype from = 0;         ///< nothing of this kind remains before this index
};

/// Strikes out the first remaining character of a kind. Returns false if there is none.
bool strikeFirst(StrikeableText &struck, const QString &text, ForbiddenKind &kind)
{
    qsizetype at = struck.remainingFrom(kind.from);
    while (at < text.size() && text[at] != kind.character)
        at = struck.remainingFrom(at + 1);
    kind.from = at;
    if (at >= text.size())
        return false;
    struck.strike(at);
    if (kind.takesFollower)
        struck.strikeCharacterFrom(at + 1);
    return true;
}

} // namespace

QString ConvertCase(const QString &text, int mode)
{
    return ConvertCase(text, mode, QLocale());
}

QString ConvertCase(const QString &text, int mode, const QLocale &locale)
{
    switch (mode) {
    case CaseUpper:
        return upperCase(text, locale);
    case CaseLower:
        return lowerCase(text, locale);
    case CaseCapitalize:
        return capitalize(text, locale);
    default:
        return text;
    }
}

QString ExchangeSpaces(const QString &text, int mode)
{
    QString result = text;
    if (mode == SpacesToUnderscores)
        result.replace(u' ', u'_');
    else if (mode == UnderscoresToSpaces)
        result.replace(u'_', u' ');
    return result;
}

QString SubstitutePlaceholder(const QString &text, const QString &token, const QString &value)
{
    const qsizetype start = text.indexOf(token);
    if (start < 0 || token.isEmpty())
        return text;
    qsizetype end = start;
    for (int character = 0; character < 2 && end < text.size(); ++character)
        end += codePointSize(text, end);
    QString result = text;
    return result.replace(start, end - start, value);
}

QString CleanFileName(const QString &text)
{
    std::array<ForbiddenKind, 9> kinds{{{u'\\', false}, {u'/', false}, {u':', false}, {u'*', false}, {u'?', false},
        {u'"', false}, {u'<', false}, {u'>', true}, {u'|', true}}};

    const auto isForbidden = [&kinds](QChar c) {
        return std::ranges::find(kinds, c, &ForbiddenKind::character) != kinds.end();
    };
    if (std::ranges::none_of(text, isForbidden))
        return text;

    StrikeableText struck(text);
    bool changed = true;
    while (changed) {
        changed = false;
        for (ForbiddenKind &kind : kinds)
            changed |= strikeFirst(struck, text, kind);
    }
    return struck.remaining();
}

} // namespace ravlin
