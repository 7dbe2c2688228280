// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a batch gives all new names as if at once. Nothing is overwritten and no file is lost; the answers settle
// taken names; every row has an outcome, which the plan predicts.

#include "core/files/renaming/renamefromtags.h"
#include "core/files/renaming/renamingcase.h"
#include "support/caselessfilesystem.h"
#include "support/faultyfilesystem.h"
#include "support/filesteps.h"
#include "support/filetree.h"

#include <QtTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

using Pairs = RenamingCase::Pairs;
using Files = QMap<QString, QString>;

platform::FileSystem &native()
{
    return platform::FileSystem::native();
}

/// Runs a plan and checks that its rows came true.
RenamingOutcome runAsPlanned(platform::FileSystem &fileSystem, const RenamingPlan &plan)
{
    QStringList told;
    RenamingOutcome outcome = runRenaming(fileSystem, plan, {[&](const Progress &now) { told += now.path; }});
    for (std::size_t row = 0; row < outcome.rows.size(); ++row) {
        const RenameRow &planned = plan.rows()[row];
        const bool isOpen = planned.state == RenameState::Clash;
        if (outcome.rows[row].state != (isOpen ? RenameState::Skipped : planned.state) ||
            outcome.rows[row].path != planned.path)
            qFatal("row %d was not done as planned", int(row));
        if (told.at(int(row)) != planned.from)
            qFatal("row %d was not told in order", int(row));
    }
    return outcome;
}

RenamingOutcome renameAll(
    const RenamingCase &folder, const Pairs &pairs, std::optional<ClashAnswer> answer = {}, bool caseless = false)
{
    CaselessFileSystem ignoring;
    platform::FileSystem &fileSystem = caseless ? static_cast<platform::FileSystem &>(ignoring) : native();
    RenamingPlan plan(fileSystem, folder.rows(pairs));
    if (answer)
        plan.answerAll(*answer);
    return runAsPlanned(fileSystem, plan);
}

QList<int> statesOf(const std::vector<RenameRow> &rows)
{
    QList<int> states;
    for (const RenameRow &row : rows)
        states += static_cast<int>(row.state);
    return states;
}

QList<int> states(std::initializer_list<RenameState> expected)
{
    QList<int> made;
    for (const RenameState state : expected)
        made += static_cast<int>(state);
    return made;
}

constexpr auto Rename = RenameState::Rename;
constexpr auto Untouched = RenameState::Untouched;
constexpr auto Skipped = RenameState::Skipped;

} // namespace

class TestRenaming : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void swaps();
    void chainsInBothDirections();
    void ringsAndChainsTogether();
    void unchangedRowsAskNothingOfTheDisk();
    void anExistingFileIsAClash();
    void twoRowsWithOneName();
    void aNameThatExistsAndOneGivenToAnotherAreToldApart();
    void aFolderDoesNotGoIntoItself_data();
    void aFolderDoesNotGoIntoItself();
    void aLinkGoesIntoTheFolderThatItNames();
    void foldersMadeForNothingAreRemoved();
    void skippedRowsKeepTheirNamesFromOthers();
    void keepBothNumbers();
    void keepBothTwiceChangesNothing();
    void keepBothOfManyIsNotQuadratic();
    void numbersLeaveWantedNamesAlone();
    void stopEndsTheBatch();
    void stopTakesBackWhatDependsOnIt();
    void asksOnlyWhatNeedsAnAnswer();
    void anAnswerCanSettleOtherRows();
    void caseAloneWhereCaseCounts();
    void caseAloneWhereCaseIsIgnored();
    void ringsWhereCaseIsIgnored();
    void namesInOtherCaseAreTakenWhereCaseIsIgnored();
    void refusedNames();
    void adjustedNames();
    void aSeparatorLeadsIntoAFolder();
    void valuesLeadNowhereElse();
    void aFileInTheWayOfAFolder();
    void oneFolderBySeveralSpellings();
    void missingFilesAndDoubleOnes();
    void namesThatAreNoText();
    void aTargetThatAppearsAfterThePlan();
    void aStopBetweenRows();
    void failureAtAnyRenameLosesNothing();
    void failureForEverLosesNothing();
    void undoing();
    void longChainsAreNotQuadratic();
};

void TestRenaming::swaps()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    const auto outcome = renameAll(folder, {{u"a.mp3"_s, u"b.mp3"_s}, {u"b.mp3"_s, u"a.mp3"_s}});
    QCOMPARE(folder.files(), (Files{{u"a.mp3"_s, u"b.mp3"_s}, {u"b.mp3"_s, u"a.mp3"_s}}));
    QCOMPARE(outcome.renames.size(), std::size_t(2));
    QCOMPARE(outcome.renames[0].from, folder.path(u"a.mp3"_s));
    QCOMPARE(outcome.renames[0].to, folder.path(u"b.mp3"_s));
}

