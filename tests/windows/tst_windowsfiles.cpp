// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/fileio.h"
#include "core/platform/folder.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/copyfile.h"
#include "core/storage/leftovers.h"
#include "core/storage/safewrite.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <algorithm>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace ravlin::platform {
namespace {

using namespace storage;
using test::infoOf;
using test::ScratchFolder;

FileSystem &files()
{
    return FileSystem::native();
}

std::wstring wide(const QString &path)
{
    return QDir::toNativeSeparators(path).toStdWString();
}

DWORD attributesOf(const QString &path)
{
    return ::GetFileAttributesW(wide(path).c_str());
}

void setAttributes(const QString &path, DWORD attributes)
{
    QVERIFY(::SetFileAttributesW(wide(path).c_str(), attributes) != 0);
}

/// The path of a name in the folder, with the system's separators.
QString in(const ScratchFolder &folder, const QString &name)
{
    return QDir::toNativeSeparators(folder.path(name));
}

QString write(const ScratchFolder &folder, const QString &name, const QByteArray &content)
{
    return QDir::toNativeSeparators(folder.write(name, content));
}

std::shared_ptr<HeldFolder> held(const ScratchFolder &folder)
{
    return files().openFolder(QDir::toNativeSeparators(folder.path())).value();
}

template <typename T>
ErrorCode codeOf(const Result<T> &result)
{
    return result ? ErrorCode::Io : result.error().code;
}

/// A folder that stands for another, as everybody may make one. Returns whether the system can do it.
bool makeJunction(const QString &path, const QString &target)
{
    QProcess shell;
    shell.start(u"cmd.exe"_s, {u"/c"_s, u"mklink"_s, u"/J"_s, path, target});
    shell.waitForFinished();
    const Result<Node> node = nodeAt(path);
    return node && node->kind == NodeKind::Link;
}

const QByteArray Large(20'000, 'o');

} // namespace

/// Contract: FileSystem, Folder, nodes and safe writes keep their promises on Windows.
class TestWindowsFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aPathMayBeLongerThanWindowsOnceAllowed()
    {
        const ScratchFolder scratch;
        QString folder = QDir::toNativeSeparators(scratch.path());
        while (folder.size() < 400) {
            folder = inFolder(folder, QString(60, u'l'));
            QVERIFY(files().createFolder(folder));
        }
        const QString path = inFolder(folder, u"one.mp3"_s);
        {
            const auto made = files().openFolder(folder).value()->createNew(u"one.mp3"_s);
            QVERIFY(made);
            QVERIFY(writeAll(**made, "content", 0));
        }
        QCOMPARE(files().info(path).value().size, 7);
        QCOMPARE(files().names(folder).value(), std::vector<QString>{u"one.mp3"_s});
        const auto entries = Folder::open(folder).value().entries();
        QVERIFY(entries);
        QCOMPARE(entries->size(), 1U);
        QCOMPARE(entries->front().kind, EntryKind::File);
        QVERIFY(files().renameNew(path, inFolder(folder, u"other.mp3"_s)));
        QVERIFY(rewriteFile(files(), inFolder(folder, u"other.mp3"_s), infoOf(inFolder(folder, u"other.mp3"_s)),
            {Segment::fresh(Large)}));
        QVERIFY(removeTree(*held(scratch), QString(60, u'l')));
    }

