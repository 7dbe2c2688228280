// SPDX-License-Identifier: GPL-3.0-or-later
// However fast a server answers and closes, its answer is told whole when it is and broken when it is not, every time,
// and each request is sent once.
#include "core/online/web/webget.h"
#include "support/cddbtest.h"
#include "support/rawserver.h"

#include <QEventLoop>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int Rounds = 10; ///< of each case: what depends on timing goes wrong now and then

const QByteArray Ok = "HTTP/1.1 200 OK\r\n";
const QByteArray Large(3'000'000, 'x');

QByteArray sized(const QByteArray &content)
{
    return Ok + "Content-Length: " + QByteArray::number(content.size()) + "\r\n\r\n" + content;
}

QByteArray redirectTo(const QByteArray &location)
{
    return "HTTP/1.1 302 Found\r\nLocation: " + location + "\r\nContent-Length: 0\r\n\r\n";
}

struct Outcome
{
    QByteArray content;
    std::optional<WebFailure> failure;
};

Outcome fetched(const RawServer &server, FetchSettings settings = {})
{
    settings.sizeLimit = 2 * Large.size();
    WebGet web;
    web.setSettings(settings);
    Outcome outcome;
    QEventLoop loop;
    QObject::connect(
        &web, &WebGet::readable, &loop, [&] { outcome.content += web.read(web.available() / 1024 * 1024); });
    QObject::connect(&web, &WebGet::finished, &loop, [&] {
        outcome.content += web.read(web.available());
        loop.quit();
    });
    QObject::connect(&web, &WebGet::failed, &loop, [&](const WebFailure &failure) {
        outcome.failure = failure;
        loop.quit();
    });
    web.get(QUrl(server.origin() + u"/a"_s));
    loop.exec();
    return outcome;
}

} // namespace

