// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: copies, moves, deletions, renames and playlists tell a journal of each change before it is made and of what
// became of it right after, with all that is needed to take it back. What can't be recorded is done all the same.

#include "core/files/operations/deletion.h"
#include "core/files/operations/playlist.h"
#include "core/files/operations/transfer.h"
#include "core/files/renaming/renaming.h"

#include "support/fakejournal.h"
#include "support/faultyfilesystem.h"
#include "support/filetree.h"
#include "support/trash.h"

#include <QDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;
using storage::ChangeKind;

class TestRecorded : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void transfers_data();
    void transfers();
    void aMoveToAnotherDrive();
    void whatIsReplaced();
    void aTransferThatFails();
    void deletions();
    void renamesAndTheirFolders();
    void aRingIsPendingAsAWhole();
    void aRingThatFails();
    void aNewPlaylist();
    void anOlderPlaylist();
    void aPlaylistInPlaceOfALink();
    void pathsAreWhole();
    void whatCantBeRecordedIsDone();

private:
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    TransferReport transfer(
        TransferKind kind, const QStringList &sources, const QString &folder, ClashAnswer reply = ClashAnswer::Skip)
    {
        auto plan = makeTransferPlan(m_fileSystem, {kind, sources, folder});
        answerClashes(*plan, [reply](const Clash &) { return ClashDecision{reply, true}; });
        return runTransfer(m_fileSystem, *plan, {}, m_journal.get());
    }
    RenamingOutcome rename(platform::FileSystem &fileSystem, const std::vector<std::pair<QString, QString>> &pairs)
    {
        std::vector<RenameRow> rows;
        for (const auto &[from, to] : pairs)
            rows.push_back({.from = in(from), .wanted = in(to)});
        return runRenaming(fileSystem, RenamingPlan(fileSystem, std::move(rows)), {}, m_journal.get());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeJournal> m_journal;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
};

void TestRecorded::init()
{
    // The journal keeps paths without links.
    m_folder = std::make_unique<QTemporaryDir>(QFileInfo(QDir::tempPath()).canonicalFilePath() + u"/recorded-XXXXXX"_s);
    m_journal = std::make_unique<FakeJournal>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
    emptyTrash();
    QDir().mkpath(in(u"to"_s));
    writeFile(in(u"a.mp3"_s), "a");
    writeFile(in(u"b.mp3"_s), "b");
    writeFile(in(u"cd/c.mp3"_s), "c");
}

void TestRecorded::transfers_data()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::newRow("copies") << TransferKind::Copy;
    QTest::newRow("moves") << TransferKind::Move;
}

void TestRecorded::transfers()
{
    QFETCH(TransferKind, kind);
    const auto before = m_fileSystem.info(in(u"a.mp3"_s));
    const auto identity = (*m_fileSystem.open(in(u"a.mp3"_s), platform::OpenMode::Read))->identity();
    QVERIFY(transfer(kind, {in(u"a.mp3"_s), in(u"cd"_s)}, in(u"to"_s)).isComplete());
    QCOMPARE(m_journal->kept.size(), std::size_t(2));
    QVERIFY(!m_journal->hasPending());
    for (std::size_t i : {0, 1}) {
        const FakeJournal::Kept &change = m_journal->kept[i];
        QCOMPARE(change.change.kind, kind == TransferKind::Copy ? ChangeKind::Copy : ChangeKind::Move);
        QCOMPARE(change.change.path, in(i == 0 ? u"a.mp3"_s : u"cd"_s));
        QCOMPARE(change.change.newPath, in(i == 0 ? u"to/a.mp3"_s : u"to/cd"_s));
        QCOMPARE(change.change.isFolder, i == 1);
        QVERIFY(change.wasThere && !change.newWasThere); // told before it is done
        QVERIFY(change.done->has_value() && !(*change.done)->replaced);
    }
    const FakeJournal::Kept &file = m_journal->kept[0];
    QCOMPARE(file.change.before.inode, before->inode);
    QCOMPARE(file.change.identity, *identity);
    const auto after = m_fileSystem.info(in(u"to/a.mp3"_s));
    QCOMPARE((*file.done)->after.inode, after->inode);
    QCOMPARE((*file.done)->after.modified, after->modified);
}

void TestRecorded::aMoveToAnotherDrive()
{
    const OtherDrive drive;
    if (!drive.isOther())
        QSKIP("there is no second file system to write to");
    QVERIFY(transfer(TransferKind::Move, {in(u"a.mp3"_s), in(u"cd"_s)}, drive.path()).isComplete());
    QCOMPARE(m_journal->made().size(), std::size_t(2));
    QCOMPARE(m_journal->kept.size(), std::size_t(2));
    for (const FakeJournal::Kept &change : m_journal->kept)
        QCOMPARE(change.change.kind, ChangeKind::Move);
}

