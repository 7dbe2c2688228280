// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: makeContent accepts only segments that fit the old file and brings them into their simplest form.
// findChange finds the smallest change, calls it a block only if one write inside a block makes it, and reads no more
// than it needs. What writeContent writes, holdsContent finds; it misses no wrong new byte and no wrong end of a kept
// range.

#include "core/platform/scratchfolder.h"
#include "core/storage/writeplan.h"
#include "support/faultyfilesystem.h"

#include <QtTest>

#include <algorithm>
#include <limits>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using ravlin::test::Call;
using ravlin::test::Fault;
using ravlin::test::FaultyFileSystem;
using ravlin::test::ScratchFolder;

Q_DECLARE_METATYPE(std::vector<ravlin::storage::Segment>)
Q_DECLARE_METATYPE(ravlin::storage::Change::Kind)

namespace {

constexpr qint64 Block = AtomicBlockSize;

/// Bytes of which no two neighbouring blocks are alike.
QByteArray sample(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 7;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

QByteArray flipped(QByteArray bytes, qsizetype at)
{
    bytes[at] = static_cast<char>(~bytes.at(at));
    return bytes;
}

bool isSame(const Segment &one, const Segment &other)
{
    return one.bytes == other.bytes && one.oldOffset == other.oldOffset && one.length == other.length;
}

} // namespace

class TestWritePlan : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void contentIsInItsSimplestForm_data();
    void contentIsInItsSimplestForm();
    void keptRangesOutOfPlaceAreNoticed_data();
    void keptRangesOutOfPlaceAreNoticed();
    void invalidSegmentsAreRefused_data();
    void invalidSegmentsAreRefused();
    void theSmallestChangeIsFound_data();
    void theSmallestChangeIsFound();
    void onlyAFewBlocksArePatched();
    void noMoreIsReadThanNeeded();
    void aFailedReadIsAnError();
    void writtenContentIsFoundAgain();
    void wrongContentIsNoticed_data();
    void wrongContentIsNoticed();

private:
    std::unique_ptr<File> opened(const QByteArray &content, FileSystem &fileSystem = FileSystem::native())
    {
        return *fileSystem.open(m_folder.write(QStringLiteral("song.mp3"), content), OpenMode::ReadWrite);
    }
    Result<Change> changeOf(const QByteArray &old, const std::vector<Segment> &segments)
    {
        const auto file = opened(old);
        return findChange(*file, old.size(), makeContent(segments, old.size()).value());
    }

    ScratchFolder m_folder;
};

void TestWritePlan::contentIsInItsSimplestForm_data()
{
    QTest::addColumn<std::vector<Segment>>("segments");
    QTest::addColumn<std::vector<Segment>>("simplest");
    using List = std::vector<Segment>;
    QTest::newRow("nothing") << List{} << List{};
    QTest::newRow("empty segments") << List{Segment::fresh({}), Segment::kept(5, 0), Segment::kept(100, 0)} << List{};
    QTest::newRow("adjacent in both") << List{Segment::kept(0, 10), Segment::kept(10, 5), Segment::kept(15, 85)}
                                      << List{Segment::kept(0, 100)};
    QTest::newRow("an empty one in between")
        << List{Segment::kept(0, 10), Segment::fresh({}), Segment::kept(10, 5)} << List{Segment::kept(0, 15)};
    QTest::newRow("a gap in the old file")
        << List{Segment::kept(0, 10), Segment::kept(11, 5)} << List{Segment::kept(0, 10), Segment::kept(11, 5)};
    QTest::newRow("new bytes in between") << List{Segment::kept(0, 10), Segment::fresh("x"), Segment::kept(10, 5)}
                                          << List{Segment::kept(0, 10), Segment::fresh("x"), Segment::kept(10, 5)};
    QTest::newRow("the same range twice")
        << List{Segment::kept(0, 10), Segment::kept(0, 10)} << List{Segment::kept(0, 10), Segment::kept(0, 10)};
}

void TestWritePlan::contentIsInItsSimplestForm()
{
    QFETCH(std::vector<Segment>, segments);
    QFETCH(std::vector<Segment>, simplest);
    const auto content = makeContent(segments, 100);
    QVERIFY(content);
    QVERIFY(std::ranges::equal(content->segments, simplest, isSame));
    qint64 size = 0;
    for (const Segment &segment : simplest)
        size += segment.length;
    QCOMPARE(content->size, size);
}