void TestRenaming::chainsInBothDirections()
{
    const QStringList names{u"1.mp3"_s, u"2.mp3"_s, u"3.mp3"_s};
    const RenamingCase up(names);
    renameAll(up, {{u"1.mp3"_s, u"2.mp3"_s}, {u"2.mp3"_s, u"3.mp3"_s}, {u"3.mp3"_s, u"4.mp3"_s}});
    QCOMPARE(up.files(), (Files{{u"2.mp3"_s, u"1.mp3"_s}, {u"3.mp3"_s, u"2.mp3"_s}, {u"4.mp3"_s, u"3.mp3"_s}}));
    const RenamingCase down(names);
    renameAll(down, {{u"1.mp3"_s, u"0.mp3"_s}, {u"2.mp3"_s, u"1.mp3"_s}, {u"3.mp3"_s, u"2.mp3"_s}});
    QCOMPARE(down.files(), (Files{{u"0.mp3"_s, u"1.mp3"_s}, {u"1.mp3"_s, u"2.mp3"_s}, {u"2.mp3"_s, u"3.mp3"_s}}));
}

void TestRenaming::ringsAndChainsTogether()
{
    const RenamingCase folder({u"a"_s, u"b"_s, u"c"_s, u"x"_s, u"y"_s});
    const auto outcome =
        renameAll(folder, {{u"x"_s, u"y"_s}, {u"a"_s, u"b"_s}, {u"y"_s, u"z"_s}, {u"b"_s, u"c"_s}, {u"c"_s, u"a"_s}});
    QCOMPARE(folder.files(),
        (Files{{u"a"_s, u"c"_s}, {u"b"_s, u"a"_s}, {u"c"_s, u"b"_s}, {u"y"_s, u"x"_s}, {u"z"_s, u"y"_s}}));
    QCOMPARE(outcome.count(Rename), std::size_t(5));
}

void TestRenaming::unchangedRowsAskNothingOfTheDisk()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    FaultyFileSystem counting;
    const RenamingPlan plan(counting, folder.rows({{u"a.mp3"_s, u"a.mp3"_s}, {u"b.mp3"_s, u"b.mp3"_s}}));
    const auto outcome = runAsPlanned(counting, plan);
    QCOMPARE(statesOf(outcome.rows), states({Untouched, Untouched}));
    QCOMPARE(counting.count(), 0);
    QVERIFY(outcome.renames.empty());
}

void TestRenaming::anExistingFileIsAClash()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    RenamingPlan plan(native(), folder.rows({{u"a.mp3"_s, u"b.mp3"_s}}));
    QCOMPARE(plan.nextClash(), std::optional<std::size_t>(0));
    QVERIFY(plan.rows()[0].state == RenameState::Clash && plan.rows()[0].isCollision);
    // Without an answer the row is skipped.
    const auto outcome = runAsPlanned(native(), plan);
    QCOMPARE(statesOf(outcome.rows), states({Skipped}));
    QCOMPARE(folder.files(), (Files{{u"a.mp3"_s, u"a.mp3"_s}, {u"b.mp3"_s, u"b.mp3"_s}}));
    // Also if the other file is in the batch and keeps its name.
    QCOMPARE(statesOf(renameAll(folder, {{u"a.mp3"_s, u"b.mp3"_s}, {u"b.mp3"_s, u"b.mp3"_s}}, ClashAnswer::Skip).rows),
        states({Skipped, Untouched}));
}

void TestRenaming::twoRowsWithOneName()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    const auto outcome = renameAll(folder, {{u"a.mp3"_s, u"x.mp3"_s}, {u"b.mp3"_s, u"x.mp3"_s}}, ClashAnswer::Skip);
    QCOMPARE(statesOf(outcome.rows), states({Rename, Skipped}));
    QCOMPARE(folder.files(), (Files{{u"x.mp3"_s, u"a.mp3"_s}, {u"b.mp3"_s, u"b.mp3"_s}}));
}

