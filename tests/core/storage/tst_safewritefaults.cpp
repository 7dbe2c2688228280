// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: whichever system call of a save fails, does half its work or is the program's last one, the file holds the
// old content or the new one, the caller gets an error, and what stays behind is recognised by its name and cleaned.

#include "core/platform/path.h"
#include "core/storage/leftovers.h"
#include "core/storage/redofile.h"
#include "core/storage/rewritecase.h"
#include "support/faultyfilesystem.h"
#include "support/filesteps.h"

#include <QtTest>

#include <sys/wait.h>

using namespace ravlin;
using namespace ravlin::platform;
using namespace ravlin::storage;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

Q_DECLARE_METATYPE(ravlin::test::Way)
Q_DECLARE_METATYPE(ravlin::test::Fault)

namespace {

constexpr int MostSteps = 500; ///< more than any save takes, so that the loops end

FileSystem &native()
{
    return FileSystem::native();
}

void addWays()
{
    QTest::addColumn<Way>("way");
    for (const Way way : AllWays)
        QTest::newRow(nameOf(way)) << way;
}

void addWaysAndFaults(std::initializer_list<std::pair<const char *, Fault>> faults)
{
    QTest::addColumn<Way>("way");
    QTest::addColumn<Fault>("fault");
    for (const Way way : AllWays) {
        for (const auto &[name, fault] : faults)
            QTest::addRow("%s, %s", nameOf(way), name) << way << fault;
    }
}

/// A hard-linked file whose rewriting ended after its redo file was in place.
void leaveRedo(const RewriteCase &rewriteCase)
{
    FaultyFileSystem faulty;
    // The first copy after the commit fails, and with it all undoing.
    faulty.beforeCall = [&](Call call) {
        if (call == Call::SyncFolder)
            faulty.setPlan({.fault = Fault::Short, .at = 1, .forEver = true});
    };
    if (rewriteCase.rewriteForward(faulty))
        qFatal("the fault did not come");
}

QString redoPathOf(const RewriteCase &rewriteCase)
{
    return rewriteCase.folder().path(redoName(infoOf(rewriteCase.path()).inode));
}

} // namespace

class TestSafeWriteFaults : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyStepFails_data() { addWaysAndFaults({{"fails", Fault::Fail}, {"fails half-way", Fault::FailLater}}); }
    void everyStepFails();
    void readOnlyFileGetsItsModeBack_data() { addWays(); }
    void readOnlyFileGetsItsModeBack();
    void everythingFailsFromStepOn_data() { addWays(); }
    void everythingFailsFromStepOn();
    void shortTransfersAreContinued_data() { addWays(); }
    void shortTransfersAreContinued();
    void corruptionIsNoticed_data() { addWays(); }
    void corruptionIsNoticed();
    void diesAtEveryStep_data() { addWaysAndFaults({{"before", Fault::Die}, {"after", Fault::DieAfter}}); }
    void diesAtEveryStep();
    void changedWhileBeingCopied_data();
    void changedWhileBeingCopied();
    void ownerMayNotBeGiven();

    void recoveringIsItselfSafe();
    void redoIsFinishedByCleaning();
    void clearedEndIsFinished();
    void redoOfRenamedFileIsFinished();
    void redoOfChangedFileIsKept();
    void redoWithoutItsFileIsKept();
    void everyWayToTheFileRecoversIt();
    void redoIsOnTheDiskFirst();
    void damagedRedoIsDropped();
    void redoInUseIsLeftAlone();
    void redoOfAStrangerIsIgnored();
    void redoCannotLeaveItsFolder_data();
    void redoCannotLeaveItsFolder();
};

