// SPDX-License-Identifier: GPL-3.0-or-later
// A download gets its name only once it is complete, checked and on the disk. After any failure and any cancel nothing
// of it is left, and an older file of that name is untouched.
#include "core/online/update/inetretreive.h"
#include "core/platform/desktop.h"
#include "core/platform/scratchfolder.h"
#include "support/cddbtest.h"
#include "support/faultyfilesystem.h"
#include "support/updateserver.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

using Outcome = UpdateResult<InetRetreive::Downloaded>;

QByteArray someBytes(qsizetype size)
{
    QByteArray bytes(size, '\0');
    quint32 number = 12345;
    for (char &byte : bytes) {
        number = number * 1664525 + 1013904223;
        byte = char(number >> 24);
    }
    return bytes;
}

const QByteArray Content = someBytes(100 * 1024 + 500);

} // namespace

class TestInetRetreive : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<UpdateServer> m_server;

    InetRetreive::Job job(bool replaces = false) const
    {
        return {QUrl(m_server->origin() + u"/f/a.zip"_s), m_folder->path(u"a.zip"_s), replaces};
    }
    void serve(const Served &served) const { m_server->serve("/f/a.zip", served); }
    static Outcome outcomeOf(InetRetreive &download, const InetRetreive::Job &job)
    {
        std::optional<Outcome> outcome;
        download.start(job, [&outcome](const Outcome &result) { outcome = result; });
        if (outcome)
            qFatal("told before it was asked");
        [&] { QVERIFY(waitUntil([&] { return outcome.has_value(); })); }();
        return outcome.value_or(tl::unexpected(UpdateFailure()));
    }
    Outcome downloaded(bool replaces = false) const
    {
        InetRetreive download(platform::FileSystem::native());
        return outcomeOf(download, job(replaces));
    }
    QByteArray file() const { return ScratchFolder::read(m_folder->path(u"a.zip"_s)); }

