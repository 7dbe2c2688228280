// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: playlists are plain lines that end in CR LF, are named after the tag read last, written in one step, played
// from one fixed file of the user's own, and deleted in one request.

#include "core/files/operations/playlist.h"

#include "core/platform/desktop.h"
#include "core/platform/namecheck.h"

#include "support/filetree.h"

#include <QDir>
#include <QTest>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestPlaylist : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void theName_data();
    void theName();
    void aLongName();
    void theContent();
    void linesThatPlayersMistake_data();
    void linesThatPlayersMistake();
    void aLineBeyondTheCodePage();
    void aNameThatIsNoUnicode();
    void writesTheFoldersList();
    void noRowsAnEmptyList();
    void replacesAnOlderList();
    void neverThroughALinkNorOverAFolder();
    void aFolderThatCannotBeWritten();
    void playsTheSelection();
    void playsAgain();
    void opensEvenWhenItCannotWrite();
    void thePlayListIsTheUsersOwn();
    void deletesAllInOneRequest();
    void noPlaylistsNothingDeleted();

private:
    QString folder() const { return QDir::toNativeSeparators(m_folder->path() + u'/'); }
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    static TagRecord record(const QString &artist, const QString &album)
    {
        TagRecord record;
        record.Artist = artist;
        record.Album = album;
        return record;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
};

void TestPlaylist::theName_data()
{
    QTest::addColumn<QString>("artist");
    QTest::addColumn<QString>("album");
    QTest::addColumn<QString>("name");
    QTest::newRow("artist and album") << u"Artista"_s << u"Disco"_s << u"Artista - Disco.m3u"_s;
    QTest::newRow("album alone") << QString() << u"Disco"_s << u"Disco.m3u"_s;
    QTest::newRow("artist alone") << u"Artista"_s << QString() << u"Artista.m3u"_s;
    QTest::newRow("neither") << QString() << QString() << u"lista.m3u"_s;
    QTest::newRow("cleaned") << QString() << u"A/B"_s << u"AB.m3u"_s;
    QTest::newRow("a bar at the end") << QString() << u"A|"_s << u"A.m3u"_s;
    QTest::newRow("nothing left of it") << QString() << u"???"_s << u"lista.m3u"_s;
    QTest::newRow("no way out") << u".."_s << u"/etc"_s << u"_. - etc.m3u"_s;
    QTest::newRow("line breaks") << QString() << u"A\nB"_s << u"AB.m3u"_s;
    QTest::newRow("hidden") << u"\u202EA\u0085"_s << u"\uFEFFB\u2028"_s << u"A - B.m3u"_s;
    QTest::newRow("nothing visible") << u"\u200E"_s << QString() << u"lista.m3u"_s;
}

void TestPlaylist::theName()
{
    QFETCH(QString, artist);
    QFETCH(QString, album);
    QTEST(playlistName(artist, album), "name");
}

void TestPlaylist::aLongName()
{
    const QString name = playlistName(QString(200, u'ñ'), QString(200, u'x'));
    QVERIFY(platform::nameLength(name) <= 255);
    QCOMPARE(playlistName(QString(300, QChar(0x202E)), u"Disco"_s), u" - Disco.m3u"_s);
    QVERIFY(name.endsWith(u".m3u"_s));
    // Wine limits names by the bytes of the disk below.
    const QChar letter = platform::Separator == u'/' ? u'ñ' : u'n';
    QVERIFY(WritePlaylist(m_fileSystem, folder(), {}, record(QString(200, letter), u"x"_s)));
}

void TestPlaylist::theContent()
{
    const auto encode = [](const QString &line) { return std::optional(line.toLatin1()); };
    QCOMPARE(playlistContent({u"b.mp3"_s, u"cd1/ñ.mp3"_s}, encode), QByteArray("b.mp3\r\ncd1/\xf1.mp3\r\n"));
    QCOMPARE(playlistContent({}, encode), QByteArray());
    QCOMPARE(playlistContent({u"a\nb.mp3"_s, u"c.mp3"_s, u"\r"_s, u"d\r\n#EXTM3U"_s}, encode), QByteArray("c.mp3\r\n"));
    // No player ends a line here.
    QCOMPARE(playlistContent({u"a\u0085b"_s, u"a\vb"_s}, encode), QByteArray("a\x85"
                                                                             "b\r\na\vb\r\n"));
}