void TestWritePlan::keptRangesOutOfPlaceAreNoticed_data()
{
    QTest::addColumn<std::vector<Segment>>("segments");
    QTest::addColumn<bool>("stay");
    using List = std::vector<Segment>;
    QTest::newRow("nothing kept") << List{Segment::fresh("new")} << true;
    QTest::newRow("in place") << List{Segment::kept(0, 10), Segment::fresh("12345"), Segment::kept(15, 85)} << true;
    QTest::newRow("moved up") << List{Segment::fresh("1"), Segment::kept(0, 100)} << false;
    QTest::newRow("moved down") << List{Segment::kept(1, 99)} << false;
    QTest::newRow("only the last") << List{Segment::kept(0, 10), Segment::kept(11, 89)} << false;
}

void TestWritePlan::keptRangesOutOfPlaceAreNoticed()
{
    QFETCH(std::vector<Segment>, segments);
    QFETCH(bool, stay);
    QCOMPARE(makeContent(segments, 100).value().keptStayInPlace, stay);
}

void TestWritePlan::invalidSegmentsAreRefused_data()
{
    constexpr qint64 Max = std::numeric_limits<qint64>::max();
    QTest::addColumn<std::vector<Segment>>("segments");
    QTest::addColumn<qint64>("oldSize");
    using List = std::vector<Segment>;
    QTest::newRow("beyond the end") << List{Segment::kept(90, 11)} << qint64(100);
    QTest::newRow("begins beyond the end") << List{Segment::kept(101, 0)} << qint64(100);
    QTest::newRow("an end beyond all numbers") << List{Segment::kept(50, Max)} << qint64(100);
    QTest::newRow("a negative length") << List{Segment::kept(50, -1)} << qint64(100);
    QTest::newRow("a negative offset") << List{Segment{{}, -2, 5}} << qint64(100);
    QTest::newRow("bytes and a range") << List{Segment{"abc", 0, 3}} << qint64(100);
    QTest::newRow("bytes of another length") << List{Segment{"abc", -1, 2}} << qint64(100);
    QTest::newRow("a sum beyond all numbers") << List{Segment::kept(0, Max), Segment::fresh("x")} << Max;
    QTest::newRow("behind a valid one") << List{Segment::kept(0, 100), Segment::kept(100, 1)} << qint64(100);
}

void TestWritePlan::invalidSegmentsAreRefused()
{
    QFETCH(std::vector<Segment>, segments);
    QFETCH(qint64, oldSize);
    const auto content = makeContent(segments, oldSize);
    QVERIFY(!content);
    QCOMPARE(content.error().code, ErrorCode::InvalidArgument);
}

