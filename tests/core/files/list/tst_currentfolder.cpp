// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: entering a folder sets the program's state; a refresh lists the folder or its tree and gives files of an
// interrupted rename their names back; the status bar shows the number of files and the current one.

#include "core/files/list/currentfolder.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/saferename.h"
#include "support/mp3builder.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestCurrentFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theStatusBarCountsRowsAndNamesTheCurrentFile()
    {
        const StatusTexts texts =
            statusTexts(12, QStringLiteral("archivos"), QStringLiteral("/m/"), QStringLiteral("cd1/a.mp3"));
        QCOMPARE(texts.panel1, QStringLiteral("12 archivos"));
        QCOMPARE(texts.panel2, QStringLiteral("/m/cd1/a.mp3"));
        const StatusTexts none = statusTexts(0, QStringLiteral("files"), QStringLiteral("/m/"), {});
        QVERIFY(none.panel1.isEmpty() && none.panel2.isEmpty());
    }

    void enteringAFolderKeepsItsPathsAndClearsTheCancelledFlag()
    {
        ProgramState state;
        platform::FileSystem &fileSystem = platform::FileSystem::native();
        const QString folder = QDir::toNativeSeparators(QDir::tempPath());
        state.cancelled = true;
        enterFolder(state, folder, fileSystem);
        QCOMPARE(state.currentFolder, folder + platform::Separator);
        QCOMPARE(state.currentFolderAsChosen, folder);
        QCOMPARE(state.freeMegabytes > 0, fileSystem.freeBytes(folder).value() >= 1024 * 1024);
        QVERIFY(!state.cancelled);
        state.cancelled = true;
        enterFolder(state, folder, fileSystem); // a refresh
        QVERIFY(state.cancelled);
        const QString root = QDir::toNativeSeparators(QDir::rootPath());
        enterFolder(state, root, fileSystem);
        QCOMPARE(state.currentFolder, root);
        QVERIFY(!state.cancelled);
    }

    void aFolderThatCannotBeListedHasNoRows()
    {
        QVERIFY(RefreshList(QStringLiteral("/no/such/folder/")).rows.empty());
        QVERIFY(RefreshListTree(QStringLiteral("/no/such/folder/")).rows.empty());
    }

    void filesOfAnInterruptedRenameGetTheirNamesBack()
    {
        const ScratchFolder folder;
        QDir(folder.path()).mkpath(QStringLiteral("cd"));
        folder.write(storage::asideName(QStringLiteral("a.mp3"), 1), audio());
        folder.write(QStringLiteral("cd/") + storage::asideName(QStringLiteral("b.mp3"), 2), audio());
        const Listing own = RefreshList(folder.path() + platform::Separator);
        QCOMPARE(own.rows.size(), size_t{1});
        QCOMPARE(own.rows.front().text(), QStringLiteral("a.mp3"));
        const Listing tree = RefreshListTree(folder.path() + platform::Separator);
        QCOMPARE(tree.rows.size(), size_t{2});
        QCOMPARE(tree.rows.back().text(), QDir::toNativeSeparators(QStringLiteral("cd/b.mp3")));
    }

    void aStoppedListingKeepsItsRowsAndLeavesInterruptedRenamesToTheNext()
    {
        const ScratchFolder folder;
        folder.write(QStringLiteral("b.mp3"), audio());
        folder.write(storage::asideName(QStringLiteral("a.mp3"), 1), audio());
        for (const auto refresh : {&RefreshList, &RefreshListTree}) {
            std::stop_source stop;
            const auto stopAtTheFirstFile = [&](const Progress &now) {
                if (now.done > 0)
                    stop.request_stop();
            };
            const Listing stopped = refresh(
                folder.path() + platform::Separator, {.progress = stopAtTheFirstFile, .stop = stop.get_token()});
            QVERIFY(!stopped.isComplete);
            QCOMPARE(stopped.rows.size(), size_t{1});
        }
        QVERIFY(QFile::exists(folder.path() + u'/' + storage::asideName(QStringLiteral("a.mp3"), 1)));
        QCOMPARE(RefreshList(folder.path() + platform::Separator).rows.size(), size_t{2});
        QVERIFY(QFile::exists(folder.path() + QStringLiteral("/a.mp3")));
    }
};

QTEST_GUILESS_MAIN(TestCurrentFolder)
#include "tst_currentfolder.moc"
