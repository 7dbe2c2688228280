// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: only names that we give ourselves count as leftovers. A temporary file is locked while it is used; like a
// temporary folder it is gone with its object unless it got its final name, and takes no other's place unless asked to.
// cleanLeftovers removes what nobody uses any more and touches nothing else: no file in use, no file that may not be
// ours, no folder, nothing behind a link.

#include "core/platform/nodes.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/leftovers.h"
#include "core/storage/safewrite.h"
#include "support/faultyfilesystem.h"
#include "support/filetree.h"
#include "support/links.h"

#include <QtTest>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using namespace Qt::StringLiterals;
using ravlin::test::Call;
using ravlin::test::Fault;
using ravlin::test::FaultyFileSystem;
using ravlin::test::infoOf;
using ravlin::test::MakesLinks;
using ravlin::test::ScratchFolder;

namespace {

FileSystem &native()
{
    return FileSystem::native();
}

/// Whether the lock of a file that another holds open can be had.
bool isFree(const QString &path)
{
    const auto file = native().open(path, OpenMode::Read);
    return (*file)->tryLock().value();
}

const QString StaleFile = u".ravlin-00000000000000aa.tmp"_s;
const QString StaleFolder = u".ravlin-00000000000000bb.tmp"_s;

} // namespace

class TestLeftovers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcedTemporariesAreRemoved();
    void leftoverNames();
    void aTemporaryFileIsGoneWithItsObject();
    void aTemporaryFileGetsItsFinalName();
    void aTakenNameIsKeptOrReplaced();
    void aReleasedFileStaysLocked();
    void aFileThatACleanerTookIsMadeAnew_data();
    void aFileThatACleanerTookIsMadeAnew();
    void aTemporaryFolderIsGoneWithAllThatIsInIt();
    void aTemporaryFolderGetsItsFinalName();
    void aFolderThatIsNotThere();
    void cleaning();
    void whatIsInUseStays();
    void foldersStay();
    void onlyCertainlyOursGoes_data();
    void onlyCertainlyOursGoes();
    void withoutLocksNothingIsStale();
};

void TestLeftovers::leftoverNames()
{
    QVERIFY(isLeftoverName(QStringLiteral(".ravlin-0123456789abcdef.tmp")));
    QVERIFY(isLeftoverName(QStringLiteral(".ravlin-0000000000000001.redo")));
    for (const auto *name : {".ravlin-0123456789abcdef.mp3", ".ravlin-.tmp", ".ravlin-0123456789abcdeg.tmp",
             ".ravlin-0123456789ABCDEF.tmp", "ravlin-0123456789abcdef.tmp", ".ravlin-0123456789abcdef.tmp.mp3", ""})
        QVERIFY2(!isLeftoverName(QString::fromLatin1(name)), name);
    QCOMPARE(redoName(0xABC), QStringLiteral(".ravlin-0000000000000abc.redo"));
    QVERIFY(isRedoName(redoName(0xABC)) && !isTemporaryName(redoName(0xABC)));
    QVERIFY(isTemporaryName(StaleFile) && !isRedoName(StaleFile));
}

void TestLeftovers::aTemporaryFileIsGoneWithItsObject()
{
    const ScratchFolder folder;
    {
        const auto temporary = TemporaryFile::create(native(), folder.path());
        QVERIFY(temporary);
        QCOMPARE(folder.names(), QStringList{nameOf(temporary->path())});
        QVERIFY(isTemporaryName(nameOf(temporary->path())));
        QCOMPARE(temporary->info().inode, infoOf(temporary->path()).inode);
        QVERIFY(!isFree(temporary->path()));
    }
    QVERIFY(folder.names().isEmpty());
}

void TestLeftovers::aTemporaryFileGetsItsFinalName()
{
    const ScratchFolder folder;
    const QString path = folder.path(u"new.mp3"_s);
    {
        auto temporary = TemporaryFile::create(native(), folder.path());
        QVERIFY(temporary->file().writeAt(std::span("new", 3), 0));
        QVERIFY(temporary->moveToNew(nameOf(path)));
    }
    QCOMPARE(folder.names(), QStringList{u"new.mp3"_s});
    QCOMPARE(ScratchFolder::read(path), "new");
}

