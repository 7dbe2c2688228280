// SPDX-License-Identifier: GPL-3.0-or-later
// An answer is fetched whole or a failure says why: late, too long, sent elsewhere, refused, cut off, without a
// certificate that is trusted. The system's proxy is used as wanted. Nothing here leaves this computer.
#include "core/online/cddb/cddbfetch.h"
#include "support/cddbserver.h"
#include "support/cddbtest.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

using Fetched = LookupResult<QByteArray>;

/// A question that the server answers with two lines.
QUrl question(const CddbServer &server)
{
    return QUrl(server.url() + u"?cmd=cddb+album+Gaviotas&hello=a+b+c+d&proto=6"_s);
}

const QByteArray Answer = "211 Found inexact matches, list follows (until terminating `.')\r\n"
                          "rock 92093e0a Las Gaviotas / Mareas Lentas\r\n.\r\n";

} // namespace

class TestCddbFetch : public QObject
{
    Q_OBJECT

private:
    /// The outcome of one fetch.
    static Fetched fetched(CddbFetch &fetch, const QUrl &url)
    {
        std::optional<Fetched> outcome;
        fetch.get(url, [&outcome](const Fetched &result) { outcome = result; });
        if (outcome)
            qFatal("told before it was asked");
        [&] { QTRY_VERIFY_WITH_TIMEOUT(outcome, PatientWait); }();
        return outcome.value_or(tl::unexpected(LookupFailure{LookupFailureKind::Garbage, u"no end"_s}));
    }

private Q_SLOTS:
    void initTestCase() { leaveProxiesOut(); }
    void cleanup() { leaveProxiesOut(); }

    void wholeAnswer();
    void redirectIsFollowed();
    void faults_data();
    void faults();
    void redirectsAreCounted();
    void lateAnswer_data();
    void lateAnswer();
    void answerAsLongAsAllowed();
    void nobodyThere();
    void cancelledFetchTellsNothing();
    void nextFetchEndsTheOneBefore();
    void fetchEndsWithItsObject();
    void certificateThatNobodyTrusts();
    void certificateOfAnotherName();
    void encryptedAnswer();
    void neverFromEncryptedToPlain();
    void systemProxyIsUsed();
    void proxyIsLeftOutForThisComputer();
    void proxyIsIgnored();
    void proxyThatIsNotThere();
};

void TestCddbFetch::wholeAnswer()
{
    const CddbServer server;
    CddbFetch fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(!fetch.isBusy());
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
}

void TestCddbFetch::redirectIsFollowed()
{
    CddbServer server;
    server.setFault(Fault::RedirectOnce);
    CddbFetch fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QCOMPARE(server.requests().size(), 2);
}

void TestCddbFetch::faults_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<LookupFailureKind>("kind");
    using enum LookupFailureKind;
    QTest::newRow("hangs up") << Fault::HangsUp << Incomplete;
    QTest::newRow("half sent") << Fault::HalfSent << Incomplete;
    QTest::newRow("announces too much") << Fault::TooLong << TooLarge;
    QTest::newRow("sends without end") << Fault::Endless << TooLarge;
    QTest::newRow("redirects for ever") << Fault::RedirectLoop << TooManyRedirects;
    QTest::newRow("redirects to a file") << Fault::RedirectToFile << InsecureRedirect;
    QTest::newRow("refuses") << Fault::HttpRefused << HttpStatus;
    QTest::newRow("wants a login") << Fault::HttpLogin << HttpStatus;
}

void TestCddbFetch::faults()
{
    QFETCH(Fault, fault);
    QFETCH(LookupFailureKind, kind);
    CddbServer server;
    server.setFault(fault);
    CddbFetch fetch;
    const LookupFailure failure = fetched(fetch, question(server)).error();
    QCOMPARE(failure.kind, kind);
    QVERIFY(!fetch.isBusy());
    server.setFault(Fault::None);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
}

void TestCddbFetch::redirectsAreCounted()
{
    CddbServer server;
    server.setFault(Fault::RedirectLoop);
    CddbFetch fetch;
    QCOMPARE(fetched(fetch, question(server)).error().kind, LookupFailureKind::TooManyRedirects);
    QCOMPARE(server.requests().size(), 1 + FetchSettings().redirectLimit);
}

void TestCddbFetch::lateAnswer_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::newRow("never answers") << Fault::Silence;
    QTest::newRow("stops in the middle") << Fault::Stalls;
}

void TestCddbFetch::lateAnswer()
{
    QFETCH(Fault, fault);
    CddbServer server;
    server.setFault(fault);
    CddbFetch fetch;
    FetchSettings settings;
    settings.timeLimit = std::chrono::milliseconds(200);
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).error().kind, LookupFailureKind::TimedOut);
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
}

void TestCddbFetch::answerAsLongAsAllowed()
{
    const CddbServer server;
    CddbFetch fetch;
    FetchSettings settings;
    settings.sizeLimit = Answer.size();
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    --settings.sizeLimit;
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).error().kind, LookupFailureKind::TooLarge);
}

