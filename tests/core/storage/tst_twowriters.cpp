// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: of two programs that save one file at the same time, having read the same state of it, one writes and the
// other one is told that the file was changed; it never overwrites what it has not seen. A writer waits for another one
// that comes to its end, and gives up on one that does not.
//
// RAVLIN_PAIRS sets the number of pairs for each way of writing.

#include "core/storage/rewritecase.h"

#include <QtTest>

#include <chrono>
#include <thread>

#include <sys/wait.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using namespace ravlin::test;

Q_DECLARE_METATYPE(ravlin::test::Way)

namespace {

FileSystem &native()
{
    return FileSystem::native();
}

int pairs()
{
    constexpr int InTheSuite = 60;
    const int wanted = qEnvironmentVariableIntValue("RAVLIN_PAIRS");
    return wanted > 0 ? wanted : InTheSuite;
}

std::vector<Segment> withByte(const std::vector<Segment> &segments, char byte)
{
    std::vector<Segment> changed = segments;
    for (Segment &segment : changed) {
        if (!segment.isKept())
            segment.bytes[0] = byte;
    }
    return changed;
}

/// Saves when the clock shows that time; returns the exit status: 0 if it wrote, 1 if the file was changed meanwhile.
int saveAt(
    std::chrono::steady_clock::time_point start, const RewriteCase &rewriteCase, const FileInfo &before, char byte)
{
    while (std::chrono::steady_clock::now() < start) {
    }
    FakeJournal journal; // so that several blocks are patched
    const auto saved =
        rewriteFile(native(), rewriteCase.path(), before, withByte(rewriteCase.forward(), byte), {.journal = &journal});
    if (saved)
        return 0;
    return saved.error().code == ErrorCode::ChangedMeanwhile ? 1 : 2;
}

} // namespace

class TestTwoWriters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyOneWrites_data();
    void onlyOneWrites();
    void aWriterWaitsForAnother();
    void aWriterGivesUp();
    void aChangeIsNoticedThatKeepsTheTime();
};

void TestTwoWriters::onlyOneWrites_data()
{
    QTest::addColumn<Way>("way");
    for (const Way way : {Way::InPlace, Way::Patched, Way::Replaced, Way::Rewritten})
        QTest::newRow(nameOf(way)) << way;
}

void TestTwoWriters::onlyOneWrites()
{
    QFETCH(Way, way);
    int firstOnes = 0;
    for (int pair = 0; pair < pairs(); ++pair) {
        const RewriteCase rewriteCase(way);
        std::this_thread::sleep_for(std::chrono::milliseconds(10)); // the system's clock for files is coarse
        const FileInfo before = infoOf(rewriteCase.path());
        const auto start = std::chrono::steady_clock::now() + std::chrono::milliseconds(8);
        std::array<pid_t, 2> children{};
        for (std::size_t i = 0; i < children.size(); ++i) {
            children.at(i) = ::fork();
            if (children.at(i) == 0)
                ::_exit(saveAt(start, rewriteCase, before, i == 0 ? 'A' : 'B'));
        }
        std::array<int, 2> outcomes{};
        for (std::size_t i = 0; i < children.size(); ++i) {
            int status = 0;
            QCOMPARE(::waitpid(children.at(i), &status, 0), children.at(i));
            QVERIFY(WIFEXITED(status));
            outcomes.at(i) = WEXITSTATUS(status);
        }
        QVERIFY2(outcomes.at(0) + outcomes.at(1) == 1,
            qPrintable(QStringLiteral("pair %1: %2 and %3").arg(pair).arg(outcomes.at(0)).arg(outcomes.at(1))));
        const char winner = outcomes.at(0) == 0 ? 'A' : 'B';
        firstOnes += winner == 'A' ? 1 : 0;
        QByteArray wanted;
        for (const Segment &segment : withByte(rewriteCase.forward(), winner))
            wanted +=
                segment.isKept() ? rewriteCase.oldContent().mid(segment.oldOffset, segment.length) : segment.bytes;
        QCOMPARE(ScratchFolder::read(rewriteCase.path()), wanted);
        QVERIFY(rewriteCase.isClean());
    }
    qInfo("%d pairs: the first one wrote %d times", pairs(), firstOnes);
}

void TestTwoWriters::aWriterWaitsForAnother()
{
    const RewriteCase rewriteCase(Way::InPlace);
    auto other = native().open(rewriteCase.path(), OpenMode::Read).value();
    QVERIFY(other->tryLock().value());
    std::jthread ends([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        other.reset();
    });
    QVERIFY(rewriteCase.rewriteForward(native()));
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
}

void TestTwoWriters::aWriterGivesUp()
{
    const RewriteCase rewriteCase(Way::Replaced);
    const auto other = native().open(rewriteCase.path(), OpenMode::Read).value();
    QVERIFY(other->tryLock().value());
    QCOMPARE(rewriteCase.rewriteForward(native()).error().code, ErrorCode::FileInUse);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.oldContent());
    QVERIFY(rewriteCase.isClean());
}

void TestTwoWriters::aChangeIsNoticedThatKeepsTheTime()
{
    const RewriteCase rewriteCase(Way::InPlace);
    const FileInfo before = infoOf(rewriteCase.path());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    QVERIFY(rewriteFile(native(), rewriteCase.path(), before, rewriteCase.forward(), {.keepModified = true}));
    QCOMPARE(infoOf(rewriteCase.path()).modified, before.modified);
    QCOMPARE(infoOf(rewriteCase.path()).size, before.size);
    const auto saved = rewriteFile(native(), rewriteCase.path(), before, withByte(rewriteCase.forward(), 'B'));
    QCOMPARE(saved.error().code, ErrorCode::ChangedMeanwhile);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
}

QTEST_GUILESS_MAIN(TestTwoWriters)
#include "tst_twowriters.moc"
