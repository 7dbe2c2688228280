// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a program becomes this user's default for an extension, and all other choices of the user stay. What cannot
// be registered is an error and changes nothing. Standard folders are found by their numbers. The address of a file
// keeps every byte of its path.

#include "core/files/operations/clsfilefunc.h"
#include "core/platform/desktop.h"

#include "support/filetree.h"

#include <QDir>
#include <QStandardPaths>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestDesktop : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void aProgramBecomesTheDefault_data();
    void aProgramBecomesTheDefault();
    void otherChoicesStay_data();
    void otherChoicesStay();
    void againChangesNothing();
    void aLinkedFileOfChoicesStaysALink();
    void strangePathsAreQuoted();
    void whatCannotBeRegistered_data();
    void whatCannotBeRegistered();
    void aFolderThatMayNotBeMade();
    void specialFolders_data();
    void specialFolders();
    void foldersOfWindows();
    void theAddressOfAFile();
    void theAddressOfANameThatIsNoUnicode();

private:
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder.filePath(name)); }
    QString choicesPath() const { return in(u"config/mimeapps.list"_s); }
    QString entryPath() const { return in(u"data/applications/Ravlin.Song.desktop"_s); }
    static Result<void> registerSong(
        const QString &extension = u".ravlinsong"_s, const QString &program = u"/opt/ravlin/ravlin"_s)
    {
        return clsFileFunc::MakeFileDefault(u"Ravlin.Song"_s, u"A \\ song"_s, program, extension);
    }

    QTemporaryDir m_folder;
};

void TestDesktop::initTestCase()
{
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(in(u"config"_s)));
    writeFile(in(u"data/mime/packages/ravlin-test.xml"_s),
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n"
        "<mime-type type=\"audio/x-ravlin-song\"><comment>song</comment><glob pattern=\"*.ravlinsong\"/></mime-type>\n"
        "</mime-info>\n");
}

void TestDesktop::init()
{
    QVERIFY(QDir(in(u"config"_s)).removeRecursively());
    QDir(in(u"data/applications"_s)).removeRecursively();
    QFile::remove(in(u"data/applications"_s));
}

void TestDesktop::aProgramBecomesTheDefault_data()
{
    QTest::addColumn<QString>("extension");
    QTest::newRow("with a full stop") << u".ravlinsong"_s;
    QTest::newRow("without one") << u"ravlinsong"_s;
}

void TestDesktop::aProgramBecomesTheDefault()
{
    QFETCH(QString, extension);
    const auto made = registerSong(extension);
    QVERIFY2(made.has_value(), qPrintable(made ? QString() : made.error().detail));
    QCOMPARE(contentOf(entryPath()),
        QByteArray("[Desktop Entry]\nType=Application\nName=A \\\\ song\nExec=\"/opt/ravlin/ravlin\" %f\n"
                   "MimeType=audio/x-ravlin-song;\nTerminal=false\nNoDisplay=true\n"));
    QCOMPARE(
        contentOf(choicesPath()), QByteArray("[Default Applications]\naudio/x-ravlin-song=Ravlin.Song.desktop;\n"));
}

void TestDesktop::otherChoicesStay_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    const QByteArray mine = "audio/x-ravlin-song=Ravlin.Song.desktop;\n";
    QTest::newRow("another kind") << QByteArray("[Default Applications]\naudio/mpeg=x.desktop;\n")
                                  << "[Default Applications]\n" + mine + "audio/mpeg=x.desktop;\n";
    QTest::newRow("this kind, in the middle")
        << QByteArray("# mine\n\n[Default Applications]\na/b=x.desktop\naudio/x-ravlin-song = y.desktop;z.desktop\n"
                      "c/d=x.desktop\n\n[Other]\nq=1\n")
        << "# mine\n\n[Default Applications]\na/b=x.desktop\n" + mine + "c/d=x.desktop\n\n[Other]\nq=1\n";
    QTest::newRow("this kind, in another group")
        << QByteArray("[Default Applications]\n[Added Associations]\naudio/x-ravlin-song=y.desktop;\n")
        << "[Default Applications]\n" + mine + "[Added Associations]\naudio/x-ravlin-song=y.desktop;\n";
    QTest::newRow("no such group") << QByteArray("[Added Associations]\na/b=y.desktop;")
                                   << "[Added Associations]\na/b=y.desktop;\n[Default Applications]\n" + mine;
}

void TestDesktop::otherChoicesStay()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    writeFile(choicesPath(), before);
    QVERIFY(registerSong());
    QCOMPARE(contentOf(choicesPath()), after);
}

void TestDesktop::againChangesNothing()
{
    writeFile(choicesPath(), "[Default Applications]\na/b=x.desktop\n");
    QVERIFY(registerSong());
    const Snapshot once = snapshotOf(m_folder.path());
    QVERIFY(registerSong());
    QCOMPARE(snapshotOf(m_folder.path()), once);
}

