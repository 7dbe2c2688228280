// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/history.h"
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

/// Of the same size as the old content, but for bytes in two blocks.
QByteArray patchedContent()
{
    constexpr qsizetype FarAway = 200'000;
    QByteArray content = OldContent;
    return content.replace(100, 5, "patch").replace(FarAway, 5, "patch");
}

/// Writes the two contents in turn until it is killed, and records it.
int writeForEver(const QString &path, const QString &database, const QByteArray &newContent)
{
    history::History history(FileSystem::native(), database);
    for (bool isNew = true;; isNew = !isNew) {
        const history::Operation operation(&history, history::Kind::Single, folderOf(path));
        const auto written = rewriteFile(FileSystem::native(), path, infoOf(path),
            {Segment::fresh(isNew ? newContent : OldContent)}, {.journal = &history});
        if (!written) {
            std::fprintf(stderr, "%s\n", qPrintable(written.error().detail));
            return 1;
        }
        std::fputs("written\n", stdout);
        std::fflush(stdout);
    }
}

} // namespace

/// Contract: a program that is killed while it writes leaves the old content or the new one, at the latest once the
/// next program has looked into the history, and of its temporary files none.
class TestWindowsKill : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aKilledProgramLeavesTheOldFileOrTheNewOne_data()
    {
        QTest::addColumn<bool>("hasTwoNames");
        QTest::addColumn<bool>("isPatched");
        QTest::newRow("replaced") << false << false;
        QTest::newRow("rewritten under a redo file") << true << false;
        QTest::newRow("patched in two blocks") << false << true;
    }
    void aKilledProgramLeavesTheOldFileOrTheNewOne()
    {
        QFETCH(bool, hasTwoNames);
        QFETCH(bool, isPatched);
        const QByteArray newContent = isPatched ? patchedContent() : NewContent;
        constexpr int Rounds = 12;
        constexpr int LongestLife = 60;       // milliseconds
        constexpr int StartPatience = 60'000; // milliseconds
        for (int round = 0; round < Rounds; ++round) {
            const ScratchFolder scratch;
            const ScratchFolder data;
            const QString database = data.path(u"history.sqlite"_s);
            const QString path = QDir::toNativeSeparators(scratch.write(u"one.mp3"_s, OldContent));
            const QString second = QDir::toNativeSeparators(scratch.path(u"two.mp3"_s));
            if (hasTwoNames)
                QVERIFY(::CreateHardLinkW(second.toStdWString().c_str(), path.toStdWString().c_str(), nullptr) != 0);
            QProcess child;
            child.start(
                QCoreApplication::applicationFilePath(), {isPatched ? u"--patch"_s : u"--write"_s, path, database});
            QVERIFY(child.waitForReadyRead(StartPatience));
            QThread::msleep(QRandomGenerator::global()->bounded(LongestLife));
            QCOMPARE(child.state(), QProcess::Running);
            child.kill();
            QVERIFY(child.waitForFinished(StartPatience));

            {
                history::History history(FileSystem::native(), database);
                const history::Recovery recovery = history.recover();
                QVERIFY2(
                    recovery.left.empty(), qPrintable(recovery.left.empty() ? QString() : recovery.left[0].detail));
            }
            const QByteArray found = ScratchFolder::read(path);
            QVERIFY2(found == OldContent || found == newContent, qPrintable(QString::number(found.size())));
            if (hasTwoNames)
                QCOMPARE(ScratchFolder::read(second), found);
            QCOMPARE(scratch.names().size(), hasTwoNames ? 2 : 1);
            QVERIFY2(data.names().filter(u".tmp"_s).isEmpty(), qPrintable(data.names().join(u' ')));
        }
    }
};

} // namespace ravlin::platform

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == u"--write")
        return ravlin::platform::writeForEver(arguments.value(2), arguments.value(3), ravlin::platform::NewContent);
    if (arguments.value(1) == u"--patch") {
        const QByteArray patched = ravlin::platform::patchedContent();
        return ravlin::platform::writeForEver(arguments.value(2), arguments.value(3), patched);
    }
    ravlin::platform::TestWindowsKill test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowskill.moc"
