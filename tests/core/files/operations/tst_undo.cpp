// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: the last operations are undone one by one, the last one first, and nothing is overwritten or lost. What can
// no longer be undone says why. What was undone can be repeated until the same files change. Files are found where they
// are by now; an older operation waits for the later ones on the same files.

#include "core/files/operations/deletion.h"
#include "core/files/operations/fileoperations.h"
#include "core/files/operations/playlist.h"
#include "core/files/operations/undo.h"
#include "core/storage/recorder.h"

#include "support/filetree.h"
#include "support/links.h"
#include "support/trash.h"

#include <QDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestUndo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void oneByOne();
    void aMove_data();
    void aMove();
    void aMoveWhoseOldNameIsTaken();
    void whatWasReplacedComesBack_data();
    void whatWasReplacedComesBack();
    void anotherNameOfTheSameFileComesBack();
    void whatWasReplacedHasLeftTheTrash();
    void aMoveThatReplacedForGood();
    void aMergedMove();
    void aMergedMoveOfAnEmptyFolder();
    void aCopyGoesIntoTheTrash();
    void aCopyThatWasEditedStays();
    void aCopyThatReplacedForGoodStays();
    void aDeletionComesBack();
    void aDeletionForGoodSaysWhy();
    void aBatchOfRenames();
    void whatIsGoneSaysSo();
    void aMoveThatWasNotFinishedGivesBackWhatIsGone();
    void aCopyOfAMoveThatLeftItsSourceGoes();
    void aStopLeavesTheRestForTheNextUndo_data();
    void aStopLeavesTheRestForTheNextUndo();
    void nothingDoneIsNothingToUndo();
    void repeatsWhatWasUndone_data();
    void repeatsWhatWasUndone();
    void repeatsNothingAfterALaterChange();
    void findsFilesWhereTheyAreNow();
    void anOlderOneWaitsForTheLater();
    void onlySomeFiles();
    void aDryRunTouchesNothing();
    void foldersThatRenamesMade();
    void playlists();
    void anotherRunUndoesTheLast();

private:
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    TransferReport transfer(
        TransferKind kind, const QStringList &sources, const QString &folder, ClashAnswer reply = ClashAnswer::Skip);
    DeletionReport trash(const QStringList &paths)
    {
        const history::Operation entry(m_history.get(), history::Kind::Trash, m_folder->path());
        return putIntoTrash(paths, {}, m_journal);
    }
    RenamingOutcome rename(const std::vector<std::pair<QString, QString>> &names)
    {
        std::vector<RenameRow> rows;
        for (const auto &[from, to] : names)
            rows.push_back({.from = in(from), .wanted = in(to)});
        const history::Operation entry(m_history.get(), history::Kind::Rename, m_folder->path());
        return runRenaming(m_fileSystem, RenamingPlan(m_fileSystem, std::move(rows)), {}, m_journal);
    }
    std::optional<history::Entry> next() { return *m_history->nextUndo(); }
    UndoReport undo(const UndoRequest &request = {}, const Watch &watch = {})
    {
        return *ravlin::undo(*m_history, m_fileSystem, request, watch);
    }
    UndoReport redo() { return *ravlin::redo(*m_history, m_fileSystem); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QTemporaryDir> m_database;
    std::unique_ptr<history::History> m_history;
    storage::Journal *m_journal = nullptr; ///< the same
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
};

void TestUndo::init()
{
    m_folder = std::make_unique<QTemporaryDir>(QFileInfo(QDir::tempPath()).canonicalFilePath() + u"/undo-XXXXXX"_s);
    m_database = std::make_unique<QTemporaryDir>();
    m_history = std::make_unique<history::History>(
        m_fileSystem, QDir::toNativeSeparators(m_database->filePath(u"history.sqlite"_s)));
    m_journal = m_history.get();
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
    emptyTrash();
    QDir().mkpath(in(u"to"_s));
}

TransferReport TestUndo::transfer(
    TransferKind kind, const QStringList &sources, const QString &folder, ClashAnswer reply)
{
    auto plan = makeTransferPlan(m_fileSystem, {kind, sources, folder});
    answerClashes(*plan, [reply](const Clash &) { return ClashDecision{reply, true}; });
    const history::Operation entry(
        m_history.get(), kind == TransferKind::Copy ? history::Kind::Copy : history::Kind::Move, folder);
    return runTransfer(m_fileSystem, *plan, {}, m_journal);
}

