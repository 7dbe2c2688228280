// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: rewriteFile gives a file exactly the content that the segments make up, by the smallest safe change. It
// touches nothing if nothing differs, and keeps links, owner, permissions, attributes and, on request, the time.

#include "core/platform/scratchfolder.h"
#include "core/storage/safewrite.h"

#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

#include <array>
#include <functional>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using ravlin::test::infoOf;
using ravlin::test::ScratchFolder;

Q_DECLARE_METATYPE(ravlin::storage::WriteOutcome)

namespace {

FileSystem &native()
{
    return FileSystem::native();
}

/// Bytes without a pattern that repeats at block boundaries.
QByteArray sample(qsizetype size, int seed = 1)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = quint32(seed) * 2654435761U;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// The content that the segments make of an old one.
QByteArray applied(const QByteArray &old, const std::vector<Segment> &segments)
{
    QByteArray result;
    for (const Segment &segment : segments)
        result += segment.oldOffset < 0 ? segment.bytes : old.mid(segment.oldOffset, segment.length);
    return result;
}

Result<WriteOutcome> rewrite(
    const QString &path, const std::vector<Segment> &segments, const WriteOptions &options = {})
{
    return rewriteFile(native(), path, infoOf(path), segments, options);
}

ErrorCode codeOf(const Result<WriteOutcome> &result)
{
    if (result)
        qFatal("expected an error");
    return result.error().code;
}

/// Runs a callable in a child process. True if it returned true there.
bool inChild(const std::function<bool()> &act)
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(act() ? 0 : 1);
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace

class TestSafeWrite : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesContent_data();
    void writesContent();
    void everySmallChangeIsRight();
    void refusesInvalidPieces();
    void unchangedTouchesNothing();
    void unchangedOnReadOnlyFile();
    void readOnlyFileIsRefused();
    void readOnlyFileIsMadeWritable();
    void changedMeanwhile();
    void missingFile();
    void symbolicLinkStaysLink();
    void hardLinksSeeNewContent();
    void keepsModified_data();
    void keepsModified();
    void keepsOwnerModeAndAttributes();
    void keepsAccessList();
    void fileOfAnotherOwner();
    void folderWithoutWriteAccess();
    void bigFileIsNotReadIntoMemory();
};

