// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: files are renamed after their tags, folders after the tag of their first file. New paths lead only where
// the pattern's own text leads, never where a value does; a file that can't be read keeps its name; the new name is
// shown as the rule gave it, with its folder if that is another one.

#include "core/files/renaming/renamefromtags.h"
#include "core/files/renaming/renamingcase.h"
#include "core/tags/store/tagstore.h"
#include "support/caselessfilesystem.h"
#include "support/mp3builder.h"

#include <QtTest>

#include <memory>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

const FolderRule ArtistAlbum{true, false, {}};

FolderRule byPattern(const QString &pattern)
{
    return {false, true, pattern};
}

PreviewRow preview(const QString &path, const QString &name)
{
    PreviewRow made;
    made.path = path;
    made.name = name;
    return made;
}

TagRecord tagOf(const QString &artist, const QString &album, const QString &year = {})
{
    TagRecord made;
    made.Artist = artist;
    made.Album = album;
    made.Year = year;
    return made;
}

QString separated(const QString &path)
{
    return QString(path).replace(u'/', platform::Separator);
}

} // namespace

class TestRenameFromTags : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};
    int m_reports = 0;

    QString at(const QString &name) const { return QDir::toNativeSeparators(m_folder->path() + u'/' + name); }
    QString addFile(const QString &name, const QString &title) const
    {
        return writeFile(m_folder->path(), name, id3v2(3, textFrame(3, "TIT2", title, 1)) + audio());
    }
    FileRenaming plan(const QStringList &paths, const QString &pattern)
    {
        NamingRule rule;
        rule.mode = NamingRule::Pattern;
        rule.pattern = pattern;
        return planFileRenaming(
            paths, rule, m_store, platform::FileSystem::native(), [this](const Progress &) { ++m_reports; });
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_reports = 0;
    }

    void eachFileIsReadAndPlannedInOrder()
    {
        const FileRenaming renaming = plan({addFile(u"a.mp3"_s, u"one"_s), addFile(u"b.mp3"_s, u"two"_s)}, u"%3"_s);
        QCOMPARE(m_reports, 2);
        QCOMPARE(renaming.plan.rows().at(0).path, at(u"one.mp3"_s));
        QCOMPARE(renaming.plan.rows().at(1).path, at(u"two.mp3"_s));
        QCOMPARE(newNameOf(renaming.plan.rows().at(1)), u"two.mp3"_s);
        QVERIFY(QFile::exists(at(u"a.mp3"_s)));
    }

    void aFileThatCannotBeReadKeepsItsName()
    {
        const FileRenaming renaming = plan({at(u"gone.mp3"_s)}, u"fixed"_s);
        QVERIFY(!renaming.plan.rows().at(0).renames());
        QCOMPARE(newNameOf(renaming.plan.rows().at(0)), u"gone.mp3"_s);
    }

    void aTakenNameIsShownAsTheRuleGaveIt()
    {
        addFile(u"one.mp3"_s, u"x"_s);
        const FileRenaming renaming = plan({addFile(u"a.mp3"_s, u"one"_s)}, u"%3"_s);
        QCOMPARE(renaming.plan.rows().at(0).state, RenameState::Clash);
        QCOMPARE(newNameOf(renaming.plan.rows().at(0)), u"one.mp3"_s);
    }

    void aNameInAnotherFolderIsShownWithIt()
    {
        const FileRenaming renaming = plan({addFile(u"a.mp3"_s, u"one"_s)}, u"sub/%3"_s);
        QCOMPARE(newNameOf(renaming.plan.rows().at(0)), QDir::toNativeSeparators(u"sub/one.mp3"_s));
        QVERIFY(!QFile::exists(at(u"sub"_s)));
    }

    void thePatternsOwnWayUpIsFollowedAndAValuesIsNot()
    {
        QDir(m_folder->path()).mkdir(u"in"_s);
        const QString file = addFile(u"in/a.mp3"_s, u"one"_s);
        const FileRenaming up = plan({file}, u"../%3"_s);
        QCOMPARE(up.plan.rows().at(0).path, at(u"one.mp3"_s));
        QCOMPARE(newNameOf(up.plan.rows().at(0)), at(u"one.mp3"_s));
        const FileRenaming byValue = plan({addFile(u"in/b.mp3"_s, u".."_s)}, u"%3/x"_s);
        QVERIFY(!byValue.plan.rows().at(0).renames());
        QCOMPARE(byValue.plan.rows().at(0).problem, platform::NameProblem::LeadsOutside);
    }

    void aNameIsShownAsItWillBe()
    {
        // What the values hide shows neither in a name that is given nor in one that is taken or borne already.
        addFile(u"one.mp3"_s, u"x"_s);
        const FileRenaming renaming =
            plan({addFile(u"a.mp3"_s, u"\u202Eone\n"_s), addFile(u"b.mp3"_s, u"t\uFEFFwo"_s),
                     addFile(u"three.mp3"_s, u"thr\u2028ee"_s), addFile(u"d.mp3"_s, u"\u200B"_s)},
                u"%3"_s);
        const std::vector<RenameRow> &rows = renaming.plan.rows();
        QCOMPARE(rows.at(0).state, RenameState::Clash);
        QCOMPARE(newNameOf(rows.at(0)), u"one.mp3"_s);
        QCOMPARE(rows.at(1).path, at(u"two.mp3"_s));
        QCOMPARE(newNameOf(rows.at(1)), u"two.mp3"_s);
        QVERIFY(rows.at(1).isAdjusted);
        QCOMPARE(rows.at(2).state, RenameState::Untouched);
        QCOMPARE(newNameOf(rows.at(2)), u"three.mp3"_s);
        QCOMPARE(rows.at(3).problem, platform::NameProblem::Empty);
    }

    void filesOfARow();
    void patternsLeadOutValuesDoNot();
    void foldersByArtistAndAlbum();
    void foldersByPattern();
    void aSlashInAnAlbum();
    void noName();
    void theFolderIsRenamed();
    void caseAloneOfAFolder();
    void aTakenFolderName();
};

