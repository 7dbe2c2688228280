// SPDX-License-Identifier: GPL-3.0-or-later
// The CD-database component: looks up a disc by its offsets or by a text, reads a single exact match at once, offers
// several, and understands older servers. Whatever a server does, exactly one signal reports the end, after the call
// has returned, and the last record stays.
#include "core/online/cddb/ufreedb.h"
#include "support/cddbserver.h"
#include "support/cddbtest.h"

#include <QTest>

#include <algorithm>
#include <utility>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

const ServedDisc &disc(int index)
{
    return CddbServer::discs().at(size_t(index));
}

enum Discs
{
    Gaviotas,
    Hiver,
    FirstTake,
    Reissue,
    Almost,
    Harbour,
    Japanese
};

QStringList titlesOf(const DiscRecord &record)
{
    QStringList titles;
    for (const DiscTrack &track : record.tracks)
        titles << track.title;
    return titles;
}

/// A component that asks a server, and its signals.
struct Client
{
    explicit Client(const CddbServer &server)
    {
        freedb.setIgnoresProxy(false);
        freedb.setUsesProxyForThisComputer(false);
        freedb.setTimeLimit(0);
        freedb.setServer(server.hostAndPort());
        freedb.setMail(u"ana@mail.example"_s);
        freedb.setClientName(u"ravlin"_s);
        freedb.setClientVersion(u"1.4"_s);
        QObject::connect(&freedb, &uFREEDB::notFound, &freedb, [this] { signalled << u"not found"_s; });
        QObject::connect(&freedb, &uFREEDB::choiceOffered, &freedb, [this] { signalled << u"choice"_s; });
        QObject::connect(&freedb, &uFREEDB::recordRead, &freedb, [this] { signalled << u"record"_s; });
        QObject::connect(&freedb, &uFREEDB::failed, &freedb, [this](const LookupFailure &what) {
            signalled << u"failed"_s;
            failure = what;
        });
    }

    /// The signal that ended the operation.
    QString ending()
    {
        if (!signalled.isEmpty() || !freedb.isBusy())
            return u"ended within the call"_s;
        [this] { QVERIFY(waitUntil([this] { return !freedb.isBusy(); })); }();
        return std::exchange(signalled, {}).join(u", ");
    }

    QString query(const QString &offsets, const QString &otherOffsets = {})
    {
        freedb.Query(offsets, otherOffsets);
        return ending();
    }

    QString search(const QString &text)
    {
        freedb.setSearchText(text);
        freedb.Search();
        return ending();
    }

    QString take(int match)
    {
        freedb.take(match);
        return ending();
    }

    uFREEDB freedb;
    QStringList signalled;
    LookupFailure failure;
};

} // namespace

class TestUFreedb : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { leaveProxiesOut(); }

    void exactMatchIsReadAtOnce();
    void serverIsToldWhoAsks();
    void severalExactMatchesAreOffered();
    void inexactMatchesAreOffered();
    void anotherMatchCanBeTaken();
    void matchThatThereIsNotIsNotTaken();
    void noDisc();
    void secondTryTakesTheUsualDelayOff();
    void secondTryMayFindNothingEither();
    void noSecondTryWhereTheFirstFinds();
    void lettersOfAllLanguages();
    void severalArtists();
    void olderServers_data();
    void olderServers();
    void levelIsRemembered();
    void latin1AtLevel6();
    void search_data();
    void search();
    void searchByArtistThenAlbum();
    void searchFindsSeveral();
    void searchFallsBackToAlbum();
    void searchFallsBackOnOlderServers();
    void searchThatNobodyKnows();
    void emptyTextDoesNothing();
    void faults_data();
    void faults();
    void failedSearchKeepsTheRecord();
    void badAddressIsToldLater();
    void badContentsAreToldLater();
    void cancelIsSilent();
    void cancelTakesBackWhatIsToBeToldLater();
    void nextQueryEndsTheOneBefore();
    void componentMayGoWhileBusy();
    void queryFromASignal();
    void encryptedServer();
};