void TestSafeWrite::writesContent_data()
{
    QTest::addColumn<qsizetype>("oldSize");
    QTest::addColumn<std::vector<Segment>>("segments");
    QTest::addColumn<WriteOutcome>("outcome");

    const QByteArray old = sample(20'000);
    const auto changed = [&](qsizetype from, qsizetype length) {
        QByteArray bytes = old.mid(from, length);
        for (char &byte : bytes)
            byte = static_cast<char>(~byte);
        return bytes;
    };
    using S = std::vector<Segment>;
    const auto row = [](const char *name, qsizetype size, const S &segments, WriteOutcome outcome) {
        QTest::newRow(name) << size << segments << outcome;
    };
    const auto kept = &Segment::kept;
    const auto fresh = &Segment::fresh;

    row("same bytes", 20'000, {fresh(old.left(4000)), kept(4000, 16'000)}, WriteOutcome::Unchanged);
    row("everything kept", 20'000, {kept(0, 5000), kept(5000, 15'000)}, WriteOutcome::Unchanged);
    row("empty stays empty", 0, {}, WriteOutcome::Unchanged);
    row("empty pieces", 20'000, {fresh({}), kept(0, 20'000), kept(7, 0), fresh({})}, WriteOutcome::Unchanged);
    row("one byte", 20'000, {kept(0, 100), fresh(changed(100, 1)), kept(101, 19'899)}, WriteOutcome::InPlace);
    row("a whole block", 20'000, {kept(0, 4096), fresh(changed(4096, 4096)), kept(8192, 11'808)},
        WriteOutcome::InPlace);
    row("two changes in a block with a kept range between", 20'000,
        {fresh(changed(0, 10)), kept(10, 100), fresh(changed(110, 10)), kept(120, 19'880)}, WriteOutcome::InPlace);
    row("long new bytes that differ in one block only", 20'000,
        {fresh(old.left(9000) + changed(9000, 100) + old.mid(9100)), kept(0, 0)}, WriteOutcome::InPlace);
    row("across a block boundary", 20'000, {kept(0, 4090), fresh(changed(4090, 12)), kept(4102, 15'898)},
        WriteOutcome::Replaced);
    row("two blocks", 20'000, {fresh(changed(0, 10)), kept(10, 19'980), fresh(changed(19'990, 10))},
        WriteOutcome::Replaced);
    row("cut at the end", 20'000, {kept(0, 19'872)}, WriteOutcome::Replaced);
    row("cut with the rest given as bytes", 20'000, {fresh(old.left(128))}, WriteOutcome::Replaced);
    row("cut to nothing", 20'000, {}, WriteOutcome::Replaced);
    row("appended inside the last block", 20'000, {kept(0, 20'000), fresh(sample(128, 2))}, WriteOutcome::Replaced);
    row("appended over the block's end", 20'000, {kept(0, 20'000), fresh(sample(600, 2))}, WriteOutcome::Replaced);
    row("appended at a block's start", 16'384, {kept(0, 16'384), fresh(sample(128, 2))}, WriteOutcome::Replaced);
    row("first bytes of an empty file", 0, {fresh(sample(100, 2))}, WriteOutcome::Replaced);
    row("changed and appended", 20'000, {kept(0, 19'990), fresh(changed(19'990, 10) + sample(20, 2))},
        WriteOutcome::Replaced);
    row("changed and cut", 20'000, {fresh(changed(0, 10)), kept(10, 19'000)}, WriteOutcome::Replaced);
    row("moved back", 20'000, {fresh(sample(300, 2)), kept(0, 20'000)}, WriteOutcome::Replaced);
    row("moved to the front", 20'000, {kept(1000, 19'000)}, WriteOutcome::Replaced);
    row("pieces in another order", 20'000, {kept(10'000, 10'000), kept(0, 10'000)}, WriteOutcome::Replaced);
    row("a range twice", 20'000, {kept(0, 20'000), kept(0, 20'000)}, WriteOutcome::Replaced);
    row("megabytes of new bytes", 20'000, {fresh(sample(3'000'001, 3)), kept(0, 20'000)}, WriteOutcome::Replaced);
}

void TestSafeWrite::writesContent()
{
    QFETCH(qsizetype, oldSize);
    QFETCH(std::vector<Segment>, segments);
    QFETCH(WriteOutcome, outcome);

    const ScratchFolder folder;
    const QByteArray old = sample(20'000).left(oldSize);
    const QString path = folder.write(QStringLiteral("song.mp3"), old);
    const quint64 inode = infoOf(path).inode;
    const auto result = rewrite(path, segments);
    QVERIFY2(result, qPrintable(result ? QString() : result.error().detail));
    QCOMPARE(*result, outcome);
    QCOMPARE(ScratchFolder::read(path), applied(old, segments));
    QCOMPARE(infoOf(path).inode == inode, outcome != WriteOutcome::Replaced);
    QCOMPARE(folder.names(), QStringList(QStringLiteral("song.mp3")));
}

void TestSafeWrite::everySmallChangeIsRight()
{
    // Every begin and end around a block boundary, and appended lengths around one.
    const ScratchFolder folder;
    const QByteArray old = sample(9000);
    const QString path = folder.write(QStringLiteral("song.mp3"), old);
    QByteArray present = old;
    for (qsizetype begin = 4090; begin < 4100; ++begin) {
        for (qsizetype end = begin + 1; end < 4104; ++end) {
            QByteArray bytes = present.mid(begin, end - begin);
            for (char &byte : bytes)
                byte = static_cast<char>(byte + 1);
            const auto result =
                rewrite(path, {Segment::kept(0, begin), Segment::fresh(bytes), Segment::kept(end, 9000 - end)});
            present.replace(begin, end - begin, bytes);
            QCOMPARE(ScratchFolder::read(path), present);
            const bool isOneBlock = begin / 4096 == (end - 1) / 4096;
            QCOMPARE(*result, isOneBlock ? WriteOutcome::InPlace : WriteOutcome::Replaced);
        }
    }
}

void TestSafeWrite::refusesInvalidPieces()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), "0123456789");
    constexpr qint64 Most = std::numeric_limits<qint64>::max();
    const std::vector<std::vector<Segment>> broken = {
        {Segment::kept(0, 11)},
        {Segment::kept(11, 0)},
        {Segment::kept(5, 6)},
        {Segment::kept(5, Most)},
        {Segment::kept(Most, 1)},
        {Segment::kept(-2, 1)},
        {Segment::kept(0, -1)},
        {Segment{"abc", -1, 2}},
        {Segment{"abc", -1, -1}},
        {Segment{"abc", 0, 3}},
    };
    for (const auto &segments : broken)
        QCOMPARE(codeOf(rewrite(path, segments)), ErrorCode::InvalidArgument);
    QCOMPARE(ScratchFolder::read(path), "0123456789");
}

