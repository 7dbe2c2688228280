// SPDX-License-Identifier: GPL-3.0-or-later
// Records in the xmcd format: repeated keys, escapes, year and genre in both places, track artists, UTF-8 and Latin-1,
// offsets in comments. No record does harm, whatever it holds.
#include "core/online/cddb/cddbtext.h"
#include "core/online/cddb/xmcdrecord.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

namespace {

DiscRecord parsed(const QByteArray &bytes)
{
    return parseXmcdRecord(bytes).value();
}

const QByteArray Usual = "# xmcd CD database file\n"
                         "#\n"
                         "# Track frame offsets:\n"
                         "#\t150\n"
                         "#\t18469\n"
                         "#\t34444\n"
                         "#\n"
                         "# Disc length: 680 seconds\n"
                         "#\n"
                         "# Revision: 4\n"
                         "# Submitted via: some client 2.1\n"
                         "#\n"
                         "DISCID=1e02a603,1f02a603\n"
                         "DTITLE=Las Gaviotas / Mareas Lentas\n"
                         "DYEAR=1998\n"
                         "DGENRE=Folk\n"
                         "TTITLE0=Puerto\n"
                         "TTITLE1=Sal y Viento\n"
                         "TTITLE2=Faro\n"
                         "EXTD=Recorded live\n"
                         "EXTT0=\n"
                         "EXTT1=with guests\n"
                         "EXTT2=\n"
                         "PLAYORDER=\n";

} // namespace

class TestXmcdRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void usualRecord();
    void lineEndsOfOtherSystems();
    void repeatedKeysAreOneText();
    void letterCutByTheEndOfALineIsWhole();
    void escapes_data();
    void escapes();
    void titleIsOnOneLine();
    void remarksKeepTheirLines();
    void titleWithoutSlashIsBoth();
    void onlyTheFirstSlashDivides();
    void slashWithoutBlanksIsATitle();
    void years_data();
    void years();
    void genres_data();
    void genres();
    void severalArtists();
    void severalArtistsWithoutAnArtist();
    void titlesAllDividedAreOfSeveralArtists();
    void medleyStaysATitle();
    void namesOfSeveralArtists_data();
    void namesOfSeveralArtists();
    void latin1();
    void windowsQuotes();
    void eachTextHasItsEncoding();
    void missingTracksAreEmpty();
    void strangeTrackNumbersAreLeftOut();
    void offsetsEndWithTheirList();
    void noRecord_data();
    void noRecord();
};

void TestXmcdRecord::usualRecord()
{
    const DiscRecord record = parsed(Usual);
    DiscRecord expected{u"Las Gaviotas"_s, u"Mareas Lentas"_s, u"1998"_s, u"Folk"_s, u"Recorded live"_s, {},
        {u"1e02a603"_s, u"1f02a603"_s}, {150, 18469, 34444}, 680};
    expected.tracks = {{{}, u"Puerto"_s, {}}, {{}, u"Sal y Viento"_s, u"with guests"_s}, {{}, u"Faro"_s, {}}};
    QVERIFY(record == expected);
    QCOMPARE(record.artistOf(record.tracks[0]), u"Las Gaviotas"_s);
}

void TestXmcdRecord::lineEndsOfOtherSystems()
{
    QByteArray windows = Usual;
    QVERIFY(parsed(windows.replace("\n", "\r\n")) == parsed(Usual));
    QVERIFY(parsed(Usual.chopped(1)) == parsed(Usual));
}

void TestXmcdRecord::repeatedKeysAreOneText()
{
    const DiscRecord record = parsed("DTITLE=An artist with a long na\nDTITLE=me / and an al\nDTITLE=bum\n"
                                     "TTITLE0=one \nTTITLE1=other\nTTITLE0=title\nEXTD=a\nEXTD=b\n");
    QCOMPARE(record.artist, u"An artist with a long name"_s);
    QCOMPARE(record.album, u"and an album"_s);
    QCOMPARE(record.tracks[0].title, u"one title"_s);
    QCOMPARE(record.tracks[1].title, u"other"_s);
    QCOMPARE(record.extendedData, u"ab"_s);
}

