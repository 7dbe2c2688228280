// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: the names that the rules make become wishes whose paths lead nowhere but where the pattern's own text does;
// a folder gets its new name by the same batch as files do.

#include "core/files/renaming/renamefromtags.h"
#include "core/files/renaming/renamingcase.h"
#include "support/caselessfilesystem.h"

#include <QtTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

const FolderRule ArtistAlbum{true, false, {}};

FolderRule byPattern(const QString &pattern)
{
    return {false, true, pattern};
}

PreviewRow row(const QString &path, const QString &name)
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

private Q_SLOTS:
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
    PreviewRow broken = row(u"m/b.mp3"_s, u"b.mp3"_s);
    broken.problem = Error{ErrorCode::Io, broken.path, {}};
    const std::vector<RenameWish> wishes =
        renameWishes({row(separated(u"m/a.mp3"_s), u"x.mp3"_s), broken, row(separated(u"m/c.MP3"_s), u"c.mp3"_s),
                         row(u"d.mp3"_s, u".mp3"_s)},
            {});
    QCOMPARE(wishes.size(), std::size_t(4));
    QCOMPARE(wishes[0].to, separated(u"m/x.mp3"_s));
    QCOMPARE(wishes[1].to, wishes[1].from);
    QCOMPARE(wishes[2].to, separated(u"m/c.mp3"_s));
    QVERIFY(wishes[3].problem == platform::NameProblem::Empty);
}

void TestRenameFromTags::patternsLeadOutValuesDoNot()
{
    const auto wish = [](const QString &pattern, const QString &name) {
        const NamingRule rule{NamingRule::Pattern, pattern, {}, {}};
        return renameWishes({row(separated(u"m/in/a.mp3"_s), separated(name))}, rule).front();
    };
    QCOMPARE(wish(u"../%3"_s, u"../x.mp3"_s).to, separated(u"m/x.mp3"_s));
    QCOMPARE(wish(u"../../%3"_s, u"../../x.mp3"_s).to, u"x.mp3"_s);
    QCOMPARE(wish(u"../../../%3"_s, u"../../../x.mp3"_s).to, separated(u"../x.mp3"_s));
    QCOMPARE(wish(u"/%3"_s, u"/x.mp3"_s).to, separated(u"m/in/x.mp3"_s));
    QVERIFY(wish(u"%2/%3"_s, u"../x.mp3"_s).problem == platform::NameProblem::LeadsOutside);
    QVERIFY(wish(u"../%2/%3"_s, u"../../x.mp3"_s).problem == platform::NameProblem::LeadsOutside);
    QVERIFY(wish(u"%2/%3"_s, u"con/x.mp3"_s).problem == platform::NameProblem::Reserved);
    QVERIFY(wish(u"%2/%3"_s, u"Live. /x.mp3"_s).isAdjusted);
    QCOMPARE(wish(u"%2/%3"_s, u"Live. /x.mp3"_s).to, separated(u"m/in/Live/x.mp3"_s));
}

void TestRenameFromTags::foldersByArtistAndAlbum()
{
    const QString folder = separated(u"/Music/New"_s);
    const auto to = [&](const QString &artist, const QString &album) {
        return folderRenameWish(folder + platform::Separator, tagOf(artist, album), ArtistAlbum)->to;
    };
    QCOMPARE(to(u"Band"_s, u"Live"_s), separated(u"/Music/Band - Live"_s));
    QCOMPARE(to({}, u"Live"_s), separated(u"/Music/Live"_s));
    QCOMPARE(to(u"Band"_s, {}), separated(u"/Music/Band"_s));
    QVERIFY(folderRenameWish(folder, tagOf(u".."_s, {}), ArtistAlbum)->problem == platform::NameProblem::Dots);
    QVERIFY(folderRenameWish(folder, tagOf(u"NUL"_s, {}), ArtistAlbum)->problem == platform::NameProblem::Reserved);
}