void TestSafeWrite::unchangedTouchesNothing()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), sample(5000));
    struct stat before = {};
    QCOMPARE(::stat(encodePath(path), &before), 0);
    QTest::qSleep(20);
    QCOMPARE(*rewrite(path, {Segment::fresh(sample(5000))}), WriteOutcome::Unchanged);
    struct stat after = {};
    QCOMPARE(::stat(encodePath(path), &after), 0);
    QCOMPARE(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    QCOMPARE(after.st_ctim.tv_nsec, before.st_ctim.tv_nsec);
}

void TestSafeWrite::unchangedOnReadOnlyFile()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), "0123456789");
    QVERIFY(ravlin::test::setPermissions(path, 0444));
    for (const auto readOnly : {ReadOnlyFile::Refuse, ReadOnlyFile::MakeWritable}) {
        const auto result = rewrite(path, {Segment::fresh("0123456789")}, {readOnly});
        QCOMPARE(*result, WriteOutcome::Unchanged);
        QCOMPARE(infoOf(path).permissions, quint32(0444));
    }
}

void TestSafeWrite::readOnlyFileIsRefused()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), "0123456789");
    QVERIFY(ravlin::test::setPermissions(path, 0464)); // only the owner's bit counts
    const auto result = rewrite(path, {Segment::fresh("X")});
    QCOMPARE(codeOf(result), ErrorCode::ReadOnly);
    QCOMPARE(result.error().path, path);
    QCOMPARE(ScratchFolder::read(path), "0123456789");
    QCOMPARE(infoOf(path).permissions, quint32(0464));
}

void TestSafeWrite::readOnlyFileIsMadeWritable()
{
    const ScratchFolder folder;
    const WriteOptions options{ReadOnlyFile::MakeWritable};
    for (const QByteArray &content : {QByteArray("0123X56789"), sample(6000, 4)}) {
        const QString path = folder.write(QStringLiteral("song.mp3"), "0123456789");
        QVERIFY(ravlin::test::setPermissions(path, 0444));
        QVERIFY(rewrite(path, {Segment::fresh(content)}, options));
        QCOMPARE(ScratchFolder::read(path), content);
        QCOMPARE(infoOf(path).permissions, quint32(0444));
    }
}

void TestSafeWrite::changedMeanwhile()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), "0123456789");
    const FileInfo present = infoOf(path);
    std::array<FileInfo, 4> before;
    before.fill(present);
    before[0].size += 1;
    before[1].modified -= 1;
    before[2].inode += 1;
    before[3].device += 1;
    for (const FileInfo &info : before) {
        const auto result = rewriteFile(native(), path, info, {Segment::fresh("new")});
        QCOMPARE(codeOf(result), ErrorCode::ChangedMeanwhile);
    }
    QCOMPARE(ScratchFolder::read(path), "0123456789");
}

void TestSafeWrite::missingFile()
{
    const ScratchFolder folder;
    const QString path = folder.path(QStringLiteral("none.mp3"));
    QCOMPARE(codeOf(rewriteFile(native(), path, {}, {Segment::fresh("new")})), ErrorCode::NotFound);
    QCOMPARE(folder.names(), QStringList());
}

