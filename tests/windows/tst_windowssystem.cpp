// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/foldermodel.h"
#include "core/files/operations/playlist.h"
#include "core/platform/desktop.h"
#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/platform/scratchfolder.h"
#include "core/platform/standardstreams.h"
#include "core/platform/trash.h"
#include "core/storage/leftovers.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>

#include <algorithm>

#include <windows.h>

using namespace Qt::StringLiterals;

namespace ravlin::platform {
namespace {

using test::ScratchFolder;

/// The default value of a key below the user's part of the classes root.
QString classValue(const QString &key)
{
    const QSettings classes(u"HKEY_CURRENT_USER\\Software\\Classes\\"_s + key, QSettings::NativeFormat);
    return classes.value(u"."_s).toString();
}

} // namespace

/// Contract: recycle bin, registry, code page, standard folders and drives of Windows work as the program expects.
class TestWindowsSystem : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void librariesComeFromTheSystemAndTheProgramsFolderOnly()
    {
        const ScratchFolder scratch;
        const QString library = QDir::toNativeSeparators(scratch.path(u"planted.dll"_s));
        QVERIFY(QFile::copy(inFolder(systemFolder(), u"version.dll"_s), library));
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(scratch.path()));
        const HMODULE found = ::LoadLibraryW(L"planted.dll");
        QVERIFY(found != nullptr); // as the system does by itself
        ::FreeLibrary(found);
        restrictLibrarySearch();
        QVERIFY(::LoadLibraryW(L"planted.dll") == nullptr);
        const HMODULE system = ::LoadLibraryW(L"version.dll");
        QVERIFY(system != nullptr);
        ::FreeLibrary(system);
        const HMODULE named = ::LoadLibraryW(library.toStdWString().c_str()); // as Qt loads its plugins
        QVERIFY(named != nullptr);
        ::FreeLibrary(named);
        QVERIFY(QDir::setCurrent(before));
    }

    void whatGoesIntoTheRecycleBinIsGoneFromItsFolder()
    {
        const ScratchFolder scratch;
        const QString path = QDir::toNativeSeparators(scratch.write(u"Años de radio.mp3"_s, "content"));
        QVERIFY(hasTrash(path));
        const auto item = moveToTrash(path);
        QVERIFY2(item, qPrintable(item ? QString() : item.error().detail));
        QVERIFY(scratch.names().isEmpty());
        QCOMPARE(nameOf(item->original), u"Años de radio.mp3"_s);
        if (item->file.isEmpty())
            QSKIP("this shell does not tell where in the recycle bin a file is (Wine 8 does not)");
        QVERIFY(restoreFromTrash(*item));
        QCOMPARE(ScratchFolder::read(path), "content");
    }

    void aWholeFolderGoesIntoTheRecycleBin()
    {
        const ScratchFolder scratch;
        QVERIFY(QDir(scratch.path()).mkpath(u"disc/cd1"_s));
        scratch.write(u"disc/cd1/one.mp3"_s, "content");
        QVERIFY(moveToTrash(QDir::toNativeSeparators(scratch.path(u"disc"_s))));
        QVERIFY(scratch.names().isEmpty());
    }

    void aNameThatTheShellWouldReadAsAnotherIsNotRecycled_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("other");
        QTest::newRow("blank at the end") << u"song.mp3 "_s << u"song.mp3"_s;
        QTest::newRow("full stop at the end") << u"song.mp3."_s << u"song.mp3"_s;
        QTest::newRow("folder with a full stop") << u"disc.\\song.mp3"_s << u"disc\\song.mp3"_s;
        QTest::newRow("folder with a blank") << u"disc \\song.mp3"_s << u"disc\\song.mp3"_s;
    }
    void aNameThatTheShellWouldReadAsAnotherIsNotRecycled()
    {
        QFETCH(QString, name);
        QFETCH(QString, other);
        const ScratchFolder scratch;
        FileSystem &fileSystem = FileSystem::native();
        const QString folder = QDir::toNativeSeparators(scratch.path());
        for (const QString &path : {inFolder(folder, name), inFolder(folder, other)}) {
            if (folderOf(path) != folder)
                QVERIFY(fileSystem.createFolder(folderOf(path)));
            const auto place = placeAt(fileSystem, path);
            QVERIFY(place && place->folder->createNew(place->name));
        }

        const auto item = moveToTrash(inFolder(folder, name));
        QVERIFY(!item);
        QCOMPARE(item.error().code, ErrorCode::NoTrash);
        QVERIFY(fileSystem.info(inFolder(folder, name)));
        QVERIFY(fileSystem.info(inFolder(folder, other)));

        QVERIFY(moveToTrash(inFolder(folder, other)));
        QVERIFY(fileSystem.info(inFolder(folder, name)));
    }

    void whatIsNotThereCannotBeRecycled()
    {
        const ScratchFolder scratch;
        const auto item = moveToTrash(QDir::toNativeSeparators(scratch.path(u"none.mp3"_s)));
        QVERIFY(!item);
        QCOMPARE(item.error().code, ErrorCode::NotFound);
    }

    void aKindOfFileHasThreeDefaultValuesInTheRegistry()
    {
        QVERIFY(makeFileDefault({u"ravlin.test"_s, u"A test's files"_s, u"C:\\ravlin.exe"_s, u"rvt"_s}));
        QCOMPARE(classValue(u"ravlin.test"_s), u"A test's files"_s);
        QCOMPARE(classValue(u".rvt"_s), u"ravlin.test"_s);
        QCOMPARE(classValue(u"ravlin.test\\shell\\open\\command"_s), u"C:\\ravlin.exe %1"_s);
    }

    void aProgramsPathWithABlankIsQuoted()
    {
        QVERIFY(
            makeFileDefault({u"ravlin.test2"_s, u"A test's files"_s, u"C:\\Program Files\\ravlin.exe"_s, u".rv2"_s}));
        QCOMPARE(classValue(u".rv2"_s), u"ravlin.test2"_s);
        QCOMPARE(classValue(u"ravlin.test2\\shell\\open\\command"_s), u"\"C:\\Program Files\\ravlin.exe\" %1"_s);
    }

    void aKindOfFileNeedsAClassAProgramAndAnExtension()
    {
        const QString program = u"C:\\ravlin.exe"_s;
        for (const FileType &type : {FileType{{}, {}, program, u"rvt"_s}, FileType{u"ravlin.test"_s, {}, {}, u"rvt"_s},
                 FileType{u"ravlin.test"_s, {}, program, {}}, FileType{u"a\\b"_s, {}, program, u"rvt"_s},
                 FileType{u"ravlin.test"_s, {}, program, u"a\\b"_s}}) {
            const auto made = makeFileDefault(type);
            QVERIFY(!made);
            QCOMPARE(made.error().code, ErrorCode::InvalidArgument);
        }
    }

    void theFixedFilesAreInTheRootOfDriveCWhereThatCanBeWritten()
    {
        const QString path = fixedFilePath(u"lista.m3u"_s);
        const bool canWrite = storage::TemporaryFile::create(FileSystem::native(), u"C:\\"_s).has_value();
        if (canWrite)
            QCOMPARE(path, u"c:\\lista.m3u"_s);
        else
            QVERIFY(path.endsWith(u"\\ravlin\\lista.m3u"_s));
        QVERIFY(QFileInfo(QFileInfo(path).path()).isDir());
    }

    void twoSelectionsPlayedReuseTheOneFixedFile()
    {
        const ScratchFolder scratch;
        QString opened;
        const auto open = [&](const QString &path) { opened = path; };
        const QString list = QDir::toNativeSeparators(scratch.path(u"lista.m3u"_s));
        QVERIFY(PlaySelection(FileSystem::native(), u"C:\\Música\\"_s, {u"uno.mp3"_s}, list, open));
        QVERIFY(PlaySelection(FileSystem::native(), u"C:\\Música\\"_s, {u"cd1\\dos.mp3"_s}, list, open));
        QCOMPARE(opened, list);
        QCOMPARE(ScratchFolder::read(list), *toCodePage(u"C:\\Música\\cd1\\dos.mp3\r\n"_s));
    }

    void textIsToldInTheCodePageOfTheSystemOrNotAtAll()
    {
        QCOMPARE(toCodePage(u"plain"_s), QByteArray("plain"));
        QCOMPARE(toCodePage(QString()), QByteArray());
        if (::GetACP() == 1252) {
            QCOMPARE(toCodePage(u"Años"_s), QByteArray("A\xf1os"));
            QCOMPARE(toCodePage(u"€"_s), QByteArray("\x80"));
            QVERIFY(!toCodePage(u"日本"_s));
            QVERIFY(!toCodePage(u"Ā"_s)); // not replaced by "A"
        } else if (::GetACP() == CP_UTF8) {
            QCOMPARE(toCodePage(u"日本"_s), u"日本"_s.toUtf8());
            QVERIFY(!toCodePage(QString(QChar(0xD800))));
        }
    }

    void specialFoldersAreFoundByTheirNumbers()
    {
        for (const SpecialFolder folder : {SpecialFolder::Desktop, SpecialFolder::Programs, SpecialFolder::Documents,
                 SpecialFolder::Fonts, SpecialFolder::RoamingSettings, SpecialFolder::LocalData, SpecialFolder::Home}) {
            const QString path = specialFolder(static_cast<int>(folder));
            QVERIFY2(QDir::isAbsolutePath(path) && !path.endsWith(u'\\'),
                qPrintable(u"%1: %2"_s.arg(static_cast<int>(folder)).arg(path)));
        }
        QCOMPARE(specialFolder(9999), QString());
        QVERIFY(QFileInfo(windowsFolder()).isDir());
        QVERIFY(QFileInfo(systemFolder()).isDir());
        QVERIFY(systemFolder().startsWith(windowsFolder(), Qt::CaseInsensitive));
    }

    void theTreeStartsAtTheDrives()
    {
        const auto roots = standardFolderRoots();
        QVERIFY(std::any_of(roots.begin(), roots.end(),
            [](const FolderRoot &root) { return root.path == u"C:\\"_s && root.kind == FolderRoot::Kind::Drive; }));
        for (const FolderRoot &root : roots)
            QVERIFY2(!root.path.contains(u'/'), qPrintable(root.path));
    }

    void widthsOnATerminalAreThoseOfUnicode()
    {
        QCOMPARE(displayWidth(U'a'), 1);
        QCOMPARE(displayWidth(U'ñ'), 1);
        QCOMPARE(displayWidth(U'日'), 2);
        QCOMPARE(displayWidth(0x1F3B5), 2); // a musical note
        QCOMPARE(displayWidth(0x301), 0);   // an accent on the preceding letter
        QCOMPARE(displayWidth(U'\n'), -1);
    }
};

} // namespace ravlin::platform

QTEST_GUILESS_MAIN(ravlin::platform::TestWindowsSystem)
#include "tst_windowssystem.moc"