    void errorsTellWhatCallersBranchOn()
    {
        const ScratchFolder scratch;
        const QString path = write(scratch, u"one.mp3"_s, "content");
        QCOMPARE(files().info(in(scratch, u"none.mp3"_s)).error().code, ErrorCode::NotFound);
        QCOMPARE(files().info(in(scratch, u"none/none.mp3"_s)).error().code, ErrorCode::NotFound);
        QCOMPARE(
            files().open(QDir::toNativeSeparators(scratch.path()), OpenMode::Read).error().code, ErrorCode::NotAFile);
        QCOMPARE(codeOf(held(scratch)->createNew(u"one.mp3"_s)), ErrorCode::AlreadyExists);
        QCOMPARE(codeOf(held(scratch)->createFolder(u"one.mp3"_s)), ErrorCode::AlreadyExists);
        QCOMPARE(codeOf(held(scratch)->openFolder(u"one.mp3"_s)), ErrorCode::NotAFile);
        QCOMPARE(codeOf(held(scratch)->removeFolder(u"one.mp3"_s)), ErrorCode::NotFound);
        QCOMPARE(codeOf(held(scratch)->openFile(u"none.mp3"_s, OpenMode::Read)), ErrorCode::NotFound);
        for (const QString &name : {u".."_s, u"."_s, u"a\\b"_s, u"a/b"_s, u"a:b"_s, QString()})
            QCOMPARE(codeOf(held(scratch)->openFile(name, OpenMode::Read)), ErrorCode::InvalidArgument);
        QCOMPARE(codeOf(files().openFolder(path)), ErrorCode::NotAFile);
        QCOMPARE(codeOf(files().createFolder(path)), ErrorCode::AlreadyExists);
        QCOMPARE(codeOf(files().createFolder(in(scratch, u"none/folder"_s))), ErrorCode::NotFound);
        QVERIFY(files().createFolder(in(scratch, u"full"_s)));
        write(scratch, u"full/one.mp3"_s, {});
        QCOMPARE(codeOf(held(scratch)->removeFolder(u"full"_s)), ErrorCode::AlreadyExists);
        QCOMPARE(codeOf(held(scratch)->openFile(u"full"_s, OpenMode::Read)), ErrorCode::NotAFile);
        QCOMPARE(Folder::open(path).error().code, ErrorCode::NotAFile);
        QCOMPARE(files().open(QString(), OpenMode::Read).error().code, ErrorCode::InvalidArgument);
    }

    void renamingTakesNoOthersPlace()
    {
        const ScratchFolder scratch;
        const QString one = write(scratch, u"one.mp3"_s, "one");
        const QString two = write(scratch, u"two.mp3"_s, "two");
        QCOMPARE(codeOf(files().renameNew(one, two)), ErrorCode::AlreadyExists);
        QCOMPARE(ScratchFolder::read(two), "two");
        QVERIFY(files().renameNew(one, in(scratch, u"three.mp3"_s)));
        QCOMPARE(scratch.names(), (QStringList{u"three.mp3"_s, u"two.mp3"_s}));
    }

    void replacingPutsTheNewInThePlaceOfTheOldAlsoWhenThatIsReadOnlyOrOpen()
    {
        const ScratchFolder scratch;
        write(scratch, u"one.mp3"_s, "one");
        const QString two = write(scratch, u"two.mp3"_s, "two");
        setAttributes(two, FILE_ATTRIBUTE_READONLY);
        const auto folder = held(scratch);
        QVERIFY(folder->replace(u"one.mp3"_s, *folder, u"two.mp3"_s));
        QCOMPARE(scratch.names(), QStringList{u"two.mp3"_s});
        QCOMPARE(ScratchFolder::read(two), "one");
    }

    void aReadOnlyFileIsSaidToBeAndCanBeRemoved()
    {
        const ScratchFolder scratch;
        const QString path = write(scratch, u"one.mp3"_s, "content");
        QVERIFY(!infoOf(path).isReadOnly());
        QVERIFY(files().open(path, OpenMode::Read).value()->setPermissions(0444));
        QVERIFY(infoOf(path).isReadOnly());
        QVERIFY((attributesOf(path) & FILE_ATTRIBUTE_READONLY) != 0);
        QVERIFY(held(scratch)->remove(u"one.mp3"_s));
        QVERIFY(scratch.names().isEmpty());
    }

