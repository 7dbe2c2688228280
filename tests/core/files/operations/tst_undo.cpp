// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: the last operations are undone one by one, the last one first, and nothing is overwritten or lost. What can
// no longer be undone says why.

#include "core/files/operations/undo.h"

#include "support/filetree.h"
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
    void whatWasReplacedHasLeftTheTrash();
    void aMoveThatReplacedForGood();
    void aMergedMove();
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

private:
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    TransferReport transfer(
        TransferKind kind, const QStringList &sources, const QString &folder, ClashAnswer reply = ClashAnswer::Skip);
    UndoReport undo() { return m_history->undo(m_fileSystem); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<UndoHistory> m_history;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
};

void TestUndo::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_history = std::make_unique<UndoHistory>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
    emptyTrash();
    QDir().mkpath(in(u"to"_s));
}

TransferReport TestUndo::transfer(
    TransferKind kind, const QStringList &sources, const QString &folder, ClashAnswer reply)
{
    auto plan = makeTransferPlan(m_fileSystem, {kind, sources, folder});
    answerClashes(*plan, [reply](const Clash &) { return ClashDecision{reply, true}; });
    const TransferReport report = runTransfer(m_fileSystem, *plan);
    m_history->addTransfer(kind, report);
    return report;
}

void TestUndo::oneByOne()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s));
    m_history->addDeletion(putIntoTrash({in(u"b.mp3"_s)}));
    QVERIFY(m_fileSystem.renameNew(in(u"to/a.mp3"_s), in(u"to/c.mp3"_s)));
    m_history->addRenames({{in(u"to/a.mp3"_s), in(u"to/c.mp3"_s)}});

    QCOMPARE(m_history->next()->kind, OperationKind::Rename);
    QCOMPARE(undo().undone, QStringList{in(u"to/a.mp3"_s)});
    QCOMPARE(m_history->next()->kind, OperationKind::Trash);
    QCOMPARE(m_history->next()->count, 1);
    QCOMPARE(undo().undone, QStringList{in(u"b.mp3"_s)});
    QCOMPARE(m_history->next()->kind, OperationKind::Move);
    QCOMPARE(undo().undone, QStringList{in(u"a.mp3"_s)});
    QVERIFY(!m_history->next());
    QVERIFY(undo().undone.isEmpty());
    QCOMPARE(readFile(in(u"a.mp3"_s)), QByteArray("a"));
    QCOMPARE(readFile(in(u"b.mp3"_s)), QByteArray("b"));
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
    QCOMPARE(readFile(in(u"a.mp3"_s)), QByteArray("another"));
    QCOMPARE(readFile(in(u"to/a.mp3"_s)), QByteArray("mine"));
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
    QCOMPARE(readFile(merges ? in(u"to/cd/a.mp3"_s) : in(u"to/a.mp3"_s)), QByteArray("new"));
    QCOMPARE(readFile(inTrash(u"a.mp3"_s)), QByteArray("old"));
    const UndoReport undone = undo();
    QVERIFY(undone.failures.empty() && undone.lost.isEmpty());
    QCOMPARE(undone.undone.size(), 2);
    QCOMPARE(state(), before);
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
    QCOMPARE(readFile(in(u"a.mp3"_s)), QByteArray("new"));
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
    QCOMPARE(readFile(in(u"a.mp3"_s)), QByteArray("mine"));
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

void TestUndo::aCopyGoesIntoTheTrash()
{
    writeFile(in(u"cd/a.mp3"_s), "a");
    transfer(TransferKind::Copy, {in(u"cd"_s), in(u"cd/a.mp3"_s)}, in(u"to"_s));
    QVERIFY(undo().failures.empty());
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(readFile(in(u"cd/a.mp3"_s)), QByteArray("a"));
    QCOMPARE(readFile(inTrash(u"cd/a.mp3"_s)), QByteArray("a"));
}

void TestUndo::aCopyThatWasEditedStays()
{
    writeFile(in(u"a.mp3"_s), "a");
    transfer(TransferKind::Copy, {in(u"a.mp3"_s)}, in(u"to"_s));
    writeFile(in(u"to/a.mp3"_s), "edited");
    const UndoReport report = undo();
    QCOMPARE(report.failures[0].error.code, ErrorCode::ChangedMeanwhile);
    QCOMPARE(readFile(in(u"to/a.mp3"_s)), QByteArray("edited"));
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
    QCOMPARE(readFile(in(u"to/a.mp3"_s)), QByteArray("new"));
}