void TestLeftovers::aTakenNameIsKeptOrReplaced()
{
    const ScratchFolder folder;
    const QString path = folder.write(u"song.mp3"_s, "old");
    {
        auto temporary = TemporaryFile::create(native(), folder.path());
        const auto moved = temporary->moveToNew(nameOf(path));
        QVERIFY(!moved);
        QCOMPARE(moved.error().code, ErrorCode::AlreadyExists);
        QCOMPARE(folder.names().size(), 2);
    }
    QCOMPARE(folder.names(), QStringList{u"song.mp3"_s});
    QCOMPARE(ScratchFolder::read(path), "old");
    {
        auto temporary = TemporaryFile::create(native(), folder.path());
        QVERIFY(temporary->moveTo(nameOf(path)));
    }
    QCOMPARE(folder.names(), QStringList{u"song.mp3"_s});
    QCOMPARE(ScratchFolder::read(path), QByteArray());
}

void TestLeftovers::aReleasedFileStaysLocked()
{
    const ScratchFolder folder;
    const QString path = folder.path(u"new.mp3"_s);
    std::unique_ptr<File> file;
    {
        auto temporary = TemporaryFile::create(native(), folder.path());
        QVERIFY(temporary->moveToNew(nameOf(path)));
        file = temporary->release();
    }
    QVERIFY(file && !isFree(path));
    file.reset();
    QVERIFY(isFree(path));
}

void TestLeftovers::aFileThatACleanerTookIsMadeAnew_data()
{
    QTest::addColumn<bool>("isRemoved");
    QTest::newRow("removed before it was locked") << true;
    QTest::newRow("locked by the cleaner") << false;
}

void TestLeftovers::aFileThatACleanerTookIsMadeAnew()
{
    QFETCH(bool, isRemoved);
    const ScratchFolder folder;
    FaultyFileSystem fileSystem;
    QString taken;
    std::unique_ptr<File> cleaner;
    fileSystem.beforeCall = [&](Call call) {
        if (call != Call::Lock || !taken.isEmpty())
            return;
        taken = folder.path(folder.names().constFirst());
        if (isRemoved) {
            QVERIFY(ravlin::test::removeFile(taken));
        } else {
            cleaner = *native().open(taken, OpenMode::Read);
            QVERIFY(cleaner->tryLock().value());
        }
    };
    const auto temporary = TemporaryFile::create(fileSystem, folder.path());
    QVERIFY(temporary);
    QVERIFY(!taken.isEmpty() && temporary->path() != taken);
    QVERIFY(infoOf(temporary->path()).isFile);
    QVERIFY(!isFree(temporary->path()));
}

void TestLeftovers::aTemporaryFolderIsGoneWithAllThatIsInIt()
{
    const ScratchFolder folder;
    {
        const auto temporary = TemporaryFolder::create(*native().openFolder(folder.path()));
        QVERIFY(temporary);
        const QString name = nameOf(temporary->path());
        QVERIFY(isTemporaryName(name) && infoOf(temporary->path()).isFolder);
        if (Separator == u'/')
            QCOMPARE(infoOf(temporary->path()).permissions, 0700U);
        QVERIFY(native().createFolder(inFolder(temporary->path(), u"cd1"_s)));
        folder.write(name + u"/cd1/song.mp3"_s, "content");
    }
    QVERIFY(folder.names().isEmpty());
}

void TestLeftovers::aTemporaryFolderGetsItsFinalName()
{
    const ScratchFolder folder;
    const QString path = folder.path(u"disc"_s);
    {
        auto temporary = TemporaryFolder::create(*native().openFolder(folder.path()));
        QVERIFY(temporary->moveToNew(nameOf(path)));
    }
    QCOMPARE(folder.names(), QStringList{u"disc"_s});
    {
        auto temporary = TemporaryFolder::create(*native().openFolder(folder.path()));
        QCOMPARE(temporary->moveToNew(nameOf(path)).error().code, ErrorCode::AlreadyExists);
    }
    QCOMPARE(folder.names(), QStringList{u"disc"_s});
}

