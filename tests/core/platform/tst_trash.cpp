// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: what is deleted goes into the trash of its own drive, laid out by freedesktop.org's trash
// specification 1.0, and comes back from there. Without a safe trash nothing is touched.

#include "core/platform/trash.h"

#include "support/filesteps.h"
#include "support/mounteddrive.h"

#include <QDateTime>
#include <QDir>
#include <QTest>

#include <sys/stat.h>

#include <thread>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestTrash : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aFileGoesIntoTheHomeTrash();
    void aFolderAndALink();
    void aSecondOneOfTheSameName();
    void aNameThatADesktopHasTaken();
    void namesAreEncoded();
    void comesBack();
    void neverComesBackOverAnother();
    void fromAnotherDrive();
    void theSharedTrashOfADrive_data();
    void theSharedTrashOfADrive();
    void noTrashNothingTouched();
    void aPlantedTrashIsNotUsed();
    void aVanishedFile();
    void aLongName();
    void aFullDriveKeepsTheFileAndNoEmptyTrash();
    void aReadOnlyDriveIsSaidToBe();
    void whatCanNotBeMovedLeavesNoEmptyTrash();
    void anExchangedFolderIsNotFollowed();
    void anEmptyTrashThatIsTakenAwayMeanwhileIsMadeAnew();

private:
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    QString trash() const { return in(u"data/Trash"_s); }
    QByteArray info(const QString &name) const { return contentOf(trash() + u"/info/"_s + name + u".trashinfo"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestTrash::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
}

void TestTrash::aFileGoesIntoTheHomeTrash()
{
    writeFile(in(u"music/a.mp3"_s), "audio");
    QVERIFY(hasTrash(in(u"music/a.mp3"_s)));
    QVERIFY(!isTaken(trash())); // the question creates nothing
    const QDateTime before = QDateTime::currentDateTime().addSecs(-2);
    const auto item = moveToTrash(in(u"music/a.mp3"_s));
    QVERIFY2(item.has_value(), qPrintable(item ? QString() : item.error().detail));
    QVERIFY(!isTaken(in(u"music/a.mp3"_s)));
    QCOMPARE(contentOf(trash() + u"/files/a.mp3"_s), QByteArray("audio"));
    QCOMPARE(item->file, trash() + u"/files/a.mp3"_s);

    const QList<QByteArray> lines = info(u"a.mp3"_s).split('\n');
    QCOMPARE(lines.size(), 4); // the last one is empty
    QCOMPARE(lines[0], QByteArray("[Trash Info]"));
    QCOMPARE(lines[1], "Path=" + QFile::encodeName(QFileInfo(in(u"music"_s)).canonicalFilePath()) + "/a.mp3");
    QVERIFY(lines[2].startsWith("DeletionDate="));
    const QByteArray date = lines[2].sliced(13);
    QCOMPARE(date.size(), 19); // local time without a zone
    const QDateTime told = QDateTime::fromString(QString::fromLatin1(date), Qt::ISODate);
    QVERIFY(told.isValid() && told >= before && told <= QDateTime::currentDateTime());
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(trash()).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0700U);
}

void TestTrash::aFolderAndALink()
{
    writeFile(in(u"music/cd/a.mp3"_s), "audio");
    makeLink("cd", in(u"music/link"_s));
    QVERIFY(moveToTrash(in(u"music/link"_s)));
    QCOMPARE(contentOf(in(u"music/cd/a.mp3"_s)), QByteArray("audio"));
    QVERIFY(moveToTrash(in(u"music/cd"_s)));
    QCOMPARE(snapshotOf(trash() + u"/files"_s),
        (Snapshot{{u"cd"_s, "folder"}, {u"cd/a.mp3"_s, "file audio"}, {u"link"_s, "link cd"}}));
    QVERIFY(snapshotOf(in(u"music"_s)).isEmpty());
}

void TestTrash::aSecondOneOfTheSameName()
{
    for (const char *content : {"one", "two", "three"}) {
        writeFile(in(u"a.mp3"_s), content);
        QVERIFY(moveToTrash(in(u"a.mp3"_s)));
    }
    QCOMPARE(snapshotOf(trash() + u"/files"_s),
        (Snapshot{{u"a.mp3"_s, "file one"}, {u"a (2).mp3"_s, "file two"}, {u"a (3).mp3"_s, "file three"}}));
    QCOMPARE(snapshotOf(trash() + u"/info"_s).keys(),
        (QStringList{u"a (2).mp3.trashinfo"_s, u"a (3).mp3.trashinfo"_s, u"a.mp3.trashinfo"_s}));
}