void TestUndo::oneByOne()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s));
    trash({in(u"b.mp3"_s)});
    rename({{u"to/a.mp3"_s, u"to/c.mp3"_s}});

    QCOMPARE(next()->kind, history::Kind::Rename);
    QCOMPARE(undo().undone, QStringList{in(u"to/a.mp3"_s)});
    QCOMPARE(next()->kind, history::Kind::Trash);
    QCOMPARE(next()->fileCount, 1);
    QCOMPARE(undo().undone, QStringList{in(u"b.mp3"_s)});
    QCOMPARE(next()->kind, history::Kind::Move);
    QCOMPARE(undo().undone, QStringList{in(u"a.mp3"_s)});
    QVERIFY(!next());
    QVERIFY(undo().undone.isEmpty());
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("a"));
    QCOMPARE(contentOf(in(u"b.mp3"_s)), QByteArray("b"));
}

void TestUndo::aMove_data()
{
    QTest::addColumn<bool>("toOtherDrive");
    QTest::newRow("on one drive") << false;
    QTest::newRow("from another drive") << true;
}

void TestUndo::aMove()
{
    QFETCH(bool, toOtherDrive);
    const OtherDrive drive;
    if (toOtherDrive && !drive.isOther())
        QSKIP("there is no second file system to write to");
    writeFile(in(u"from/cd/a.mp3"_s), "a");
    writeFile(in(u"from/b.mp3"_s), "b");
    const Snapshot before = snapshotOf(in(u"from"_s));
    const QString to = toOtherDrive ? drive.path() : in(u"to"_s);
    transfer(TransferKind::Move, {in(u"from/cd"_s), in(u"from/b.mp3"_s)}, to);
    QVERIFY(snapshotOf(in(u"from"_s)).isEmpty());
    QVERIFY(QDir().rmdir(in(u"from"_s))); // undo makes it again
    const UndoReport report = undo();
    QVERIFY(report.failures.empty());
    QCOMPARE(report.undone.size(), 2);
    QCOMPARE(snapshotOf(in(u"from"_s)), before);
    QVERIFY(snapshotOf(to).isEmpty());
}

void TestUndo::aMoveWhoseOldNameIsTaken()
{
    writeFile(in(u"a.mp3"_s), "mine");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s));
    writeFile(in(u"a.mp3"_s), "another");
    const UndoReport report = undo();
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, ErrorCode::AlreadyExists);
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("another"));
    QCOMPARE(contentOf(in(u"to/a.mp3"_s)), QByteArray("mine"));
}

void TestUndo::whatWasReplacedComesBack_data()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::addColumn<bool>("merges");
    QTest::newRow("copy") << TransferKind::Copy << false;
    QTest::newRow("move") << TransferKind::Move << false;
    QTest::newRow("copy into a folder of the name") << TransferKind::Copy << true;
    QTest::newRow("move into a folder of the name") << TransferKind::Move << true;
}

void TestUndo::whatWasReplacedComesBack()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    QFETCH(TransferKind, kind);
    QFETCH(bool, merges);
    writeFile(in(u"cd/a.mp3"_s), "new");
    writeFile(in(u"cd/b.mp3"_s), "b");
    writeFile(merges ? in(u"to/cd/a.mp3"_s) : in(u"to/a.mp3"_s), "old");
    const auto state = [this] { return std::pair(snapshotOf(in(u"cd"_s)), snapshotOf(in(u"to"_s))); };
    const auto before = state();
    const QStringList sources = merges ? QStringList{in(u"cd"_s)} : QStringList{in(u"cd/a.mp3"_s), in(u"cd/b.mp3"_s)};
    const TransferReport report = transfer(kind, sources, in(u"to"_s), ClashAnswer::Replace);
    QVERIFY(report.isComplete() && report.lost.isEmpty());
    QCOMPARE(contentOf(merges ? in(u"to/cd/a.mp3"_s) : in(u"to/a.mp3"_s)), QByteArray("new"));
    QCOMPARE(contentOf(inTrash(u"a.mp3"_s)), QByteArray("old"));
    const UndoReport undone = undo();
    QVERIFY(undone.failures.empty() && undone.lost.isEmpty());
    QCOMPARE(undone.undone.size(), 2);
    QCOMPARE(state(), before);
}

