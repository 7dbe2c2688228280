// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a transfer can be stopped at any moment, even inside a long file, reports its progress, and takes any
// number of files. What was not completed leaves its source whole and nothing at the target.

#include "core/files/operations/transfer.h"

#include "support/filetree.h"

#include <QDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestTransferRun : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void stopped_data() { drives(); }
    void stopped();
    void tellsProgressInBytes();
    void ofManyFiles_data() { drives(); }
    void ofManyFiles();

private:
    static void drives();
    QString target() const;
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    TransferReport run(TransferKind kind, const QStringList &sources, const QString &folder, const Watch &watch = {});

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OtherDrive> m_drive;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
};

void TestTransferRun::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_drive = std::make_unique<OtherDrive>();
    QDir().mkpath(in(u"to"_s));
}

void TestTransferRun::drives()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::addColumn<bool>("toOtherDrive");
    QTest::newRow("copy") << TransferKind::Copy << false;
    QTest::newRow("move") << TransferKind::Move << false;
    QTest::newRow("copy to another drive") << TransferKind::Copy << true;
    QTest::newRow("move to another drive") << TransferKind::Move << true;
}

/// Where the row's files go; empty if there is no other drive.
QString TestTransferRun::target() const
{
    QFETCH(bool, toOtherDrive);
    if (!toOtherDrive)
        return in(u"to"_s);
    return m_drive->isOther() ? m_drive->path() : QString();
}

TransferReport TestTransferRun::run(
    TransferKind kind, const QStringList &sources, const QString &folder, const Watch &watch)
{
    const auto plan = makeTransferPlan(m_fileSystem, {kind, sources, folder});
    return plan ? runTransfer(m_fileSystem, *plan, watch) : TransferReport();
}

void TestTransferRun::stopped()
{
    QFETCH(TransferKind, kind);
    const QString to = target();
    if (to.isEmpty())
        QSKIP("there is no second file system to write to");
    QStringList sources;
    for (int i = 0; i < 5; ++i) {
        sources.append(in(u"%1.mp3"_s.arg(i)));
        writeFile(sources.back(), pattern(10'000'000, quint32(i))); // takes several reports
    }
    writeFile(in(u"cd/a.mp3"_s), "a");
    sources.append(in(u"cd"_s));
    std::stop_source stop;
    const TransferReport report = run(kind, sources, to,
        {[&](const Progress &progress) {
             if (progress.bytesDone > 12'000'000)
                 stop.request_stop();
         },
            stop.get_token()});
    QVERIFY(report.wasStopped);
    QVERIFY(!report.notDone.isEmpty());
    QVERIFY(report.failures.empty());
    QCOMPARE(report.done.size() + size_t(report.notDone.size()), size_t(sources.size()));
    for (const QString &source : report.notDone) {
        QVERIFY(platform::isTaken(source));
        QVERIFY(!platform::isTaken(to + u'/' + platform::nameOf(source)));
    }
    for (const TransferStep &step : report.done) {
        const quint32 seed = platform::nameOf(step.target).left(1).toUInt();
        QVERIFY(contentOf(step.target) == pattern(10'000'000, seed));
    }
    QCOMPARE(snapshotOf(to).size(), qsizetype(report.done.size())); // no leftovers
}

void TestTransferRun::tellsProgressInBytes()
{
    writeFile(in(u"a.mp3"_s), pattern(9'000'000, 1));
    writeFile(in(u"cd/b.mp3"_s), pattern(1'000'000, 2));
    QList<qint64> told;
    Progress last;
    run(TransferKind::Copy, {in(u"a.mp3"_s), in(u"cd"_s)}, in(u"to"_s), {[&](const Progress &progress) {
        told.append(progress.bytesDone);
        last = progress;
    }});
    QVERIFY(std::is_sorted(told.begin(), told.end()));
    QVERIFY(std::any_of(told.begin(), told.end(), [](qint64 bytes) { return bytes > 0 && bytes < 9'000'000; }));
    QCOMPARE(last.bytesTotal, 10'000'000);
    QCOMPARE(last.bytesDone, 10'000'000);
    QCOMPARE(last.done, 2);
    QCOMPARE(last.total, 2);
}

void TestTransferRun::ofManyFiles()
{
    QFETCH(TransferKind, kind);
    const QString to = target();
    if (to.isEmpty())
        QSKIP("there is no second file system to write to");
    QStringList sources;
    for (int i = 0; i < 300; ++i) {
        sources.append(in(u"many/%1.mp3"_s.arg(i)));
        writeFile(sources.back(), pattern(1000 + i, quint32(i)));
        writeFile(in(u"folder/%1.mp3"_s.arg(i)), pattern(500 + i, quint32(i)));
    }
    const Snapshot many = snapshotOf(in(u"many"_s));
    const Snapshot folder = snapshotOf(in(u"folder"_s));
    const TransferReport report = run(kind, sources + QStringList{in(u"folder"_s)}, to);
    QVERIFY(report.isComplete());
    QCOMPARE(report.done.size(), std::size_t(301));
    QVERIFY(snapshotOf(to + u"/folder"_s) == folder);
    for (const QString &source : sources)
        QVERIFY(contentOf(to + u'/' + platform::nameOf(source)) == many.value(platform::nameOf(source)).sliced(5));
    QCOMPARE(snapshotOf(in(u"many"_s)).size(), kind == TransferKind::Copy ? 300 : 0);
}

QTEST_GUILESS_MAIN(TestTransferRun)

#include "tst_transferrun.moc"