void TestSafeWrite::symbolicLinkStaysLink()
{
    const ScratchFolder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("elsewhere")));
    const QString file = folder.write(QStringLiteral("elsewhere/real.mp3"), sample(9000));
    const QString link = folder.path(QStringLiteral("link.mp3"));
    QVERIFY(QFile::link(QStringLiteral("elsewhere/real.mp3"), link));
    const QByteArray replaced = sample(12'000, 2);
    QCOMPARE(*rewrite(link, {Segment::fresh(replaced)}), WriteOutcome::Replaced);
    QVERIFY(QFileInfo(link).isSymbolicLink());
    QCOMPARE(ScratchFolder::read(file), replaced);
    QCOMPARE(*rewrite(link, {Segment::kept(0, 11'990)}), WriteOutcome::Replaced);
    QVERIFY(QFileInfo(link).isSymbolicLink());
    QCOMPARE(ScratchFolder::read(file), replaced.left(11'990));
}

void TestSafeWrite::hardLinksSeeNewContent()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), sample(9000));
    const QString other = folder.path(QStringLiteral("other name.mp3"));
    QCOMPARE(::link(encodePath(path), encodePath(other)), 0);
    const quint64 inode = infoOf(path).inode;
    QByteArray present = sample(9000);
    for (const qsizetype size : {12'000, 3'000, 0, 9'000}) {
        std::vector<Segment> segments{Segment::fresh(sample(size, 5))};
        if (size > 0)
            segments.push_back(Segment::kept(0, present.size()));
        const QByteArray wanted = applied(present, segments);
        const auto result = rewrite(path, segments);
        QVERIFY2(result, qPrintable(result ? QString() : result.error().detail));
        QCOMPARE(*result, WriteOutcome::Rewritten);
        QCOMPARE(ScratchFolder::read(path), wanted);
        QCOMPARE(ScratchFolder::read(other), wanted);
        QCOMPARE(infoOf(other).inode, inode);
        present = wanted;
    }
    QCOMPARE(folder.names().size(), 2);
}

void TestSafeWrite::keepsModified_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("isLinked");
    QTest::newRow("in place") << QByteArray("X") + sample(5000).mid(1) << false;
    QTest::newRow("cut") << sample(5000).left(4000) << false;
    QTest::newRow("replaced") << sample(9000, 2) << false;
    QTest::newRow("rewritten") << sample(9000, 2) << true;
}

void TestSafeWrite::keepsModified()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, isLinked);
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), sample(5000));
    if (isLinked)
        QCOMPARE(::link(encodePath(path), encodePath(path + u'2')), 0);
    constexpr qint64 Time = 1'234'567'890'123'456'789;
    QVERIFY(native().open(path, OpenMode::ReadWrite).value()->setModified(Time));
    QVERIFY(rewrite(path, {Segment::fresh(content)}, {ReadOnlyFile::Refuse, true}));
    QCOMPARE(ScratchFolder::read(path), content);
    QCOMPARE(infoOf(path).modified, Time);
    QVERIFY(rewrite(path, {Segment::fresh(sample(5000))}));
    QVERIFY(infoOf(path).modified > Time);
}

void TestSafeWrite::keepsOwnerModeAndAttributes()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), sample(5000));
    QVERIFY(ravlin::test::setPermissions(path, 0640));
    if (::geteuid() == 0)
        QCOMPARE(::chown(encodePath(path), 12345, 23456), 0);
    const bool hasAttributes = ::setxattr(encodePath(path), "user.rating", "five", 4, 0) == 0;
    const FileInfo before = infoOf(path);
    QCOMPARE(*rewrite(path, {Segment::fresh(sample(9000, 2))}), WriteOutcome::Replaced);
    QCOMPARE(infoOf(path).owner, before.owner);
    QCOMPARE(infoOf(path).group, before.group);
    QCOMPARE(infoOf(path).permissions, before.permissions);
    std::array<char, 8> value = {};
    if (hasAttributes) {
        QCOMPARE(::getxattr(encodePath(path), "user.rating", value.data(), value.size()), 4);
        QCOMPARE(QByteArray(value.data()), "five");
    }
}

