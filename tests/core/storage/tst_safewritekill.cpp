// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a program that is killed (SIGKILL) at any moment while it saves leaves a file with exactly one of the valid
// contents; if it was overwriting the file under a redo file, or patching it under a record, this holds after recovery.
//
// RAVLIN_KILLS sets the number of kills for each way of writing.

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

int killsPerWay()
{
    constexpr int InTheSuite = 150;
    const int wanted = qEnvironmentVariableIntValue("RAVLIN_KILLS");
    return wanted > 0 ? wanted : InTheSuite;
}

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
        if (!rewriteCase.rewrite(native(), segments))
            ::_exit(1);
        isNew = !isNew;
    }
}

/// A few times as long as it takes here and now to save both contents, so that most kills hit a save.
useconds_t longestLife(const RewriteCase &rewriteCase)
{
    constexpr useconds_t Shortest = 4'000;
    constexpr useconds_t Longest = 200'000;
    QElapsedTimer timer;
    timer.start();
    for (const auto &segments : {rewriteCase.forward(), rewriteCase.backward()}) {
        if (!rewriteCase.rewrite(native(), segments))
            qFatal("a save failed");
    }
    return std::clamp(static_cast<useconds_t>(5 * timer.nsecsElapsed() / 1000), Shortest, Longest);
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
    std::uniform_int_distribution<useconds_t> life(0, longestLife(rewriteCase));
    int newOnes = 0;
    int interrupted = 0;
    int kills = 0;
    // Both contents have to occur: only then did the kills hit saves.
    // On a busy machine it may take more.
    const int wanted = killsPerWay();
    for (; kills < wanted || (kills < 10 * wanted && (newOnes == 0 || newOnes == kills)); ++kills) {
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
        QVERIFY(rewriteCase.recover());
        const QByteArray present = ScratchFolder::read(rewriteCase.path());
        const bool isNew = present == rewriteCase.newContent();
        QVERIFY(isNew || present == rewriteCase.oldContent());
        newOnes += isNew ? 1 : 0;
        QVERIFY(cleanLeftovers(native(), rewriteCase.folder().path()));
        QVERIFY(rewriteCase.isCleaned());
        rewriteCase.removeWhatStayed();
    }
    qInfo("%d kills: %d times the new content, %d times leftovers to clear away", kills, newOnes, interrupted);
    QVERIFY(newOnes > 0 && newOnes < kills);
}

QTEST_GUILESS_MAIN(TestSafeWriteKill)
#include "tst_safewritekill.moc"
