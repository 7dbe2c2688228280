// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/path.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/safewrite.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRandomGenerator>
#include <QTest>
#include <QThread>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace ravlin::platform {
namespace {

using namespace storage;
using test::infoOf;
using test::ScratchFolder;

const QByteArray OldContent(300'000, 'o');
const QByteArray NewContent = QByteArray(9'000, 'n') + OldContent;

/// Writes the two contents in turn until it is killed.
int writeForEver(const QString &path)
{
    std::fputs("writing\n", stdout);
    std::fflush(stdout);
    for (bool isNew = true;; isNew = !isNew) {
        const auto written =
            rewriteFile(FileSystem::native(), path, infoOf(path), {Segment::fresh(isNew ? NewContent : OldContent)});
        if (!written) {
            std::fprintf(stderr, "%s\n", qPrintable(written.error().detail));
            return 1;
        }
    }
}

} // namespace

/// Contract: a program that is killed while it writes leaves the old content or the new one.
class TestWindowsKill : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aKilledProgramLeavesTheOldFileOrTheNewOne_data()
    {
        QTest::addColumn<bool>("hasTwoNames");
        QTest::newRow("replaced") << false;
        QTest::newRow("rewritten under a redo file") << true;
    }
    void aKilledProgramLeavesTheOldFileOrTheNewOne()
    {
        QFETCH(bool, hasTwoNames);
        constexpr int Rounds = 12;
        constexpr int LongestLife = 60;       // milliseconds
        constexpr int StartPatience = 60'000; // milliseconds
        for (int round = 0; round < Rounds; ++round) {
            const ScratchFolder scratch;
            const QString path = QDir::toNativeSeparators(scratch.write(u"one.mp3"_s, OldContent));
            const QString second = QDir::toNativeSeparators(scratch.path(u"two.mp3"_s));
            if (hasTwoNames)
                QVERIFY(::CreateHardLinkW(second.toStdWString().c_str(), path.toStdWString().c_str(), nullptr) != 0);
            QProcess child;
            child.start(QCoreApplication::applicationFilePath(), {u"--write"_s, path});
            QVERIFY(child.waitForReadyRead(StartPatience));
            QThread::msleep(QRandomGenerator::global()->bounded(LongestLife));
            QCOMPARE(child.state(), QProcess::Running);
            child.kill();
            QVERIFY(child.waitForFinished(StartPatience));

            QVERIFY(recoverFile(FileSystem::native(), path));
            QVERIFY(cleanLeftovers(FileSystem::native(), QDir::toNativeSeparators(scratch.path())));
            const QByteArray found = ScratchFolder::read(path);
            QVERIFY2(found == OldContent || found == NewContent, qPrintable(QString::number(found.size())));
            if (hasTwoNames)
                QCOMPARE(ScratchFolder::read(second), found);
            QCOMPARE(scratch.names().size(), hasTwoNames ? 2 : 1);
        }
    }
};

} // namespace ravlin::platform

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--write")
        return ravlin::platform::writeForEver(arguments.value(2));
    ravlin::platform::TestWindowsKill test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowskill.moc"
