// SPDX-License-Identifier: GPL-3.0-or-later
// An answer is whole when its own framing says so. Whatever ends early, contradicts itself, can be read in two ways or
// has no end to its head is broken, and no split of its bytes changes what is read.
#include "core/online/web/httpanswer.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

namespace {

using State = HttpAnswer::State;

struct Reading
{
    State state = State::Head;
    int status = 0;
    QByteArray content = {};
    WebFailureKind failure = WebFailureKind::NoConnection;

    bool operator==(const Reading &) const = default;
};

/// Reads an answer that arrives in pieces of that size, after which the connection ends.
Reading readingOf(const QByteArray &bytes, qsizetype piece)
{
    HttpAnswer answer;
    Reading reading;
    for (qsizetype at = 0; at < bytes.size(); at += piece)
        reading.content += answer.take(bytes.mid(at, piece));
    answer.end();
    reading.state = answer.state();
    reading.status = answer.status();
    if (reading.state == State::Broken)
        reading.failure = answer.failure().kind;
    return reading;
}

const QByteArray Ok = "HTTP/1.1 200 OK\r\n";
const QByteArray Chunks = Ok + "Transfer-Encoding: chunked\r\n\r\n";

} // namespace

class TestHttpAnswer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void wholeAnswers_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("content");
        const auto row = [](const char *name, const QByteArray &bytes, const QByteArray &content) {
            QTest::newRow(name) << bytes << content;
        };
        row("with its length", Ok + "Content-Length: 5\r\n\r\nabcde", "abcde");
        row("of no length", Ok + "Content-Length: 0\r\n\r\n", "");
        row("up to the end of the connection", Ok + "\r\nabcde", "abcde");
        row("nothing up to the end", Ok + "\r\n", "");
        row("in chunks", Chunks + "3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n", "abcde");
        row("no chunk but the last", Chunks + "0\r\n\r\n", "");
        row("chunks with extensions", Chunks + "3;a=b\r\nabc\r\n0;c\r\n\r\n", "abc");
        row("trailers", Chunks + "A\r\n0123456789\r\n000\r\nX: y\r\n\r\n", "0123456789");
        row("line ends without CR", "HTTP/1.1 200 OK\nContent-Length: 2\n\nab", "ab");
        row("no reason", "HTTP/1.1 200\r\nContent-Length: 1\r\n\r\na", "a");
        row("HTTP/1.0", "HTTP/1.0 200 OK\r\n\r\nab", "ab");
        row("letters of fields", Ok + "CONTENT-length:1\r\n\r\na", "a");
        row("more than announced", Ok + "Content-Length: 2\r\n\r\nabcdef", "ab");
        row("more behind the last chunk", Chunks + "2\r\nab\r\n0\r\n\r\nHTTP/1.1 200 OK\r\n\r\nx", "ab");
        row("early hints", "HTTP/1.1 103 Early\r\nLink: x\r\nContent-Length: 9\r\n\r\n" + Ok + "\r\nab", "ab");
        row("go on", "HTTP/1.1 100 Continue\r\n\r\n" + Ok + "Content-Length: 1\r\n\r\na", "a");
    }
    void wholeAnswers()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, content);
        for (const qsizetype piece : {bytes.size(), qsizetype(1), qsizetype(2), qsizetype(7)})
            QVERIFY(readingOf(bytes, piece) == (Reading{.state = State::Whole, .status = 200, .content = content}));
    }

    void brokenAnswers_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<WebFailureKind>("failure");
        using enum WebFailureKind;
        const auto row = [](const char *name, const QByteArray &bytes, WebFailureKind failure = Garbage) {
            QTest::newRow(name) << bytes << failure;
        };
        row("nothing at all", "", Incomplete);
        row("a status alone", "HTTP/1.1 20", Incomplete);
        row("a head without its end", Ok + "Content-Length: 3\r\n", Incomplete);
        row("only go on", "HTTP/1.1 100 Continue\r\n\r\n", Incomplete);
        row("cut off", Ok + "Content-Length: 5\r\n\r\nabcd", Incomplete);
        row("cut off in a chunk", Chunks + "5\r\nabcd", Incomplete);
        row("cut off between the chunks", Chunks + "3\r\nabc\r\n", Incomplete);
        row("cut off in a size", Chunks + "3\r\nabc\r\n1", Incomplete);
        row("cut off before the last line", Chunks + "3\r\nabc\r\n0\r\n", Incomplete);
        row("no chunks", Chunks, Incomplete);
        row("not HTTP", "SSH-2.0-server\r\n\r\n");
        row("not HTTP, without a line", "<html>");
        row("HTTP of another kind", "HTTP/2 200\r\n\r\n");
        row("status with letters", "HTTP/1.1 2x0 OK\r\n\r\n");
        row("short status", "HTTP/1.1 20 OK\r\n\r\n");
        row("long status", "HTTP/1.1 2000 OK\r\n\r\n");
        row("negative status", "HTTP/1.1 -20 OK\r\n\r\n");
        row("no version", "HTTP/1. 200 OK\r\n\r\n");
        row("another protocol", "HTTP/1.1 101 Switching\r\nUpgrade: x\r\n\r\nab");
        row("chunk size with letters", Chunks + "3\r\nabc\r\nzz\r\nmore\r\n0\r\n\r\n");
        row("chunk size with a sign", Chunks + "-3\r\nabc\r\n0\r\n\r\n");
        row("chunk size 0x3", Chunks + "0x3\r\nabc\r\n0\r\n\r\n");
        row("no chunk size", Chunks + "\r\nabc\r\n0\r\n\r\n");
        row("gigantic chunk", Chunks + "FFFFFFFFFFFFFFFF\r\nabc");
        row("chunk longer than it says", Chunks + "3\r\nabcd\r\n0\r\n\r\n");
        row("endless chunk extension", Chunks + "3;" + QByteArray(2000, 'x'));
        row("endless trailers", Chunks + "0\r\n" + QByteArray("X: y\r\n").repeated(20'000));
        row("length with letters", Ok + "Content-Length: 5x\r\n\r\nabcde");
        row("negative length", Ok + "Content-Length: -5\r\n\r\nabcde");
        row("length with a sign", Ok + "Content-Length: +5\r\n\r\nabcde");
        row("no length", Ok + "Content-Length:\r\n\r\nabcde");
        row("gigantic length", Ok + "Content-Length: 99999999999999999999\r\n\r\nabcde");
        row("two lengths", Ok + "Content-Length: 5\r\nContent-Length: 3\r\n\r\nabcde");
        row("two lengths in one", Ok + "Content-Length: 5, 5\r\n\r\nabcde");
        row("length and chunks", Ok + "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
        row("compressed transfer", Ok + "Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n");
        row("twice in chunks", Ok + "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n");
        row("unknown transfer", Ok + "Transfer-Encoding: x\r\n\r\nab");
        row("continued line", Ok + "X: y\r\n Content-Length: 5\r\n\r\nab");
        row("blank before the colon", Ok + "Content-Length : 5\r\n\r\nab");
        row("field without a colon", Ok + "Content-Length\r\n\r\nab");
        row("field without a name", Ok + ": x\r\n\r\nab");
        row("zero in a field", Ok + QByteArray("X: a\0b\r\n\r\nab", 13));
        row("CR in a field", Ok + "X: a\rContent-Length: 1\r\n\r\nab");
        row("many fields", Ok + QByteArray("X: y\r\n").repeated(HttpAnswer::MaximumFields + 1) + "\r\nab");
        row("long field", Ok + "X: " + QByteArray(HttpAnswer::MaximumHead, 'y') + "\r\n\r\nab");
        row("endless first line", "HTTP/1.1 200 " + QByteArray(HttpAnswer::MaximumHead, 'y'));
        row("endless hints", QByteArray("HTTP/1.1 103 Early\r\n\r\n").repeated(10'000));
    }
    void brokenAnswers()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(WebFailureKind, failure);
        const Reading whole = readingOf(bytes, std::max<qsizetype>(bytes.size(), 1));
        QCOMPARE(whole.state, State::Broken);
        QCOMPARE(whole.failure, failure);
        for (const qsizetype piece : {qsizetype(1), qsizetype(2), qsizetype(7)})
            QVERIFY(readingOf(bytes, piece) == whole);
    }

    void anEndlessHeadIsNotKept()
    {
        HttpAnswer answer;
        answer.take(Ok);
        for (int i = 0; i < 1000 && answer.state() == State::Head; ++i)
            answer.take(QByteArray(1024, 'x'));
        QCOMPARE(answer.state(), State::Broken);
        QVERIFY(answer.take("\r\n\r\nabc").isEmpty());
        QCOMPARE(answer.state(), State::Broken);
    }

    void contentIsHandedOverAsItComes()
    {
        HttpAnswer answer;
        QCOMPARE(answer.take(Chunks + "5\r\nab"), "ab");
        QCOMPARE(answer.state(), State::Content);
        QVERIFY(answer.isEndMarked());
        QCOMPARE(answer.announcedSize(), -1);
        QCOMPARE(answer.take("cde\r\n0\r\n\r\n"), "cde");
        QCOMPARE(answer.state(), State::Whole);
    }

    void theHead()
    {
        HttpAnswer answer;
        answer.take(
            "HTTP/1.1 404 Not \u202e\x1b[1mhere" + QByteArray(300, '!') + "\r\nX: a\r\nx: b\r\nY: \xff\r\n\r\n");
        QCOMPARE(answer.state(), State::Broken); // a control character
        answer = {};
        answer.take(
            "HTTP/1.1 404 Not \xe2\x80\xaehere" + QByteArray(300, '!') + "\r\nX: a\r\nx: b \r\nLocation: /x\r\n\r\n");
        QCOMPARE(answer.status(), 404);
        QVERIFY(answer.reason().startsWith(u"Not here!"_s)); // nothing that turns the text round
        QVERIFY(answer.reason().size() <= 80);
        QCOMPARE(answer.field("x"), "a,b");
        QCOMPARE(answer.field("location"), "/x");
        QVERIFY(!answer.hasField("content-length"));
        QVERIFY(!answer.isEndMarked());
    }
};

QTEST_GUILESS_MAIN(TestHttpAnswer)
#include "tst_httpanswer.moc"
