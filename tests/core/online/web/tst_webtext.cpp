// SPDX-License-Identifier: GPL-3.0-or-later
// An answer is fetched whole, or a failure gives the reason: late, too long, redirected, refused, cut off, without a
// trusted certificate. The system's proxy is used as the settings say. Nothing here leaves this computer.
#include "core/online/web/webtext.h"
#include "support/cddbserver.h"
#include "support/cddbtest.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

/// A question with a two-line answer.
QUrl question(const CddbServer &server)
{
    return QUrl(server.url() + u"?cmd=cddb+album+Gaviotas&hello=a+b+c+d&proto=6"_s);
}

const QByteArray Answer = "211 Found inexact matches, list follows (until terminating `.')\r\n"
                          "rock 92093e0a Las Gaviotas / Mareas Lentas\r\n.\r\n";

} // namespace

class TestWebText : public QObject
{
    Q_OBJECT

private:
    /// The outcome of one fetch.
    static WebAnswer fetched(WebText &fetch, const QUrl &url)
    {
        std::optional<WebAnswer> outcome;
        fetch.get(url, [&outcome](const WebAnswer &result) { outcome = result; });
        if (outcome)
            qFatal("told before it was asked");
        [&] { QVERIFY(waitUntil([&] { return outcome.has_value(); })); }();
        return outcome.value_or(tl::unexpected(WebFailure{WebFailureKind::Garbage, u"no end"_s}));
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

void TestWebText::wholeAnswer()
{
    const CddbServer server;
    WebText fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(!fetch.isBusy());
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
}

void TestWebText::redirectIsFollowed()
{
    CddbServer server;
    server.setFault(Fault::RedirectOnce);
    WebText fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QCOMPARE(server.requests().size(), 2);
}

void TestWebText::faults_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<WebFailureKind>("kind");
    using enum WebFailureKind;
    QTest::newRow("hangs up") << Fault::HangsUp << Incomplete;
    QTest::newRow("half sent") << Fault::HalfSent << Incomplete;
    QTest::newRow("announces too much") << Fault::TooLong << TooLarge;
    QTest::newRow("sends without end") << Fault::Endless << TooLarge;
    QTest::newRow("redirects for ever") << Fault::RedirectLoop << TooManyRedirects;
    QTest::newRow("redirects to a file") << Fault::RedirectToFile << ForeignRedirect;
    QTest::newRow("refuses") << Fault::HttpRefused << HttpStatus;
    QTest::newRow("wants a login") << Fault::HttpLogin << HttpStatus;
}

void TestWebText::faults()
{
    QFETCH(Fault, fault);
    QFETCH(WebFailureKind, kind);
    CddbServer server;
    server.setFault(fault);
    WebText fetch;
    const WebFailure failure = fetched(fetch, question(server)).error();
    QCOMPARE(failure.kind, kind);
    QVERIFY(!fetch.isBusy());
    server.setFault(Fault::None);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
}

void TestWebText::redirectsAreCounted()
{
    CddbServer server;
    server.setFault(Fault::RedirectLoop);
    WebText fetch;
    QCOMPARE(fetched(fetch, question(server)).error().kind, WebFailureKind::TooManyRedirects);
    QCOMPARE(server.requests().size(), 1 + FetchSettings().redirectLimit);
}

void TestWebText::lateAnswer_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::newRow("never answers") << Fault::Silence;
    QTest::newRow("stops in the middle") << Fault::Stalls;
}

void TestWebText::lateAnswer()
{
    QFETCH(Fault, fault);
    CddbServer server;
    server.setFault(fault);
    WebText fetch;
    FetchSettings settings;
    settings.timeLimit = std::chrono::milliseconds(200);
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).error().kind, WebFailureKind::TimedOut);
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
}

void TestWebText::answerAsLongAsAllowed()
{
    const CddbServer server;
    WebText fetch;
    FetchSettings settings;
    settings.sizeLimit = Answer.size();
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    --settings.sizeLimit;
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).error().kind, WebFailureKind::TooLarge);
}

void TestWebText::nobodyThere()
{
    QUrl url;
    {
        const CddbServer server;
        url = question(server);
    }
    WebText fetch;
    const WebFailure failure = fetched(fetch, url).error();
    QCOMPARE(failure.kind, WebFailureKind::NoConnection);
    QVERIFY(!failure.detail.isEmpty());
}