void TestUndo::anotherNameOfTheSameFileComesBack()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    writeFile(in(u"a.mp3"_s), "one file");
    QDir().mkpath(in(u"to"_s));
    if (!hardLink(in(u"a.mp3"_s), in(u"to/a.mp3"_s)))
        QSKIP("no hard links here");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s), ClashAnswer::Replace);
    QVERIFY(!QFile::exists(in(u"a.mp3"_s)));
    QVERIFY(undo().failures.empty());
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("one file"));
    QCOMPARE(contentOf(in(u"to/a.mp3"_s)), QByteArray("one file"));
}

void TestUndo::whatWasReplacedHasLeftTheTrash()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    writeFile(in(u"a.mp3"_s), "new");
    writeFile(in(u"to/a.mp3"_s), "old");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s), ClashAnswer::Replace);
    emptyTrash();
    const UndoReport report = undo();
    QCOMPARE(report.undone, QStringList{in(u"a.mp3"_s)}); // as far as it goes
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].path, in(u"to/a.mp3"_s));
    QCOMPARE(report.failures[0].error.code, ErrorCode::NotFound);
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("new"));
}

void TestUndo::aMoveThatReplacedForGood()
{
    if (!MakesLinks)
        QSKIP("there is always a recycle bin");
    writeFile(in(u"data"_s), "a file where the trash would have to be");
    writeFile(in(u"a.mp3"_s), "mine");
    writeFile(in(u"to/a.mp3"_s), "replaced");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s), ClashAnswer::Replace);
    const UndoReport report = undo();
    QCOMPARE(report.undone, QStringList{in(u"a.mp3"_s)});
    QCOMPARE(report.lost, QStringList{in(u"to/a.mp3"_s)});
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("mine"));
}

void TestUndo::aMergedMove()
{
    writeFile(in(u"cd/sub/a.mp3"_s), "a");
    writeFile(in(u"cd/b.mp3"_s), "b");
    writeFile(in(u"to/cd/z.mp3"_s), "z");
    const Snapshot before = snapshotOf(m_folder->path());
    transfer(TransferKind::Move, {in(u"cd"_s)}, in(u"to"_s), ClashAnswer::Replace);
    QVERIFY(!platform::isTaken(in(u"cd"_s)));
    QVERIFY(undo().failures.empty());
    QCOMPARE(snapshotOf(m_folder->path()), before);
}

void TestUndo::aMergedMoveOfAnEmptyFolder()
{
    QDir().mkpath(in(u"cd/sub"_s));
    QDir().mkpath(in(u"to/cd/sub"_s));
    const auto isThere = [this] { return platform::isTaken(in(u"cd/sub"_s)); };
    transfer(TransferKind::Move, {in(u"cd"_s)}, in(u"to"_s), ClashAnswer::Replace);
    QVERIFY(!platform::isTaken(in(u"cd"_s)));
    QVERIFY(undo({.isDryRun = true}).failures.empty() && !isThere());
    QVERIFY(undo().failures.empty() && isThere());
    QVERIFY(redo().failures.empty() && !isThere());
    QVERIFY(undo().failures.empty() && isThere());
    QVERIFY(platform::isTaken(in(u"to/cd/sub"_s)));
}

void TestUndo::aCopyGoesIntoTheTrash()
{
    writeFile(in(u"cd/a.mp3"_s), "a");
    transfer(TransferKind::Copy, {in(u"cd"_s), in(u"cd/a.mp3"_s)}, in(u"to"_s));
    QVERIFY(undo().failures.empty());
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(contentOf(in(u"cd/a.mp3"_s)), QByteArray("a"));
    QCOMPARE(contentOf(inTrash(u"cd/a.mp3"_s)), QByteArray("a"));
}

void TestUndo::aCopyThatWasEditedStays()
{
    writeFile(in(u"a.mp3"_s), "a");
    transfer(TransferKind::Copy, {in(u"a.mp3"_s)}, in(u"to"_s));
    writeFile(in(u"to/a.mp3"_s), "edited");
    const UndoReport report = undo();
    QCOMPARE(report.failures[0].error.code, ErrorCode::ChangedMeanwhile);
    QCOMPARE(contentOf(in(u"to/a.mp3"_s)), QByteArray("edited"));
}