void TestRenaming::aNameThatExistsAndOneGivenToAnotherAreToldApart()
{
    const RenamingCase folder({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"there"_s});
    const auto told = [&](const Pairs &pairs, std::optional<ClashAnswer> answer) {
        RenamingPlan plan(native(), folder.rows(pairs));
        if (answer)
            plan.answerAll(*answer);
        QStringList words;
        for (const RenameRow &row : plan.rows()) {
            if (row.isGivenToAnother && !row.isCollision)
                qFatal("given to another, yet no collision");
            words += row.isGivenToAnother ? u"another"_s : row.isCollision ? u"exists"_s : u"free"_s;
        }
        return words;
    };
    for (const std::optional<ClashAnswer> answer : {std::optional<ClashAnswer>(), std::optional(ClashAnswer::Skip),
             std::optional(ClashAnswer::KeepBoth), std::optional(ClashAnswer::Stop)}) {
        QCOMPARE(told({{u"a"_s, u"there"_s}}, answer), QStringList{u"exists"_s});
        QCOMPARE(told({{u"a"_s, u"x"_s}, {u"b"_s, u"x"_s}}, answer), (QStringList{u"free"_s, u"another"_s}));
        // b leaves its name, which a gets before c.
        QCOMPARE(told({{u"a"_s, u"b"_s}, {u"b"_s, u"y"_s}, {u"c"_s, u"b"_s}}, answer),
            (QStringList{u"free"_s, u"free"_s, u"another"_s}));
    }
    // b can't leave its name after all.
    QCOMPARE(told({{u"a"_s, u"b"_s}, {u"c"_s, u"b"_s}, {u"b"_s, u"there"_s}}, ClashAnswer::Skip),
        (QStringList{u"exists"_s, u"exists"_s, u"exists"_s}));
}

void TestRenaming::aFolderDoesNotGoIntoItself_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<bool>("isRefused");
    QTest::newRow("below") << u"N/x"_s << true;
    QTest::newRow("below missing folders") << u"N/a/b/x"_s << true;
    QTest::newRow("below a folder that is there") << u"N/sub/x"_s << true;
    QTest::newRow("by another spelling") << u"N/../N/./a/x"_s << true;
    QTest::newRow("in another case") << u"n/a/x"_s << (platform::Separator == u'\\'); // Windows ignores it
    QTest::newRow("beside, with the same beginning") << u"N2/x"_s << false;
    QTest::newRow("in another folder") << u"other/N"_s << false;
}

void TestRenaming::aFolderDoesNotGoIntoItself()
{
    QFETCH(QString, wanted);
    QFETCH(bool, isRefused);
    const RenamingCase folder({u"N/song.mp3"_s, u"N/sub/song.mp3"_s, u"other/song.mp3"_s});
    const RenameRow row{.from = folder.path(u"N"_s), .wanted = folder.path(wanted), .kind = platform::NameKind::Folder};
    const Snapshot before = snapshotOf(folder.path());
    const RenamingPlan plan(native(), {row});
    const RenamingOutcome outcome = runAsPlanned(native(), plan);
    QCOMPARE(statesOf(outcome.rows), states({isRefused ? RenameState::Refused : Rename}));
    if (!isRefused)
        return;
    QVERIFY(plan.rows()[0].error->code == ErrorCode::IntoItself);
    QCOMPARE(outcome.rows[0].path, row.from);
    QVERIFY(outcome.foldersMade.isEmpty());
    QCOMPARE(snapshotOf(folder.path()), before);
    CaselessFileSystem ignoring;
    const RenamingPlan inOtherCase(ignoring,
        {{.from = folder.path(u"N"_s), .wanted = folder.path(wanted.toLower()), .kind = platform::NameKind::Folder}});
    QCOMPARE(statesOf(inOtherCase.rows()), states({RenameState::Refused}));
}

void TestRenaming::aLinkGoesIntoTheFolderThatItNames()
{
    if (!MakesLinks)
        QSKIP("no symbolic links can be made here");
    const RenamingCase folder({u"real/song.mp3"_s});
    QVERIFY(QFile::link(u"real"_s, folder.path(u"link"_s)));
    const RenamingPlan plan(native(),
        {{.from = folder.path(u"link"_s), .wanted = folder.path(u"link/a/x"_s), .kind = platform::NameKind::Folder}});
    QCOMPARE(statesOf(runAsPlanned(native(), plan).rows), states({Rename}));
    QVERIFY(QFileInfo(folder.path(u"real/a/x"_s)).isSymLink());
}

