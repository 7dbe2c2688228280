// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: RenameFile gives a file or folder its new path and never replaces another, even if only the case changes
// and the file system ignores case. A failure leaves the old name, or one that shows what it was.

#include "core/files/operations/clsfilefunc.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/saferename.h"
#include "support/caselessfilesystem.h"
#include "support/faultyfilesystem.h"
#include "support/links.h"

#include <QtTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestClsFileFunc : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void renamesFilesAndFolders();
    void emptyOrSameDoesNothing();
    void neverOverwrites();
    void aMissingFileIsAnError();
    void linksAreRenamedThemselves();
    void caseAloneWhereCaseCounts();
    void caseAloneWhereCaseIsIgnored();
    void caseAloneOfAFolder();
    void anotherFileInOtherCaseIsTaken();
    void hardLinksInOtherCaseAreTaken();
    void failureAtAnyCallLosesNothing();
};

void TestClsFileFunc::renamesFilesAndFolders()
{
    const ScratchFolder folder;
    clsFileFunc operations(platform::FileSystem::native());
    const QString file = folder.write(u"a.mp3"_s, "one");
    QVERIFY(operations.RenameFile(file, folder.path(u"b.mp3"_s)));
    QCOMPARE(folder.names(), QStringList{u"b.mp3"_s});
    QVERIFY(QDir().mkdir(folder.path(u"Old"_s)));
    QVERIFY(operations.RenameFile(folder.path(u"b.mp3"_s), folder.path(u"Old/c.mp3"_s)));
    QVERIFY(operations.RenameFile(folder.path(u"Old"_s), folder.path(u"New"_s)));
    QCOMPARE(ScratchFolder::read(folder.path(u"New/c.mp3"_s)), QByteArray("one"));
}

void TestClsFileFunc::emptyOrSameDoesNothing()
{
    const ScratchFolder folder;
    FaultyFileSystem counting;
    clsFileFunc operations(counting);
    const QString file = folder.write(u"a.mp3"_s, "one");
    QVERIFY(operations.RenameFile({}, file));
    QVERIFY(operations.RenameFile(file, {}));
    QVERIFY(operations.RenameFile(file, file));
    QCOMPARE(counting.count(), 0);
    QCOMPARE(folder.names(), QStringList{u"a.mp3"_s});
}

void TestClsFileFunc::neverOverwrites()
{
    const ScratchFolder folder;
    clsFileFunc operations(platform::FileSystem::native());
    const QString file = folder.write(u"a.mp3"_s, "one");
    const QString other = folder.write(u"b.mp3"_s, "two");
    QVERIFY(QDir().mkdir(folder.path(u"empty"_s)));
    QVERIFY(QFile::link(u"nowhere"_s, folder.path(u"link"_s)));
    for (const QString &taken : {other, folder.path(u"empty"_s), folder.path(u"link"_s)}) {
        const Result<void> renamed = operations.RenameFile(file, taken);
        QVERIFY(!renamed);
        QVERIFY(renamed.error().code == ErrorCode::AlreadyExists);
        QCOMPARE(renamed.error().path, taken);
    }
    QVERIFY(QDir().mkdir(folder.path(u"other"_s)));
    QVERIFY(!operations.RenameFile(folder.path(u"empty"_s), folder.path(u"other"_s)));
    QCOMPARE(ScratchFolder::read(file), QByteArray("one"));
    QCOMPARE(ScratchFolder::read(other), QByteArray("two"));
    QCOMPARE(folder.names().size(), 5);
}

void TestClsFileFunc::aMissingFileIsAnError()
{
    const ScratchFolder folder;
    clsFileFunc operations(platform::FileSystem::native());
    const Result<void> renamed = operations.RenameFile(folder.path(u"a.mp3"_s), folder.path(u"b.mp3"_s));
    QVERIFY(!renamed && renamed.error().code == ErrorCode::NotFound);
    const QString file = folder.write(u"a.mp3"_s, "one");
    QVERIFY(!operations.RenameFile(file, folder.path(u"none/b.mp3"_s)));
    QVERIFY(!operations.RenameFile(file, folder.path(u"b"_s + QChar(u'\0') + u".mp3"_s)));
    QCOMPARE(folder.names(), QStringList{u"a.mp3"_s});
}

