// SPDX-License-Identifier: GPL-3.0-or-later
// The CDDB protocol: which text is a server's address, how each question is written at each level, and what each answer
// means, whatever a server sends.
#include "core/online/cddb/cddbprotocol.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::cddb;
using namespace Qt::StringLiterals;

namespace {

const QString TenTracks = u"175 18469 34444 51154 70524 88841 104824 124686 140966 159454 177600"_s;

Questions questions(int level = NewestLevel)
{
    return {serverUrl(u"db.example"_s).value(), Hello::of(u"ana@mail.example"_s, u"ravlin"_s, u"1.4"_s), level};
}

QString addressOf(const QString &server)
{
    const LookupResult<QUrl> url = serverUrl(server);
    return url ? url->toString() : u"refused"_s;
}

} // namespace

Q_DECLARE_METATYPE(ravlin::LookupFailureKind)

class TestCddbProtocol : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void addresses_data();
    void addresses();
    void greeting_data();
    void greeting();
    void query();
    void read();
    void search();
    void album();
    void olderLevelsAskInLatin1();
    void ownPathKeepsItsLetters();
    void searchWords_data();
    void searchWords();
    void oneExactMatch();
    void severalMatches();
    void linesThatAreNoMatchAreLeftOut();
    void noMatch();
    void searchList();
    void searchAnsweredLikeAQuery();
    void record();
    void refusals_data();
    void refusals();
    void badAnswers_data();
    void badAnswers();
    void messagesAreShort();
};

void TestCddbProtocol::addresses_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("address");
    QTest::newRow("host") << u"gnudb.gnudb.org"_s << u"http://gnudb.gnudb.org/~cddb/cddb.cgi"_s;
    QTest::newRow("host and port") << u" db.example:8080 "_s << u"http://db.example:8080/~cddb/cddb.cgi"_s;
    QTest::newRow("number") << u"127.0.0.1:99"_s << u"http://127.0.0.1:99/~cddb/cddb.cgi"_s;
    QTest::newRow("newer number") << u"[::1]:99"_s << u"http://[::1]:99/~cddb/cddb.cgi"_s;
    QTest::newRow("whole") << u"https://db.example/cgi/x.cgi"_s << u"https://db.example/cgi/x.cgi"_s;
    QTest::newRow("without path") << u"https://db.example:444"_s << u"https://db.example:444/~cddb/cddb.cgi"_s;
    QTest::newRow("with a bare slash") << u"http://db.example/"_s << u"http://db.example/~cddb/cddb.cgi"_s;
    QTest::newRow("host and path") << u"db.example/x.cgi"_s << u"http://db.example/x.cgi"_s;
    QTest::newRow("with a question") << u"http://db.example/x.cgi?cmd=a#b"_s << u"http://db.example/x.cgi"_s;
    QTest::newRow("upper case") << u"HTTP://DB.example"_s << u"http://db.example/~cddb/cddb.cgi"_s;
    for (const QString &wrong : {QString(), u"  "_s, u"ftp://db.example"_s, u"file:///etc/passwd"_s, u"http://"_s,
             u"db example"_s, u"db.example:port"_s, u"db.example:99999"_s, u"db.example:0"_s, u":80"_s, u"a\nb"_s})
        QTest::newRow(qPrintable(u"no address: "_s + wrong)) << wrong << u"refused"_s;
}

void TestCddbProtocol::addresses()
{
    QFETCH(QString, server);
    QTEST(addressOf(server), "address");
    if (const LookupResult<QUrl> url = serverUrl(server); !url)
        QCOMPARE(url.error().kind, LookupFailureKind::BadAddress);
}

void TestCddbProtocol::greeting_data()
{
    QTest::addColumn<QString>("mail");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("host");
    QTest::newRow("usual") << u"ana@mail.example"_s << u"ana"_s << u"mail.example"_s;
    QTest::newRow("with blanks") << u" ana maria@mail example "_s << u"ana_maria"_s << u"mail_example"_s;
    QTest::newRow("no address") << u"ana"_s << u"ana"_s << u"localhost"_s;
    QTest::newRow("no host") << u"ana@"_s << u"ana"_s << u"localhost"_s;
    QTest::newRow("no user") << u"@mail.example"_s << u"unknown"_s << u"mail.example"_s;
    QTest::newRow("nothing") << QString() << u"unknown"_s << u"localhost"_s;
    QTest::newRow("a line break") << u"ana\n&cmd=x@h"_s << u"ana_&cmd=x"_s << u"h"_s;
}

void TestCddbProtocol::greeting()
{
    QFETCH(QString, mail);
    const Hello hello = Hello::of(mail, u"ravlin"_s, u"1.4"_s);
    QTEST(hello.user, "user");
    QTEST(hello.host, "host");
}

void TestCddbProtocol::query()
{
    QCOMPARE(questions().query(DiscContents::parse(TenTracks).value()).toEncoded(),
        "http://db.example/~cddb/cddb.cgi?cmd=cddb+query+92093e0a+10+175+18469+34444+51154+70524+88841+104824+124686+"
        "140966+159454+2368&hello=ana+mail.example+ravlin+1.4&proto=6");
}