void TestXmcdRecord::letterCutByTheEndOfALineIsWhole()
{
    QCOMPARE(parsed("DTITLE=A / B\nTTITLE0=Ni\xC3\nTTITLE0=\xB1o\n").tracks[0].title, u"Niño"_s);
    QCOMPARE(parsed("DTITLE=A / B\nEXTD=one\\\nEXTD=ntwo\n").extendedData, u"one\ntwo"_s);
}

void TestXmcdRecord::escapes_data()
{
    QTest::addColumn<QByteArray>("written");
    QTest::addColumn<QString>("text");
    QTest::newRow("line") << QByteArray("a\\nb") << u"a\nb"_s;
    QTest::newRow("tabulator") << QByteArray("a\\tb") << u"a\tb"_s;
    QTest::newRow("backslash") << QByteArray("a\\\\b") << u"a\\b"_s;
    QTest::newRow("backslash before a letter n") << QByteArray("C:\\\\new") << u"C:\\new"_s;
    QTest::newRow("none that is known") << QByteArray("a\\xb\\") << u"a\\xb\\"_s;
    QTest::newRow("equals sign") << QByteArray("a=b=c") << u"a=b=c"_s;
}

void TestXmcdRecord::escapes()
{
    QFETCH(QByteArray, written);
    QTEST(parsed("DTITLE=x\nEXTD=" + written + '\n').extendedData, "text");
}

void TestXmcdRecord::titleIsOnOneLine()
{
    const DiscRecord record = parsed("DTITLE= A\\nB /  C\\tD \nTTITLE0= x\\ny\x1b[2J \n");
    QCOMPARE(record.artist, u"A B"_s);
    QCOMPARE(record.album, u"C D"_s);
    QCOMPARE(record.tracks[0].title, u"x y [2J"_s);
    const DiscRecord odd = parsed("DTITLE=\x01"
                                  "A\xC2\x9B"
                                  "B / C\xE2\x80\xA8"
                                  "D\x7F\nDYEAR=1998\x1b\nDGENRE=\x1b"
                                  "My\xC2\x85kind\n"
                                  "TTITLE0=x\xE2\x80\xA9y\n");
    QCOMPARE(odd.artist, u"A B"_s);
    QCOMPARE(odd.album, u"C D"_s);
    QCOMPARE(odd.genre, u"My kind"_s);
    QCOMPARE(odd.year, u"1998"_s);
    QCOMPARE(odd.tracks[0].title, u"x y"_s);
}

void TestXmcdRecord::remarksKeepTheirLines()
{
    const DiscRecord record = parsed("DTITLE=x\nTTITLE0=t\nEXTT0=one\\ntwo\\n\n");
    QCOMPARE(record.tracks[0].extendedData, u"one\ntwo"_s);
}

void TestXmcdRecord::titleWithoutSlashIsBoth()
{
    const DiscRecord record = parsed("DTITLE=Namesake\nTTITLE0=t\n");
    QCOMPARE(record.artist, u"Namesake"_s);
    QCOMPARE(record.album, u"Namesake"_s);
}

void TestXmcdRecord::onlyTheFirstSlashDivides()
{
    const DiscRecord record = parsed("DTITLE=A / B / C\n");
    QCOMPARE(record.artist, u"A"_s);
    QCOMPARE(record.album, u"B / C"_s);
    QCOMPARE(parsed("DTITLE=A / \n").album, QString());
}

void TestXmcdRecord::slashWithoutBlanksIsATitle()
{
    QCOMPARE(parsed("DTITLE=AC/DC / High\n").artist, u"AC/DC"_s);
    QCOMPARE(parsed("DTITLE=24/7\n").album, u"24/7"_s);
}