void TestDesktop::aLinkedFileOfChoicesStaysALink()
{
    writeFile(in(u"config/kept/list"_s), "[Default Applications]\na/b=x.desktop\n");
    makeLink("kept/list", choicesPath());
    QVERIFY(registerSong());
    QCOMPARE(QFileInfo(choicesPath()).symLinkTarget(), in(u"config/kept/list"_s));
    QVERIFY(contentOf(in(u"config/kept/list"_s)).contains("audio/x-ravlin-song=Ravlin.Song.desktop;\na/b=x.desktop\n"));
}

void TestDesktop::strangePathsAreQuoted()
{
    QVERIFY(registerSong(u"ravlinsong"_s, u"/opt/my \"$x\" 100%/é\\r"_s));
    QVERIFY2(contentOf(entryPath()).contains("\nExec=\"/opt/my \\\\\"\\\\$x\\\\\" 100%%/é\\\\\\\\r\" %f\n"),
        contentOf(entryPath()).constData());
}

void TestDesktop::whatCannotBeRegistered_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("extension");
    QTest::addColumn<ErrorCode>("error");
    const QString program = u"/opt/ravlin"_s;
    QTest::newRow("no class") << QString() << program << u"ravlinsong"_s << ErrorCode::InvalidArgument;
    QTest::newRow("class leads elsewhere") << u"../x"_s << program << u"ravlinsong"_s << ErrorCode::InvalidArgument;
    QTest::newRow("no program") << u"x"_s << QString() << u"ravlinsong"_s << ErrorCode::InvalidArgument;
    QTest::newRow("two lines") << u"x"_s << u"/opt/a\nExec=b"_s << u"ravlinsong"_s << ErrorCode::InvalidArgument;
    QTest::newRow("no extension") << u"x"_s << program << u"."_s << ErrorCode::InvalidArgument;
    QTest::newRow("unknown extension") << u"x"_s << program << u"no-such-thing"_s << ErrorCode::Unsupported;
}

void TestDesktop::whatCannotBeRegistered()
{
    QFETCH(QString, className);
    QFETCH(QString, program);
    QFETCH(QString, extension);
    QFETCH(ErrorCode, error);
    const Snapshot before = snapshotOf(m_folder.path());
    const auto made = clsFileFunc::MakeFileDefault(className, u"x"_s, program, extension);
    QVERIFY(!made);
    QCOMPARE(made.error().code, error);
    QCOMPARE(snapshotOf(m_folder.path()), before);
}

void TestDesktop::aFolderThatMayNotBeMade()
{
    writeFile(in(u"data/applications"_s), "a file where a folder would have to be");
    const auto made = registerSong();
    QVERIFY(!made);
    QCOMPARE(made.error().code, ErrorCode::AccessDenied);
    QVERIFY(!platform::isTaken(choicesPath()));
}

void TestDesktop::specialFolders_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("path");
    QTest::newRow("home") << 40 << QDir::homePath();
    QTest::newRow("settings") << 26 << in(u"config"_s);
    QTest::newRow("data") << 28 << in(u"data"_s);
    QTest::newRow("menu entries") << 2 << in(u"data/applications"_s);
    QTest::newRow("desktop") << 0 << QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    QTest::newRow("desktop files") << 16 << QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    QTest::newRow("documents") << 5 << QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    QTest::newRow("music") << 13 << QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
    QTest::newRow("none of that number") << 4711 << QString();
    QTest::newRow("one that only Windows has") << 37 << QString();
}

void TestDesktop::specialFolders()
{
    QFETCH(int, number);
    QFETCH(QString, path);
    const QString found = clsFileFunc::GetSpecialFolder(0, number);
    QCOMPARE(found, path);
    QVERIFY(found.isEmpty() || QDir::isAbsolutePath(found));
    QVERIFY(!found.endsWith(u'/'));
}

void TestDesktop::foldersOfWindows()
{
    QCOMPARE(clsFileFunc::GetWinPath(), QString());
    QCOMPARE(clsFileFunc::GetSysPath(), QString());
}

void TestDesktop::theAddressOfAFile()
{
    for (const QString &name : {u"song.mp3"_s, u"-x %41 #1?q.mp3"_s, u"ñ \"$(id)\" `;&.mp3"_s}) {
        const QUrl address = platform::addressOf(in(name));
        QVERIFY(address.isLocalFile());
        QCOMPARE(address.host(), QString());
        QCOMPARE(QDir::toNativeSeparators(address.toLocalFile()), in(name));
    }
    QVERIFY(platform::addressOf(u"song.mp3"_s).isEmpty());
    QVERIFY(platform::addressOf(u"--help"_s).isEmpty());
    QVERIFY(platform::addressOf({}).isEmpty());
}

void TestDesktop::theAddressOfANameThatIsNoUnicode()
{
    if (platform::Separator == u'\\')
        QSKIP("names are Unicode on this system");
    const QString path = platform::decodePath(QByteArray("/m/caf\xe9 \xff\xc3\xa9 %FF/-\xed\xa0\x80.mp3"));
    QCOMPARE(platform::addressOf(path).toEncoded(), "file:///m/caf%E9%20%FF%C3%A9%20%25FF/-%ED%A0%80.mp3");
}

QTEST_GUILESS_MAIN(TestDesktop)

#include "tst_desktop.moc"
