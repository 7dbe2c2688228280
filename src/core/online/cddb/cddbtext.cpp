// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/cddbtext.h"

#include <QStringDecoder>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace ravlin::cddb {

namespace {

/// What code page 1252 has at 0x80 to 0x9F, where Latin-1 has control characters; those stay where it has nothing.
constexpr std::array<char16_t, 32> Windows1252{0x20AC, 0x81, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6,
    0x2030, 0x0160, 0x2039, 0x0152, 0x8D, 0x017D, 0x8F, 0x90, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D, 0x017E, 0x0178};

QString fromWindows1252(QByteArrayView bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar &character : text) {
        const char16_t code = character.unicode();
        if (code >= 0x80 && code < 0xA0)
            character = Windows1252[code - 0x80U];
    }
    return text;
}

} // namespace

QString decodedText(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = decoder(bytes);
    return decoder.hasError() ? fromWindows1252(bytes) : text;
}

QString onOneLine(const QString &text)
{
    QString line = text;
    for (QChar &character : line) {
        const bool breaks = character == QChar::LineSeparator || character == QChar::ParagraphSeparator;
        if (breaks || character.category() == QChar::Other_Control)
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
