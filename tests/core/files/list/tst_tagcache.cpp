// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of the tag cache: a refresh reads only files that changed and never shows old content, even if a file
// changed within the clock tick in which it was read, kept its time of modification, or is another file of the same
// name.

#include "core/files/list/folderreading.h"
#include "core/files/list/folderscan.h"
#include "core/files/list/tagcache.h"
#include "support/filesteps.h"
#include "support/links.h"
#include "support/mp3builder.h"
#include "support/nativepath.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

namespace {

/// Long enough for a file to be remembered.
constexpr int SettlingTime = 150;

QByteArray mp3(const QByteArray &title)
{
    return audio(1) + id3v1({.title = title});
}

TagCache::Entries entries(const QStringList &names)
{
    TagCache::Entries made;
    for (const QString &name : names) {
        TagCache::Entry entry;
        entry.file = ListedFile(name);
        entry.state.size = 1;
        made.push_back(entry);
    }
    return made;
}

} // namespace

class TestTagCache : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    TagCache m_cache;

    QString root() const { return native(m_folder->path() + u'/'); }
    QString make(const QString &name, const QByteArray &title) const
    {
        return writeFile(m_folder->path(), name, mp3(title));
    }
    Listing list() { return ListFolder(root(), QString(), {.cache = &m_cache}).value(); }
    static QString titleOf(const Listing &listing, const QString &text)
    {
        for (const ListRow &row : listing.rows) {
            if (row.text() == text)
                return row.file.title();
        }
        return QStringLiteral("no row");
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_cache.clear();
    }

    void aRefreshReadsOnlyWhatChanged()
    {
        for (int i = 0; i < 100; ++i)
            make(QStringLiteral("%1.mp3").arg(i), "old");
        QTest::qSleep(SettlingTime);
        QCOMPARE(list().filesRead, size_t{100});
        QCOMPARE(list().filesRead, size_t{0});
        make(QStringLiteral("7.mp3"), "new");
        QFile::remove(root() + QStringLiteral("8.mp3"));
        make(QStringLiteral("new.mp3"), "new");
        const Listing listing = list();
        QCOMPARE(listing.filesRead, size_t{2});
        QCOMPARE(listing.rows.size(), size_t{100});
        QCOMPARE(titleOf(listing, QStringLiteral("7.mp3")), QStringLiteral("new"));
        QCOMPARE(titleOf(listing, QStringLiteral("9.mp3")), QStringLiteral("old"));
        QCOMPARE(m_cache.size(), size_t{98}); // without the two that just changed and the one that is gone
    }

    void aTreeAndRereadTagsUseTheSameEntries()
    {
        QDir(root()).mkpath(QStringLiteral("x/y"));
        writeFile(root() + QStringLiteral("x"), QStringLiteral("1.mp3"), mp3("one"));
        writeFile(root() + QStringLiteral("x/y"), QStringLiteral("2.mp3"), mp3("two"));
        QTest::qSleep(SettlingTime);
        const ScanOptions options{.cache = &m_cache};
        QCOMPARE(ListFolderTree(root(), options)->filesRead, size_t{2});
        QCOMPARE(ListFolderTree(root(), options)->filesRead, size_t{0});
        QCOMPARE(ListFolder(native(root() + QStringLiteral("x/")), QString(), options)->filesRead, size_t{0});
        const auto tags = rereadFiles(root(),
            native({QStringLiteral("x/y/2.mp3"), QStringLiteral("gone.mp3"), QStringLiteral("x/1.mp3")}), options);
        QCOMPARE(tags.size(), size_t{3});
        QCOMPARE(tags[0]->title(), QStringLiteral("two"));
        QVERIFY(!tags[1]);
        QCOMPARE(tags[2]->title(), QStringLiteral("one"));
    }

    void namesThatComeAndGoCostNoOtherFileItsEntry_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<int>("filesRead");
        const auto row = [](const char *name, const char *before, const char *after, int filesRead) {
            QTest::newRow(name) << QString::fromLatin1(before) << QString::fromLatin1(after) << filesRead;
        };
        row("as before", "abcdefghijklmnop", "abcdefghijklmnop", 0);
        row("the first gone", "abcdef", "bcdef", 0);
        row("one gone", "abcdef", "abdef", 0);
        row("the last gone", "abcdef", "abcde", 0);
        row("a dozen gone", "abcdefghijklmnop", "abop", 0);
        row("one come first", "bcdef", "abcdef", 1);
        row("one come", "abdef", "abcdef", 1);
        row("one come last", "abcde", "abcdef", 1);
        row("a dozen come", "abop", "abcdefghijklmnop", 12);
        row("come, gone, come", "acdfgh", "abcdeg", 2);
        row("turned round", "abcdefghijklmnop", "ponmlkjihgfedcba", 0);
        row("the last now first", "abcdefghijklmnop", "pabcdefghijklmno", 0);
        row("told twice", "abc", "abab", 2);
        row("others", "abc", "def", 3);
    }
    void namesThatComeAndGoCostNoOtherFileItsEntry()
    {
        QFETCH(QString, before);
        QFETCH(QString, after);
        for (const QChar letter : before + after)
            make(letter + QStringLiteral(".mp3"), QString(3, letter).toLatin1());
        QTest::qSleep(SettlingTime);
        const ScanOptions options{.cache = &m_cache};
        const auto read = [&](const QString &letters) {
            FolderFiles files{root(), QString(), {}};
            for (const QChar letter : letters)
                files.names.push_back(letter + QStringLiteral(".mp3"));
            return readFolders({files}, options);
        };
        QCOMPARE(read(before).readCount, static_cast<std::size_t>(before.size()));
        const FolderRows again = read(after);
        QTEST(static_cast<int>(again.readCount), "filesRead");
        QString titles;
        for (const ListRow &row : again.rows) {
            QCOMPARE(row.file.title(), QString(3, row.file.name().front()));
            titles += row.file.name().front();
        }
        QCOMPARE(titles, after);
    }

    void aChangeWithinTheTickOfTheReadingShows()
    {
        for (int i = 0; i < 200; ++i) {
            const QByteArray title = QByteArray::number(1000 + i); // the same size
            make(QStringLiteral("a.mp3"), title);
            QCOMPARE(titleOf(list(), QStringLiteral("a.mp3")), QString::fromLatin1(title));
        }
    }

    void aChangeThatKeepsTheModificationTimeShows()
    {
        const QString path = make(QStringLiteral("a.mp3"), "old");
        QTest::qSleep(SettlingTime);
        list();
        QCOMPARE(list().filesRead, size_t{0});
        platform::FileSystem &fileSystem = platform::FileSystem::native();
        const platform::FileInfo before = fileSystem.info(path).value();
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.write(mp3("new"));
        file.close();
        QVERIFY(fileSystem.open(path, platform::OpenMode::ReadWrite).value()->setModified(before.modified));
        QCOMPARE(fileSystem.info(path)->modified, before.modified);
        QCOMPARE(titleOf(list(), QStringLiteral("a.mp3")), QStringLiteral("new"));
    }

    void anotherFileInItsPlaceShows()
    {
        make(QStringLiteral("a.mp3"), "one");
        make(QStringLiteral("b.mp3"), "two");
        QTest::qSleep(SettlingTime);
        list();
        QVERIFY(ravlin::test::replaceFile(root() + QStringLiteral("b.mp3"), root() + QStringLiteral("a.mp3")));
        const Listing listing = list();
        QCOMPARE(listing.rows.size(), size_t{1});
        QCOMPARE(titleOf(listing, QStringLiteral("a.mp3")), QStringLiteral("two"));
    }

    void aLinkThatLeadsElsewhereShows()
    {
        make(QStringLiteral("one"), "one");
        make(QStringLiteral("two"), "two");
        const QString link = root() + QStringLiteral("a.mp3");
        if (!symbolicLink(QStringLiteral("one"), link))
            QSKIP("no symbolic links here");
        QTest::qSleep(SettlingTime);
        list();
        QCOMPARE(list().filesRead, size_t{0});
        make(QStringLiteral("one"), "new"); // the link itself is unchanged
        QCOMPARE(titleOf(list(), QStringLiteral("a.mp3")), QStringLiteral("new"));
        QTest::qSleep(SettlingTime);
        list();
        QVERIFY(QFile::remove(link));
        QVERIFY(symbolicLink(QStringLiteral("two"), link));
        QCOMPARE(titleOf(list(), QStringLiteral("a.mp3")), QStringLiteral("two"));
    }

    void aFileIsSettledWhenItsStampIsOlderThanTheClocksTick()
    {
        constexpr qint64 Second = 1'000'000'000;
        constexpr qint64 Now = 1000 * Second + 500'000'000;
        const auto changedAt = [](qint64 time) {
            platform::FileInfo info;
            info.changed = time;
            return info;
        };
        QVERIFY(TagCache::isSettled(changedAt(Now - 200'000'000), Now));
        QVERIFY(!TagCache::isSettled(changedAt(Now - 15'000'000), Now));
        QVERIFY(!TagCache::isSettled(changedAt(Now), Now));
        QVERIFY(!TagCache::isSettled(changedAt(Now + 3600 * Second + 1), Now)); // its clock is ahead of ours
        QVERIFY(!TagCache::isSettled(changedAt(998 * Second), Now));            // may mean 999.9 s
        QVERIFY(TagCache::isSettled(changedAt(997 * Second), Now));
    }

    void foldersListedLongestAgoAreForgottenFirst()
    {
        TagCache cache(5);
        const QStringList two{QStringLiteral("1"), QStringLiteral("2")};
        cache.put(QStringLiteral("/a/"), entries(two));
        cache.put(QStringLiteral("/b/"), entries(two));
        cache.put(QStringLiteral("/a/"), entries(two));
        cache.put(QStringLiteral("/c/"), entries(two));
        QCOMPARE(cache.size(), size_t{4});
        QVERIFY(cache.take(QStringLiteral("/b/")).empty());
        QCOMPARE(cache.take(QStringLiteral("/a/")).size(), size_t{2});
        QVERIFY(cache.take(QStringLiteral("/a/")).empty());
        QCOMPARE(cache.size(), size_t{2});
        cache.put(QStringLiteral("/d/"), entries({two + two + two}));
        QCOMPARE(cache.size(), size_t{2}); // more than the capacity: not kept, and no folder is forgotten for it
    }

    void aStoppedScanForgetsNothing()
    {
        for (int i = 0; i < 10; ++i)
            make(QStringLiteral("%1.mp3").arg(i), "t");
        QTest::qSleep(SettlingTime);
        list();
        std::stop_source stop;
        ScanOptions options{.cache = &m_cache, .stop = stop.get_token()};
        options.progress = [&](const Progress &progress) {
            if (progress.done == 3)
                stop.request_stop();
        };
        const Listing stopped = ListFolder(root(), QString(), options).value();
        QVERIFY(!stopped.isComplete);
        QCOMPARE(stopped.rows.size(), size_t{3});
        QCOMPARE(list().filesRead, size_t{0});
    }
};

QTEST_GUILESS_MAIN(TestTagCache)
#include "tst_tagcache.moc"
