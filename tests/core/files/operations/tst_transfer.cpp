// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: files, links and folders are copied and moved into a folder. Taken names lead to questions, and nothing is
// overwritten without a yes; a folder never goes into itself; links stay links; attributes and times are kept.

#include "core/files/operations/transfer.h"

#include "support/filesteps.h"
#include "support/filetree.h"
#include "support/trash.h"

#include <QDir>
#include <QTest>

#ifndef Q_OS_WIN
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#endif

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

class TestTransfer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void copiesFilesAndFolders_data() { kinds(); }
    void copiesFilesAndFolders();
    void keepsAttributesAndTimes_data() { drives(); }
    void keepsAttributesAndTimes();
    void linksStayLinks_data() { drives(); }
    void linksStayLinks();
    void aFolderNeverGoesIntoItself_data() { kinds(); }
    void aFolderNeverGoesIntoItself();
    void nothingIsOverwrittenWithoutAYes_data() { kinds(); }
    void nothingIsOverwrittenWithoutAYes();
    void replacesAfterAYes_data() { drives(); }
    void replacesAfterAYes();
    void keepsBoth();
    void anAnswerForAll();
    void foldersAreMerged_data() { drives(); }
    void foldersAreMerged();
    void aFileNeverReplacesAFolder();
    void aCopyBesideItself();
    void aMoveToWhereItIs();
    void twoSourcesOfOneName();
    void callingOff();
    void underANewName();
    void vanishedSource();
    void refusedName();
    void moveOntoAnotherNameOfTheFile();
    void moveOntoItsOwnNameInOtherCase();
    void namesInOtherCaseAreOne();
    void namesThatAreNoUnicode();

private:
    static void kinds();
    static void drives();
    QString in(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    QString target() const;
    TransferReport run(TransferKind kind, const QStringList &sources, const QString &folder,
        const ClashChooser &choose = nobodyAsked, const Watch &watch = {});
    static ClashDecision nobodyAsked(const Clash &clash)
    {
        QTest::qFail(qPrintable(u"asked about "_s + clash.target), __FILE__, __LINE__);
        return {};
    }
    static ClashChooser always(ClashAnswer reply)
    {
        return [reply](const Clash &) { return ClashDecision{reply, false}; };
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<OtherDrive> m_drive;
    platform::FileSystem &m_fileSystem = platform::FileSystem::native();
};

void TestTransfer::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_drive = std::make_unique<OtherDrive>();
    QDir().mkpath(in(u"to"_s));
}

void TestTransfer::kinds()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::newRow("copy") << TransferKind::Copy;
    QTest::newRow("move") << TransferKind::Move;
}

/// Moves on one drive are renames; to another one they are copies, then deletions.
void TestTransfer::drives()
{
    QTest::addColumn<TransferKind>("kind");
    QTest::addColumn<bool>("toOtherDrive");
    QTest::newRow("copy") << TransferKind::Copy << false;
    QTest::newRow("move") << TransferKind::Move << false;
    QTest::newRow("copy to another drive") << TransferKind::Copy << true;
    QTest::newRow("move to another drive") << TransferKind::Move << true;
}

TransferReport TestTransfer::run(TransferKind kind, const QStringList &sources, const QString &folder,
    const ClashChooser &choose, const Watch &watch)
{
    auto plan = makeTransferPlan(m_fileSystem, {kind, sources, folder});
    if (!plan) {
        QTest::qFail(qPrintable(plan.error().detail), __FILE__, __LINE__);
        return {};
    }
    if (!answerClashes(*plan, choose))
        return {};
    return runTransfer(m_fileSystem, *plan, watch);
}

/// Where the row's files go; empty if there is no other drive.
QString TestTransfer::target() const
{
    QFETCH(bool, toOtherDrive);
    if (!toOtherDrive)
        return in(u"to"_s);
    return m_drive->isOther() ? m_drive->path() : QString();
}

