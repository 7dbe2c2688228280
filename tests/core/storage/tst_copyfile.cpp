// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a copy gets its final name only once it is complete, verified and on the disk; before that, and after any
// failure or stop, nothing of it stays. A source that changes meanwhile, and a copy that reads back differently, are
// errors. Content, time and permissions are those of the source, which is left as it is.

#include "core/platform/scratchfolder.h"
#include "core/storage/copyfile.h"
#include "support/faultyfilesystem.h"
#include "support/filetree.h"

#include <QtTest>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using namespace Qt::StringLiterals;
using ravlin::test::Call;
using ravlin::test::Fault;
using ravlin::test::FaultyFileSystem;
using ravlin::test::infoOf;
using ravlin::test::MakesLinks;
using ravlin::test::ScratchFolder;

namespace {

constexpr qsizetype Megabyte = 1024 * 1024;

FileSystem &native()
{
    return FileSystem::native();
}

QByteArray sample(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = 3;
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

} // namespace

class TestCopyFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void copiesContentTimeAndPermissions_data();
    void copiesContentTimeAndPermissions();
    void itsNameComesLast();
    void aTakenNameIsKeptOrReplaced();
    void progressAddsUpToTheSize();
    void aStopLeavesNothing();
    void aLinkIsNotAFile();
    void aSourceThatChangesIsNoticed_data();
    void aSourceThatChangesIsNoticed();
    void aSourceInAReplacedFolderIsNoticed();
    void aWrongCopyIsNoticed_data();
    void aWrongCopyIsNoticed();
    void afterAFailureNothingStays_data();
    void afterAFailureNothingStays();

private:
    QString source(const QByteArray &content) const { return m_from->write(u"song.mp3"_s, content); }
    QString target() const { return m_to->path(u"copy.mp3"_s); }
    Result<FileCopy> prepared(const CopyWatch &watch = {}, FileSystem &fileSystem = native()) const
    {
        return prepareCopy(fileSystem, m_from->path(u"song.mp3"_s), watch);
    }

    Result<FileCopy> prepareCopy(FileSystem &fileSystem, const QString &from, const CopyWatch &watch) const
    {
        const auto folder = fileSystem.openFolder(m_to->path());
        return placeAt(fileSystem, from).and_then([&](const Place &place) {
            return FileCopy::prepare(place, *folder, watch);
        });
    }

    std::optional<ScratchFolder> m_from;
    std::optional<ScratchFolder> m_to;
};

void TestCopyFile::init()
{
    m_from.emplace();
    m_to.emplace();
}

void TestCopyFile::copiesContentTimeAndPermissions_data()
{
    QTest::addColumn<int>("size");
    QTest::newRow("empty") << 0;
    QTest::newRow("one byte") << 1;
    QTest::newRow("two ends that overlap") << 100'000;
    QTest::newRow("two ends apart") << 200'000;
    QTest::newRow("several steps") << int(9 * Megabyte + 1);
}

void TestCopyFile::copiesContentTimeAndPermissions()
{
    QFETCH(int, size);
    const QByteArray content = sample(size);
    const QString path = source(content);
    constexpr qint64 Modified = 1'000'000'000'000'000'000;
    QVERIFY((*native().open(path, OpenMode::ReadWrite))->setModified(Modified));
    QVERIFY(ravlin::test::setPermissions(path, 0640));
    const FileInfo before = infoOf(path);
    {
        auto copy = prepared();
        QVERIFY(copy && copy->secure(CopyCheck::Everything) && copy->place(u"copy.mp3"_s, Placing::New));
    }
    QCOMPARE(ScratchFolder::read(target()), content);
    QCOMPARE(infoOf(target()).modified, Modified);
    QCOMPARE(infoOf(target()).permissions, before.permissions);
    QCOMPARE(m_to->names(), QStringList{u"copy.mp3"_s});
    QCOMPARE(ScratchFolder::read(path), content);
    QCOMPARE(infoOf(path).modified, before.modified);
}

