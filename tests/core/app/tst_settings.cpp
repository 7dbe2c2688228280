// SPDX-License-Identifier: GPL-3.0-or-later
// Every text of the settings round-trips, and a missing key reads as empty. A save changes only the written keys,
// whatever others have done to the file meanwhile. No state of the file stops the program or loses data.

#include "core/app/settings.h"
#include "core/platform/desktop.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void defaultPathIsInTheConfigurationFolder();
    void missingKeysReadAsEmpty();
    void keysAreExact();
    void aSavedValueIsThereAtTheNextStart();
    void values_data();
    void values();

    void savingTheSameWritesNothing();
    void interleavedInstancesKeepEachOthersKeys();
    void anEditByAnotherProgramIsNotLost();
    void reloadKeepsWhatIsNotSaved();
    void instancesInThreadsLoseNothing();

    void aDamagedFileIsKeptAside();
    void aFileDamagedWhileRunningCostsNothing();
    void aSecondDamageKeepsTheFirstCopy();
    void aFileTooLargeIsLeftAlone();
    void aFolderInItsPlaceIsLeftAlone();
    void anUnreadableFileIsLeftAlone();
    void aReadOnlyFileIsLeftAlone();
    void aReadOnlyFolderIsAnError();
    void aLockedFileIsAnErrorAndCanBeSavedLater();
    void aSymbolicLinkStays();
    void permissions();

private:
    QString path() const { return m_folder->filePath(u"ravlin/ravlin.ini"_s); }
    void put(const QByteArray &bytes, const QString &to = {}) const;
    QByteArray got(const QString &from = {}) const;
    QStringList filesInFolder() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestSettings::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void TestSettings::cleanup()
{
    m_folder.reset();
}