void TestWritePlan::theSmallestChangeIsFound_data()
{
    QTest::addColumn<qint64>("oldSize");
    QTest::addColumn<std::vector<Segment>>("segments");
    QTest::addColumn<Change::Kind>("kind");
    QTest::addColumn<qint64>("offset"); // of a block
    QTest::addColumn<qint64>("oldLength");
    QTest::addColumn<qint64>("newLength");
    const QByteArray old = sample(3 * Block);
    const qint64 size = old.size();
    /// The old file with new bytes at offset that differ from the old ones at their first and last byte.
    const auto over = [&](qint64 offset, qint64 length) {
        const QByteArray bytes = flipped(old.mid(offset, length), 0);
        return std::vector<Segment>{Segment::kept(0, offset),
            Segment::fresh(length > 1 ? flipped(bytes, length - 1) : bytes),
            Segment::kept(offset + length, size - offset - length)};
    };
    const auto followed = [&](qint64 oldSize, qint64 length) {
        return std::vector<Segment>{Segment::kept(0, oldSize), Segment::fresh(QByteArray(length, 'n'))};
    };
    const auto row = [](const char *name, qint64 oldSize, const std::vector<Segment> &segments, Change::Kind kind,
                         qint64 offset = 0, qint64 oldLength = 0, qint64 newLength = 0) {
        QTest::newRow(name) << oldSize << segments << kind << offset << oldLength << newLength;
    };
    row("nothing changed", size, {Segment::kept(0, size)}, Change::None);
    row("equal bytes", size, {Segment::fresh(old)}, Change::None);
    row("shorter", size, {Segment::kept(0, size - 1)}, Change::Elsewhere);
    row("shorter, equal bytes", size, {Segment::fresh(old.left(9))}, Change::Elsewhere);
    row("empty", size, {}, Change::Elsewhere);
    row("one byte", size, over(5000, 1), Change::Block, 5000, 1, 1);
    row("one byte among equal ones", size, {Segment::fresh(flipped(old, 5000))}, Change::Block, 5000, 1, 1);
    row("a whole block", size, over(Block, Block), Change::Block, Block, Block, Block);
    row("over a block's end", size, over(Block - 1, 2), Change::Patches);
    row("in two blocks", size, {Segment::fresh(flipped(flipped(old, 1), 2 * Block))}, Change::Patches);
    row("in two segments of two blocks", size,
        {Segment::fresh(flipped(old.left(9), 8)), Segment::kept(9, 2 * Block),
            Segment::fresh(QByteArray(size - 9 - 2 * Block, 'n'))},
        Change::Patches);
    row("two segments of one block", size,
        {Segment::kept(0, 10), Segment::fresh(flipped(old.mid(10, 2), 0)), Segment::kept(12, 8),
            Segment::fresh(flipped(old.mid(20, 2), 1)), Segment::kept(22, size - 22)},
        Change::Block, 10, 12, 12);
    // The size reaches the disk before the bytes, which are zeros meanwhile.
    row("longer, in the last block", 100, followed(100, 28), Change::Elsewhere);
    row("longer, to the block's end", 100, followed(100, Block - 100), Change::Elsewhere);
    row("longer, in a new block", Block, followed(Block, 128), Change::Elsewhere);
    row("longer and changed", 100, {Segment::fresh(flipped(old.left(100), 99) + "n")}, Change::Elsewhere);
    row("shorter and changed", 100, {Segment::fresh(flipped(old.left(99), 98))}, Change::Elsewhere);
    row("moved", size, {Segment::kept(1, size - 1)}, Change::Elsewhere);
}

void TestWritePlan::theSmallestChangeIsFound()
{
    QFETCH(qint64, oldSize);
    QFETCH(std::vector<Segment>, segments);
    QFETCH(Change::Kind, kind);
    QFETCH(qint64, offset);
    QFETCH(qint64, oldLength);
    QFETCH(qint64, newLength);
    const QByteArray old = sample(oldSize);
    const auto change = changeOf(old, segments);
    QVERIFY(change);
    QCOMPARE(change->kind, kind);
    if (kind == Change::Block) {
        QCOMPARE(change->patches.size(), std::size_t(1));
        QCOMPARE(change->patches.front().offset, offset);
        QCOMPARE(change->patches.front().oldBytes.size(), oldLength);
        QCOMPARE(change->patches.front().newBytes.size(), newLength);
    }
    if (kind != Change::Block && kind != Change::Patches)
        return;
    QByteArray wanted;
    for (const Segment &segment : segments)
        wanted += segment.oldOffset < 0 ? segment.bytes : old.mid(segment.oldOffset, segment.length);
    QByteArray patched = old;
    qint64 lastBlock = -1;
    for (const Patch &patch : change->patches) {
        QCOMPARE(patch.oldBytes, old.mid(patch.offset, patch.oldBytes.size()));
        QCOMPARE(patch.newBytes.size(), patch.oldBytes.size());
        QVERIFY(patch.newBytes.front() != patch.oldBytes.front() && patch.newBytes.back() != patch.oldBytes.back());
        QCOMPARE(patch.offset / Block, (patch.offset + patch.newBytes.size() - 1) / Block);
        QVERIFY(patch.offset / Block > lastBlock);
        lastBlock = patch.offset / Block;
        patched.replace(patch.offset, patch.newBytes.size(), patch.newBytes);
    }
    QCOMPARE(patched, wanted);
}

void TestWritePlan::onlyAFewBlocksArePatched()
{
    const QByteArray old = sample(20 * Block);
    const auto kindFor = [&](qint64 blocks) {
        QByteArray content = old;
        for (qint64 block = 0; block < blocks; ++block)
            content = flipped(content, block * Block + 7);
        return changeOf(old, {Segment::fresh(content)})->kind;
    };
    const auto most = static_cast<qint64>(MostPatches);
    QCOMPARE(kindFor(most), Change::Patches);
    QCOMPARE(kindFor(most + 1), Change::Elsewhere);
}

