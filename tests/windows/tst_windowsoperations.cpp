// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: operations on files and folders work where Windows differs: drives and their roots, names that differ in
// case alone, both separators in a pattern, names that the shell or the file system takes for others.

#include "core/files/operations/deletion.h"
#include "core/files/operations/fileoperations.h"
#include "core/files/operations/undo.h"
#include "core/files/renaming/renamefromtags.h"
#include "core/platform/fileio.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/recorder.h"
#include "core/tags/store/tagstore.h"
#include "support/filetree.h"
#include "support/mp3builder.h"
#include "support/trash.h"

#include <QDir>
#include <QTest>
#include <QUuid>

#include <tuple>

#include <windows.h>

using namespace Qt::StringLiterals;
using namespace ravlin;

namespace {

platform::FileSystem &files()
{
    return platform::FileSystem::native();
}

bool create(const QString &path)
{
    const auto place = platform::placeAt(files(), path);
    return place && place->folder->createNew(place->name);
}

bool setPermissions(const QString &path, quint32 permissions)
{
    return files().open(path, platform::OpenMode::Read).value()->setPermissions(permissions).has_value();
}

/// A file in the root of drive C:, removed on destruction.
class FileInRoot
{
public:
    FileInRoot() : m_name(QUuid::createUuid().toString(QUuid::WithoutBraces) + u".mp3"_s)
    {
        m_isThere = create(path());
    }
    ~FileInRoot()
    {
        if (m_isThere)
            std::ignore = platform::placeAt(files(), path()).value().folder->remove(m_name);
    }
    FileInRoot(const FileInRoot &) = delete;
    FileInRoot &operator=(const FileInRoot &) = delete;

    bool isThere() const { return m_isThere; }
    QString path() const { return u"C:\\"_s + m_name; }

private:
    const QString m_name;
    bool m_isThere = false;
};

/// The root of a drive that does not exist.
QString missingDrive()
{
    const DWORD taken = ::GetLogicalDrives();
    for (char16_t letter = u'D'; letter <= u'Y'; ++letter) {
        if ((taken & (1U << (letter - u'A'))) == 0)
            return QChar(letter) + u":\\"_s;
    }
    return {};
}

/// Expects no question but whether files are to be deleted for good.
class Host final : public FileOperationHost
{
public:
    ClashDecision askClash(const Clash &) override { return {ClashAnswer::Stop}; }
    bool confirmTrash(const QStringList &) override { return true; }
    bool confirmDeleteForGood(const QStringList &paths, NoWayBack) override
    {
        asked += paths;
        return false;
    }
    bool runLong(OperationKind, const std::function<void(const Watch &)> &work) override
    {
        work({});
        return true;
    }
    void tell(const OperationReport &report) override { told += report; }

    QStringList asked;
    QList<OperationReport> told;
};

} // namespace

class TestWindowsOperations : public QObject
{
    Q_OBJECT

private:
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};
    QString m_workingFolder = QDir::currentPath();

    FileRenaming plan(const QStringList &paths, const QString &pattern)
    {
        NamingRule rule;
        rule.mode = NamingRule::Pattern;
        rule.pattern = pattern;
        return planFileRenaming(paths, rule, m_store, files());
    }
    static QString addSong(const test::ScratchFolder &folder, const QString &name, const QString &artist,
        const QString &album, const QString &title)
    {
        using namespace test;
        const QByteArray frames =
            textFrame(3, "TPE1", artist) + textFrame(3, "TALB", album) + textFrame(3, "TIT2", title);
        folder.write(name, id3v2(3, frames) + audio());
        return folder.path(name);
    }