void TestSafeWriteFaults::everyStepFails()
{
    QFETCH(Way, way);
    QFETCH(Fault, fault);
    int failures = 0;
    for (int step = 0; step < MostSteps; ++step) {
        const RewriteCase rewriteCase(way);
        const qint64 modified = infoOf(rewriteCase.path()).modified;
        FaultyFileSystem faulty;
        faulty.setPlan({.fault = fault, .at = step});
        const auto result = rewriteCase.rewriteForward(faulty);
        const QByteArray present = ScratchFolder::read(rewriteCase.path());
        QVERIFY(rewriteCase.hasOnlyLeftovers());
        if (result) {
            QCOMPARE(present, rewriteCase.newContent());
        } else {
            ++failures;
            QVERIFY(faulty.hasFired());
            QCOMPARE(result.error().detail.left(8), QStringLiteral("injected"));
            QCOMPARE(present, rewriteCase.oldContent());
            // A changed time with unchanged content would cause a needless read.
            QCOMPARE(infoOf(rewriteCase.path()).modified, modified);
        }
        QVERIFY(cleanLeftovers(native(), rewriteCase.folder().path()));
        QVERIFY(rewriteCase.isClean());
        QCOMPARE(ScratchFolder::read(rewriteCase.path()), present);
        if (!faulty.hasFired()) {
            QVERIFY(result);
            QVERIFY(failures >= 3);
            return;
        }
    }
    QFAIL("never went through");
}

void TestSafeWriteFaults::readOnlyFileGetsItsModeBack()
{
    QFETCH(Way, way);
    int failures = 0;
    for (int step = 0; step < MostSteps; ++step) {
        const RewriteCase rewriteCase(way);
        QVERIFY(ravlin::test::setPermissions(rewriteCase.path(), 0444));
        FaultyFileSystem faulty;
        Call last = Call::Open; // the one that fails
        faulty.beforeCall = [&](Call call) {
            if (!faulty.hasFired())
                last = call;
        };
        faulty.setPlan({.fault = Fault::Fail, .at = step});
        const auto result = rewriteCase.rewriteForward(faulty, {.readOnlyFile = ReadOnlyFile::MakeWritable});
        failures += result ? 0 : 1;
        // Unless setting it is what fails.
        if (last != Call::SetPermissions)
            QCOMPARE(infoOf(rewriteCase.path()).permissions, quint32(0444));
        if (!faulty.hasFired()) {
            QVERIFY(result && failures >= 3);
            return;
        }
    }
    QFAIL("never went through");
}

void TestSafeWriteFaults::everythingFailsFromStepOn()
{
    QFETCH(Way, way);
    for (int step = 0; step < MostSteps; ++step) {
        const RewriteCase rewriteCase(way);
        FaultyFileSystem faulty;
        faulty.setPlan({.fault = Fault::Fail, .at = step, .forEver = true});
        const auto result = rewriteCase.rewriteForward(faulty);
        QVERIFY(rewriteCase.hasOnlyLeftovers());
        QVERIFY(rewriteCase.recover());
        const QByteArray present = ScratchFolder::read(rewriteCase.path());
        // Reading back and undoing failed too: then a single block can only hold the new content.
        const bool mayBeNew = result || way != Way::Replaced;
        QVERIFY(present == rewriteCase.oldContent() || (mayBeNew && present == rewriteCase.newContent()));
        QVERIFY(cleanLeftovers(native(), rewriteCase.folder().path()));
        QVERIFY(rewriteCase.isCleaned());
        if (!faulty.hasFired()) {
            QVERIFY(result);
            return;
        }
    }
    QFAIL("never went through");
}

void TestSafeWriteFaults::shortTransfersAreContinued()
{
    QFETCH(Way, way);
    for (int step = 0; step < MostSteps; ++step) {
        const RewriteCase rewriteCase(way);
        FaultyFileSystem faulty;
        faulty.setPlan({.fault = Fault::Short, .at = step});
        const auto result = rewriteCase.rewriteForward(faulty);
        QVERIFY2(result, qPrintable(result ? QString() : result.error().detail));
        QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
        QVERIFY(rewriteCase.isClean());
        if (!faulty.hasFired())
            return;
    }
    QFAIL("never went through");
}

void TestSafeWriteFaults::corruptionIsNoticed()
{
    QFETCH(Way, way);
    int noticed = 0;
    for (int step = 0; step < MostSteps; ++step) {
        const RewriteCase rewriteCase(way);
        FaultyFileSystem faulty;
        faulty.setPlan({.fault = Fault::Corrupt, .at = step});
        const auto result = rewriteCase.rewriteForward(faulty);
        if (result) {
            QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
        } else {
            QCOMPARE(result.error().code, ErrorCode::VerifyFailed);
            QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.oldContent());
            ++noticed;
        }
        QVERIFY(rewriteCase.isClean());
        if (!faulty.hasFired()) {
            QVERIFY(noticed > 0 || way == Way::Cut);
            return;
        }
    }
    QFAIL("never went through");
}

