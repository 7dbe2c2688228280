// SPDX-License-Identifier: GPL-3.0-or-later
// The version file: its header, up to 51 records, and damaged files and other files. Versions are compared as text.
#include "core/online/update/versionfile.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

class TestVersionFile : public QObject
{
    Q_OBJECT

private:
    static QByteArray record(int number)
    {
        const QByteArray text = QByteArray::number(number);
        return "\"file" + text + ".zip\",\"description " + text + "\",\"1." + text + "\",\"dir/" + text + "\",\"\"\r\n";
    }
    static QByteArray records(int count)
    {
        QByteArray text = "\"1.4.0\",\"\"\r\n";
        for (int number = 1; number <= count; ++number)
            text += record(number);
        return text;
    }

private Q_SLOTS:
    void headerAndRecords()
    {
        const VersionFile file = VersionFile::parse(
            "\"1.5.0\",\"unused\"\r\n\"setup.zip\",\"all, in one\",\"1.5.0\",\"files/setup.zip\",\"5\"\r\n"
            "\"help.pdf\",\"help\",\"1.4\",\"\",7\r\n")
                                     .value();
        QCOMPARE(file.version, u"1.5.0"_s);
        QCOMPARE(file.records.size(), 2U);
        QVERIFY((file.records[0] == VersionRecord{u"setup.zip"_s, u"all, in one"_s, u"1.5.0"_s, u"files/setup.zip"_s}));
        QVERIFY((file.records[1] == VersionRecord{u"help.pdf"_s, u"help"_s, u"1.4"_s, QString()}));
    }

    void aDescriptionLosesControlCharacters()
    {
        const VersionFile file = VersionFile::parse("1.5,0\na.zip,\"a\xC2\x9B\xE2\x80\xA8\tb\",1.5,x,0\n").value();
        QCOMPARE(file.records.front().description, u"ab"_s);
    }

    void aHeaderAlone()
    {
        const VersionFile file = VersionFile::parse("1.4.0,0").value();
        QCOMPARE(file.version, u"1.4.0"_s);
        QVERIFY(file.records.empty());
    }

    void aVersionFileWith52RecordsReadingStopsAfterThe51st()
    {
        QCOMPARE(VersionFile::parse(records(51)).value().records.size(), 51U);
        const VersionFile file = VersionFile::parse(records(52)).value();
        QCOMPARE(file.records.size(), 51U);
        QCOMPARE(file.records.back().fileName, u"file51.zip"_s);
        QCOMPARE(VersionFile::parse(records(51) + "\"broken").value().records.size(), 51U);
    }

    void aRecordWhoseFileNameIsEmptyIsNotListed()
    {
        const QByteArray nameless = "\"\",\"note\",\"1\",\"x\",\"\"\r\n";
        const VersionFile file = VersionFile::parse(records(1) + nameless + record(2)).value();
        QCOMPARE(file.records.size(), 2U);
        QCOMPARE(file.records.back().fileName, u"file2.zip"_s);
        // It still counts as one of the 51.
        QCOMPARE(VersionFile::parse("1.0,0\n" + nameless + records(51).mid(12)).value().records.size(), 50U);
    }

    void readingStopsAtTheFirstErrorAndWhatWasReadSoFarStays_data()
    {
        QTest::addColumn<QByteArray>("third");
        QTest::newRow("a quote is missing") << QByteArray("\"c.zip,\"d\",\"1\",\"x\",\"\"\r\n");
        QTest::newRow("text behind a quote") << QByteArray("\"c.zip\"x,\"d\",\"1\",\"x\",\"\"\r\n");
        QTest::newRow("a control character") << QByteArray("\"c\x01\",\"d\",\"1\",\"x\",\"\"\r\n");
        QTest::newRow("cut in the record") << QByteArray("\"c.zip\",\"d\",\"1\",\"x\"");
        QTest::newRow("cut in a name") << QByteArray("\"c.z");
        QTest::newRow("cut behind a comma") << QByteArray("\"c.zip\",\"d\",\"1\",\"x\",");
    }
    void readingStopsAtTheFirstErrorAndWhatWasReadSoFarStays()
    {
        QFETCH(QByteArray, third);
        const VersionFile file = VersionFile::parse(records(2) + third).value();
        QCOMPARE(file.version, u"1.4.0"_s);
        QCOMPARE(file.records.size(), 2U);
        QCOMPARE(file.records.back().fileName, u"file2.zip"_s);
    }

    void whatIsNotInTheFormatIsRefused_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("half a header") << QByteArray("\"1.5.0\"");
        QTest::newRow("half a version") << QByteArray("\"1.5");
        QTest::newRow("no version") << QByteArray("\"newest\",\"\"\r\n");
        QTest::newRow("an empty version") << QByteArray("\"\",\"\"\r\n");
        QTest::newRow("full stops alone") << QByteArray("\"..\",\"\"\r\n");
        QTest::newRow("more behind the version") << QByteArray("\"1.5.0 now\",\"\"\r\n");
        QTest::newRow("digits of other scripts") << QByteArray("\"\xD9\xA1.5\",\"\"\r\n");
        QTest::newRow("a web page") << QByteArray("<!DOCTYPE html>\n<html><title>Sign in</title></html>\n");
        QTest::newRow("zeros") << QByteArray(5000, '\0');
        QTest::newRow("a packed file") << QByteArray("\x1f\x8b\x08\0\0\0\0\0", 8);
    }
    void whatIsNotInTheFormatIsRefused()
    {
        QFETCH(QByteArray, bytes);
        QCOMPARE(VersionFile::parse(bytes).error().kind, UpdateFailureKind::BadVersionFile);
    }

    void over64KbIsRefused()
    {
        const QByteArray file = records(1);
        const QByteArray filled = file + QByteArray(64 * 1024 - file.size(), '\n');
        QCOMPARE(VersionFile::parse(filled).value().records.size(), 1U);
        QCOMPARE(VersionFile::parse(filled + '\n').error().kind, UpdateFailureKind::BadVersionFile);
    }

    void versionsAreComparedAsTexts_data()
    {
        QTest::addColumn<QString>("running");
        QTest::addColumn<QString>("offered");
        QTest::addColumn<bool>("isNewer");
        QTest::newRow("the same") << u"1.4.0"_s << u"1.4.0"_s << false;
        QTest::newRow("greater") << u"1.4.0"_s << u"1.5.0"_s << true;
        QTest::newRow("smaller") << u"1.4.0"_s << u"1.3.9"_s << false;
        QTest::newRow("1.10.0 counts as older than 1.9.0") << u"1.9.0"_s << u"1.10.0"_s << false;
        QTest::newRow("2.0.0 counts as newer than 10.0.0") << u"10.0.0"_s << u"2.0.0"_s << true;
        QTest::newRow("longer") << u"1.4"_s << u"1.4.0"_s << true;
    }
    void versionsAreComparedAsTexts()
    {
        QFETCH(QString, running);
        QFETCH(QString, offered);
        QTEST(isNewerVersion(offered, running), "isNewer");
    }

    void theRunningVersionIsMajorMinorAndRevisionJoinedByFullStops()
    {
        QCOMPARE(runningVersion(), QStringLiteral(RAVLIN_VERSION));
        QCOMPARE(runningVersion().count(u'.'), 2);
    }
};

QTEST_GUILESS_MAIN(TestVersionFile)
#include "tst_versionfile.moc"