void TestUndo::aCopyThatReplacedForGoodStays()
{
    if (!MakesLinks)
        QSKIP("there is always a recycle bin");
    writeFile(in(u"data"_s), "a file where the trash would have to be");
    writeFile(in(u"a.mp3"_s), "new");
    writeFile(in(u"to/a.mp3"_s), "old");
    transfer(TransferKind::Copy, {in(u"a.mp3"_s)}, in(u"to"_s), ClashAnswer::Replace);
    const UndoReport report = undo();
    QCOMPARE(report.failures[0].error.code, ErrorCode::Unsupported);
    QCOMPARE(contentOf(in(u"to/a.mp3"_s)), QByteArray("new"));
}

void TestUndo::aDeletionComesBack()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    writeFile(in(u"cd/a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    trash({in(u"cd"_s), in(u"b.mp3"_s)});
    QVERIFY(!platform::isTaken(in(u"cd"_s)));
    QVERIFY(undo().failures.empty());
    QCOMPARE(contentOf(in(u"cd/a.mp3"_s)), QByteArray("a"));
    QCOMPARE(contentOf(in(u"b.mp3"_s)), QByteArray("b"));
}

void TestUndo::aDeletionForGoodSaysWhy()
{
    writeFile(in(u"cd/sub/a.mp3"_s), "a");
    writeFile(in(u"kept/b.mp3"_s), "b");
    writeFile(in(u"link"_s), "no link");
    if (MakesLinks) {
        QFile::remove(in(u"link"_s));
        makeLink("cd", in(u"link"_s));
        makeLink("../../kept", in(u"cd/sub/outside"_s));
    }
    m_history->beginEntry(history::Kind::Delete, m_folder->path());
    const DeletionReport deleted = deleteForGood(m_fileSystem, {in(u"link"_s), in(u"cd"_s)}, {}, m_journal);
    m_history->endEntry();
    QCOMPARE(deleted.deleted.size(), 2);
    QVERIFY(!platform::isTaken(in(u"cd"_s)));
    QCOMPARE(contentOf(in(u"kept/b.mp3"_s)), QByteArray("b")); // links are deleted, not followed
    QCOMPARE(next()->kind, history::Kind::Delete);
    const UndoReport report = undo();
    QCOMPARE(report.failures.size(), std::size_t(2));
    QCOMPARE(report.failures[0].error.code, ErrorCode::Unsupported);
    QVERIFY(!next());
}

void TestUndo::aBatchOfRenames()
{
    // Swapped names swap back, undone as a batch.
    writeFile(in(u"a.mp3"_s), "was a");
    writeFile(in(u"b.mp3"_s), "was b");
    rename({{u"a.mp3"_s, u"b.mp3"_s}, {u"b.mp3"_s, u"a.mp3"_s}});
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("was b"));
    const UndoReport report = undo();
    QVERIFY(report.failures.empty());
    QCOMPARE(report.entry.kind, history::Kind::Rename);
    QCOMPARE(report.undone.size(), 2);
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("was a"));
    QCOMPARE(contentOf(in(u"b.mp3"_s)), QByteArray("was b"));
}

void TestUndo::whatIsGoneSaysSo()
{
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    transfer(TransferKind::Move, {in(u"a.mp3"_s), in(u"b.mp3"_s)}, in(u"to"_s));
    QFile::remove(in(u"to/a.mp3"_s));
    const UndoReport report = undo();
    QCOMPARE(report.undone, QStringList{in(u"b.mp3"_s)});
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].path, in(u"to/a.mp3"_s));
    QCOMPARE(report.failures[0].error.code, ErrorCode::NotFound);
}