void TestRenameFromTags::foldersByPattern()
{
    const QString folder = separated(u"/Music/New"_s);
    const TagRecord record = tagOf({}, u"Live"_s, u"1999"_s);
    QCOMPARE(folderRenameWish(folder, record, byPattern(u"%3 - %2"_s))->to, separated(u"/Music/1999 - Live"_s));
    QCOMPARE(
        folderRenameWish(folder, tagOf({}, u"Live"_s), byPattern(u"%3 - %2"_s))->to, separated(u"/Music/%3 - Live"_s));
    QCOMPARE(folderRenameWish(folder, record, byPattern(u"%3/%2"_s))->to, separated(u"/Music/1999/Live"_s));
    QCOMPARE(folderRenameWish(folder, record, byPattern(u"../%2"_s))->to, separated(u"/Live"_s));
    QVERIFY(folderRenameWish(folder, tagOf({}, u".."_s), byPattern(u"%2/x"_s))->problem ==
            platform::NameProblem::LeadsOutside);
}

void TestRenameFromTags::aSlashInAnAlbum()
{
    const QString folder = separated(u"/Music/New"_s);
    for (const QChar slash : {QChar(u'/'), platform::Separator}) {
        const TagRecord record = tagOf({}, u"A"_s + slash + u'B');
        QCOMPARE(folderRenameWish(folder, record, byPattern(u"%2"_s))->to, separated(u"/Music/AB"_s));
        // Kept in the new path, but no folder goes below another one by a value.
        const auto kept = folderRenameWish(folder, record, ArtistAlbum);
        QCOMPARE(kept->to, separated(u"/Music/A"_s) + slash + u'B');
        QVERIFY(kept->problem == platform::NameProblem::LeadsOutside);
    }
}

void TestRenameFromTags::noName()
{
    const QString folder = separated(u"/Music/New"_s);
    QVERIFY(!folderRenameWish(folder, {}, ArtistAlbum));
    QVERIFY(!folderRenameWish(folder, tagOf({}, u"Live"_s), {}));
}

void TestRenameFromTags::theFolderIsRenamed()
{
    const RenamingCase scratch({u"New/a.mp3"_s});
    platform::FileSystem &native = platform::FileSystem::native();
    const TagRecord record = tagOf(u"Band"_s, u"Vol. 1"_s);
    const auto wish = folderRenameWish(scratch.path(u"New"_s), record, ArtistAlbum);
    const RenamingOutcome outcome = runRenaming(native, RenamingPlan(native, {*wish}));
    QCOMPARE(outcome.rows.front().path, scratch.path(u"Band - Vol. 1"_s));
    QCOMPARE(scratch.files().keys(), QStringList{u"Band - Vol. 1/a.mp3"_s});
    // Once more it is named so already.
    const RenamingPlan again(native, {*folderRenameWish(outcome.rows.front().path, record, ArtistAlbum)});
    QVERIFY(again.rows().front().state == RenameState::Untouched);
}

void TestRenameFromTags::caseAloneOfAFolder()
{
    const RenamingCase scratch({u"live/a.mp3"_s});
    CaselessFileSystem caseless;
    const auto wish = folderRenameWish(scratch.path(u"live"_s), tagOf({}, u"Live"_s), ArtistAlbum);
    const RenamingOutcome outcome = runRenaming(caseless, RenamingPlan(caseless, {*wish}));
    QVERIFY(outcome.rows.front().renames());
    QCOMPARE(scratch.files().keys(), QStringList{u"Live/a.mp3"_s});
}

void TestRenameFromTags::aTakenFolderName()
{
    const RenamingCase scratch({u"New/a.mp3"_s, u"Vol. 1/b.mp3"_s});
    platform::FileSystem &native = platform::FileSystem::native();
    RenamingPlan plan(native, {*folderRenameWish(scratch.path(u"New"_s), tagOf({}, u"Vol. 1"_s), ArtistAlbum)});
    QVERIFY(plan.nextClash());
    plan.answer(0, ClashAnswer::KeepBoth);
    runRenaming(native, plan);
    QCOMPARE(scratch.files().keys(), (QStringList{u"Vol. 1 (2)/a.mp3"_s, u"Vol. 1/b.mp3"_s}));
}

QTEST_GUILESS_MAIN(TestRenameFromTags)
#include "tst_renamefromtags.moc"
