// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: the service behind clsFileFunc asks before it overwrites, trashes or deletes, obeys the answer, shows what
// was not done, records what was, and returns the result as a number.

#include "core/files/operations/fileoperations.h"

#include "support/filetree.h"
#include "support/trash.h"

#include <QDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

/// A user with fixed answers who records the questions.
class ScriptedHost final : public FileOperationHost
{
public:
    ClashDecision askClash(const Clash &clash) override
    {
        asked.append(u"clash "_s + platform::nameOf(clash.target));
        return clashAnswer;
    }
    bool confirmTrash(const QStringList &paths) override
    {
        asked.append(u"trash %1"_s.arg(paths.size()));
        return trashAnswer;
    }
    bool confirmDeleteForGood(const QStringList &paths, NoWayBack reason) override
    {
        asked.append((reason == NoWayBack::TrashFull ? u"delete from full %1"_s : u"delete %1"_s).arg(paths.size()));
        return deleteAnswer;
    }
    bool runLong(OperationKind kind, const std::function<void(const Watch &)> &work) override
    {
        if (isBusy)
            return false;
        kinds.append(kind);
        std::stop_source stop;
        if (stops)
            stop.request_stop();
        work({{}, stop.get_token()});
        return true;
    }
    void tell(const OperationReport &report) override { told.append(report); }

    ClashDecision clashAnswer{ClashAnswer::Skip, false};
    bool trashAnswer = true;
    bool deleteAnswer = false;
    bool isBusy = false;
    bool stops = false;
    QStringList asked;
    QList<OperationKind> kinds;
    QList<OperationReport> told;
};

} // namespace

class TestFileOperations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void copiesAndMovesIntoAFolder();
    void aSingleSourceToAPath();
    void rowsOfSubfolders();
    void clashesAreAsked();
    void callingOffDoesNothing();
    void deletingAsksOnceAndTrashes();
    void withoutTrashAPlainQuestion();
    void aYesToTheTrashIsNoneToLosing();
    void withoutUndoForGood();
    void whatIsGoneIsSaidToBeWithoutAQuestion();
    void renames();
    void failuresAreTold();
    void stoppingIsTold();
    void busyDoesNothing();
    void undoes();
    void theNearestFolderThatIsLeft();

private:
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    QString list(const QStringList &names) const
    {
        return QDir::toNativeSeparators(sourceList(m_folder->path() + u'/', names));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ScriptedHost> m_host;
    std::unique_ptr<QTemporaryDir> m_database;
    std::unique_ptr<history::History> m_history;
    std::unique_ptr<FileOperations> m_operations;
    std::unique_ptr<clsFileFunc> m_files;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
};

void TestFileOperations::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_host = std::make_unique<ScriptedHost>();
    m_database = std::make_unique<QTemporaryDir>();
    m_history = std::make_unique<history::History>(
        m_fileSystem, QDir::toNativeSeparators(m_database->filePath(u"history.sqlite"_s)));
    m_operations = std::make_unique<FileOperations>(m_fileSystem, *m_host, *m_history);
    m_files = std::make_unique<clsFileFunc>(m_fileSystem, *m_operations);
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
    emptyTrash();
    QDir().mkpath(in(u"to"_s));
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    writeFile(in(u"cd1/a.mp3"_s), "cd1 a");
}

void TestFileOperations::copiesAndMovesIntoAFolder()
{
    QCOMPARE(m_files->CopyFile(list({u"a.mp3"_s, u"cd1"_s}), in(u"to/"_s)), ResultDone);
    QCOMPARE(m_files->MoveFile(list({u"b.mp3"_s}), in(u"to"_s)), ResultDone);
    QCOMPARE(snapshotOf(in(u"to"_s)), (Snapshot{{u"a.mp3"_s, "file a"}, {u"b.mp3"_s, "file b"}, {u"cd1"_s, "folder"},
                                          {u"cd1/a.mp3"_s, "file cd1 a"}}));
    QVERIFY(!platform::isTaken(in(u"b.mp3"_s)));
    QVERIFY(m_host->asked.isEmpty());
    QVERIFY(m_host->told.isEmpty());
}

void TestFileOperations::aSingleSourceToAPath()
{
    QCOMPARE(m_files->CopyFile(in(u"a.mp3"_s), in(u"to/new.mp3"_s)), ResultDone);
    QCOMPARE(contentOf(in(u"to/new.mp3"_s)), QByteArray("a"));
    QVERIFY(m_files->CopyFile(in(u"a.mp3"_s), in(u"none/"_s)) != ResultDone);
    QCOMPARE(m_host->told.size(), 1);
    QCOMPARE(m_host->told[0].failures[0].error.code, ErrorCode::NotFound);
}

void TestFileOperations::rowsOfSubfolders()
{
    QCOMPARE(m_files->CopyFile(list({u"cd1/a.mp3"_s}), in(u"to/"_s)), ResultDone);
    QCOMPARE(snapshotOf(in(u"to"_s)), (Snapshot{{u"a.mp3"_s, "file cd1 a"}}));
}