void TestUFreedb::exactMatchIsReadAtOnce()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(disc(Gaviotas).offsetText()), u"record"_s);
    QCOMPARE(client.freedb.result(), 1);
    const DiscRecord &record = client.freedb.record();
    QCOMPARE(record.artist, u"Las Gaviotas"_s);
    QCOMPARE(record.album, u"Mareas Lentas"_s);
    QCOMPARE(record.year, u"1998"_s);
    QCOMPARE(record.genre, u"Rock"_s);
    QCOMPARE(record.extendedData, disc(Gaviotas).remark);
    QCOMPARE(client.freedb.trackCount(), 10);
    QCOMPARE(client.freedb.track(0).title, u"Puerto"_s);
    QCOMPARE(titlesOf(record), disc(Gaviotas).titles);
    QCOMPARE(client.freedb.contents()->discIdText(), u"92093e0a"_s);
    const auto differences = lengthDifferences(*client.freedb.contents(), record);
    QVERIFY(std::ranges::all_of(differences, [](const auto &difference) { return difference == 0; }));
}

void TestUFreedb::serverIsToldWhoAsks()
{
    const CddbServer server;
    Client client(server);
    client.query(disc(Gaviotas).offsetText());
    QCOMPARE(server.requests(),
        (QByteArrayList{"/~cddb/cddb.cgi?cmd=cddb+query+92093e0a+10+175+18469+34444+51154+70524+88841+104824+124686+"
                        "140966+159454+2368&hello=ana+mail.example+ravlin+1.4&proto=6",
            "/~cddb/cddb.cgi?cmd=cddb+read+rock+92093e0a&hello=ana+mail.example+ravlin+1.4&proto=6"}));
}

void TestUFreedb::severalExactMatchesAreOffered()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(disc(FirstTake).offsetText()), u"choice"_s);
    QCOMPARE(client.freedb.result(), 2);
    QVERIFY(client.freedb.matches()[0].isExact);
    QCOMPARE(client.freedb.matches()[1].album, u"First Take (reissue)"_s);
    QCOMPARE(client.freedb.trackCount(), 0);
    QCOMPARE(client.take(1), u"record"_s);
    QCOMPARE(client.freedb.record().year, u"1999"_s);
}

void TestUFreedb::inexactMatchesAreOffered()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(u"150 15050 30100 45150"_s), u"choice"_s);
    QCOMPARE(client.freedb.result(), 3);
    QVERIFY(!client.freedb.matches()[0].isExact);
    QCOMPARE(client.take(0), u"record"_s);
    const auto differences = lengthDifferences(*client.freedb.contents(), client.freedb.record());
    QCOMPARE(differences, (std::vector<std::optional<qint64>>{50, -50, -75}));
    // A single inexact match is a choice, too.
    QCOMPARE(client.query(u"150 20000 40000 60100"_s), u"choice"_s);
    QCOMPARE(client.freedb.result(), 1);
}

void TestUFreedb::anotherMatchCanBeTaken()
{
    const CddbServer server;
    Client client(server);
    client.query(disc(FirstTake).offsetText());
    QCOMPARE(client.take(0), u"record"_s);
    QCOMPARE(client.take(1), u"record"_s);
    QCOMPARE(client.freedb.record().album, u"First Take (reissue)"_s);
    QCOMPARE(client.freedb.result(), 2);
}

void TestUFreedb::matchThatThereIsNotIsNotTaken()
{
    const CddbServer server;
    Client client(server);
    client.query(disc(FirstTake).offsetText());
    for (const int match : {-1, 2}) {
        client.freedb.take(match);
        QVERIFY(!client.freedb.isBusy());
    }
}

void TestUFreedb::noDisc()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(u"150 1150 9150"_s), u"not found"_s);
    QCOMPARE(client.freedb.result(), 0);
    QCOMPARE(client.freedb.trackCount(), 0);
}

void TestUFreedb::secondTryTakesTheUsualDelayOff()
{
    const CddbServer server;
    Client client(server);
    std::vector<PlayedAudio> files;
    const std::vector<qint64> &marks = disc(Harbour).marks;
    constexpr qint64 SamplesOfAFrame = 588;
    for (size_t track = 0; track + 1 < marks.size(); ++track)
        files.push_back({(marks[track + 1] - marks[track]) * SamplesOfAFrame + UsualEncoderSamples, 44100, false});
    // A disc so long that the server does not take the first offsets for another of its discs.
    const QString first = u"150 1150 9150"_s;
    QCOMPARE(client.query(first, offsetTextWithUsualDelay(files)), u"record"_s);
    QCOMPARE(client.freedb.record().album, u"Harbour Songs"_s);
    QCOMPARE(client.freedb.contents()->leadOut(), marks.back());
    QCOMPARE(server.commands().size(), 3);
}