void TestCddbFetch::nobodyThere()
{
    QUrl url;
    {
        const CddbServer server;
        url = question(server);
    }
    CddbFetch fetch;
    const LookupFailure failure = fetched(fetch, url).error();
    QCOMPARE(failure.kind, LookupFailureKind::NoConnection);
    QVERIFY(!failure.detail.isEmpty());
}

void TestCddbFetch::cancelledFetchTellsNothing()
{
    CddbServer server;
    server.setFault(Fault::Silence);
    CddbFetch fetch;
    bool isTold = false;
    fetch.get(question(server), [&isTold](const Fetched &) { isTold = true; });
    QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, PatientWait);
    fetch.cancel();
    QVERIFY(!fetch.isBusy());
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
    QVERIFY(!isTold);
}

void TestCddbFetch::nextFetchEndsTheOneBefore()
{
    CddbServer silent;
    silent.setFault(Fault::Silence);
    const CddbServer server;
    CddbFetch fetch;
    bool isTold = false;
    fetch.get(question(silent), [&isTold](const Fetched &) { isTold = true; });
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(!isTold);
}

void TestCddbFetch::fetchEndsWithItsObject()
{
    CddbServer server;
    server.setFault(Fault::Silence);
    bool isTold = false;
    {
        CddbFetch fetch;
        fetch.get(question(server), [&isTold](const Fetched &) { isTold = true; });
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, PatientWait);
    }
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
    QVERIFY(!isTold);
}

void TestCddbFetch::certificateThatNobodyTrusts()
{
    const CddbServer server(CddbServer::Security::Encrypted);
    CddbFetch fetch;
    const LookupFailure failure = fetched(fetch, question(server)).error();
    QCOMPARE(failure.kind, LookupFailureKind::Certificate);
    QVERIFY(!failure.detail.isEmpty());
    QVERIFY(server.requests().isEmpty());
}

void TestCddbFetch::certificateOfAnotherName()
{
    const TrustedCertificate trusted(CddbServer::certificate());
    const CddbServer server(CddbServer::Security::EncryptedElsewhere);
    CddbFetch fetch;
    QCOMPARE(fetched(fetch, question(server)).error().kind, LookupFailureKind::Certificate);
    QVERIFY(server.requests().isEmpty());
}

void TestCddbFetch::encryptedAnswer()
{
    const TrustedCertificate trusted(CddbServer::certificate());
    const CddbServer server(CddbServer::Security::Encrypted);
    CddbFetch fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
}

void TestCddbFetch::neverFromEncryptedToPlain()
{
    const TrustedCertificate trusted(CddbServer::certificate());
    CddbServer server(CddbServer::Security::Encrypted);
    server.setFault(Fault::RedirectInsecure);
    CddbFetch fetch;
    QCOMPARE(fetched(fetch, question(server)).error().kind, LookupFailureKind::InsecureRedirect);
    QCOMPARE(server.requests().size(), 1);
}

void TestCddbFetch::systemProxyIsUsed()
{
    const CddbServer proxy;
    qputenv("http_proxy", "http://" + proxy.hostAndPort().toLatin1());
    CddbFetch fetch;
    const QUrl url(u"http://db.invalid/~cddb/cddb.cgi?cmd=cddb+album+Gaviotas&hello=a+b+c+d&proto=6"_s);
    QCOMPARE(fetched(fetch, url).value(), Answer);
    QCOMPARE(proxy.requests(), QByteArrayList{url.toEncoded()});
}

void TestCddbFetch::proxyIsLeftOutForThisComputer()
{
    const CddbServer proxy;
    const CddbServer server;
    qputenv("http_proxy", "http://" + proxy.hostAndPort().toLatin1());
    CddbFetch fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(proxy.requests().isEmpty());
    FetchSettings settings;
    settings.usesProxyForThisComputer = true;
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QCOMPARE(proxy.requests().size(), 1);
    QCOMPARE(server.requests().size(), 1);
}

void TestCddbFetch::proxyIsIgnored()
{
    const CddbServer proxy;
    const CddbServer server;
    qputenv("http_proxy", "http://" + proxy.hostAndPort().toLatin1());
    CddbFetch fetch;
    FetchSettings settings;
    settings.usesProxyForThisComputer = true;
    settings.ignoresProxy = true;
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(proxy.requests().isEmpty());
}

void TestCddbFetch::proxyThatIsNotThere()
{
    {
        const CddbServer gone;
        qputenv("http_proxy", "http://" + gone.hostAndPort().toLatin1());
    }
    CddbFetch fetch;
    const QUrl url(u"http://db.invalid/~cddb/cddb.cgi?cmd=x"_s);
    QCOMPARE(fetched(fetch, url).error().kind, LookupFailureKind::Proxy);
}

QTEST_GUILESS_MAIN(TestCddbFetch)
#include "tst_cddbfetch.moc"
