// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: the trash's file "directorysizes" tells how much room each folder in it takes, as freedesktop.org's trash
// specification 1.0 asks, and whatever is in that file, or in its place, leads nowhere.

#include "core/platform/trash.h"

#include "support/filesteps.h"
#include "support/filetree.h"

#include <QProcess>
#include <QTest>

#include <sys/stat.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestTrashSizes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aFolderIsNotedWithItsSize();
    void filesAreNotNoted();
    void whatComesBackIsForgotten();
    void foldersOfOneName();
    void entriesOfOthersStay();
    void nonsenseBeginsAnew_data();
    void nonsenseBeginsAnew();
    void aLinkInItsPlaceIsNotFollowed();
    void whatIsTooDeepToMeasureIsNotNoted();

private:
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    QString sizes() const { return in(u"data/Trash/directorysizes"_s); }
    QList<QByteArray> lines() const { return contentOf(sizes()).split('\n'); }
    QByteArray expectedLine(const QString &name) const;
    TrashedItem trash(const QString &name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestTrashSizes::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(in(u"data"_s)));
    writeFile(in(u"cd/a.mp3"_s), pattern(100'000, 1));
    writeFile(in(u"cd/sub/b.mp3"_s), pattern(5'000, 2));
    writeFile(in(u"other/c.mp3"_s), pattern(20'000, 3));
}

/// A line as every desktop writes it, with the size as du tells it.
QByteArray TestTrashSizes::expectedLine(const QString &name) const
{
    QProcess du;
    du.start(u"du"_s, {u"-s"_s, u"-B1"_s, in(u"data/Trash/files/"_s + name)});
    du.waitForFinished();
    struct stat status = {};
    if (::stat(QFile::encodeName(in(u"data/Trash/info/%1.trashinfo"_s.arg(name))).constData(), &status) != 0)
        return "no info file";
    return du.readAllStandardOutput().split('\t').front() + ' ' + QByteArray::number(qint64(status.st_mtime)) + ' ' +
           name.toUtf8().toPercentEncoding();
}

TrashedItem TestTrashSizes::trash(const QString &name) const
{
    const auto item = moveToTrash(in(name));
    if (!item)
        qFatal("cannot delete %s", qPrintable(name));
    return *item;
}

void TestTrashSizes::aFolderIsNotedWithItsSize()
{
    QVERIFY(QDir().rename(in(u"cd"_s), in(u"ñ 1\n%"_s)));
    makeLink("a.mp3", in(u"ñ 1\n%/link"_s));
    std::filesystem::create_hard_link(
        standardPath(QFile::encodeName(in(u"ñ 1\n%/a.mp3"_s))), standardPath(QFile::encodeName(in(u"ñ 1\n%/d.mp3"_s))));
    trash(u"ñ 1\n%"_s);
    const QByteArray expected = expectedLine(u"ñ 1\n%"_s);
    QVERIFY2(expected.endsWith(" %C3%B1%201%0A%25"), expected.constData());
    QVERIFY(expected.split(' ').front().toLongLong() > 105'000); // du has worked
    QCOMPARE(lines(), (QList<QByteArray>{expected, ""}));
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(sizes()).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0600U);
}

void TestTrashSizes::filesAreNotNoted()
{
    trash(u"cd/a.mp3"_s);
    QVERIFY(!isTaken(sizes()));
}

void TestTrashSizes::whatComesBackIsForgotten()
{
    const TrashedItem cd = trash(u"cd"_s);
    const TrashedItem other = trash(u"other"_s);
    const QByteArray kept = expectedLine(u"other"_s);
    QCOMPARE(lines(), (QList<QByteArray>{expectedLine(u"cd"_s), kept, ""}));
    QVERIFY(restoreFromTrash(cd));
    QCOMPARE(lines(), (QList<QByteArray>{kept, ""}));
    QVERIFY(restoreFromTrash(other));
    QVERIFY(!isTaken(sizes()));
}

void TestTrashSizes::foldersOfOneName()
{
    trash(u"cd"_s);
    writeFile(in(u"cd/a.mp3"_s), pattern(300'000, 4));
    trash(u"cd"_s);
    QCOMPARE(lines(), (QList<QByteArray>{expectedLine(u"cd"_s), expectedLine(u"cd (2)"_s), ""}));
    QCOMPARE(snapshotOf(in(u"data/Trash"_s)).keys().filter(u"directorysizes"_s).size(), 1); // nothing half-written
}

void TestTrashSizes::entriesOfOthersStay()
{
    writeFile(sizes(), "4096 1700000000 some%20folder\n8192 1700000001 cd\n");
    trash(u"cd"_s); // what was noted of an earlier folder of this name is out of date
    QCOMPARE(lines(), (QList<QByteArray>{"4096 1700000000 some%20folder", expectedLine(u"cd"_s), ""}));
}

void TestTrashSizes::nonsenseBeginsAnew_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no entries") << QByteArray("x\n1 2\n1 2 3 4\n-1 2 a\n1 b c\n\n 1 2\n");
    QTest::newRow("zeros") << QByteArray(10'000, '\0');
    QTest::newRow("numbers beyond all") << QByteArray("99999999999999999999999 1 a\n1 99999999999999999999999 a");
    QTest::newRow("too large") << QByteArray("1 2 a\n").repeated(200'000);
}

void TestTrashSizes::nonsenseBeginsAnew()
{
    QFETCH(QByteArray, content);
    writeFile(sizes(), content);
    trash(u"cd"_s);
    QCOMPARE(lines(), (QList<QByteArray>{expectedLine(u"cd"_s), ""}));
}

void TestTrashSizes::aLinkInItsPlaceIsNotFollowed()
{
    writeFile(in(u"precious"_s), "1 2 a\n");
    QDir().mkpath(in(u"data/Trash"_s));
    makeLink(QFile::encodeName(in(u"precious"_s)), sizes());
    const TrashedItem item = trash(u"cd"_s);
    QCOMPARE(contentOf(in(u"precious"_s)), QByteArray("1 2 a\n"));
    QCOMPARE(lines(), (QList<QByteArray>{expectedLine(u"cd"_s), ""}));
    QVERIFY(QFile::remove(sizes()));
    QVERIFY(QDir().mkdir(sizes())); // a folder in its place: no note can be written
    QVERIFY(restoreFromTrash(item));
    trash(u"cd"_s);
    QVERIFY(QFileInfo(sizes()).isDir());
    QCOMPARE(contentOf(in(u"precious"_s)), QByteArray("1 2 a\n"));
}

void TestTrashSizes::whatIsTooDeepToMeasureIsNotNoted()
{
    // Deeper than is measured: the folder goes into the trash, without a note.
    QString deep = in(u"deep"_s);
    for (int level = 0; level < 250; ++level)
        deep += u"/d"_s;
    QVERIFY(QDir().mkpath(deep));
    trash(u"deep"_s);
    QVERIFY(!isTaken(in(u"deep"_s)));
    QVERIFY(!isTaken(sizes()));
}

QTEST_GUILESS_MAIN(TestTrashSizes)

#include "tst_trashsizes.moc"