void TestRecorded::whatIsReplaced()
{
    writeFile(in(u"to/a.mp3"_s), "old a");
    writeFile(in(u"to/cd/c.mp3"_s), "old c");
    QVERIFY(
        transfer(TransferKind::Move, {in(u"a.mp3"_s), in(u"cd"_s)}, in(u"to"_s), ClashAnswer::Replace).isComplete());
    const auto done = m_journal->made();
    QCOMPARE(done.size(), std::size_t(2)); // a merged folder's files one by one
    QCOMPARE(done[1].change.newPath, in(u"to/cd/c.mp3"_s));
    for (const FakeJournal::Kept &change : done) {
        QVERIFY((*change.done)->replaced);
        QVERIFY((*change.done)->trashed);
        if (givesBackFromTrash())
            QVERIFY(contentOf((*change.done)->trashed->file).startsWith("old "));
    }
}

void TestRecorded::aTransferThatFails()
{
    // A name in a merged folder that was taken since.
    auto plan = makeTransferPlan(m_fileSystem, {TransferKind::Copy, {in(u"a.mp3"_s), in(u"b.mp3"_s)}, in(u"to"_s)});
    writeFile(in(u"to/a.mp3"_s), "taken");
    const TransferReport report = runTransfer(m_fileSystem, *plan, {}, m_journal.get());
    QCOMPARE(report.failures.size(), std::size_t(1));
    QVERIFY(!m_journal->hasPending());
    QCOMPARE(m_journal->kept.size(), std::size_t(2));
    QCOMPARE(m_journal->kept[0].done->error().code, ErrorCode::AlreadyExists);
    QCOMPARE(m_journal->made().size(), std::size_t(1));
}

void TestRecorded::deletions()
{
    QVERIFY(putIntoTrash({in(u"a.mp3"_s), in(u"none.mp3"_s)}, {}, m_journal.get()).trashed.size() == 1);
    QVERIFY(deleteForGood(m_fileSystem, {in(u"cd"_s)}, {}, m_journal.get()).deleted.size() == 1);
    QVERIFY(!m_journal->hasPending());
    const auto done = m_journal->made();
    QCOMPARE(done.size(), std::size_t(2));
    QCOMPARE(done[0].change.kind, ChangeKind::Trash);
    QVERIFY(done[0].wasThere && done[1].wasThere);
    QVERIFY((*done[0].done)->trashed);
    if (givesBackFromTrash())
        QCOMPARE(contentOf((*done[0].done)->trashed->file), QByteArray("a"));
    QCOMPARE(done[1].change.kind, ChangeKind::Delete);
    QVERIFY(done[1].change.isFolder);
}

void TestRecorded::renamesAndTheirFolders()
{
    const RenamingOutcome outcome = rename(m_fileSystem, {{u"a.mp3"_s, u"x/y/1.mp3"_s}, {u"cd"_s, u"CD 1"_s}});
    QCOMPARE(outcome.renames.size(), std::size_t(2));
    const auto done = m_journal->made();
    QCOMPARE(done.size(), m_journal->kept.size());
    QCOMPARE(done.size(), std::size_t(4));
    QCOMPARE(done[0].change.kind, ChangeKind::Create);
    QCOMPARE(done[0].change.newPath, in(u"x"_s));
    QVERIFY(done[0].change.isFolder && !done[0].newWasThere);
    QCOMPARE(done[1].change.newPath, in(u"x/y"_s));
    QCOMPARE(done[2].change.kind, ChangeKind::Move);
    QCOMPARE(done[2].change.path, in(u"a.mp3"_s));
    QCOMPARE(done[2].change.newPath, in(u"x/y/1.mp3"_s));
    QVERIFY(done[2].wasThere && !done[2].newWasThere);
    QVERIFY(done[3].change.isFolder);
    QCOMPARE((*done[3].done)->after.inode, m_fileSystem.info(in(u"CD 1"_s))->inode);
}

void TestRecorded::aRingIsPendingAsAWhole()
{
    writeFile(in(u"c.mp3"_s), "c");
    const RenamingOutcome outcome =
        rename(m_fileSystem, {{u"a.mp3"_s, u"b.mp3"_s}, {u"b.mp3"_s, u"c.mp3"_s}, {u"c.mp3"_s, u"a.mp3"_s}});
    QCOMPARE(outcome.renames.size(), std::size_t(3));
    QCOMPARE(m_journal->made().size(), std::size_t(3));
    for (const FakeJournal::Kept &change : m_journal->kept)
        QVERIFY(change.wasThere && change.newWasThere); // nothing had been renamed yet
    const QString aside = m_journal->kept[0].change.aside;
    QVERIFY(aside.startsWith(in(u"a (ravlin-"_s)));
    QVERIFY(m_journal->kept[1].change.aside.isEmpty());
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("c"));
}

