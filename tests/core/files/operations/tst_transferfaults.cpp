// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: whatever call fails, whichever disk is full, whoever interferes, each source or its copy is whole. Nothing
// half-written has a final name, and a source is deleted only after its copy was read back and compared.

#include "core/files/operations/transfer.h"
#include "core/storage/leftovers.h"
#include "core/storage/safewrite.h"

#include "support/faultyfilesystem.h"
#include "support/filesteps.h"
#include "support/mounteddrive.h"

#include <QDir>
#include <QTest>

#include <sys/wait.h>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestTransferFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void anyCallFails_data();
    void anyCallFails();
    void aWrongByteKeepsTheSource();
    void theSourceChangesMeanwhile();
    void aFileComesIntoTheFolderMeanwhile();
    void aSourceThatCanNotBeDeletedIsInBothPlaces();
    void aReplacedFileComesBackIfTheNewOneFails();
    void aFullDisk_data();
    void aFullDisk();
    void anInjectedFullDisk();
    void aReadOnlyTarget();
    void killedAtAnyMoment_data();
    void killedAtAnyMoment();
    void leftoverFoldersStay();

private:
    static constexpr int FileCount = 6;

    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    QString source(int number) const { return in(u"from/%1.mp3"_s.arg(number)); }
    static QByteArray content(int number) { return pattern(70'000 + number, quint32(number)); }
    void makeSources() const;
    void emptyTarget() const;
    QStringList sources() const;
    void checkNothingLost(const TransferReport *report, bool isMove) const;
    TransferReport transfer(
        platform::FileSystem &fileSystem, TransferKind kind, const QStringList &what, const QString &to) const
    {
        const auto plan = makeTransferPlan(platform::FileSystem::native(), {kind, what, to});
        return plan ? runTransfer(fileSystem, *plan) : TransferReport();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OtherDrive> m_drive;
    QString m_to;
};

void TestTransferFaults::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_drive = std::make_unique<OtherDrive>();
    m_to = m_drive->isOther() ? m_drive->path() : in(u"to"_s);
    QDir().mkpath(m_to);
}

void TestTransferFaults::makeSources() const
{
    for (int number = 0; number < FileCount; ++number)
        writeFile(source(number), content(number));
    writeFile(in(u"from/cd/sub/x.mp3"_s), content(100));
    writeFile(in(u"from/cd/y.mp3"_s), content(101));
}

void TestTransferFaults::emptyTarget() const
{
    for (const QString &name : QDir(m_to).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
        const QString path = m_to + u'/' + name;
        QVERIFY(QFileInfo(path).isDir() ? QDir(path).removeRecursively() : QFile::remove(path));
    }
}

QStringList TestTransferFaults::sources() const
{
    QStringList all;
    for (int number = 0; number < FileCount; ++number)
        all.append(source(number));
    return all << in(u"from/cd"_s);
}

void TestTransferFaults::checkNothingLost(const TransferReport *report, bool isMove) const
{
    const Snapshot from = snapshotOf(in(u"from"_s));
    const Snapshot to = snapshotOf(m_to);
    Snapshot expected;
    for (int number = 0; number < FileCount; ++number)
        expected.insert(u"%1.mp3"_s.arg(number), "file " + content(number));
    expected.insert(u"cd"_s, "folder");
    expected.insert(u"cd/sub"_s, "folder");
    expected.insert(u"cd/sub/x.mp3"_s, "file " + content(100));
    expected.insert(u"cd/y.mp3"_s, "file " + content(101));
    for (auto entry = expected.cbegin(); entry != expected.cend(); ++entry) {
        const QByteArray there = to.value(entry.key());
        QVERIFY2(there.isEmpty() || there == *entry, qPrintable(u"half-written: "_s + entry.key()));
        QVERIFY2(
            from.value(entry.key()) == *entry || (isMove && there == *entry), qPrintable(u"lost: "_s + entry.key()));
    }
    // A folder is there completely or not at all.
    QCOMPARE(to.contains(u"cd"_s), to.contains(u"cd/y.mp3"_s) && to.contains(u"cd/sub/x.mp3"_s));
    for (const QString &name : to.keys()) {
        const QString top = name.section(u'/', 0, 0);
        QVERIFY2(expected.contains(name) || storage::isLeftoverName(top), qPrintable(u"stray: "_s + name));
    }
    if (!report)
        return;
    QCOMPARE(report->done.size() >= size_t(1) || !report->failures.empty(), true);
    for (const FileFailure &failure : report->failures)
        QVERIFY2(!failure.error.path.contains(u".ravlin-"_s), qPrintable(failure.error.path));
    // Each source counts once.
    QCOMPARE(
        report->doneCount() + qsizetype(report->failures.size() + report->inBothPlaces.size()) + report->notDone.size(),
        FileCount + 1);
    for (const TransferStep &step : report->done)
        QCOMPARE(platform::isTaken(step.source), !step.isMove);
}

void TestTransferFaults::anyCallFails_data()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::addColumn<Fault>("fault");
    QTest::newRow("copy, failing") << TransferKind::Copy << Fault::Fail;
    QTest::newRow("copy, failing half-way") << TransferKind::Copy << Fault::FailLater;
    QTest::newRow("copy, short") << TransferKind::Copy << Fault::Short;
    QTest::newRow("move, failing") << TransferKind::Move << Fault::Fail;
    QTest::newRow("move, failing half-way") << TransferKind::Move << Fault::FailLater;
}

