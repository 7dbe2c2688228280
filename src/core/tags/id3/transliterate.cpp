// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/transliterate.h"

#include <QTextBoundaryFinder>

#include <algorithm>
#include <array>
#include <iterator>

namespace ravlin {

namespace {

struct Replacement
{
    char16_t character;
    const char *latin;
};

/// Letters and signs without a decomposition into Latin-1, in the order of their code points. Cyrillic follows the
/// passport spelling (ICAO Doc 9303), Greek the plain form of ISO 843.
constexpr Replacement Replacements[] = {
    {0x0110, "D"},
    {0x0111, "d"},
    {0x0126, "H"},
    {0x0127, "h"},
    {0x0131, "i"},
    {0x0132, "IJ"},
    {0x0133, "ij"},
    {0x0138, "k"},
    {0x0141, "L"},
    {0x0142, "l"},
    {0x014A, "N"},
    {0x014B, "n"},
    {0x0152, "OE"},
    {0x0153, "oe"},
    {0x0166, "T"},
    {0x0167, "t"},
    {0x018F, "E"},
    {0x0192, "f"},
    {0x0259, "e"},
    {0x02BC, "'"},
    {0x0391, "A"},
    {0x0392, "V"},
    {0x0393, "G"},
    {0x0394, "D"},
    {0x0395, "E"},
    {0x0396, "Z"},
    {0x0397, "I"},
    {0x0398, "Th"},
    {0x0399, "I"},
    {0x039A, "K"},
    {0x039B, "L"},
    {0x039C, "M"},
    {0x039D, "N"},
    {0x039E, "X"},
    {0x039F, "O"},
    {0x03A0, "P"},
    {0x03A1, "R"},
    {0x03A3, "S"},
    {0x03A4, "T"},
    {0x03A5, "Y"},
    {0x03A6, "F"},
    {0x03A7, "Ch"},
    {0x03A8, "Ps"},
    {0x03A9, "O"},
    {0x03B1, "a"},
    {0x03B2, "v"},
    {0x03B3, "g"},
    {0x03B4, "d"},
    {0x03B5, "e"},
    {0x03B6, "z"},
    {0x03B7, "i"},
    {0x03B8, "th"},
    {0x03B9, "i"},
    {0x03BA, "k"},
    {0x03BB, "l"},
    {0x03BC, "m"},
    {0x03BD, "n"},
    {0x03BE, "x"},
    {0x03BF, "o"},
    {0x03C0, "p"},
    {0x03C1, "r"},
    {0x03C2, "s"},
    {0x03C3, "s"},
    {0x03C4, "t"},
    {0x03C5, "y"},
    {0x03C6, "f"},
    {0x03C7, "ch"},
    {0x03C8, "ps"},
    {0x03C9, "o"},
    {0x0401, "E"},
    {0x0402, "D"},
    {0x0404, "Ye"},
    {0x0405, "Dz"},
    {0x0406, "I"},
    {0x0407, "Yi"},
    {0x0408, "J"},
    {0x0409, "Lj"},
    {0x040A, "Nj"},
    {0x040B, "C"},
    {0x040E, "U"},
    {0x040F, "Dz"},
    {0x0410, "A"},
    {0x0411, "B"},
    {0x0412, "V"},
    {0x0413, "G"},
    {0x0414, "D"},
    {0x0415, "E"},
    {0x0416, "Zh"},
    {0x0417, "Z"},
    {0x0418, "I"},
    {0x0419, "I"},
    {0x041A, "K"},
    {0x041B, "L"},
    {0x041C, "M"},
    {0x041D, "N"},
    {0x041E, "O"},
    {0x041F, "P"},
    {0x0420, "R"},
    {0x0421, "S"},
    {0x0422, "T"},
    {0x0423, "U"},
    {0x0424, "F"},
    {0x0425, "Kh"},
    {0x0426, "Ts"},
    {0x0427, "Ch"},
    {0x0428, "Sh"},
    {0x0429, "Shch"},
    {0x042A, "'"},
    {0x042B, "Y"},
    {0x042C, "'"},
    {0x042D, "E"},
    {0x042E, "Iu"},
    {0x042F, "Ia"},
    {0x0430, "a"},
    {0x0431, "b"},
    {0x0432, "v"},
    {0x0433, "g"},
    {0x0434, "d"},
    {0x0435, "e"},
    {0x0436, "zh"},
    {0x0437, "z"},
    {0x0438, "i"},
    {0x0439, "i"},
    {0x043A, "k"},
    {0x043B, "l"},
    {0x043C, "m"},
    {0x043D, "n"},
    {0x043E, "o"},
    {0x043F, "p"},
    {0x0440, "r"},
    {0x0441, "s"},
    {0x0442, "t"},
    {0x0443, "u"},
    {0x0444, "f"},
    {0x0445, "kh"},
    {0x0446, "ts"},
    {0x0447, "ch"},
    {0x0448, "sh"},
    {0x0449, "shch"},
    {0x044A, "'"},
    {0x044B, "y"},
    {0x044C, "'"},
    {0x044D, "e"},
    {0x044E, "iu"},
    {0x044F, "ia"},
    {0x0451, "e"},
    {0x0452, "d"},
    {0x0454, "ie"},
    {0x0455, "dz"},
    {0x0456, "i"},
    {0x0457, "i"},
    {0x0458, "j"},
    {0x0459, "lj"},
    {0x045A, "nj"},
    {0x045B, "c"},
    {0x045E, "u"},
    {0x045F, "dz"},
    {0x0490, "G"},
    {0x0491, "g"},
    {0x1E9E, "SS"},
    {0x2010, "-"},
    {0x2011, "-"},
    {0x2012, "-"},
    {0x2013, "-"},
    {0x2014, "-"},
    {0x2015, "-"},
    {0x2018, "'"},
    {0x2019, "'"},
    {0x201A, "'"},
    {0x201C, "\""},
    {0x201D, "\""},
    {0x201E, "\""},
    {0x2020, "+"},
    {0x2022, "*"},
    {0x2026, "..."},
    {0x2032, "'"},
    {0x2033, "\""},
    {0x2039, "<"},
    {0x203A, ">"},
    {0x20AC, "EUR"},
    {0x2122, "(TM)"},
    {0x2212, "-"},
    {0x266D, "b"},
    {0x266F, "#"},
};

// Searched by halves.
static_assert(std::is_sorted(std::begin(Replacements), std::end(Replacements),
    [](const Replacement &one, const Replacement &other) { return one.character < other.character; }));

const char *replacementFor(char16_t character)
{
    const auto *found = std::lower_bound(std::begin(Replacements), std::end(Replacements), character,
        [](const Replacement &entry, char16_t c) { return entry.character < c; });
    return found != std::end(Replacements) && found->character == character ? found->latin : nullptr;
}

/// One character as a reader sees it (a grapheme cluster), in Latin-1.
QByteArray characterInLatin1(const QString &character)
{
    QByteArray out;
    bool hasAccent = false;
    const QString decomposed = character.normalized(QString::NormalizationForm_KD);
    for (const QChar c : decomposed) {
        if (c.isMark()) {
            hasAccent = true; // Latin-1 has no letter with it
            continue;
        }
        if (c.unicode() <= 0xFF)
            out += static_cast<char>(c.unicode());
        else if (const char *latin = replacementFor(c.unicode()))
            out += latin;
        else
            return QByteArrayLiteral("?");
    }
    // A lone accent decomposes into a space and a mark.
    const bool isInvisible = out.isEmpty() || (hasAccent && out.trimmed().isEmpty());
    return isInvisible ? QByteArrayLiteral("?") : out;
}

bool isLatin1(QStringView text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() <= 0xFF; });
}

QByteArray inLatin1(const QString &text, qsizetype maximumSize)
{
    const QString composed = text.normalized(QString::NormalizationForm_C);
    if (isLatin1(composed))
        return composed.left(maximumSize).toLatin1();

    QByteArray out;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, composed);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end >= 0; end = finder.toNextBoundary()) {
        const QString character = composed.mid(start, end - start);
        start = end;
        const char *whole = character.size() == 1 ? replacementFor(character[0].unicode()) : nullptr;
        const QByteArray latin = isLatin1(character) ? character.toLatin1()
                                 : whole             ? QByteArray(whole)
                                                     : characterInLatin1(character);
        if (out.size() + latin.size() > maximumSize)
            break;
        out += latin;
    }
    return out;
}

} // namespace

QByteArray toLatin1Visibly(const QString &text, qsizetype maximumSize)
{
    QString visible = text;
    visible.remove(QChar(QChar::Null)); // it would end the field
    const QByteArray latin = inLatin1(visible, maximumSize);
    // Leading spaces may have left no room for anything else.
    return latin.trimmed().isEmpty() ? inLatin1(visible.trimmed(), maximumSize) : latin;
}

} // namespace ravlin