void TestPlaylist::linesThatPlayersMistake_data()
{
    QTest::addColumn<QString>("row");
    QTest::addColumn<bool>("isMarked");
    const bool mayHaveColons = platform::Separator == u'/';
    QTest::newRow("comment") << u"#1.mp3"_s << true;
    QTest::newRow("directive") << u"#EXTVLCOPT:sout=#file{dst=x}.mp3"_s << true;
    QTest::newRow("folder") << u"#1 Hits/a.mp3"_s << true;
    QTest::newRow("behind a blank") << u" #1.mp3"_s << true;
    QTest::newRow("behind tabs") << u"\t\v #1.mp3"_s << true;
    QTest::newRow("behind a byte order mark") << u"\uFEFF#1.mp3"_s << true;
    QTest::newRow("behind both") << u"\uFEFF \uFEFF#1.mp3"_s << true;
    QTest::newRow("address") << u"http:/host/a.mp3"_s << mayHaveColons;
    QTest::newRow("scheme") << u"file:a.mp3"_s << mayHaveColons;
    QTest::newRow("colon in the name") << u"Bach: Suite.mp3"_s << mayHaveColons;
    QTest::newRow("colon further on") << u"cd1/Bach: Suite.mp3"_s << false;
    QTest::newRow("number sign further on") << u"No #1.mp3"_s << false;
    QTest::newRow("blank") << u" a.mp3"_s << false;
    QTest::newRow("nothing but blanks") << u"  "_s << false;
    QTest::newRow("wide number sign") << u"\uFF031.mp3"_s << false;
    QTest::newRow("plain") << u"a.mp3"_s << false;
    QTest::newRow("absolute") << u"/#1/a.mp3"_s << false;
}

void TestPlaylist::linesThatPlayersMistake()
{
    QFETCH(QString, row);
    QFETCH(bool, isMarked);
    const QString prefix = isMarked ? u"."_s + platform::Separator : QString();
    QCOMPARE(playlistLine(row), prefix + row);
    const auto encode = [](const QString &line) { return std::optional(line.toUtf8()); };
    QCOMPARE(playlistContent({row, u"b.mp3"_s}, encode), (prefix + row).toUtf8() + "\r\nb.mp3\r\n");
    QCOMPARE(playlistContent({row}, [](const QString &) { return std::optional<QByteArray>(); }),
        (prefix + row).toUtf8() + "\r\n");
}

void TestPlaylist::aLineBeyondTheCodePage()
{
    // With Windows-1252 the whole list becomes UTF-8, not only that line.
    const auto encode = [](const QString &line) -> std::optional<QByteArray> {
        for (const QChar c : line) {
            if (c.unicode() > 0xFF)
                return std::nullopt;
        }
        return line.toLatin1();
    };
    QCOMPARE(
        playlistContent({u"ñ.mp3"_s, u"夜.mp3"_s, u"é.mp3"_s}, encode), QByteArray("ñ.mp3\r\n夜.mp3\r\né.mp3\r\n"));
}

void TestPlaylist::aNameThatIsNoUnicode()
{
    if (platform::Separator != u'/')
        QSKIP("names are no bytes here");
    const QString name = platform::decodePath(QByteArray("caf\xe9.mp3"));
    QCOMPARE(playlistContent({name}, platform::toCodePage), QByteArray("caf\xe9.mp3\r\n"));
}

void TestPlaylist::writesTheFoldersList()
{
    const auto written = WritePlaylist(
        m_fileSystem, folder(), {u"b.mp3"_s, u"a.mp3"_s, u"cd1/ñ.mp3"_s}, record(u"Artista"_s, u"Disco"_s));
    QCOMPARE(written.value(), in(u"Artista - Disco.m3u"_s));
    const QByteArray lines = "b.mp3\r\na.mp3\r\n" + platform::toCodePage(u"cd1/ñ.mp3"_s).value() + "\r\n";
    QCOMPARE(snapshotOf(m_folder->path()), (Snapshot{{u"Artista - Disco.m3u"_s, "file " + lines}}));
#ifndef Q_OS_WIN // which has no permission bits
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(*written).constData(), &status), 0);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    QCOMPARE(status.st_mode & 0777U, 0666U & ~mask);
#endif
}

void TestPlaylist::noRowsAnEmptyList()
{
    QVERIFY(WritePlaylist(m_fileSystem, folder(), {}, {}));
    QCOMPARE(snapshotOf(m_folder->path()), (Snapshot{{u"lista.m3u"_s, "file "}}));
}