void TestUndo::aMoveThatWasNotFinishedGivesBackWhatIsGone()
{
    // A folder was copied to another drive but only b.mp3 of it could be deleted, which now exists only at the target.
    writeFile(in(u"cd/a.mp3"_s), "a");
    writeFile(in(u"to/cd/a.mp3"_s), "a");
    writeFile(in(u"to/cd/b.mp3"_s), "b");
    storage::Recorder recorder(m_fileSystem, m_journal);
    m_history->beginEntry(history::Kind::Move, m_folder->path());
    recorder.done(recorder.begin(storage::ChangeKind::Copy, in(u"cd"_s), in(u"to/cd"_s)), in(u"to/cd"_s));
    m_history->endEntry();
    const UndoReport report = undo();
    QVERIFY(report.failures.empty());
    QCOMPARE(snapshotOf(in(u"cd"_s)), (Snapshot{{u"a.mp3"_s, "file a"}, {u"b.mp3"_s, "file b"}}));
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(contentOf(inTrash(u"cd/a.mp3"_s)), QByteArray("a")); // the copy, which may have changed since
}

void TestUndo::aCopyOfAMoveThatLeftItsSourceGoes()
{
    // Both were copied to another drive, but neither source could be deleted; one was by its owner since.
    writeFile(in(u"a.mp3"_s), "a");
    storage::Recorder recorder(m_fileSystem, m_journal);
    m_history->beginEntry(history::Kind::Move, m_folder->path());
    for (const QString &name : {u"a.mp3"_s, u"b.mp3"_s}) {
        const QString target = in(u"to/"_s + name);
        const auto ticket = recorder.begin(storage::ChangeKind::Copy, in(name), target);
        writeFile(target, name.toUtf8());
        recorder.done(ticket, target);
    }
    m_history->endEntry();
    QVERIFY(undo().failures.empty());
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("a"));
    QCOMPARE(contentOf(inTrash(u"a.mp3"_s)), QByteArray("a.mp3"));
    QCOMPARE(contentOf(in(u"b.mp3"_s)), QByteArray("b.mp3")); // the only one is moved back
}

void TestUndo::aStopLeavesTheRestForTheNextUndo_data()
{
    QTest::addColumn<OperationKind>("kind");
    QTest::newRow("copies") << OperationKind::Copy;
    QTest::newRow("moves") << OperationKind::Move;
    QTest::newRow("deletions") << OperationKind::Trash;
    QTest::newRow("renames") << OperationKind::Rename;
}