void TestSettings::put(const QByteArray &bytes, const QString &to) const
{
    QDir().mkpath(QFileInfo(path()).path());
    QFile file(to.isEmpty() ? path() : to);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray TestSettings::got(const QString &from) const
{
    QFile file(from.isEmpty() ? path() : from);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}

QStringList TestSettings::filesInFolder() const
{
    return QDir(QFileInfo(path()).path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

void TestSettings::defaultPathIsInTheConfigurationFolder()
{
    const int number = static_cast<int>(platform::SpecialFolder::RoamingSettings);
    const QString configuration = QDir::fromNativeSeparators(platform::specialFolder(number));
    QVERIFY(QDir::isAbsolutePath(configuration));
    QCOMPARE(Settings::defaultPath(), configuration + u"/ravlin/ravlin.ini"_s);
    QCOMPARE(Settings().path(), Settings::defaultPath());
    QVERIFY(!QFileInfo::exists(configuration + u"/ravlin"_s)); // the question creates no file
}

void TestSettings::missingKeysReadAsEmpty()
{
    const Settings settings(path());
    for (const QStringView key : {settingskey::Ruta, settingskey::Tags, settingskey::RenameVar})
        QCOMPARE(settings.read(key), QString());
    QVERIFY(!settings.problem());
    QVERIFY(!QFileInfo::exists(path()));
}

void TestSettings::keysAreExact()
{
    const QStringList keys{u"ruta"_s, u"recuerda"_s, u"idioma"_s, u"tags"_s, u"rename"_s, u"rename var"_s,
        u"rename case"_s, u"multi case"_s, u"rename replace"_s, u"multi replace"_s, u"servidor"_s, u"correo"_s,
        u"dir rename"_s, u"dir rename var"_s};
    using namespace settingskey;
    const std::vector<QStringView> constants{Ruta, Recuerda, Idioma, Tags, Rename, RenameVar, RenameCase, MultiCase,
        RenameReplace, MultiReplace, Servidor, Correo, DirRename, DirRenameVar};
    QCOMPARE(qsizetype(constants.size()), keys.size());

    Settings settings(path());
    QByteArray expected = "[ini]\n";
    QStringList sorted = keys;
    sorted.sort();
    for (const QString &key : sorted)
        expected += key.toUtf8() + "=value of " + key.toUtf8() + '\n';
    for (qsizetype i = 0; i < keys.size(); ++i)
        settings.write(constants[size_t(i)], u"value of "_s + keys[i]);
    QVERIFY(settings.save());
    QCOMPARE(got(), expected);
    for (const QString &key : keys)
        QCOMPARE(Settings(path()).read(key), u"value of "_s + key);
}

void TestSettings::aSavedValueIsThereAtTheNextStart()
{
    {
        Settings settings(path());
        settings.write(settingskey::Tags, u"3"_s);
        QCOMPARE(settings.read(settingskey::Tags), u"3"_s);
        QVERIFY(!QFileInfo::exists(path()));
        QVERIFY(settings.save());
        settings.write(settingskey::Recuerda, u"si"_s); // never saved
    }
    const Settings settings(path());
    QCOMPARE(settings.read(settingskey::Tags), u"3"_s);
    QCOMPARE(settings.read(settingskey::Recuerda), QString());
    QCOMPARE(filesInFolder(), QStringList{u"ravlin.ini"_s});
}

void TestSettings::values_data()
{
    QTest::addColumn<QString>("value");

    QTest::newRow("empty") << QString();
    QTest::newRow("commas") << u"a, b,c,"_s;
    QTest::newRow("backslashes") << u"C:\\Music\\new\\\\x\\"_s;
    QTest::newRow("a quote") << u"\""_s;
    QTest::newRow("two quotes") << u"\"\""_s;
    QTest::newRow("in quotes") << u"\"in quotes\""_s;
    QTest::newRow("quotes inside") << u"7\" single, \"live\""_s;
    QTest::newRow("leading blanks") << u"   %1"_s;
    QTest::newRow("trailing blanks") << u"%1   "_s;
    QTest::newRow("blanks only") << u"   "_s;
    QTest::newRow("tab") << u"\ta\t"_s;
    QTest::newRow("pattern") << u"%1 - %2 (%3) [%4] %%20 %20"_s;
    QTest::newRow("comment signs") << u"; a # b"_s;
    QTest::newRow("equals") << u"=a=b="_s;
    QTest::newRow("like a section") << u"[ini]"_s;
    QTest::newRow("at sign") << u"@Invalid()"_s;
    QTest::newRow("two at signs") << u"@@x"_s;
    QTest::newRow("e-mail") << u"me@example.org"_s;
    QTest::newRow("like an escaped value") << u"@escaped(a\\u0041)"_s;
    QTest::newRow("like an escaped value, with a line break") << u"@escaped(a\n\\u0041)"_s;
    QTest::newRow("accents") << u"Música/Año/é e\u0301"_s;
    QTest::newRow("other scripts") << u"Музыка/音楽/🎵/عربى"_s;
    QTest::newRow("lines") << u"a\nb\r\nc\r"_s;
    QTest::newRow("other line breaks") << u"a\u0085b\u2028c\u2029d\u000be"_s;
    QTest::newRow("zero") << u"a\0b"_s;
    QTest::newRow("byte order mark") << u"\ufeffa\ufeff"_s;
    QTest::newRow("no-break space at the ends") << u"\u00a0a\u3000"_s;
    QTest::newRow("noncharacters") << u"\ufffe\uffff\ufffd"_s;
    QTest::newRow("lone high surrogate") << QString(u"a"_s + QChar(0xd83d));
    QTest::newRow("lone low surrogate") << QString(QChar(0xdc80) + u"\\b"_s);
    QTest::newRow("surrogates the wrong way round") << QString(u"🎵"_s + QChar(0xde00) + QChar(0xd83d) + u"🎵"_s);
    QTest::newRow("long") << u"path/"_s.repeated(20000);
}

void TestSettings::values()
{
    QFETCH(QString, value);
    Settings settings(path());
    settings.write(settingskey::Ruta, u"before"_s);
    settings.write(settingskey::RenameVar, value);
    settings.write(settingskey::Tags, u"after"_s);
    QVERIFY(settings.save());
    QCOMPARE(settings.read(settingskey::RenameVar), value);

    const Settings next(path());
    QCOMPARE(next.read(settingskey::RenameVar), value);
    QCOMPARE(next.read(settingskey::Ruta), u"before"_s);
    QCOMPARE(next.read(settingskey::Tags), u"after"_s);
}

void TestSettings::savingTheSameWritesNothing()
{
    put("[ini]\ntags = \"1\"");
    const QDateTime old = QDateTime::fromSecsSinceEpoch(1000000000);
    QFile file(path());
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(old, QFileDevice::FileModificationTime));
    file.close();

    Settings settings(path());
    QVERIFY(settings.save());
    settings.write(settingskey::Tags, u"1"_s);
    QVERIFY(settings.save());
    QCOMPARE(QFileInfo(path()).lastModified(), old);
    QCOMPARE(got(), QByteArray("[ini]\ntags = \"1\""));
}

void TestSettings::interleavedInstancesKeepEachOthersKeys()
{
    Settings first(path());
    Settings second(path());
    first.write(settingskey::Ruta, u"/first"_s);
    second.write(settingskey::Idioma, u"fr"_s);
    QVERIFY(first.save());
    QVERIFY(second.save());
    QCOMPARE(second.read(settingskey::Ruta), u"/first"_s);

    first.write(settingskey::Tags, u"1"_s);
    second.write(settingskey::Tags, u"5"_s);
    QVERIFY(second.save());
    QVERIFY(first.save());
    QCOMPARE(first.read(settingskey::Idioma), u"fr"_s);

    const Settings next(path());
    QCOMPARE(next.read(settingskey::Ruta), u"/first"_s);
    QCOMPARE(next.read(settingskey::Idioma), u"fr"_s);
    QCOMPARE(next.read(settingskey::Tags), u"1"_s); // saved last
}

void TestSettings::anEditByAnotherProgramIsNotLost()
{
    put("[ini]\ntags=1\nservidor=old.example\n");
    Settings settings(path());
    put("; mine\n[ini]\ntags=4\nservidor=new.example\n[added]\nx=y\n");
    settings.write(settingskey::Ruta, u"/music"_s);
    QVERIFY(settings.save());
    QCOMPARE(got(), QByteArray("; mine\n[ini]\ntags=4\nservidor=new.example\nruta=/music\n[added]\nx=y\n"));
    QCOMPARE(settings.read(settingskey::Servidor), u"new.example"_s);
}

void TestSettings::reloadKeepsWhatIsNotSaved()
{
    put("[ini]\ntags=1\nidioma=es\n");
    Settings settings(path());
    settings.write(settingskey::Tags, u"2"_s);
    put("[ini]\ntags=3\nidioma=fr\n");
    QVERIFY(settings.reload());
    QCOMPARE(settings.read(settingskey::Tags), u"2"_s);
    QCOMPARE(settings.read(settingskey::Idioma), u"fr"_s);
}

void TestSettings::instancesInThreadsLoseNothing()
{
    constexpr int Writers = 6;
    constexpr int Rounds = 25;
    const QString file = path();
    std::vector<std::thread> writers;
    std::vector<int> saved(Writers, 0);
    for (int writer = 0; writer < Writers; ++writer) {
        writers.emplace_back([writer, &file, &saved] {
            const QString key = u"key %1"_s.arg(writer);
            for (int round = 1; round <= Rounds; ++round) {
                Settings settings(file);
                settings.write(key, QString::number(round));
                while (!settings.save()) // busy
                    std::this_thread::yield();
                ++saved[size_t(writer)];
            }
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    const Settings settings(file);
    for (int writer = 0; writer < Writers; ++writer) {
        QCOMPARE(saved[size_t(writer)], Rounds);
        QCOMPARE(settings.read(u"key %1"_s.arg(writer)), QString::number(Rounds));
    }
    QCOMPARE(filesInFolder(), QStringList{u"ravlin.ini"_s});
}

void TestSettings::aDamagedFileIsKeptAside()
{
    const QByteArray damaged = QByteArray("[ini]\ntags=1\n") + QByteArray(4096, '\0');
    put(damaged);
    Settings settings(path());
    QVERIFY(settings.problem());
    QCOMPARE(settings.problem()->code, ErrorCode::Settings);
    QCOMPARE(settings.problem()->path, path());
    QCOMPARE(settings.read(settingskey::Tags), QString());
    QCOMPARE(got(), damaged);

    settings.write(settingskey::Idioma, u"es"_s);
    QVERIFY(settings.save());
    QCOMPARE(got(), QByteArray("[ini]\nidioma=es\n"));
    QCOMPARE(got(path() + u".damaged"_s), damaged);
    QVERIFY(settings.problem());
    QVERIFY(settings.reload());
    QVERIFY(!settings.problem());
}

void TestSettings::aFileDamagedWhileRunningCostsNothing()
{
    put("; mine\n[ini]\ntags=1\n[other]\na=b\n");
    Settings settings(path());
    put(QByteArray(100, '\0'));
    const Result<void> reloaded = settings.reload();
    QVERIFY(!reloaded);
    QCOMPARE(reloaded.error().code, ErrorCode::Settings);
    QCOMPARE(settings.read(settingskey::Tags), u"1"_s);
    settings.write(settingskey::Idioma, u"es"_s);
    QVERIFY(settings.save());
    QCOMPARE(got(), QByteArray("; mine\n[ini]\ntags=1\nidioma=es\n[other]\na=b\n"));
    QCOMPARE(got(path() + u".damaged"_s), QByteArray(100, '\0'));
}

void TestSettings::aSecondDamageKeepsTheFirstCopy()
{
    for (const char digit : {'1', '2', '2'}) {
        put(QByteArray("\0", 1) + digit);
        Settings settings(path());
        settings.write(settingskey::Tags, QString(QLatin1Char(digit)));
        QVERIFY(settings.save());
    }
    QCOMPARE(got(path() + u".damaged"_s), QByteArray("\0"
                                                     "1",
                                              2));
    QCOMPARE(got(path() + u".damaged.1"_s), QByteArray("\0"
                                                       "2",
                                                2));
    QCOMPARE(filesInFolder().size(), 3); // the same damage is kept once
}

void TestSettings::aFileTooLargeIsLeftAlone()
{
    const QByteArray large = "[ini]\ntags=1\n" + QByteArray(2 * 1024 * 1024, 'x');
    put(large);
    Settings settings(path());
    QVERIFY(settings.problem());
    settings.write(settingskey::Tags, u"2"_s);
    const Result<void> saved = settings.save();
    QVERIFY(!saved);
    QCOMPARE(saved.error().code, ErrorCode::Settings);
    QCOMPARE(settings.read(settingskey::Tags), u"2"_s);
    QVERIFY(got() == large);
}

void TestSettings::aFolderInItsPlaceIsLeftAlone()
{
    QVERIFY(QDir().mkpath(path() + u"/inside"_s));
    Settings settings(path());
    QVERIFY(settings.problem());
    QCOMPARE(settings.read(settingskey::Tags), QString());
    settings.write(settingskey::Tags, u"2"_s);
    QVERIFY(!settings.save());
    QVERIFY(QFileInfo(path() + u"/inside"_s).isDir());
}

void TestSettings::anUnreadableFileIsLeftAlone()
{
    put("[ini]\ntags=1\n");
    QVERIFY(QFile::setPermissions(path(), QFileDevice::WriteOwner));
    if (QFile(path()).open(QIODevice::ReadOnly))
        QSKIP("this user may read everything");
    Settings settings(path());
    QVERIFY(settings.problem());
    QCOMPARE(settings.problem()->code, ErrorCode::Settings);
    settings.write(settingskey::Idioma, u"es"_s);
    QVERIFY(!settings.save());
    QVERIFY(QFile::setPermissions(path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner));
    QCOMPARE(got(), QByteArray("[ini]\ntags=1\n"));
    QVERIFY(settings.save());
    QCOMPARE(got(), QByteArray("[ini]\ntags=1\nidioma=es\n"));
}

void TestSettings::aReadOnlyFileIsLeftAlone()
{
    put("[ini]\ntags=1\n");
    QVERIFY(QFile::setPermissions(path(), QFileDevice::ReadOwner));
    if (QFileInfo(path()).isWritable())
        QSKIP("this user may write everything");
    Settings settings(path());
    QCOMPARE(settings.read(settingskey::Tags), u"1"_s);
    settings.write(settingskey::Tags, u"2"_s);
    QVERIFY(!settings.save());
    QCOMPARE(settings.read(settingskey::Tags), u"2"_s);
    QCOMPARE(got(), QByteArray("[ini]\ntags=1\n"));
    QCOMPARE(filesInFolder(), QStringList{u"ravlin.ini"_s});
}

void TestSettings::aReadOnlyFolderIsAnError()
{
    // A file in place of the folder, and on Linux a file system that nobody can write.
    put("not a folder", m_folder->filePath(u"file"_s));
    QStringList places{m_folder->filePath(u"file/ravlin/ravlin.ini"_s)};
    if (QFileInfo::exists(u"/proc/self"_s))
        places << u"/proc/ravlin/ravlin.ini"_s << u"/proc/ravlin.ini"_s;
    for (const QString &place : places) {
        Settings settings(place);
        QCOMPARE(settings.read(settingskey::Tags), QString());
        settings.write(settingskey::Tags, u"2"_s);
        const Result<void> saved = settings.save();
        QVERIFY2(!saved, qPrintable(place));
        QCOMPARE(saved.error().code, ErrorCode::Settings);
        QVERIFY(!saved.error().detail.isEmpty());
        QCOMPARE(settings.read(settingskey::Tags), u"2"_s);
    }
    QCOMPARE(got(m_folder->filePath(u"file"_s)), QByteArray("not a folder"));
}

void TestSettings::aLockedFileIsAnErrorAndCanBeSavedLater()
{
    put("[ini]\ntags=1\n");
    Settings settings(path());
    settings.write(settingskey::Tags, u"2"_s);
    {
        QLockFile lock(path() + u".lock"_s);
        QVERIFY(lock.lock());
        QVERIFY(!settings.save());
        QCOMPARE(got(), QByteArray("[ini]\ntags=1\n"));
    }
    QVERIFY(settings.save());
    QCOMPARE(got(), QByteArray("[ini]\ntags=2\n"));
}

void TestSettings::aSymbolicLinkStays()
{
    const QString target = m_folder->filePath(u"dotfiles.ini"_s);
    put("[ini]\ntags=1\n", target);
    QVERIFY(QFile::link(target, path()));
    Settings settings(path());
    QCOMPARE(settings.read(settingskey::Tags), u"1"_s);
    settings.write(settingskey::Tags, u"2"_s);
    QVERIFY(settings.save());
    QVERIFY(QFileInfo(path()).isSymLink());
    QCOMPARE(got(target), QByteArray("[ini]\ntags=2\n"));
}

void TestSettings::permissions()
{
    const QFileDevice::Permissions everybody =
        QFileDevice::ReadOther | QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::WriteOther;
    Settings settings(path());
    settings.write(settingskey::Correo, u"me@example.org"_s);
    QVERIFY(settings.save());
    QVERIFY(!(QFileInfo(path()).permissions() & everybody)); // a new file is the owner's own

    QVERIFY(QFile::setPermissions(
        path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ReadGroup)); // a user's choice stays
    settings.write(settingskey::Correo, u"you@example.org"_s);
    QVERIFY(settings.save());
    QCOMPARE(QFileInfo(path()).permissions() & everybody, QFileDevice::Permissions(QFileDevice::ReadGroup));
}

QTEST_GUILESS_MAIN(TestSettings)
#include "tst_settings.moc"
