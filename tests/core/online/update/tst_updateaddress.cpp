// SPDX-License-Identifier: GPL-3.0-or-later
// Addresses of new versions: https unless chosen otherwise, never less secure than the version file, and file names
// that stay in the chosen folder.
#include "core/online/update/updateaddress.h"

#include <QTest>

using namespace ravlin;
using namespace Qt::StringLiterals;

class TestUpdateAddress : public QObject
{
    Q_OBJECT

private:
    static VersionRecord at(const QString &location, const QString &name = u"a.zip"_s)
    {
        return {name, {}, {}, location};
    }

private Q_SLOTS:
    void cleanup() { qunsetenv("RAVLIN_UPDATE_URL"); }

    void theAddressIsEncryptedUnlessTheEnvironmentSaysOtherwise()
    {
        qunsetenv("RAVLIN_UPDATE_URL");
        const QString builtIn = updateAddress(); // none, unless the build was given one
        QVERIFY(builtIn.isEmpty() || builtIn.startsWith(u"https://"_s));
        qputenv("RAVLIN_UPDATE_URL", "http://127.0.0.1:1234");
        QCOMPARE(updateAddress(), u"http://127.0.0.1:1234"_s);
        qputenv("RAVLIN_UPDATE_URL", "");
        QCOMPARE(updateAddress(), builtIn);
    }