void TestTransferFaults::anyCallFails()
{
    QFETCH(TransferKind, kind);
    QFETCH(Fault, fault);
    bool fired = true;
    int at = 0;
    for (; fired && at < 2000; ++at) {
        makeSources();
        FaultyFileSystem faulty;
        faulty.setPlan({.fault = fault, .at = at});
        const TransferReport report = transfer(faulty, kind, sources(), m_to);
        fired = faulty.hasFired();
        checkNothingLost(&report, kind == TransferKind::Move);
        if (QTest::currentTestFailed())
            return;
        if (!fired) {
            QVERIFY(report.isComplete());
            QCOMPARE(report.done.size(), std::size_t(FileCount + 1));
        }
        QVERIFY(QDir(in(u"from"_s)).removeRecursively());
        emptyTarget();
    }
    QVERIFY2(at > 50, qPrintable(QString::number(at))); // it did fail one call after another
}

void TestTransferFaults::aWrongByteKeepsTheSource()
{
    if (!m_drive->isOther())
        QSKIP("there is no second file system to write to");
    makeSources();
    FaultyFileSystem faulty;
    faulty.setPlan({.fault = Fault::Corrupt, .at = 2, .only = Call::Copy});
    const TransferReport report = transfer(faulty, TransferKind::Move, sources(), m_to);
    QVERIFY(faulty.hasFired());
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, ErrorCode::VerifyFailed);
    QCOMPARE(report.failures[0].path, source(2));
    checkNothingLost(&report, true);
    QVERIFY(contentOf(source(2)) == content(2));
    QVERIFY(!platform::isTaken(m_to + u"/2.mp3"_s));
}

void TestTransferFaults::theSourceChangesMeanwhile()
{
    if (!m_drive->isOther())
        QSKIP("there is no second file system to write to");
    makeSources();
    FaultyFileSystem faulty;
    bool isChanged = false;
    faulty.beforeCall = [&](Call call) {
        if (call == Call::Sync && !isChanged) {
            isChanged = true;
            writeFile(source(0), "somebody's new version");
        }
    };
    const TransferReport report = transfer(faulty, TransferKind::Move, {source(0)}, m_to);
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, ErrorCode::ChangedMeanwhile);
    QCOMPARE(contentOf(source(0)), QByteArray("somebody's new version"));
    QVERIFY(snapshotOf(m_to).isEmpty());
}

void TestTransferFaults::aFileComesIntoTheFolderMeanwhile()
{
    if (!m_drive->isOther())
        QSKIP("there is no second file system to write to");
    makeSources();
    FaultyFileSystem faulty;
    faulty.beforeCall = [&](Call call) {
        if (call == Call::RemoveFolder)
            writeFile(in(u"from/cd/sub/late.mp3"_s), "late");
    };
    const TransferReport report = transfer(faulty, TransferKind::Move, {in(u"from/cd"_s)}, m_to);
    QCOMPARE(report.inBothPlaces.size(), std::size_t(1));
    QCOMPARE(contentOf(in(u"from/cd/sub/late.mp3"_s)), QByteArray("late"));
    QVERIFY(contentOf(m_to + u"/cd/sub/x.mp3"_s) == content(100));
    QVERIFY(!report.done[0].isMove); // not all of the source is gone
}

