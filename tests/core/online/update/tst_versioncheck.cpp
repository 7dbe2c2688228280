// SPDX-License-Identifier: GPL-3.0-or-later
// The version file is fetched, stored under its fixed name and read from there. Anything that is not a version file,
// late, too long, redirected, refused, cut off or without a trusted certificate is a failure that says so.
#include "core/online/update/updateaddress.h"
#include "core/online/update/versioncheck.h"
#include "support/cddbtest.h"
#include "support/updateserver.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

using Checked = UpdateResult<VersionFile>;

const QByteArray Version15 = "\"1.5.0\",\"\"\r\n\"a.zip\",\"all\",\"1.5.0\",\"a.zip\",\"\"\r\n";

} // namespace

class TestVersionCheck : public QObject
{
    Q_OBJECT

private:
    static QUrl urlOf(const UpdateServer &server) { return versionFileUrl(server.origin()).value(); }
    static Checked checked(VersionCheck &check, const QUrl &url)
    {
        std::optional<Checked> outcome;
        check.check(url, [&outcome](const Checked &result) { outcome = result; });
        if (outcome)
            qFatal("told before it was asked");
        [&] { QVERIFY(waitUntil([&] { return outcome.has_value(); })); }();
        return outcome.value_or(tl::unexpected(UpdateFailure()));
    }
    static QByteArray kept()
    {
        QFile file(VersionCheck::localPath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private Q_SLOTS:
    void initTestCase() { leaveProxiesOut(); }
    void init() { QFile::remove(VersionCheck::localPath()); }

    void theFileIsKeptUnderItsFixedNameAndReadFromThere_data()
    {
        QTest::addColumn<Serving>("way");
        QTest::newRow("with its length") << Serving::Length;
        QTest::newRow("in chunks") << Serving::Chunked;
        QTest::newRow("without a length") << Serving::Unmarked;
    }
    void theFileIsKeptUnderItsFixedNameAndReadFromThere()
    {
        QFETCH(Serving, way);
        UpdateServer server;
        server.serveVersionFile(Version15, way);
        VersionCheck check(platform::FileSystem::native());
        const VersionFile file = checked(check, urlOf(server)).value();
        QCOMPARE(file.version, u"1.5.0"_s);
        QCOMPARE(file.records.size(), 1U);
        QCOMPARE(kept(), Version15);
        QCOMPARE(QFileInfo(VersionCheck::localPath()).fileName(), u"ravlin.ver"_s);
        QCOMPARE(server.requests(), QByteArrayList{"/ravlin/app/ravlin.ver"});
    }

    void anOlderFileIsReplaced()
    {
        UpdateServer server;
        server.serveVersionFile("\"1.4.0\",\"\"\r\n" + QByteArray(3000, '\n'));
        VersionCheck check(platform::FileSystem::native());
        QCOMPARE(checked(check, urlOf(server)).value().version, u"1.4.0"_s);
        server.serveVersionFile(Version15);
        QCOMPARE(checked(check, urlOf(server)).value().version, u"1.5.0"_s);
        QCOMPARE(kept(), Version15);
    }

    void theStatesComeInTheirOrder()
    {
        UpdateServer server;
        server.serveVersionFile(Version15);
        VersionCheck check(platform::FileSystem::native());
        QList<int> states;
        connect(&check, &VersionCheck::stateChanged, this, [&states](ConnectionState state) { states << int(state); });
        QVERIFY(checked(check, urlOf(server)));
        QCOMPARE(states, (QList<int>{1, 2, 3, 4, 5, 6, 7, 8, 12, 9, 10}));
    }

    void theStatesTexts()
    {
        const QStringList texts{u"no state to report. 1"_s,
            u"the control is looking up the ip address of the specified host computer.2 "_s,
            u" the control successfully found the ip address of the specified host computer.3"_s,
            u" the control is connecting to the host computer.4"_s,
            u" the control successfully connected to the host computer.5"_s,
            u" the control is sending a request to the host computer.6"_s,
            u" the control successfully sent the request.7"_s,
            u" the control is receiving a response from the host computer.8"_s,
            u" the control successfully received a response from the host computer.9"_s,
            u" the control is disconnecting from the host computer.10"_s,
            u" the control successfully disconnected from the host computer.11"_s,
            u" an error occurred in communicating with the host computer.12"_s};
        for (int number = 0; number < texts.size(); ++number)
            QCOMPARE(connectionStateText(static_cast<ConnectionState>(number)), texts[number]);
    }

    void webFailures_data()
    {
        QTest::addColumn<Served>("served");
        QTest::addColumn<WebFailureKind>("kind");
        using enum WebFailureKind;
        const auto row = [](const char *name, Serving way, WebFailureKind kind) {
            QTest::newRow(name) << Served{.content = Version15, .way = way} << kind;
        };
        row("hangs up", Serving::HangsUp, Incomplete);
        row("cut off", Serving::CutOff, Incomplete);
        row("cut off in chunks", Serving::CutChunked, Incomplete);
        row("announces too much", Serving::Enormous, TooLarge);
        row("sends without end", Serving::Endless, TooLarge);
        QTest::newRow("not found") << Served{.way = Serving::Status, .status = "404 Not Found"} << HttpStatus;
        QTest::newRow("server error") << Served{.content = Version15,
                                             .way = Serving::Status,
                                             .status = "500 Internal Server Error"}
                                      << HttpStatus;
        QTest::newRow("sends to nowhere") << Served{.way = Serving::Status, .status = "302 Found"} << BadRedirect;
        QTest::newRow("redirects for ever")
            << Served{.way = Serving::Redirect, .goal = "/ravlin/app/ravlin.ver"} << TooManyRedirects;
        QTest::newRow("redirects to a file")
            << Served{.way = Serving::Redirect, .goal = "file:///etc/hostname"} << ForeignRedirect;
        const QByteArray large = Version15 + QByteArray(64 * 1024, '\n');
        QTest::newRow("over 64 KB") << Served{.content = large} << TooLarge;
        QTest::newRow("over 64 KB in chunks") << Served{.content = large, .way = Serving::Chunked} << TooLarge;
    }
    void webFailures()
    {
        QFETCH(Served, served);
        QFETCH(WebFailureKind, kind);
        UpdateServer server;
        server.serve("/ravlin/app/ravlin.ver", served);
        VersionCheck check(platform::FileSystem::native());
        QList<int> states;
        connect(&check, &VersionCheck::stateChanged, this, [&states](ConnectionState state) { states << int(state); });
        const UpdateFailure failure = checked(check, urlOf(server)).error();
        QCOMPARE(failure.kind, UpdateFailureKind::Web);
        QCOMPARE(failure.web, kind);
        QCOMPARE(states.last(), 11);
        QVERIFY(!check.isBusy());
        QVERIFY(!QFile::exists(VersionCheck::localPath()));
    }

    void aVersionFileThatIsNotInTheFormatIsRefused()
    {
        UpdateServer server;
        server.serveVersionFile("<!DOCTYPE html><title>Sign in</title>");
        VersionCheck check(platform::FileSystem::native());
        QCOMPARE(checked(check, urlOf(server)).error().kind, UpdateFailureKind::BadVersionFile);
    }

    void aRedirectIsFollowed()
    {
        UpdateServer server;
        server.serve("/ravlin/app/ravlin.ver", {.way = Serving::Redirect, .goal = "/elsewhere"});
        server.serve("/elsewhere", {.content = Version15});
        VersionCheck check(platform::FileSystem::native());
        QCOMPARE(checked(check, urlOf(server)).value().version, u"1.5.0"_s);
    }

    void cancelTellsNothingAndLeavesNothing()
    {
        UpdateServer server;
        server.serveVersionFile(Version15, Serving::Stalls);
        VersionCheck check(platform::FileSystem::native());
        bool isTold = false;
        check.check(urlOf(server), [&isTold](const Checked &) { isTold = true; });
        QTRY_COMPARE_WITH_TIMEOUT(server.requests().size(), 1, PatientWait);
        check.cancel();
        QTRY_COMPARE_WITH_TIMEOUT(server.openConnections(), 0, PatientWait);
        QVERIFY(!isTold);
        QVERIFY(!QFile::exists(VersionCheck::localPath()));
    }

    void certificates()
    {
        VersionCheck check(platform::FileSystem::native());
        UpdateServer server(WebServer::Security::Encrypted);
        server.serveVersionFile(Version15);
        QCOMPARE(checked(check, urlOf(server)).error().web, WebFailureKind::Certificate);
        QVERIFY(server.requests().isEmpty());
        VersionCheck trusting(platform::FileSystem::native());
        const TrustedCertificate trusted(WebServer::certificate());
        QCOMPARE(checked(trusting, urlOf(server)).value().version, u"1.5.0"_s);
        UpdateServer elsewhere(WebServer::Security::EncryptedElsewhere);
        elsewhere.serveVersionFile(Version15);
        QCOMPARE(checked(trusting, urlOf(elsewhere)).error().web, WebFailureKind::Certificate);
        QVERIFY(elsewhere.requests().isEmpty());
    }

    void neverFromEncryptedToPlain()
    {
        const TrustedCertificate trusted(WebServer::certificate());
        UpdateServer plain;
        plain.serveVersionFile(Version15);
        UpdateServer server(WebServer::Security::Encrypted);
        const QByteArray goal = plain.origin().toLatin1() + "/ravlin/app/ravlin.ver";
        server.serve("/ravlin/app/ravlin.ver", {.way = Serving::Redirect, .goal = goal});
        VersionCheck check(platform::FileSystem::native());
        QCOMPARE(checked(check, urlOf(server)).error().web, WebFailureKind::InsecureRedirect);
        QVERIFY(plain.requests().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestVersionCheck)
#include "tst_versioncheck.moc"
