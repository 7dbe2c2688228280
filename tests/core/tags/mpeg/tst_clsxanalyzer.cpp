// SPDX-License-Identifier: GPL-3.0-or-later
// clsXAnalyzer: names for the library's codes, seconds for its milliseconds, texts for its failures; what a failed
// analysis leaves unchanged; how times are displayed.
#include "core/tags/mpeg/xanalyze.h"
#include "support/mpegbuilder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestClsXAnalyzer : public QObject
{
    Q_OBJECT

private:
    QString write(const QString &name, const QByteArray &bytes)
    {
        const QString path = m_folder.filePath(name);
        QFile file(path);
        return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? path : QString();
    }

    QTemporaryDir m_folder;

private Q_SLOTS:
    void versionCodeHasName_data();
    void versionCodeHasName();
    void modeCodeHasName_data();
    void modeCodeHasName();
    void flagIsTheBitWithValue4();
    void lengthIsMillisecondsInSeconds();
    void resultCodeMinus8FillsPropertiesLikeSuccess();
    void positiveCodeIsSuccess();
    void failureHasText_data();
    void failureHasText();
    void failureKeepsPreviousProperties();
    void successClearsErrorText();
    void analysesFile();
    void analysesNameOutsideLatin1();
    void missingFileIsNotFound();
    void folderCannotBeOpened();
    void fileWithoutFramesTellsBytesSearched();
    void truncatedFileIsDamagedButHasValues();
    void formatsTime_data();
    void formatsTime();
};

void TestClsXAnalyzer::versionCodeHasName_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::newRow("0") << 0 << QStringLiteral("MPEG2.5");
    QTest::newRow("1") << 1 << QStringLiteral("MPEG1");
    QTest::newRow("2") << 2 << QStringLiteral("MPEG2");
    QTest::newRow("3, reserved") << 3 << QStringLiteral("UNKNOWN");
    QTest::newRow("negative") << -1 << QStringLiteral("UNKNOWN");
}

void TestClsXAnalyzer::versionCodeHasName()
{
    QFETCH(int, code);
    clsXAnalyzer analyzer;
    XAnalyzeRecord record;
    record.version = code;
    analyzer.take(0, record, {});
    QTEST(analyzer.versionName(), "name");
}

void TestClsXAnalyzer::modeCodeHasName_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("name");
    QTest::newRow("0") << 0 << QStringLiteral("Stereo");
    QTest::newRow("1") << 1 << QStringLiteral("Joint-Stereo");
    QTest::newRow("2") << 2 << QStringLiteral("Dual Channel");
    QTest::newRow("3") << 3 << QStringLiteral("Mono");
    QTest::newRow("4") << 4 << QStringLiteral("Unknown");
}

void TestClsXAnalyzer::modeCodeHasName()
{
    QFETCH(int, code);
    clsXAnalyzer analyzer;
    XAnalyzeRecord record;
    record.channelMode = code;
    analyzer.take(0, record, {});
    QTEST(analyzer.channelModeName(), "name");
}

void TestClsXAnalyzer::flagIsTheBitWithValue4()
{
    clsXAnalyzer analyzer;
    XAnalyzeRecord record;
    for (const quint32 flags : {0U, 1U, 3U, 4U, 7U, 8U, 0xFFFFFFFBU}) {
        record.flags = flags;
        analyzer.take(0, record, {});
        QCOMPARE(analyzer.isVariable(), flags == 4 || flags == 7);
        QVERIFY(!analyzer.isCutOff());
        analyzer.take(XAnalyzeDamaged, record, {});
        QVERIFY(analyzer.isDamaged());
        QCOMPARE(analyzer.isCutOff(), flags >= 8);
    }
}

void TestClsXAnalyzer::lengthIsMillisecondsInSeconds()
{
    clsXAnalyzer analyzer;
    XAnalyzeRecord record;
    record.milliseconds = 215'347;
    analyzer.take(0, record, {});
    QCOMPARE(analyzer.length(), 215.347);
}