void TestCopyFile::itsNameComesLast()
{
    source("content");
    {
        auto copy = prepared();
        QVERIFY(copy);
        QCOMPARE(m_to->names().size(), 1);
        QVERIFY(isTemporaryName(m_to->names().constFirst()));
        QVERIFY(copy->secure(CopyCheck::Ends));
        QVERIFY(!m_to->names().contains(u"copy.mp3"_s));
    }
    QVERIFY(m_to->names().isEmpty()); // it was never placed
}

void TestCopyFile::aTakenNameIsKeptOrReplaced()
{
    source("new");
    m_to->write(u"copy.mp3"_s, "old");
    {
        auto copy = prepared();
        QVERIFY(copy->secure(CopyCheck::Ends));
        QCOMPARE(copy->place(u"copy.mp3"_s, Placing::New).error().code, ErrorCode::AlreadyExists);
    }
    QCOMPARE(ScratchFolder::read(target()), "old");
    auto copy = prepared();
    QVERIFY(copy->secure(CopyCheck::Ends));
    QVERIFY(copy->place(u"copy.mp3"_s, Placing::InPlaceOf));
    QCOMPARE(ScratchFolder::read(target()), "new");
    QCOMPARE(m_to->names(), QStringList{u"copy.mp3"_s});
}

void TestCopyFile::progressAddsUpToTheSize()
{
    source(sample(9 * Megabyte));
    qint64 sum = 0;
    int reports = 0;
    const auto count = [&](qint64 bytes) {
        sum += bytes;
        ++reports;
    };
    QVERIFY(prepared({.advanced = count}));
    QCOMPARE(sum, 9 * Megabyte);
    QVERIFY(reports > 1);
}

void TestCopyFile::aStopLeavesNothing()
{
    source(sample(9 * Megabyte));
    std::stop_source stop;
    int reports = 0;
    const auto stopAtOnce = [&](qint64) {
        ++reports;
        stop.request_stop();
    };
    const auto copy = prepared({.advanced = stopAtOnce, .stop = stop.get_token()});
    QVERIFY(!copy);
    QCOMPARE(copy.error().code, ErrorCode::Cancelled);
    QCOMPARE(reports, 1);
    QVERIFY(m_to->names().isEmpty());
}

void TestCopyFile::aLinkIsNotAFile()
{
    if (!MakesLinks)
        QSKIP("no symbolic links here");
    m_from->write(u"other.mp3"_s, "content");
    QVERIFY(QFile::link(m_from->path(u"other.mp3"_s), m_from->path(u"song.mp3"_s)));
    QCOMPARE(prepared().error().code, ErrorCode::NotAFile);
    QVERIFY(m_to->names().isEmpty());
}

void TestCopyFile::aSourceThatChangesIsNoticed_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<ErrorCode>("code");
    QTest::newRow("longer") << u"longer"_s << ErrorCode::ChangedMeanwhile;
    QTest::newRow("other bytes") << u"other bytes"_s << ErrorCode::ChangedMeanwhile;
    QTest::newRow("another file of that name") << u"another"_s << ErrorCode::ChangedMeanwhile;
    QTest::newRow("renamed") << u"renamed"_s << ErrorCode::NotFound;
}

void TestCopyFile::aSourceThatChangesIsNoticed()
{
    QFETCH(QString, change);
    QFETCH(ErrorCode, code);
    const QString path = source("content");
    {
        auto copy = prepared();
        QVERIFY(copy);
        QTest::qWait(20); // times of files may be as coarse as that
        if (change == u"longer")
            source("content and more");
        else if (change == u"other bytes")
            source("CONTENT");
        else
            QVERIFY(native().renameNew(path, m_from->path(u"other.mp3"_s)));
        if (change == u"another")
            source("content");
        const auto secured = copy->secure(CopyCheck::Everything);
        QVERIFY(!secured);
        QCOMPARE(secured.error().code, code);
        QCOMPARE(secured.error().path, path);
    }
    QVERIFY(m_to->names().isEmpty());
}

