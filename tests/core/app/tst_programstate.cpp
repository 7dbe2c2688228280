// SPDX-License-Identifier: GPL-3.0-or-later
// What the program works with during one run. The shared state starts with its defaults, and a tag-save mode is exactly
// one digit from 1 to 5. Options: nothing stored, or nothing known, gives the defaults; only changes are written, so a
// value that a later version stored is not overwritten. The command line names a folder, or a file whose folder is
// meant.

#include "core/app/programstate.h"
#include "core/app/settings.h"
#include "core/platform/path.h"
#include "support/nativepath.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestProgramState : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString path() const { return m_folder->filePath(u"ravlin.ini"_s); }
    void put(const QByteArray &content) const
    {
        QFile file(path());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(content), content.size());
    }
    QByteArray got() const
    {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void valuesAtTheStart()
    {
        const ProgramState state;
        QCOMPARE(state.tagSaveMode, 2);
        QCOMPARE(state.currentFolder, QString());
        QCOMPARE(state.currentFolderAsChosen, QString());
        QCOMPARE(state.freeMegabytes, 0);
        QVERIFY(!state.cancelled);
        QCOMPARE(state.previewMode, PreviewMode::None);
    }

    void modesAreExactlyOneDigit()
    {
        for (int mode = 1; mode <= 5; ++mode)
            QCOMPARE(tagSaveModeFromText(QString::number(mode)), std::optional(mode));
        for (const QString &text :
            {QString(), u"0"_s, u"6"_s, u" 2"_s, u"2 "_s, u"02"_s, u"22"_s, u"-1"_s, u"two"_s, u"٣"_s, u"３"_s, u"²"_s})
            QVERIFY2(!tagSaveModeFromText(text), qPrintable(text));
    }

    void anEmptyTextGivesTheDefault()
    {
        QCOMPARE(textOrDefault(QString(), u"default"), u"default"_s);
        QCOMPARE(textOrDefault(u" "_s, u"default"), u" "_s);
        QCOMPARE(textOrDefault(u"text"_s, u"default"), u"text"_s);
    }

    void serverAndMailAreTheStoredOnesOrTheDefaults()
    {
        Settings settings(path());
        QCOMPARE(cdServer(settings), defaults::Server.toString());
        QCOMPARE(cdMail(settings), defaults::Mail.toString());
        settings.write(settingskey::Servidor, u"cd.example.org"_s);
        settings.write(settingskey::Correo, u"me@example.org"_s);
        QCOMPARE(cdServer(settings), u"cd.example.org"_s);
        QCOMPARE(cdMail(settings), u"me@example.org"_s);
        settings.write(settingskey::Servidor, QString());
        QCOMPARE(cdServer(settings), defaults::Server.toString());
    }

    void nothingStoredGivesTheDefaults()
    {
        const FurtherOptions options = FurtherOptions::restored(Settings(path()));
        QCOMPARE(options.newTagVersion, 3);
        QVERIFY(!options.keepFileTimes);
        QCOMPARE(options.doubleClick, DoubleClick::Open);
        QCOMPARE(options.hiddenColumns, QString());
        QVERIFY(options == FurtherOptions());
    }

    void whatIsStoredIsRestored()
    {
        const FurtherOptions options{4, true, DoubleClick::Edit, u"track year"_s};
        {
            Settings settings(path());
            options.store(settings);
            QVERIFY(settings.save());
        }
        QCOMPARE(
            got(), QByteArray("[ini]\ndouble click=edit\nhidden columns=track year\nid3v2 version=4\nkeep times=si\n"));
        QVERIFY(FurtherOptions::restored(Settings(path())) == options);
        {
            Settings settings(path());
            FurtherOptions().store(settings);
            QVERIFY(settings.save());
        }
        QVERIFY(FurtherOptions::restored(Settings(path())) == FurtherOptions());
    }

    void theDefaultsAreNotWrittenWhereNothingIsStored()
    {
        Settings settings(path());
        FurtherOptions().store(settings);
        QVERIFY(settings.save());
        QVERIFY(!QFile::exists(path()));
    }

    void whatOnlyALaterVersionKnowsStaysUntilTheUserChooses()
    {
        const QByteArray later = "[ini]\nid3v2 version=5\nkeep times=newer only\ndouble click=rate\n";
        put(later);
        Settings settings(path());
        FurtherOptions options = FurtherOptions::restored(settings);
        QVERIFY(options == FurtherOptions());
        options.store(settings);
        QVERIFY(settings.save());
        QCOMPARE(got(), later);
        options.newTagVersion = 4;
        options.store(settings);
        QVERIFY(settings.save());
        QCOMPARE(got(), QByteArray("[ini]\nid3v2 version=4\nkeep times=newer only\ndouble click=rate\n"));
    }

    void theLimitsOfTheHistory_data()
    {
        QTest::addColumn<QString>("stored");
        QTest::addColumn<int>("days");
        QTest::addColumn<int>("megabytes");
        QTest::newRow("nothing") << QString() << 90 << 500;
        QTest::newRow("a number") << u"7"_s << 7 << 7;
        QTest::newRow("the largest number of days") << u"3650"_s << 3650 << 3650;
        QTest::newRow("too many days") << u"3651"_s << 3650 << 3651;
        QTest::newRow("too much") << u"2000000000"_s << 3650 << 1'000'000;
        QTest::newRow("no day at all") << u"0"_s << 90 << 500;
        QTest::newRow("less than nothing") << u"-3"_s << 90 << 500;
        QTest::newRow("no number") << u"many"_s << 90 << 500;
    }
    void theLimitsOfTheHistory()
    {
        QFETCH(QString, stored);
        Settings settings(path());
        settings.write(u"historia dias", stored);
        settings.write(u"historia megas", stored);
        const FurtherOptions options = FurtherOptions::restored(settings);
        QTEST(options.historyDays, "days");
        QTEST(options.historyMegabytes, "megabytes");
        options.store(settings);
        QCOMPARE(settings.read(u"historia dias"), stored);
    }

    void aCommandLineNamesAFolder_data()
    {
        QTest::addColumn<QString>("commandLine");
        QTest::addColumn<QString>("folder");
        QTest::newRow("a folder opens that folder") << QStringLiteral("/Music") << QStringLiteral("/Music");
        QTest::newRow("a quoted file opens its folder, the separator at the end kept")
            << QStringLiteral("\"/Music/a.mp3\"") << QStringLiteral("/Music/");
        QTest::newRow("a file in the root") << QStringLiteral("/a.mp3") << QStringLiteral("/");
        QTest::newRow("a file name alone is cut to its first character")
            << QStringLiteral("song.mp3") << QStringLiteral("s");
        QTest::newRow("upper case") << QStringLiteral("/Music/A.MP3") << QStringLiteral("/Music/");
        QTest::newRow("a file of another type is taken as a folder")
            << QStringLiteral("/Music/a.ogg") << QStringLiteral("/Music/a.ogg");
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("a quote alone") << QStringLiteral("\"") << QString();
        QTest::newRow("a quoted folder") << QStringLiteral("\"/x/cd 1\"") << QStringLiteral("/x/cd 1");
        QTest::newRow("a quote belongs to the name")
            << QStringLiteral("/x/Blue Monday 12\"") << QStringLiteral("/x/Blue Monday 12\"");
    }
    void aCommandLineNamesAFolder()
    {
        QFETCH(QString, commandLine);
        QFETCH(QString, folder);
        QCOMPARE(folderOfCommandLine(native(commandLine)), native(folder));
    }

    void anAddressOnTheCommandLineNamesAFolder()
    {
        QCOMPARE(folderOfCommandLine(QStringLiteral("file:///x/cd%201")), native(QStringLiteral("/x/cd 1")));
        QCOMPARE(folderOfCommandLine(QStringLiteral("FILE:///x/a%20b.mp3")), native(QStringLiteral("/x/")));
    }

    void aFolderOfTheCommandLineIsMadeAbsoluteWithoutItsQuotes_data()
    {
        QTest::addColumn<QString>("commandLine");
        QTest::addColumn<QString>("folder");
        const auto row = [](const char *commandLine, const char *folder) {
            QTest::newRow(commandLine) << QString::fromLatin1(commandLine) << QString::fromLatin1(folder);
        };
        row("cd 1", "/music/cd 1");
        row("\"cd 1\"", "/music/cd 1");
        row("\"/x/cd 1\"", "/x/cd 1");
        row("cd 12\"", "/music/cd 12\"");
        row("../x/./y", "/x/y");
        row("song.mp3", "/music/");
        row("\"cd/song.mp3\"", "/music/cd/");
        row("file:/x/cd", "/x/cd");
        row("file://nas/share", "/music/file:/nas/share"); // a name that no folder has
        row("", "");
        row("\"\"", "");
    }
    void aFolderOfTheCommandLineIsMadeAbsoluteWithoutItsQuotes()
    {
        if (platform::Separator != u'/')
            QSKIP("here an absolute path begins with a drive, whose letter the table cannot know");
        QFETCH(QString, commandLine);
        QFETCH(QString, folder);
        QCOMPARE(folderOfCommandLine(commandLine, QStringLiteral("/music")), folder);
    }

    void aDroppedAddressIsAPathOfThisComputerOrNamesAnotherOne_data()
    {
        QTest::addColumn<QByteArray>("address");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("otherComputer");
        const auto row = [](const char *address, const QString &path, const QString &otherComputer) {
            QTest::newRow(address) << QByteArray(address) << path << otherComputer;
        };
        const QString none;
        row("file:///Music/a%20b", QStringLiteral("/Music/a b"), none);
        row("file://localhost/Music", QStringLiteral("/Music"), none);
        row("file:/Music", QStringLiteral("/Music"), none);
        row("file://nas/share", none, QStringLiteral("nas"));
        row("file://NAS.example/share/a.mp3", none, QStringLiteral("nas.example"));
        row("file://127.0.0.1/c$", none, QStringLiteral("127.0.0.1"));
        row("file:////nas/share", none, QStringLiteral("nas"));
        row("file://///nas/share", none, QStringLiteral("nas"));
        row("file:///%2Fnas/share", none, QStringLiteral("nas"));
        row("file://localhost//nas/share", none, QStringLiteral("nas"));
        row("file:////%3F/UNC/nas/share", none, QStringLiteral("?"));
        row("http://nas/share", none, none);
        row("file:///a%00b", none, none);
        row("file:///caf%C3%A9%E9", platform::decodePath("/caf\xC3\xA9\xE9"), none);
        row("smb://nas/share", none, none);
        row("", none, none);
        if (platform::Separator == u'\\') {
            row("file:///C:/Music", QStringLiteral("C:/Music"), none);
            row("file:///%5Cnas/share", none, QStringLiteral("nas"));
            row("file:///%5C%5Cnas%5Cshare", none, QStringLiteral("nas"));
        }
    }
    void aDroppedAddressIsAPathOfThisComputerOrNamesAnotherOne()
    {
        QFETCH(QByteArray, address);
        QFETCH(QString, path);
        QFETCH(QString, otherComputer);
        const DroppedAddress dropped = droppedAddress(QUrl::fromEncoded(address));
        QCOMPARE(dropped.path, path);
        QCOMPARE(dropped.otherComputer, otherComputer);
    }
};

QTEST_GUILESS_MAIN(TestProgramState)
#include "tst_programstate.moc"
