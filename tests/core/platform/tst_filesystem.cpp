// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: the native file system does what filesystem.h promises: errors as values with the right code, no blocking
// on pipes, full reads, complete copies and metadata, locks that others see.

#include "core/platform/filesystem.h"
#include "core/platform/scratchfolder.h"

#include <QProcess>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QtTest>

#include <array>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace ravlin;
using namespace ravlin::platform;
using ravlin::test::infoOf;
using ravlin::test::ScratchFolder;

namespace {

FileSystem &native()
{
    return FileSystem::native();
}

template <typename T>
ErrorCode codeOf(const Result<T> &result)
{
    if (result)
        qFatal("expected an error");
    return result.error().code;
}

std::span<char> spanOf(QByteArray &bytes)
{
    return {bytes.data(), size_t(bytes.size())};
}
std::span<const char> constSpanOf(const QByteArray &bytes)
{
    return {bytes.constData(), size_t(bytes.size())};
}

} // namespace

class TestFileSystem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void opensPlainFilesOnly();
    void symbolicLinks();
    void refusesEmbeddedZero();
    void createNewNeedsFreeName();
    void tellsFileInfo();
    void infoAfterUseIsFresh();
    void readsUntilFullOrEnd();
    void writesAndTruncates();
    void copiesRanges();
    void copiesBetweenFileSystems();
    void takesMetadata();
    void takesAccessList();
    void dropsInheritedAccessList();
    void setsModified();
    void replacesAndRemoves();
    void setsPermissions();
    void accessIsDenied();
    void listsNamesThatAreNoText();
    void locksAreSeenByOthers();
    void tellsFreeBytes();
};

void TestFileSystem::opensPlainFilesOnly()
{
    const ScratchFolder folder;
    QCOMPARE(codeOf(native().open(folder.path(QStringLiteral("none")), OpenMode::Read)), ErrorCode::NotFound);
    QCOMPARE(codeOf(native().open(folder.path(), OpenMode::Read)), ErrorCode::NotAFile);
    QCOMPARE(codeOf(native().open(folder.path(), OpenMode::ReadWrite)), ErrorCode::NotAFile);
    QCOMPARE(codeOf(native().open(QStringLiteral("/dev/null"), OpenMode::Read)), ErrorCode::NotAFile);

    const QString pipe = folder.path(QStringLiteral("pipe"));
    QCOMPARE(::mkfifo(encodePath(pipe), 0600), 0);
    QCOMPARE(codeOf(native().open(pipe, OpenMode::Read)), ErrorCode::NotAFile);
    QCOMPARE(codeOf(native().open(pipe, OpenMode::ReadWrite)), ErrorCode::NotAFile);

    const QString inFile = folder.write(QStringLiteral("file"), "x") + QStringLiteral("/inside");
    QCOMPARE(codeOf(native().open(inFile, OpenMode::Read)), ErrorCode::NotFound);
    const auto error = native().open(folder.path(QStringLiteral("none")), OpenMode::Read).error();
    QCOMPARE(error.path, folder.path(QStringLiteral("none")));
    QCOMPARE(error.detail, QStringLiteral("open: No such file or directory"));
}

void TestFileSystem::symbolicLinks()
{
    const ScratchFolder folder;
    const QString file = folder.write(QStringLiteral("file"), "content");
    const QString link = folder.path(QStringLiteral("link"));
    QVERIFY(QFile::link(QStringLiteral("file"), link));
    QVERIFY(native().open(link, OpenMode::Read));
    const auto held = native().openFolder(folder.path()).value();
    QCOMPARE(codeOf(held->openFile(QStringLiteral("link"), OpenMode::Read)), ErrorCode::NotAFile);
    QVERIFY(held->openFile(QStringLiteral("file"), OpenMode::Read));
    QCOMPARE(native().canonicalPath(link).value(), QFileInfo(file).canonicalFilePath());
    QCOMPARE(codeOf(native().canonicalPath(folder.path(QStringLiteral("none")))), ErrorCode::NotFound);
}

void TestFileSystem::refusesEmbeddedZero()
{
    const ScratchFolder folder;
    const QString file = folder.write(QStringLiteral("file"), "content");
    const QString trick = file + QChar(0) + QStringLiteral(".mp3");
    QCOMPARE(codeOf(native().open(trick, OpenMode::Read)), ErrorCode::InvalidArgument);
    QCOMPARE(codeOf(ravlin::test::removeFile(trick)), ErrorCode::InvalidArgument);
    QCOMPARE(codeOf(ravlin::test::replaceFile(file, trick)), ErrorCode::InvalidArgument);
    QVERIFY(QFile::exists(file));
}