void TestCopyFile::aSourceInAReplacedFolderIsNoticed()
{
    if (Separator != u'/')
        QSKIP("a folder that holds an open file cannot be renamed here");
    // The copied file itself is as it was, but it is another that a move would delete.
    const QString disc = m_from->path(u"disc"_s);
    QVERIFY(native().createFolder(disc));
    m_from->write(u"disc/song.mp3"_s, "content");
    auto copy = prepareCopy(native(), inFolder(disc, u"song.mp3"_s), {});
    QVERIFY(copy);
    QVERIFY(native().renameNew(disc, m_from->path(u"former disc"_s)));
    QVERIFY(native().createFolder(disc));
    m_from->write(u"disc/song.mp3"_s, "content");
    const auto secured = copy->secure(CopyCheck::Everything);
    QVERIFY(!secured);
    QCOMPARE(secured.error().code, ErrorCode::ChangedMeanwhile);
}

void TestCopyFile::aWrongCopyIsNoticed_data()
{
    QTest::addColumn<int>("at"); // the wrong byte; -1: one too many
    QTest::addColumn<CopyCheck>("check");
    QTest::addColumn<bool>("isNoticed");
    constexpr int Size = 200'000;
    constexpr int End = 64 * 1024;
    QTest::newRow("first byte") << 0 << CopyCheck::Ends << true;
    QTest::newRow("end of the first end") << End - 1 << CopyCheck::Ends << true;
    QTest::newRow("between the ends") << End << CopyCheck::Ends << false;
    QTest::newRow("start of the last end") << Size - End << CopyCheck::Ends << true;
    QTest::newRow("last byte") << Size - 1 << CopyCheck::Ends << true;
    QTest::newRow("too long") << -1 << CopyCheck::Ends << true;
    QTest::newRow("everything, in the middle") << Size / 2 << CopyCheck::Everything << true;
    QTest::newRow("everything, last byte") << Size - 1 << CopyCheck::Everything << true;
    QTest::newRow("everything, too long") << -1 << CopyCheck::Everything << true;
}

void TestCopyFile::aWrongCopyIsNoticed()
{
    QFETCH(int, at);
    QFETCH(CopyCheck, check);
    QFETCH(bool, isNoticed);
    const QByteArray content = sample(200'000);
    source(content);
    auto copy = prepared();
    QVERIFY(copy);
    {
        const auto file = *native().open(m_to->path(m_to->names().constFirst()), OpenMode::ReadWrite);
        const char wrong = static_cast<char>(at < 0 ? 'x' : ~content.at(at));
        QCOMPARE(file->writeAt(std::span(&wrong, 1), at < 0 ? content.size() : at).value(), 1);
    }
    const auto secured = copy->secure(check);
    QCOMPARE(secured.has_value(), !isNoticed);
    if (isNoticed)
        QCOMPARE(secured.error().code, ErrorCode::VerifyFailed);
}

void TestCopyFile::afterAFailureNothingStays_data()
{
    QTest::addColumn<Call>("call");
    QTest::newRow("open") << Call::Open;
    QTest::newRow("create") << Call::Create;
    QTest::newRow("copy") << Call::Copy;
    QTest::newRow("sync") << Call::Sync;
    QTest::newRow("read") << Call::Read;
    QTest::newRow("rename") << Call::Rename;
}

void TestCopyFile::afterAFailureNothingStays()
{
    QFETCH(Call, call);
    const QString path = source("content");
    FaultyFileSystem fileSystem;
    fileSystem.setPlan({.fault = Fault::Fail, .only = call, .code = ErrorCode::NoSpace});
    {
        auto copy = prepared({}, fileSystem);
        Result<void> done;
        if (copy)
            done =
                copy->secure(CopyCheck::Everything).and_then([&] { return copy->place(u"copy.mp3"_s, Placing::New); });
        else
            done = tl::unexpected(copy.error());
        QVERIFY(fileSystem.hasFired());
        QVERIFY(!done);
        QCOMPARE(done.error().code, ErrorCode::NoSpace);
    }
    QVERIFY(m_to->names().isEmpty());
    QCOMPARE(ScratchFolder::read(path), "content");
}

QTEST_GUILESS_MAIN(TestCopyFile)
#include "tst_copyfile.moc"