void TestTransfer::copiesFilesAndFolders()
{
    QFETCH(TransferKind, kind);
    writeFile(in(u"from/a.mp3"_s), "one");
    writeFile(in(u"from/cd1/b.mp3"_s), pattern(300'000, 7));
    writeFile(in(u"from/cd1/deep/c.mp3"_s), "");
    QDir().mkpath(in(u"from/cd1/empty"_s));
    const Snapshot before = snapshotOf(in(u"from"_s));

    const TransferReport report = run(kind, {in(u"from/a.mp3"_s), in(u"from/cd1"_s)}, in(u"to"_s));
    QCOMPARE(report.done.size(), std::size_t(2));
    QVERIFY(report.isComplete());
    QCOMPARE(report.done[0].target, in(u"to/a.mp3"_s));
    QVERIFY(report.done[1].isFolder);
    QCOMPARE(snapshotOf(in(u"to"_s)), before);
    QCOMPARE(snapshotOf(in(u"from"_s)), kind == TransferKind::Copy ? before : Snapshot());
}

void TestTransfer::keepsAttributesAndTimes()
{
#ifdef Q_OS_WIN
    QSKIP("permission bits and extended attributes are POSIX's; tst_windowsfiles knows those of Windows");
#else
    QFETCH(TransferKind, kind);
    const QString to = target();
    if (to.isEmpty())
        QSKIP("there is no second file system to write to");
    writeFile(in(u"cd/a.mp3"_s), "audio");
    const QByteArray file = QFile::encodeName(in(u"cd/a.mp3"_s));
    const bool hasAttributes = ::setxattr(file.constData(), "user.mood", "calm", 4, 0) == 0;
    QCOMPARE(::chmod(file.constData(), 0640), 0);
    const timespec times[2] = {{1'000'000'000, 5}, {1'234'567'890, 123'456'789}};
    QCOMPARE(::utimensat(AT_FDCWD, file.constData(), times, 0), 0);
    const QByteArray folder = QFile::encodeName(in(u"cd"_s));
    QCOMPARE(::chmod(folder.constData(), 0750), 0);
    QCOMPARE(::utimensat(AT_FDCWD, folder.constData(), times, 0), 0);

    QVERIFY(run(kind, {in(u"cd"_s)}, to).isComplete());
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(to + u"/cd/a.mp3"_s).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0640U);
    QCOMPARE(status.st_mtim.tv_sec, 1'234'567'890);
    QCOMPARE(status.st_mtim.tv_nsec, 123'456'789);
    QCOMPARE(::stat(QFile::encodeName(to + u"/cd"_s).constData(), &status), 0);
    QCOMPARE(status.st_mode & 07777U, 0750U);
    QCOMPARE(status.st_mtim.tv_sec, 1'234'567'890);
    char value[16] = {};
    const QByteArray made = QFile::encodeName(to + u"/cd/a.mp3"_s);
    if (hasAttributes && ::setxattr(made.constData(), "user.probe", "x", 1, 0) == 0) {
        QCOMPARE(::getxattr(made.constData(), "user.mood", value, sizeof value), 4);
        QCOMPARE(QByteArray(value), QByteArray("calm"));
    }
#endif
}

void TestTransfer::linksStayLinks()
{
    QFETCH(TransferKind, kind);
    const QString to = target();
    if (to.isEmpty())
        QSKIP("there is no second file system to write to");
    if (!MakesLinks)
        QSKIP("no symbolic links can be made here");
    writeFile(in(u"real.mp3"_s), "real");
    QDir().mkpath(in(u"cd"_s));
    makeLink("../real.mp3", in(u"cd/link.mp3"_s));
    makeLink("nowhere", in(u"dangling"_s));
    makeLink("cd", in(u"folderlink"_s));

    const TransferReport report = run(kind, {in(u"cd"_s), in(u"dangling"_s), in(u"folderlink"_s)}, to);
    QVERIFY(report.isComplete());
    const Snapshot expected{{u"cd"_s, "folder"}, {u"cd/link.mp3"_s, "link ../real.mp3"},
        {u"dangling"_s, "link nowhere"}, {u"folderlink"_s, "link cd"}};
    QCOMPARE(snapshotOf(to), expected);
    QCOMPARE(contentOf(in(u"real.mp3"_s)), QByteArray("real"));
    QCOMPARE(platform::isTaken(in(u"dangling"_s)), kind == TransferKind::Copy);
}

void TestTransfer::aFolderNeverGoesIntoItself()
{
    QFETCH(TransferKind, kind);
    writeFile(in(u"cd/sub/a.mp3"_s), "a");
    QStringList targets{u"cd"_s, u"cd/sub"_s, u"cd/../cd/sub/"_s};
    if (MakesLinks) {
        makeLink("cd/sub", in(u"shortcut"_s));
        targets += u"shortcut"_s;
    }
    const Snapshot before = snapshotOf(m_folder->path());
    for (const QString &target : targets) {
        const TransferReport report = run(kind, {in(u"cd"_s)}, in(target));
        QCOMPARE(report.failures.size(), std::size_t(1));
        QCOMPARE(report.failures[0].error.code, ErrorCode::IntoItself);
        QCOMPARE(snapshotOf(m_folder->path()), before);
    }
}

void TestTransfer::nothingIsOverwrittenWithoutAYes()
{
    QFETCH(TransferKind, kind);
    writeFile(in(u"a.mp3"_s), "new");
    writeFile(in(u"to/a.mp3"_s), "old");
    const Snapshot before = snapshotOf(m_folder->path());
    QStringList asked;
    const TransferReport skipped = run(kind, {in(u"a.mp3"_s)}, in(u"to"_s), [&](const Clash &clash) {
        asked.append(clash.target);
        return ClashDecision{ClashAnswer::Skip, false};
    });
    QCOMPARE(asked, QStringList{in(u"to/a.mp3"_s)});
    QCOMPARE(skipped.skipped, QStringList{in(u"a.mp3"_s)});
    QVERIFY(skipped.done.empty());
    QCOMPARE(snapshotOf(m_folder->path()), before);

    // Nor is a file that appears after the question.
    QFile::remove(in(u"to/a.mp3"_s));
    const auto plan = makeTransferPlan(m_fileSystem, {kind, {in(u"a.mp3"_s)}, in(u"to"_s)});
    writeFile(in(u"to/a.mp3"_s), "old");
    const TransferReport report = runTransfer(m_fileSystem, *plan);
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, ErrorCode::AlreadyExists);
    QCOMPARE(snapshotOf(m_folder->path()), before);
}

void TestTransfer::replacesAfterAYes()
{
    QFETCH(TransferKind, kind);
    const QString to = target();
    if (to.isEmpty())
        QSKIP("there is no second file system to write to");
    writeFile(in(u"a.mp3"_s), "new");
    writeFile(to + u"/a.mp3"_s, "old");
    QStringList sources{in(u"a.mp3"_s)};
    Snapshot expected{{u"a.mp3"_s, "file new"}};
    if (MakesLinks) {
        makeLink("elsewhere", in(u"l.mp3"_s));
        writeFile(to + u"/l.mp3"_s, "old");
        sources += in(u"l.mp3"_s);
        expected.insert(u"l.mp3"_s, "link elsewhere");
    }
    const TransferReport report = run(kind, sources, to, always(ClashAnswer::Replace));
    QVERIFY(report.isComplete() && report.lost.isEmpty());
    QCOMPARE(report.done.size(), std::size_t(sources.size()));
    for (const TransferStep &step : report.done) {
        QVERIFY(step.replaced);
        QCOMPARE(step.trashed.has_value(), platform::hasTrash(step.target));
        if (step.trashed && !step.trashed->file.isEmpty())
            QCOMPARE(contentOf(step.trashed->file), QByteArray("old"));
        if (step.trashed)
            discard(*step.trashed);
    }
    QCOMPARE(snapshotOf(to), expected);
    QCOMPARE(platform::isTaken(in(u"a.mp3"_s)), kind == TransferKind::Copy);
}

void TestTransfer::keepsBoth()
{
    writeFile(in(u"a.mp3"_s), "new");
    writeFile(in(u"to/a.mp3"_s), "old");
    writeFile(in(u"to/a (2).mp3"_s), "older");
    const TransferReport report = run(TransferKind::Copy, {in(u"a.mp3"_s)}, in(u"to"_s), always(ClashAnswer::KeepBoth));
    QVERIFY(report.isComplete());
    QCOMPARE(report.done[0].target, in(u"to/a (3).mp3"_s));
    QCOMPARE(snapshotOf(in(u"to"_s)),
        (Snapshot{{u"a.mp3"_s, "file old"}, {u"a (2).mp3"_s, "file older"}, {u"a (3).mp3"_s, "file new"}}));
}

void TestTransfer::anAnswerForAll()
{
    QStringList sources;
    for (const QString &name : {u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s}) {
        writeFile(in(name), "new");
        writeFile(in(u"to/"_s + name), "old");
        sources.append(in(name));
    }
    int asked = 0;
    const TransferReport report = run(TransferKind::Copy, sources, in(u"to"_s), [&](const Clash &) {
        return ClashDecision{++asked == 1 ? ClashAnswer::Skip : ClashAnswer::Replace, asked == 2};
    });
    QCOMPARE(asked, 2);
    QCOMPARE(report.skipped, QStringList{in(u"a.mp3"_s)});
    QCOMPARE(snapshotOf(in(u"to"_s)),
        (Snapshot{{u"a.mp3"_s, "file old"}, {u"b.mp3"_s, "file new"}, {u"c.mp3"_s, "file new"}}));
}

void TestTransfer::foldersAreMerged()
{
    QFETCH(TransferKind, kind);
    const QString to = target();
    if (to.isEmpty())
        QSKIP("there is no second file system to write to");
    writeFile(in(u"cd/a.mp3"_s), "new a");
    writeFile(in(u"cd/b.mp3"_s), "new b");
    writeFile(in(u"cd/sub/c.mp3"_s), "new c");
    writeFile(to + u"/cd/a.mp3"_s, "old a");
    writeFile(to + u"/cd/z.mp3"_s, "old z");
    QStringList asked;
    const TransferReport report = run(kind, {in(u"cd"_s)}, to, [&](const Clash &clash) {
        asked.append(clash.target);
        return ClashDecision{clash.isMerge ? ClashAnswer::Replace : ClashAnswer::Skip, false};
    });
    QCOMPARE(
        asked, (QStringList{QDir::toNativeSeparators(to + u"/cd"_s), QDir::toNativeSeparators(to + u"/cd/a.mp3"_s)}));
    QCOMPARE(report.skipped, QStringList{in(u"cd/a.mp3"_s)});
    QCOMPARE(snapshotOf(to + u"/cd"_s),
        (Snapshot{{u"a.mp3"_s, "file old a"}, {u"b.mp3"_s, "file new b"}, {u"sub"_s, "folder"},
            {u"sub/c.mp3"_s, "file new c"}, {u"z.mp3"_s, "file old z"}}));
    if (kind == TransferKind::Move)
        QCOMPARE(snapshotOf(in(u"cd"_s)), (Snapshot{{u"a.mp3"_s, "file new a"}}));
}

void TestTransfer::aFileNeverReplacesAFolder()
{
    writeFile(in(u"x"_s), "file");
    writeFile(in(u"to/x/precious.mp3"_s), "precious");
    writeFile(in(u"y/other.mp3"_s), "other");
    writeFile(in(u"to/y"_s), "file");
    const Snapshot before = snapshotOf(m_folder->path());
    for (const QString &name : {u"x"_s, u"y"_s}) {
        const TransferReport report = run(TransferKind::Move, {in(name)}, in(u"to"_s), [&](const Clash &clash) {
            if (clash.canReplace)
                QTest::qFail("offered to replace", __FILE__, __LINE__);
            return ClashDecision{ClashAnswer::Replace, true};
        });
        QCOMPARE(report.skipped, QStringList{in(name)});
        QCOMPARE(snapshotOf(m_folder->path()), before);
    }
}

void TestTransfer::aCopyBesideItself()
{
    writeFile(in(u"to/a.mp3"_s), "a");
    writeFile(in(u"to/cd/b.mp3"_s), "b");
    bool couldReplace = false;
    const TransferReport report =
        run(TransferKind::Copy, {in(u"to/a.mp3"_s), in(u"to/cd"_s)}, in(u"to"_s), [&](const Clash &clash) {
            couldReplace = couldReplace || clash.canReplace;
            return ClashDecision{ClashAnswer::KeepBoth, true};
        });
    QVERIFY(!couldReplace);
    QVERIFY(report.isComplete());
    QCOMPARE(snapshotOf(in(u"to"_s)),
        (Snapshot{{u"a.mp3"_s, "file a"}, {u"a (2).mp3"_s, "file a"}, {u"cd"_s, "folder"}, {u"cd/b.mp3"_s, "file b"},
            {u"cd (2)"_s, "folder"}, {u"cd (2)/b.mp3"_s, "file b"}}));
}

void TestTransfer::aMoveToWhereItIs()
{
    writeFile(in(u"to/a.mp3"_s), "a");
    const TransferReport report = run(TransferKind::Move, {in(u"to/a.mp3"_s)}, in(u"to/"_s));
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, ErrorCode::AlreadyExists);
    QCOMPARE(contentOf(in(u"to/a.mp3"_s)), QByteArray("a"));
}

void TestTransfer::twoSourcesOfOneName()
{
    // Rows of a recursive listing may be like this.
    writeFile(in(u"cd1/a.mp3"_s), "one");
    writeFile(in(u"cd2/a.mp3"_s), "two");
    bool couldReplace = true;
    const TransferReport report =
        run(TransferKind::Move, {in(u"cd1/a.mp3"_s), in(u"cd2/a.mp3"_s)}, in(u"to"_s), [&](const Clash &clash) {
            couldReplace = clash.canReplace;
            return ClashDecision{ClashAnswer::KeepBoth, false};
        });
    QVERIFY(!couldReplace);
    QVERIFY(report.isComplete());
    QCOMPARE(snapshotOf(in(u"to"_s)), (Snapshot{{u"a.mp3"_s, "file one"}, {u"a (2).mp3"_s, "file two"}}));
}

void TestTransfer::callingOff()
{
    writeFile(in(u"a.mp3"_s), "new");
    writeFile(in(u"to/a.mp3"_s), "old");
    auto plan = makeTransferPlan(m_fileSystem, {TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s)});
    QVERIFY(!answerClashes(*plan, [](const Clash &) { return ClashDecision{ClashAnswer::Stop}; }));
}