void TestFileSystem::createNewNeedsFreeName()
{
    const ScratchFolder folder;
    const QString path = folder.path(QStringLiteral("new"));
    QVERIFY(ravlin::test::createNew(path));
    QCOMPARE(infoOf(path).permissions, quint32(0600));
    QCOMPARE(codeOf(ravlin::test::createNew(path)), ErrorCode::AlreadyExists);
    // Nor through a dangling link.
    const QString link = folder.path(QStringLiteral("link"));
    QVERIFY(QFile::link(folder.path(QStringLiteral("elsewhere")), link));
    QCOMPARE(codeOf(ravlin::test::createNew(link)), ErrorCode::AlreadyExists);
    QVERIFY(!QFile::exists(folder.path(QStringLiteral("elsewhere"))));
}

void TestFileSystem::tellsFileInfo()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), QByteArray(1234, 'x'));
    QVERIFY(ravlin::test::setPermissions(path, 0444));
    const FileInfo info = native().info(path).value();
    struct stat status = {};
    QCOMPARE(::stat(encodePath(path), &status), 0);
    QCOMPARE(info.size, 1234);
    QCOMPARE(info.modified, status.st_mtim.tv_sec * 1'000'000'000LL + status.st_mtim.tv_nsec);
    QCOMPARE(info.inode, quint64(status.st_ino));
    QCOMPARE(info.device, quint64(status.st_dev));
    QCOMPARE(info.owner, quint32(::geteuid()));
    QCOMPARE(info.linkCount, 1U);
    QVERIFY(info.isFile && !info.isFolder && info.isReadOnly());
    QVERIFY(native().info(folder.path()).value().isFolder);
    QCOMPARE(codeOf(native().info(folder.path(QStringLiteral("none")))), ErrorCode::NotFound);
    QVERIFY(QFile::link(path, folder.path(QStringLiteral("link"))));
    QVERIFY(native().info(folder.path(QStringLiteral("link"))).value().isFile);
}

void TestFileSystem::infoAfterUseIsFresh()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), "12345");
    const auto file = native().open(path, OpenMode::ReadWrite).value();
    QCOMPARE(file->info().value().size, 5);
    QVERIFY(file->truncate(2));
    QCOMPARE(file->info().value().size, 2);
    const auto second = native().open(path, OpenMode::ReadWrite).value();
    QVERIFY(second->writeAt(constSpanOf("abc"), 0));
    QCOMPARE(second->info().value().size, 3);
}

void TestFileSystem::readsUntilFullOrEnd()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), "0123456789");
    const auto file = native().open(path, OpenMode::Read).value();
    QByteArray buffer(4, '?');
    QCOMPARE(file->readAt(spanOf(buffer), 3).value(), 4);
    QCOMPARE(buffer, "3456");
    QCOMPARE(file->readAt(spanOf(buffer), 8).value(), 2);
    QCOMPARE(buffer.left(2), "89");
    QCOMPARE(file->readAt(spanOf(buffer), 10).value(), 0);
    QCOMPARE(file->readAt(spanOf(buffer), 1'000'000).value(), 0);
    QCOMPARE(codeOf(file->readAt(spanOf(buffer), -1)), ErrorCode::InvalidArgument);
}

void TestFileSystem::writesAndTruncates()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), "0123456789");
    const auto file = native().open(path, OpenMode::ReadWrite).value();
    QCOMPARE(file->writeAt(constSpanOf("abc"), 2).value(), 3);
    QVERIFY(file->truncate(7));
    QVERIFY(file->sync());
    QCOMPARE(ScratchFolder::read(path), "01abc56");
    const auto readOnly = native().open(path, OpenMode::Read).value();
    QVERIFY(!readOnly->writeAt(constSpanOf("x"), 0));
    QVERIFY(!readOnly->truncate(0));
}

void TestFileSystem::copiesRanges()
{
    const ScratchFolder folder;
    const auto source = native().open(folder.write(QStringLiteral("source"), "0123456789"), OpenMode::Read).value();
    const auto target = ravlin::test::createNew(folder.path(QStringLiteral("target"))).value();
    QCOMPARE(target->copyFrom(*source, 2, 0, 5).value(), 5);
    QCOMPARE(target->copyFrom(*source, 8, 5, 100).value(), 2);
    QCOMPARE(target->copyFrom(*source, 10, 7, 100).value(), 0);
    QCOMPARE(ScratchFolder::read(folder.path(QStringLiteral("target"))), "2345689");
}