void TestLeftovers::aFolderThatIsNotThere()
{
    const ScratchFolder folder;
    const QString none = folder.path(u"none"_s);
    QCOMPARE(TemporaryFile::create(native(), none).error().code, ErrorCode::NotFound);
    QCOMPARE(native().openFolder(none).error().code, ErrorCode::NotFound);
}

void TestLeftovers::cleaning()
{
    const ScratchFolder folder;
    const QStringList others{QStringLiteral(".ravlin-notes.tmp"), QStringLiteral("song.mp3")};
    for (const QString &name : others)
        folder.write(name, "mine");
    const QString stale = folder.write(QStringLiteral(".ravlin-00000000000000aa.tmp"), "x");
    const QString broken = folder.write(QStringLiteral(".ravlin-00000000000000bb.redo"), "x");
    QVERIFY(ravlin::test::setPermissions(stale, 0600) && ravlin::test::setPermissions(broken, 0600));
    auto busy = TemporaryFile::create(native(), folder.path());
    QVERIFY(busy);
    // A link with such a name is not followed and not ours.
    const QString link = folder.path(QStringLiteral(".ravlin-00000000000000cc.tmp"));
    QVERIFY(!MakesLinks || QFile::link(QStringLiteral("song.mp3"), link));

    QCOMPARE(cleanLeftovers(native(), folder.path()).value(), 2);
    QVERIFY(!QFile::exists(stale) && !QFile::exists(broken));
    QCOMPARE(folder.names().size(), others.size() + (MakesLinks ? 2 : 1));
    QCOMPARE(ScratchFolder::read(folder.path(QStringLiteral("song.mp3"))), "mine");
    QCOMPARE(cleanLeftovers(native(), folder.path()).value(), 0);
    QCOMPARE(cleanLeftovers(native(), folder.path(QStringLiteral("none"))).error().code, ErrorCode::NotFound);
}

void TestLeftovers::whatIsInUseStays()
{
    const ScratchFolder folder;
    const auto file = TemporaryFile::create(native(), folder.path());
    const auto subfolder = TemporaryFolder::create(*native().openFolder(folder.path()));
    QVERIFY(file && subfolder);
    QCOMPARE(cleanLeftovers(native(), folder.path()).value(), 0);
    QVERIFY(infoOf(file->path()).isFile);
    QVERIFY(infoOf(subfolder->path()).isFolder);
}

void TestLeftovers::foldersStay()
{
    const ScratchFolder folder;
    QVERIFY(native().openFolder(folder.path()).value()->createFolder(StaleFolder));
    folder.write(StaleFolder + u"/half.mp3"_s, "half");
    QCOMPARE(cleanLeftovers(native(), folder.path()).value(), 0);
    QCOMPARE(folder.names(), QStringList{StaleFolder});
    QCOMPARE(ScratchFolder::read(folder.path(StaleFolder + u"/half.mp3"_s)), "half");
}

void TestLeftovers::onlyCertainlyOursGoes_data()
{
    QTest::addColumn<quint32>("permissions");
    QTest::addColumn<quint32>("owner");
    QTest::addColumn<bool>("hasSecondName");
    QTest::addColumn<bool>("isGone");
    const quint32 user = FileSystem::native().currentUser();
    QTest::newRow("ours") << 0600U << user << false << true;
    QTest::newRow("readable to others") << 0644U << user << false << false;
    QTest::newRow("writable to a group") << 0620U << user << false << false;
    QTest::newRow("executable") << 0700U << user << false << false;
    QTest::newRow("a hard link to another file") << 0600U << user << true << false;
    QTest::newRow("somebody else's") << 0600U << 12345U << false << false;
}