void TestTransfer::underANewName()
{
    writeFile(in(u"a.mp3"_s), "a");
    const auto plan = makeTransferPlan(m_fileSystem, {TransferKind::Copy, {in(u"a.mp3"_s)}, in(u"to"_s), u"b.mp3"_s});
    QVERIFY(runTransfer(m_fileSystem, *plan).isComplete());
    QCOMPARE(contentOf(in(u"to/b.mp3"_s)), QByteArray("a"));
    for (const QString &name : {u".."_s, u"x/y"_s, u"."_s}) {
        const auto refused = makeTransferPlan(m_fileSystem, {TransferKind::Copy, {in(u"a.mp3"_s)}, in(u"to"_s), name});
        QCOMPARE(refused.error().code, ErrorCode::InvalidArgument);
    }
}

void TestTransfer::vanishedSource()
{
    writeFile(in(u"b.mp3"_s), "b");
    const TransferReport report = run(TransferKind::Move, {in(u"gone.mp3"_s), in(u"b.mp3"_s)}, in(u"to"_s));
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].path, in(u"gone.mp3"_s));
    QCOMPARE(report.failures[0].error.code, ErrorCode::NotFound);
    QCOMPARE(report.done.size(), std::size_t(1));
    const auto noTarget = makeTransferPlan(m_fileSystem, {TransferKind::Move, {in(u"b.mp3"_s)}, in(u"none"_s)});
    QCOMPARE(noTarget.error().code, ErrorCode::NotFound);
    writeFile(in(u"c.mp3"_s), "c");
    const auto file = makeTransferPlan(m_fileSystem, {TransferKind::Move, {in(u"b.mp3"_s)}, in(u"c.mp3"_s)});
    QCOMPARE(file.error().code, ErrorCode::NotAFolder);
}