void TestFileOperations::clashesAreAsked()
{
    writeFile(in(u"to/a.mp3"_s), "old");
    QCOMPARE(m_files->MoveFile(list({u"a.mp3"_s, u"b.mp3"_s}), in(u"to/"_s)), ResultDone);
    QCOMPARE(m_host->asked, QStringList{u"clash a.mp3"_s});
    QCOMPARE(snapshotOf(in(u"to"_s)), (Snapshot{{u"a.mp3"_s, "file old"}, {u"b.mp3"_s, "file b"}}));
    QVERIFY(m_host->told.isEmpty()); // the user knows what was skipped
}

void TestFileOperations::callingOffDoesNothing()
{
    writeFile(in(u"to/b.mp3"_s), "old");
    m_host->clashAnswer = ClashDecision{ClashAnswer::Stop};
    const Snapshot before = snapshotOf(m_folder->path());
    QCOMPARE(m_files->MoveFile(list({u"a.mp3"_s, u"b.mp3"_s}), in(u"to/"_s)), ResultCancelled);
    QCOMPARE(snapshotOf(m_folder->path()), before);
    QVERIFY(!*m_history->nextUndo());
}

void TestFileOperations::deletingAsksOnceAndTrashes()
{
    m_host->trashAnswer = false;
    QCOMPARE(m_files->DeleteFile(list({u"a.mp3"_s, u"b.mp3"_s})), ResultCancelled);
    QVERIFY(platform::isTaken(in(u"a.mp3"_s)));
    m_host->trashAnswer = true;
    QCOMPARE(m_files->DeleteFile(list({u"a.mp3"_s, u"b.mp3"_s})), ResultDone);
    QCOMPARE(m_host->asked, (QStringList{u"trash 2"_s, u"trash 2"_s}));
    QCOMPARE(snapshotOf(inTrash({})), (Snapshot{{u"a.mp3"_s, "file a"}, {u"b.mp3"_s, "file b"}}));
}

void TestFileOperations::withoutTrashAPlainQuestion()
{
    writeFile(in(u"data"_s), "a file where the trash would have to be");
    QCOMPARE(m_files->DeleteFile(list({u"a.mp3"_s, u"cd1"_s})), ResultCancelled);
    QVERIFY(platform::isTaken(in(u"a.mp3"_s)));
    m_host->deleteAnswer = true;
    QCOMPARE(m_files->DeleteFile(list({u"a.mp3"_s, u"cd1"_s})), ResultDone);
    QCOMPARE(m_host->asked, (QStringList{u"delete 2"_s, u"delete 2"_s}));
    QVERIFY(!platform::isTaken(in(u"a.mp3"_s)));
    QVERIFY(!platform::isTaken(in(u"cd1"_s)));
}

void TestFileOperations::aYesToTheTrashIsNoneToLosing()
{
    // The trash exists but can't be used, which shows only when something is put into it.
    writeFile(in(u"data/Trash/files"_s), "no folder");
    QCOMPARE(m_files->DeleteFile(list({u"a.mp3"_s})), ResultCancelled);
    QCOMPARE(m_host->asked, (QStringList{u"trash 1"_s, u"delete 1"_s}));
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("a"));
}

void TestFileOperations::whatIsGoneIsSaidToBeWithoutAQuestion()
{
    QVERIFY(m_files->DeleteFile(list({u"gone.mp3"_s, u"gone/b.mp3"_s})) != ResultDone);
    QVERIFY(m_host->asked.isEmpty());
    QCOMPARE(m_host->told[0].failures.size(), std::size_t(2));
    for (const FileFailure &failure : m_host->told[0].failures)
        QCOMPARE(failure.error.code, ErrorCode::NotFound);
    // Its neighbours are asked about as ever.
    QVERIFY(m_files->DeleteFile(list({u"gone.mp3"_s, u"a.mp3"_s})) != ResultDone);
    QCOMPARE(m_host->asked, QStringList{u"trash 1"_s});
    QCOMPARE(m_host->told[1].failures[0].path, in(u"gone.mp3"_s));
    QCOMPARE(contentOf(inTrash(u"a.mp3"_s)), QByteArray("a"));
    // Nor is there anything to lose where no trash is wanted.
    QVERIFY(m_files->DeleteFile(in(u"gone.mp3"_s), false) != ResultDone);
    QCOMPARE(m_host->asked.size(), 1);
}