void TestUndo::aStopLeavesTheRestForTheNextUndo()
{
    QFETCH(OperationKind, kind);
    if (kind == OperationKind::Trash && !givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    const QStringList files{in(u"1.mp3"_s), in(u"2.mp3"_s), in(u"3.mp3"_s), in(u"4.mp3"_s)};
    for (const QString &file : files)
        writeFile(file, file.toUtf8());
    QDir().mkpath(in(u"data"_s));
    const auto state = [this] {
        Snapshot all = snapshotOf(m_folder->path());
        all.removeIf([](const auto &entry) { return entry.key().startsWith(u"data/"_s); });
        return all;
    };
    const Snapshot before = state();
    if (kind == OperationKind::Trash) {
        trash(files);
    } else if (kind == OperationKind::Rename) {
        rename({{u"1.mp3"_s, u"1.mp3.mp3"_s}, {u"2.mp3"_s, u"2.mp3.mp3"_s}, {u"3.mp3"_s, u"3.mp3.mp3"_s},
            {u"4.mp3"_s, u"4.mp3.mp3"_s}});
    } else {
        transfer(kind == OperationKind::Copy ? TransferKind::Copy : TransferKind::Move, files, in(u"to"_s));
    }
    QVERIFY(state() != before);

    std::stop_source stop;
    const auto stopSoon = [&](const Progress &progress) {
        if (progress.done == 2)
            stop.request_stop();
    };
    const UndoReport first = undo({}, {stopSoon, stop.get_token()});
    QVERIFY(first.wasStopped);
    QVERIFY(first.failures.empty());
    QVERIFY(!first.undone.isEmpty() && !first.notDone.isEmpty());
    QVERIFY(next().has_value());
    QCOMPARE(next()->id, first.entry.id);
    QCOMPARE(next()->fileCount - next()->undoneCount, first.notDone.size());
    QCOMPARE(first.undone.size() + first.notDone.size(), files.size());

    const UndoReport second = undo();
    QVERIFY(second.failures.empty());
    QCOMPARE(second.undone.size(), first.notDone.size());
    QCOMPARE(state(), before);
    QVERIFY(!next());
}

void TestUndo::nothingDoneIsNothingToUndo()
{
    transfer(TransferKind::Copy, {}, in(u"to"_s));
    trash({});
    rename({});
    QVERIFY(!next());
    QCOMPARE(undo().entry.id, 0);
    QCOMPARE(redo().entry.id, 0);
}

void TestUndo::repeatsWhatWasUndone_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"copy", "move", "replacing copy", "replacing move", "trash", "rename", "swap", "folders"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void TestUndo::repeatsWhatWasUndone()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    QFETCH(QString, what);
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    writeFile(in(u"cd/c.mp3"_s), "c");
    writeFile(in(u"to/sub/x.mp3"_s), "x");
    const QStringList files{in(u"a.mp3"_s), in(u"cd"_s)};
    const bool isReplacing = what.startsWith(u"replacing"_s);
    if (isReplacing)
        writeFile(in(u"to/a.mp3"_s), "old");
    QDir().mkpath(in(u"data"_s));
    const auto state = [this] {
        Snapshot all = snapshotOf(m_folder->path());
        all.removeIf([](const auto &entry) { return entry.key().startsWith(u"data/"_s); });
        return all;
    };
    const Snapshot before = state();
    if (what.endsWith(u"copy"_s) || what.endsWith(u"move"_s))
        transfer(what.endsWith(u"copy"_s) ? TransferKind::Copy : TransferKind::Move, files, in(u"to"_s),
            isReplacing ? ClashAnswer::Replace : ClashAnswer::Skip);
    else if (what == u"trash"_s)
        trash(files);
    else if (what == u"rename"_s)
        rename({{u"a.mp3"_s, u"z.mp3"_s}, {u"cd"_s, u"CD"_s}});
    else if (what == u"swap"_s)
        rename({{u"a.mp3"_s, u"b.mp3"_s}, {u"b.mp3"_s, u"a.mp3"_s}});
    else
        rename({{u"a.mp3"_s, u"new/deep/a.mp3"_s}, {u"b.mp3"_s, u"new/b.mp3"_s}});
    const Snapshot after = state();
    QVERIFY(after != before);
    for (int round = 0; round < 3; ++round) {
        const UndoReport undone = undo();
        QVERIFY(undone.failures.empty());
        QCOMPARE(undone.undone.size(), 2);
        QCOMPARE(state(), before);
        QVERIFY(!next());
        const UndoReport redone = redo();
        QVERIFY(redone.failures.empty());
        QCOMPARE(state(), after);
        QVERIFY(next());
        QCOMPARE(redo().entry.id, 0);
    }
}

void TestUndo::repeatsNothingAfterALaterChange()
{
    writeFile(in(u"a.mp3"_s), "a");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s));
    undo();
    trash({in(u"a.mp3"_s)});
    QCOMPARE(redo().entry.id, 0);
    QVERIFY(!platform::isTaken(in(u"to/a.mp3"_s)));
}

void TestUndo::findsFilesWhereTheyAreNow()
{
    writeFile(in(u"cd/a.mp3"_s), "a");
    rename({{u"cd/a.mp3"_s, u"cd/b.mp3"_s}});
    const qint64 first = next()->id;
    rename({{u"cd"_s, u"disc"_s}});
    transfer(TransferKind::Move, {in(u"disc/b.mp3"_s)}, in(u"to"_s));
    const UndoReport report = undo({.entry = first});
    QVERIFY(report.later.empty()); // moved, not changed
    QCOMPARE(report.undone, QStringList{in(u"disc/a.mp3"_s)});
    QCOMPARE(contentOf(in(u"disc/a.mp3"_s)), QByteArray("a"));
}

void TestUndo::anOlderOneWaitsForTheLater()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    writeFile(in(u"a.mp3"_s), "a");
    const Snapshot before = snapshotOf(m_folder->path());
    rename({{u"a.mp3"_s, u"b.mp3"_s}});
    const qint64 first = next()->id;
    trash({in(u"b.mp3"_s)});
    const qint64 second = next()->id;
    const UndoReport refused = undo({.entry = first});
    QCOMPARE(refused.later.size(), std::size_t(1));
    QCOMPARE(refused.later[0].id, second);
    QVERIFY(refused.undone.isEmpty());
    QVERIFY(!platform::isTaken(in(u"b.mp3"_s)));
    const UndoReport both = undo({.entry = first, .withLater = true});
    QVERIFY(both.failures.empty());
    QCOMPARE(both.undone, (QStringList{in(u"b.mp3"_s), in(u"a.mp3"_s)}));
    QCOMPARE(both.summary.doneCount, 2);
    QVERIFY(platform::isTaken(in(u"a.mp3"_s)));
    QVERIFY(!next());
}