void TestTrash::aNameThatADesktopHasTaken()
{
    // A file in the trash without an info file must neither be overwritten nor get the info file of another.
    writeFile(trash() + u"/files/a.mp3"_s, "orphan");
    QDir().mkpath(trash() + u"/info"_s);
    writeFile(in(u"a.mp3"_s), "mine");
    const auto item = moveToTrash(in(u"a.mp3"_s));
    QVERIFY(item);
    QCOMPARE(contentOf(trash() + u"/files/a.mp3"_s), QByteArray("orphan"));
    QCOMPARE(contentOf(item->file), QByteArray("mine"));
    QVERIFY(!isTaken(trash() + u"/info/a.mp3.trashinfo"_s));
    QVERIFY(isTaken(item->info));
}

void TestTrash::namesAreEncoded()
{
    const QString name = u"ñ 50% [#1]?\n.mp3"_s;
    writeFile(in(name), "x");
    QVERIFY(moveToTrash(in(name)));
    QVERIFY2(info(name).contains("/%C3%B1%2050%25%20%5B%231%5D%3F%0A.mp3\n"), info(name).constData());
    const QString bytes = decodePath(QByteArray("caf\xe9.mp3"));
    if (!ravlin::test::createNew(in(bytes)))
        QSKIP("this file system takes Unicode names only");
    const auto item = moveToTrash(in(bytes));
    QVERIFY(item);
    const auto file = FileSystem::native().open(item->info, OpenMode::Read);
    QByteArray content(2000, '\0');
    static_cast<void>((*file)->readAt({content.data(), 2000}, 0));
    QVERIFY(content.contains("/caf%E9.mp3\n"));
    QVERIFY(restoreFromTrash(*item));
    QVERIFY(ravlin::test::removeFile(in(bytes))); // QTemporaryDir cannot
}

void TestTrash::comesBack()
{
    writeFile(in(u"music/cd/a.mp3"_s), "audio");
    const Snapshot before = snapshotOf(in(u"music"_s));
    const auto item = moveToTrash(in(u"music/cd"_s));
    QVERIFY(restoreFromTrash(*item));
    QCOMPARE(snapshotOf(in(u"music"_s)), before);
    QCOMPARE(snapshotOf(trash()), (Snapshot{{u"files"_s, "folder"}, {u"info"_s, "folder"}}));
    const auto again = restoreFromTrash(*item); // it is no longer in the trash
    QVERIFY(!again);
    QCOMPARE(again.error().code, ErrorCode::NotFound);
    QCOMPARE(snapshotOf(in(u"music"_s)), before);
}

void TestTrash::neverComesBackOverAnother()
{
    writeFile(in(u"a.mp3"_s), "old");
    const auto item = moveToTrash(in(u"a.mp3"_s));
    writeFile(in(u"a.mp3"_s), "new");
    QCOMPARE(restoreFromTrash(*item).error().code, ErrorCode::AlreadyExists);
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("new"));
    QCOMPARE(contentOf(item->file), QByteArray("old"));
    QVERIFY(isTaken(item->info));
}

void TestTrash::fromAnotherDrive()
{
    const OtherDrive drive;
    if (!drive.isOther())
        QSKIP("there is no second file system to write to");
    const QString path = drive.path() + u"/ñ.mp3"_s;
    writeFile(path, "audio");
    QVERIFY(hasTrash(path));
    const auto item = moveToTrash(path);
    QVERIFY2(item.has_value(), qPrintable(item ? QString() : item.error().detail));
    const QString own = u"/dev/shm/.Trash-%1"_s.arg(::geteuid());
    QVERIFY2(item->file.startsWith(own + u"/files/"_s), qPrintable(item->file));
    QVERIFY(item->info.startsWith(own + u"/info/"_s));
    // Relative to the top of the drive, so that it holds wherever the drive is mounted.
    QVERIFY(contentOf(item->info).contains("\nPath=" + QFile::encodeName(drive.path().sliced(9)) + "/%C3%B1.mp3\n"));
    QVERIFY(!isTaken(trash()));
    QVERIFY(restoreFromTrash(*item));
    QCOMPARE(contentOf(path), QByteArray("audio"));
}