private Q_SLOTS:
    void cleanup() { QDir::setCurrent(m_workingFolder); }

    void bothSeparatorsOfAPatternMakeFoldersAndThoseOfValuesDoNot_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::newRow("slash") << u"%1/%2/%3"_s;
        QTest::newRow("backslash") << u"%1\\%2\\%3"_s;
        QTest::newRow("both") << u"%1/%2\\%3"_s;
    }
    void bothSeparatorsOfAPatternMakeFoldersAndThoseOfValuesDoNot()
    {
        QFETCH(QString, pattern);
        const test::ScratchFolder scratch;
        const QString song = addSong(scratch, u"a.mp3"_s, u"AC/DC"_s, u"High\\way"_s, u"T/N\\T"_s);
        const FileRenaming renaming = plan({song}, pattern);
        QCOMPARE(newNameOf(renaming.plan.rows().front()), u"ACDC\\Highway\\TNT.mp3"_s);
        QCOMPARE(runRenaming(files(), renaming.plan).count(RenameState::Rename), 1U);
        QCOMPARE(test::snapshotOf(scratch.path()).keys(),
            (QStringList{u"ACDC"_s, u"ACDC/Highway"_s, u"ACDC/Highway/TNT.mp3"_s}));
    }

    void aValueLeadsIntoNoOtherFolder()
    {
        const test::ScratchFolder scratch;
        QVERIFY(files().createFolder(scratch.path(u"New"_s)));
        QVERIFY(files().createFolder(scratch.path(u"A"_s)));
        TagRecord record;
        for (const QString &album : {u"A/B"_s, u"A\\B"_s}) {
            record.Album = album;
            const auto row = folderRename(scratch.path(u"New"_s), record, {true, false, {}});
            QCOMPARE(row->problem, platform::NameProblem::LeadsOutside);
            runRenaming(files(), RenamingPlan(files(), {*row}));
            QCOMPARE(test::snapshotOf(scratch.path()).keys(), (QStringList{u"A"_s, u"New"_s}));
        }
    }

    void aCharacterThatWindowsForbidsIsToldBeforehand()
    {
        const test::ScratchFolder scratch;
        const QString song = addSong(scratch, u"a.mp3"_s, u"Ana"_s, u"Uno"_s, u"Sol"_s);
        for (const QString &pattern : {u"%1: %3"_s, u"%3?"_s, u"%1 | %2\\%3"_s, u"C:\\%3"_s, u"<%3>"_s, u"\"%3\""_s}) {
            const FileRenaming renaming = plan({song}, pattern);
            QCOMPARE(renaming.plan.rows().front().state, RenameState::Refused);
            QCOMPARE(renaming.plan.rows().front().problem, platform::NameProblem::Forbidden);
        }
        QCOMPARE(scratch.names(), QStringList{u"a.mp3"_s});
    }

    void caseAloneIsARename()
    {
        const test::ScratchFolder scratch;
        const QString song = addSong(scratch, u"sol.MP3"_s, u"Ana"_s, u"Uno"_s, u"SOL"_s);
        const FileRenaming renaming = plan({song}, u"%3"_s);
        QCOMPARE(renaming.plan.rows().front().state, RenameState::Rename);
        const RenamingOutcome outcome = runRenaming(files(), renaming.plan);
        QCOMPARE(scratch.names(), QStringList{u"SOL.mp3"_s});
        undoRenaming(files(), outcome.renames, outcome.foldersMade);
        QCOMPARE(scratch.names(), QStringList{u"sol.MP3"_s});
    }

    void theRootOfADriveIsNotTheFolderInUseThere()
    {
        const FileInRoot file;
        if (!file.isThere())
            QSKIP("nothing can be put into the root of drive C");
        const test::ScratchFolder inUse;
        QVERIFY(inUse.path().startsWith(u"C:\\"_s));
        QVERIFY(QDir::setCurrent(inUse.path()));

        for (const QString &root : {u"C:\\"_s, u"C:"_s}) {
            QCOMPARE(files().canonicalPath(root).value(), u"C:\\"_s);
            QVERIFY(files().info(root)->inode != test::infoOf(inUse.path()).inode);
            // What is in the root is where it is to go.
            const auto moved = makeTransferPlan(files(), {TransferKind::Move, {file.path()}, root});
            QCOMPARE(moved->items.front().error.value_or(Error{}).code, ErrorCode::AlreadyExists);
        }
        // What is in the current folder is not.
        inUse.write(u"a.mp3"_s, "content");
        const auto moved = makeTransferPlan(files(), {TransferKind::Move, {inUse.path(u"a.mp3"_s)}, u"C:\\"_s});
        QVERIFY(!moved->items.front().error);
        const RenamingPlan renamed(files(), {fileRename(file.path(), u"b"_s + platform::nameOf(file.path()))});
        QCOMPARE(renamed.rows().front().state, RenameState::Rename);
    }

    void aWholeDriveIsNotDeleted()
    {
        for (const QString &path : {missingDrive(), missingDrive().left(2)}) {
            const DeletionReport report = deleteForGood(files(), {path});
            QCOMPARE(report.failures.size(), 1U);
            QCOMPARE(report.failures.front().error.code, ErrorCode::NoOwnName); // not NotFound: nothing was looked up
        }
    }

    void ofADriveThatIsGoneNoFolderIsLeft()
    {
        const QString drive = missingDrive();
        QVERIFY(!drive.isEmpty());
        QCOMPARE(nearestFolder(files(), drive), QString());
        QCOMPARE(nearestFolder(files(), drive + u"music\\gone\\"_s), QString());
        QCOMPARE(nearestFolder(files(), u"\\\\no such server\\share\\gone"_s), QString());
    }

    void whatWasMovedFromADriveThatIsGoneStaysWhereItIs()
    {
        const test::ScratchFolder scratch;
        const test::ScratchFolder database;
        scratch.write(u"a.mp3"_s, "content");
        history::History history(files(), database.path(u"history.sqlite"_s));
        storage::Recorder recorder(files(), &history);
        history.beginEntry(history::Kind::Move, scratch.path());
        const QString target = scratch.path(u"a.mp3"_s);
        recorder.done(recorder.begin(storage::ChangeKind::Move, missingDrive() + u"music\\a.mp3"_s, target), target);
        history.endEntry();
        const UndoReport undone = *undo(history, files());
        QCOMPARE(undone.failures.size(), 1U);
        QCOMPARE(undone.failures.front().error.code, ErrorCode::NotFound);
        QCOMPARE(scratch.names(), QStringList{u"a.mp3"_s});
    }

    void whatTheShellWouldTakeForAnotherIsNotRecycled()
    {
        const test::ScratchFolder scratch;
        const test::ScratchFolder database;
        scratch.write(u"song.mp3"_s, "another");
        for (const QString &name : {u"song.mp3."_s, u"song.mp3 "_s}) {
            QVERIFY(create(scratch.path(name)));
            QCOMPARE(platform::moveToTrash(scratch.path(name)).error().code, ErrorCode::NoTrash);
            // Instead the user is asked whether to delete it for good.
            Host host;
            history::History history(files(), database.path(u"history.sqlite"_s));
            FileOperations operations(files(), host, history);
            QCOMPARE(
                operations.perform({0, FileOperation::Delete, scratch.path(name), {}, FlagAllowUndo}), ResultCancelled);
            QCOMPARE(host.asked, QStringList{scratch.path(name)});
            QVERIFY(files().info(scratch.path(name)));
            QVERIFY(files().info(scratch.path(u"song.mp3"_s)));
            QVERIFY(deleteForGood(files(), {scratch.path(name)}).failures.empty());
            QCOMPARE(scratch.names(), QStringList{u"song.mp3"_s});
        }
    }

    void whatIsTooDeepForTheShellIsNotRecycled()
    {
        const test::ScratchFolder scratch;
        QString folder = scratch.path();
        while (folder.size() < MAX_PATH) {
            folder = platform::inFolder(folder, QString(60, u'l'));
            QVERIFY(files().createFolder(folder));
        }
        const QString path = platform::inFolder(folder, u"a.mp3"_s);
        QVERIFY(create(path));
        QCOMPARE(platform::moveToTrash(path).error().code, ErrorCode::NoTrash);
        QVERIFY(files().info(path));
        QVERIFY(deleteForGood(files(), {platform::inFolder(scratch.path(), QString(60, u'l'))}).failures.empty());
    }

    void aFolderWithReadOnlyFilesIsMovedToAnotherDriveAndBack()
    {
        const test::OtherDrive other;
        if (!other.isOther())
            QSKIP("there is no second file system to write to");
        const test::ScratchFolder scratch;
        QVERIFY(files().createFolder(scratch.path(u"cd"_s)));
        scratch.write(u"cd/a.mp3"_s, "content");
        const QString song = scratch.path(u"cd/a.mp3"_s);
        constexpr qint64 Modified = 1'000'000'000'123'456'700;
        QVERIFY(files().open(song, platform::OpenMode::ReadWrite).value()->setModified(Modified));
        QVERIFY(setPermissions(song, 0444));
        const auto plan = makeTransferPlan(files(), {TransferKind::Move, {scratch.path(u"cd"_s)}, other.path()});
        const test::ScratchFolder database;
        history::History history(files(), database.path(u"history.sqlite"_s));
        history.beginEntry(history::Kind::Move, scratch.path());
        runTransfer(files(), *plan, {}, &history);
        history.endEntry();
        QVERIFY(scratch.names().isEmpty());
        const platform::FileInfo there = test::infoOf(other.path() + u"\\cd\\a.mp3"_s);
        QVERIFY(there.isReadOnly());
        QCOMPARE(there.modified, Modified);
        QVERIFY(undo(history, files())->failures.empty());
        QCOMPARE(
            test::snapshotOf(scratch.path()), (test::Snapshot{{u"cd"_s, "folder"}, {u"cd/a.mp3"_s, "file content"}}));
        QVERIFY(test::infoOf(song).isReadOnly());
        QVERIFY(setPermissions(song, 0666)); // or the folder could not be removed
    }
};

QTEST_GUILESS_MAIN(TestWindowsOperations)
#include "tst_windowsoperations.moc"