void TestFileSystem::copiesBetweenFileSystems()
{
    const ScratchFolder folder;
    QTemporaryDir other(QStringLiteral("/dev/shm/ravlin-XXXXXX"));
    if (!other.isValid() || infoOf(other.path()).device == infoOf(folder.path()).device)
        QSKIP("no second file system here");
    QByteArray content(3 * 1024 * 1024 + 17, Qt::Uninitialized);
    for (qsizetype i = 0; i < content.size(); ++i)
        content[i] = static_cast<char>(i * 31 + i / 251);
    const auto source = native().open(folder.write(QStringLiteral("source"), content), OpenMode::Read).value();
    const auto target = ravlin::test::createNew(other.filePath(QStringLiteral("target"))).value();
    qint64 done = 0;
    while (done < content.size()) {
        const qint64 copied = target->copyFrom(*source, done, done, content.size() - done).value();
        QVERIFY(copied > 0);
        done += copied;
    }
    QCOMPARE(ScratchFolder::read(other.filePath(QStringLiteral("target"))), content);
}

void TestFileSystem::takesMetadata()
{
    const ScratchFolder folder;
    const QString from = folder.write(QStringLiteral("from"), "x");
    const QString to = folder.path(QStringLiteral("to"));
    QVERIFY(ravlin::test::setPermissions(from, 0641));
    const bool isRoot = ::geteuid() == 0;
    if (isRoot)
        QCOMPARE(::chown(encodePath(from), 12345, 23456), 0);
    const bool hasAttributes = ::setxattr(encodePath(from), "user.comment", "remember", 8, 0) == 0 &&
                               ::setxattr(encodePath(from), "user.empty", "", 0, 0) == 0;

    const auto source = native().open(from, OpenMode::Read).value();
    const auto target = ravlin::test::createNew(to).value();
    QVERIFY(target->takeOwner(*source) && target->takeAttributes(*source));
    QCOMPARE(infoOf(to).permissions, quint32(0600));
    QVERIFY(target->takePermissions(*source));
    QCOMPARE(infoOf(to).permissions, quint32(0641));
    QCOMPARE(infoOf(to).owner, infoOf(from).owner);
    QCOMPARE(infoOf(to).group, infoOf(from).group);
    if (!hasAttributes)
        QSKIP("the file system has no attributes");
    std::array<char, 32> value = {};
    QCOMPARE(::getxattr(encodePath(to), "user.comment", value.data(), value.size()), 8);
    QCOMPARE(QByteArray(value.data()), "remember");
    QCOMPARE(::getxattr(encodePath(to), "user.empty", value.data(), value.size()), 0);
}

namespace {

bool setAccessList(const QStringList &arguments)
{
    return QProcess::execute(QStringLiteral("setfacl"), arguments) == 0;
}

QByteArray accessList(const QString &path)
{
    QProcess getfacl;
    getfacl.start(QStringLiteral("getfacl"), {QStringLiteral("-cE"), path});
    getfacl.waitForFinished();
    return getfacl.readAllStandardOutput();
}

} // namespace

void TestFileSystem::takesAccessList()
{
    if (QStandardPaths::findExecutable(QStringLiteral("setfacl")).isEmpty())
        QSKIP("setfacl is not installed");
    const ScratchFolder folder;
    const QString from = folder.write(QStringLiteral("from"), "x");
    QVERIFY(ravlin::test::setPermissions(from, 0640));
    if (!setAccessList({QStringLiteral("-m"), QStringLiteral("u:12345:rw,g:23456:r,m::rw"), from}))
        QSKIP("the file system has no access control lists");
    const auto source = native().open(from, OpenMode::Read).value();
    const auto target = ravlin::test::createNew(folder.path(QStringLiteral("to"))).value();
    QVERIFY(target->takeAttributes(*source) && target->takePermissions(*source));
    QVERIFY(accessList(from).contains("user:12345:rw-"));
    QCOMPARE(accessList(folder.path(QStringLiteral("to"))), accessList(from));
    QCOMPARE(infoOf(folder.path(QStringLiteral("to"))).permissions, infoOf(from).permissions);
}

void TestFileSystem::dropsInheritedAccessList()
{
    if (QStandardPaths::findExecutable(QStringLiteral("setfacl")).isEmpty())
        QSKIP("setfacl is not installed");
    const ScratchFolder folder;
    const QString from = folder.write(QStringLiteral("from"), "x");
    QVERIFY(ravlin::test::setPermissions(from, 0640));
    if (!setAccessList({QStringLiteral("-d"), QStringLiteral("-m"), QStringLiteral("u:12345:rwx"), folder.path()}))
        QSKIP("the file system has no access control lists");
    const auto source = native().open(from, OpenMode::Read).value();
    const auto target = ravlin::test::createNew(folder.path(QStringLiteral("to"))).value();
    QVERIFY(target->takeAttributes(*source) && target->takePermissions(*source));
    QCOMPARE(accessList(folder.path(QStringLiteral("to"))), accessList(from));
    QVERIFY(!accessList(folder.path(QStringLiteral("to"))).contains("12345"));
}