void TestUndo::onlySomeFiles()
{
    for (const QString &name : {u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s})
        writeFile(in(name), name.toUtf8());
    transfer(TransferKind::Move, {in(u"a.mp3"_s), in(u"b.mp3"_s), in(u"c.mp3"_s)}, in(u"to"_s));
    const qint64 entry = next()->id;
    const auto files = *m_history->files(entry);
    QCOMPARE(undo({.entry = entry, .onlyFiles = {files[1].id}}).undone, QStringList{in(u"b.mp3"_s)});
    QVERIFY(platform::isTaken(in(u"to/a.mp3"_s)));
    QCOMPARE(undo().undone.size(), 2); // the others
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
}

void TestUndo::aDryRunTouchesNothing()
{
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    transfer(TransferKind::Move, {in(u"a.mp3"_s), in(u"b.mp3"_s)}, in(u"to"_s));
    writeFile(in(u"b.mp3"_s), "another");
    const Snapshot before = snapshotOf(m_folder->path());
    const UndoReport dry = undo({.isDryRun = true});
    QCOMPARE(snapshotOf(m_folder->path()), before);
    QCOMPARE(dry.undone, QStringList{in(u"a.mp3"_s)});
    QCOMPARE(dry.failures.size(), std::size_t(1));
    QCOMPARE(dry.failures[0].error.code, ErrorCode::AlreadyExists);
    const UndoReport real = undo();
    QCOMPARE(real.undone, dry.undone);
    QCOMPARE(real.failures[0].path, dry.failures[0].path);
    QCOMPARE(real.failures[0].error.code, dry.failures[0].error.code);
    QCOMPARE(real.summary.failedCount, 1);
}

void TestUndo::foldersThatRenamesMade()
{
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    rename({{u"a.mp3"_s, u"x/y/a.mp3"_s}, {u"b.mp3"_s, u"z/b.mp3"_s}});
    writeFile(in(u"z/cover.jpg"_s), "of somebody else");
    const UndoReport report = undo();
    QVERIFY(report.failures.empty());
    QCOMPARE(report.undone.size(), 2); // the folders are not counted
    QVERIFY(!platform::isTaken(in(u"x"_s)));
    QCOMPARE(contentOf(in(u"z/cover.jpg"_s)), QByteArray("of somebody else"));
}

void TestUndo::playlists()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    const auto write = [this](const QStringList &rows) {
        const history::Operation entry(m_history.get(), history::Kind::Playlist, in(u"to"_s));
        QVERIFY(WritePlaylist(m_fileSystem, in(u"to/"_s), rows, {}, m_journal));
    };
    const QString list = in(u"to/lista.m3u"_s);
    write({u"a.mp3"_s});
    write({u"b.mp3"_s, u"c.mp3"_s});
    QVERIFY(undo().failures.empty());
    QCOMPARE(contentOf(list), QByteArray("a.mp3\r\n"));
    QVERIFY(undo().failures.empty());
    QVERIFY(!platform::isTaken(list));
    QCOMPARE(contentOf(inTrash(u"lista.m3u"_s)), QByteArray("a.mp3\r\n"));
    QVERIFY(redo().failures.empty());
    QVERIFY(redo().failures.empty());
    QCOMPARE(contentOf(list), QByteArray("b.mp3\r\nc.mp3\r\n"));
    writeFile(list, "edited");
    QCOMPARE(undo().failures[0].error.code, ErrorCode::ChangedMeanwhile);
    QCOMPARE(contentOf(list), QByteArray("edited"));
}

void TestUndo::anotherRunUndoesTheLast()
{
    writeFile(in(u"a.mp3"_s), "a");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s));
    m_history = std::make_unique<history::History>(
        m_fileSystem, QDir::toNativeSeparators(m_database->filePath(u"history.sqlite"_s)));
    m_journal = m_history.get();
    QCOMPARE(undo().undone, QStringList{in(u"a.mp3"_s)});
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("a"));
}

QTEST_GUILESS_MAIN(TestUndo)

#include "tst_undo.moc"