void TestUFreedb::secondTryMayFindNothingEither()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(u"150 1150 9150"_s, u"150 1140 9130"_s), u"not found"_s);
    QCOMPARE(server.commands().size(), 2);
    QCOMPARE(client.query(u"150 1150 9150"_s, u"no offsets"_s), u"not found"_s);
}

void TestUFreedb::noSecondTryWhereTheFirstFinds()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(disc(Gaviotas).offsetText(), u"150 1140 9130"_s), u"record"_s);
    QCOMPARE(server.commands().size(), 2);
}

void TestUFreedb::lettersOfAllLanguages()
{
    const CddbServer server;
    Client client(server);
    for (const int index : {Hiver, Japanese}) {
        QCOMPARE(client.query(disc(index).offsetText()), u"record"_s);
        QCOMPARE(client.freedb.record().artist, disc(index).artist);
        QCOMPARE(titlesOf(client.freedb.record()), disc(index).titles);
    }
}

void TestUFreedb::severalArtists()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(disc(Harbour).offsetText()), u"record"_s);
    QCOMPARE(titlesOf(client.freedb.record()), (QStringList{u"Faro"_s, u"Phare"_s, u"Interlude"_s}));
    QCOMPARE(client.freedb.track(1).artist, u"Les Marées"_s);
}

void TestUFreedb::olderServers_data()
{
    QTest::addColumn<int>("level");
    QTest::addColumn<QString>("genre");
    QTest::newRow("5") << 5 << u"Folk"_s;
    QTest::newRow("1") << 1 << QString();
}

void TestUFreedb::olderServers()
{
    QFETCH(int, level);
    CddbServer server;
    server.setNewestLevel(level);
    Client client(server);
    QCOMPARE(client.query(disc(Hiver).offsetText()), u"record"_s);
    const DiscRecord &record = client.freedb.record();
    QCOMPARE(record.artist, u"Marie L'Été"_s);
    QCOMPARE(record.year, u"2003"_s);
    QTEST(record.genre, "genre");
    QCOMPARE(record.tracks[5].title, u"Garçon"_s);
    // Letters outside Latin-1 could not be sent by the server.
    QCOMPARE(record.tracks[6].title, u"C?ur"_s);
}

void TestUFreedb::levelIsRemembered()
{
    CddbServer server;
    server.setNewestLevel(1);
    Client client(server);
    client.query(disc(Hiver).offsetText());
    QCOMPARE(server.requests().size(), 4); // the query at levels 6, 5 and 1, and the read
    client.query(disc(Gaviotas).offsetText());
    QCOMPARE(server.requests().size(), 6);
    client.freedb.setServer(server.hostAndPort());
    client.query(disc(Gaviotas).offsetText());
    QCOMPARE(server.requests().size(), 10);
}

void TestUFreedb::latin1AtLevel6()
{
    CddbServer server;
    server.setAlwaysLatin1(true);
    Client client(server);
    QCOMPARE(client.query(disc(Hiver).offsetText()), u"record"_s);
    QCOMPARE(client.freedb.record().artist, u"Marie L'Été"_s);
    QCOMPARE(client.freedb.record().genre, u"Folk"_s);
}

void TestUFreedb::search_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("ending");
    QTest::addColumn<QString>("album");
    QTest::newRow("artist and album") << u"the quiet three / reissue"_s << u"record"_s << u"First Take (reissue)"_s;
    QTest::newRow("with a hyphen") << u"gaviotas - mareas"_s << u"record"_s << u"Mareas Lentas"_s;
    QTest::newRow("accents") << u"l'été"_s << u"record"_s << u"Côte d'Hiver"_s;
    QTest::newRow("other letters") << u"夜の"_s << u"record"_s << u"静かな海"_s;
    QTest::newRow("signs of addresses") << u"a&b=c#d%e+f"_s << u"not found"_s << QString();
    QTest::newRow("nothing found") << u"no such artist / at all"_s << u"not found"_s << QString();
}

void TestUFreedb::search()
{
    QFETCH(QString, text);
    const CddbServer server;
    Client client(server);
    QTEST(client.search(text), "ending");
    QTEST(client.freedb.record().album, "album");
}