void TestSafeWriteFaults::diesAtEveryStep()
{
    QFETCH(Way, way);
    QFETCH(Fault, fault);
    for (int step = 0; step < MostSteps; ++step) {
        const RewriteCase rewriteCase(way);
        const pid_t child = ::fork();
        if (child == 0) {
            FaultyFileSystem faulty;
            faulty.setPlan({.fault = fault, .at = step});
            ::_exit(rewriteCase.rewriteForward(faulty) ? 0 : 1);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY(WIFEXITED(status));
        QVERIFY(rewriteCase.hasOnlyLeftovers());
        QVERIFY(rewriteCase.recover());
        const QByteArray present = ScratchFolder::read(rewriteCase.path());
        QVERIFY(present == rewriteCase.oldContent() || present == rewriteCase.newContent());
        QVERIFY(cleanLeftovers(native(), rewriteCase.folder().path()));
        QVERIFY(rewriteCase.isCleaned());
        QCOMPARE(ScratchFolder::read(rewriteCase.path()), present);
        if (WEXITSTATUS(status) == 0) {
            QCOMPARE(present, rewriteCase.newContent());
            QVERIFY(step >= 3);
            return;
        }
        QCOMPARE(WEXITSTATUS(status), FaultyFileSystem::DeathStatus);
    }
    QFAIL("never went through");
}

void TestSafeWriteFaults::changedWhileBeingCopied_data()
{
    QTest::addColumn<Way>("way");
    QTest::newRow("replaced") << Way::Replaced;
    QTest::newRow("rewritten") << Way::Rewritten;
}

void TestSafeWriteFaults::changedWhileBeingCopied()
{
    QFETCH(Way, way);
    const RewriteCase rewriteCase(way);
    FaultyFileSystem faulty;
    faulty.beforeCall = [&](Call call) {
        if (call == Call::Sync)
            rewriteCase.folder().write(QStringLiteral("song.mp3"), "somebody else's");
    };
    const auto result = rewriteCase.rewriteForward(faulty);
    QVERIFY(!result);
    // Found by reading back or by the file's state: either way nothing is lost.
    QVERIFY(result.error().code == ErrorCode::ChangedMeanwhile || result.error().code == ErrorCode::VerifyFailed);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), "somebody else's");
    QVERIFY(rewriteCase.isClean());
}

void TestSafeWriteFaults::ownerMayNotBeGiven()
{
    if (::geteuid() != 0)
        QSKIP("only root can make a file of somebody else's");
    const RewriteCase rewriteCase(Way::Replaced);
    QCOMPARE(::chown(encodePath(rewriteCase.path()), 12345, 23456), 0);
    const quint64 inode = infoOf(rewriteCase.path()).inode;
    FaultyFileSystem faulty;
    faulty.setPlan({.only = Call::TakeMetadata, .forEver = true, .code = ErrorCode::AccessDenied});
    QCOMPARE(rewriteCase.rewriteForward(faulty).value(), WriteOutcome::Rewritten);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
    QCOMPARE(infoOf(rewriteCase.path()).inode, inode);
    QCOMPARE(infoOf(rewriteCase.path()).owner, 12345U);
    QVERIFY(rewriteCase.isClean());
}

void TestSafeWriteFaults::recoveringIsItselfSafe()
{
    // It may fail or die at any step and be started again.
    for (const Fault fault : {Fault::Fail, Fault::FailLater, Fault::Die, Fault::DieAfter}) {
        bool wentThrough = false;
        for (int step = 0; step < MostSteps && !wentThrough; ++step) {
            const RewriteCase rewriteCase(Way::Rewritten);
            leaveRedo(rewriteCase);
            QVERIFY(!rewriteCase.isClean());
            const pid_t child = ::fork();
            if (child == 0) {
                FaultyFileSystem faulty;
                faulty.setPlan({.fault = fault, .at = step});
                static_cast<void>(recoverFile(faulty, rewriteCase.path()));
                ::_exit(faulty.hasFired() ? 1 : 0);
            }
            int status = 0;
            QCOMPARE(::waitpid(child, &status, 0), child);
            QVERIFY(WIFEXITED(status));
            wentThrough = WEXITSTATUS(status) == 0;
            QVERIFY(recoverFile(native(), rewriteCase.path()));
            QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
            QVERIFY(cleanLeftovers(native(), rewriteCase.folder().path()));
            QVERIFY(rewriteCase.isClean());
        }
        QVERIFY(wentThrough);
    }
}

