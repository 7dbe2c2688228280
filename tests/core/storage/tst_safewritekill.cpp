// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a program that is killed (SIGKILL) at any moment while it saves leaves a file with exactly one of the valid
// contents; if it was overwriting the file under a redo file, this holds after recoverFile.

#include "core/storage/rewritecase.h"

#include <QtTest>

#include <csignal>
#include <random>

#include <sys/wait.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using namespace ravlin::test;

Q_DECLARE_METATYPE(ravlin::test::Way)

namespace {

constexpr int KillsPerWay = 150;
constexpr int LongestLifeMicroseconds = 12'000;

FileSystem &native()
{
    return FileSystem::native();
}

/// Saves the two contents in turn until it is killed. Ends by itself only if a save fails.
[[noreturn]] void saveForEver(const RewriteCase &rewriteCase)
{
    // The old content comes from the last round or is what a kill left.
    bool isNew = infoOf(rewriteCase.path()).size != rewriteCase.oldContent().size() ||
                 ScratchFolder::read(rewriteCase.path()) == rewriteCase.newContent();
    while (true) {
        const auto segments = isNew ? rewriteCase.backward() : rewriteCase.forward();
        const auto saved = rewriteFile(native(), rewriteCase.path(), infoOf(rewriteCase.path()), segments);
        if (!saved)
            ::_exit(1);
        isNew = !isNew;
    }
}

} // namespace

class TestSafeWriteKill : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileIsWhole_data();
    void fileIsWhole();
};

void TestSafeWriteKill::fileIsWhole_data()
{
    QTest::addColumn<Way>("way");
    for (const Way way : AllWays)
        QTest::newRow(nameOf(way)) << way;
}

void TestSafeWriteKill::fileIsWhole()
{
    QFETCH(Way, way);
    const RewriteCase rewriteCase(way);
    std::mt19937 random(static_cast<unsigned>(way) + 1);
    std::uniform_int_distribution<useconds_t> life(0, LongestLifeMicroseconds);
    int newOnes = 0;
    int interrupted = 0;
    for (int kill = 0; kill < KillsPerWay; ++kill) {
        const pid_t child = ::fork();
        if (child == 0)
            saveForEver(rewriteCase);
        ::usleep(life(random));
        ::kill(child, SIGKILL);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY2(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, "a save failed");

        interrupted += rewriteCase.isClean() ? 0 : 1;
        QVERIFY(rewriteCase.hasOnlyLeftovers());
        QVERIFY(recoverFile(native(), rewriteCase.path()));
        const QByteArray present = ScratchFolder::read(rewriteCase.path());
        const bool isNew = present == rewriteCase.newContent();
        QVERIFY(isNew || present == rewriteCase.oldContent());
        newOnes += isNew ? 1 : 0;
        QVERIFY(cleanLeftovers(native(), rewriteCase.folder().path()));
        QVERIFY(rewriteCase.isCleaned());
        rewriteCase.removeWhatStayed();
    }
    qInfo("%d kills: %d times the new content, %d times leftovers to clear away", KillsPerWay, newOnes, interrupted);
    // Both contents occurred, so the kills did hit saves.
    QVERIFY(newOnes > 0 && newOnes < KillsPerWay);
}

QTEST_GUILESS_MAIN(TestSafeWriteKill)
#include "tst_safewritekill.moc"