void TestRenameFromTags::filesOfARow()
{
    PreviewRow broken = preview(u"m/b.mp3"_s, u"b.mp3"_s);
    broken.problem = Error{ErrorCode::Io, broken.path, {}};
    const std::vector<RenameRow> rows =
        fileRenames({preview(separated(u"m/a.mp3"_s), u"x.mp3"_s), broken, preview(separated(u"m/c.MP3"_s), u"c.mp3"_s),
                        preview(u"d.mp3"_s, u".mp3"_s)},
            {});
    QCOMPARE(rows.size(), std::size_t(4));
    QCOMPARE(rows[0].wanted, separated(u"m/x.mp3"_s));
    QCOMPARE(rows[1].wanted, rows[1].from);
    QCOMPARE(rows[2].wanted, separated(u"m/c.mp3"_s));
    QVERIFY(rows[3].problem == platform::NameProblem::Empty);
}

void TestRenameFromTags::patternsLeadOutValuesDoNot()
{
    const auto renamed = [](const QString &pattern, const QString &name) {
        const NamingRule rule{NamingRule::Pattern, pattern, {}, {}};
        return fileRenames({preview(separated(u"m/in/a.mp3"_s), separated(name))}, rule).front();
    };
    QCOMPARE(renamed(u"../%3"_s, u"../x.mp3"_s).wanted, separated(u"m/x.mp3"_s));
    QCOMPARE(renamed(u"../../%3"_s, u"../../x.mp3"_s).wanted, u"x.mp3"_s);
    QCOMPARE(renamed(u"../../../%3"_s, u"../../../x.mp3"_s).wanted, separated(u"../x.mp3"_s));
    QCOMPARE(renamed(u"/%3"_s, u"/x.mp3"_s).wanted, separated(u"m/in/x.mp3"_s));
    QVERIFY(renamed(u"%2/%3"_s, u"../x.mp3"_s).problem == platform::NameProblem::LeadsOutside);
    QVERIFY(renamed(u"../%2/%3"_s, u"../../x.mp3"_s).problem == platform::NameProblem::LeadsOutside);
    QVERIFY(renamed(u"%2/%3"_s, u"con/x.mp3"_s).problem == platform::NameProblem::Reserved);
    QVERIFY(renamed(u"%2/%3"_s, u"Live. /x.mp3"_s).isAdjusted);
    QCOMPARE(renamed(u"%2/%3"_s, u"Live. /x.mp3"_s).wanted, separated(u"m/in/Live/x.mp3"_s));
}

void TestRenameFromTags::foldersByArtistAndAlbum()
{
    const QString folder = separated(u"/Music/New"_s);
    const auto to = [&](const QString &artist, const QString &album) {
        return folderRename(folder + platform::Separator, tagOf(artist, album), ArtistAlbum)->wanted;
    };
    QCOMPARE(to(u"Band"_s, u"Live"_s), separated(u"/Music/Band - Live"_s));
    QCOMPARE(to({}, u"Live"_s), separated(u"/Music/Live"_s));
    QCOMPARE(to(u"Band"_s, {}), separated(u"/Music/Band"_s));
    QCOMPARE(to(u"\u202EBand\u0085"_s, u"\u2067Li\nve\uFEFF"_s), separated(u"/Music/Band - Live"_s));
    QVERIFY(folderRename(folder, tagOf(u".."_s, {}), ArtistAlbum)->problem == platform::NameProblem::Dots);
    QVERIFY(folderRename(folder, tagOf(u"NUL"_s, {}), ArtistAlbum)->problem == platform::NameProblem::Reserved);
}

