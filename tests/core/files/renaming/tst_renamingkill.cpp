// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a program killed by SIGKILL at any moment while it renames files in rings loses and hides none. Each has a
// name of the batch or one that contains its own; the next listing gives the latter their names back.

#include "core/files/list/currentfolder.h"
#include "core/files/renaming/renamefromtags.h"
#include "core/files/renaming/renamingcase.h"
#include "core/history/history.h"
#include "core/storage/saferename.h"

#include "support/faultyfilesystem.h"
#include "support/filetree.h"

#include <QtTest>

#include <csignal>
#include <random>

#include <sys/wait.h>
#include <unistd.h>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

constexpr int Kills = 250;
constexpr int LongestLifeMicroseconds = 8'000;
const int RingSizes[] = {2, 3, 5};

/// Renames the files in rings until the program is killed.
[[noreturn]] void renameForEver(const RenamingCase &folder, const QList<QStringList> &rings)
{
    platform::FileSystem &native = platform::FileSystem::native();
    while (true) {
        RenamingCase::Pairs pairs;
        for (const QStringList &ring : rings) {
            for (qsizetype i = 0; i < ring.size(); ++i)
                pairs.push_back({ring[i], ring[(i + 1) % ring.size()]});
        }
        const RenamingPlan plan(native, folder.rows(pairs));
        const RenamingOutcome outcome = runRenaming(native, plan);
        if (outcome.count(RenameState::Rename) != outcome.rows.size())
            ::_exit(1);
    }
}

} // namespace

class TestRenamingKill : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noFileIsLostOrHidden();
    void aRingGoesBackAsAWhole_data();
    void aRingGoesBackAsAWhole();
};

void TestRenamingKill::noFileIsLostOrHidden()
{
    QList<QStringList> rings;
    QStringList names;
    for (const int size : RingSizes) {
        QStringList ring;
        for (int i = 0; i < size; ++i)
            ring += u"%1 of %2 夜.mp3"_s.arg(i).arg(size);
        names += ring;
        rings += ring;
    }
    names.sort();
    const RenamingCase folder(names);
    std::mt19937 random(4);
    std::uniform_int_distribution<useconds_t> life(0, LongestLifeMicroseconds);
    int interrupted = 0;
    int moved = 0;
    for (int kill = 0; kill < Kills; ++kill) {
        const auto before = folder.files();
        const pid_t child = ::fork();
        if (child == 0)
            renameForEver(folder, rings);
        ::usleep(life(random));
        ::kill(child, SIGKILL);
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY2(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL, "a rename failed");

        // Every content is there once, under a visible name.
        const auto left = folder.files();
        QStringList contents = left.values();
        contents.sort();
        QCOMPARE(contents, names);
        int aside = 0;
        for (auto file = left.begin(); file != left.end(); ++file) {
            const std::optional<QString> former = storage::nameBeforeAside(file.key());
            QVERIFY2(names.contains(former.value_or(file.key())), qPrintable(file.key()));
            QVERIFY(!file.key().startsWith(u'.'));
            aside += former ? 1 : 0;
        }
        QVERIFY(aside <= 1);
        interrupted += aside;
        moved += left != before ? 1 : 0;

        // A listing brings back what was put aside, with a number if its name is taken by now.
        const Listing listing = RefreshList(folder.path() + u'/');
        QCOMPARE(qsizetype(listing.rows.size()), names.size());
        const auto back = folder.files();
        contents = back.values();
        contents.sort();
        QCOMPARE(contents, names);
        for (auto file = back.begin(); file != back.end(); ++file)
            QVERIFY2(!storage::nameBeforeAside(file.key()), qPrintable(file.key()));
        if (back.keys() == names)
            continue;
        // For the next round, a file with a number gets the free name.
        RenamingCase::Pairs pairs;
        QStringList free = names;
        for (const QString &name : back.keys())
            free.removeOne(name);
        QCOMPARE(free.size(), 1);
        for (const QString &name : back.keys()) {
            if (!names.contains(name))
                pairs.push_back({name, free.front()});
        }
        platform::FileSystem &native = platform::FileSystem::native();
        runRenaming(native, RenamingPlan(native, folder.rows(pairs)));
        QCOMPARE(folder.files().keys(), names);
    }
    qInfo("%d kills: %d with the files elsewhere than before, %d with one under a name for the time being", Kills,
        moved, interrupted);
    QVERIFY(moved > 0);
}

void TestRenamingKill::aRingGoesBackAsAWhole_data()
{
    QTest::addColumn<int>("renames");
    for (int renames = 0; renames <= 4; ++renames)
        QTest::addRow("killed after %d renames", renames) << renames;
}

/// Whatever is done next finishes it, without a look into the folder.
void TestRenamingKill::aRingGoesBackAsAWhole()
{
    QFETCH(int, renames);
    const QTemporaryDir folder;
    const QString database = folder.filePath(u"history.sqlite"_s);
    std::vector<RenameRow> rows;
    for (int i = 0; i < 4; ++i) {
        const auto name = [&](int number) { return folder.filePath(u"songs/%1.mp3"_s.arg(number)); };
        test::writeFile(name(i), QByteArray::number(i));
        rows.push_back({.from = name(i), .wanted = name((i + 1) % 4)});
    }
    const Snapshot before = snapshotOf(folder.filePath(u"songs"_s));
    const pid_t child = ::fork();
    if (child == 0) {
        FaultyFileSystem dying;
        dying.setPlan({.fault = Fault::Die, .at = renames, .only = Call::Rename});
        history::History history(platform::FileSystem::native(), database);
        history.beginEntry(history::Kind::Rename, folder.path());
        runRenaming(dying, RenamingPlan(dying, std::move(rows)), {}, &history);
        ::_exit(0); // four renames and the one aside: the last one is never reached
    }
    int status = 0;
    QCOMPARE(::waitpid(child, &status, 0), child);
    QVERIFY(WIFEXITED(status) && WEXITSTATUS(status) == FaultyFileSystem::DeathStatus);
    history::History history(platform::FileSystem::native(), database);
    const history::Recovery recovery = history.recover();
    QVERIFY(recovery.left.empty());
    QCOMPARE(snapshotOf(folder.filePath(u"songs"_s)), before);
    QVERIFY(!*history.nextUndo());
}

QTEST_GUILESS_MAIN(TestRenamingKill)
#include "tst_renamingkill.moc"
