// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: rewriteFile records each change before it makes it, and what became of it. The recorded inverse makes the
// old content of the new one, byte for byte, and keeps no more than what is lost; the new bytes that it does not keep
// are recorded, too. Nothing is recorded of a file that stays as it is. A change in several blocks is made in place
// only under a record.

#include "core/platform/fileio.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/changerecord.h"
#include "core/storage/leftovers.h"
#include "support/fakejournal.h"
#include "support/faultyfilesystem.h"
#include "support/filesteps.h"

#include <QtTest>

#include <random>

#include <unistd.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(std::vector<ravlin::storage::Segment>)

namespace {

FileSystem &native()
{
    return FileSystem::native();
}

QByteArray sample(qsizetype size, quint32 seed = 1)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = seed;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// Bytes that are nearly all alike, as padding is: what is equal may be found at several places.
QByteArray dull(qsizetype size, quint32 seed)
{
    QByteArray bytes = sample(size, seed);
    for (char &byte : bytes)
        byte = byte < -120 ? 'x' : '\0';
    return bytes;
}

QByteArray applied(const QByteArray &old, const std::vector<Segment> &segments)
{
    QByteArray result;
    for (const Segment &segment : segments)
        result += segment.isKept() ? old.mid(segment.oldOffset, segment.length) : segment.bytes;
    return result;
}

qint64 freshBytes(const std::vector<Segment> &segments)
{
    qint64 bytes = 0;
    for (const Segment &segment : segments)
        bytes += segment.bytes.size();
    return bytes;
}

/// The bytes that no kept range of the inverse covers.
QByteArray notCovered(const QByteArray &present, const std::vector<Segment> &inverse)
{
    std::vector<bool> isCovered(static_cast<std::size_t>(present.size()));
    for (const Segment &segment : inverse) {
        for (qint64 at = 0; segment.isKept() && at < segment.length; ++at)
            isCovered[static_cast<std::size_t>(segment.oldOffset + at)] = true;
    }
    QByteArray bytes;
    for (qsizetype at = 0; at < present.size(); ++at) {
        if (!isCovered[static_cast<std::size_t>(at)])
            bytes += present.at(at);
    }
    return bytes;
}

} // namespace

class TestChangeRecord : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordIsTheInverse_data();
    void recordIsTheInverse();
    void anyInverseIsRight();
    void unchangedFileIsNotRecorded();
    void failureIsRecorded();
    void halfWrittenFileStaysOnRecord();
    void withoutARecordNoBlocksArePatched();
    void patchesAreSyncedBeforeTheEnd();
    void temporariesAreAnnounced();
    void unreadableFileIsAnError();
};

