// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a temporary name contains the file's own, is distinguishable from every other name, and is undone unless
// the program that gave it is still running.

#include "core/files/renaming/renamingcase.h"
#include "core/platform/namecheck.h"
#include "core/platform/scratchfolder.h"
#include "core/storage/saferename.h"

#include <QtTest>

using namespace ravlin;
using namespace ravlin::storage;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

platform::FileSystem &native()
{
    return platform::FileSystem::native();
}

} // namespace

class TestSafeRename : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void holdsTheName_data();
    void holdsTheName();
    void longNamesAreCut();
    void othersAreNone();
    void bringsBack();
    void leavesAloneWhatIsBeingRenamed();
    void bringsBackFolders();
    void aMissingFolderIsAnError();
    void aFolderDoesNotGoIntoItself();
};

void TestSafeRename::holdsTheName_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : {u"Song.mp3"_s, u"SONG.MP3"_s, u"夜.mp3"_s, u"a (2).mp3"_s, u"Vol. 1"_s, u"Live"_s,
             u"T.N.T..mp3"_s, u"-x.mp3"_s})
        QTest::newRow(qPrintable(name)) << name;
}

void TestSafeRename::holdsTheName()
{
    QFETCH(QString, name);
    const QString aside = asideName(name, 0xab);
    QVERIFY(aside != name);
    QVERIFY(aside.contains(u" (ravlin-00000000000000ab)"_s));
    QVERIFY(!name.endsWith(u".mp3"_s) || aside.endsWith(u".mp3"_s));
    QCOMPARE(nameBeforeAside(aside), std::optional<QString>(name));
    QVERIFY(!nameBeforeAside(name));
    const QString path = asidePath(u"/music/"_s + name);
    QVERIFY(path.startsWith(u"/music/"_s));
    QVERIFY(asidePath(u"/music/"_s + name) != path);
}

void TestSafeRename::longNamesAreCut()
{
    const QString name = QString(83, u'夜') + u".mp3"_s;
    const QString aside = asideName(name, 1);
    QVERIFY(platform::nameLength(aside) <= platform::MaxNameLength);
    const QString former = nameBeforeAside(aside).value_or(QString());
    QVERIFY(former.endsWith(u".mp3"_s) && former.size() > 40);
    QVERIFY(name.startsWith(former.chopped(4)));
}

void TestSafeRename::othersAreNone()
{
    for (const QString &name : {u"Song.mp3"_s, u"Song (ravlin-0123456789abcde).mp3"_s,
             u"Song (ravlin-0123456789ABCDEF).mp3"_s, u" (ravlin-0123456789abcdef).mp3"_s,
             u"Song (ravlin-0123456789abcdef)x.mp3"_s, u"Song(ravlin-0123456789abcdef).mp3"_s, u").mp3"_s, u""_s})
        QVERIFY2(!nameBeforeAside(name), qPrintable(name));
}

void TestSafeRename::bringsBack()
{
    const RenamingCase folder({asideName(u"a.mp3"_s, 1), asideName(u"b.mp3"_s, 2), u"b.mp3"_s, u"b (2).mp3"_s});
    const auto done = bringBackAside(native(), folder.path());
    QVERIFY(done);
    QCOMPARE(done->size(), std::size_t(2));
    const auto files = folder.files();
    QCOMPARE(files.keys(), (QStringList{u"a.mp3"_s, u"b (2).mp3"_s, u"b (3).mp3"_s, u"b.mp3"_s}));
    QCOMPARE(files.value(u"b (3).mp3"_s), asideName(u"b.mp3"_s, 2));
    QCOMPARE(files.value(u"b.mp3"_s), u"b.mp3"_s);
    QVERIFY(bringBackAside(native(), folder.path())->empty());
}

void TestSafeRename::leavesAloneWhatIsBeingRenamed()
{
    const QString aside = asideName(u"a.mp3"_s, 1);
    const RenamingCase folder({aside});
    {
        const auto lock = lockAside(native(), folder.path(aside));
        QVERIFY(lock);
        QVERIFY(bringBackAside(native(), folder.path())->empty());
        QCOMPARE(folder.files().keys(), QStringList{aside});
    }
    QCOMPARE(bringBackAside(native(), folder.path())->size(), std::size_t(1));
}

void TestSafeRename::bringsBackFolders()
{
    const RenamingCase folder({asideName(u"Vol. 1"_s, 1) + u"/a.mp3"_s});
    QCOMPARE(bringBackAside(native(), folder.path() + u'/')->size(), std::size_t(1));
    QCOMPARE(folder.files().keys(), QStringList{u"Vol. 1/a.mp3"_s});
}

void TestSafeRename::aMissingFolderIsAnError()
{
    const RenamingCase folder;
    QVERIFY(!bringBackAside(native(), folder.path(u"none"_s)));
}

void TestSafeRename::aFolderDoesNotGoIntoItself()
{
    const ScratchFolder folder;
    const QString own = folder.path(u"N"_s);
    QVERIFY(QDir().mkpath(own + u"/sub"_s));
    folder.write(u"file"_s, "x");
    for (const QString &wanted : {u"N/x"_s, u"N/sub/x"_s})
        QCOMPARE(renameFile(native(), own, folder.path(wanted)).error().code, ErrorCode::IntoItself);
    QCOMPARE(renameFile(native(), own, folder.path(u"N/none/x"_s)).error().code, ErrorCode::NotFound);
    QCOMPARE(renameFile(native(), folder.path(u"file"_s), folder.path(u"file/x"_s)).error().code, ErrorCode::NotFound);
    QVERIFY(renameFile(native(), own, folder.path(u"N2"_s)));
}

QTEST_GUILESS_MAIN(TestSafeRename)
#include "tst_saferename.moc"
