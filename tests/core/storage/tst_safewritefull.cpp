// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: if the disk or the user's limit on file sizes is too small for the new content, the file keeps the old one,
// nothing stays behind, and the error is NoSpace.

#include "core/platform/scratchfolder.h"
#include "core/storage/safewrite.h"

#include <QProcess>
#include <QtTest>

#include <csignal>
#include <functional>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using ravlin::test::infoOf;
using ravlin::test::ScratchFolder;

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

class TestSafeWriteFull : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sizeLimitLeavesOldFile_data();
    void sizeLimitLeavesOldFile();
    void fullDiskLeavesOldFile();
};

void TestSafeWriteFull::sizeLimitLeavesOldFile_data()
{
    QTest::addColumn<bool>("isLinked");
    QTest::newRow("replaced") << false;
    QTest::newRow("rewritten") << true;
}

void TestSafeWriteFull::sizeLimitLeavesOldFile()
{
    QFETCH(bool, isLinked);
    const ScratchFolder folder;
    const QByteArray old = sample(20'000);
    const QString path = folder.write(QStringLiteral("song.mp3"), old);
    if (isLinked)
        QCOMPARE(::link(encodePath(path), encodePath(path + u'2')), 0);
    const QStringList names = folder.names();
    int refused = 0;
    for (rlim_t limit = 0; limit < 120'000; limit += 1009) {
        const bool isClean = inChild([&] {
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit sizes{limit, limit};
            ::setrlimit(RLIMIT_FSIZE, &sizes);
            const auto result = rewrite(path, {Segment::fresh(sample(30'000, 2))});
            return !result && result.error().code == ErrorCode::FileSizeLimit;
        });
        if (!isClean)
            break;
        ++refused;
        QCOMPARE(ScratchFolder::read(path), old);
        QCOMPARE(folder.names(), names);
    }
    QVERIFY(refused > 20);
    QCOMPARE(ScratchFolder::read(path), sample(30'000, 2));
}

void TestSafeWriteFull::fullDiskLeavesOldFile()
{
    const ScratchFolder folder;
    const auto mount = [&](const QStringList &arguments) {
        return QProcess::execute(arguments.first(), arguments.mid(1)) == 0;
    };
    if (::geteuid() != 0 ||
        !mount({QStringLiteral("mount"), QStringLiteral("-t"), QStringLiteral("tmpfs"), QStringLiteral("-o"),
            QStringLiteral("size=256k"), QStringLiteral("tmpfs"), folder.path()}))
        QSKIP("no small disk can be mounted here");
    const auto unmount = qScopeGuard([&] { mount({QStringLiteral("umount"), QStringLiteral("-l"), folder.path()}); });

    const QByteArray old = sample(150'000);
    const QString path = folder.write(QStringLiteral("song.mp3"), old);
    const auto grow = {Segment::fresh(sample(5000, 2)), Segment::kept(0, old.size())};
    QCOMPARE(codeOf(rewrite(path, grow)), ErrorCode::NoSpace);
    QCOMPARE(ScratchFolder::read(path), old);
    QCOMPARE(::link(encodePath(path), encodePath(path + u'2')), 0);
    QCOMPARE(codeOf(rewrite(path, grow)), ErrorCode::NoSpace);
    QCOMPARE(ScratchFolder::read(path), old);
    QCOMPARE(folder.names().size(), 2);
    // What fits in place needs no space.
    QCOMPARE(*rewrite(path, {Segment::fresh("X"), Segment::kept(1, old.size() - 1)}), WriteOutcome::InPlace);
}

QTEST_GUILESS_MAIN(TestSafeWriteFull)
#include "tst_safewritefull.moc"