void TestPlaylist::replacesAnOlderList()
{
    writeFile(in(u"lista.m3u"_s), QByteArray(10'000, 'x'));
#ifndef Q_OS_WIN
    QCOMPARE(::chmod(QFile::encodeName(in(u"lista.m3u"_s)).constData(), 0664), 0);
#endif
    QVERIFY(WritePlaylist(m_fileSystem, folder(), {u"a.mp3"_s}, {}));
    QCOMPARE(snapshotOf(m_folder->path()), (Snapshot{{u"lista.m3u"_s, "file a.mp3\r\n"}}));
#ifndef Q_OS_WIN
    struct stat status = {};
    ::stat(QFile::encodeName(in(u"lista.m3u"_s)).constData(), &status);
    QCOMPARE(status.st_mode & 0777U, 0664U);
#endif
}

void TestPlaylist::neverThroughALinkNorOverAFolder()
{
    if (MakesLinks) {
        writeFile(in(u"precious.txt"_s), "precious");
        makeLink("precious.txt", in(u"lista.m3u"_s));
        QVERIFY(WritePlaylist(m_fileSystem, folder(), {u"a.mp3"_s}, {}));
        QCOMPARE(contentOf(in(u"precious.txt"_s)), QByteArray("precious"));
        QCOMPARE(snapshotOf(m_folder->path()).value(u"lista.m3u"_s), QByteArray("file a.mp3\r\n"));
    }
    QDir().mkpath(in(u"Disco.m3u"_s));
    QVERIFY(!WritePlaylist(m_fileSystem, folder(), {u"a.mp3"_s}, record({}, u"Disco"_s)));
}

void TestPlaylist::aFolderThatCannotBeWritten()
{
    const auto written = WritePlaylist(m_fileSystem, in(u"none/"_s), {u"a.mp3"_s}, {});
    QCOMPARE(written.error().code, ErrorCode::NotFound);
}

void TestPlaylist::playsTheSelection()
{
    QStringList opened;
    const QString list = in(u"list.m3u"_s);
    QVERIFY(PlaySelection(
        m_fileSystem, u"/m/"_s, {u"a.mp3"_s, u"cd1/b.mp3"_s}, list, [&](const QString &path) { opened.append(path); }));
    QCOMPARE(opened, QStringList{list});
    QCOMPARE(contentOf(list), QByteArray("/m/a.mp3\r\n/m/cd1/b.mp3\r\n"));
}

void TestPlaylist::playsAgain()
{
    const QString list = in(u"list.m3u"_s);
    QByteArray seen;
    const Opener open = [&](const QString &path) { seen = contentOf(path); };
    QVERIFY(PlaySelection(m_fileSystem, u"/m/"_s, {u"a.mp3"_s, u"b.mp3"_s}, list, open));
    QVERIFY(PlaySelection(m_fileSystem, u"/m/"_s, {u"c.mp3"_s}, list, open));
    QCOMPARE(seen, QByteArray("/m/c.mp3\r\n"));
    QVERIFY(PlaySelection(m_fileSystem, u"/m/"_s, {}, list, open));
    QCOMPARE(seen, QByteArray());
    QCOMPARE(snapshotOf(m_folder->path()).size(), 1);
}

void TestPlaylist::opensEvenWhenItCannotWrite()
{
    int opened = 0;
    QVERIFY(!PlaySelection(
        m_fileSystem, u"/m/"_s, {u"a.mp3"_s}, in(u"none/list.m3u"_s), [&](const QString &) { ++opened; }));
    QCOMPARE(opened, 1);
}

void TestPlaylist::thePlayListIsTheUsersOwn()
{
#ifdef Q_OS_WIN
    QSKIP("it is in the root of drive C; tst_windowssystem checks that");
#else
    qputenv("XDG_CACHE_HOME", QFile::encodeName(in(u"cache"_s)));
    const QString path = playListPath();
    QCOMPARE(path, in(u"cache/ravlin/lista.m3u"_s));
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(in(u"cache/ravlin"_s)).constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0700U);
    QCOMPARE(playListPath(), path);
#endif
}

namespace {

class CountingService final : public FileService
{
public:
    int perform(const FileRequest &request) override
    {
        requests.append(request);
        return ResultDone;
    }
    QList<FileRequest> requests;
};

} // namespace

void TestPlaylist::deletesAllInOneRequest()
{
    QStringList names{u"a.m3u"_s, u"B.M3U"_s, u"c.m3u8"_s, u"d.mp3"_s, u"sub/e.m3u"_s};
    if (platform::Separator == u'/')
        names += u".hidden.m3u"_s; // on Windows an attribute hides a file, not its name
    for (const QString &name : names)
        writeFile(in(name), "x");
    QDir().mkpath(in(u"folder.m3u"_s));
    CountingService service;
    clsFileFunc files(m_fileSystem, service);
    QCOMPARE(DeletePlaylists(files, folder()), ResultDone);
    QCOMPARE(service.requests.size(), 1);
    QCOMPARE(sourcePaths(service.requests[0].source), (QStringList{in(u"B.M3U"_s), in(u"a.m3u"_s)}));
    QCOMPARE(service.requests[0].operation, FileOperation::Delete);
    QCOMPARE(service.requests[0].flags, FlagAllowUndo);
}

void TestPlaylist::noPlaylistsNothingDeleted()
{
    CountingService service;
    clsFileFunc files(m_fileSystem, service);
    QCOMPARE(DeletePlaylists(files, folder()), ResultDone);
    QCOMPARE(DeletePlaylists(files, in(u"none/"_s)), ResultDone);
    QVERIFY(service.requests.isEmpty());
}

QTEST_GUILESS_MAIN(TestPlaylist)

#include "tst_playlist.moc"