void TestWritePlan::noMoreIsReadThanNeeded()
{
    const QByteArray old = sample(1024 * 1024);
    QByteArray other = old;
    for (char &byte : other)
        byte = static_cast<char>(~byte);
    FaultyFileSystem fileSystem;
    const auto file = opened(old, fileSystem);
    const auto readsFor = [&](const std::vector<Segment> &segments) {
        fileSystem.setPlan({.at = 1000, .only = Call::Read});
        const auto change = findChange(*file, old.size(), makeContent(segments, old.size()).value());
        return change ? fileSystem.count() : -1;
    };
    QCOMPARE(readsFor({Segment::fresh("n"), Segment::kept(0, old.size())}), 0); // moved: no look can help
    QCOMPARE(readsFor({Segment::kept(0, old.size()), Segment::fresh("n")}), 0); // another size
    QCOMPARE(readsFor({Segment::fresh(old.left(9))}), 0);                       // the same
    QCOMPARE(readsFor({Segment::fresh(other)}), 1);                             // the first chunk has too many blocks
    QVERIFY(readsFor({Segment::fresh(old)}) > 1);
}

void TestWritePlan::aFailedReadIsAnError()
{
    FaultyFileSystem fileSystem;
    const QByteArray old = sample(100);
    const auto file = opened(old, fileSystem);
    fileSystem.setPlan({.fault = Fault::Fail, .only = Call::Read, .code = ErrorCode::Io});
    const auto change = findChange(*file, old.size(), makeContent({Segment::fresh(old)}, old.size()).value());
    QVERIFY(!change);
    QCOMPARE(change.error().code, ErrorCode::Io);
}

void TestWritePlan::writtenContentIsFoundAgain()
{
    const QByteArray old = sample(3 * Block);
    const auto original = opened(old);
    const auto content =
        makeContent({Segment::kept(Block + 5, Block), Segment::fresh("new bytes"), Segment::kept(0, 10)}, old.size());
    const QString path = m_folder.write(QStringLiteral("other.mp3"), "before");
    {
        const auto file = *FileSystem::native().open(path, OpenMode::ReadWrite);
        QVERIFY(writeContent(*file, 6, *original, *content));
        QVERIFY(holdsContent(*file, 6, *original, *content).value());
        QVERIFY(!holdsContent(*file, 5, *original, *content).value());
    }
    QCOMPARE(ScratchFolder::read(path), "before" + old.mid(Block + 5, Block) + "new bytes" + old.left(10));
}

void TestWritePlan::wrongContentIsNoticed_data()
{
    QTest::addColumn<qint64>("at"); // the wrong byte: -1, the last one is missing; behind the end, none
    QTest::addColumn<bool>("isNoticed");
    QTest::newRow("none") << 6 * Block << true;
    QTest::newRow("first new byte") << qint64(0) << true;
    QTest::newRow("a new byte") << qint64(50) << true;
    QTest::newRow("last new byte") << qint64(99) << true;
    QTest::newRow("first kept byte") << qint64(100) << true;
    QTest::newRow("first block's last byte") << 100 + Block - 1 << true;
    QTest::newRow("between the ends") << 100 + Block << false;
    QTest::newRow("last block's first byte") << 100 + 4 * Block << true;
    QTest::newRow("last kept byte") << 100 + 5 * Block - 1 << true;
    QTest::newRow("missing end") << qint64(-1) << true;
}

void TestWritePlan::wrongContentIsNoticed()
{
    QFETCH(qint64, at);
    QFETCH(bool, isNoticed);
    const QByteArray old = sample(5 * Block);
    const auto original = opened(old);
    const auto content = makeContent({Segment::fresh(QByteArray(100, 'n')), Segment::kept(0, 5 * Block)}, old.size());
    const QByteArray right = QByteArray(100, 'n') + old;
    const bool isRight = at >= right.size();
    const QByteArray present = isRight ? right : at < 0 ? right.chopped(1) : flipped(right, at);
    const auto file = *FileSystem::native().open(m_folder.write(QStringLiteral("other.mp3"), present), OpenMode::Read);
    QCOMPARE(holdsContent(*file, 0, *original, *content).value(), isRight || !isNoticed);
}

QTEST_GUILESS_MAIN(TestWritePlan)
#include "tst_writeplan.moc"
