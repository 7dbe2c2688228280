// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: what becomes of files on a full or read-only drive is said in the right words, each file counts once, and
// what was done can be undone. These drives are mounted.

#include "core/files/operations/fileoperations.h"

#include "support/mounteddrive.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

class Host final : public FileOperationHost
{
public:
    ClashDecision askClash(const Clash &clash) override
    {
        asked.append(clash.hasTrash ? u"replace to trash"_s : u"replace for good"_s);
        return {ClashAnswer::Replace};
    }
    bool confirmTrash(const QStringList &paths) override
    {
        asked.append(u"trash %1"_s.arg(paths.size()));
        return true;
    }
    bool confirmDeleteForGood(const QStringList &paths, NoWayBack reason) override
    {
        asked.append((reason == NoWayBack::TrashFull ? u"delete from full %1"_s : u"delete %1"_s).arg(paths.size()));
        return deletes;
    }
    bool runLong(OperationKind, const std::function<void(const Watch &)> &work) override
    {
        work({});
        return true;
    }
    void tell(const OperationReport &report) override { told.append(report); }

    bool deletes = true;
    QStringList asked;
    QList<OperationReport> told;
};

} // namespace

class TestDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aFullDriveOffersToDeleteForGood();
    void aReadOnlyDriveIsSaidToBeOnce_data();
    void aReadOnlyDriveIsSaidToBeOnce();
    void whatFailsInAFolderIsNamedAsTheUserKnowsIt();
    void aMoveFromAReadOnlyDriveIsInBothPlaces();
    void aReplacedFileOnAFullDriveIsSaidToBeLost();

private:
    QString in(const QString &name) const { return m_folder->filePath(name); }
    /// Puts these files on the drive; a request for them.
    QString put(const QStringList &names) const
    {
        for (const QString &name : names)
            writeFile(in(u"drive/"_s + name), name.toUtf8());
        return sourceList(in(u"drive/"_s), names);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<MountedDrive> m_drive;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<QTemporaryDir> m_database;
    std::unique_ptr<history::History> m_history;
    std::unique_ptr<FileOperations> m_operations;
    std::unique_ptr<clsFileFunc> m_files;
};

void TestDrives::init()
{
    m_drive.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_drive = std::make_unique<MountedDrive>(in(u"drive"_s), "1m");
    if (!m_drive->isMounted())
        QSKIP("mounting a drive is not permitted");
    m_host = std::make_unique<Host>();
    m_database = std::make_unique<QTemporaryDir>();
    m_history = std::make_unique<history::History>(
        platform::FileSystem::native(), QDir::toNativeSeparators(m_database->filePath(u"history.sqlite"_s)));
    m_operations = std::make_unique<FileOperations>(platform::FileSystem::native(), *m_host, *m_history);
    m_files = std::make_unique<clsFileFunc>(platform::FileSystem::native(), *m_operations);
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
    QDir().mkpath(in(u"to"_s));
}

void TestDrives::aFullDriveOffersToDeleteForGood()
{
    const QString files = put({u"a.mp3"_s, u"cd/b.mp3"_s});
    QVERIFY(m_drive->fill());
    m_host->deletes = false;
    QCOMPARE(m_files->DeleteFile(files), ResultCancelled);
    QCOMPARE(m_host->asked, (QStringList{u"trash 2"_s, u"delete from full 2"_s}));
    QCOMPARE(contentOf(in(u"drive/a.mp3"_s)), QByteArray("a.mp3"));
    m_host->deletes = true;
    QCOMPARE(m_files->DeleteFile(files), ResultDone);
    QVERIFY(m_host->told.isEmpty());
    QCOMPARE(snapshotOf(in(u"drive"_s)).keys(), (QStringList{u"cd"_s, u"filling"_s})); // no empty trash either
}

void TestDrives::aReadOnlyDriveIsSaidToBeOnce_data()
{
    QTest::addColumn<FileOperation>("operation");
    QTest::newRow("deletion") << FileOperation::Delete;
    QTest::newRow("copies onto it") << FileOperation::Copy;
    QTest::newRow("moves on it") << FileOperation::Move;
}

