// SPDX-License-Identifier: GPL-3.0-or-later
// The labels about a file's audio: their texts; reading them never blocks the caller and never reports a file other
// than the last one requested.

#include "core/tags/mpeg/streamdetails.h"
#include "core/tags/mpeg/xanalyze.h"
#include "support/gatedfilesystem.h"
#include "support/mp3builder.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestStreamDetails : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;

    QString file(const QString &name, const QByteArray &content) const
    {
        return writeFile(m_folder.path(), name, content);
    }

private Q_SLOTS:
    void texts()
    {
        clsXAnalyzer analyzer;
        analyzer.take(XAnalyzeOk,
            {.version = 1, .bitRate = 192, .frequency = 44100, .layer = 3, .milliseconds = 215327}, u"a.mp3"_s);
        const StreamDetails details = streamDetails(analyzer, true, 5242880);
        QCOMPARE(details.bitRate, u"192 kbps"_s);
        QCOMPARE(details.length, u"215.327 s"_s);
        QCOMPARE(details.frequency, u"44100 hz"_s);
        QCOMPARE(details.size, u"5242880 bytes"_s);
        QCOMPARE(details.clockTime, u"03:35.3"_s);
        QCOMPARE(details.problem, QString());
    }

    void lengthsAreWrittenAsNumbersAre_data()
    {
        QTest::addColumn<int>("milliseconds");
        QTest::addColumn<QString>("text");
        QTest::newRow("zero") << 0 << u"0 s"_s;
        QTest::newRow("whole seconds") << 60000 << u"60 s"_s;
        QTest::newRow("tenths") << 100 << u"0.1 s"_s;
        QTest::newRow("a millisecond") << 1 << u"0.001 s"_s;
        QTest::newRow("a day") << 86400001 << u"86400.001 s"_s;
    }
    void lengthsAreWrittenAsNumbersAre()
    {
        QFETCH(int, milliseconds);
        QFETCH(QString, text);
        clsXAnalyzer analyzer;
        analyzer.take(XAnalyzeOk, {.version = 1, .milliseconds = milliseconds}, {});
        QCOMPARE(streamDetails(analyzer, true, 0).length, text);
    }

    void aRealFile()
    {
        const QByteArray content = audio(100);
        const StreamDetails details = readStreamDetails(file(u"a.mp3"_s, content), platform::FileSystem::native());
        QCOMPARE(details.bitRate, u"128 kbps"_s);
        QCOMPARE(details.frequency, u"44100 hz"_s);
        QCOMPARE(details.length, u"2.612 s"_s); // 100 frames of 1152 samples
        QCOMPARE(details.size, u"%1 bytes"_s.arg(content.size()));
    }

    void aFaultIsToldBesideTheValues()
    {
        const auto details = [this](const QByteArray &content) {
            return readStreamDetails(file(u"a.mp3"_s, content), platform::FileSystem::native());
        };
        QCOMPARE(details(audio(20)).fault, StreamFault::None);
        QCOMPARE(details("no audio").fault, StreamFault::None);
        const StreamDetails cut = details(audio(20).chopped(1));
        QCOMPARE(cut.fault, StreamFault::CutOff);
        QCOMPARE(cut.length, u"0.496 s"_s); // 19 frames
        QCOMPARE(details(audio(20) + QByteArray(1000, '\1') + audio(20)).fault, StreamFault::Damaged);
        QCOMPARE(details(audio(20) + QByteArray(1000, '\1') + audio(20).chopped(1)).fault, StreamFault::CutOff);
    }

    void aFileWithoutAudioHasASizeAndAProblem()
    {
        const StreamDetails details =
            readStreamDetails(file(u"text.mp3"_s, "no audio"), platform::FileSystem::native());
        QCOMPARE(details.size, u"8 bytes"_s);
        QCOMPARE(details.bitRate, QString());
        QCOMPARE(details.length, QString());
        QCOMPARE(details.frequency, QString());
        QVERIFY2(details.problem.startsWith(u"Could not find frame start"), qPrintable(details.problem));
    }

    void aMissingFileHasAProblemAndNoSize()
    {
        const StreamDetails details =
            readStreamDetails(m_folder.filePath(u"missing.mp3"_s), platform::FileSystem::native());
        QCOMPARE(details.size, QString());
        QVERIFY(details.problem.startsWith(u"No file was found with the name:"));
    }

    void aSlowFileDoesNotKeepTheCallerWaitingAndIsToldLater()
    {
        GatedFileSystem fileSystem;
        StreamDetailsReader reader(fileSystem);
        QList<StreamDetails> told;
        connect(&reader, &StreamDetailsReader::ready, this, [&told](const StreamDetails &d) { told << d; });
        reader.request(file(u"a.mp3"_s, audio(10)));
        QVERIFY(told.isEmpty());
        fileSystem.letThrough(1);
        QTRY_COMPARE(told.size(), 1);
        QCOMPARE(told.first().size, u"4170 bytes"_s);
    }

    void onlyTheFileAskedForLastIsTold()
    {
        GatedFileSystem fileSystem;
        StreamDetailsReader reader(fileSystem);
        QStringList told;
        connect(&reader, &StreamDetailsReader::ready, this, [&told](const StreamDetails &d) { told << d.size; });
        reader.request(file(u"1.mp3"_s, audio(1)));
        reader.request(file(u"2.mp3"_s, audio(2)));
        reader.request(file(u"3.mp3"_s, audio(3)));
        fileSystem.letThrough(3);
        QTRY_COMPARE(told, QStringList(u"1251 bytes"_s));
        QTest::qWait(50); // time for a wrong one to arrive
        QCOMPARE(told.size(), 1);
    }

    void nothingIsToldAfterCancel()
    {
        GatedFileSystem fileSystem;
        int told = 0;
        {
            StreamDetailsReader reader(fileSystem);
            connect(&reader, &StreamDetailsReader::ready, this, [&told] { ++told; });
            reader.request(file(u"a.mp3"_s, audio(10)));
            reader.cancel();
            fileSystem.letThrough(1);
            QTest::qWait(50);
        }
        QCOMPARE(told, 0);
    }

    void aReaderThatGoesAwayTellsNothing()
    {
        GatedFileSystem fileSystem;
        int told = 0;
        {
            StreamDetailsReader reader(fileSystem);
            connect(&reader, &StreamDetailsReader::ready, this, [&told] { ++told; });
            reader.request(file(u"a.mp3"_s, audio(10)));
            fileSystem.letThrough(1);
        }
        QCoreApplication::processEvents();
        QCOMPARE(told, 0);
    }
};

QTEST_GUILESS_MAIN(TestStreamDetails)
#include "tst_streamdetails.moc"