class TestWebGet : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { leaveProxiesOut(); }

    void wholeAnswers_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<QByteArray>("content");
        const QByteArray head = Ok + "Transfer-Encoding: chunked\r\n\r\n";
        const QByteArray size = QByteArray::number(Large.size(), 16);
        QTest::newRow("without a length") << Ok + "\r\n" + Large << Large;
        QTest::newRow("short, without a length") << Ok + "\r\nab" << QByteArray("ab");
        QTest::newRow("with its length") << sized(Large) << Large;
        QTest::newRow("in chunks") << head + size + "\r\n" + Large + "\r\n0\r\n\r\n" << Large;
        QTest::newRow("nothing") << sized({}) << QByteArray();
        QTest::newRow("redirected") << redirectTo("/b") << QByteArray("there");
    }
    void wholeAnswers()
    {
        QFETCH(QByteArray, answer);
        QFETCH(QByteArray, content);
        for (int round = 0; round < Rounds; ++round) {
            RawServer server;
            server.setAnswer(answer);
            server.setAnswer("/b", sized("there"));
            const Outcome outcome = fetched(server);
            QVERIFY2(!outcome.failure, qPrintable(outcome.failure.value_or(WebFailure()).detail));
            QVERIFY(outcome.content == content);
            const qsizetype requests = answer.startsWith(Ok) ? 1 : 2;
            QCOMPARE(server.requests().size(), requests);
        }
    }

    void brokenAnswers_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<WebFailureKind>("kind");
        using enum WebFailureKind;
        const QByteArray chunks = Ok + "Transfer-Encoding: chunked\r\n\r\n";
        QTest::newRow("nothing") << QByteArray() << Incomplete;
        QTest::newRow("cut off") << sized(Large).chopped(1) << Incomplete;
        QTest::newRow("cut off between chunks") << chunks + "5\r\nabcde\r\n" << Incomplete;
        QTest::newRow("cut off in a chunk") << chunks + "50\r\nabcde\r\n" << Incomplete;
        QTest::newRow("cut off in the head") << Ok + "Content-" << Incomplete;
        QTest::newRow("malformed chunk") << chunks + "5\r\nabcde\r\nzz\r\nmore\r\n0\r\n\r\n" << Garbage;
        QTest::newRow("two lengths") << Ok + "Content-Length: 2\r\nContent-Length: 5\r\n\r\nabcde" << Garbage;
        QTest::newRow("another protocol") << QByteArray("HTTP/1.1 101 Go\r\n\r\n") << Garbage;
        QTest::newRow("not HTTP") << QByteArray("220 ready\r\n") << Garbage;
        QTest::newRow("endless head") << Ok + QByteArray("X: y\r\n").repeated(200'000) << Garbage;
        QTest::newRow("compressed") << Ok + "Content-Encoding: gzip\r\nContent-Length: 2\r\n\r\nab" << Garbage;
        QTest::newRow("range, said to be all")
            << Ok + "Content-Range: bytes 0-1/9\r\nContent-Length: 2\r\n\r\nab" << Garbage;
        QTest::newRow("range") << QByteArray("HTTP/1.1 206 Partial Content\r\nContent-Range: bytes 0-1/9\r\n"
                                             "Content-Length: 2\r\n\r\nab")
                               << HttpStatus;
        QTest::newRow("no content") << QByteArray("HTTP/1.1 204 No Content\r\n\r\n") << HttpStatus;
        QTest::newRow("reset content") << QByteArray("HTTP/1.1 205 Reset\r\nContent-Length: 0\r\n\r\n") << HttpStatus;
        QTest::newRow("not changed") << QByteArray("HTTP/1.1 304 Not Modified\r\n\r\n") << HttpStatus;
        QTest::newRow("choices") << QByteArray("HTTP/1.1 300 Choose\r\nLocation: /b\r\n\r\n") << HttpStatus;
        QTest::newRow("proxy wants a login") << QByteArray("HTTP/1.1 407 Who\r\n\r\n") << Proxy;
        QTest::newRow("to itself") << redirectTo("/a") << TooManyRedirects;
        QTest::newRow("to a file") << redirectTo("file:///etc/hostname") << ForeignRedirect;
        QTest::newRow("to nowhere") << QByteArray("HTTP/1.1 302 Found\r\n\r\n") << BadRedirect;
    }
    void brokenAnswers()
    {
        QFETCH(QByteArray, answer);
        QFETCH(WebFailureKind, kind);
        for (int round = 0; round < Rounds; ++round) {
            RawServer server;
            server.setAnswer(answer);
            const Outcome outcome = fetched(server);
            QVERIFY(outcome.failure);
            QCOMPARE(outcome.failure->kind, kind);
            QCOMPARE(server.requests().size(), kind == WebFailureKind::TooManyRedirects ? 6 : 1);
        }
    }

    void aDrippingServerIsNotWaitedFor_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("in the head") << Ok + QByteArray("X: y\r\n").repeated(1000);
        QTest::newRow("in the content") << sized(QByteArray(5000, 'x'));
    }
    void aDrippingServerIsNotWaitedFor()
    {
        QFETCH(QByteArray, answer);
        RawServer server;
        server.setAnswer(answer);
        server.setDrip(40, 50); // the head alone has arrived after the second drop
        FetchSettings settings;
        settings.idleLimit = std::chrono::milliseconds(500);
        QCOMPARE(fetched(server, settings).failure.value().kind, WebFailureKind::TimedOut);
        QVERIFY(server.requests().size() == 1);
    }

    void aSlowServerIsWaitedFor()
    {
        RawServer server;
        server.setAnswer(sized(QByteArray(8 * 2048, 'x')));
        server.setDrip(2048, 100);
        FetchSettings settings;
        settings.idleLimit = std::chrono::milliseconds(500);
        QCOMPARE(fetched(server, settings).content.size(), 8 * 2048);
    }

    void anAddressThatIsNotOfTheWeb()
    {
        WebGet web;
        QList<WebFailureKind> kinds;
        connect(&web, &WebGet::failed, this, [&](const WebFailure &failure) { kinds << failure.kind; });
        web.get(QUrl(u"file:///etc/hostname"_s));
        QVERIFY(kinds.isEmpty());
        QVERIFY(waitUntil([&] { return !kinds.isEmpty(); }));
        QVERIFY(!web.isBusy());
    }

    void aSlotMayDeleteTheFetch_data()
    {
        QTest::addColumn<int>("step");
        for (const WebStep step : {WebStep::Connecting, WebStep::RequestSent, WebStep::Answering})
            QTest::addRow("%d", int(step)) << int(step);
        QTest::newRow("content") << 10;
        QTest::newRow("end") << 11;
    }
    void aSlotMayDeleteTheFetch()
    {
        QFETCH(int, step);
        RawServer server;
        server.setAnswer(sized(Large));
        auto web = std::make_unique<WebGet>();
        web->setSettings([] {
            FetchSettings settings;
            settings.sizeLimit = Large.size();
            return settings;
        }());
        bool isDone = false;
        const auto destroy = [&](int at) {
            if (at == step) {
                web.reset();
                isDone = true;
            }
        };
        connect(web.get(), &WebGet::stepped, this, [&](WebStep at) { destroy(int(at)); });
        connect(web.get(), &WebGet::readable, this, [&] { destroy(10); });
        connect(web.get(), &WebGet::finished, this, [&] { destroy(11); });
        web->get(QUrl(server.origin()));
        QVERIFY(waitUntil([&] { return isDone; }));
        QVERIFY(!web);
    }
};

QTEST_GUILESS_MAIN(TestWebGet)
#include "tst_webget.moc"