void TestClsXAnalyzer::resultCodeMinus8FillsPropertiesLikeSuccess()
{
    clsXAnalyzer analyzer;
    analyzer.take(-5, {}, QStringLiteral("x"));
    analyzer.take(-8, {1, 128, 44100, 3, 1, 500, 13061, 4}, QStringLiteral("x"));
    QCOMPARE(analyzer.versionName(), QStringLiteral("MPEG1"));
    QCOMPARE(analyzer.channelModeName(), QStringLiteral("Joint-Stereo"));
    QCOMPARE(analyzer.bitRate(), 128);
    QCOMPARE(analyzer.frequency(), 44100);
    QCOMPARE(analyzer.frames(), 500);
    QCOMPARE(analyzer.length(), 13.061);
    QVERIFY(analyzer.isVariable());
    QCOMPARE(analyzer.errorText(), QString());
}

void TestClsXAnalyzer::positiveCodeIsSuccess()
{
    clsXAnalyzer analyzer;
    analyzer.take(7, {2, 64, 22050, 3, 3, 1, 26, 0}, {});
    QCOMPARE(analyzer.versionName(), QStringLiteral("MPEG2"));
    QCOMPARE(analyzer.errorText(), QString());
}

void TestClsXAnalyzer::failureHasText_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    QTest::newRow("-2") << -2 << QStringLiteral("There was an internal error while tried to analize file\r\n/a/b.mp3");
    QTest::newRow("-3") << -3 << QStringLiteral("Not enough memory to analize file\r\n/a/b.mp3");
    QTest::newRow("-4") << -4 << QStringLiteral("No file was found with the name:\r\n/a/b.mp3");
    QTest::newRow("-5") << -5 << QStringLiteral("Cannot open file\r\n/a/b.mp3");
    QTest::newRow("-9") << -9 << QStringLiteral("Could not find frame start after looking at 4711 bytes.");
    QTest::newRow("-1") << -1 << QStringLiteral("Unknown error (-1) occured while trying to analyze file.");
    QTest::newRow("-6") << -6 << QStringLiteral("Unknown error (-6) occured while trying to analyze file.");
    QTest::newRow("-10") << -10 << QStringLiteral("Unknown error (-10) occured while trying to analyze file.");
}

void TestClsXAnalyzer::failureHasText()
{
    QFETCH(int, code);
    clsXAnalyzer analyzer;
    XAnalyzeRecord record;
    record.frames = 4711;
    analyzer.take(code, record, QStringLiteral("/a/b.mp3"));
    QTEST(analyzer.errorText(), "text");
}

void TestClsXAnalyzer::failureKeepsPreviousProperties()
{
    clsXAnalyzer analyzer;
    analyzer.take(0, {1, 128, 44100, 3, 1, 500, 13061, 4}, {});
    analyzer.take(-9, {0, 0, 0, 0, 0, 99, 0, 0}, {});
    QCOMPARE(analyzer.versionName(), QStringLiteral("MPEG1"));
    QCOMPARE(analyzer.channelModeName(), QStringLiteral("Joint-Stereo"));
    QCOMPARE(analyzer.bitRate(), 128);
    QCOMPARE(analyzer.frequency(), 44100);
    QCOMPARE(analyzer.frames(), 500);
    QCOMPARE(analyzer.length(), 13.061);
    QVERIFY(analyzer.isVariable());
    QVERIFY(!analyzer.errorText().isEmpty());
}

void TestClsXAnalyzer::successClearsErrorText()
{
    clsXAnalyzer analyzer;
    analyzer.take(-3, {}, {});
    analyzer.take(0, {}, {});
    QCOMPARE(analyzer.errorText(), QString());
}