void TestTransfer::refusedName()
{
    // Wine reports another error for a long name.
    const bool isTooLong = platform::Separator == u'/';
    const QString refused = isTooLong ? QString(300, u'x') : u"a?b"_s;
    writeFile(in(u"a.mp3"_s), "a");
    const auto plan = makeTransferPlan(m_fileSystem, {TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s), refused});
    const TransferReport report = runTransfer(m_fileSystem, *plan);
    QCOMPARE(report.failures.size(), std::size_t(1));
    QCOMPARE(report.failures[0].error.code, isTooLong ? ErrorCode::NameTooLong : ErrorCode::InvalidArgument);
    QCOMPARE(snapshotOf(m_folder->path()), (Snapshot{{u"a.mp3"_s, "file a"}, {u"to"_s, "folder"}}));
}

void TestTransfer::moveOntoAnotherNameOfTheFile()
{
    writeFile(in(u"a.mp3"_s), "a");
    std::filesystem::create_hard_link(in(u"a.mp3"_s).toStdU16String(), in(u"to/a.mp3"_s).toStdU16String());
    QVERIFY(run(TransferKind::Move, {in(u"a.mp3"_s)}, in(u"to"_s), always(ClashAnswer::Replace)).isComplete());
    QCOMPARE(snapshotOf(m_folder->path()), (Snapshot{{u"to"_s, "folder"}, {u"to/a.mp3"_s, "file a"}}));
}