void TestDrives::aReadOnlyDriveIsSaidToBeOnce()
{
    QFETCH(FileOperation, operation);
    const QString files = put({u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s});
    QDir().mkpath(in(u"drive/to"_s));
    const Snapshot before = snapshotOf(in(u"drive"_s));
    QVERIFY(m_drive->makeReadOnly());
    FileRequest request{0, operation, files, in(u"drive/to/"_s), FlagAllowUndo};
    QVERIFY(m_operations->perform(request) != ResultDone);
    QVERIFY(m_host->asked.isEmpty());
    const OperationReport report = m_host->told.value(0);
    QCOMPARE(report.doneCount, 0);
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, ErrorCode::ReadOnlyDrive);
    QCOMPARE(report.failures[0].path, in(u"drive/a.mp3"_s));
    QVERIFY2(!report.failures[0].error.path.contains(u".ravlin-"_s), qPrintable(report.failures[0].error.path));
    QCOMPARE(report.notDone, (QStringList{in(u"drive/b.mp3"_s), in(u"drive/c.mp3"_s)}));
    QVERIFY(!report.wasStopped);
    QCOMPARE(snapshotOf(in(u"drive"_s)), before);
}

void TestDrives::whatFailsInAFolderIsNamedAsTheUserKnowsIt()
{
    const QString song = in(u"cd/sub/large.mp3"_s);
    writeFile(song, QByteArray(2'000'000, 'x'));
    QVERIFY(m_files->CopyFile(in(u"cd"_s), in(u"drive/"_s)) != ResultDone);
    QCOMPARE(m_host->told.value(0).failures[0].error.code, ErrorCode::NoSpace);
    QCOMPARE(m_host->told.value(0).failures[0].error.path, QFileInfo(song).canonicalFilePath());
    QVERIFY(m_drive->makeReadOnly());
    QVERIFY(m_files->CopyFile(in(u"cd"_s), in(u"drive/"_s)) != ResultDone);
    QCOMPARE(m_host->told.value(1).failures[0].error.code, ErrorCode::ReadOnlyDrive);
    QCOMPARE(m_host->told.value(1).failures[0].error.path, in(u"cd"_s));
}

void TestDrives::aMoveFromAReadOnlyDriveIsInBothPlaces()
{
    const QString files = put({u"a.mp3"_s, u"b.mp3"_s});
    put({u"cd/c.mp3"_s});
    const Snapshot before = snapshotOf(in(u"drive"_s));
    QVERIFY(m_drive->makeReadOnly());
    QVERIFY(m_files->MoveFile(files + in(u"drive/cd"_s), in(u"to/"_s)) != ResultDone);
    const OperationReport report = m_host->told.value(0);
    QCOMPARE(report.doneCount, 0);
    QVERIFY(report.failures.empty() && report.notDone.isEmpty());
    QCOMPARE(report.inBothPlaces.size(), std::size_t(3));
    QCOMPARE(report.inBothPlaces[0].error.code, ErrorCode::ReadOnlyDrive);
    QCOMPARE(snapshotOf(in(u"to"_s)), before);
    QCOMPARE(m_operations->undo(), ResultDone);
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(snapshotOf(in(u"drive"_s)), before);
}

void TestDrives::aReplacedFileOnAFullDriveIsSaidToBeLost()
{
    put({u"a.mp3"_s, u"cd/a.mp3"_s});
    QVERIFY(m_drive->fill());
    QCOMPARE(m_files->MoveFile(in(u"drive/cd/a.mp3"_s), in(u"drive/"_s)), ResultDone);
    QCOMPARE(m_host->asked, QStringList{u"replace to trash"_s});
    QCOMPARE(m_host->told.value(0).lost, QStringList{in(u"drive/a.mp3"_s)});
    QCOMPARE(contentOf(in(u"drive/a.mp3"_s)), QByteArray("cd/a.mp3"));
    QVERIFY(!platform::isTaken(in(u"drive/.Trash-%1"_s.arg(::geteuid()))));
}

QTEST_GUILESS_MAIN(TestDrives)

#include "tst_drives.moc"
