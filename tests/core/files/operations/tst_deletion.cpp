// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: deleting for good reports each path, deletes nothing after a stop, goes on after a failure, and refuses a
// whole drive.

#include "core/files/operations/deletion.h"
#include "core/platform/scratchfolder.h"
#include "support/faultyfilesystem.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestDeletion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void eachPathIsReportedAndNothingIsDeletedAfterAStop()
    {
        const ScratchFolder folder;
        const QStringList paths{
            folder.write(u"a.mp3"_s, "a"), folder.write(u"b.mp3"_s, "b"), folder.write(u"c.mp3"_s, "c")};
        std::stop_source stop;
        QStringList reported;
        const auto stopAtB = [&](const Progress &now) {
            reported += now.path;
            if (now.path == paths[1])
                stop.request_stop();
        };
        const DeletionReport report = deleteForGood(platform::FileSystem::native(), paths, {stopAtB, stop.get_token()});
        QVERIFY(report.wasStopped);
        QCOMPARE(report.deleted, paths.first(2));
        QCOMPARE(report.notDone, paths.last(1));
        QCOMPARE(reported, (QStringList{paths[0], paths[1], paths[1]})); // the last report says how many are done
        QCOMPARE(folder.names(), QStringList{u"c.mp3"_s});
    }

    void aFailureKeepsNoOtherFromBeingDeleted()
    {
        const ScratchFolder folder;
        const QStringList paths{folder.path(u"gone.mp3"_s), folder.write(u"a.mp3"_s, "a")};
        const DeletionReport report = deleteForGood(platform::FileSystem::native(), paths);
        QCOMPARE(report.failures.size(), size_t{1});
        QCOMPARE(report.failures.front().path, paths.front());
        QCOMPARE(report.deleted, paths.last(1));
        QVERIFY(!report.wasStopped && folder.names().isEmpty());
    }

    void whatIsGoneHasNoQuestionAboutTheTrash()
    {
        const ScratchFolder folder;
        const QString there = folder.write(u"a.mp3"_s, "a");
        const QStringList gone{folder.path(u"gone.mp3"_s), folder.path(u"gone/b.mp3"_s)};
        QVERIFY(withoutTrash(gone).isEmpty());
        const DeletionReport report = undeletable(gone + QStringList{there});
        QCOMPARE(report.failures.size(), size_t{2});
        QCOMPARE(report.failures[1].path, gone[1]);
        QCOMPARE(report.failures[1].error.code, ErrorCode::NotFound);
        QVERIFY(report.notDone.isEmpty() && !report.wasStopped);
    }

    void aWholeDriveIsRefused()
    {
        FaultyFileSystem untouched; // refuses every call
        untouched.setPlan({.fault = Fault::Fail, .at = 0, .forEver = true});
        const DeletionReport report = deleteForGood(untouched, {QDir::toNativeSeparators(QDir::rootPath())});
        QVERIFY(report.deleted.isEmpty());
        QCOMPARE(report.failures.size(), size_t{1});
        QCOMPARE(report.failures.front().error.code, ErrorCode::NoOwnName);
        QVERIFY(!untouched.hasFired());
    }
};

QTEST_GUILESS_MAIN(TestDeletion)
#include "tst_deletion.moc"