    void whatHasTheHiddenOrSystemAttributeIsHidden()
    {
        const ScratchFolder scratch;
        setAttributes(write(scratch, u"hidden.mp3"_s, {}), FILE_ATTRIBUTE_HIDDEN);
        setAttributes(write(scratch, u"system.mp3"_s, {}), FILE_ATTRIBUTE_SYSTEM);
        write(scratch, u"plain.mp3"_s, {});
        QVERIFY(files().createFolder(in(scratch, u"folder"_s)));
        const auto folder = Folder::open(QDir::toNativeSeparators(scratch.path()));
        QVERIFY(folder);
        QStringList hidden;
        const auto entries = folder->entries();
        QVERIFY(entries);
        for (const FolderEntry &entry : *entries) {
            if (entry.isHidden)
                hidden.append(entry.name);
        }
        hidden.sort();
        QCOMPARE(hidden, (QStringList{u"hidden.mp3"_s, u"system.mp3"_s}));
        QVERIFY(folder->hasVisibleSubfolder().value());
        setAttributes(in(scratch, u"folder"_s), FILE_ATTRIBUTE_HIDDEN);
        QVERIFY(!folder->hasVisibleSubfolder().value());
    }

    void aFileHasOneIdentityUnderAllItsNames()
    {
        const ScratchFolder scratch;
        const QString one = write(scratch, u"one.mp3"_s, "content");
        const QString two = in(scratch, u"two.mp3"_s);
        QVERIFY(::CreateHardLinkW(wide(two).c_str(), wide(one).c_str(), nullptr) != 0);
        QCOMPARE(infoOf(one).inode, infoOf(two).inode);
        QCOMPARE(infoOf(one).device, infoOf(two).device);
        QCOMPARE(infoOf(one).linkCount, 2U);
        QVERIFY(infoOf(one).inode != infoOf(write(scratch, u"three.mp3"_s, "content")).inode);
    }

    void theTimeOfTheLastChangeIsKeptToTheStepsOfTheSystem()
    {
        const ScratchFolder scratch;
        const QString path = write(scratch, u"one.mp3"_s, "content");
        constexpr qint64 Wanted = 1'000'000'000'123'456'700; // whole steps of 100 ns
        {
            const auto file = files().open(path, OpenMode::ReadWrite);
            QVERIFY(file);
            QVERIFY((*file)->setModified(Wanted));
        }
        QCOMPARE(infoOf(path).modified, Wanted);
    }

    void aLockIsSeenByOthersUntilTheFileIsClosed()
    {
        const ScratchFolder scratch;
        const QString path = write(scratch, u"one.mp3"_s, "content");
        auto first = files().open(path, OpenMode::ReadWrite).value();
        auto second = files().open(path, OpenMode::Read).value();
        QVERIFY(first->tryLock().value());
        QVERIFY(!second->tryLock().value());
        QCOMPARE(readExactly(*second, 0, 7).value(), "content"); // the lock does not hinder reading
        first.reset();
        QVERIFY(second->tryLock().value());
    }

    void aHeldFolderStaysWhatItIsWhateverItsPathLeadsTo()
    {
        const ScratchFolder scratch;
        QVERIFY(files().createFolder(in(scratch, u"folder"_s)));
        write(scratch, u"folder/one.mp3"_s, "one");
        const auto folder = files().openFolder(in(scratch, u"folder"_s)).value();
        QVERIFY(files().renameNew(in(scratch, u"folder"_s), in(scratch, u"moved"_s)));
        QVERIFY(files().createFolder(in(scratch, u"folder"_s)));
        write(scratch, u"folder/one.mp3"_s, "another");
        QCOMPARE(folder->node(u"one.mp3"_s).value().info.size, 3);
        QVERIFY(folder->renameNew(u"one.mp3"_s, *folder, u"two.mp3"_s));
        QVERIFY(folder->createFolder(u"new"_s));
        QVERIFY(folder->remove(u"two.mp3"_s));
        QCOMPARE(folder->names().value(), std::vector<QString>{u"new"_s});
        QVERIFY(folder->removeFolder(u"new"_s));
        QCOMPARE(ScratchFolder::read(in(scratch, u"folder/one.mp3"_s)), "another");
        QVERIFY(files().info(in(scratch, u"moved"_s)));
    }