void TestCddbProtocol::read()
{
    QCOMPARE(questions().read({u"rock"_s, u"92093e0a"_s, {}, {}, true}).toEncoded(),
        "http://db.example/~cddb/cddb.cgi?cmd=cddb+read+rock+92093e0a&hello=ana+mail.example+ravlin+1.4&proto=6");
}

void TestCddbProtocol::search()
{
    QCOMPARE(questions().search({u"Añil & co+"_s, u"100% = a#b?"_s}).toEncoded(),
        "http://db.example/~cddb/cddb.cgi?cmd=search&artist=A%C3%B1il+%26+co%2B&album=100%25+%3D+a%23b%3F"
        "&hello=ana+mail.example+ravlin+1.4&proto=6");
}

void TestCddbProtocol::album()
{
    QVERIFY(questions().album({u"a b"_s, u"c"_s}).toEncoded().contains("?cmd=cddb+album+a+b+%2F+c&hello="));
    QVERIFY(questions().album({u"a b"_s, {}}).toEncoded().contains("?cmd=cddb+album+a+b&hello="));
    QVERIFY(questions().album({{}, u"c"_s}).toEncoded().contains("?cmd=cddb+album+c&hello="));
}

void TestCddbProtocol::olderLevelsAskInLatin1()
{
    const QByteArray address = questions(LatinLevel).search({u"Añil"_s, u"夜"_s}).toEncoded();
    QVERIFY2(address.contains("artist=A%F1il&album=%3F&"), address.constData());
    QVERIFY(address.endsWith("&proto=5"));
}

void TestCddbProtocol::ownPathKeepsItsLetters()
{
    const Questions own(serverUrl(u"http://db.example/a%2Fb%20c.cgi"_s).value(), Hello(), 6);
    QVERIFY(
        own.read({u"rock"_s, u"92093e0a"_s, {}, {}, true}).toEncoded().startsWith("http://db.example/a%2Fb%20c.cgi?"));
}

void TestCddbProtocol::searchWords_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QString>("album");
    QTest::newRow("slash") << u"Las Gaviotas / Mareas"_s << u"Las Gaviotas"_s << u"Mareas"_s;
    QTest::newRow("hyphen") << u"Las Gaviotas - Mareas"_s << u"Las Gaviotas"_s << u"Mareas"_s;
    QTest::newRow("slash before hyphen") << u"A - B / C"_s << u"A - B"_s << u"C"_s;
    QTest::newRow("one") << u" Las Gaviotas "_s << u"Las Gaviotas"_s << QString();
    QTest::newRow("hyphen in a word") << u"Hip-Hop"_s << u"Hip-Hop"_s << QString();
}

void TestCddbProtocol::searchWords()
{
    QFETCH(QString, text);
    const SearchWords words = SearchWords::of(text);
    QTEST(words.artist, "artist");
    QTEST(words.album, "album");
}

void TestCddbProtocol::oneExactMatch()
{
    const std::vector<Match> expected{{u"rock"_s, u"92093e0a"_s, u"Las Gaviotas"_s, u"Mareas / Lentas"_s, true}};
    QCOMPARE(readQueryAnswer("200 rock 92093E0A Las Gaviotas / Mareas / Lentas\r\n").value(), expected);
    QCOMPARE(readQueryAnswer("\xEF\xBB\xBF\r\n200 rock  92093e0a  Las Gaviotas / Mareas / Lentas").value(), expected);
}

void TestCddbProtocol::severalMatches()
{
    for (const bool areExact : {true, false}) {
        const QByteArray code = areExact ? "210" : "211";
        const std::vector<Match> matches =
            readQueryAnswer(code + " Found matches, list follows (until terminating `.')\r\nrock 92093e0a A / B\r\n"
                                   "misc 92093e0b Ni\xF1o\r\n.\r\n")
                .value();
        QCOMPARE(matches, (std::vector<Match>{{u"rock"_s, u"92093e0a"_s, u"A"_s, u"B"_s, areExact},
                              {u"misc"_s, u"92093e0b"_s, u"Niño"_s, u"Niño"_s, areExact}}));
    }
}

void TestCddbProtocol::linesThatAreNoMatchAreLeftOut()
{
    const std::vector<Match> matches = readQueryAnswer("211 list\n\nrock\nrock 123 short\nrock 92093e0g no digit\n"
                                                       "ro&ck 92093e0a x\n<b> 92093e0a x\nrock 92093e0a A / B\n.\n")
                                           .value();
    QCOMPARE(matches.size(), size_t(1));
    QCOMPARE(matches[0].artist, u"A"_s);
}

void TestCddbProtocol::noMatch()
{
    QVERIFY(readQueryAnswer("202 No match for disc ID 92093e0a.\r\n").value().empty());
    QVERIFY(readQueryAnswer("202").value().empty());
    QVERIFY(readSearchAnswer("202 No match found.\r\n").value().empty());
}