void TestXmcdRecord::years_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("year");
    QTest::newRow("own key") << QByteArray("DYEAR=1998\n") << u"1998"_s;
    QTest::newRow("empty") << QByteArray("DYEAR=\n") << QString();
    QTest::newRow("none") << QByteArray("DYEAR=0\n") << QString();
    QTest::newRow("zeros") << QByteArray("DYEAR=0000\n") << QString();
    QTest::newRow("with a date") << QByteArray("DYEAR= 1998-05-01\n") << u"1998"_s;
    QTest::newRow("too long") << QByteArray("DYEAR=19981\n") << QString();
    QTest::newRow("words") << QByteArray("DYEAR=unknown\n") << QString();
    QTest::newRow("remark") << QByteArray("EXTD=Live. YEAR: 2001 ID3G: 17\n") << u"2001"_s;
    QTest::newRow("the key wins") << QByteArray("DYEAR=1998\nEXTD=YEAR: 2001\n") << u"1998"_s;
    QTest::newRow("another word") << QByteArray("EXTD=LEAPYEAR: 2004\n") << QString();
}

void TestXmcdRecord::years()
{
    QFETCH(QByteArray, lines);
    QTEST(parsed("DTITLE=x\n" + lines).year, "year");
}

void TestXmcdRecord::genres_data()
{
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QString>("genre");
    QTest::newRow("of the table") << QByteArray("DGENRE=Rock\n") << u"Rock"_s;
    QTest::newRow("otherwise written") << QByteArray("DGENRE=hip hop\n") << u"Hip-Hop"_s;
    QTest::newRow("free") << QByteArray("DGENRE=Nueva Canci\xC3\xB3n\n") << u"Nueva Canción"_s;
    QTest::newRow("empty") << QByteArray("DGENRE=\n") << QString();
    QTest::newRow("remark") << QByteArray("EXTD=YEAR: 2001 ID3G: 17\n") << u"Rock"_s;
    QTest::newRow("remark beyond the table") << QByteArray("EXTD=ID3G: 255\n") << QString();
    QTest::newRow("the key wins") << QByteArray("DGENRE=Folk\nEXTD=ID3G: 17\n") << u"Folk"_s;
}

void TestXmcdRecord::genres()
{
    QFETCH(QByteArray, lines);
    QTEST(parsed("DTITLE=x\n" + lines).genre, "genre");
}

void TestXmcdRecord::severalArtists()
{
    const DiscRecord record =
        parsed("DTITLE=Various / Harbour Songs\nTTITLE0=Ana Mar / Faro / Reprise\nTTITLE1=Interlude\n");
    QCOMPARE(record.album, u"Harbour Songs"_s);
    QCOMPARE(record.tracks[0].artist, u"Ana Mar"_s);
    QCOMPARE(record.tracks[0].title, u"Faro / Reprise"_s);
    QCOMPARE(record.tracks[1].artist, QString());
    QCOMPARE(record.tracks[1].title, u"Interlude"_s);
    QCOMPARE(record.artistOf(record.tracks[0]), u"Ana Mar"_s);
    QCOMPARE(record.artistOf(record.tracks[1]), u"Various"_s);
}

void TestXmcdRecord::severalArtistsWithoutAnArtist()
{
    const DiscRecord record = parsed("DTITLE=Various / Songs\nTTITLE0= / Faro\n");
    QCOMPARE(record.tracks[0].title, u"Faro"_s);
    QCOMPARE(record.artistOf(record.tracks[0]), u"Various"_s);
}

void TestXmcdRecord::titlesAllDividedAreOfSeveralArtists()
{
    const DiscRecord record = parsed("DTITLE=The Film / Soundtrack\nTTITLE0=A / x\nTTITLE1=B / y\n");
    QCOMPARE(record.tracks[1].artist, u"B"_s);
    QCOMPARE(record.tracks[1].title, u"y"_s);
}

void TestXmcdRecord::medleyStaysATitle()
{
    const DiscRecord record = parsed("DTITLE=The Band / Live\nTTITLE0=One / Two\nTTITLE1=Three\n");
    QCOMPARE(record.tracks[0].title, u"One / Two"_s);
    QCOMPARE(record.tracks[0].artist, QString());
    QCOMPARE(parsed("DTITLE=The Band / Single\nTTITLE0=One / Two\n").tracks[0].title, u"One / Two"_s);
}

