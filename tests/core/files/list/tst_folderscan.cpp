// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of the folder scan: which names get a row, in which order the folders of a tree come, what a row shows.
// Hidden files, links in a circle, odd names and unreadable files don't stop it.

#include "core/files/list/folderscan.h"
#include "core/platform/filesystem.h"
#include "core/platform/folder.h"
#include "support/links.h"
#include "support/mp3builder.h"
#include "support/nativepath.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <thread>

#ifndef _WIN32
#include <sys/stat.h>
#endif

using namespace ravlin;
using namespace ravlin::test;

class TestFolderScan : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;

    QString root() const { return native(m_folder->path() + u'/'); }
    void make(const QString &name, const QByteArray &content = audio(1)) const
    {
        QDir(root()).mkpath(QFileInfo(root() + name).path());
        writeFile(m_folder->path(), name, content);
    }
    static QStringList texts(const Listing &listing)
    {
        QStringList texts;
        for (const ListRow &row : listing.rows)
            texts += row.text();
        return texts;
    }
    static QStringList sorted(QStringList texts)
    {
        texts.sort();
        return texts;
    }

private Q_SLOTS:
    void trashFoldersAreKnownByName()
    {
        for (const QString &name : {QStringLiteral(".Trash"), QStringLiteral(".Trash-1000"),
                 QStringLiteral("lost+found"), QStringLiteral("$RECYCLE.BIN"), QStringLiteral("$Recycle.Bin"),
                 QStringLiteral("System Volume Information")})
            QVERIFY2(isTrashFolderName(name), qPrintable(name));
        for (const QString &name : {QString(), QStringLiteral("Trash"), QStringLiteral(".trash"),
                 QStringLiteral(".Trash-"), QStringLiteral(".Trash-me"), QStringLiteral(".Trash-10 "),
                 QStringLiteral(".Trash1000"), QStringLiteral("lost"), QStringLiteral("RECYCLE.BIN")})
            QVERIFY2(!isTrashFolderName(name), qPrintable(name));
    }

    void belowTheTopOfADriveTrashIsAFolderLikeAnother()
    {
        make(QStringLiteral(".Trash-1000/files/a.mp3"));
        make(QStringLiteral("lost+found/b.mp3"));
        QVERIFY(!platform::Folder::open(root())->isTopOfDrive());
        QCOMPARE(texts(ListFolderTree(root(), {.skipTrashFolders = true}).value()).size(), 2);
    }

    void atTheTopOfADriveTrashIsLeftOut()
    {
        QVERIFY(platform::Folder::open(native(QDir::rootPath()))->isTopOfDrive());
        const QString drive = native(QStringLiteral("/dev/shm/"));
        const auto top = platform::Folder::open(drive);
        if (!top || !top->isTopOfDrive())
            QSKIP("no drive of its own that anybody may write to");
        const QString trash = QStringLiteral(".Trash-99%1").arg(QCoreApplication::applicationPid());
        const QString beside = QStringLiteral("test-%1/lost+found").arg(QCoreApplication::applicationPid());
        for (const QString &name : {trash, beside}) {
            if (!QDir(drive).mkpath(name))
                QSKIP("nothing can be made there");
            writeFile(drive + name, QStringLiteral("a.mp3"), audio(1));
        }
        const QStringList all = texts(ListFolderTree(drive).value());
        const QStringList without = texts(ListFolderTree(drive, {.skipTrashFolders = true}).value());
        const QStringList asked = texts(ListFolderTree(drive + trash, {.skipTrashFolders = true}).value());
        QDir(drive + trash).removeRecursively();
        QDir(drive + beside.section(u'/', 0, 0)).removeRecursively();
        QVERIFY(all.contains(native(trash + QStringLiteral("/a.mp3"))));
        QVERIFY(!without.contains(native(trash + QStringLiteral("/a.mp3"))));
        QVERIFY(without.contains(native(beside + QStringLiteral("/a.mp3"))));
        QCOMPARE(asked, QStringList(QStringLiteral("a.mp3"))); // the user has opened it
    }

    void init() { m_folder = std::make_unique<QTemporaryDir>(); }

    void onlyPlainVisibleMp3FilesHaveRows()
    {
        make(QStringLiteral("a.mp3"));
        make(QStringLiteral("B.MP3"));
        make(QStringLiteral("c.Mp3"));
        make(QStringLiteral("d.mp3.txt"));
        make(QStringLiteral("e.ogg"));
        make(QStringLiteral("mp3"));
        make(QStringLiteral(".hidden.mp3"));
        QDir(root()).mkdir(QStringLiteral("folder.mp3"));
        const Listing listing = ListFolder(root(), QString()).value();
        QCOMPARE(sorted(texts(listing)),
            QStringList({QStringLiteral("B.MP3"), QStringLiteral("a.mp3"), QStringLiteral("c.Mp3")}));
        QVERIFY(listing.failures.empty());
    }

    void aPipeHasNoRow()
    {
#ifdef _WIN32
        QSKIP("Windows keeps its pipes in no folder");
#else
        QCOMPARE(::mkfifo(qPrintable(root() + QStringLiteral("pipe.mp3")), 0600), 0);
        const Listing listing = ListFolder(root(), QString()).value();
        QVERIFY(listing.rows.empty());
        QVERIFY(listing.failures.empty());
#endif
    }

    void aLinkHasTheRowOfItsFileIfItLeadsToOne()
    {
        make(QStringLiteral("a.mp3"));
        if (!symbolicLink(QStringLiteral("a.mp3"), root() + QStringLiteral("link.mp3")))
            QSKIP("no symbolic links here");
        QVERIFY(symbolicLink(QStringLiteral("nowhere"), root() + QStringLiteral("dangling.mp3")));
        const Listing listing = ListFolder(root(), QString()).value();
        QCOMPARE(sorted(texts(listing)), QStringList({QStringLiteral("a.mp3"), QStringLiteral("link.mp3")}));
        QVERIFY(listing.failures.empty());
    }

    void aRowShowsPrefixNameAndTags()
    {
        make(QStringLiteral("tema.mp3"),
            id3v2(3, textFrame(3, "TIT2", QStringLiteral("Título")) + textFrame(3, "TPE1", QStringLiteral("日本"), 1) +
                         textFrame(3, "TALB", QStringLiteral("Al")) + textFrame(3, "TYER", QStringLiteral("1999")) +
                         textFrame(3, "TRCK", QStringLiteral("9/12"))) +
                audio());
        const Listing listing = ListFolder(root(), QStringLiteral("cd1/")).value();
        QCOMPARE(listing.rows.size(), size_t{1});
        const ListRow &row = listing.rows.front();
        QCOMPARE(row.text(), QStringLiteral("cd1/tema.mp3"));
        QCOMPARE(row.file.title(), QStringLiteral("Título"));
        QCOMPARE(row.file.artist(), QStringLiteral("日本"));
        QCOMPARE(row.file.album(), QStringLiteral("Al"));
        QCOMPARE(row.file.year(), QStringLiteral("1999"));
        QVERIFY(row.file.hasV2() && !row.file.hasV1());
        QCOMPARE(row.trackColumn(), QStringLiteral("09"));
    }

    void track9Shows09And10Shows10()
    {
        const auto shown = [](const QString &track) {
            ListFields tag;
            tag.track = track;
            return ListRow{{}, ListedFile(u"a.mp3", tag)}.trackColumn();
        };
        QCOMPARE(shown(QStringLiteral("9")), QStringLiteral("09"));
        QCOMPARE(shown(QStringLiteral("10")), QStringLiteral("10"));
        QCOMPARE(shown({}), QString());
    }

    void subfoldersAreOrderedWithoutRegardToCase()
    {
        for (const char *name : {"b", "A", "c", "Á", ".hidden"})
            QDir(root()).mkdir(QString::fromUtf8(name));
        make(QStringLiteral("d")); // a plain file is not a folder
        const QStringList found = GetSubfolders(root()).value();
        const auto expected = {root() + QStringLiteral(".hidden/"), root() + QStringLiteral("A/"),
            root() + QStringLiteral("b/"), root() + QStringLiteral("c/"), root() + QStringLiteral("Á/")};
        QCOMPARE(found, native(QStringList(expected)));
    }

    void aFolderThatIsBeingCopiedIsNotThereYet()
    {
        make(QStringLiteral("cd/a.mp3"));
        make(QStringLiteral(".ravlin-0123456789abcdef.tmp/a.mp3"));
        make(QStringLiteral("cd/.ravlin-fedcba9876543210.tmp/sub/b.mp3"));
        make(QStringLiteral(".ravlin-mine.tmp/c.mp3")); // similar to the program's own names
        QCOMPARE(GetSubfolders(root()).value(),
            native(QStringList({root() + QStringLiteral(".ravlin-mine.tmp/"), root() + QStringLiteral("cd/")})));
        const Listing listing = ListFolderTree(root()).value();
        QCOMPARE(texts(listing), native({QStringLiteral(".ravlin-mine.tmp/c.mp3"), QStringLiteral("cd/a.mp3")}));
        QVERIFY(listing.failures.empty());
    }

    void aTreeIsListedLevelByLevelBelowEachSubfolder()
    {
        for (const char *name :
            {"0.mp3", "x/1.mp3", "y/2.mp3", "x/b/3.mp3", "x/a/4.mp3", "y/z/5.mp3", "x/a/deep/6.mp3"})
            make(QString::fromUtf8(name));
        QCOMPARE(texts(ListFolderTree(root()).value()),
            native({QStringLiteral("0.mp3"), QStringLiteral("x/1.mp3"), QStringLiteral("y/2.mp3"),
                QStringLiteral("x/a/4.mp3"), QStringLiteral("x/b/3.mp3"), QStringLiteral("x/a/deep/6.mp3"),
                QStringLiteral("y/z/5.mp3")}));
        // The path may lack the separator at its end.
        QCOMPARE(texts(ListFolderTree(m_folder->path()).value()).size(), 7);
    }

    void linksInACircleEnd()
    {
        make(QStringLiteral("x/1.mp3"));
        if (!symbolicLink(QStringLiteral(".."), root() + QStringLiteral("x/up")))
            QSKIP("no symbolic links here");
        QVERIFY(symbolicLink(QStringLiteral("."), root() + QStringLiteral("x/self")));
        QCOMPARE(texts(ListFolderTree(root()).value()), QStringList(QStringLiteral("x/1.mp3")));
    }

    void namesThatAreNoUnicodeAreListedAndFoundAgain()
    {
        const QByteArray native = QFile::encodeName(root()) + "caf\xE9.mp3";
        const QString made = writeFile(m_folder->path(), QStringLiteral("x.mp3"), audio(1) + id3v1({.title = "T"}));
        QCOMPARE(::rename(qPrintable(made), native.constData()), 0);
        const Listing listing = ListFolder(root(), QString()).value();
        QCOMPARE(listing.rows.size(), size_t{1});
        QCOMPARE(listing.rows.front().file.title(), QStringLiteral("T"));
        QCOMPARE(platform::encodePath(root() + listing.rows.front().text()), native);
    }

    void aGenreNumberAbove125StillHasItsRow()
    {
        make(QStringLiteral("a.mp3"), audio() + id3v1({.title = "T", .genre = 191}));
        QCOMPARE(ListFolder(root(), QString()).value().rows.front().file.title(), QStringLiteral("T"));
    }

    void progressTellsEveryFolderAndTheLastFile()
    {
        for (const char *name : {"0.mp3", "x/1.mp3", "x/y/2.mp3"})
            make(QString::fromUtf8(name));
        std::vector<Progress> told;
        const std::thread::id caller = std::this_thread::get_id();
        bool isByCaller = true;
        const auto note = [&](const Progress &progress) {
            told.push_back(progress);
            isByCaller = isByCaller && std::this_thread::get_id() == caller;
        };
        QCOMPARE(ListFolderTree(root(), {.progress = note})->rows.size(), size_t{3});
        QVERIFY(isByCaller);
        QVERIFY(told.size() >= 4);
        QCOMPARE(told[1].path, native(root() + QStringLiteral("x/")));
        QCOMPARE(told[1].done, 0);
        QCOMPARE(told[1].total, 2);
        QCOMPARE(told.back().done, 3);
        QCOMPARE(told.back().total, 3);
        QCOMPARE(told.back().path, native(QStringLiteral("x/y/2.mp3")));
    }

    void aStopEndsTheWalkAndTheSearchForSubfolders()
    {
        for (const char *name : {"a/1.mp3", "b/2.mp3", "c/3.mp3"})
            make(QString::fromUtf8(name));
        std::stop_source stop;
        int folders = 0;
        const auto stopAtTheSecondFolder = [&](const Progress &) {
            if (++folders == 2)
                stop.request_stop();
        };
        const Listing listing =
            ListFolderTree(root(), {.progress = stopAtTheSecondFolder, .stop = stop.get_token()}).value();
        QCOMPARE(folders, 2);
        QVERIFY(!listing.isComplete);
        QVERIFY(listing.rows.empty());
        QVERIFY(GetSubfolders(root(), stop.get_token())->isEmpty());
        QCOMPARE(GetSubfolders(root())->size(), 3);
    }

    void aStoppedReadingKeepsTheRowsReadSoFar()
    {
        for (int i = 0; i < 300; ++i)
            make(QStringLiteral("%1/%2.mp3").arg(i % 6).arg(i));
        std::stop_source stop;
        const auto stopAtTheSixtiethFile = [&](const Progress &now) {
            if (now.done == 60)
                stop.request_stop();
        };
        // Folder by folder, each of which is too small for several threads.
        const ScanOptions options{.progress = stopAtTheSixtiethFile, .stop = stop.get_token(), .longSearch = {}};
        const Listing listing = ListFolderTree(root(), options).value();
        QVERIFY(!listing.isComplete);
        QCOMPARE(listing.rows.size(), size_t{60});
        QVERIFY(listing.failures.empty());
    }

    void aLongSearchThatIsStoppedHasTheRowsOfTheFoldersBefore()
    {
        for (const char *name : {"0.mp3", "a/1.mp3", "b/2.mp3", "b/3.mp3", "c/4.mp3"})
            make(QString::fromUtf8(name));
        std::stop_source stop;
        const auto stopAtTheLastFolder = [&](const Progress &now) {
            if (now.path == native(root() + QStringLiteral("c/")))
                stop.request_stop();
        };
        const ScanOptions options{.progress = stopAtTheLastFolder, .stop = stop.get_token(), .longSearch = {}};
        const Listing listing = ListFolderTree(root(), options).value();
        QVERIFY(!listing.isComplete);
        QStringList found = texts(listing);
        found.sort();
        QCOMPARE(found, (QStringList{QStringLiteral("0.mp3"), native(QStringLiteral("a/1.mp3")),
                            native(QStringLiteral("b/2.mp3")), native(QStringLiteral("b/3.mp3"))}));
    }

    void aLongSearchGivesTheSameListingAsAShortOne()
    {
        for (const char *name : {"0.mp3", "a/1.mp3", "a/x/2.mp3", "b/3.mp3", "b/4.mp3"})
            make(QString::fromUtf8(name));
        qsizetype done = 0;
        bool onlyGrows = true;
        const auto note = [&](const Progress &now) {
            onlyGrows = onlyGrows && now.done >= done && now.done <= now.total;
            done = now.done;
        };
        const Listing listing = ListFolderTree(root(), {.progress = note, .longSearch = {}}).value();
        QVERIFY(listing.isComplete);
        QCOMPARE(texts(listing), texts(ListFolderTree(root()).value()));
        QCOMPARE(listing.filesRead, size_t{5});
        QCOMPARE(done, qsizetype{5});
        QVERIFY(onlyGrows);
    }

    void aFolderThatCannotBeListedIsAnError()
    {
        QCOMPARE(ListFolder(root() + QStringLiteral("none/"), QString()).error().code, ErrorCode::NotFound);
        make(QStringLiteral("a.mp3"));
        QCOMPARE(ListFolderTree(root() + QStringLiteral("a.mp3")).error().code, ErrorCode::NotAFile);
    }

    void manyFilesKeepTheOrderOfTheFileSystem()
    {
        for (int i = 0; i < 500; ++i)
            make(QStringLiteral("%1.mp3").arg(i), audio(1) + id3v1({.title = QByteArray::number(i)}));
        const Listing first = ListFolder(root(), QString()).value();
        QCOMPARE(first.rows.size(), size_t{500});
        for (const ListRow &row : first.rows)
            QCOMPARE(row.text(), row.file.title() + QStringLiteral(".mp3"));
        QCOMPARE(texts(ListFolder(root(), QString()).value()), texts(first));
    }
};

QTEST_GUILESS_MAIN(TestFolderScan)
#include "tst_folderscan.moc"