void TestClsFileFunc::linksAreRenamedThemselves()
{
    const ScratchFolder folder;
    clsFileFunc operations(platform::FileSystem::native());
    folder.write(u"a.mp3"_s, "one");
    if (!symbolicLink(u"a.mp3"_s, folder.path(u"link.mp3"_s)))
        QSKIP("no symbolic links here");
    QVERIFY(operations.RenameFile(folder.path(u"link.mp3"_s), folder.path(u"new.mp3"_s)));
    QCOMPARE(folder.names(), (QStringList{u"a.mp3"_s, u"new.mp3"_s}));
    QVERIFY(QFileInfo(folder.path(u"new.mp3"_s)).isSymLink());
}

void TestClsFileFunc::caseAloneWhereCaseCounts()
{
    const ScratchFolder folder;
    clsFileFunc operations(platform::FileSystem::native());
    const QString file = folder.write(u"song.mp3"_s, "one");
    QVERIFY(operations.RenameFile(file, folder.path(u"Song.mp3"_s)));
    QCOMPARE(folder.names(), QStringList{u"Song.mp3"_s});
}

void TestClsFileFunc::caseAloneWhereCaseIsIgnored()
{
    const ScratchFolder folder;
    CaselessFileSystem caseless;
    clsFileFunc operations(caseless);
    const QString file = folder.write(u"canción.mp3"_s, "one");
    QVERIFY(operations.RenameFile(file, folder.path(u"CANCIÓN.mp3"_s)));
    QCOMPARE(folder.names(), QStringList{u"CANCIÓN.mp3"_s});
    QCOMPARE(ScratchFolder::read(folder.path(u"CANCIÓN.mp3"_s)), QByteArray("one"));
}

void TestClsFileFunc::caseAloneOfAFolder()
{
    const ScratchFolder folder;
    CaselessFileSystem caseless;
    clsFileFunc operations(caseless);
    QVERIFY(QDir().mkdir(folder.path(u"live"_s)));
    QVERIFY(operations.RenameFile(folder.path(u"live"_s), folder.path(u"Live"_s)));
    QCOMPARE(folder.names(), QStringList{u"Live"_s});
}

void TestClsFileFunc::anotherFileInOtherCaseIsTaken()
{
    const ScratchFolder folder;
    CaselessFileSystem caseless;
    clsFileFunc operations(caseless);
    const QString file = folder.write(u"a.mp3"_s, "one");
    folder.write(u"B.mp3"_s, "two");
    const Result<void> renamed = operations.RenameFile(file, folder.path(u"b.mp3"_s));
    QVERIFY(!renamed && renamed.error().code == ErrorCode::AlreadyExists);
    QCOMPARE(folder.names(), (QStringList{u"B.mp3"_s, u"a.mp3"_s}));
}

void TestClsFileFunc::hardLinksInOtherCaseAreTaken()
{
    const ScratchFolder folder;
    clsFileFunc operations(platform::FileSystem::native());
    const QString file = folder.write(u"a.mp3"_s, "one");
    QVERIFY(hardLink(file, folder.path(u"A.mp3"_s)));
    const Result<void> renamed = operations.RenameFile(file, folder.path(u"A.mp3"_s));
    QVERIFY(!renamed && renamed.error().code == ErrorCode::AlreadyExists);
    QCOMPARE(folder.names().size(), 2);
}

void TestClsFileFunc::failureAtAnyCallLosesNothing()
{
    CaselessFileSystem caseless;
    int failures = 0;
    for (int call = 0;; ++call) {
        const ScratchFolder folder;
        const QString file = folder.write(u"song.mp3"_s, "one");
        FaultyFileSystem faulty(caseless);
        faulty.setPlan({.fault = Fault::Fail, .at = call, .forEver = true});
        clsFileFunc operations(faulty);
        const Result<void> renamed = operations.RenameFile(file, folder.path(u"SONG.mp3"_s));
        if (!faulty.hasFired())
            break;
        // Renaming goes on without the lock.
        const QStringList names = folder.names();
        QCOMPARE(names.size(), 1);
        QCOMPARE(ScratchFolder::read(folder.path(names.front())), QByteArray("one"));
        if (!renamed) {
            ++failures;
            QVERIFY(names.front() == u"song.mp3"_s || storage::nameBeforeAside(names.front()) == u"song.mp3"_s);
            QVERIFY(storage::bringBackAside(caseless, folder.path()));
            QCOMPARE(folder.names(), QStringList{u"song.mp3"_s});
        }
    }
    QVERIFY(failures >= 4);
}

QTEST_GUILESS_MAIN(TestClsFileFunc)
#include "tst_clsfilefunc.moc"