void TestTransfer::moveOntoItsOwnNameInOtherCase()
{
    if (platform::NameCase == Qt::CaseSensitive)
        QSKIP("names that differ in case are two here");
    writeFile(in(u"a.mp3"_s), "a");
    const TransferRequest request{
        TransferKind::Move, {in(u"a.mp3"_s)}, QDir::toNativeSeparators(m_folder->path()), u"A.mp3"_s};
    auto plan = makeTransferPlan(m_fileSystem, request);
    QVERIFY(answerClashes(*plan, always(ClashAnswer::Replace)));
    QVERIFY(runTransfer(m_fileSystem, *plan).isComplete());
    // Wine keeps the name; what counts is that the file is there.
    Snapshot left = snapshotOf(m_folder->path());
    QCOMPARE(left.take(left.contains(u"a.mp3"_s) ? u"a.mp3"_s : u"A.mp3"_s), QByteArray("file a"));
    QCOMPARE(left, (Snapshot{{u"to"_s, "folder"}}));
}

void TestTransfer::namesInOtherCaseAreOne()
{
    if (platform::NameCase == Qt::CaseSensitive)
        QSKIP("names that differ in case are two here");
    writeFile(in(u"cd1/a.mp3"_s), "one");
    writeFile(in(u"cd2/A.mp3"_s), "two");
    writeFile(in(u"cd3/A.mp3"_s), "three");
    bool couldReplace = true;
    const TransferReport report = run(TransferKind::Move, {in(u"cd1/a.mp3"_s), in(u"cd2/A.mp3"_s), in(u"cd3/A.mp3"_s)},
        in(u"to"_s), [&](const Clash &clash) {
            couldReplace = clash.canReplace;
            return ClashDecision{ClashAnswer::KeepBoth, false};
        });
    QVERIFY(!couldReplace);
    QVERIFY(report.isComplete());
    QCOMPARE(snapshotOf(in(u"to"_s)),
        (Snapshot{{u"a.mp3"_s, "file one"}, {u"A (2).mp3"_s, "file two"}, {u"A (3).mp3"_s, "file three"}}));
}

void TestTransfer::namesThatAreNoUnicode()
{
    const QString name = platform::decodePath(QByteArray("caf\xe9 \xff.mp3"));
    const auto made = ravlin::test::createNew(in(name));
    if (!made)
        QSKIP("this file system takes Unicode names only");
    QVERIFY(run(TransferKind::Copy, {in(name)}, in(u"to"_s)).isComplete());
    QCOMPARE(snapshotOf(in(u"to"_s)), (Snapshot{{name, "file "}}));
    QVERIFY(ravlin::test::removeFile(in(name)) && ravlin::test::removeFile(in(u"to/"_s + name))); // QTemporaryDir can't
}

QTEST_GUILESS_MAIN(TestTransfer)

#include "tst_transfer.moc"
