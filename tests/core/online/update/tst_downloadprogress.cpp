// SPDX-License-Identifier: GPL-3.0-or-later
// Progress of a download is counted in chunks of 1024 bytes and worded exactly as specified; the remaining time follows
// the recent speed. A checksum is found in a checksum file.
#include "core/online/update/downloadprogress.h"
#include "core/online/update/inetretreive.h"

#include <QCryptographicHash>
#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TestDownloadProgress : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void textsToTheLetter()
    {
        DownloadProgress progress(20 * 1024 * 1024);
        QCOMPARE(progress.sizeText(), u"20.00 Mb"_s);
        QCOMPARE(progress.firstText(), u"0 bytes of 20971520 bytes"_s);
        progress.addChunks(1536);
        QCOMPARE(progress.text({}), u"(1.50 MB of 20.00 MB)"_s);
        QCOMPARE(progress.text(u"status: "_s), u"status: (1.50 MB of 20.00 MB)"_s);
        QCOMPARE(DownloadProgress(1234567).sizeText(), u"1.18 Mb"_s);
    }

    void theLastChunkCountsAsAWholeOneButTheBarEndsAtItsMaximum()
    {
        DownloadProgress progress(1500);
        progress.addChunks(1);
        QCOMPARE(progress.received(), 1024);
        QCOMPARE(progress.value(), 1024);
        QCOMPARE(progress.percentText(), u"68%"_s);
        progress.addChunks(1);
        QCOMPARE(progress.received(), 2048);
        QCOMPARE(progress.value(), 1500);
        QCOMPARE(progress.percentText(), u"100%"_s);
    }

    void percentHasNoDigitForNothing()
    {
        DownloadProgress progress(1024 * 1024);
        QCOMPARE(progress.percentText(), u"%"_s);
        progress.addChunks(5); // 0.488
        QCOMPARE(progress.percentText(), u"%"_s);
        progress.addChunks(1); // 0.586
        QCOMPARE(progress.percentText(), u"1%"_s);
    }

    void anEmptyFileIsThereAtOnce()
    {
        const DownloadProgress progress(0);
        QCOMPARE(progress.percentText(), u"100%"_s);
        QCOMPARE(progress.sizeText(), u"0.00 Mb"_s);
        QCOMPARE(progress.firstText(), u"0 bytes of 0 bytes"_s);
    }

    void aSizeThatNobodyTold()
    {
        DownloadProgress progress;
        progress.addChunks(2048);
        QVERIFY(!progress.isTotalKnown());
        QCOMPARE(progress.sizeText(), u"? Mb"_s);
        QCOMPARE(progress.firstText(), u"0 bytes of ? bytes"_s);
        QCOMPARE(progress.text({}), u"(2.00 MB of ? MB)"_s);
        QCOMPARE(progress.percentText(), QString());
    }

    void theRateIsMeasured()
    {
        TransferRate rate;
        QVERIFY(!rate.secondsFor(1000));
        rate.measure(0ms, 0);
        QVERIFY(!rate.secondsFor(1000));
        rate.measure(2000ms, 1000);
        QCOMPARE(rate.secondsFor(1000).value(), 2);
        QCOMPARE(rate.secondsFor(1499).value(), 2); // whole seconds
        QCOMPARE(rate.secondsFor(0).value(), 0);
    }

    void theRateFollowsANetworkThatBecomesSlower()
    {
        TransferRate rate;
        for (int second = 0; second <= 10; ++second)
            rate.measure(std::chrono::seconds(second), second * 1000);
        QCOMPARE(rate.secondsFor(10'000).value(), 10);
        for (int second = 11; second <= 20; ++second)
            rate.measure(std::chrono::seconds(second), 10'000 + (second - 10) * 100);
        QCOMPARE(rate.secondsFor(10'000).value(), 100);
    }

    void nothingIsEstimatedWhileNothingMoves()
    {
        TransferRate rate;
        rate.measure(0ms, 5000);
        rate.measure(9000ms, 5000);
        QVERIFY(!rate.secondsFor(1000));
        TransferRate atOnce;
        atOnce.measure(0ms, 0);
        atOnce.measure(0ms, 5000);
        QVERIFY(!atOnce.secondsFor(1000));
    }

    void theEstimatesText() { QCOMPARE(estimateText(u"estimated time"_s, 12), u"estimated time 12 s "_s); }

    void checksums_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<bool>("isFound");
        const QByteArray sum = QCryptographicHash::hash("abc", QCryptographicHash::Sha256).toHex();
        const QByteArray other = QCryptographicHash::hash("x", QCryptographicHash::Sha256).toHex();
        QTest::newRow("digits alone") << sum << true;
        QTest::newRow("in capitals, with a line end") << sum.toUpper() + "\r\n" << true;
        QTest::newRow("sha256sum's line") << sum + "  a b.zip\n" << true;
        QTest::newRow("sha256sum's line for bytes") << sum + " *a b.zip\r\n" << true;
        QTest::newRow("one of several") << other + "  x.zip\n" + sum + "  a b.zip\n" << true;
        QTest::newRow("of another file") << sum + "  x.zip\n" << false;
        QTest::newRow("nothing") << QByteArray() << false;
        QTest::newRow("too few digits") << sum.chopped(1) << false;
        QTest::newRow("too many digits") << sum + "0" << false;
        QTest::newRow("no digits") << QByteArray(64, 'g') << false;
        QTest::newRow("no digits before the name") << QByteArray(64, 'g') + "  a b.zip" << false;
        QTest::newRow("a web page") << QByteArray("<html>not found</html>") << false;
    }
    void checksums()
    {
        QFETCH(QByteArray, text);
        QFETCH(bool, isFound);
        const auto found = checksumIn(text, u"a b.zip"_s);
        QCOMPARE(found.has_value(), isFound);
        if (isFound)
            QCOMPARE(*found, QCryptographicHash::hash("abc", QCryptographicHash::Sha256));
    }
};

QTEST_GUILESS_MAIN(TestDownloadProgress)
#include "tst_downloadprogress.moc"