void TestSafeWriteFaults::redoIsFinishedByCleaning()
{
    const RewriteCase rewriteCase(Way::Rewritten);
    leaveRedo(rewriteCase);
    QVERIFY(QFile::exists(redoPathOf(rewriteCase)));
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 1);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
    QVERIFY(rewriteCase.isClean());
}

void TestSafeWriteFaults::clearedEndIsFinished()
{
    // What a power cut leaves of a file that was being cut: the old size, but the rest of the last block is cleared.
    const ScratchFolder folder;
    const QByteArray old(9000, 'o');
    const QByteArray shorter(8500, 'o');
    const QString song = folder.write(u"song.mp3"_s, old);
    QVERIFY(QFile::link(song, folder.path(u"link"_s)));
    const QString redoPath = folder.path(redoName(infoOf(song).inode));
    for (const bool isCleared : {true, false}) {
        folder.write(u"song.mp3"_s, old.left(8500) + QByteArray(500, isCleared ? '\0' : 'x'));
        {
            const auto redo = ravlin::test::createNew(redoPath).value();
            const RedoHeader header{infoOf(song).inode, shorter.size(), old.size(), 0, false, u"song.mp3"_s};
            QVERIFY(writeRedoHeader(*redo, header));
            QVERIFY(writeAll(*redo, shorter, header.newOffset()));
            QVERIFY(writeAll(*redo, old, header.oldOffset()));
            QVERIFY(writeRedoTrailer(*redo, header));
        }
        QCOMPARE(recoverFile(native(), song).has_value(), isCleared);
        QCOMPARE(ScratchFolder::read(song) == shorter, isCleared);
        QCOMPARE(QFile::exists(redoPath), !isCleared);
    }
}

void TestSafeWriteFaults::redoOfRenamedFileIsFinished()
{
    const RewriteCase rewriteCase(Way::Rewritten);
    leaveRedo(rewriteCase);
    const QString renamed = rewriteCase.folder().path(QStringLiteral("renamed.mp3"));
    QVERIFY(QFile::rename(rewriteCase.path(), renamed));
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 1);
    QCOMPARE(ScratchFolder::read(renamed), rewriteCase.newContent());
}

void TestSafeWriteFaults::redoOfChangedFileIsKept()
{
    // Another program saved the file after the crash: neither its content nor ours may be lost.
    const RewriteCase rewriteCase(Way::Rewritten);
    leaveRedo(rewriteCase);
    const QByteArray theirs(25'000, 'z');
    rewriteCase.folder().write(QStringLiteral("song.mp3"), theirs);
    const QByteArray redo = ScratchFolder::read(redoPathOf(rewriteCase));
    QCOMPARE(recoverFile(native(), rewriteCase.path()).error().code, ErrorCode::Interrupted);
    QCOMPARE(recoverNamed(native(), rewriteCase.path()).error().code, ErrorCode::Interrupted);
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 0);
    QVERIFY(!recoverFolder(native(), rewriteCase.folder().path(), {redoName(infoOf(rewriteCase.path()).inode)}));
    const auto saved = rewriteFile(native(), rewriteCase.path(), infoOf(rewriteCase.path()), {Segment::fresh("n")});
    QCOMPARE(saved.error().code, ErrorCode::Interrupted);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), theirs);
    QCOMPARE(ScratchFolder::read(redoPathOf(rewriteCase)), redo);
}