void TestTrash::theSharedTrashOfADrive_data()
{
    QTest::addColumn<uint>("permissions");
    QTest::addColumn<bool>("isLink");
    QTest::addColumn<bool>("isUsed");
    QTest::newRow("as an administrator makes it") << 01777U << false << true;
    QTest::newRow("anybody may remove from it") << 0777U << false << false;
    QTest::newRow("a link") << 01777U << true << false;
}

void TestTrash::theSharedTrashOfADrive()
{
    QFETCH(uint, permissions);
    QFETCH(bool, isLink);
    QFETCH(bool, isUsed);
    const MountedDrive drive(in(u"drive"_s), "1m");
    if (!drive.isMounted())
        QSKIP("mounting a drive is not permitted");
    const QString shared = in(isLink ? u"drive/elsewhere"_s : u"drive/.Trash"_s);
    QDir().mkpath(shared);
    QCOMPARE(::chmod(QFile::encodeName(shared).constData(), permissions), 0);
    if (isLink)
        makeLink("elsewhere", in(u"drive/.Trash"_s));
    writeFile(in(u"drive/cd/a.mp3"_s), "audio");
    const auto item = moveToTrash(in(u"drive/cd/a.mp3"_s));
    QVERIFY(item);
    const QString expected = isUsed ? u"drive/.Trash/%1/files/a.mp3"_s : u"drive/.Trash-%1/files/a.mp3"_s;
    QCOMPARE(item->file, QFileInfo(in(u"drive"_s)).canonicalFilePath().chopped(5) + expected.arg(::geteuid()));
    QVERIFY(contentOf(item->info).contains("\nPath=cd/a.mp3\n"));
}

void TestTrash::noTrashNothingTouched()
{
    writeFile(in(u"a.mp3"_s), "audio");
    writeFile(in(u"data"_s), "a file where the trash would have to be");
    QVERIFY(!hasTrash(in(u"a.mp3"_s)));
    QCOMPARE(moveToTrash(in(u"a.mp3"_s)).error().code, ErrorCode::NoTrash);
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("audio"));
}

void TestTrash::aPlantedTrashIsNotUsed()
{
    QDir().mkpath(in(u"data"_s));
    QDir().mkpath(in(u"elsewhere"_s));
    makeLink("../elsewhere", in(u"data/Trash"_s));
    writeFile(in(u"a.mp3"_s), "audio");
    QVERIFY(!hasTrash(in(u"a.mp3"_s)));
    QCOMPARE(moveToTrash(in(u"a.mp3"_s)).error().code, ErrorCode::NoTrash);
    QCOMPARE(contentOf(in(u"a.mp3"_s)), QByteArray("audio"));
}

void TestTrash::aVanishedFile()
{
    QCOMPARE(moveToTrash(in(u"gone.mp3"_s)).error().code, ErrorCode::NotFound);
    QCOMPARE(moveToTrash(in(u"x/.."_s)).error().code, ErrorCode::NotFound);
    QDir().mkpath(in(u"x"_s));
    QCOMPARE(moveToTrash(in(u"x/.."_s)).error().code, ErrorCode::NoOwnName);
    QVERIFY(!isTaken(trash() + u"/info/gone.mp3.trashinfo"_s));
}

void TestTrash::aLongName()
{
    const QString name = QString(251, u'x') + u".mp3"_s;
    for (int i = 0; i < 3; ++i) {
        writeFile(in(name), QByteArray::number(i));
        const auto item = moveToTrash(in(name));
        QVERIFY2(item.has_value(), qPrintable(item ? QString() : item.error().detail));
        QCOMPARE(contentOf(item->file), QByteArray::number(i));
        QVERIFY(item->file.endsWith(u".mp3"_s));
        QVERIFY(isTaken(item->info));
        QVERIFY(restoreFromTrash(*item));
        QVERIFY(moveToTrash(in(name)));
    }
}