void TestRenaming::foldersMadeForNothingAreRemoved()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    FaultyFileSystem failing;
    failing.setPlan({.fault = Fault::Fail, .at = 0, .only = Call::Rename});
    const RenamingPlan plan(native(), folder.rows({{u"a.mp3"_s, u"x/y/a.mp3"_s}, {u"b.mp3"_s, u"x/b.mp3"_s}}));
    const RenamingOutcome outcome = runRenaming(failing, plan);
    QCOMPARE(statesOf(outcome.rows), states({RenameState::Failed, Rename}));
    QCOMPARE(outcome.foldersMade, QStringList{folder.path(u"x"_s)});
    QCOMPARE(folder.files(), (Files{{u"a.mp3"_s, u"a.mp3"_s}, {u"x/b.mp3"_s, u"b.mp3"_s}}));
    QVERIFY(!QFileInfo::exists(folder.path(u"x/y"_s)));
}

void TestRenaming::skippedRowsKeepTheirNamesFromOthers()
{
    const RenamingCase folder({u"1"_s, u"2"_s, u"3"_s, u"4"_s});
    const auto outcome = renameAll(folder, {{u"1"_s, u"2"_s}, {u"2"_s, u"3"_s}, {u"3"_s, u"4"_s}}, ClashAnswer::Skip);
    QCOMPARE(statesOf(outcome.rows), states({Skipped, Skipped, Skipped}));
    QCOMPARE(folder.files().size(), 4);
}

void TestRenaming::keepBothNumbers()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s, u"x.mp3"_s, u"x (3).mp3"_s});
    const auto outcome = renameAll(
        folder, {{u"a.mp3"_s, u"x.mp3"_s}, {u"b.mp3"_s, u"x.mp3"_s}, {u"c.mp3"_s, u"x.mp3"_s}}, ClashAnswer::KeepBoth);
    QCOMPARE(statesOf(outcome.rows), states({Rename, Rename, Rename}));
    QVERIFY(outcome.rows[0].isNumbered && outcome.rows[0].isCollision);
    QCOMPARE(
        folder.files(), (Files{{u"x.mp3"_s, u"x.mp3"_s}, {u"x (2).mp3"_s, u"a.mp3"_s}, {u"x (3).mp3"_s, u"x (3).mp3"_s},
                            {u"x (4).mp3"_s, u"b.mp3"_s}, {u"x (5).mp3"_s, u"c.mp3"_s}}));
}

void TestRenaming::keepBothTwiceChangesNothing()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s});
    renameAll(
        folder, {{u"a.mp3"_s, u"x.mp3"_s}, {u"b.mp3"_s, u"x.mp3"_s}, {u"c.mp3"_s, u"x.mp3"_s}}, ClashAnswer::KeepBoth);
    const Files once = folder.files();
    QCOMPARE(once.size(), 3);
    const auto again = renameAll(folder,
        {{u"x.mp3"_s, u"x.mp3"_s}, {u"x (2).mp3"_s, u"x.mp3"_s}, {u"x (3).mp3"_s, u"x.mp3"_s}}, ClashAnswer::KeepBoth);
    QCOMPARE(statesOf(again.rows), states({Untouched, Untouched, Untouched}));
    QCOMPARE(folder.files(), once);
}

void TestRenaming::keepBothOfManyIsNotQuadratic()
{
    constexpr int Count = 2'000;
    const RenamingCase folder;
    FaultyFileSystem counting;
    std::vector<RenameRow> rows;
    for (int i = 0; i < Count; ++i) {
        folder.add(QString::number(i));
        rows.push_back(fileRename(folder.path(QString::number(i)), u"x.mp3"_s));
    }
    RenamingPlan plan(counting, std::move(rows));
    plan.answerAll(ClashAnswer::KeepBoth);
    QVERIFY(!plan.nextClash());
    QCOMPARE(plan.rows().back().path, folder.path(u"x (%1).mp3"_s.arg(Count)));
    // One listing and a look at the folder, no call for each file.
    QVERIFY2(counting.count() < 10, qPrintable(QString::number(counting.count())));
}

void TestRenaming::numbersLeaveWantedNamesAlone()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s});
    renameAll(folder, {{u"a.mp3"_s, u"x.mp3"_s}, {u"b.mp3"_s, u"x.mp3"_s}, {u"c.mp3"_s, u"x (2).mp3"_s}},
        ClashAnswer::KeepBoth);
    QCOMPARE(
        folder.files(), (Files{{u"x.mp3"_s, u"a.mp3"_s}, {u"x (3).mp3"_s, u"b.mp3"_s}, {u"x (2).mp3"_s, u"c.mp3"_s}}));
}

void TestRenaming::stopEndsTheBatch()
{
    const RenamingCase folder({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"taken"_s});
    const auto outcome = renameAll(
        folder, {{u"a"_s, u"1"_s}, {u"b"_s, u"taken"_s}, {u"c"_s, u"3"_s}, {u"d"_s, u"d"_s}}, ClashAnswer::Stop);
    QCOMPARE(statesOf(outcome.rows), states({Rename, RenameState::Stopped, RenameState::NotTaken, Untouched}));
    QCOMPARE(folder.files().keys(), (QStringList{u"1"_s, u"b"_s, u"c"_s, u"d"_s, u"taken"_s}));
}