void TestSafeWriteFaults::redoWithoutItsFileIsKept()
{
    // Another program moved the file away, which keeps another link to it half-written.
    const RewriteCase rewriteCase(Way::Rewritten);
    leaveRedo(rewriteCase);
    const QString redoPath = redoPathOf(rewriteCase);
    const ScratchFolder other;
    for (const QString &name : {QStringLiteral("song.mp3"), QStringLiteral("second name.mp3")})
        QVERIFY(QFile::rename(rewriteCase.folder().path(name), other.path(name)));
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 0);
    QVERIFY(QFile::exists(redoPath));
    QVERIFY(QFile::rename(other.path(QStringLiteral("song.mp3")), rewriteCase.path()));
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 1);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
}

void TestSafeWriteFaults::everyWayToTheFileRecoversIt()
{
    using Recover = std::function<bool(const RewriteCase &)>;
    const Recover ways[] = {
        [](const RewriteCase &at) { return recoverFile(native(), at.path()).value(); },
        [](const RewriteCase &at) { return recoverNamed(native(), at.path()).value(); },
        [](const RewriteCase &at) {
            return recoverNamed(native(), at.folder().path(QStringLiteral("second name.mp3"))).value();
        },
        [](const RewriteCase &at) {
            return recoverFolder(native(), at.folder().path(), native().names(at.folder().path()).value());
        },
        [](const RewriteCase &at) {
            return finishRedo(native(), at.folder().path(), nameOf(redoPathOf(at))).value() == RedoState::Gone;
        },
        [](const RewriteCase &at) { // one link is left: no reason not to look
            QFile::remove(at.folder().path(QStringLiteral("second name.mp3")));
            return recoverFile(native(), at.path()).value();
        },
    };
    for (const Recover &recover : ways) {
        const RewriteCase rewriteCase(Way::Rewritten);
        leaveRedo(rewriteCase);
        QVERIFY(ScratchFolder::read(rewriteCase.path()) != rewriteCase.newContent());
        QVERIFY(recover(rewriteCase));
        QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
        QVERIFY(!recoverFile(native(), rewriteCase.path()).value());
    }
}

void TestSafeWriteFaults::redoIsOnTheDiskFirst()
{
    // Of the redo file, then of its name, then the first byte of the song.
    const RewriteCase rewriteCase(Way::Rewritten);
    FaultyFileSystem faulty;
    QString calls;
    faulty.beforeCall = [&](Call call) {
        if (call == Call::Replace || call == Call::SyncFolder || call == Call::Sync || call == Call::Copy) {
            const bool isIntact = ScratchFolder::read(rewriteCase.path()) == rewriteCase.oldContent();
            calls += call == Call::Replace ? u'R' : call == Call::SyncFolder ? u'F' : call == Call::Sync ? u'S' : u'c';
            calls += isIntact ? u'.' : u'!';
        }
    };
    QVERIFY(rewriteCase.rewriteForward(faulty));
    QVERIFY2(calls.contains(u"S.R.F.c."_s), qPrintable(calls));
    QVERIFY2(calls.indexOf(u'!') > calls.indexOf(u'F'), qPrintable(calls));
}

void TestSafeWriteFaults::damagedRedoIsDropped()
{
    const RewriteCase rewriteCase(Way::Rewritten);
    leaveRedo(rewriteCase);
    const QString redoPath = redoPathOf(rewriteCase);
    const QByteArray valid = ScratchFolder::read(redoPath);
    const QByteArray before = ScratchFolder::read(rewriteCase.path());
    std::vector<QByteArray> damaged{{}, valid.left(100), valid.left(4096), valid.chopped(1), valid + '\0',
        QByteArray(valid.size(), '\0'), QByteArray(valid.size(), '\xFF')};
    for (qsizetype at = 0; at < valid.size(); at += at < 120 || at > valid.size() - 50 ? 1 : 997) {
        damaged.push_back(valid);
        damaged.back()[at] = static_cast<char>(valid.at(at) ^ 0x40);
    }
    for (const QByteArray &content : damaged) {
        rewriteCase.folder().write(QFileInfo(redoPath).fileName(), content);
        QVERIFY(ravlin::test::setPermissions(redoPath, 0600));
        QVERIFY(recoverFile(native(), rewriteCase.path()));
        QVERIFY(!QFile::exists(redoPath));
        QCOMPARE(ScratchFolder::read(rewriteCase.path()), before);
    }
    rewriteCase.folder().write(QFileInfo(redoPath).fileName(), valid);
    QVERIFY(ravlin::test::setPermissions(redoPath, 0600));
    QVERIFY(recoverFile(native(), rewriteCase.path()));
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), rewriteCase.newContent());
}

