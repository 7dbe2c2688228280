// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a program killed while it copies or moves 500 files, at any of 200 random moments, loses none of them and
// leaves none half-written under its final name.

#include "core/files/operations/transfer.h"
#include "core/storage/safewrite.h"

#include "support/filesteps.h"
#include "support/filetree.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>

#include <sys/wait.h>

#include <csignal>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestTransferKill : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killed_data();
    void killed();

private:
    static constexpr int FileCount = 500;

    static QByteArray content(int number) { return pattern(200 + number * 7, quint32(number)); }
    static QString nameOf(int number) { return u"%1.mp3"_s.arg(number); }
    /// Runs the transfer in a process that is killed after that many nanoseconds. Returns whether that was before its
    /// end.
    bool runKilled(TransferKind kind, qint64 nanoseconds) const;
    QStringList sources() const;
    bool checkNothingLost(TransferKind kind) const;
    void startAnew(const QString &base, const QString &other);

    bool m_asFolder = false;
    QString m_from;
    QString m_to;
};

void TestTransferKill::killed_data()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::addColumn<bool>("asFolder");
    QTest::addColumn<int>("kills");
    QTest::newRow("copy files") << TransferKind::Copy << false << 60;
    QTest::newRow("copy a folder") << TransferKind::Copy << true << 30;
    QTest::newRow("move files") << TransferKind::Move << false << 70;
    QTest::newRow("move a folder") << TransferKind::Move << true << 40;
}

/// All sources, complete, and an empty target.
void TestTransferKill::startAnew(const QString &base, const QString &other)
{
    m_from = base + u"/from"_s;
    m_to = other + u"/to"_s;
    QDir(m_to).removeRecursively();
    QDir().mkpath(m_to);
    for (int number = 0; number < FileCount; ++number) { // the files present were checked before
        const QString path = m_from + u'/' + nameOf(number);
        if (!platform::isTaken(path))
            writeFile(path, content(number));
    }
}

QStringList TestTransferKill::sources() const
{
    if (m_asFolder)
        return platform::isTaken(m_from) ? QStringList{m_from} : QStringList();
    QStringList left;
    for (int number = 0; number < FileCount; ++number) {
        if (platform::isTaken(m_from + u'/' + nameOf(number)))
            left.append(m_from + u'/' + nameOf(number));
    }
    return left;
}

bool TestTransferKill::runKilled(TransferKind kind, qint64 nanoseconds) const
{
    const QStringList what = sources();
    const pid_t child = ::fork();
    if (child < 0)
        qFatal("cannot fork");
    if (child == 0) {
        platform::FileSystem &fileSystem = platform::FileSystem::native();
        const auto plan = makeTransferPlan(fileSystem, {kind, what, m_to});
        if (plan)
            runTransfer(fileSystem, *plan); // a file already there is a clash without an answer
        std::_Exit(0);
    }
    const timespec time{
        static_cast<time_t>(nanoseconds / 1'000'000'000), static_cast<long>(nanoseconds % 1'000'000'000)};
    ::nanosleep(&time, nullptr);
    ::kill(child, SIGKILL);
    int status = 0;
    if (::waitpid(child, &status, 0) != child)
        qFatal("cannot wait");
    return WIFSIGNALED(status);
}

bool TestTransferKill::checkNothingLost(TransferKind kind) const
{
    const QString target = m_asFolder ? m_to + u"/from"_s : m_to;
    const Snapshot from = snapshotOf(m_from);
    const Snapshot to = snapshotOf(target);
    int whole = 0;
    for (int number = 0; number < FileCount; ++number) {
        const QByteArray expected = "file " + content(number);
        const QByteArray there = to.value(nameOf(number));
        if (!there.isEmpty() && there != expected) {
            qWarning("half-written: %d", number);
            return false;
        }
        whole += there == expected ? 1 : 0;
        const QByteArray here = from.value(nameOf(number));
        if (here != expected && !(kind == TransferKind::Move && here.isEmpty() && there == expected)) {
            qWarning("lost: %d", number);
            return false;
        }
    }
    const bool isAllOrNothing = !m_asFolder || whole == 0 || whole == FileCount;
    const Snapshot all = snapshotOf(m_to);
    const bool noStrays = std::all_of(all.keyBegin(), all.keyEnd(), [&](const QString &name) {
        return storage::isLeftoverName(name.section(u'/', 0, 0)) || to.contains(name) || name.startsWith(u"from"_s);
    });
    return isAllOrNothing && noStrays;
}

void TestTransferKill::killed()
{
    QFETCH(TransferKind, kind);
    QFETCH(bool, asFolder);
    QFETCH(int, kills);
    m_asFolder = asFolder;
    const QTemporaryDir folder;
    const OtherDrive drive; // on one drive a move is a rename and can't be interrupted
    const QString other = drive.isOther() ? drive.path() : folder.filePath(u"other"_s);

    startAnew(folder.path(), other);
    QElapsedTimer timer;
    timer.start();
    const auto plan = makeTransferPlan(platform::FileSystem::native(), {kind, sources(), m_to});
    QVERIFY(runTransfer(platform::FileSystem::native(), *plan).isComplete());
    const qint64 duration = timer.nsecsElapsed();

    // Start each anew: a killed one leaves less to do, and the next would end before it is killed.
    int killedAtWork = 0;
    for (int kill = 0; kill < kills; ++kill) {
        startAnew(folder.path(), other);
        const qint64 moment = static_cast<qint64>(QRandomGenerator::global()->generateDouble() * double(duration));
        killedAtWork += runKilled(kind, moment) ? 1 : 0;
        QVERIFY2(checkNothingLost(kind), qPrintable(u"after %1 ns of %2"_s.arg(moment).arg(duration)));
        QVERIFY(storage::cleanLeftovers(platform::FileSystem::native(), m_to));
        QVERIFY(!holdsUnfinishedFile(m_to));
    }
    // Once more on what the last kill left: it is no obstacle.
    const auto rest = makeTransferPlan(platform::FileSystem::native(), {kind, sources(), m_to});
    QVERIFY(rest);
    QVERIFY(runTransfer(platform::FileSystem::native(), *rest).failures.empty());
    QVERIFY(checkNothingLost(kind));
    qInfo("%d of %d were killed at work", killedAtWork, kills);
    QVERIFY(killedAtWork > 0);
}

QTEST_GUILESS_MAIN(TestTransferKill)

#include "tst_transferkill.moc"