void TestUFreedb::searchByArtistThenAlbum()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.search(u"Mareas Lentas"_s), u"record"_s);
    QCOMPARE(client.freedb.record().artist, u"Las Gaviotas"_s);
    QCOMPARE(server.commands(), (QByteArrayList{"search", "search", "cddb read rock 92093e0a"}));
    QVERIFY(server.requests()[0].contains("&artist=Mareas+Lentas&album=&"));
    QVERIFY(server.requests()[1].contains("&artist=&album=Mareas+Lentas&"));
}

void TestUFreedb::searchFindsSeveral()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.search(u"the quiet three"_s), u"choice"_s);
    QCOMPARE(client.freedb.result(), 2);
    QVERIFY(!client.freedb.matches()[0].isExact);
    QCOMPARE(client.take(0), u"record"_s);
    QCOMPARE(client.freedb.record().year, u"1961"_s);
}

void TestUFreedb::searchFallsBackToAlbum()
{
    CddbServer server;
    Client client(server);
    server.setKnowsSearch(false);
    QCOMPARE(client.search(u"las gaviotas / mareas"_s), u"record"_s);
    QCOMPARE(client.search(u"mareas lentas"_s), u"record"_s);
    QCOMPARE(client.search(u"the quiet three"_s), u"choice"_s);
    QCOMPARE(client.search(u"nobody"_s), u"not found"_s);
    QVERIFY(server.commands().contains("cddb album las gaviotas / mareas"));
    server.setKnowsSearch(true);
    server.setFault(Fault::HttpRefused, "search");
    QCOMPARE(client.search(u"las gaviotas / mareas"_s), u"record"_s);
}

void TestUFreedb::searchFallsBackOnOlderServers()
{
    CddbServer server;
    Client client(server);
    server.setKnowsSearch(false);
    server.setNewestLevel(5);
    QCOMPARE(client.search(u"Marie L'Été / Côte"_s), u"record"_s);
    QCOMPARE(client.freedb.record().album, u"Côte d'Hiver"_s);
}

void TestUFreedb::searchThatNobodyKnows()
{
    CddbServer server;
    Client client(server);
    server.setKnowsSearch(false);
    server.setKnowsAlbum(false);
    QCOMPARE(client.search(u"las gaviotas"_s), u"failed"_s);
    QCOMPARE(client.failure.kind, LookupFailureKind::Refused);
}

void TestUFreedb::emptyTextDoesNothing()
{
    const CddbServer server;
    Client client(server);
    for (const QString &text : {QString(), u"  "_s, u" / "_s}) {
        client.freedb.setSearchText(text);
        client.freedb.Search();
        QVERIFY(!client.freedb.isBusy());
    }
    client.query(disc(Gaviotas).offsetText());
    client.freedb.Search();
    QCOMPARE(client.freedb.result(), 1);
    QCOMPARE(server.commands().size(), 2);
}

void TestUFreedb::faults_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<LookupFailureKind>("kind");
    using enum LookupFailureKind;
    QTest::newRow("hangs up") << Fault::HangsUp << Incomplete;
    QTest::newRow("web page") << Fault::WebPage << LookupFailureKind::Garbage;
    QTest::newRow("zeros") << Fault::Zeros << LookupFailureKind::Garbage;
    QTest::newRow("half sent") << Fault::HalfSent << Incomplete;
    QTest::newRow("list cut") << Fault::CutList << Incomplete;
    QTest::newRow("too long") << Fault::TooLong << TooLarge;
    QTest::newRow("endless") << Fault::Endless << TooLarge;
    QTest::newRow("redirect loop") << Fault::RedirectLoop << TooManyRedirects;
    QTest::newRow("redirect to a file") << Fault::RedirectToFile << ForeignRedirect;
    QTest::newRow("compressed") << Fault::Compressed << LookupFailureKind::Garbage;
    QTest::newRow("HTTP 503") << Fault::HttpRefused << HttpStatus;
    QTest::newRow("HTTP 401") << Fault::HttpLogin << HttpStatus;
    QTest::newRow("401") << Fault::Code401 << NoEntry;
    QTest::newRow("402") << Fault::Code402 << ServerTrouble;
    QTest::newRow("403") << Fault::Code403 << BrokenEntry;
    QTest::newRow("409") << Fault::Code409 << NotGreeted;
    QTest::newRow("500") << Fault::Code500 << Refused;
    QTest::newRow("530") << Fault::Code530 << ServerTrouble;
}