void TestFileSystem::setsModified()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), "x");
    const auto file = native().open(path, OpenMode::ReadWrite).value();
    for (const qint64 time : {1'600'000'000'123'456'789LL, 0LL, -1'500'000'001LL}) {
        QVERIFY(file->setModified(time));
        QCOMPARE(file->info().value().modified, time);
    }
}

void TestFileSystem::replacesAndRemoves()
{
    const ScratchFolder folder;
    const QString from = folder.write(QStringLiteral("from"), "new");
    const QString to = folder.write(QStringLiteral("to"), "old");
    QVERIFY(ravlin::test::replaceFile(from, to));
    QCOMPARE(ScratchFolder::read(to), "new");
    QVERIFY(!QFile::exists(from));
    QVERIFY(native().openFolder(folder.path()).value()->sync());
    QCOMPARE(codeOf(native().openFolder(to)), ErrorCode::NotAFile);
    QVERIFY(ravlin::test::removeFile(to));
    QCOMPARE(codeOf(ravlin::test::removeFile(to)), ErrorCode::NotFound);
    QCOMPARE(codeOf(ravlin::test::replaceFile(from, to)), ErrorCode::NotFound);
}

void TestFileSystem::setsPermissions()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), "x");
    QVERIFY(native().open(path, OpenMode::Read).value()->setPermissions(0604));
    QCOMPARE(infoOf(path).permissions, quint32(0604));
}

void TestFileSystem::accessIsDenied()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), "x");
    QVERIFY(ravlin::test::setPermissions(path, 0644));
    const auto file = native().open(path, OpenMode::Read).value();
    QVERIFY(ravlin::test::setPermissions(path, 0));
    // In a child process that is not root, since root may read everything.
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isRoot = ::geteuid() == 0;
        const bool isReady =
            ::chdir(encodePath(folder.path())) == 0 && (!isRoot || (::chmod(".", 0755) == 0 && ::seteuid(65534) == 0));
        const QString name = QStringLiteral("file");
        const bool isDenied = isReady && codeOf(native().open(name, OpenMode::Read)) == ErrorCode::AccessDenied &&
                              (!isRoot || codeOf(ravlin::test::removeFile(name)) == ErrorCode::AccessDenied) &&
                              (!isRoot || codeOf(file->setPermissions(0666)) == ErrorCode::AccessDenied);
        ::_exit(isDenied ? 0 : 1);
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QCOMPARE(status, 0);
}

void TestFileSystem::listsNamesThatAreNoText()
{
    const ScratchFolder folder;
    const QByteArray odd = encodePath(folder.path()) + "/caf\xE9 \xED\xA0\x80.mp3";
    const int descriptor = ::open(odd.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
    if (descriptor < 0)
        QSKIP("the file system takes text only");
    ::close(descriptor);
    folder.write(QStringLiteral(".hidden"), "x");
    auto names = native().names(folder.path()).value();
    std::sort(names.begin(), names.end());
    QCOMPARE(names.size(), size_t(2));
    QCOMPARE(names.at(0), QStringLiteral(".hidden"));
    const QString path = folder.path() + Separator + names.at(1);
    QCOMPARE(encodePath(path), odd);
    QVERIFY(native().open(path, OpenMode::Read));
    QCOMPARE(codeOf(native().names(path)), ErrorCode::NotAFile);
}

void TestFileSystem::locksAreSeenByOthers()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("file"), "x");
    auto first = native().open(path, OpenMode::ReadWrite).value();
    const auto second = native().open(path, OpenMode::Read).value();
    QVERIFY(first->tryLock().value());
    QVERIFY(first->tryLock().value());
    QVERIFY(!second->tryLock().value());
    first.reset();
    QVERIFY(second->tryLock().value());
}

void TestFileSystem::tellsFreeBytes()
{
    const ScratchFolder folder;
    const qint64 free = native().freeBytes(folder.path()).value();
    const qint64 byQt = QStorageInfo(folder.path()).bytesAvailable();
    // Other programs write at the same time.
    QVERIFY(qAbs(free - byQt) < 1024LL * 1024 * 1024);
    QCOMPARE(codeOf(native().freeBytes(folder.path(QStringLiteral("none")))), ErrorCode::NotFound);
}

QTEST_GUILESS_MAIN(TestFileSystem)
#include "tst_filesystem.moc"