void TestFileOperations::withoutUndoForGood()
{
    m_host->deleteAnswer = true;
    QCOMPARE(m_files->DeleteFile(in(u"a.mp3"_s), false, FlagNoConfirmation), ResultDone);
    QCOMPARE(m_host->asked, QStringList{u"delete 1"_s}); // always asked
    QVERIFY(!platform::isTaken(in(u"a.mp3"_s)));
    QVERIFY(!QFileInfo::exists(inTrash(u"a.mp3"_s)));
    QCOMPARE(m_files->DeleteFile(in(u"b.mp3"_s), true, FlagNoConfirmation), ResultDone);
    QCOMPARE(m_host->asked.size(), 1);
    QCOMPARE(contentOf(inTrash(u"b.mp3"_s)), QByteArray("b"));
}

void TestFileOperations::renames()
{
    QCOMPARE(m_files->RenameFile(in(u"a.mp3"_s), in(u"c.mp3"_s), true), ResultDone);
    QCOMPARE(contentOf(in(u"c.mp3"_s)), QByteArray("a"));
    QVERIFY(m_files->RenameFile(in(u"c.mp3"_s), in(u"b.mp3"_s), true) != ResultDone);
    QCOMPARE(m_host->told[0].failures[0].error.code, ErrorCode::AlreadyExists);
    QCOMPARE(contentOf(in(u"b.mp3"_s)), QByteArray("b"));
    QCOMPARE(m_operations->undo(), ResultDone);
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("a"));
}

void TestFileOperations::failuresAreTold()
{
    QVERIFY(m_files->CopyFile(list({u"gone.mp3"_s, u"a.mp3"_s}), in(u"to"_s)) != ResultDone);
    QCOMPARE(m_host->told.size(), 1);
    QCOMPARE(m_host->told[0].doneCount, 1);
    QCOMPARE(m_host->told[0].failures[0].path, in(u"gone.mp3"_s));
    QVERIFY(m_files->MoveFile(in(u"cd1"_s), in(u"cd1"_s)) != ResultDone);
    QCOMPARE(m_host->told[1].failures[0].error.code, ErrorCode::IntoItself);
    QVERIFY(m_files->DeleteFile(in(u"gone.mp3"_s)) != ResultDone);
    QCOMPARE(m_host->told[2].failures[0].error.code, ErrorCode::NotFound);
}

void TestFileOperations::stoppingIsTold()
{
    m_host->stops = true;
    QCOMPARE(m_files->CopyFile(list({u"a.mp3"_s, u"b.mp3"_s}), in(u"to"_s)), ResultCancelled);
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(m_files->DeleteFile(list({u"a.mp3"_s, u"b.mp3"_s})), ResultCancelled);
    QVERIFY(m_host->told.back().wasStopped);
    QCOMPARE(m_host->told.back().notDone.size(), 2);
    QVERIFY(platform::isTaken(in(u"a.mp3"_s)));
}

void TestFileOperations::busyDoesNothing()
{
    m_host->isBusy = true;
    const Snapshot before = snapshotOf(m_folder->path());
    QCOMPARE(m_files->CopyFile(in(u"a.mp3"_s), in(u"to"_s)), ResultCancelled);
    QCOMPARE(m_files->DeleteFile(in(u"a.mp3"_s)), ResultCancelled);
    QCOMPARE(snapshotOf(m_folder->path()), before);
    m_host->isBusy = false;
    QCOMPARE(m_files->RenameFile(in(u"b.mp3"_s), in(u"c.mp3"_s), true), ResultDone);
    m_host->isBusy = true;
    QCOMPARE(m_operations->undo(), ResultCancelled);
    QVERIFY(*m_history->nextUndo()); // can still be undone
}

void TestFileOperations::undoes()
{
    const Snapshot before = snapshotOf(m_folder->path());
    m_files->MoveFile(list({u"a.mp3"_s, u"cd1"_s}), in(u"to"_s));
    m_files->RenameFile(in(u"b.mp3"_s), in(u"z.mp3"_s), true);
    QCOMPARE(m_operations->undo(), ResultDone);
    QCOMPARE(m_operations->undo(), ResultDone);
    QCOMPARE(m_operations->undo(), ResultDone); // nothing left
    QCOMPARE(snapshotOf(m_folder->path()), before);
    QVERIFY(m_host->told.isEmpty());
}

void TestFileOperations::theNearestFolderThatIsLeft()
{
    QCOMPARE(nearestFolder(m_fileSystem, in(u"cd1/"_s)), in(u"cd1/"_s));
    QCOMPARE(nearestFolder(m_fileSystem, in(u"cd1/gone/deep/"_s)), in(u"cd1/"_s));
    QCOMPARE(nearestFolder(m_fileSystem, in(u"a.mp3/x"_s)), QDir::toNativeSeparators(m_folder->path() + u'/'));
    const QString root = QDir::toNativeSeparators(QDir::rootPath());
    QCOMPARE(nearestFolder(m_fileSystem, root), root);
    QCOMPARE(nearestFolder(m_fileSystem, root + QDir::toNativeSeparators(u"none-such-folder/x"_s)), root);
}

QTEST_GUILESS_MAIN(TestFileOperations)

#include "tst_fileoperations.moc"