void TestChangeRecord::recordIsTheInverse_data()
{
    QTest::addColumn<std::vector<Segment>>("segments");
    QTest::addColumn<int>("way");
    QTest::addColumn<qint64>("lost"); // bytes that the record may keep of the old content
    QTest::addColumn<bool>("isLinked");
    const QByteArray old = sample(20'000);
    const auto kept = [](qint64 offset, qint64 length) { return Segment::kept(offset, length); };
    const auto fresh = [](const QByteArray &bytes) { return Segment::fresh(bytes); };
    const auto row = [](const char *name, const std::vector<Segment> &segments, ContentWay way, qint64 lost,
                         bool isLinked = false) {
        QTest::newRow(name) << segments << static_cast<int>(way) << lost << isLinked;
    };
    const QByteArray tag = sample(300, 9);
    QByteArray one = old;
    one[100] = static_cast<char>(~one.at(100));
    QByteArray two = one;
    two[19'990] = static_cast<char>(~two.at(19'990));
    row("one byte of many", {fresh(one)}, ContentWay::OneStep, 1);
    row("two bytes of many", {fresh(two)}, ContentWay::Patches, 2);
    row("over a block's end", {kept(0, 4000), fresh(tag), kept(4300, 15'700)}, ContentWay::Patches, 300);
    row("cut", {kept(0, 19'872)}, ContentWay::OneStep, 128);
    row("cut to nothing", {}, ContentWay::OneStep, 20'000);
    row("appended", {kept(0, 20'000), fresh(sample(128, 4))}, ContentWay::OneStep, 0);
    row("in front", {fresh(tag), kept(0, 20'000)}, ContentWay::OneStep, 0);
    row("front removed", {kept(1000, 19'000)}, ContentWay::OneStep, 1000);
    row("front replaced", {fresh(tag), kept(1000, 19'000)}, ContentWay::OneStep, 1000);
    row("longer in between, ends alike",
        {kept(0, 50), fresh(old.mid(50, 100) + tag + old.mid(200, 100)), kept(300, 19'700)}, ContentWay::OneStep, 50);
    row("other order", {kept(10'000, 10'000), kept(0, 10'000)}, ContentWay::OneStep, 0);
    row("a range twice", {kept(0, 20'000), kept(0, 20'000)}, ContentWay::OneStep, 0);
    row("overlapping ranges", {kept(0, 12'000), fresh(tag), kept(8000, 12'000)}, ContentWay::OneStep, 0);
    row("all new", {fresh(sample(30'000, 7))}, ContentWay::OneStep, 20'000);
    row("two links", {fresh(tag), kept(0, 20'000)}, ContentWay::Redo, 0, true);
}

void TestChangeRecord::recordIsTheInverse()
{
    QFETCH(std::vector<Segment>, segments);
    QFETCH(int, way);
    QFETCH(qint64, lost);
    QFETCH(bool, isLinked);
    const ScratchFolder folder;
    const QByteArray old = sample(20'000);
    const QString path = folder.write(u"song.mp3"_s, old);
    if (isLinked)
        QCOMPARE(::link(encodePath(path), encodePath(path + u'2')), 0);
    const FileInfo before = infoOf(path);
    const FileIdentity identity = native().open(path, OpenMode::Read).value()->identity().value();
    FakeJournal journal;
    journal.onBegin = [&] { QCOMPARE(ScratchFolder::read(path), old); };
    WriteOptions options{.journal = &journal, .values = {{u"title"_s, u"old"_s, u"new"_s}}};
    QVERIFY(rewriteFile(native(), path, before, segments, options));
    const QByteArray present = ScratchFolder::read(path);
    QCOMPARE(present, applied(old, segments));

    QCOMPARE(journal.kept.size(), std::size_t(1));
    const ChangeRecord &change = journal.kept.front().change;
    QCOMPARE(change.kind, ChangeKind::Content);
    QCOMPARE(static_cast<int>(change.way), way);
    QCOMPARE(change.path, path);
    QVERIFY(change.identity == identity);
    QCOMPARE(change.before.size, before.size);
    QCOMPARE(change.before.modified, before.modified);
    QCOMPARE(change.newSize, present.size());
    QVERIFY(change.values == options.values);
    QCOMPARE(applied(present, change.inverse), old);
    QCOMPARE(freshBytes(change.inverse), lost);
    QCOMPARE(change.written, notCovered(present, change.inverse));

    const auto &done = journal.kept.front().done;
    QVERIFY(done && *done);
    const FileInfo after = infoOf(path);
    QCOMPARE((*done)->after.size, after.size);
    QCOMPARE((*done)->after.modified, after.modified);
    QCOMPARE((*done)->after.inode, after.inode);
    QVERIFY(journal.openTemporaries.empty());
    QCOMPARE(folder.names().size(), isLinked ? 2 : 1);
}

void TestChangeRecord::anyInverseIsRight()
{
    std::mt19937 random(17);
    const auto below = [&](qint64 end) { return std::uniform_int_distribution<qint64>(0, end - 1)(random); };
    const ScratchFolder folder;
    for (int round = 0; round < 1000; ++round) {
        const auto made = round % 2 == 0 ? sample : dull;
        const QByteArray old = made(below(9000) + 1, static_cast<quint32>(round));
        std::vector<Segment> segments;
        for (qint64 count = below(6); count > 0; --count) {
            const qint64 offset = below(old.size());
            const qint64 length = below(old.size() - offset + 1);
            if (below(3) == 0)
                segments.push_back(Segment::fresh(made(below(200), static_cast<quint32>(count))));
            else if (below(2) == 0)
                segments.push_back(Segment::fresh(old.mid(offset, length)));
            else
                segments.push_back(Segment::kept(offset, length));
        }
        const auto file = *native().open(folder.write(u"song.mp3"_s, old), OpenMode::Read);
        const NewContent content = makeContent(segments, old.size()).value();
        const QByteArray present = applied(old, segments);
        const Inverse inverse = inverseOf(*file, old.size(), content).value();
        QCOMPARE(applied(present, inverse.segments), old);
        QCOMPARE(inverse.written, notCovered(present, inverse.segments));
    }
}

void TestChangeRecord::unchangedFileIsNotRecorded()
{
    const ScratchFolder folder;
    const QString path = folder.write(u"song.mp3"_s, sample(5000));
    FakeJournal journal;
    QCOMPARE(rewriteFile(native(), path, infoOf(path), {Segment::fresh(sample(5000))}, {.journal = &journal}).value(),
        WriteOutcome::Unchanged);
    QVERIFY(ravlin::test::setPermissions(path, 0444));
    QVERIFY(!rewriteFile(native(), path, infoOf(path), {Segment::fresh("n")}, {.journal = &journal}));
    QVERIFY(journal.kept.empty() && journal.temporaries.empty());
}

void TestChangeRecord::failureIsRecorded()
{
    const ScratchFolder folder;
    const QString path = folder.write(u"song.mp3"_s, sample(9000));
    FaultyFileSystem faulty;
    faulty.setPlan({.fault = Fault::Corrupt, .only = Call::Write});
    FakeJournal journal;
    QByteArray changed = sample(9000);
    changed[10] = static_cast<char>(~changed.at(10));
    changed[8000] = static_cast<char>(~changed.at(8000));
    const auto failed = rewriteFile(faulty, path, infoOf(path), {Segment::fresh(changed)}, {.journal = &journal});
    QCOMPARE(failed.error().code, ErrorCode::VerifyFailed);
    QCOMPARE(ScratchFolder::read(path), sample(9000));
    const auto &done = journal.kept.at(0).done;
    QVERIFY(done && !*done);
    QCOMPARE(done->error().code, ErrorCode::VerifyFailed);
}

void TestChangeRecord::halfWrittenFileStaysOnRecord()
{
    // All that comes after the first patch fails, and with it the undoing.
    const ScratchFolder folder;
    const QByteArray old = sample(9000);
    const QString path = folder.write(u"song.mp3"_s, old);
    QByteArray changed = old;
    changed[10] = static_cast<char>(~changed.at(10));
    changed[8000] = static_cast<char>(~changed.at(8000));
    FaultyFileSystem faulty;
    faulty.setPlan({.at = 1, .only = Call::Write, .forEver = true});
    FakeJournal journal(folder.path(u"journal"_s));
    const auto failed = rewriteFile(faulty, path, infoOf(path), {Segment::fresh(changed)}, {.journal = &journal});
    QCOMPARE(failed.error().code, ErrorCode::HalfWritten);
    QVERIFY(ScratchFolder::read(path) != old && ScratchFolder::read(path) != changed);
    QVERIFY(!journal.kept.at(0).done);
    QVERIFY(FakeJournal::rollBack(folder.path(u"journal"_s)));
    QCOMPARE(ScratchFolder::read(path), old);
}

void TestChangeRecord::withoutARecordNoBlocksArePatched()
{
    const ScratchFolder folder;
    const QByteArray old = sample(9000);
    const QString path = folder.write(u"song.mp3"_s, old);
    QByteArray changed = old;
    changed[10] = static_cast<char>(~changed.at(10));
    changed[8000] = static_cast<char>(~changed.at(8000));
    FakeJournal journal;
    journal.refuses = true;
    const quint64 inode = infoOf(path).inode;
    QCOMPARE(rewriteFile(native(), path, infoOf(path), {Segment::fresh(changed)}, {.journal = &journal}).value(),
        WriteOutcome::Replaced);
    QCOMPARE(ScratchFolder::read(path), changed);
    QVERIFY(infoOf(path).inode != inode);
    QCOMPARE(rewriteFile(native(), path, infoOf(path), {Segment::fresh(old)}).value(), WriteOutcome::Replaced);
    journal.refuses = false;
    QCOMPARE(rewriteFile(native(), path, infoOf(path), {Segment::fresh(changed)}, {.journal = &journal}).value(),
        WriteOutcome::InPlace);
    QCOMPARE(ScratchFolder::read(path), changed);
}

void TestChangeRecord::patchesAreSyncedBeforeTheEnd()
{
    const ScratchFolder folder;
    const QByteArray old = sample(9000);
    const QString path = folder.write(u"song.mp3"_s, old);
    QByteArray changed = old;
    changed[10] = static_cast<char>(~changed.at(10));
    changed[8000] = static_cast<char>(~changed.at(8000));
    FaultyFileSystem faulty;
    QString calls;
    faulty.beforeCall = [&](Call call) {
        if (call == Call::Write || call == Call::Sync)
            calls += call == Call::Write ? u'w' : u's';
    };
    FakeJournal journal;
    journal.onBegin = [&] { calls += u'b'; };
    QVERIFY(rewriteFile(faulty, path, infoOf(path), {Segment::fresh(changed)}, {.journal = &journal}));
    QCOMPARE(calls, u"bwws"_s);
}

void TestChangeRecord::temporariesAreAnnounced()
{
    const ScratchFolder folder;
    const auto held = *native().openFolder(folder.path());
    FakeJournal journal;
    {
        const auto file = TemporaryFile::create(held, &journal);
        const auto tree = TemporaryFolder::create(held, &journal);
        QCOMPARE(journal.openTemporaries.size(), std::size_t(2));
        QVERIFY(journal.temporaries == (std::vector<QString>{file->path(), tree->path()}));
    }
    QVERIFY(journal.openTemporaries.empty());
    FaultyFileSystem faulty;
    const auto faultyFolder = *faulty.openFolder(folder.path());
    faulty.setPlan({.only = Call::Create, .forEver = true});
    QVERIFY(!TemporaryFile::create(faultyFolder, &journal));
    QVERIFY(journal.openTemporaries.empty());
    faulty.setPlan({.only = Call::Remove, .forEver = true});
    QVERIFY(TemporaryFile::create(faultyFolder, &journal));
    QCOMPARE(journal.openTemporaries.size(), std::size_t(1)); // it could not be removed
}

void TestChangeRecord::unreadableFileIsAnError()
{
    const ScratchFolder folder;
    const QByteArray old = sample(9000);
    const QString path = folder.write(u"song.mp3"_s, old);
    FaultyFileSystem faulty;
    FakeJournal journal;
    faulty.setPlan({.only = Call::Read, .code = ErrorCode::Io});
    QVERIFY(!rewriteFile(faulty, path, infoOf(path), {Segment::kept(1000, 8000)}, {.journal = &journal}));
    QCOMPARE(ScratchFolder::read(path), old);
    QVERIFY(journal.openTemporaries.empty());
}

QTEST_GUILESS_MAIN(TestChangeRecord)
#include "tst_changerecord.moc"
