// SPDX-License-Identifier: GPL-3.0-or-later
// The genre table: 126 names in their order, the number of a name with all consequences of the search in the barred
// table, and the usual spellings of other programs.

#include "core/tags/record/genres.h"

#include <QCryptographicHash>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

/// The search in the barred table, step by step.
int numberByTheRule(const QString &name)
{
    const QString table = genreTable().toString();
    QString g = name;
    while (g.startsWith(u' '))
        g.remove(0, 1);
    while (g.endsWith(u' '))
        g.chop(1);
    const qsizetype p = (u"|"_s + table).indexOf(u"|"_s + g + u"|"_s, 0, Qt::CaseInsensitive) + 1;
    const QString s = p == 0 ? u"|"_s : u"|"_s + table.left(p - 1);
    if (g.isEmpty() || s == u"|"_s)
        return 255;
    return int(s.split(u'|').size()) - 2;
}

} // namespace

class TestGenres : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theTableIsWhole();
    void namesByNumber();
    void nameToNumber_data();
    void nameToNumber();
    void everyNameButTheFirstAndLastHasItsNumber();
    void theNumberFollowsTheSearchLiterally();
    void standardSpellings_data();
    void standardSpellings();
    void everyNameIsAStandardSpelling();
};

void TestGenres::theTableIsWhole()
{
    QCOMPARE(genreTable().toString().split(u'|').size(), 126);
    QCOMPARE(genreNames().join(u'|'), genreTable().toString());
    QVERIFY(!genreNames().contains(QString()));
    QCOMPARE(QCryptographicHash::hash(genreTable().toUtf8(), QCryptographicHash::Sha1).toHex(),
        QByteArray("ac20fc0b665f3a3e114827eb1663cb0aeaef66fc"));
}

void TestGenres::namesByNumber()
{
    QCOMPARE(genreName(0), u"Blues"_s);
    QCOMPARE(genreName(17), u"Rock"_s);
    QCOMPARE(genreName(40), u"AlternRock"_s);
    QCOMPARE(genreName(67), u"Psychadelic"_s);
    QCOMPARE(genreName(79), u"HardRock"_s);
    QCOMPARE(genreName(85), u"Bebob"_s);
    QCOMPARE(genreName(125), u"DanceHall"_s);
    QCOMPARE(genreName(126), QString());
    QCOMPARE(genreName(255), QString());
    QCOMPARE(genreName(-1), QString());
}

void TestGenres::nameToNumber_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("number");

    QTest::newRow("Blues counts as none") << u"Blues"_s << 255;
    QTest::newRow("blues in lower case likewise") << u"blues"_s << 255;
    QTest::newRow("DanceHall is not found") << u"DanceHall"_s << 255;
    QTest::newRow("Country") << u"Country"_s << 2;
    QTest::newRow("Euro-House") << u"Euro-House"_s << 124;
    QTest::newRow("rock in lower case") << u"rock"_s << 17;
    QTest::newRow("ClassicRock") << u"CLASSICROCK"_s << 1;
    QTest::newRow("blanks at the ends") << u"  Pop "_s << 13;
    QTest::newRow("a tab is no blank") << u"\tPop"_s << 255;
    QTest::newRow("a no-break space is no blank") << u"\u00a0Pop"_s << 255;
    QTest::newRow("the odd spelling") << u"Psychadelic"_s << 67;
    QTest::newRow("the right spelling is not the table's") << u"Psychedelic"_s << 255;
    QTest::newRow("not the standard's blanks") << u"Classic Rock"_s << 255;
    QTest::newRow("free text") << u"Gypsy Punk"_s << 255;
    QTest::newRow("a part of a name") << u"Roc"_s << 255;
    QTest::newRow("nothing") << QString() << 255;
    QTest::newRow("blanks only") << u"   "_s << 255;
    QTest::newRow("a bar") << u"|"_s << 255;
    QTest::newRow("names that are not neighbours") << u"Rock|Pop"_s << 255;
    QTest::newRow("names that are neighbours: the first one's number") << u"jazz|metal"_s << 8;
    QTest::newRow("from the first on") << u"Blues|ClassicRock"_s << 255;
}