void TestSafeWrite::keepsAccessList()
{
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("song.mp3"), sample(5000));
    const auto list = [&] {
        QProcess getfacl;
        getfacl.start(QStringLiteral("getfacl"), {QStringLiteral("-cE"), path});
        getfacl.waitForFinished();
        return getfacl.readAllStandardOutput();
    };
    if (QProcess::execute(QStringLiteral("setfacl"), {QStringLiteral("-m"), QStringLiteral("u:12345:rw"), path}) != 0)
        QSKIP("no setfacl or no access control lists here");
    const QByteArray before = list();
    QVERIFY(before.contains("user:12345:rw-"));
    QCOMPARE(*rewrite(path, {Segment::fresh(sample(9000, 2))}), WriteOutcome::Replaced);
    QCOMPARE(list(), before);
}

void TestSafeWrite::fileOfAnotherOwner()
{
    if (::geteuid() != 0)
        QSKIP("only root can make a file of somebody else's");
    const ScratchFolder folder(QStringLiteral("/tmp"));
    QVERIFY(ravlin::test::setPermissions(folder.path(), 0777));
    const QString path = folder.write(QStringLiteral("song.mp3"), sample(5000));
    QVERIFY(ravlin::test::setPermissions(path, 0666));
    const bool written = inChild([&] {
        constexpr uid_t Nobody = 65534;
        const bool isNobody =
            ::chdir(encodePath(folder.path())) == 0 && ::setegid(Nobody) == 0 && ::seteuid(Nobody) == 0;
        const auto result = rewrite(QStringLiteral("song.mp3"), {Segment::fresh(sample(9000, 2))});
        return isNobody && result && *result == WriteOutcome::Rewritten;
    });
    QVERIFY(written);
    QCOMPARE(ScratchFolder::read(path), sample(9000, 2));
    QCOMPARE(infoOf(path).owner, 0U);
    QCOMPARE(folder.names(), QStringList(QStringLiteral("song.mp3")));
}

void TestSafeWrite::folderWithoutWriteAccess()
{
    if (::geteuid() != 0)
        QSKIP("needs to become somebody else");
    const ScratchFolder folder(QStringLiteral("/tmp"));
    QVERIFY(ravlin::test::setPermissions(folder.path(), 0755));
    const QString path = folder.write(QStringLiteral("song.mp3"), sample(5000));
    QVERIFY(ravlin::test::setPermissions(path, 0666));
    const bool asExpected = inChild([&] {
        constexpr uid_t Nobody = 65534;
        if (::seteuid(Nobody) != 0)
            return false;
        const auto large = rewrite(path, {Segment::fresh(sample(9000, 2))});
        const auto small = rewrite(path, {Segment::fresh("X" + sample(5000).mid(1))});
        return !large && large.error().code == ErrorCode::AccessDenied && small && *small == WriteOutcome::InPlace;
    });
    QVERIFY(asExpected);
    QCOMPARE(ScratchFolder::read(path), "X" + sample(5000).mid(1));
}

void TestSafeWrite::bigFileIsNotReadIntoMemory()
{
    constexpr qint64 Size = 100LL * 1024 * 1024;
    const ScratchFolder folder;
    const QString path = folder.write(QStringLiteral("big.mp3"), sample(100));
    QVERIFY(QFile::resize(path, Size));
    struct rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    const long peakBefore = usage.ru_maxrss;
    QCOMPARE(*rewrite(path, {Segment::fresh(sample(5000, 2)), Segment::kept(0, Size)}), WriteOutcome::Replaced);
    ::getrusage(RUSAGE_SELF, &usage);
    QVERIFY(usage.ru_maxrss - peakBefore < 16 * 1024); // KiB
    QCOMPARE(infoOf(path).size, Size + 5000);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.read(5100), sample(5000, 2) + sample(100));
}

QTEST_GUILESS_MAIN(TestSafeWrite)
#include "tst_safewrite.moc"