void TestTransferFaults::aSourceThatCanNotBeDeletedIsInBothPlaces()
{
    if (!m_drive->isOther())
        QSKIP("there is no second file system to write to");
    makeSources();
    FaultyFileSystem faulty;
    faulty.setPlan(
        {.fault = Fault::Fail, .at = 2, .only = Call::Remove, .forEver = true, .code = ErrorCode::AccessDenied});
    const TransferReport report = transfer(faulty, TransferKind::Move, sources(), m_to);
    QVERIFY(report.failures.empty() && report.notDone.isEmpty());
    QVERIFY(!report.isComplete());
    QCOMPARE(report.doneCount(), 2);
    QCOMPARE(report.done.size(), std::size_t(FileCount + 1));
    QCOMPARE(report.inBothPlaces.size(), std::size_t(FileCount - 1));
    QCOMPARE(report.inBothPlaces[0].path, source(2));
    QCOMPARE(report.inBothPlaces[0].error.code, ErrorCode::AccessDenied);
    checkNothingLost(&report, true);
}

void TestTransferFaults::aReplacedFileComesBackIfTheNewOneFails()
{
    writeFile(in(u"from/0.mp3"_s), "new");
    writeFile(in(u"to/0.mp3"_s), "old");
    auto plan = makeTransferPlan(platform::FileSystem::native(), {TransferKind::Copy, {source(0)}, in(u"to"_s)});
    QVERIFY(answerClashes(*plan, [](const Clash &) { return ClashDecision{ClashAnswer::Replace}; }));
    FaultyFileSystem faulty;
    faulty.setPlan({.fault = Fault::Fail, .at = 0, .only = Call::Rename, .forEver = true});
    const TransferReport report = runTransfer(faulty, *plan);
    QVERIFY(faulty.hasFired());
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(snapshotOf(in(u"to"_s)), (Snapshot{{u"0.mp3"_s, "file old"}}));
}

void TestTransferFaults::aFullDisk_data()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::newRow("copy") << TransferKind::Copy;
    QTest::newRow("move") << TransferKind::Move;
}

void TestTransferFaults::aFullDisk()
{
    QFETCH(TransferKind, kind);
    const MountedDrive small(in(u"small"_s), "3m");
    if (!small.isMounted())
        QSKIP("mounting a drive is not permitted");
    QStringList all;
    for (int number = 0; number < 5; ++number) {
        all.append(source(number));
        writeFile(all.back(), pattern(1'000'000, quint32(number)));
    }
    writeFile(in(u"from/cd/big.mp3"_s), pattern(2'900'000, 9));
    all.append(in(u"from/cd"_s));
    const TransferReport report = transfer(platform::FileSystem::native(), kind, all, small.path());
    QVERIFY(!report.failures.empty());
    QCOMPARE(report.failures[0].error.code, ErrorCode::NoSpace);
    QVERIFY(!report.done.empty());
    QCOMPARE(report.done.size() + report.failures.size() + size_t(report.notDone.size()), size_t(all.size()));
    QVERIFY(report.notDone.contains(in(u"from/cd"_s))); // not tried once the drive is full
    QCOMPARE(snapshotOf(small.path()).size(), qsizetype(report.done.size()));
    for (int number = 0; number < 5; ++number) {
        const QByteArray expected = pattern(1'000'000, quint32(number));
        const QByteArray there = contentOf(small.path() + u"/%1.mp3"_s.arg(number));
        QVERIFY(there == expected || (there == "(none)" && contentOf(source(number)) == expected));
    }
    // A folder that does not fit leaves nothing behind.
    const TransferReport folder = transfer(platform::FileSystem::native(), kind, {in(u"from/cd"_s)}, small.path());
    QCOMPARE(folder.failures[0].error.code, ErrorCode::NoSpace);
    QCOMPARE(snapshotOf(small.path()).size(), qsizetype(report.done.size()));
    QVERIFY(contentOf(in(u"from/cd/big.mp3"_s)) == pattern(2'900'000, 9));
}