void TestGenres::nameToNumber()
{
    QFETCH(QString, name);
    QTEST(GenreNameToNumber(name), "number");
    QCOMPARE(GenreNameToNumber(name), numberByTheRule(name));
}

void TestGenres::everyNameButTheFirstAndLastHasItsNumber()
{
    for (int number = 1; number < 125; ++number)
        QCOMPARE(GenreNameToNumber(genreName(number)), number);
    QCOMPARE(GenreNameToNumber(genreName(0)), GenreNone);
    QCOMPARE(GenreNameToNumber(genreName(125)), GenreNone);
}

void TestGenres::theNumberFollowsTheSearchLiterally()
{
    const QString table = genreTable().toString();
    for (qsizetype from = 0; from < table.size(); from += 3) {
        for (const qsizetype length : {1, 2, 3, 4, 5, 7, 11, 16}) {
            const QString piece = table.mid(from, length);
            QCOMPARE(GenreNameToNumber(piece), numberByTheRule(piece));
            QCOMPARE(GenreNameToNumber(piece.toUpper()), numberByTheRule(piece.toUpper()));
        }
    }
}

void TestGenres::standardSpellings_data()
{
    QTest::addColumn<int>("number");

    QTest::newRow("Blues") << 0;
    QTest::newRow("Classic Rock") << 1;
    QTest::newRow("classic_rock") << 1;
    QTest::newRow("Hip-Hop") << 7;
    QTest::newRow("hip hop") << 7;
    QTest::newRow("HipHop") << 7;
    QTest::newRow("New Age") << 10;
    QTest::newRow("R&B") << 14;
    QTest::newRow("Death Metal") << 22;
    QTest::newRow("Euro-Techno") << 25;
    QTest::newRow("Jazz+Funk") << 29;
    QTest::newRow("Jazz-Funk") << 29;
    QTest::newRow("Sound Clip") << 37;
    QTest::newRow("Alternative Rock") << 40;
    QTest::newRow("Alt. Rock") << 40;
    QTest::newRow("Gangsta Rap") << 59;
    QTest::newRow("Top 40") << 60;
    QTest::newRow("Pop/Funk") << 62;
    QTest::newRow("Psychedelic") << 67;
    QTest::newRow("Psychadelic") << 67;
    QTest::newRow("Rock & Roll") << 78;
    QTest::newRow("Folk-Rock") << 81;
    QTest::newRow("Folk/Rock") << 81;
    QTest::newRow("Fast-Fusion") << 84;
    QTest::newRow("Bebop") << 85;
    QTest::newRow("Be-Bop") << 85;
    QTest::newRow("Bebob") << 85;
    QTest::newRow("Avant-Garde") << 90;
    QTest::newRow("Psychedelic Rock") << 93;
    QTest::newRow("Humor") << 100;
    QTest::newRow("Native US") << 64;
    QTest::newRow("Drum Solo") << 122;
    QTest::newRow("A Cappella") << 123;
    QTest::newRow("a capella") << 123;
    QTest::newRow("Euro-House") << 124;
    QTest::newRow("Dance Hall") << 125;
    QTest::newRow("Dancehall") << 125;
    QTest::newRow("Goa") << -1;
    QTest::newRow("17") << -1;
    QTest::newRow("(17)") << -1;
    QTest::newRow("Rock|Pop") << -1;
    QTest::newRow("-") << -1;
    QTest::newRow("") << -1;
}

void TestGenres::standardSpellings()
{
    QTEST(standardGenreNumber(QString::fromLatin1(QTest::currentDataTag())), "number");
}

void TestGenres::everyNameIsAStandardSpelling()
{
    for (int number = 0; number < 126; ++number) {
        QCOMPARE(standardGenreNumber(genreName(number)), number);
        QCOMPARE(standardGenreNumber(u' ' + genreName(number).toLower() + u' '), number);
    }
}

QTEST_GUILESS_MAIN(TestGenres)
#include "tst_genres.moc"