void TestRecorded::aRingThatFails()
{
    FaultyFileSystem faulty(m_fileSystem);
    faulty.setPlan({.at = 1, .only = Call::Rename});
    const RenamingOutcome outcome = rename(faulty, {{u"a.mp3"_s, u"b.mp3"_s}, {u"b.mp3"_s, u"a.mp3"_s}});
    QCOMPARE(outcome.renames.size(), std::size_t(0));
    QCOMPARE(m_journal->kept.size(), std::size_t(2));
    QVERIFY(!m_journal->hasPending());
    QVERIFY(m_journal->made().empty());
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("a"));
}

void TestRecorded::aNewPlaylist()
{
    QVERIFY(WritePlaylist(m_fileSystem, in(u"cd/"_s), {u"c.mp3"_s}, {}, m_journal.get()));
    QCOMPARE(m_journal->made().size(), std::size_t(1));
    const FakeJournal::Kept &change = m_journal->kept.front();
    QCOMPARE(change.change.kind, ChangeKind::Create);
    QCOMPARE(change.change.newPath, in(u"cd/lista.m3u"_s));
    QVERIFY(!change.newWasThere);
    QCOMPARE((*change.done)->after.size, qint64(7));
}

void TestRecorded::anOlderPlaylist()
{
    writeFile(in(u"cd/lista.m3u"_s), "older\r\n");
    QVERIFY(WritePlaylist(m_fileSystem, in(u"cd/"_s), {u"c.mp3"_s}, {}, m_journal.get()));
    QCOMPARE(m_journal->made().size(), std::size_t(1));
    const FakeJournal::Kept &change = m_journal->kept.front();
    QCOMPARE(change.change.kind, ChangeKind::Content);
    QCOMPARE(change.change.path, in(u"cd/lista.m3u"_s));
    QCOMPARE(change.change.inverse, std::vector{storage::Segment::fresh("older\r\n")});
    QCOMPARE(change.change.written, QByteArray("c.mp3\r\n"));
    QCOMPARE(change.change.newSize, qint64(7));
    QCOMPARE(change.change.before.size, qint64(7));
    QCOMPARE((*change.done)->after.inode, m_fileSystem.info(in(u"cd/lista.m3u"_s))->inode);
}

void TestRecorded::aPlaylistInPlaceOfALink()
{
    if (!MakesLinks)
        QSKIP("no links");
    makeLink("../a.mp3", in(u"cd/lista.m3u"_s));
    QVERIFY(WritePlaylist(m_fileSystem, in(u"cd/"_s), {u"c.mp3"_s}, {}, m_journal.get()));
    QCOMPARE(m_journal->made().size(), std::size_t(1));
    const FakeJournal::Kept &change = m_journal->kept.front();
    QCOMPARE(change.change.kind, ChangeKind::Create);
    QVERIFY((*change.done)->replaced);
    QVERIFY(QFileInfo((*change.done)->trashed->file).isSymLink());
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("a"));
    QCOMPARE(contentOf(in(u"cd/lista.m3u"_s)), QByteArray("c.mp3\r\n"));
}

void TestRecorded::pathsAreWhole()
{
    if (!MakesLinks)
        QSKIP("no links");
    makeLink("cd", in(u"link"_s));
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    putIntoTrash({u"link/c.mp3"_s, u"./cd/../b.mp3"_s, u"link"_s}, {}, m_journal.get());
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(m_journal->made().size(), std::size_t(3));
    QCOMPARE(m_journal->kept[0].change.path, in(u"cd/c.mp3"_s));
    QCOMPARE(m_journal->kept[1].change.path, in(u"b.mp3"_s));
    QCOMPARE(m_journal->kept[2].change.path, in(u"link"_s));
}

void TestRecorded::whatCantBeRecordedIsDone()
{
    m_journal->refuses = true;
    QVERIFY(transfer(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s)).isComplete());
    QCOMPARE(rename(m_fileSystem, {{u"b.mp3"_s, u"new/b.mp3"_s}}).renames.size(), std::size_t(1));
    QVERIFY(WritePlaylist(m_fileSystem, in(u"cd/"_s), {u"c.mp3"_s}, {}, m_journal.get()));
    QCOMPARE(putIntoTrash({in(u"cd"_s)}, {}, m_journal.get()).trashed.size(), std::size_t(1));
    QCOMPARE(deleteForGood(m_fileSystem, {in(u"new"_s)}, {}, m_journal.get()).deleted.size(), 1);
    QVERIFY(m_journal->kept.empty());
}

QTEST_GUILESS_MAIN(TestRecorded)

#include "tst_recorded.moc"