void TestRenaming::stopTakesBackWhatDependsOnIt()
{
    // Row 0 wants the name of row 3, which keeps it because row 2 stops.
    const RenamingCase folder({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"taken"_s});
    const auto outcome = renameAll(
        folder, {{u"b"_s, u"1"_s}, {u"a"_s, u"d"_s}, {u"c"_s, u"taken"_s}, {u"d"_s, u"2"_s}}, ClashAnswer::Stop);
    QCOMPARE(
        statesOf(outcome.rows), states({Rename, RenameState::Stopped, RenameState::NotTaken, RenameState::NotTaken}));
    QCOMPARE(folder.files().size(), 5);
}

void TestRenaming::asksOnlyWhatNeedsAnAnswer()
{
    const RenamingCase folder({u"1"_s, u"2"_s, u"3"_s});
    // Row 0 clashes only while row 1 does.
    RenamingPlan plan(native(), folder.rows({{u"1"_s, u"2"_s}, {u"2"_s, u"3"_s}}));
    QCOMPARE(plan.count(RenameState::Clash), std::size_t(2));
    QCOMPARE(plan.nextClash(), std::optional<std::size_t>(1));
    plan.answer(1, ClashAnswer::KeepBoth);
    QVERIFY(!plan.nextClash());
    const auto outcome = runAsPlanned(native(), plan);
    QCOMPARE(statesOf(outcome.rows), states({Rename, Rename}));
    QCOMPARE(folder.files(), (Files{{u"2"_s, u"1"_s}, {u"3"_s, u"3"_s}, {u"3 (2)"_s, u"2"_s}}));
}

void TestRenaming::anAnswerCanSettleOtherRows()
{
    const RenamingCase folder({u"1"_s, u"2"_s, u"3"_s});
    RenamingPlan plan(native(), folder.rows({{u"1"_s, u"2"_s}, {u"2"_s, u"3"_s}}));
    plan.answer(1, ClashAnswer::Skip);
    QCOMPARE(plan.nextClash(), std::optional<std::size_t>(0));
    plan.answer(0, ClashAnswer::KeepBoth);
    const auto outcome = runAsPlanned(native(), plan);
    QCOMPARE(statesOf(outcome.rows), states({Rename, Skipped}));
    QCOMPARE(folder.files().keys(), (QStringList{u"2"_s, u"2 (2)"_s, u"3"_s}));
}

void TestRenaming::caseAloneWhereCaseCounts()
{
    const RenamingCase folder({u"song.mp3"_s, u"Ñ.mp3"_s});
    renameAll(folder, {{u"song.mp3"_s, u"SONG.mp3"_s}, {u"Ñ.mp3"_s, u"ñ.mp3"_s}});
    QCOMPARE(folder.files(), (Files{{u"SONG.mp3"_s, u"song.mp3"_s}, {u"ñ.mp3"_s, u"Ñ.mp3"_s}}));
}

void TestRenaming::caseAloneWhereCaseIsIgnored()
{
    const RenamingCase folder({u"song.mp3"_s, u"Ñ.mp3"_s});
    const auto outcome =
        renameAll(folder, {{u"song.mp3"_s, u"SONG.mp3"_s}, {u"Ñ.mp3"_s, u"ñ.mp3"_s}}, ClashAnswer::Skip, true);
    QCOMPARE(statesOf(outcome.rows), states({Rename, Rename}));
    QCOMPARE(folder.files(), (Files{{u"SONG.mp3"_s, u"song.mp3"_s}, {u"ñ.mp3"_s, u"Ñ.mp3"_s}}));
}

void TestRenaming::ringsWhereCaseIsIgnored()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    const auto outcome =
        renameAll(folder, {{u"a.mp3"_s, u"B.mp3"_s}, {u"b.mp3"_s, u"A.mp3"_s}}, ClashAnswer::Skip, true);
    QCOMPARE(outcome.count(Rename), std::size_t(2));
    QCOMPARE(folder.files(), (Files{{u"A.mp3"_s, u"b.mp3"_s}, {u"B.mp3"_s, u"a.mp3"_s}}));
}