void TestWebText::cancelledFetchTellsNothing()
{
    CddbServer server;
    server.setFault(Fault::Silence);
    WebText fetch;
    bool isTold = false;
    fetch.get(question(server), [&isTold](const WebAnswer &) { isTold = true; });
    QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, PatientWait);
    fetch.cancel();
    QVERIFY(!fetch.isBusy());
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
    QVERIFY(!isTold);
}

void TestWebText::nextFetchEndsTheOneBefore()
{
    CddbServer silent;
    silent.setFault(Fault::Silence);
    const CddbServer server;
    WebText fetch;
    bool isTold = false;
    fetch.get(question(silent), [&isTold](const WebAnswer &) { isTold = true; });
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(!isTold);
}

void TestWebText::fetchEndsWithItsObject()
{
    CddbServer server;
    server.setFault(Fault::Silence);
    bool isTold = false;
    {
        WebText fetch;
        fetch.get(question(server), [&isTold](const WebAnswer &) { isTold = true; });
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, PatientWait);
    }
    QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
    QVERIFY(!isTold);
}

void TestWebText::certificateThatNobodyTrusts()
{
    const CddbServer server(CddbServer::Security::Encrypted);
    WebText fetch;
    const WebFailure failure = fetched(fetch, question(server)).error();
    QCOMPARE(failure.kind, WebFailureKind::Certificate);
    QVERIFY(!failure.detail.isEmpty());
    QVERIFY(server.requests().isEmpty());
}

void TestWebText::certificateOfAnotherName()
{
    const TrustedCertificate trusted(CddbServer::certificate());
    const CddbServer server(CddbServer::Security::EncryptedElsewhere);
    WebText fetch;
    QCOMPARE(fetched(fetch, question(server)).error().kind, WebFailureKind::Certificate);
    QVERIFY(server.requests().isEmpty());
}

void TestWebText::encryptedAnswer()
{
    const TrustedCertificate trusted(CddbServer::certificate());
    const CddbServer server(CddbServer::Security::Encrypted);
    WebText fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
}

void TestWebText::neverFromEncryptedToPlain()
{
    const TrustedCertificate trusted(CddbServer::certificate());
    CddbServer server(CddbServer::Security::Encrypted);
    server.setFault(Fault::RedirectInsecure);
    WebText fetch;
    QCOMPARE(fetched(fetch, question(server)).error().kind, WebFailureKind::InsecureRedirect);
    QCOMPARE(server.requests().size(), 1);
}

void TestWebText::systemProxyIsUsed()
{
    const CddbServer proxy;
    qputenv("http_proxy", "http://" + proxy.hostAndPort().toLatin1());
    WebText fetch;
    const QUrl url(u"http://db.invalid/~cddb/cddb.cgi?cmd=cddb+album+Gaviotas&hello=a+b+c+d&proto=6"_s);
    QCOMPARE(fetched(fetch, url).value(), Answer);
    QCOMPARE(proxy.requests(), QByteArrayList{url.toEncoded()});
}

void TestWebText::proxyIsLeftOutForThisComputer()
{
    const CddbServer proxy;
    const CddbServer server;
    qputenv("http_proxy", "http://" + proxy.hostAndPort().toLatin1());
    WebText fetch;
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(proxy.requests().isEmpty());
    FetchSettings settings;
    settings.usesProxyForThisComputer = true;
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QCOMPARE(proxy.requests().size(), 1);
    QCOMPARE(server.requests().size(), 1);
}

void TestWebText::proxyIsIgnored()
{
    const CddbServer proxy;
    const CddbServer server;
    qputenv("http_proxy", "http://" + proxy.hostAndPort().toLatin1());
    WebText fetch;
    FetchSettings settings;
    settings.usesProxyForThisComputer = true;
    settings.ignoresProxy = true;
    fetch.setSettings(settings);
    QCOMPARE(fetched(fetch, question(server)).value(), Answer);
    QVERIFY(proxy.requests().isEmpty());
}

void TestWebText::proxyThatIsNotThere()
{
    {
        const CddbServer gone;
        qputenv("http_proxy", "http://" + gone.hostAndPort().toLatin1());
    }
    WebText fetch;
    const QUrl url(u"http://db.invalid/~cddb/cddb.cgi?cmd=x"_s);
    QCOMPARE(fetched(fetch, url).error().kind, WebFailureKind::Proxy);
}

QTEST_GUILESS_MAIN(TestWebText)
#include "tst_webtext.moc"