    void theVersionFile_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("url");
        QTest::newRow("host") << u"https://up.example"_s << u"https://up.example/ravlin/app/ravlin.ver"_s;
        QTest::newRow("slash") << u"https://up.example/"_s << u"https://up.example/ravlin/app/ravlin.ver"_s;
        QTest::newRow("path") << u"https://up.example/~m%20x//"_s
                              << u"https://up.example/~m%20x/ravlin/app/ravlin.ver"_s;
        QTest::newRow("port") << u" http://127.0.0.1:80 "_s << u"http://127.0.0.1:80/ravlin/app/ravlin.ver"_s;
    }
    void theVersionFile()
    {
        QFETCH(QString, address);
        QFETCH(QString, url);
        QCOMPARE(versionFileUrl(address).value().toEncoded(), url.toLatin1());
    }

    void aBuildWithoutAnAddress()
    {
        for (const QString &none : {QString(), u" "_s}) {
            const UpdateFailure failure = versionFileUrl(none).error();
            QCOMPARE(failure.kind, UpdateFailureKind::NoAddress);
            QVERIFY(!failure.isOfOneFile());
        }
    }

    void noAddress_data()
    {
        QTest::addColumn<QString>("address");
        for (const char *address :
            {"x", "up.example", "ftp://up.example", "file:///etc", "https://", "https://me:x@up.example",
                "https://up.example/?x", "https://up.example/#x", "javascript:x", "https://up example"})
            QTest::newRow(address) << QString::fromLatin1(address);
    }
    void noAddress()
    {
        QFETCH(QString, address);
        QCOMPARE(versionFileUrl(address).error().kind, UpdateFailureKind::BadAddress);
    }

    void locations_data()
    {
        QTest::addColumn<QString>("location");
        QTest::addColumn<QString>("url");
        QTest::newRow("none") << QString() << u"https://up.example/r/app/a.zip"_s;
        QTest::newRow("file beside it") << u"b.zip"_s << u"https://up.example/r/app/b.zip"_s;
        QTest::newRow("folder beside it") << u"files/"_s << u"https://up.example/r/app/files/a.zip"_s;
        QTest::newRow("path of the host") << u"/files/b.zip"_s << u"https://up.example/files/b.zip"_s;
        QTest::newRow("path further up") << u"../b.zip"_s << u"https://up.example/r/b.zip"_s;
        QTest::newRow("host") << u"https://dl.example"_s << u"https://dl.example/a.zip"_s;
        QTest::newRow("host and folder") << u"https://dl.example/x/"_s << u"https://dl.example/x/a.zip"_s;
        QTest::newRow("whole") << u"https://dl.example/x/b.zip?id=1#top"_s << u"https://dl.example/x/b.zip?id=1"_s;
        QTest::newRow("another host by the same scheme") << u"//dl.example/b.zip"_s << u"https://dl.example/b.zip"_s;
    }
    void locations()
    {
        QFETCH(QString, location);
        QFETCH(QString, url);
        const QUrl versionFile(u"https://up.example/r/app/ravlin.ver"_s);
        QCOMPARE(downloadUrl(versionFile, at(location)).value().toEncoded(), url.toLatin1());
    }

    void aNameIsEncodedInItsAddress()
    {
        const QUrl versionFile(u"https://up.example/ravlin.ver"_s);
        QCOMPARE(downloadUrl(versionFile, at(u"f/"_s, u"señal 100%#1?.zip"_s)).value().toEncoded(),
            QByteArray("https://up.example/f/se%C3%B1al%20100%25%231%3F.zip"));
    }

    void noLocation_data()
    {
        QTest::addColumn<QString>("location");
        for (const char *location : {"http://up.example/a.zip", "ftp://up.example/a.zip", "file:///etc/passwd",
                 "c:\\windows\\a.zip", "data:,x", "https://me:x@up.example/a.zip", "https://"})
            QTest::newRow(location) << QString::fromLatin1(location);
    }
    void noLocation()
    {
        QFETCH(QString, location);
        const QUrl versionFile(u"https://up.example/ravlin.ver"_s);
        QCOMPARE(downloadUrl(versionFile, at(location)).error().kind, UpdateFailureKind::BadLocation);
    }

    void fromAPlainAddressToAnEncryptedOneItMayGo()
    {
        const QUrl versionFile(u"http://up.example/ravlin.ver"_s);
        QCOMPARE(downloadUrl(versionFile, at(u"https://dl.example/a.zip"_s)).value().scheme(), u"https"_s);
        QCOMPARE(downloadUrl(versionFile, at(u"http://dl.example/a.zip"_s)).value().scheme(), u"http"_s);
    }

    void theChecksumStandsBesideTheFile()
    {
        QCOMPARE(checksumUrl(QUrl(u"https://up.example/f/a%20b.zip?id=1"_s)).toEncoded(),
            QByteArray("https://up.example/f/a%20b.zip.sha256?id=1"));
    }

    void plainNames_data()
    {
        QTest::addColumn<QString>("name");
        for (const QString &name : {u"ravlin-1.5.0.zip"_s, u"setup.exe"_s, u"README"_s, u"señal (2).tar.gz"_s,
                 u"日本.zip"_s, u"a..b"_s, u"COM10.txt"_s, u"console"_s, u"a-b"_s, u"_-"_s})
            QTest::newRow(qPrintable(name)) << name;
    }
    void plainNames()
    {
        QFETCH(QString, name);
        QCOMPARE(safeFileName(name).value(), name);
    }

    void aNameThatIsNotPlainIsRefused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("nothing") << QString();
        QTest::newRow("separator") << u"a/b.zip"_s;
        QTest::newRow("the root") << u"/etc/passwd"_s;
        QTest::newRow("the other separator") << u"a\\b.zip"_s;
        QTest::newRow("drive letter") << u"c:a.zip"_s;
        QTest::newRow("drive and folder") << u"c:\\a.zip"_s;
        QTest::newRow("stream") << u"a.zip:x"_s;
        QTest::newRow("the folder") << u"."_s;
        QTest::newRow("the folder above") << u".."_s;
        QTest::newRow("by way of the folder above") << u"../a.zip"_s;
        QTest::newRow("by way of the folder above, backwards") << u"..\\a.zip"_s;
        QTest::newRow("device") << u"NUL"_s;
        QTest::newRow("device with an extension") << u"con.zip"_s;
        QTest::newRow("numbered device") << u"LPT1.txt"_s;
        QTest::newRow("option") << u"-rf.zip"_s;
        QTest::newRow("long option") << u"--help"_s;
        QTest::newRow("hyphen") << u"-"_s;
        QTest::newRow("isolated") << u"a\u2066zip.exe"_s;
        QTest::newRow("line separator") << u"a\u2028.zip"_s;
        QTest::newRow("later control character") << u"a\u0085.zip"_s;
        QTest::newRow("hidden") << u".bashrc"_s;
        QTest::newRow("a helper file's") << u".ravlin-0123456789abcdef.tmp"_s;
        QTest::newRow("full stop at the end") << u"a.zip."_s;
        QTest::newRow("blank at the end") << u"a.zip "_s;
        QTest::newRow("blank in front") << u" a.zip"_s;
        QTest::newRow("wildcard") << u"*.zip"_s;
        QTest::newRow("quotation mark") << u"a\".zip"_s;
        QTest::newRow("pipe") << u"a|b"_s;
        QTest::newRow("line end") << u"a\n.zip"_s;
        QTest::newRow("zero") << u"a"_s + QChar(u'\0') + u".zip"_s;
        QTest::newRow("turned round") << u"a\u202Ezip.exe"_s;
        QTest::newRow("invisible") << u"a\u200B.zip"_s;
        QTest::newRow("half a character") << u"a"_s + QChar(0xD800) + u".zip"_s;
        QTest::newRow("too long") << QString(260, u'a');
    }
    void aNameThatIsNotPlainIsRefused()
    {
        QFETCH(QString, name);
        QCOMPARE(safeFileName(name).error().kind, UpdateFailureKind::BadName);
    }
};

QTEST_GUILESS_MAIN(TestUpdateAddress)
#include "tst_updateaddress.moc"