void TestRenaming::namesInOtherCaseAreTakenWhereCaseIsIgnored()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s, u"X.mp3"_s});
    const auto outcome =
        renameAll(folder, {{u"a.mp3"_s, u"x.mp3"_s}, {u"b.mp3"_s, u"New.mp3"_s}}, ClashAnswer::KeepBoth, true);
    QCOMPARE(
        folder.files(), (Files{{u"X.mp3"_s, u"X.mp3"_s}, {u"x (2).mp3"_s, u"a.mp3"_s}, {u"New.mp3"_s, u"b.mp3"_s}}));
    const auto both =
        renameAll(folder, {{u"x (2).mp3"_s, u"z.mp3"_s}, {u"New.mp3"_s, u"Z.mp3"_s}}, ClashAnswer::Skip, true);
    QCOMPARE(statesOf(both.rows), states({Rename, Skipped}));
}

void TestRenaming::refusedNames()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s, u"d.mp3"_s, u"e.mp3"_s});
    const auto outcome = renameAll(folder,
        {{u"a.mp3"_s, u".mp3"_s}, {u"b.mp3"_s, u"CON.mp3"_s}, {u"c.mp3"_s, QString(300, u'x') + u".mp3"_s},
            {u"d.mp3"_s, u"...mp3"_s}, {u"e.mp3"_s, u"a.mp3"_s}},
        ClashAnswer::Skip);
    using platform::NameProblem;
    const std::array problems{NameProblem::Empty, NameProblem::Reserved, NameProblem::TooLong, NameProblem::Dots};
    for (std::size_t row = 0; row < problems.size(); ++row) {
        QVERIFY(outcome.rows[row].state == RenameState::Refused);
        QVERIFY(outcome.rows[row].problem == problems[row]);
    }
    // A refused file keeps its name, which is taken then.
    QVERIFY(outcome.rows[4].state == Skipped);
    QCOMPARE(folder.files().size(), 5);
}

void TestRenaming::adjustedNames()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    const auto outcome = renameAll(folder, {{u"a.mp3"_s, u"...x\n.mp3"_s}, {u"b.mp3"_s, u"Band. /y.mp3"_s}});
    QVERIFY(outcome.rows[0].isAdjusted && outcome.rows[1].isAdjusted);
    QCOMPARE(folder.files(), (Files{{u"_..x.mp3"_s, u"a.mp3"_s}, {u"Band/y.mp3"_s, u"b.mp3"_s}}));
}

void TestRenaming::aSeparatorLeadsIntoAFolder()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s, u"Band/c.mp3"_s, u"top/d.mp3"_s});
    RenamingPlan plan(native(), folder.rows({{u"a.mp3"_s, u"Band/Live/a.mp3"_s}, {u"b.mp3"_s, u"//Band/./b.mp3"_s},
                                    {u"Band/c.mp3"_s, u"Live/a.mp3"_s}}));
    QVERIFY(plan.rows()[0].makesFolder && !plan.rows()[1].makesFolder);
    QVERIFY(plan.rows()[2].state == RenameState::Clash); // the same file by another path
    const auto outcome = runAsPlanned(native(), plan);
    QCOMPARE(outcome.foldersMade, QStringList{folder.path(u"Band/Live"_s)});
    QCOMPARE(folder.files(), (Files{{u"Band/Live/a.mp3"_s, u"a.mp3"_s}, {u"Band/b.mp3"_s, u"b.mp3"_s},
                                 {u"Band/c.mp3"_s, u"Band/c.mp3"_s}, {u"top/d.mp3"_s, u"top/d.mp3"_s}}));
    // The pattern's own text may lead outside.
    RenamingPlan out(native(),
        {fileRename(folder.path(u"top/d.mp3"_s), QDir::toNativeSeparators(u"../d.mp3"_s), stepsUpIn(u"../%3"_s))});
    QCOMPARE(out.rows()[0].path, folder.path(u"d.mp3"_s));
    QCOMPARE(runAsPlanned(native(), out).count(Rename), std::size_t(1));
    QVERIFY(folder.files().contains(u"d.mp3"_s));
}

void TestRenaming::valuesLeadNowhereElse()
{
    const RenamingCase folder({u"in/a.mp3"_s});
    // The pattern was ‘%2/%3’ and the album is "..".
    const RenameRow row =
        fileRename(folder.path(u"in/a.mp3"_s), QDir::toNativeSeparators(u"../x.mp3"_s), stepsUpIn(u"%2/%3"_s));
    QVERIFY(row.problem == platform::NameProblem::LeadsOutside);
    const auto outcome = runAsPlanned(native(), RenamingPlan(native(), {row}));
    QCOMPARE(statesOf(outcome.rows), states({RenameState::Refused}));
    QCOMPARE(folder.files().keys(), QStringList{u"in/a.mp3"_s});
}