void TestRenameFromTags::foldersByPattern()
{
    const QString folder = separated(u"/Music/New"_s);
    const TagRecord record = tagOf({}, u"Live"_s, u"1999"_s);
    QCOMPARE(folderRename(folder, record, byPattern(u"%3 - %2"_s))->wanted, separated(u"/Music/1999 - Live"_s));
    QCOMPARE(
        folderRename(folder, tagOf({}, u"Live"_s), byPattern(u"%3 - %2"_s))->wanted, separated(u"/Music/%3 - Live"_s));
    QCOMPARE(folderRename(folder, record, byPattern(u"%3/%2"_s))->wanted, separated(u"/Music/1999/Live"_s));
    QCOMPARE(folderRename(folder, record, byPattern(u"../%2"_s))->wanted, separated(u"/Live"_s));
    // The pattern's own text, too.
    QCOMPARE(folderRename(folder, tagOf({}, u"\u200FLive\u2029"_s), byPattern(u"a\u200Bb/%2"_s))->wanted,
        separated(u"/Music/ab/Live"_s));
    QVERIFY(
        folderRename(folder, tagOf({}, u".."_s), byPattern(u"%2/x"_s))->problem == platform::NameProblem::LeadsOutside);
}

void TestRenameFromTags::aSlashInAnAlbum()
{
    const QString folder = separated(u"/Music/New"_s);
    for (const QChar slash : {QChar(u'/'), platform::Separator}) {
        const TagRecord record = tagOf({}, u"A"_s + slash + u'B');
        QCOMPARE(folderRename(folder, record, byPattern(u"%2"_s))->wanted, separated(u"/Music/AB"_s));
        // The wanted path keeps it, but a value must not move a folder into another.
        const auto kept = folderRename(folder, record, ArtistAlbum);
        QCOMPARE(kept->wanted, separated(u"/Music/A"_s) + slash + u'B');
        QVERIFY(kept->problem == platform::NameProblem::LeadsOutside);
    }
}

void TestRenameFromTags::noName()
{
    const QString folder = separated(u"/Music/New"_s);
    QVERIFY(!folderRename(folder, {}, ArtistAlbum));
    QVERIFY(!folderRename(folder, tagOf({}, u"Live"_s), {}));
}

void TestRenameFromTags::theFolderIsRenamed()
{
    const RenamingCase scratch({u"New/a.mp3"_s});
    platform::FileSystem &native = platform::FileSystem::native();
    const TagRecord record = tagOf(u"Band"_s, u"Vol. 1"_s);
    const auto row = folderRename(scratch.path(u"New"_s), record, ArtistAlbum);
    const RenamingOutcome outcome = runRenaming(native, RenamingPlan(native, {*row}));
    QCOMPARE(outcome.rows.front().path, scratch.path(u"Band - Vol. 1"_s));
    QCOMPARE(scratch.files().keys(), QStringList{u"Band - Vol. 1/a.mp3"_s});
    // The second time it has that name already.
    const RenamingPlan again(native, {*folderRename(outcome.rows.front().path, record, ArtistAlbum)});
    QVERIFY(again.rows().front().state == RenameState::Untouched);
}

void TestRenameFromTags::caseAloneOfAFolder()
{
    const RenamingCase scratch({u"live/a.mp3"_s});
    CaselessFileSystem caseless;
    const auto row = folderRename(scratch.path(u"live"_s), tagOf({}, u"Live"_s), ArtistAlbum);
    const RenamingOutcome outcome = runRenaming(caseless, RenamingPlan(caseless, {*row}));
    QVERIFY(outcome.rows.front().renames());
    QCOMPARE(scratch.files().keys(), QStringList{u"Live/a.mp3"_s});
}

void TestRenameFromTags::aTakenFolderName()
{
    const RenamingCase scratch({u"New/a.mp3"_s, u"Vol. 1/b.mp3"_s});
    platform::FileSystem &native = platform::FileSystem::native();
    RenamingPlan plan(native, {*folderRename(scratch.path(u"New"_s), tagOf({}, u"Vol. 1"_s), ArtistAlbum)});
    QVERIFY(plan.nextClash());
    plan.answer(0, ClashAnswer::KeepBoth);
    runRenaming(native, plan);
    QCOMPARE(scratch.files().keys(), (QStringList{u"Vol. 1 (2)/a.mp3"_s, u"Vol. 1/b.mp3"_s}));
}

QTEST_GUILESS_MAIN(TestRenameFromTags)
#include "tst_renamefromtags.moc"