private Q_SLOTS:
    void initTestCase() { leaveProxiesOut(); }
    void init()
    {
        m_folder = std::make_unique<ScratchFolder>();
        m_server = std::make_unique<UpdateServer>();
    }

    void wholeFiles_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<Serving>("way");
        QTest::newRow("with its length") << Content << Serving::Length;
        QTest::newRow("in chunks") << Content << Serving::Chunked;
        QTest::newRow("whole chunks") << someBytes(4096) << Serving::Length;
        QTest::newRow("one byte") << QByteArray("x") << Serving::Length;
        QTest::newRow("nothing") << QByteArray() << Serving::Length;
        QTest::newRow("several megabytes") << someBytes(20'000'001) << Serving::Length;
    }
    void wholeFiles()
    {
        QFETCH(QByteArray, content);
        QFETCH(Serving, way);
        serve({.content = content, .way = way});
        InetRetreive download(platform::FileSystem::native());
        const InetRetreive::Downloaded downloaded = outcomeOf(download, job()).value();
        QCOMPARE(downloaded.path, m_folder->path(u"a.zip"_s));
        QVERIFY(!downloaded.isChecked);
        QVERIFY(file() == content);
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
        QCOMPARE(infoOf(downloaded.path).permissions, platform::newFilePermissions());
        QCOMPARE(download.progress().isTotalKnown(), way == Serving::Length);
        const qint64 chunks = (content.size() + 1023) / 1024;
        if (way == Serving::Length)
            QCOMPARE(download.progress().received(), chunks * 1024);
        QVERIFY(!download.isBusy());
        QCOMPARE(m_server->requests(), (QByteArrayList{"/f/a.zip", "/f/a.zip.sha256"}));
    }

    void theProgressIsTold()
    {
        serve({.content = Content, .way = Serving::Gated});
        InetRetreive download(platform::FileSystem::native());
        download.setLeadingText(u"status: "_s);
        QStringList texts;
        QList<int> states;
        int sizes = 0;
        connect(&download, &InetRetreive::sizeTold, this, [&] { ++sizes; });
        connect(&download, &InetRetreive::progressed, this, [&] { texts << download.progressText(); });
        connect(&download, &InetRetreive::stateChanged, this, [&](ConnectionState state) { states << int(state); });
        std::optional<Outcome> outcome;
        download.start(job(), [&outcome](const Outcome &result) { outcome = result; });
        QTRY_COMPARE_WITH_TIMEOUT(sizes, 1, PatientWait);
        QCOMPARE(download.progress().firstText(), u"0 bytes of 102900 bytes"_s);
        QCOMPARE(states, (QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 12}));
        m_server->allow(1023); // not a whole chunk
        m_server->allow(51200);
        QTRY_COMPARE_WITH_TIMEOUT(download.progress().received(), 51200, PatientWait);
        QCOMPARE(texts.last(), u"status: (0.05 MB of 0.10 MB)"_s);
        QCOMPARE(download.progress().percentText(), u"50%"_s);
        QVERIFY(!outcome);
        m_server->allow(Content.size());
        QTRY_VERIFY_WITH_TIMEOUT(outcome, PatientWait);
        QVERIFY(outcome->has_value());
        QCOMPARE(download.progress().received(), 103424); // the last chunk counts as a whole one
        QCOMPARE(download.progress().value(), Content.size());
        QCOMPARE(sizes, 1);
        QCOMPARE(states, (QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 12, 9, 10}));
    }

    void webFailures_data()
    {
        QTest::addColumn<Served>("served");
        QTest::addColumn<WebFailureKind>("kind");
        using enum WebFailureKind;
        const auto row = [](const char *name, Serving way, WebFailureKind kind) {
            QTest::newRow(name) << Served{.content = Content, .way = way} << kind;
        };
        row("hangs up", Serving::HangsUp, Incomplete);
        row("cut off", Serving::CutOff, Incomplete);
        row("cut off in chunks", Serving::CutChunked, Incomplete);
        row("cut off in the headers", Serving::CutHead, Incomplete);
        row("announces too much", Serving::Enormous, TooLarge);
        row("no length, no chunks, no checksum: nothing tells whether it is whole", Serving::Unmarked, Incomplete);
        QTest::newRow("not found") << Served{.content = "<html>", .way = Serving::Status, .status = "404 Not Found"}
                                   << HttpStatus;
        QTest::newRow("server error") << Served{.content = "<html>", .way = Serving::Status, .status = "500 Oh"}
                                      << HttpStatus;
        QTest::newRow("redirects for ever") << Served{.way = Serving::Redirect, .goal = "/f/a.zip"} << TooManyRedirects;
        QTest::newRow("redirects to a file")
            << Served{.way = Serving::Redirect, .goal = "file:///etc/hostname"} << ForeignRedirect;
    }
    void webFailures()
    {
        QFETCH(Served, served);
        QFETCH(WebFailureKind, kind);
        serve(served);
        const UpdateFailure failure = downloaded().error();
        QCOMPARE(failure.kind, UpdateFailureKind::Web);
        QCOMPARE(failure.web, kind);
        QCOMPARE(m_folder->names(), QStringList());
    }

    void brokenAnswersLeaveNothing_data()
    {
        QTest::addColumn<Serving>("way");
        QTest::newRow("garbage instead of HTTP") << Serving::Garbage;
        QTest::newRow("chunks without sizes") << Serving::BrokenCoding;
    }
    void brokenAnswersLeaveNothing()
    {
        QFETCH(Serving, way);
        serve({.content = Content, .way = way});
        QCOMPARE(downloaded().error().kind, UpdateFailureKind::Web);
        QCOMPARE(m_folder->names(), QStringList());
    }

    void nothingBehindTheAnnouncedLengthIsTaken()
    {
        serve({.content = Content, .way = Serving::Overlong});
        QVERIFY(downloaded().has_value());
        QVERIFY(file() == Content.left(Content.size() / 2));
    }

    void anEndlessFileEndsAtTheLimit()
    {
        serve({.way = Serving::Endless});
        InetRetreive download(platform::FileSystem::native());
        FetchSettings settings = download.settings();
        settings.sizeLimit = 1'000'000;
        download.setSettings(settings);
        QCOMPARE(outcomeOf(download, job()).error().web, WebFailureKind::TooLarge);
        QCOMPARE(m_folder->names(), QStringList());
    }

    void lateAnswers_data()
    {
        QTest::addColumn<Serving>("way");
        QTest::addColumn<bool>("isIdle");
        QTest::newRow("never answers, idle") << Serving::Silence << true;
        QTest::newRow("stops in the middle, idle") << Serving::Stalls << true;
        QTest::newRow("never answers, in all") << Serving::Silence << false;
        QTest::newRow("stops in the middle, in all") << Serving::Stalls << false;
    }
    void lateAnswers()
    {
        QFETCH(Serving, way);
        QFETCH(bool, isIdle);
        serve({.content = Content, .way = way});
        InetRetreive download(platform::FileSystem::native());
        FetchSettings settings = download.settings();
        (isIdle ? settings.idleLimit : settings.timeLimit) = std::chrono::milliseconds(200);
        download.setSettings(settings);
        QCOMPARE(outcomeOf(download, job()).error().web, WebFailureKind::TimedOut);
        QCOMPARE(m_folder->names(), QStringList());
        QVERIFY(waitUntil([&] { return m_server->openConnections() == 0; }));
    }

    void theServerIsStoppedInTheMiddle()
    {
        serve({.content = Content, .way = Serving::Gated});
        InetRetreive download(platform::FileSystem::native());
        std::optional<Outcome> outcome;
        download.start(job(), [&outcome](const Outcome &result) { outcome = result; });
        m_server->allow(51200);
        QTRY_COMPARE_WITH_TIMEOUT(download.progress().received(), 51200, PatientWait);
        QCOMPARE(m_folder->names().size(), 1); // the temporary file
        QVERIFY(m_folder->names().first() != u"a.zip"_s);
        m_server->stop();
        QTRY_VERIFY_WITH_TIMEOUT(outcome, PatientWait);
        QCOMPARE(outcome->error().kind, UpdateFailureKind::Web);
        QCOMPARE(m_folder->names(), QStringList());
    }

    void cancelAtAnyMomentLeavesNothingBehind_data()
    {
        QTest::addColumn<Serving>("way");
        QTest::addColumn<Serving>("checksum");
        QTest::addColumn<qint64>("received");
        QTest::addColumn<bool>("isDestroyed");
        for (const bool isDestroyed : {false, true}) {
            const char *end = isDestroyed ? "destroyed" : "cancelled";
            QTest::addRow("before the answer, %s", end)
                << Serving::Silence << Serving::Length << qint64(0) << isDestroyed;
            QTest::addRow("in the middle, %s", end)
                << Serving::Gated << Serving::Length << qint64(51200) << isDestroyed;
            QTest::addRow("at the checksum, %s", end)
                << Serving::Length << Serving::Silence << qint64(103424) << isDestroyed;
        }
    }
    void cancelAtAnyMomentLeavesNothingBehind()
    {
        QFETCH(Serving, way);
        QFETCH(Serving, checksum);
        QFETCH(qint64, received);
        QFETCH(bool, isDestroyed);
        serve({.content = Content, .way = way});
        m_server->serve("/f/a.zip.sha256", {.way = checksum});
        auto download = std::make_unique<InetRetreive>(platform::FileSystem::native());
        bool isTold = false;
        download->start(job(), [&isTold](const Outcome &) { isTold = true; });
        m_server->allow(51200);
        const int asked = way == Serving::Length ? 2 : 1;
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requests().size(), asked, PatientWait);
        QTRY_COMPARE_WITH_TIMEOUT(download->progress().received(), received, PatientWait);
        QVERIFY(download->isBusy());
        if (isDestroyed)
            download.reset();
        else
            download->cancel();
        QCOMPARE(m_folder->names(), QStringList());
        QVERIFY(waitUntil([&] { return m_server->openConnections() == 0; }));
        QVERIFY(!isTold);
    }

    void afterACancelTheNextDownloadWorks()
    {
        serve({.content = Content, .way = Serving::Gated});
        InetRetreive download(platform::FileSystem::native());
        bool isTold = false;
        download.start(job(), [&isTold](const Outcome &) { isTold = true; });
        m_server->allow(51200);
        QTRY_COMPARE_WITH_TIMEOUT(download.progress().received(), 51200, PatientWait);
        serve({.content = Content});
        QVERIFY(outcomeOf(download, job()).has_value()); // ends the earlier one
        QVERIFY(!isTold);
        QVERIFY(file() == Content);
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }

    void anExistingFileIsReplacedOnlyIfThatWasWanted()
    {
        m_folder->write(u"a.zip"_s, "old");
        serve({.content = Content});
        const UpdateFailure failure = downloaded().error();
        QCOMPARE(failure.kind, UpdateFailureKind::File);
        QCOMPARE(failure.file, ErrorCode::AlreadyExists);
        QCOMPARE(file(), QByteArray("old"));
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
        QVERIFY(downloaded(true).has_value());
        QVERIFY(file() == Content);
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }

    void aFailureLeavesTheExistingFileAsItWas()
    {
        m_folder->write(u"a.zip"_s, "old");
        serve({.content = Content, .way = Serving::CutOff});
        QVERIFY(!downloaded(true));
        QCOMPARE(file(), QByteArray("old"));
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }

    void aLinkIsReplacedAndNotFollowed()
    {
        m_folder->write(u"other"_s, "old");
        QVERIFY(QFile::link(m_folder->path(u"other"_s), m_folder->path(u"a.zip"_s)));
        serve({.content = Content});
        QVERIFY(downloaded(true).has_value());
        QVERIFY(file() == Content);
        QCOMPARE(ScratchFolder::read(m_folder->path(u"other"_s)), QByteArray("old"));
    }

    void aFolderIsNeverReplaced()
    {
        QVERIFY(QDir(m_folder->path()).mkdir(u"a.zip"_s));
        serve({.content = Content});
        QCOMPARE(downloaded(true).error().file, ErrorCode::NotAFile);
        QCOMPARE(downloaded(false).error().file, ErrorCode::AlreadyExists);
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }

    void aFileMustMatchTheChecksumBesideIt()
    {
        serve({.content = Content});
        m_server->serveChecksum("/f/a.zip");
        QVERIFY(downloaded().value().isChecked);
        QVERIFY(file() == Content);
        QByteArray changed = Content;
        changed[5000] = char(changed[5000] ^ 1);
        serve({.content = changed});
        const UpdateFailure failure = downloaded(true).error();
        QCOMPARE(failure.kind, UpdateFailureKind::WrongChecksum);
        QCOMPARE(failure.detail, u"a.zip"_s);
        QVERIFY(file() == Content); // the earlier one
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }

    void withAChecksumAFileNeedsNoLength()
    {
        serve({.content = Content, .way = Serving::Unmarked});
        m_server->serveChecksum("/f/a.zip");
        QVERIFY(downloaded().value().isChecked);
        QVERIFY(file() == Content);
    }

    void aChecksumThatIsNoneDiscardsTheFile()
    {
        serve({.content = Content});
        m_server->serve("/f/a.zip.sha256", {.content = "<html>sign in</html>"});
        QCOMPARE(downloaded().error().kind, UpdateFailureKind::BadChecksum);
        QCOMPARE(m_folder->names(), QStringList());
    }

    void aChecksumThatCannotBeHadDiscardsTheFile_data()
    {
        QTest::addColumn<Served>("served");
        QTest::newRow("server error") << Served{.way = Serving::Status, .status = "500 Oh"};
        QTest::newRow("cut off") << Served{.content = QByteArray(64, '0'), .way = Serving::CutOff};
        QTest::newRow("too long") << Served{.content = QByteArray(70'000, '0')};
    }
    void aChecksumThatCannotBeHadDiscardsTheFile()
    {
        QFETCH(Served, served);
        serve({.content = Content});
        m_server->serve("/f/a.zip.sha256", served);
        QCOMPARE(downloaded().error().kind, UpdateFailureKind::Web);
        QCOMPARE(m_folder->names(), QStringList());
    }

    void whereThereIsNoChecksumTheServerSaysSo()
    {
        serve({.content = Content});
        m_server->serve("/f/a.zip.sha256", {.way = Serving::Status, .status = "410 Gone"});
        QVERIFY(!downloaded().value().isChecked);
    }

    void encryptedAndRedirectedFiles()
    {
        m_server = std::make_unique<UpdateServer>(WebServer::Security::Encrypted);
        serve({.way = Serving::Redirect, .goal = "/g"});
        m_server->serve("/g", {.content = Content});
        QCOMPARE(downloaded().error().web, WebFailureKind::Certificate);
        QCOMPARE(m_folder->names(), QStringList());
        const TrustedCertificate trusted(WebServer::certificate());
        QVERIFY(downloaded().has_value());
        QVERIFY(file() == Content);
    }

    void neverFromEncryptedToPlain()
    {
        const TrustedCertificate trusted(WebServer::certificate());
        UpdateServer plain;
        plain.serve("/a.zip", {.content = Content});
        m_server = std::make_unique<UpdateServer>(WebServer::Security::Encrypted);
        serve({.way = Serving::Redirect, .goal = plain.origin().toLatin1() + "/a.zip"});
        QCOMPARE(downloaded().error().web, WebFailureKind::InsecureRedirect);
        QVERIFY(plain.requests().isEmpty());
        QCOMPARE(m_folder->names(), QStringList());
    }

    void whateverTheDiskDoesNothingIsLeftBehind_data()
    {
        QTest::addColumn<Call>("call");
        QTest::newRow("no temporary file") << Call::Create;
        QTest::newRow("writing") << Call::Write;
        QTest::newRow("syncing") << Call::Sync;
        QTest::newRow("renaming") << Call::Rename;
    }
    void whateverTheDiskDoesNothingIsLeftBehind()
    {
        QFETCH(Call, call);
        serve({.content = Content});
        FaultyFileSystem faulty(platform::FileSystem::native());
        faulty.setPlan({.fault = Fault::Fail, .at = 0, .only = call, .forEver = true});
        InetRetreive download(faulty);
        const UpdateFailure failure = outcomeOf(download, job()).error();
        QCOMPARE(failure.kind, UpdateFailureKind::File);
        QCOMPARE(m_folder->names(), QStringList());
    }

    void aFolderThatIsNotThere()
    {
        serve({.content = Content});
        InetRetreive download(platform::FileSystem::native());
        const InetRetreive::Job lost{job().url, m_folder->path(u"none/a.zip"_s), false};
        QCOMPARE(outcomeOf(download, lost).error().kind, UpdateFailureKind::File);
    }

    void whatAKilledProgramLeftIsCleared()
    {
        QVERIFY(setPermissions(m_folder->write(u".ravlin-0123456789abcdef.tmp"_s, "half"), 0600));
        serve({.content = Content});
        QVERIFY(downloaded().has_value());
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }

    void whatIsDownloadedIsNotMadeToRun()
    {
        serve({.content = "#!/bin/sh\ntouch ran\n"});
        QVERIFY(downloaded().has_value());
        QCOMPARE(infoOf(m_folder->path(u"a.zip"_s)).permissions & 0111U, 0U);
        QCOMPARE(m_folder->names(), QStringList{u"a.zip"_s});
    }
};

QTEST_GUILESS_MAIN(TestInetRetreive)
#include "tst_inetretreive.moc"