void TestUFreedb::faults()
{
    QFETCH(Fault, fault);
    QFETCH(LookupFailureKind, kind);
    CddbServer server;
    Client client(server);
    QCOMPARE(client.query(disc(Hiver).offsetText()), u"record"_s);
    for (const QByteArray &command : {QByteArray("cddb query"), QByteArray("cddb read")}) {
        server.setFault(fault, command);
        QCOMPARE(client.query(disc(FirstTake).offsetText()), command.endsWith("query") ? u"failed"_s : u"choice"_s);
        if (command.endsWith("read"))
            QCOMPARE(client.take(0), u"failed"_s);
        QCOMPARE(client.failure.kind, kind);
        QCOMPARE(client.freedb.record().album, u"Côte d'Hiver"_s);
    }
    server.setFault(Fault::None);
    QCOMPARE(client.query(disc(Gaviotas).offsetText()), u"record"_s);
}

void TestUFreedb::failedSearchKeepsTheRecord()
{
    const CddbServer server;
    Client client(server);
    client.query(disc(Hiver).offsetText());
    QCOMPARE(client.search(u"nobody"_s), u"not found"_s);
    QCOMPARE(client.freedb.result(), 0);
    QCOMPARE(client.freedb.record().album, u"Côte d'Hiver"_s);
    QVERIFY(client.freedb.contents());
}

void TestUFreedb::badAddressIsToldLater()
{
    const CddbServer server;
    Client client(server);
    client.freedb.setServer(u"ftp://db.example"_s);
    QCOMPARE(client.query(disc(Hiver).offsetText()), u"failed"_s);
    QCOMPARE(client.failure.kind, LookupFailureKind::BadAddress);
    QCOMPARE(client.search(u"x"_s), u"failed"_s);
    QVERIFY(server.requests().isEmpty());
}

void TestUFreedb::badContentsAreToldLater()
{
    const CddbServer server;
    Client client(server);
    QCOMPARE(client.query(u"150"_s), u"failed"_s);
    QCOMPARE(client.failure.kind, LookupFailureKind::BadContents);
    QVERIFY(server.requests().isEmpty());
}

void TestUFreedb::cancelIsSilent()
{
    CddbServer server;
    server.setFault(Fault::Silence);
    Client client(server);
    client.freedb.Query(disc(Hiver).offsetText());
    QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, PatientWait);
    client.freedb.cancel();
    QVERIFY(!client.freedb.isBusy());
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
    QCOMPARE(client.signalled, QStringList());
}

void TestUFreedb::cancelTakesBackWhatIsToBeToldLater()
{
    const CddbServer server;
    Client client(server);
    client.freedb.Query(u"150"_s);
    client.freedb.cancel();
    QCOMPARE(client.query(disc(Gaviotas).offsetText()), u"record"_s);
}

void TestUFreedb::nextQueryEndsTheOneBefore()
{
    const CddbServer server;
    Client client(server);
    client.freedb.Query(disc(Hiver).offsetText());
    QCOMPARE(client.query(disc(Gaviotas).offsetText()), u"record"_s);
    QCOMPARE(client.freedb.record().album, u"Mareas Lentas"_s);
}

void TestUFreedb::componentMayGoWhileBusy()
{
    CddbServer server;
    server.setFault(Fault::Silence);
    {
        Client client(server);
        client.freedb.Query(disc(Hiver).offsetText());
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, PatientWait);
    }
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
}

void TestUFreedb::queryFromASignal()
{
    const CddbServer server;
    Client client(server);
    QObject::connect(&client.freedb, &uFREEDB::choiceOffered, &client.freedb, [&client] { client.freedb.take(1); });
    QCOMPARE(client.query(disc(FirstTake).offsetText()), u"choice, record"_s);
    QCOMPARE(client.freedb.record().album, u"First Take (reissue)"_s);
}

void TestUFreedb::encryptedServer()
{
    const CddbServer server(CddbServer::Security::Encrypted);
    Client wary(server);
    wary.freedb.setServer(server.url());
    QCOMPARE(wary.query(disc(Gaviotas).offsetText()), u"failed"_s);
    QCOMPARE(wary.failure.kind, LookupFailureKind::Certificate);
    const TrustedCertificate trusted(CddbServer::certificate());
    Client client(server);
    client.freedb.setServer(server.url());
    QCOMPARE(client.query(disc(Gaviotas).offsetText()), u"record"_s);
}

QTEST_GUILESS_MAIN(TestUFreedb)
#include "tst_ufreedb.moc"