    void oneFolderTakesWhatAnotherGives()
    {
        const ScratchFolder scratch;
        QVERIFY(files().createFolder(in(scratch, u"a"_s)));
        QVERIFY(files().createFolder(in(scratch, u"b"_s)));
        write(scratch, u"a/one.mp3"_s, "one");
        write(scratch, u"b/two.mp3"_s, "two");
        const auto from = held(scratch)->openFolder(u"a"_s).value();
        const auto to = held(scratch)->openFolder(u"b"_s).value();
        QCOMPARE(codeOf(from->renameNew(u"one.mp3"_s, *to, u"two.mp3"_s)), ErrorCode::AlreadyExists);
        QVERIFY(from->renameNew(u"one.mp3"_s, *to, u"One.mp3"_s));
        QVERIFY(to->renameNew(u"One.mp3"_s, *to, u"one.mp3"_s)); // another case alone
        QVERIFY(to->replace(u"one.mp3"_s, *to, u"two.mp3"_s));
        QCOMPARE(ScratchFolder::read(in(scratch, u"b/two.mp3"_s)), "one");
        QVERIFY(from->names().value().empty());
    }

    void aNewFileIsTheUsersOwn()
    {
        const ScratchFolder scratch;
        const auto made = held(scratch)->createNew(u"one.tmp"_s);
        QVERIFY(made);
        QVERIFY((*made)->isPrivate().value());
        QVERIFY(::CreateHardLinkW(
                    wide(in(scratch, u"two.tmp"_s)).c_str(), wide(in(scratch, u"one.tmp"_s)).c_str(), nullptr) != 0);
        QVERIFY(!(*made)->isPrivate().value());
    }

    void nothingGoesThroughAJunction()
    {
        const ScratchFolder scratch;
        QVERIFY(files().createFolder(in(scratch, u"private"_s)));
        write(scratch, u"private/one.mp3"_s, "one");
        QVERIFY(files().createFolder(in(scratch, u"tree"_s)));
        if (!makeJunction(in(scratch, u"tree/link"_s), in(scratch, u"private"_s)))
            QSKIP("this system makes no junctions (Wine 8 does not)");
        const auto tree = held(scratch)->openFolder(u"tree"_s).value();
        QCOMPARE(tree->node(u"link"_s).value().kind, NodeKind::Link);
        QCOMPARE(codeOf(tree->openFolder(u"link"_s)), ErrorCode::NotAFile);
        QCOMPARE(codeOf(tree->openFile(u"link"_s, OpenMode::Read)), ErrorCode::NotAFile);
        QCOMPARE(codeOf(tree->removeFolder(u"link"_s)), ErrorCode::NotFound);
        QVERIFY(tree->copyLink(*tree, u"link"_s, u"copy"_s));
        QCOMPARE(tree->node(u"copy"_s).value().kind, NodeKind::Link);
        QCOMPARE(codeOf(tree->copyLink(*held(scratch), u"private"_s, u"other"_s)), ErrorCode::NotAFile);
        const Place place = files().follow(in(scratch, u"tree/link/one.mp3"_s)).value();
        QCOMPARE(nameOf(place.folder->path()), u"private"_s);
        QVERIFY(removeTree(*held(scratch), u"tree"_s));
        QCOMPARE(ScratchFolder::read(in(scratch, u"private/one.mp3"_s)), "one");
        QCOMPARE(scratch.names(), QStringList{u"private"_s});
    }

    void aPathIsFollowedToTheFileItself()
    {
        const ScratchFolder scratch;
        write(scratch, u"One.mp3"_s, "one");
        const Place place = files().follow(in(scratch, u"one.MP3"_s)).value();
        QCOMPARE(place.folder->node(place.name).value().info.size, 3);
        QCOMPARE(codeOf(files().follow(in(scratch, u"none.mp3"_s))), ErrorCode::NotFound);
    }

