// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/tags/id3/framekind.h"

#include "core/tags/id3/id3text.h"
#include "core/tags/record/genres.h"

#include <algorithm>
#include <array>

namespace ravlin {

namespace {

struct Identifiers
{
    FrameKind kind;
    std::string_view v22;
    std::string_view v23;
    std::string_view v24;
};

constexpr std::array<Identifiers, 7> Table{{
    {FrameKind::Title, "TT2", "TIT2", "TIT2"},
    {FrameKind::LeadArtist, "TP1", "TPE1", "TPE1"},
    {FrameKind::Album, "TAL", "TALB", "TALB"},
    {FrameKind::TrackNumber, "TRK", "TRCK", "TRCK"},
    {FrameKind::Year, "TYE", "TYER", "TDRC"},
    {FrameKind::ContentType, "TCO", "TCON", "TCON"},
    {FrameKind::Comment, "COM", "COMM", "COMM"},
}};

} // namespace

FrameKind frameKindOf(std::string_view identifier)
{
    if (identifier.size() < 3 || (identifier[0] != 'T' && identifier[0] != 'C'))
        return FrameKind::Other;
    if (identifier.size() == 4 && (identifier[3] == ' ' || identifier[3] == '\0'))
        identifier.remove_suffix(1);
    for (const Identifiers &entry : Table) {
        if (identifier == (identifier.size() == 3 ? entry.v22 : entry.v23) ||
            (identifier.size() == 4 && identifier == entry.v24))
            return entry.kind;
    }
    return FrameKind::Other;
}

std::string_view frameIdentifier(FrameKind kind, int majorVersion)
{
    for (const Identifiers &entry : Table) {
        if (entry.kind == kind)
            return majorVersion == 2 ? entry.v22 : majorVersion == 3 ? entry.v23 : entry.v24;
    }
    return {};
}

} // namespace ravlin

namespace ravlin::id3 {

namespace {

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isNumber(QStringView text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), isDigit);
}

/// A genre number in digits, or GenreNone.
int genreInDigits(QStringView digits)
{
    if (!isNumber(digits) || digits.size() > 3)
        return GenreNone;
    const int number = digits.toInt();
    return number < GenreNone ? number : GenreNone;
}

qsizetype leadingDigits(QStringView text)
{
    return std::find_if_not(text.begin(), text.end(), isDigit) - text.begin();
}

} // namespace

int genreNumber(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.startsWith(u'(')) {
        const qsizetype close = trimmed.indexOf(u')');
        return close < 0 ? GenreNone : genreInDigits(QStringView(trimmed).mid(1, close - 1));
    }
    // The first of several values counts.
    const qsizetype firstEnd = trimmed.indexOf(ValueSeparator);
    const QStringView first = QStringView(trimmed).left(firstEnd < 0 ? trimmed.size() : firstEnd);
    if (isNumber(first))
        return genreInDigits(first);
    const int number = standardGenreNumber(first);
    return number < 0 ? GenreNone : number;
}

QString genreText(int number, int majorVersion)
{
    const QString digits = QString::number(number);
    return majorVersion == 4 ? digits : u'(' + digits + u')';
}

int trackNumber(const QString &text)
{
    const QString trimmed = text.trimmed();
    const qsizetype digits = leadingDigits(trimmed);
    // No track has more digits, and they would not fit a number.
    return digits == 0 || digits > 6 ? 0 : QStringView(trimmed).left(digits).toInt();
}

QString trackText(const QString &old, int number)
{
    const QString trimmed = old.trimmed();
    const qsizetype digits = leadingDigits(trimmed);
    const qsizetype slash = trimmed.indexOf(u'/');
    const bool padded = digits > 1 && trimmed.startsWith(u'0');
    QString text = QString::number(number);
    if (padded)
        text = text.rightJustified(std::min<qsizetype>(digits, 4), u'0');
    return slash < 0 ? text : text + trimmed.mid(slash);
}

QString yearOf(const QString &text)
{
    const QString trimmed = text.trimmed();
    const qsizetype digits = leadingDigits(trimmed);
    const bool compact = digits == 8 && trimmed.size() == 8;
    const bool dated = digits == 4 && trimmed.size() > 4 && !trimmed[4].isLetterOrNumber();
    return dated || compact ? trimmed.left(4) : trimmed;
}

} // namespace ravlin::id3