void TestSafeWriteFaults::redoInUseIsLeftAlone()
{
    const RewriteCase rewriteCase(Way::Rewritten);
    leaveRedo(rewriteCase);
    const QString redoPath = redoPathOf(rewriteCase);
    auto writer = native().open(redoPath, OpenMode::ReadWrite).value();
    QVERIFY(writer->tryLock().value());
    QCOMPARE(recoverFile(native(), rewriteCase.path()).error().code, ErrorCode::ChangedMeanwhile);
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 0);
    QVERIFY(QFile::exists(redoPath));
    QVERIFY(!rewriteCase.rewriteForward(native()));
    writer.reset();
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 1);
}

void TestSafeWriteFaults::redoOfAStrangerIsIgnored()
{
    if (::geteuid() != 0)
        QSKIP("only root can make a file of somebody else's");
    const RewriteCase rewriteCase(Way::Rewritten);
    leaveRedo(rewriteCase);
    const QByteArray before = ScratchFolder::read(rewriteCase.path());
    const QString redoPath = redoPathOf(rewriteCase);
    QCOMPARE(::chown(encodePath(redoPath), 12345, 0), 0);
    QVERIFY(recoverFile(native(), rewriteCase.path()));
    QCOMPARE(cleanLeftovers(native(), rewriteCase.folder().path()).value(), 0);
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), before);
    QVERIFY(QFile::exists(redoPath));
    // Not even one that belongs to the file's owner.
    QCOMPARE(::chown(encodePath(rewriteCase.path()), 12345, 0), 0);
    QVERIFY(recoverFile(native(), rewriteCase.path()));
    QCOMPARE(ScratchFolder::read(rewriteCase.path()), before);
}

void TestSafeWriteFaults::redoCannotLeaveItsFolder_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("parent") << QStringLiteral("../victim.mp3");
    QTest::newRow("absolute") << QStringLiteral("/victim.mp3");
    QTest::newRow("dots") << QStringLiteral("..");
    QTest::newRow("folder inside") << QStringLiteral("inner/victim.mp3");
    QTest::newRow("symbolic link") << QStringLiteral("link.mp3");
    QTest::newRow("empty") << QString();
    QTest::newRow("zero") << QStringLiteral("victim.mp3") + QChar(0);
}

void TestSafeWriteFaults::redoCannotLeaveItsFolder()
{
    QFETCH(QString, name);
    const ScratchFolder folder;
    QVERIFY(QDir(folder.path()).mkpath(QStringLiteral("here/inner")));
    const QByteArray content("precious");
    const QString victim = folder.write(QStringLiteral("victim.mp3"), content);
    const QString inner = folder.write(QStringLiteral("here/inner/victim.mp3"), content);
    const QString here = folder.path(QStringLiteral("here"));
    QVERIFY(QFile::link(QStringLiteral("../victim.mp3"), here + QStringLiteral("/link.mp3")));
    for (const QString &target : {victim, inner}) {
        // Complete and with a correct digest: planted by somebody who knows the format.
        const RedoHeader header{infoOf(target).inode, 6, content.size(), 0, false, name};
        const QString redoPath = here + Separator + redoName(header.inode);
        {
            const auto redo = ravlin::test::createNew(redoPath).value();
            QVERIFY(writeRedoHeader(*redo, header));
            const QByteArray evil("hacked");
            QVERIFY(redo->writeAt({evil.constData(), size_t(evil.size())}, header.newOffset()));
            QVERIFY(redo->writeAt({content.constData(), size_t(content.size())}, header.oldOffset()));
            QVERIFY(writeRedoTrailer(*redo, header));
        }
        QVERIFY(cleanLeftovers(native(), here));
        QCOMPARE(ScratchFolder::read(target), content);
        // One that names no file of its folder is kept: that file may come back.
        QCOMPARE(QFile::exists(redoPath), name == u"link.mp3"_s);
    }
}

QTEST_GUILESS_MAIN(TestSafeWriteFaults)
#include "tst_safewritefaults.moc"