void TestCddbProtocol::searchList()
{
    for (const char *code :
        {"200 Found, list follows", "210 Found exact matches", "211 Found inexact matches", "200"}) {
        const std::vector<Match> matches =
            readSearchAnswer(QByteArray(code) + "\r\nrock 92093e0a A / B\r\nfolk 820b0109 C / D\r\n.\r\n").value();
        QCOMPARE(matches.size(), size_t(2));
        QCOMPARE(matches[1].album, u"D"_s);
        QVERIFY(!matches[0].isExact);
    }
}

void TestCddbProtocol::searchAnsweredLikeAQuery()
{
    const std::vector<Match> matches = readSearchAnswer("200 rock 92093e0a A / B\r\n").value();
    QCOMPARE(matches, (std::vector<Match>{{u"rock"_s, u"92093e0a"_s, u"A"_s, u"B"_s, false}}));
}

void TestCddbProtocol::record()
{
    const DiscRecord record =
        readRecordAnswer("210 rock 92093e0a CD database entry follows\r\nDTITLE=A / B\r\nTTITLE0=.x\r\n.\r\nDYEAR=1999")
            .value();
    QCOMPARE(record.album, u"B"_s);
    QCOMPARE(record.tracks[0].title, u".x"_s);
    QCOMPARE(record.year, QString());
}

void TestCddbProtocol::refusals_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<LookupFailureKind>("kind");
    using enum LookupFailureKind;
    QTest::newRow("401") << QByteArray("401 No such CD entry in database.\r\n") << NoEntry;
    QTest::newRow("402") << QByteArray("402 Server error.\r\n") << ServerTrouble;
    QTest::newRow("403") << QByteArray("403 Database entry is corrupt.\r\n") << BrokenEntry;
    QTest::newRow("409") << QByteArray("409 No handshake.\r\n") << NotGreeted;
    QTest::newRow("500") << QByteArray("500 Command syntax error.\r\n") << Refused;
    QTest::newRow("501") << QByteArray("501 Illegal protocol level.\r\n") << Refused;
    QTest::newRow("530") << QByteArray("530 Server error, server timeout.\r\n") << ServerTrouble;
    QTest::newRow("432") << QByteArray("432 No connections allowed\r\n") << Refused;
    QTest::newRow("nonsense code") << QByteArray("999 Nine\r\n") << Garbage;
    QTest::newRow("another success") << QByteArray("230 Closing connection\r\n") << Garbage;
}

void TestCddbProtocol::refusals()
{
    QFETCH(QByteArray, answer);
    QFETCH(LookupFailureKind, kind);
    for (const LookupFailure &failure :
        {readQueryAnswer(answer).error(), readSearchAnswer(answer).error(), readRecordAnswer(answer).error()}) {
        QCOMPARE(failure.kind, kind);
        QCOMPARE(failure.detail, QString::fromLatin1(answer).trimmed());
        QCOMPARE(mayUnderstandOlderLevel(failure), kind == LookupFailureKind::Refused);
    }
    QCOMPARE(readRecordAnswer("202 No match\r\n").error().kind, LookupFailureKind::Garbage);
}

void TestCddbProtocol::badAnswers_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<LookupFailureKind>("kind");
    using enum LookupFailureKind;
    QTest::newRow("nothing") << QByteArray() << Incomplete;
    QTest::newRow("empty lines") << QByteArray("\r\n\r\n") << Incomplete;
    QTest::newRow("web page") << QByteArray("<!DOCTYPE html>\n<html>") << Garbage;
    QTest::newRow("code cut") << QByteArray("21") << Garbage;
    QTest::newRow("number too long") << QByteArray("2100 list\n.\n") << Garbage;
    QTest::newRow("zeros") << QByteArray(5000, '\0') << Garbage;
    QTest::newRow("list cut") << QByteArray("210 list follows\r\nrock 92093e0a A / B\r\n") << Incomplete;
    QTest::newRow("list cut in its last line") << QByteArray("210 list follows\r\nrock 92093e0a A / ") << Incomplete;
    QTest::newRow("list cut at once") << QByteArray("210 list follows\r\n") << Incomplete;
    QTest::newRow("empty list") << QByteArray("210 list follows\r\n.\r\n") << Garbage;
    QTest::newRow("list of garbage") << QByteArray("210 list follows\r\nx\r\ny z\r\n.\r\n") << Garbage;
}

void TestCddbProtocol::badAnswers()
{
    QFETCH(QByteArray, answer);
    QTEST(readQueryAnswer(answer).error().kind, "kind");
    QTEST(readSearchAnswer(answer).error().kind, "kind");
    QTEST(readRecordAnswer(answer).error().kind, "kind");
}

void TestCddbProtocol::messagesAreShort()
{
    const QByteArray page = "<html>" + QByteArray(100'000, 'x');
    QVERIFY(readQueryAnswer(page).error().detail.size() <= 200);
    QVERIFY(!readQueryAnswer("\x1b[2J\a bad\n").error().detail.contains(u'\x1b'));
}

QTEST_GUILESS_MAIN(TestCddbProtocol)
#include "tst_cddbprotocol.moc"
