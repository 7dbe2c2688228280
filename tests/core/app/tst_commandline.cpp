// SPDX-License-Identifier: GPL-3.0-or-later
// The command line names a folder, or a file whose folder is meant.

#include "core/app/commandline.h"
#include "support/nativepath.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesAFolder_data()
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
    }
    void namesAFolder()
    {
        QFETCH(QString, commandLine);
        QFETCH(QString, folder);
        QCOMPARE(folderOfCommandLine(native(commandLine)), native(folder));
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