void TestUndo::aDeletionComesBack()
{
    if (!givesBackFromTrash())
        QSKIP("the shell does not tell where in the trash a file is");
    writeFile(in(u"cd/a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    m_history->addDeletion(putIntoTrash({in(u"cd"_s), in(u"b.mp3"_s)}));
    QVERIFY(!platform::isTaken(in(u"cd"_s)));
    QVERIFY(undo().failures.empty());
    QCOMPARE(readFile(in(u"cd/a.mp3"_s)), QByteArray("a"));
    QCOMPARE(readFile(in(u"b.mp3"_s)), QByteArray("b"));
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
    const DeletionReport deleted = deleteForGood(m_fileSystem, {in(u"link"_s), in(u"cd"_s)});
    QCOMPARE(deleted.deleted.size(), 2);
    QVERIFY(!platform::isTaken(in(u"cd"_s)));
    QCOMPARE(readFile(in(u"kept/b.mp3"_s)), QByteArray("b")); // links are deleted, not followed
    m_history->addDeletion(deleted);
    QCOMPARE(m_history->next()->kind, OperationKind::DeleteForGood);
    const UndoReport report = undo();
    QCOMPARE(report.failures.size(), std::size_t(2));
    QCOMPARE(report.failures[0].error.code, ErrorCode::Unsupported);
    QVERIFY(!m_history->next());
}

void TestUndo::aBatchOfRenames()
{
    // Swapped names swap back, undone as a batch.
    writeFile(in(u"a.mp3"_s), "was b");
    writeFile(in(u"b.mp3"_s), "was a");
    m_history->addRenames({{in(u"a.mp3"_s), in(u"b.mp3"_s)}, {in(u"b.mp3"_s), in(u"a.mp3"_s)}});
    const UndoReport report = undo();
    QVERIFY(report.failures.empty());
    QCOMPARE(report.kind, OperationKind::Rename);
    QCOMPARE(report.undone.size(), 2);
    QCOMPARE(readFile(in(u"a.mp3"_s)), QByteArray("was a"));
    QCOMPARE(readFile(in(u"b.mp3"_s)), QByteArray("was b"));
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
    TransferStep step;
    step.source = in(u"cd"_s);
    step.target = in(u"to/cd"_s);
    step.isFolder = true;
    TransferReport moved;
    moved.done.push_back(step);
    m_history->addTransfer(TransferKind::Move, moved);
    const UndoReport report = undo();
    QVERIFY(report.failures.empty());
    QCOMPARE(snapshotOf(in(u"cd"_s)), (Snapshot{{u"a.mp3"_s, "file a"}, {u"b.mp3"_s, "file b"}}));
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(readFile(inTrash(u"cd/a.mp3"_s)), QByteArray("a")); // the copy, which may have changed since
}

void TestUndo::aCopyOfAMoveThatLeftItsSourceGoes()
{
    // Both were copied to another drive, but neither source could be deleted; one was by its owner since.
    writeFile(in(u"a.mp3"_s), "a");
    TransferReport moved;
    for (const QString &name : {u"a.mp3"_s, u"b.mp3"_s}) {
        TransferStep step;
        step.source = in(name);
        step.target = in(u"to/"_s + name);
        writeFile(step.target, name.toUtf8());
        step.made = platform::nodeAt(step.target)->info;
        moved.done.push_back(step);
        moved.inBothPlaces.push_back({step.source, Error{ErrorCode::AccessDenied, step.source, {}}});
    }
    m_history->addTransfer(TransferKind::Move, moved);
    QVERIFY(undo().failures.empty());
    QVERIFY(snapshotOf(in(u"to"_s)).isEmpty());
    QCOMPARE(readFile(in(u"a.mp3"_s)), QByteArray("a"));
    QCOMPARE(readFile(inTrash(u"a.mp3"_s)), QByteArray("a.mp3"));
    QCOMPARE(readFile(in(u"b.mp3"_s)), QByteArray("b.mp3")); // the only one is moved back
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
        m_history->addDeletion(putIntoTrash(files));
    } else if (kind == OperationKind::Rename) {
        std::vector<RenameDone> renames;
        for (const QString &file : files) {
            renames.push_back({file, file + u".mp3"_s});
            QVERIFY(m_fileSystem.renameNew(file, renames.back().to));
        }
        m_history->addRenames(renames);
    } else {
        transfer(kind == OperationKind::Copy ? TransferKind::Copy : TransferKind::Move, files, in(u"to"_s));
    }
    QVERIFY(state() != before);

    std::stop_source stop;
    const auto stopSoon = [&](const Progress &progress) {
        if (progress.done == 2)
            stop.request_stop();
    };
    const UndoReport first = m_history->undo(m_fileSystem, {stopSoon, stop.get_token()});
    QVERIFY(first.wasStopped);
    QVERIFY(first.failures.empty());
    QVERIFY(!first.undone.isEmpty() && !first.notDone.isEmpty());
    QVERIFY(m_history->next().has_value());
    QCOMPARE(m_history->next()->kind, kind);
    QCOMPARE(m_history->next()->count, first.notDone.size());
    QCOMPARE(first.undone.size() + first.notDone.size(), files.size());

    const UndoReport second = undo();
    QVERIFY(second.failures.empty());
    QCOMPARE(second.undone.size(), first.notDone.size());
    QCOMPARE(state(), before);
    QVERIFY(!m_history->next());
}

void TestUndo::nothingDoneIsNothingToUndo()
{
    m_history->addTransfer(TransferKind::Copy, {});
    m_history->addDeletion({});
    m_history->addRenames({});
    QVERIFY(!m_history->next());
}

QTEST_GUILESS_MAIN(TestUndo)

#include "tst_undo.moc"