    void leftoversGoAndWhatIsInTheMakingStays()
    {
        const ScratchFolder scratch;
        const QString folder = QDir::toNativeSeparators(scratch.path());
        write(scratch, u".ravlin-0123456789abcdef.tmp"_s, "left by a crash");
        const auto inTheMaking = TemporaryFile::create(files(), folder);
        QVERIFY(inTheMaking);
        QCOMPARE(cleanLeftovers(files(), folder).value(), 1);
        QCOMPARE(scratch.names(), QStringList{nameOf(inTheMaking->path())});
    }

    void aTemporaryFileIsGoneWithItsObject()
    {
        const ScratchFolder scratch;
        {
            auto temporary = TemporaryFile::create(files(), QDir::toNativeSeparators(scratch.path()));
            QVERIFY(temporary);
            QVERIFY(writeAll(temporary->file(), "content", 0));
        }
        QVERIFY(scratch.names().isEmpty());
    }

    void aSaveKeepsAttributesAndTheTimeOfCreation_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<WriteOutcome>("outcome");
        QTest::newRow("in place") << (QByteArray(100, 'n') + Large.mid(100)) << WriteOutcome::InPlace;
        QTest::newRow("appended") << (Large + QByteArray(128, 'n')) << WriteOutcome::Replaced;
        QTest::newRow("cut") << Large.left(10'000) << WriteOutcome::Replaced;
        QTest::newRow("replaced") << (QByteArray(5000, 'n') + Large) << WriteOutcome::Replaced;
    }
    void aSaveKeepsAttributesAndTheTimeOfCreation()
    {
        QFETCH(QByteArray, content);
        QFETCH(WriteOutcome, outcome);
        const ScratchFolder scratch;
        const QString path = write(scratch, u"one.mp3"_s, Large);
        setAttributes(path, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
        WIN32_FILE_ATTRIBUTE_DATA before{};
        QVERIFY(::GetFileAttributesExW(wide(path).c_str(), GetFileExInfoStandard, &before) != 0);
        WriteOptions options;
        options.keepModified = true;
        const auto written = rewriteFile(files(), path, infoOf(path), {Segment::fresh(content)}, options);
        QVERIFY2(written, qPrintable(written ? QString() : written.error().detail));
        QCOMPARE(*written, outcome);
        QCOMPARE(ScratchFolder::read(path), content);
        QCOMPARE(scratch.names(), QStringList{u"one.mp3"_s});
        WIN32_FILE_ATTRIBUTE_DATA after{};
        QVERIFY(::GetFileAttributesExW(wide(path).c_str(), GetFileExInfoStandard, &after) != 0);
        constexpr DWORD Kept = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
        QCOMPARE(after.dwFileAttributes & Kept, before.dwFileAttributes & Kept);
        QCOMPARE(after.ftLastWriteTime.dwLowDateTime, before.ftLastWriteTime.dwLowDateTime);
    }

    void aFileOfSeveralNamesKeepsThem()
    {
        const ScratchFolder scratch;
        const QString one = write(scratch, u"one.mp3"_s, Large);
        const QString two = in(scratch, u"two.mp3"_s);
        QVERIFY(::CreateHardLinkW(wide(two).c_str(), wide(one).c_str(), nullptr) != 0);
        const QByteArray content = QByteArray(5000, 'n') + Large;
        const auto written = rewriteFile(files(), one, infoOf(one), {Segment::fresh(content)});
        QVERIFY2(written, qPrintable(written ? QString() : written.error().detail));
        QCOMPARE(*written, WriteOutcome::Rewritten);
        QCOMPARE(ScratchFolder::read(two), content);
        QCOMPARE(scratch.names(), (QStringList{u"one.mp3"_s, u"two.mp3"_s}));
    }

    void aReadOnlyFileIsWrittenOnlyWhenThatIsWished()
    {
        const ScratchFolder scratch;
        const QString path = write(scratch, u"one.mp3"_s, Large);
        setAttributes(path, FILE_ATTRIBUTE_READONLY);
        const QByteArray content = QByteArray(5000, 'n') + Large;
        QCOMPARE(rewriteFile(files(), path, infoOf(path), {Segment::fresh(content)}).error().code, ErrorCode::ReadOnly);
        QCOMPARE(ScratchFolder::read(path), Large);
        WriteOptions options;
        options.readOnlyFile = ReadOnlyFile::MakeWritable;
        QVERIFY(rewriteFile(files(), path, infoOf(path), {Segment::fresh(content)}, options));
        QCOMPARE(ScratchFolder::read(path), content);
    }

    void aFileThatAnotherProgramKeepsToItselfStaysAsItIs()
    {
        const ScratchFolder scratch;
        const QString path = write(scratch, u"one.mp3"_s, Large);
        const FileInfo before = infoOf(path);
        const HANDLE other = ::CreateFileW(
            wide(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        QVERIFY(other != INVALID_HANDLE_VALUE);
        const auto written = rewriteFile(files(), path, before, {Segment::fresh(QByteArray(5000, 'n') + Large)});
        ::CloseHandle(other);
        QVERIFY(!written);
        QCOMPARE(written.error().code, ErrorCode::AccessDenied);
        QCOMPARE(ScratchFolder::read(path), Large);
        QCOMPARE(scratch.names(), QStringList{u"one.mp3"_s});
    }

    void aCopyHasTheAttributesAndTimesOfItsSource()
    {
        const ScratchFolder scratch;
        const QString from = write(scratch, u"one.mp3"_s, Large);
        setAttributes(from, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
        const QString to = in(scratch, u"two.mp3"_s);
        {
            auto copy = FileCopy::prepare(Place{held(scratch), u"one.mp3"_s}, held(scratch), {});
            QVERIFY(copy);
            QVERIFY(copy->secure(CopyCheck::Everything));
            QVERIFY(copy->place(nameOf(to), Placing::New));
        }
        QCOMPARE(ScratchFolder::read(to), Large);
        QCOMPARE(infoOf(to).modified, infoOf(from).modified);
        QVERIFY((attributesOf(to) & FILE_ATTRIBUTE_HIDDEN) != 0);
        QVERIFY(infoOf(to).isReadOnly());
    }

    void theFolderOfAFileInADrivesRootIsThatRoot()
    {
        QCOMPARE(folderOf(u"C:\\one.mp3"_s), u"C:\\"_s);
        QCOMPARE(folderOf(u"C:\\music\\one.mp3"_s), u"C:\\music"_s);
        QCOMPARE(inFolder(u"C:\\"_s, u"one.mp3"_s), u"C:\\one.mp3"_s);
    }

    void aNameThatMeansAnotherPlaceIsNoPlainName()
    {
        for (const QString &name : {u"a\\b"_s, u"a/b"_s, u"C:"_s, u"a:stream"_s, u".."_s, u"."_s, QString()})
            QVERIFY2(!isPlainName(name), qPrintable(name));
        QVERIFY(isPlainName(u"one.mp3"_s));
    }

    void theCanonicalPathHasTheNamesAsTheyAreOnTheDisk()
    {
        const ScratchFolder scratch;
        write(scratch, u"Émile.mp3"_s, {});
        const auto canonical = files().canonicalPath(in(scratch, u"Émile.mp3"_s));
        QVERIFY(canonical);
        QCOMPARE(nameOf(*canonical), u"Émile.mp3"_s);
        QVERIFY(!canonical->startsWith(u"\\\\?"_s));
    }

    void freeSpaceIsToldForFilesAndFolders()
    {
        const ScratchFolder scratch;
        QVERIFY(files().freeBytes(QDir::toNativeSeparators(scratch.path())).value() > 0);
        QVERIFY(files().freeBytes(write(scratch, u"one.mp3"_s, {})).value() > 0);
        QCOMPARE(files().freeBytes(in(scratch, u"none"_s)).error().code, ErrorCode::NotFound);
    }
};

} // namespace ravlin::platform

QTEST_GUILESS_MAIN(ravlin::platform::TestWindowsFiles)
#include "tst_windowsfiles.moc"
