// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: each way of renaming refuses a taken name and leaves both files as they are. If the file system does not
// support a way, the next one is used.

#include "core/platform/posix/exclusiverename.h"
#include "core/platform/scratchfolder.h"

#include <QtTest>

#include <cerrno>

#include <fcntl.h>

using namespace ravlin::platform;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

using Way = int (*)(const QByteArray &from, const QByteArray &to);

/// One of the ways for paths.
template <int (*Rename)(NameAt, NameAt)>
int byPath(const QByteArray &from, const QByteArray &to)
{
    return Rename({AT_FDCWD, from.constData()}, {AT_FDCWD, to.constData()});
}

} // namespace

Q_DECLARE_METATYPE(Way)

class TestExclusiveRename : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void neverOverwrites_data();
    void neverOverwrites();
    void foldersAreNotLinked();
    void aFolderCannotGoBelowItself();
};

void TestExclusiveRename::neverOverwrites_data()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("best") << Way(byPath<renameExclusively>);
    QTest::newRow("by linking") << Way(byPath<renameByLinking>);
    QTest::newRow("after looking") << Way(byPath<renameAfterLooking>);
}

void TestExclusiveRename::neverOverwrites()
{
    QFETCH(Way, way);
    const ScratchFolder folder;
    const QByteArray a = folder.write(u"a"_s, "one").toUtf8();
    const QByteArray b = folder.write(u"b"_s, "two").toUtf8();
    const QByteArray c = folder.path(u"c"_s).toUtf8();
    QVERIFY(QFile::link(u"nowhere"_s, folder.path(u"link"_s)));
    QVERIFY(QDir().mkdir(folder.path(u"folder"_s)));
    QCOMPARE(way(a, b), EEXIST);
    QCOMPARE(way(a, folder.path(u"link"_s).toUtf8()), EEXIST);
    QCOMPARE(way(a, folder.path(u"folder"_s).toUtf8()), EEXIST);
    QCOMPARE(way(a, c), 0);
    QCOMPARE(folder.names(), (QStringList{u"b"_s, u"c"_s, u"folder"_s, u"link"_s}));
    QCOMPARE(ScratchFolder::read(folder.path(u"b"_s)), QByteArray("two"));
    QCOMPARE(ScratchFolder::read(folder.path(u"c"_s)), QByteArray("one"));
    QCOMPARE(infoOf(folder.path(u"c"_s)).linkCount, 1U);
    QCOMPARE(way(a, b) == 0, false); // it no longer exists
    QCOMPARE(way(a, folder.path(u"d"_s).toUtf8()), ENOENT);
    // A link is renamed, not its target.
    QCOMPARE(way(folder.path(u"link"_s).toUtf8(), folder.path(u"link2"_s).toUtf8()), 0);
    QVERIFY(QFileInfo(folder.path(u"link2"_s)).isSymLink());
}

void TestExclusiveRename::foldersAreNotLinked()
{
    const ScratchFolder folder;
    QVERIFY(QDir().mkdir(folder.path(u"one"_s)));
    QVERIFY(QDir().mkdir(folder.path(u"two"_s)));
    const QByteArray one = folder.path(u"one"_s).toUtf8();
    QCOMPARE(byPath<renameByLinking>(one, folder.path(u"new"_s).toUtf8()), EPERM);
    for (const Way way : {Way(byPath<renameExclusively>), Way(byPath<renameAfterLooking>)})
        QCOMPARE(way(one, folder.path(u"two"_s).toUtf8()), EEXIST);
    QCOMPARE(byPath<renameAfterLooking>(one, folder.path(u"new"_s).toUtf8()), 0);
    QCOMPARE(folder.names(), (QStringList{u"new"_s, u"two"_s}));
}

void TestExclusiveRename::aFolderCannotGoBelowItself()
{
    const ScratchFolder folder;
    QVERIFY(QDir().mkpath(folder.path(u"one/two"_s)));
    QCOMPARE(
        byPath<renameExclusively>(folder.path(u"one"_s).toUtf8(), folder.path(u"one/two/three"_s).toUtf8()), EINVAL);
    QVERIFY(QFileInfo(folder.path(u"one/two"_s)).isDir());
}

QTEST_GUILESS_MAIN(TestExclusiveRename)
#include "tst_exclusiverename.moc"