void TestTrash::aFullDriveKeepsTheFileAndNoEmptyTrash()
{
    MountedDrive drive(in(u"drive"_s), "1m");
    if (!drive.isMounted())
        QSKIP("mounting a drive is not permitted");
    writeFile(in(u"drive/cd/a.mp3"_s), "audio");
    QVERIFY(drive.fill());
    for (const QString &path : {in(u"drive/cd/a.mp3"_s), in(u"drive/cd"_s)}) {
        const auto item = moveToTrash(path);
        QVERIFY(!item);
        QCOMPARE(item.error().code, ErrorCode::NoSpace);
        QCOMPARE(item.error().path, QFileInfo(path).canonicalFilePath()); // no file of the trash
        QCOMPARE(snapshotOf(in(u"drive"_s)).keys(), (QStringList{u"cd"_s, u"cd/a.mp3"_s, u"filling"_s}));
    }
    // One that was there stays.
    QVERIFY(QFile::remove(in(u"drive/filling"_s)));
    const auto before = moveToTrash(in(u"drive/cd/a.mp3"_s));
    QVERIFY(before && restoreFromTrash(*before));
    QVERIFY(drive.fill());
    QCOMPARE(moveToTrash(in(u"drive/cd/a.mp3"_s)).error().code, ErrorCode::NoSpace);
    QVERIFY(isTaken(in(u"drive/.Trash-%1/info"_s.arg(::geteuid()))));
    QCOMPARE(contentOf(in(u"drive/cd/a.mp3"_s)), QByteArray("audio"));
}

void TestTrash::aReadOnlyDriveIsSaidToBe()
{
    MountedDrive drive(in(u"drive"_s), "1m");
    if (!drive.isMounted())
        QSKIP("mounting a drive is not permitted");
    writeFile(in(u"drive/a.mp3"_s), "audio");
    QVERIFY(!isOnReadOnlyDrive(in(u"drive/a.mp3"_s)));
    QVERIFY(drive.makeReadOnly());
    QVERIFY(isOnReadOnlyDrive(in(u"drive/a.mp3"_s)));
    QVERIFY(!isOnReadOnlyDrive(in(u"drive"_s))); // its folder is on another one
    QCOMPARE(moveToTrash(in(u"drive/a.mp3"_s)).error().code, ErrorCode::ReadOnlyDrive);
}

void TestTrash::whatCanNotBeMovedLeavesNoEmptyTrash()
{
    const MountedDrive drive(in(u"drive"_s), "1m");
    if (!drive.isMounted())
        QSKIP("mounting a drive is not permitted");
    const MountedDrive inner(in(u"drive/inner"_s), "1m"); // a mounted folder can't be renamed
    QVERIFY(!moveToTrash(in(u"drive/inner"_s)));
    QCOMPARE(snapshotOf(in(u"drive"_s)).keys(), QStringList{u"inner"_s});
}

void TestTrash::anExchangedFolderIsNotFollowed()
{
    writeFile(in(u"music/a.mp3"_s), "mine");
    writeFile(in(u"private/a.mp3"_s), "precious");
    const auto held = FileSystem::native().openFolder(in(u"music"_s));
    QVERIFY(held);
    QVERIFY(QDir().rename(in(u"music"_s), in(u"aside"_s)));
    makeLink("private", in(u"music"_s));
    QCOMPARE(moveToTrash(Place{*held, u"a.mp3"_s}).error().code, ErrorCode::ChangedMeanwhile);
    QCOMPARE(contentOf(in(u"private/a.mp3"_s)), QByteArray("precious"));
    QCOMPARE(contentOf(in(u"aside/a.mp3"_s)), QByteArray("mine"));
}

void TestTrash::anEmptyTrashThatIsTakenAwayMeanwhileIsMadeAnew()
{
    const MountedDrive drive(in(u"drive"_s), "1m");
    if (!drive.isMounted())
        QSKIP("mounting a drive is not permitted");
    const MountedDrive inner(in(u"drive/inner"_s), "1m"); // a mounted folder can't be renamed
    const std::jthread other([this](const std::stop_token &stop) {
        while (!stop.stop_requested())
            static_cast<void>(moveToTrash(in(u"drive/inner"_s))); // makes the trash and takes it away again
    });
    writeFile(in(u"drive/a.mp3"_s), "audio");
    for (int i = 0; i < 2000; ++i) {
        const auto item = moveToTrash(in(u"drive/a.mp3"_s));
        QVERIFY2(item.has_value(), qPrintable(item ? QString() : item.error().detail));
        QVERIFY(restoreFromTrash(*item));
        const QString trash = folderOf(folderOf(item->file));
        for (const QString &folder : {trash + u"/files"_s, trash + u"/info"_s, trash})
            QDir().rmdir(folder);
    }
}

QTEST_GUILESS_MAIN(TestTrash)

#include "tst_trash.moc"