void TestLeftovers::onlyCertainlyOursGoes()
{
    if (Separator != u'/')
        QSKIP("no owners and permissions here");
    QFETCH(quint32, permissions);
    QFETCH(quint32, owner);
    QFETCH(bool, hasSecondName);
    QFETCH(bool, isGone);
    const ScratchFolder folder;
    for (const QString &name : {StaleFile, redoName(0xabc)}) {
        const QString path = folder.write(name, "x");
        QVERIFY(ravlin::test::setPermissions(path, permissions));
        if (hasSecondName)
            QVERIFY(ravlin::test::hardLink(path, folder.path(u"second name"_s)));
        if (owner != native().currentUser() && !ravlin::test::giveTo(path, owner))
            QSKIP("only root can make a file of somebody else's");
        QCOMPARE(cleanLeftovers(native(), folder.path()).value(), isGone ? 1 : 0);
        QCOMPARE(QFile::exists(path), !isGone);
        QVERIFY(isGone || QFile::remove(path));
        QFile::remove(folder.path(u"second name"_s));
    }
}

void TestLeftovers::withoutLocksNothingIsStale()
{
    const ScratchFolder folder;
    QVERIFY(ravlin::test::setPermissions(folder.write(StaleFile, "x"), 0600));
    FaultyFileSystem fileSystem;
    fileSystem.setPlan({.fault = Fault::Fail, .only = Call::Lock, .forEver = true, .code = ErrorCode::Unsupported});
    QCOMPARE(cleanLeftovers(fileSystem, folder.path()).value(), 0);
    QCOMPARE(folder.names(), QStringList{StaleFile});
    QVERIFY(TemporaryFile::create(fileSystem, folder.path()));
    QVERIFY(fileSystem.hasFired());
}

void TestLeftovers::announcedTemporariesAreRemoved()
{
    const ScratchFolder folder;
    const QString inTheMaking = QStringLiteral(".ravlin-00000000000000aa.tmp");
    const QDir dir(folder.path());
    const auto makeTree = [&](QFile::Permissions permissions) {
        dir.mkpath(inTheMaking + QStringLiteral("/below"));
        folder.write(inTheMaking + QStringLiteral("/below/song.mp3"), "half");
        QFile::setPermissions(folder.path(inTheMaking), permissions);
    };
    constexpr auto OwnerOnly = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    // A folder that is not the user's alone, or that has a user's name, stays.
    makeTree(OwnerOnly | QFile::ReadOther);
    if (Separator == u'/') // on Windows access lists decide, and a folder's permissions are always the same
        QVERIFY(!removeTemporary(native(), folder.path(), inTheMaking));
    dir.mkpath(QStringLiteral("album"));
    QFile::setPermissions(folder.path(QStringLiteral("album")), OwnerOnly);
    QVERIFY(!removeTemporary(native(), folder.path(), QStringLiteral("album")));
    QVERIFY(!removeTemporary(native(), folder.path(), QStringLiteral("../") + nameOf(folder.path())));
    QFile::setPermissions(folder.path(inTheMaking), OwnerOnly);
    {
        // Somebody is at work in it.
        const auto held = *native().openFolder(folder.path(inTheMaking));
        QVERIFY(held->tryLock().value());
        QVERIFY(!removeTemporary(native(), folder.path(), inTheMaking));
    }
    QVERIFY(QFile::exists(folder.path(inTheMaking + QStringLiteral("/below/song.mp3"))));
    QVERIFY(removeTemporary(native(), folder.path(), inTheMaking));
    QCOMPARE(folder.names(), QStringList(QStringLiteral("album")));
    {
        const auto used = TemporaryFolder::create(*native().openFolder(folder.path()));
        QVERIFY(!removeTemporary(native(), folder.path(), nameOf(used->path())));
        const auto file = TemporaryFile::create(native(), folder.path());
        QVERIFY(!removeTemporary(native(), folder.path(), nameOf(file->path())));
    }
    ravlin::test::createNew(folder.path(inTheMaking)).value();
    QVERIFY(removeTemporary(native(), folder.path(), inTheMaking));
    // What is gone needs no removing.
    QVERIFY(removeTemporary(native(), folder.path(), inTheMaking));
    QVERIFY(removeTemporary(native(), folder.path(QStringLiteral("none")), inTheMaking));
    QCOMPARE(folder.names(), QStringList(QStringLiteral("album")));
}

QTEST_GUILESS_MAIN(TestLeftovers)
#include "tst_leftovers.moc"
