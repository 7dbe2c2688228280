// SPDX-License-Identifier: GPL-3.0-or-later
// The new name of a folder: the two rules and which of them wins, what is cleaned and what is not, when there is no new
// name, and how the dialog's choice is remembered.

#include "core/app/settings.h"
#include "core/naming/foldername.h"
#include "support/nativepath.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

TagRecord tag(const QString &artist, const QString &album, const QString &year = {}, const QString &genre = {})
{
    TagRecord record;
    record.Artist = artist;
    record.Album = album;
    record.Year = year;
    record.Genre = genre;
    return record;
}

FolderRule artistAlbum()
{
    return {true, false, {}};
}

FolderRule pattern(const QString &text)
{
    return {false, true, text};
}

QString renamed(const TagRecord &record, const FolderRule &rule, const QString &folder = u"/music/New"_s)
{
    return newFolderPath(native(folder), record, rule).value_or(u"(none)"_s);
}

} // namespace

class TestFolderName : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void artistAndAlbum()
    {
        QCOMPARE(renamed(tag(u"Band"_s, u"Live"_s), artistAlbum()), native(u"/music/Band - Live"_s));
        QCOMPARE(renamed(tag({}, u"Live"_s), artistAlbum()), native(u"/music/Live"_s));
        QCOMPARE(renamed(tag(u"Band"_s, {}), artistAlbum()), native(u"/music/Band"_s));
        QCOMPARE(renamed(tag({}, {}), artistAlbum()), u"(none)"_s);
    }

    void thePattern()
    {
        QCOMPARE(renamed(tag(u"Band"_s, u"Live"_s, u"1999"_s), pattern(u"%3 - %2"_s)), native(u"/music/1999 - Live"_s));
        QCOMPARE(renamed(tag(u"Band"_s, u"Live"_s), pattern(u"%3 - %2"_s)), native(u"/music/%3 - Live"_s));
        QCOMPARE(renamed(tag(u"a"_s, u"b"_s, u"1999"_s, u"Rock"_s), pattern(u"%4 %3 %2 %1"_s)),
            native(u"/music/Rock 1999 b a"_s));
        QCOMPARE(renamed(tag(u"a"_s, u"b"_s), pattern(u"%2 %2 %5"_s)), native(u"/music/b %2 %5"_s));
        QCOMPARE(renamed(tag(u"a"_s, u"b"_s), pattern({})), u"(none)"_s);
    }

    void aSlashInTheAlbumGoesUnderThePatternAndStaysUnderTheFirstRule()
    {
        QCOMPARE(renamed(tag({}, u"A/B"_s), pattern(u"%2"_s)), native(u"/music/AB"_s));
        QCOMPARE(renamed(tag({}, u"A/B"_s), artistAlbum()), native(u"/music/"_s) + u"A/B"_s);
        QCOMPARE(renamed(tag(u"Who?"_s, u"a>b|c"_s), artistAlbum()), native(u"/music/Who? - a>b|c"_s));
    }

    void literalTextOfThePatternIsNotCleaned()
    {
        QCOMPARE(renamed(tag(u"a"_s, {}), pattern(u"x/%1?"_s)), native(u"/music/x/a?"_s));
    }

    void whenBothAreOnTheFirstRuleWinsWhereItMakesAName()
    {
        const FolderRule both{true, true, u"p %2%3"_s};
        QCOMPARE(renamed(tag(u"Band"_s, u"Live"_s), both), native(u"/music/Band - Live"_s));
        QCOMPARE(renamed(tag({}, {}, u"1999"_s), both), native(u"/music/p %21999"_s));
    }

    void withoutARuleThereIsNoNewName() { QCOMPARE(renamed(tag(u"Band"_s, u"Live"_s), {}), u"(none)"_s); }

    void theFolderIsNamedByItsPathWithAndWithoutSeparator()
    {
        const TagRecord record = tag(u"Band"_s, {});
        QCOMPARE(renamed(record, artistAlbum(), u"/music/New/"_s), native(u"/music/Band"_s));
        QCOMPARE(renamed(record, artistAlbum(), u"/music/New//"_s), native(u"/music/Band"_s));
        QCOMPARE(renamed(record, artistAlbum(), u"/New"_s), native(u"/Band"_s));
        QCOMPARE(renamed(record, artistAlbum(), u"/"_s), u"(none)"_s);
        QCOMPARE(renamed(record, artistAlbum(), QString()), u"(none)"_s);
    }

    void theDialogIsRemembered_data()
    {
        QTest::addColumn<bool>("check1");
        QTest::addColumn<bool>("check2");
        QTest::addColumn<QString>("stored");
        QTest::newRow("Check1") << true << false << u"1"_s;
        QTest::newRow("Check2") << false << true << u"2"_s;
        QTest::newRow("neither") << false << false << QString();
    }
    void theDialogIsRemembered()
    {
        QFETCH(bool, check1);
        QFETCH(bool, check2);
        const QTemporaryDir folder;
        Settings settings(folder.filePath(u"ravlin.ini"_s));
        const FolderRule rule{check1, check2, u"%3 - %2"_s};
        rule.store(settings);
        QTEST(settings.read(u"dir rename"), "stored");
        QCOMPARE(settings.read(u"dir rename var"), u"%3 - %2"_s);
        QVERIFY(settings.save());
        const Settings again(folder.filePath(u"ravlin.ini"_s));
        QCOMPARE(FolderRule::restored(again), rule);
    }

    void atTheFirstStartNeitherIsOn()
    {
        const QTemporaryDir folder;
        Settings settings(folder.filePath(u"ravlin.ini"_s));
        QCOMPARE(FolderRule::restored(settings), FolderRule{});
        settings.write(u"dir rename", u"3"_s);
        QCOMPARE(FolderRule::restored(settings), FolderRule{});
    }
};

QTEST_GUILESS_MAIN(TestFolderName)
#include "tst_foldername.moc"