void TestTransferFaults::anInjectedFullDisk()
{
    if (!m_drive->isOther())
        QSKIP("there is no second file system to write to");
    makeSources();
    FaultyFileSystem faulty;
    faulty.setPlan({.fault = Fault::Fail, .at = 3, .only = Call::Copy, .forEver = true});
    const TransferReport report = transfer(faulty, TransferKind::Move, sources(), m_to);
    QCOMPARE(report.done.size(), std::size_t(3));
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, ErrorCode::NoSpace);
    QCOMPARE(report.notDone.size(), FileCount + 1 - 4);
    checkNothingLost(&report, true);
}

void TestTransferFaults::aReadOnlyTarget()
{
    MountedDrive drive(in(u"drive"_s), "1m");
    if (!drive.isMounted() || !drive.makeReadOnly())
        QSKIP("mounting a drive is not permitted");
    makeSources();
    const TransferReport report = transfer(platform::FileSystem::native(), TransferKind::Move, sources(), drive.path());
    QCOMPARE(report.failures.size(), std::size_t(1)); // told once, and nothing further is tried
    QCOMPARE(report.failures[0].error.code, ErrorCode::ReadOnlyDrive);
    QCOMPARE(report.notDone.size(), FileCount);
    for (int number = 0; number < FileCount; ++number)
        QVERIFY(contentOf(source(number)) == content(number));
}

void TestTransferFaults::killedAtAnyMoment_data()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::addColumn<Fault>("fault");
    QTest::newRow("copy, before a call") << TransferKind::Copy << Fault::Die;
    QTest::newRow("copy, after a call") << TransferKind::Copy << Fault::DieAfter;
    QTest::newRow("move, before a call") << TransferKind::Move << Fault::Die;
    QTest::newRow("move, after a call") << TransferKind::Move << Fault::DieAfter;
}

void TestTransferFaults::killedAtAnyMoment()
{
    QFETCH(TransferKind, kind);
    QFETCH(Fault, fault);
    int status = FaultyFileSystem::DeathStatus;
    int at = 0;
    for (; status == FaultyFileSystem::DeathStatus && at < 2000; at += 3) {
        makeSources();
        const pid_t child = ::fork();
        QVERIFY(child >= 0);
        if (child == 0) {
            FaultyFileSystem faulty;
            faulty.setPlan({.fault = fault, .at = at});
            transfer(faulty, kind, sources(), m_to);
            std::_Exit(0);
        }
        int waited = 0;
        QCOMPARE(::waitpid(child, &waited, 0), child);
        QVERIFY(WIFEXITED(waited));
        status = WEXITSTATUS(waited);
        checkNothingLost(nullptr, kind == TransferKind::Move);
        if (QTest::currentTestFailed())
            return;
        // The next start removes the unfinished files that were left, and nothing else.
        QVERIFY(storage::cleanLeftovers(platform::FileSystem::native(), m_to));
        QVERIFY(!holdsUnfinishedFile(m_to));
        checkNothingLost(nullptr, kind == TransferKind::Move);
        QDir(in(u"from"_s)).removeRecursively();
        emptyTarget();
    }
    QCOMPARE(status, 0);
    QVERIFY2(at > 50, qPrintable(QString::number(at)));
}

void TestTransferFaults::leftoverFoldersStay()
{
    platform::FileSystem &native = platform::FileSystem::native();
    auto used = storage::TemporaryFolder::create(*native.openFolder(m_to));
    QVERIFY(used);
    writeFile(used->path() + u"/a.mp3"_s, "a");
    const QString stale = m_to + u"/.ravlin-0123456789abcdef.tmp"_s;
    writeFile(stale + u"/sub/b.mp3"_s, "b");
    const QString link = m_to + u"/.ravlin-0123456789abcdee.tmp"_s;
    writeFile(in(u"precious/c.mp3"_s), "c");
    makeLink(QFile::encodeName(in(u"precious"_s)), link);
    QCOMPARE(storage::cleanLeftovers(native, m_to).value(), 0);
    QCOMPARE(contentOf(stale + u"/sub/b.mp3"_s), QByteArray("b"));
    QCOMPARE(contentOf(used->path() + u"/a.mp3"_s), QByteArray("a"));
    QCOMPARE(contentOf(in(u"precious/c.mp3"_s)), QByteArray("c"));
}

QTEST_GUILESS_MAIN(TestTransferFaults)

#include "tst_transferfaults.moc"