void TestRenaming::aFileInTheWayOfAFolder()
{
    const RenamingCase folder({u"a.mp3"_s, u"b"_s, u"c.mp3"_s});
    const auto outcome = renameAll(folder, {{u"a.mp3"_s, u"b/c/x.mp3"_s}, {u"c.mp3"_s, u"b/x.mp3"_s}});
    for (const RenameRow &row : outcome.rows) {
        QVERIFY(row.state == RenameState::Refused);
        QVERIFY(row.error->code == ErrorCode::NotAFile);
    }
    QCOMPARE(folder.files().size(), 3);
}

void TestRenaming::oneFolderBySeveralSpellings()
{
    if (!MakesLinks)
        QSKIP("no symbolic links can be made here");
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s, u"sub/s.mp3"_s});
    QVERIFY(QFile::link(folder.path(), folder.path(u"sub/link"_s)));
    RenamingPlan plan(native(), {{folder.path(u"a.mp3"_s), folder.path(u"x.mp3"_s)},
                                    {folder.path(u"sub/../b.mp3"_s), folder.path(u"sub/link/x.mp3"_s)}});
    QVERIFY(plan.rows()[1].state == RenameState::Clash);
    // Its own name by another path is not a rename.
    RenamingPlan same(native(), {{folder.path(u"a.mp3"_s), folder.path(u"sub/link/a.mp3"_s)}});
    QVERIFY(same.rows()[0].state == Untouched);
}

void TestRenaming::missingFilesAndDoubleOnes()
{
    const RenamingCase folder({u"a.mp3"_s});
    const auto outcome =
        renameAll(folder, {{u"none.mp3"_s, u"x.mp3"_s}, {u"a.mp3"_s, u"none.mp3"_s}, {u"a.mp3"_s, u"y.mp3"_s}});
    QCOMPARE(statesOf(outcome.rows), states({RenameState::Refused, Rename, RenameState::Refused}));
    QVERIFY(outcome.rows[0].error->code == ErrorCode::NotFound);
    QVERIFY(outcome.rows[2].error->code == ErrorCode::GivenTwice);
    QCOMPARE(folder.files().keys(), QStringList{u"none.mp3"_s});
}

void TestRenaming::namesThatAreNoText()
{
    const ScratchFolder folder;
    const QString odd = folder.path() + u'/' + platform::decodePath(QByteArray("caf\xe9.mp3"));
    const auto file = ravlin::test::createNew(odd);
    if (!file)
        QSKIP("this file system takes Unicode names only");
    const QString wanted = folder.path() + u'/' + platform::decodePath(QByteArray("t\xe9 \xff.mp3"));
    const auto outcome = runAsPlanned(native(), RenamingPlan(native(), {{odd, wanted}}));
    QCOMPARE(statesOf(outcome.rows), states({Rename}));
    QVERIFY(!native().info(odd));
    QVERIFY(ravlin::test::removeFile(wanted)); // Qt can't
}

void TestRenaming::aTargetThatAppearsAfterThePlan()
{
    const RenamingCase folder({u"a.mp3"_s, u"b.mp3"_s});
    const RenamingPlan plan(native(), folder.rows({{u"a.mp3"_s, u"x.mp3"_s}, {u"b.mp3"_s, u"y.mp3"_s}}));
    folder.add(u"x.mp3"_s);
    const auto outcome = runRenaming(native(), plan);
    QCOMPARE(statesOf(outcome.rows), states({RenameState::Failed, Rename}));
    QVERIFY(outcome.rows[0].error->code == ErrorCode::AlreadyExists);
    QCOMPARE(outcome.rows[0].path, folder.path(u"a.mp3"_s));
    QCOMPARE(folder.files(), (Files{{u"a.mp3"_s, u"a.mp3"_s}, {u"x.mp3"_s, u"x.mp3"_s}, {u"y.mp3"_s, u"b.mp3"_s}}));
}

void TestRenaming::aStopBetweenRows()
{
    const RenamingCase folder({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s});
    const RenamingPlan plan(native(),
        folder.rows({{u"a"_s, u"1"_s}, {u"c"_s, u"d"_s}, {u"d"_s, u"c"_s}, {u"b"_s, u"2"_s}, {u"e"_s, u"e"_s}}));
    std::stop_source stop;
    const auto stopAtC = [&](const Progress &now) {
        if (now.path.endsWith(u"c"_s))
            stop.request_stop();
    };
    const auto outcome = runRenaming(native(), plan, {stopAtC, stop.get_token()});
    QVERIFY(outcome.wasStopped);
    // The swap already begun is finished.
    QCOMPARE(statesOf(outcome.rows), states({Rename, Rename, Rename, RenameState::NotTaken, Untouched}));
    QCOMPARE(folder.files(),
        (Files{{u"1"_s, u"a"_s}, {u"b"_s, u"b"_s}, {u"c"_s, u"d"_s}, {u"d"_s, u"c"_s}, {u"e"_s, u"e"_s}}));
}

