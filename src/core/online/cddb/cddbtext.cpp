// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/cddbtext.h"

#include "core/platform/textsafety.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cddb {

QString onOneLine(const QString &text)
{
    QString line = text;
    for (QChar &character : line) {
        if (platform::isControl(character))
            character = u' ';
    }
    return line.trimmed();
}

ArtistAndTitle dividedTitle(const QString &text)
{
    const qsizetype slash = text.indexOf(u" / ");
    if (slash < 0) {
        const QString whole = onOneLine(text);
        return {whole, whole, false};
    }
    return {onOneLine(text.first(slash)), onOneLine(text.sliced(slash + 3)), true};
}

bool isVariousArtists(QStringView artist)
{
    QString letters;
    for (const QChar character : artist) {
        if (character.isLetter())
            letters += character.toLower();
    }
    constexpr std::array<QStringView, 16> Names{u"various", u"variousartist", u"variousartists", u"va", u"varios",
        u"variosartistas", u"variosintérpretes", u"variosinterpretes", u"divers", u"diversartistes", u"artistesdivers",
        u"verschiedene", u"verschiedeneinterpreten", u"diverse", u"artistivari", u"aavv"};
    return std::ranges::find(Names, QStringView(letters)) != Names.end();
}

} // namespace ravlin::cddb
