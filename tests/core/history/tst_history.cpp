// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: what was begun is in the database before the file changes; an entry lists its files; what an ended program
// left is finished by the next one, also by what it finds on the disk; a file is followed through later moves; limits
// keep the newest; a database that can't be used stops nothing.

#include "core/history/history.h"

#include "core/history/database.h"
#include "core/platform/path.h"
#include "core/storage/safewrite.h"
#include "support/filetree.h"

#include <QDateTime>
#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::history;
using namespace ravlin::test;
using storage::ChangeDone;
using storage::ChangeKind;
using storage::ChangeRecord;
using storage::ContentWay;
using storage::Segment;

namespace {

platform::FileSystem &native()
{
    return platform::FileSystem::native();
}

} // namespace

class TestHistory : public QObject
{
    Q_OBJECT

    std::unique_ptr<QTemporaryDir> m_folder;

    QString path(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    QString database() const { return path(u"data/history.sqlite"_s); }
    std::unique_ptr<History> open() const { return std::make_unique<History>(native(), database()); }

    QString make(const QString &name, const QByteArray &content = QByteArray(8192, 'o')) const
    {
        writeFile(path(name), content);
        return path(name);
    }
    platform::FileInfo info(const QString &file) const { return native().info(file).value_or(platform::FileInfo()); }

    /// A change of five bytes at that offset.
    ChangeRecord patch(const QString &file, const QByteArray &bytes, qint64 offset = 100) const
    {
        const QByteArray old = contentOf(file);
        ChangeRecord record;
        record.path = file;
        record.before = info(file);
        record.identity.inode = record.before.inode;
        record.newSize = old.size();
        record.inverse = {Segment::kept(0, offset), Segment::fresh(old.mid(offset, bytes.size())),
            Segment::kept(offset + bytes.size(), old.size() - offset - bytes.size())};
        record.written = bytes;
        return record;
    }
    static void overwrite(const QString &file, const QByteArray &bytes, qint64 offset = 100)
    {
        QByteArray content = contentOf(file);
        content.replace(offset, bytes.size(), bytes);
        writeFile(file, content);
    }
    /// Changes the file as an operation does.
    void changed(History &history, const QString &file, const QByteArray &bytes,
        const std::vector<storage::ValueChange> &values = {}) const
    {
        ChangeRecord record = patch(file, bytes);
        record.values = values;
        const auto ticket = history.begin(record);
        overwrite(file, bytes);
        if (ticket)
            history.end(*ticket, ChangeDone{.after = info(file)});
    }
    void moved(History &history, const QString &from, const QString &to, bool isFolder = false) const
    {
        const auto ticket =
            history.begin({.kind = ChangeKind::Move, .path = from, .newPath = to, .isFolder = isFolder});
        QVERIFY(ticket);
        QVERIFY(QDir().rename(from, to));
        history.end(*ticket, ChangeDone{.after = info(to)});
    }
    qint64 entryOf(History &history, const QString &file, const QByteArray &bytes) const
    {
        history.beginEntry(Kind::Single, m_folder->path());
        changed(history, file, bytes);
        return history.endEntry().entry.id;
    }

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void anEntryListsItsFiles()
    {
        const auto history = open();
        const QString a = make(u"a.mp3"_s);
        const QString b = make(u"b.mp3"_s);
        history->beginEntry(Kind::Multi, m_folder->path());
        changed(*history, a, "12345", {{u"genre"_s, u"Blues"_s, {}}});
        changed(*history, b, "67890");
        history->addFailure(path(u"c.mp3"_s), {ErrorCode::ReadOnlyDrive, path(u"c.mp3"_s), u"why"_s});
        const Summary summary = history->endEntry();
        QCOMPARE(summary.doneCount, 2);
        QCOMPARE(summary.failedCount, 1);
        QCOMPARE(summary.files.size(), std::size_t(3));
        QVERIFY(!summary.problem);

        const auto again = open();
        const auto entries = again->entries();
        QVERIFY(entries && entries->size() == 1);
        QCOMPARE(entries->front().id, summary.entry.id);
        QCOMPARE(entries->front().kind, Kind::Multi);
        QCOMPARE(entries->front().fileCount, 2);
        QVERIFY(entries->front().time > QDateTime::currentMSecsSinceEpoch() - 100'000);
        const auto files = again->files(summary.entry.id);
        QVERIFY(files && files->size() == 3);
        QCOMPARE(files->at(0).path, a);
        QCOMPARE(files->at(0).state, FileState::Done);
        QVERIFY((files->at(0).values == std::vector<storage::ValueChange>{{u"genre"_s, u"Blues"_s, {}}}));
        QCOMPARE(files->at(2).state, FileState::Failed);
        QCOMPARE(files->at(2).error->code, ErrorCode::ReadOnlyDrive);
        QCOMPARE(files->at(2).error->detail, u"why"_s);
    }

    void anEntryWithoutChangesIsNotKept()
    {
        const auto history = open();
        history->beginEntry(Kind::Single, m_folder->path());
        history->addFailure(path(u"x.mp3"_s), {ErrorCode::Io, {}, {}});
        QCOMPARE(history->endEntry().entry.id, 0);
        QVERIFY(history->entries()->empty());
        QVERIFY(!QFile::exists(database()));
    }

    void nothingIsCreatedToLook()
    {
        const auto history = open();
        QVERIFY(history->recover().left.empty());
        QVERIFY(history->entries()->empty());
        QVERIFY(!*history->nextUndo());
        QVERIFY(!QFileInfo::exists(path(u"data"_s)));
    }

    void entriesAreFiltered()
    {
        const auto history = open();
        const QString a = make(u"a_%.mp3"_s);
        history->beginEntry(Kind::Single, path(u"one"_s));
        changed(*history, a, "11111", {{u"title"_s, u"Old \"x\""_s, u"ñandú"_s}});
        const qint64 first = history->endEntry().entry.id;
        history->beginEntry(Kind::Single, path(u"one2"_s));
        changed(*history, a, "22222");
        const qint64 second = history->endEntry().entry.id;
        const auto found = [&](const Query &query) {
            QList<qint64> ids;
            const auto entries = history->entries(query);
            for (const Entry &entry : entries.value_or(std::vector<Entry>()))
                ids.append(entry.id);
            return ids;
        };
        QCOMPARE(found({}), (QList<qint64>{second, first}));
        QCOMPARE(found({.limit = 1}), QList<qint64>{second});
        QCOMPARE(found({.folder = path(u"one"_s)}), QList<qint64>{first});
        QCOMPARE(found({.folder = path({})}), (QList<qint64>{second, first}));
        QCOMPARE(found({.text = u"old \"X"_s}), QList<qint64>{first});
        QCOMPARE(found({.text = u"ñandú"_s}), QList<qint64>{first});
        QCOMPARE(found({.text = u"a_%"_s}), (QList<qint64>{second, first}));
        QCOMPARE(found({.text = u"a%mp3"_s}), QList<qint64>());
        QCOMPARE(found({.since = QDateTime::currentMSecsSinceEpoch() + 100'000}), QList<qint64>());
    }

    /// The program ends between begin() and the file's change, after it, or in the middle.
    void whatWasInterruptedIsFinished_data()
    {
        QTest::addColumn<ContentWay>("way");
        QTest::addColumn<int>("patches");
        QTest::addColumn<QByteArray>("expected");
        QTest::newRow("one step, not made") << ContentWay::OneStep << 0 << QByteArray("old");
        QTest::newRow("one step, made") << ContentWay::OneStep << 2 << QByteArray("new");
        QTest::newRow("patches, none") << ContentWay::Patches << 0 << QByteArray("old");
        QTest::newRow("patches, one") << ContentWay::Patches << 1 << QByteArray("old");
        QTest::newRow("patches, all") << ContentWay::Patches << 2 << QByteArray("new");
        QTest::newRow("patches, half of one") << ContentWay::Patches << -1 << QByteArray("old"); // by a power cut
    }
    void whatWasInterruptedIsFinished()
    {
        QFETCH(ContentWay, way);
        QFETCH(int, patches);
        QFETCH(QByteArray, expected);
        const QString file = make(u"a.mp3"_s);
        const QByteArray before = contentOf(file);
        const qint64 time = info(file).modified;
        ChangeRecord record = patch(file, "12345");
        record.way = way;
        record.inverse = {Segment::kept(0, 100), Segment::fresh(before.mid(100, 5)), Segment::kept(105, 4895),
            Segment::fresh(before.mid(5000, 5)), Segment::kept(5005, before.size() - 5005)};
        record.written = "1234567890";
        {
            const auto history = open();
            history->beginEntry(Kind::Single, m_folder->path());
            QVERIFY(history->begin(record));
            if (patches != 0)
                overwrite(file, patches > 0 ? "12345" : "12", 100);
            if (patches > 1)
                overwrite(file, "67890", 5000);
        }
        const QByteArray after = contentOf(file);
        const auto history = open();
        const Recovery recovery = history->recover();
        QVERIFY(recovery.left.empty());
        QCOMPARE(contentOf(file), expected == "old" ? before : after);
        QCOMPARE(history->entries()->size(), expected == "old" ? std::size_t(0) : std::size_t(1));
        const bool isPartly = patches == 1 || patches == -1;
        QCOMPARE(recovery.rolledBack.size(), isPartly ? 1 : 0);
        if (isPartly)
            QCOMPARE(info(file).modified, time);
        QVERIFY(history->recover().completed.isEmpty()); // and it is done with
    }

    /// What a killed program has not put into the database yet: a copy of its files is what it would leave.
    void whatWaitsForTheDatabaseIsNotLost()
    {
        const QString twice = make(u"a.mp3"_s);
        const QString open1 = make(u"b.mp3"_s);
        const QString notMade = make(u"c.mp3"_s);
        const QByteArray before = contentOf(twice);
        const auto killed = open();
        killed->beginEntry(Kind::Multi, m_folder->path());
        changed(*killed, twice, "11111", {{u"title"_s, u"x"_s, u"y"_s}});
        const auto failed = killed->begin(patch(notMade, "33333"));
        QVERIFY(failed);
        killed->end(*failed, tl::unexpected(Error{ErrorCode::Io, {}, {}}));
        changed(*killed, twice, "22222");
        QVERIFY(killed->begin(patch(open1, "44444")));
        overwrite(open1, "44444");
        QVERIFY(killed->begin(patch(notMade, "55555")));

        QDir().mkpath(path(u"left"_s));
        const auto names = QDir(path(u"data"_s)).entryList(QDir::Files | QDir::Hidden);
        for (const QString &name : names)
            QVERIFY(QFile::copy(path(u"data/"_s + name), path(u"left/"_s + name)));
        for (const QString &name : names)
            QFile::setPermissions(path(u"left/"_s + name), QFile::ReadOwner | QFile::WriteOwner);
        History next(native(), path(u"left/history.sqlite"_s));
        QCOMPARE(next.recover().completed, QStringList{open1});
        const auto entries = next.entries();
        QVERIFY(entries && entries->size() == 1);
        QCOMPARE(entries->front().kind, Kind::Multi);
        QCOMPARE(entries->front().fileCount, 3);
        const auto files = next.files(entries->front().id);
        QCOMPARE(files->front().values.front().after, u"y"_s);
        const auto changes = next.changesToUndo(entries->front().id);
        QVERIFY(changes && changes->size() == 3);
        next.beginReverting(entries->front().id);
        for (const StoredChange &change : *changes)
            QVERIFY(revertContent(next, native(), change, change.record.path, false));
        QCOMPARE(next.endReverting(true).doneCount, 3);
        QCOMPARE(contentOf(twice), before);
        QCOMPARE(contentOf(open1), before);
        QVERIFY(next.recover().completed.isEmpty());
        QCOMPARE(next.entries()->size(), std::size_t(1));
    }

    void foreignBytesAreNotRolledBack()
    {
        const QString file = make(u"a.mp3"_s);
        ChangeRecord record = patch(file, "12345");
        record.way = ContentWay::Patches;
        {
            const auto history = open();
            history->beginEntry(Kind::Single, m_folder->path());
            QVERIFY(history->begin(record));
        }
        overwrite(file, "FOREI");
        const QByteArray foreign = contentOf(file);
        const auto history = open();
        QVERIFY(history->recover().rolledBack.isEmpty());
        QCOMPARE(contentOf(file), foreign);
        const auto changes = history->changesToUndo(history->entries()->front().id);
        QVERIFY(changes && changes->size() == 1);
        const auto reverted = revertContent(*history, native(), changes->front(), file, true);
        QCOMPARE(reverted.error().code, ErrorCode::ChangedMeanwhile);
    }

    void aRunningProgramIsLeftAlone()
    {
        const QString file = make(u"a.mp3"_s);
        const auto running = open();
        running->beginEntry(Kind::Single, m_folder->path());
        ChangeRecord record = patch(file, "12345");
        record.way = ContentWay::Patches;
        const auto ticket = running->begin(record);
        QVERIFY(ticket);
        overwrite(file, "12", 100);
        const QByteArray half = contentOf(file);
        const auto other = open();
        QVERIFY(other->recover().rolledBack.isEmpty());
        QCOMPARE(contentOf(file), half);
        overwrite(file, "12345");
        running->end(*ticket, ChangeDone{.after = info(file)});
        QCOMPARE(running->endEntry().doneCount, 1);
        QCOMPARE(other->entries()->size(), std::size_t(1));
    }

    void anAbsentFileWaits()
    {
        QDir(m_folder->path()).mkdir(u"drive"_s);
        const QString file = make(u"drive/a.mp3"_s);
        ChangeRecord record = patch(file, "12345");
        record.way = ContentWay::Patches;
        const QByteArray before = contentOf(file);
        {
            const auto history = open();
            history->beginEntry(Kind::Single, m_folder->path());
            QVERIFY(history->begin(record));
            overwrite(file, "123");
        }
        QVERIFY(QDir().rename(path(u"drive"_s), path(u"away"_s)));
        QCOMPARE(open()->recover().left.size(), std::size_t(1));
        QVERIFY(QDir().rename(path(u"away"_s), path(u"drive"_s)));
        // Another program of the same user has renamed it meanwhile.
        QVERIFY(QFile::rename(file, path(u"drive/b.mp3"_s)));
        writeFile(path(u"drive/b.mp3"_s), [&] {
            QByteArray bytes = before;
            return bytes.replace(100, 3, "ooo");
        }());
        QVERIFY(open()->recover().left.empty());
        QCOMPARE(contentOf(path(u"drive/b.mp3"_s)), before);
    }

    void interruptedMovesAreTold_data()
    {
        QTest::addColumn<QString>("where");
        QTest::addColumn<int>("entries");
        QTest::newRow("not yet") << u"a.mp3"_s << 0;
        QTest::newRow("aside") << u"aside.mp3"_s << 0;
        QTest::newRow("done") << u"b.mp3"_s << 1;
    }
    void interruptedMovesAreTold()
    {
        QFETCH(QString, where);
        QFETCH(int, entries);
        const QString file = make(u"a.mp3"_s);
        {
            const auto history = open();
            history->beginEntry(Kind::Rename, m_folder->path());
            QVERIFY(history->begin(
                {.kind = ChangeKind::Move, .path = file, .newPath = path(u"b.mp3"_s), .aside = path(u"aside.mp3"_s)}));
            if (path(where) != file)
                QVERIFY(QDir().rename(file, path(where)));
        }
        const auto history = open();
        std::ignore = history->recover();
        QCOMPARE(history->entries()->size(), static_cast<std::size_t>(entries));
        QVERIFY(QFile::exists(entries == 1 ? path(u"b.mp3"_s) : file));
    }

    void temporaryFilesOfAnEndedProgramGo()
    {
        const auto running = open();
        const auto kept = storage::TemporaryFile::create(native(), m_folder->path());
        QVERIFY(kept);
        QVERIFY(running->beginTemporary(m_folder->path(), platform::nameOf(kept->path())));
        QString left;
        {
            const auto history = open();
            auto made = storage::TemporaryFile::create(native(), m_folder->path());
            QVERIFY(made);
            left = made->path();
            QVERIFY(history->beginTemporary(m_folder->path(), platform::nameOf(left)));
            QVERIFY(made->moveTo(u"x"_s)); // so that it stays
            QVERIFY(QFile::rename(path(u"x"_s), left));
        }
        QCOMPARE(open()->recover().temporaryFiles, 1);
        QVERIFY(!QFile::exists(left));
        QVERIFY(QFile::exists(kept->path()));
    }

    void theFileOfAProgramThatRecordedNothingGoes()
    {
        std::ignore = entryOf(*open(), make(u"a.mp3"_s), "12345");
        const QString folder = platform::folderOf(database());
        const auto running = storage::TemporaryFile::create(native(), folder);
        QVERIFY(running);
        QString left;
        {
            auto made = storage::TemporaryFile::create(native(), folder);
            QVERIFY(made);
            left = made->path();
            QVERIFY(made->moveTo(u"x"_s)); // so that it stays
            QVERIFY(QFile::rename(platform::inFolder(folder, u"x"_s), left));
        }
        std::ignore = open()->recover();
        QVERIFY(!QFile::exists(left));
        QVERIFY(QFile::exists(running->path()));
    }

    void aFileIsFollowed()
    {
        QDir(m_folder->path()).mkdir(u"album"_s);
        const QString file = make(u"album/a.mp3"_s);
        const auto history = open();
        const qint64 entry = entryOf(*history, file, "12345");
        history->beginEntry(Kind::Rename, m_folder->path());
        moved(*history, file, path(u"album/b.mp3"_s));
        moved(*history, path(u"album"_s), path(u"other"_s), true);
        std::ignore = history->endEntry();
        const auto changes = history->changesToUndo(entry);
        QVERIFY(changes && changes->size() == 1);
        QCOMPARE(history->presentPath(changes->front().record.id, file).value(), path(u"other/b.mp3"_s));
        QVERIFY(history->laterOnSameFiles(entry)->empty()); // a rename is no obstacle
        const qint64 later = entryOf(*history, path(u"other/b.mp3"_s), "54321");
        const auto obstacles = history->laterOnSameFiles(entry);
        QVERIFY(obstacles && obstacles->size() == 1);
        QCOMPARE(obstacles->front().id, later);
        QVERIFY(history->laterOnSameFiles(later)->empty());
    }

    void undoAndRedoAreExact()
    {
        const QString file = make(u"a.mp3"_s);
        const QByteArray before = contentOf(file);
        const qint64 time = info(file).modified;
        const auto history = open();
        const qint64 entry = entryOf(*history, file, "12345");
        const QByteArray after = contentOf(file);
        const qint64 newTime = info(file).modified;
        for (int round = 0; round < 3; ++round) {
            QCOMPARE((*history->nextUndo())->id, entry);
            QVERIFY(!*history->nextRedo());
            const auto changes = history->changesToUndo(entry);
            QVERIFY(changes && changes->size() == 1);
            history->beginReverting(entry);
            QVERIFY(revertContent(*history, native(), changes->front(), file, false));
            const Summary summary = history->endReverting(true);
            QCOMPARE(summary.doneCount, 1);
            QCOMPARE(contentOf(file), before);
            QCOMPARE(info(file).modified, time);
            QVERIFY(!*history->nextUndo());
            QCOMPARE(history->entries()->front().undoneCount, 1);

            const auto redo = history->nextRedo();
            QVERIFY(redo && *redo);
            QCOMPARE((*redo)->kind, Kind::Single);
            const auto again = history->changesToUndo((*redo)->id);
            QVERIFY(again && again->size() == 1);
            history->beginReverting((*redo)->id);
            QVERIFY(revertContent(*history, native(), again->front(), file, false));
            QCOMPARE(history->endReverting(true).doneCount, 1);
            QCOMPARE(contentOf(file), after);
            QCOMPARE(info(file).modified, newTime);
            QCOMPARE(history->entries()->front().undoneCount, 0);
        }
        // A new change of the file ends the redo.
        const auto changes = history->changesToUndo(entry);
        history->beginReverting(entry);
        QVERIFY(revertContent(*history, native(), changes->front(), file, false));
        std::ignore = history->endReverting(true);
        QVERIFY(*history->nextRedo());
        std::ignore = entryOf(*history, file, "again");
        QVERIFY(!*history->nextRedo());
    }

    void limitsKeepTheNewest()
    {
        const auto history = open();
        const QString file = make(u"a.mp3"_s, QByteArray(4'000'000, 'o'));
        history->setLimits(90, 2);
        for (int i = 0; i < 5; ++i) {
            QRandomGenerator random(static_cast<quint32>(i));
            QByteArray bytes(1'500'000, '\0');
            for (char &byte : bytes)
                byte = static_cast<char>(random.generate());
            std::ignore = entryOf(*history, file, bytes);
        }
        QVERIFY2(history->size() < 4'000'000, QByteArray::number(history->size()));
        QCOMPARE(history->entries()->size(), std::size_t(1));
        QVERIFY(history->forgetAll());
        QVERIFY(history->entries()->empty());
    }

    void withoutRecordingNothingStays()
    {
        const auto history = open();
        history->setRecording(false);
        const QString file = make(u"a.mp3"_s);
        history->beginEntry(Kind::Single, m_folder->path());
        changed(*history, file, "12345");
        const Summary summary = history->endEntry();
        QCOMPARE(summary.doneCount, 1);
        QCOMPARE(summary.entry.id, 0);
        QVERIFY(history->entries()->empty());
    }

    void aDatabaseThatIsNoneIsSetAside()
    {
        QDir(m_folder->path()).mkdir(u"data"_s);
        writeFile(database(), QByteArray(5000, 'x'));
        const auto history = open();
        const qint64 entry = entryOf(*history, make(u"a.mp3"_s), "12345");
        QVERIFY(entry != 0);
        QCOMPARE(contentOf(path(u"data/history.sqlite.damaged-1"_s)), QByteArray(5000, 'x'));
    }

    void aNewerDatabaseIsLeftAlone()
    {
        std::ignore = entryOf(*open(), make(u"a.mp3"_s), "12345");
        {
            auto newer = Database::open(database());
            QVERIFY(newer && newer->setVersion(99));
        }
        const auto history = open();
        const QString file = make(u"b.mp3"_s);
        history->beginEntry(Kind::Single, m_folder->path());
        changed(*history, file, "12345");
        const Summary summary = history->endEntry();
        QCOMPARE(summary.doneCount, 1);
        QCOMPARE(summary.problem->code, ErrorCode::NewerVersion);
        QCOMPARE(contentOf(file).mid(100, 5), QByteArray("12345"));
    }

    void aHomeThatIsNoFolderStopsNothing()
    {
        make(u"data"_s, "a file");
        const auto history = open();
        const QString file = make(u"a.mp3"_s);
        history->beginEntry(Kind::Single, m_folder->path());
        changed(*history, file, "12345");
        const Summary summary = history->endEntry();
        QCOMPARE(summary.doneCount, 1);
        QCOMPARE(summary.entry.id, 0);
        QVERIFY(summary.problem);
    }
};

QTEST_GUILESS_MAIN(TestHistory)

#include "tst_history.moc"