namespace {

/// Renames in a ring, in a chain and into a new folder with that fault. Returns false if the fault never came.
bool survivesFault(int at, bool forEver)
{
    const RenamingCase folder({u"a"_s, u"b"_s, u"c"_s, u"x"_s, u"y"_s, u"z"_s});
    FaultyFileSystem faulty;
    const RenamingPlan plan(faulty, folder.rows({{u"a"_s, u"b"_s}, {u"x"_s, u"y"_s}, {u"b"_s, u"c"_s}, {u"y"_s, u"w"_s},
                                        {u"c"_s, u"a"_s}, {u"z"_s, u"new/z"_s}}));
    faulty.setPlan({.fault = Fault::Fail, .at = at, .forEver = forEver});
    const RenamingOutcome outcome = runRenaming(faulty, plan);
    if (!faulty.hasFired())
        return false;
    // Each row knows where its file is.
    const Files files = folder.files();
    if (files.size() != 6)
        qFatal("fault %d: a file is lost", at);
    for (const RenameRow &row : outcome.rows) {
        const QString firstName = row.from.mid(folder.path().size() + 1);
        if (files.value(QDir::fromNativeSeparators(row.path.mid(folder.path().size() + 1))) != firstName)
            qFatal("fault %d: %s is not where its row says", at, qPrintable(firstName));
        if (row.state != Rename && (row.state != RenameState::Failed || !row.error))
            qFatal("fault %d: %s has a wrong outcome", at, qPrintable(firstName));
    }
    for (const RenameDone &done : outcome.renames) {
        if (!QFileInfo::exists(done.to))
            qFatal("fault %d: %s was not done", at, qPrintable(done.to));
    }
    return true;
}

} // namespace

void TestRenaming::failureAtAnyRenameLosesNothing()
{
    int call = 0;
    while (survivesFault(call, false))
        ++call;
    QVERIFY(call >= 7);
}

void TestRenaming::failureForEverLosesNothing()
{
    int call = 0;
    while (survivesFault(call, true))
        ++call;
    QVERIFY(call >= 7);
}

void TestRenaming::undoing()
{
    const RenamingCase folder({u"a"_s, u"b"_s, u"c"_s, u"d"_s, u"e"_s});
    const Files before = folder.files();
    const auto outcome = renameAll(
        folder, {{u"a"_s, u"b"_s}, {u"b"_s, u"a"_s}, {u"c"_s, u"x/y/c"_s}, {u"d"_s, u"e"_s}, {u"e"_s, u"f"_s}});
    QVERIFY(folder.files() != before);
    const auto undone = undoRenaming(native(), outcome.renames, outcome.foldersMade);
    QCOMPARE(undone.count(Rename), std::size_t(5));
    QCOMPARE(folder.files(), before);
    QVERIFY(!QFileInfo::exists(folder.path(u"x"_s)));
}

void TestRenaming::longChainsAreNotQuadratic()
{
    constexpr int Count = 2'000;
    const RenamingCase folder({u"last"_s});
    std::vector<RenameRow> rows;
    for (int i = 0; i < Count; ++i) {
        folder.add(QString::number(i));
        const QString next = i + 1 < Count ? QString::number(i + 1) : u"last"_s;
        rows.push_back({.from = folder.path(QString::number(i)), .wanted = folder.path(next)});
    }
    // The last name is taken, so each row takes its name from the one before.
    RenamingPlan plan(native(), rows);
    for (const ClashAnswer answer : {ClashAnswer::Stop, ClashAnswer::Skip, ClashAnswer::KeepBoth})
        plan.answerAll(answer);
    QCOMPARE(plan.count(Rename), std::size_t(Count));
    const auto outcome = runAsPlanned(native(), plan);
    QCOMPARE(outcome.count(Rename), std::size_t(Count));
    QCOMPARE(ScratchFolder::read(folder.path(u"last (2)"_s)), "audio of " + QByteArray::number(Count - 1));
    QCOMPARE(ScratchFolder::read(folder.path(u"1"_s)), QByteArray("audio of 0"));
}

QTEST_GUILESS_MAIN(TestRenaming)
#include "tst_renaming.moc"