void TestClsXAnalyzer::analysesFile()
{
    const QString path = write(QStringLiteral("a.mp3"), MpegBuilder().id3v2(300).frames(100).id3v1().data());
    clsXAnalyzer analyzer;
    QCOMPARE(analyzer.Analyse(path), 0);
    QCOMPARE(analyzer.versionName(), QStringLiteral("MPEG1"));
    QCOMPARE(analyzer.channelModeName(), QStringLiteral("Joint-Stereo"));
    QCOMPARE(analyzer.bitRate(), 128);
    QCOMPARE(analyzer.frequency(), 44100);
    QCOMPARE(analyzer.frames(), 100);
    QCOMPARE(analyzer.length(), 2.612); // 100 * 1152 / 44100 = 2.61224…
    QVERIFY(!analyzer.isVariable());
    QCOMPARE(analyzer.errorText(), QString());
}

void TestClsXAnalyzer::analysesNameOutsideLatin1()
{
    const QString path = write(QStringLiteral("ж日本語😀.mp3"), MpegBuilder().frames(10).data());
    QVERIFY(!path.isEmpty());
    clsXAnalyzer analyzer;
    QCOMPARE(analyzer.Analyse(path), 0);
    QCOMPARE(analyzer.frames(), 10);
}

void TestClsXAnalyzer::missingFileIsNotFound()
{
    const QString path = m_folder.filePath(QStringLiteral("missing.mp3"));
    clsXAnalyzer analyzer;
    QCOMPARE(analyzer.Analyse(path), -4);
    QCOMPARE(analyzer.errorText(), QStringLiteral("No file was found with the name:\r\n") + path);
}

void TestClsXAnalyzer::folderCannotBeOpened()
{
    clsXAnalyzer analyzer;
    QCOMPARE(analyzer.Analyse(m_folder.path()), -5);
    QCOMPARE(analyzer.errorText(), QStringLiteral("Cannot open file\r\n") + m_folder.path());
}

void TestClsXAnalyzer::fileWithoutFramesTellsBytesSearched()
{
    clsXAnalyzer analyzer;
    QCOMPARE(analyzer.Analyse(write(QStringLiteral("text.mp3"), QByteArray(1234, 'x'))), -9);
    QCOMPARE(analyzer.errorText(), QStringLiteral("Could not find frame start after looking at 1234 bytes."));
    QCOMPARE(analyzer.Analyse(write(QStringLiteral("empty.mp3"), {})), -9);
    QCOMPARE(analyzer.errorText(), QStringLiteral("Could not find frame start after looking at 0 bytes."));
}

void TestClsXAnalyzer::truncatedFileIsDamagedButHasValues()
{
    clsXAnalyzer analyzer;
    QCOMPARE(analyzer.Analyse(write(QStringLiteral("cut.mp3"), MpegBuilder().frames(10).cut(1).data())), -8);
    QCOMPARE(analyzer.frames(), 9);
    QCOMPARE(analyzer.bitRate(), 128);
    QCOMPARE(analyzer.errorText(), QString());
}

void TestClsXAnalyzer::formatsTime_data()
{
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << qint64(0) << QStringLiteral("00:00.0");
    QTest::newRow("below a tenth") << qint64(99) << QStringLiteral("00:00.0");
    QTest::newRow("a tenth") << qint64(100) << QStringLiteral("00:00.1");
    QTest::newRow("never rounded up to ten") << qint64(999) << QStringLiteral("00:00.9");
    QTest::newRow("59,999 ms has no hours part") << qint64(59'999) << QStringLiteral("00:59.9");
    QTest::newRow("a minute") << qint64(60'000) << QStringLiteral("01:00.0");
    QTest::newRow("just below an hour") << qint64(3'599'999) << QStringLiteral("59:59.9");
    QTest::newRow("3,600,000 ms begins with 1:") << qint64(3'600'000) << QStringLiteral("1:00:00.0");
    QTest::newRow("all parts") << qint64(3'723'456) << QStringLiteral("1:02:03.4");
    QTest::newRow("many hours") << qint64(100) * 3'600'000 + 1 << QStringLiteral("100:00:00.0");
}

void TestClsXAnalyzer::formatsTime()
{
    QFETCH(qint64, milliseconds);
    QTEST(clsXAnalyzer::FormatTime(milliseconds), "text");
}

QTEST_GUILESS_MAIN(TestClsXAnalyzer)
#include "tst_clsxanalyzer.moc"