void TestXmcdRecord::namesOfSeveralArtists_data()
{
    QTest::addColumn<QString>("artist");
    QTest::addColumn<bool>("areSeveral");
    for (const QString &name : {u"Various"_s, u"VARIOUS ARTISTS"_s, u"V.A."_s, u"V/A"_s, u"Varios artistas"_s,
             u"Varios Intérpretes"_s, u"Artistes divers"_s, u"(various)"_s})
        QTest::newRow(qPrintable(name)) << name << true;
    for (const QString &name : {u"Variousity"_s, u"Vanessa"_s, QString(), u"The Various"_s})
        QTest::newRow(qPrintable(u'-' + name)) << name << false;
}

void TestXmcdRecord::namesOfSeveralArtists()
{
    QFETCH(QString, artist);
    QTEST(cddb::isVariousArtists(artist), "areSeveral");
}

void TestXmcdRecord::latin1()
{
    const DiscRecord record = parsed("DTITLE=Bj\xF6rn / \xC9t\xE9\nTTITLE0=Ni\xF1o\n");
    QCOMPARE(record.artist, u"Björn"_s);
    QCOMPARE(record.album, u"Été"_s);
    QCOMPARE(record.tracks[0].title, u"Niño"_s);
}

void TestXmcdRecord::windowsQuotes()
{
    QCOMPARE(parsed("DTITLE=x\nTTITLE0=Don\x92t \x96 \x80\n").tracks[0].title, u"Don’t – €"_s);
}

void TestXmcdRecord::eachTextHasItsEncoding()
{
    const DiscRecord record = parsed("DTITLE=\xE5\xA4\x9C / \xC3\x89t\xC3\xA9\nTTITLE0=Ni\xF1o\n");
    QCOMPARE(record.artist, u"夜"_s);
    QCOMPARE(record.album, u"Été"_s);
    QCOMPARE(record.tracks[0].title, u"Niño"_s);
}

void TestXmcdRecord::missingTracksAreEmpty()
{
    const DiscRecord record = parsed("DTITLE=x\nTTITLE2=third\n");
    QCOMPARE(record.tracks.size(), size_t(3));
    QCOMPARE(record.tracks[0].title, QString());
    QCOMPARE(record.tracks[2].title, u"third"_s);
}

void TestXmcdRecord::strangeTrackNumbersAreLeftOut()
{
    const DiscRecord record = parsed("DTITLE=x\nTTITLE0=a\nTTITLE99=b\nTTITLE-1=c\nTTITLE=d\nTTITLE01=e\nTTITLE1x=f\n"
                                     "TTITLE4294967296=g\nTTITLE99999999999999999999=h\n=i\nno key\n");
    QCOMPARE(record.tracks.size(), size_t(1));
    QCOMPARE(record.tracks[0].title, u"a"_s);
    QCOMPARE(parsed("TTITLE98=last\n").tracks.size(), size_t(99));
}

void TestXmcdRecord::offsetsEndWithTheirList()
{
    const DiscRecord record =
        parsed("# Track frame offsets: \n# 150\n# 300\n#\n# 12 monkeys\n# Disc length: 9\nDTITLE=x\n");
    QCOMPARE(record.frameOffsets, (std::vector<qint64>{150, 300}));
    QCOMPARE(record.seconds, 9);
    QByteArray many = "# Track frame offsets:\n";
    for (int i = 0; i < 5000; ++i)
        many += "# 7\n";
    QCOMPARE(parsed(many + "DTITLE=x\n").frameOffsets.size(), size_t(MaximumTracks));
    QCOMPARE(parsed("# Disc length: 99999999999 seconds\nDTITLE=x\n").seconds, 0);
}

void TestXmcdRecord::noRecord_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("web page") << QByteArray("<html><body class=\"x\">Sign in</body></html>\n");
    QTest::newRow("nothing but comments") << QByteArray("# xmcd\n# Disc length: 5 seconds\n");
    QTest::newRow("nothing but a year") << QByteArray("DYEAR=1998\nDTITLE= \n");
    QTest::newRow("zeros") << QByteArray(1000, '\0');
}

void TestXmcdRecord::noRecord()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!parseXmcdRecord(bytes));
}

QTEST_GUILESS_MAIN(TestXmcdRecord)
#include "tst_xmcdrecord.moc"
