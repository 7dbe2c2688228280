// SPDX-License-Identifier: GPL-3.0-or-later
// The new name of a file: the three rules, the padded track, what is cleaned and what is literal, the conversions
// before the extension, and the resulting path.

#include "core/naming/previewrows.h"
#include "core/naming/sessionchoices.h"
#include "support/tagfixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

constexpr ConversionChoice Capitals{true, 2};
constexpr ConversionChoice Underscores{true, 0};

TagRecord song()
{
    TagRecord record;
    record.Artist = u"Artist"_s;
    record.Title = u"Title"_s;
    record.Track = u"5"_s;
    return record;
}

NamingRule rule(int mode, const QString &pattern = {})
{
    return {mode, pattern, {}, {}};
}

QString byPattern(const QString &pattern, const TagRecord &record, const QString &oldName = u"old"_s)
{
    return BuildNewName(oldName, record, rule(NamingRule::Pattern, pattern));
}

} // namespace

class TestNewName : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state = roomyState();
    TagStore m_store{m_state, platform::FileSystem::native()};

    QString at(const QString &name) const { return QDir::toNativeSeparators(m_folder.filePath(name)); }

private Q_SLOTS:
    void artistAndTitle()
    {
        TagRecord record;
        record.Artist = u"AC/DC"_s;
        record.Title = u"T.N.T."_s;
        QCOMPARE(BuildNewName(u"old"_s, record, rule(1)), u"ACDC - T.N.T."_s);
    }

    void trackAndTitle()
    {
        TagRecord record;
        record.Title = u"Song"_s;
        record.Track = u"3"_s;
        QCOMPARE(BuildNewName(u"old"_s, record, rule(2)), u"03 - Song"_s);
        record.Track = u"11"_s;
        QCOMPARE(BuildNewName(u"old"_s, record, rule(2)), u"11 - Song"_s);
    }

    void aFileThatLacksAFieldOfItsRuleKeepsItsName()
    {
        for (QString TagRecord::*missing : {&TagRecord::Artist, &TagRecord::Title}) {
            TagRecord record = song();
            (record.*missing).clear();
            QCOMPARE(BuildNewName(u"old"_s, record, rule(1)), u"old"_s);
        }
        for (QString TagRecord::*missing : {&TagRecord::Track, &TagRecord::Title}) {
            TagRecord record = song();
            (record.*missing).clear();
            QCOMPARE(BuildNewName(u"old"_s, record, rule(2)), u"old"_s);
        }
    }

    void withoutARuleTheNameStaysButIsConverted()
    {
        QCOMPARE(BuildNewName(u"my old"_s, song(), rule(0)), u"my old"_s);
        QCOMPARE(BuildNewName(u"my old"_s, song(), {0, {}, Capitals, Underscores}), u"My_Old"_s);
    }

    void advanced_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *title, const QString &pattern, const QString &expected) {
            QTest::newRow(title) << pattern << expected;
        };
        row("a placeholder whose field is empty stays", u"%4 %1 - %3 [%2]"_s, u"05 Artist - Title [%2]"_s);
        row("only the first occurrence is filled", u"%3 (%3)"_s, u"Title (%3)"_s);
        row("%6 is the present name", u"%6 - %3"_s, u"old - Title"_s);
        row("unknown digits are text", u"%0 %9 %x %3"_s, u"%0 %9 %x Title"_s);
        row("literal text is not cleaned", u"a\\b/c:d*e?f\"g<h>i|%3"_s,
            QDir::toNativeSeparators(u"a\\b/c:d*e?f\"g<h>i|Title"_s));
        row("an empty pattern makes an empty name", QString(), QString());
        row("no placeholder", u"same"_s, u"same"_s);
        row("a percent sign at the end", u"%3%"_s, u"Title%"_s);
        row("side by side", u"%1%3"_s, u"ArtistTitle"_s);
    }
    void advanced()
    {
        QFETCH(QString, pattern);
        QTEST(byPattern(pattern, song()), "expected");
    }

    void allFieldsOfTheRenamingTable()
    {
        TagRecord record = song();
        record.Album = u"Album"_s;
        record.Year = u"1999"_s;
        record.Genre = u"R&B"_s;
        record.Comment = u"what: ever"_s;
        QCOMPARE(byPattern(u"%8 %7 %6 %5 %4 %3 %2 %1"_s, record), u"what ever R&B old 1999 05 Title Album Artist"_s);
    }

    void placeholdersAreFilledByRisingDigitsSoThatValuesMayHoldLaterOnes()
    {
        TagRecord record = song();
        record.Artist = u"%3"_s;
        QCOMPARE(byPattern(u"%1 - %3"_s, record), u"Title - %3"_s);
        record.Artist = u"Artist"_s;
        record.Title = u"%1"_s;
        QCOMPARE(byPattern(u"%1 - %3"_s, record), u"Artist - %1"_s);
    }

    void theOldNameIsCleanedToo()
    {
        QCOMPARE(byPattern(u"%6"_s, song(), u"a:b?c"_s), u"abc"_s);
        QCOMPARE(byPattern(u"%6"_s, song(), QString()), u"%6"_s);
    }

    void aTitleLosesTheCharacterAfterGreaterThanAsWell()
    {
        TagRecord record = song();
        record.Title = u"a>b"_s;
        QCOMPARE(BuildNewName(u"old"_s, record, rule(1)), u"Artist - a"_s);
    }

    void whatCleaningLeavesEmptyIsFilledInEmpty()
    {
        TagRecord record = song();
        record.Title = u"???"_s;
        QCOMPARE(BuildNewName(u"old"_s, record, rule(1)), u"Artist - "_s);
        QCOMPARE(byPattern(u"%3"_s, record), QString());
    }

    void conversionsRunOverTheWholeNameCaseFirst()
    {
        TagRecord record;
        record.Artist = u"artist"_s;
        record.Title = u"my song"_s;
        NamingRule both = rule(1);
        both.letterCase = Capitals;
        QCOMPARE(BuildNewName(u"old"_s, record, both), u"Artist - My Song"_s);
        both.replacement = Underscores;
        QCOMPARE(BuildNewName(u"old"_s, record, both), u"Artist_-_My_Song"_s);
        // In the other order "x" would follow a space and become a capital.
        both = {NamingRule::Pattern, u"'_x"_s, ConversionChoice{true, 2}, ConversionChoice{true, 1}};
        QCOMPARE(BuildNewName(u"old"_s, record, both), u"' X"_s);
    }

    void conversionsDoNotTouchTheExtension()
    {
        const QString path = taggedFile(m_folder.path(), u"some name.MP3"_s, song());
        NamingRule upper = rule(1);
        upper.letterCase = {true, 0};
        const PreviewRow made = previewRenaming(path, upper, m_store);
        QVERIFY(!made.problem);
        QCOMPARE(made.name, u"ARTIST - TITLE.mp3"_s);
    }

    void tracks_data()
    {
        QTest::addColumn<QString>("track");
        QTest::addColumn<QString>("expected");
        const auto row = [](const QString &track, const QString &expected) {
            QTest::newRow(qPrintable(u'"' + track + u'"')) << track << expected;
        };
        row(u"7"_s, u"07"_s);
        row(u"9"_s, u"09"_s);
        row(u"10"_s, u"10"_s);
        row(u"12"_s, u"12"_s);
        row(u"100"_s, u"100"_s);
        row(u"0"_s, u"00"_s);
        row(u"07"_s, u"07"_s);
        row(u"007"_s, u"07"_s);
        row(QString(), QString());
        row(u"3/12"_s, u"03"_s);
        row(u"12/15"_s, u"12"_s);
        row(u" 3 / 12"_s, u"03"_s);
        row(u"/12"_s, u"/12"_s);
        row(u"A1"_s, u"A1"_s);
        row(u"7a"_s, u"7a"_s);
        row(u"-3"_s, u"-3"_s);
        row(u"٣"_s, u"٣"_s);
        row(u"123456789012345678901234567890"_s, u"123456789012345678901234567890"_s);
    }
    void tracks()
    {
        QFETCH(QString, track);
        QTEST(trackInName(track), "expected");
    }

    void aTrackThatIsNoNumberIsCleanedForTheName()
    {
        TagRecord record = song();
        record.Track = u"/12"_s;
        QCOMPARE(BuildNewName(u"old"_s, record, rule(2)), u"12 - Title"_s);
        record.Track = u"3/12"_s;
        QCOMPARE(BuildNewName(u"old"_s, record, rule(2)), u"03 - Title"_s);
        QCOMPARE(byPattern(u"%4"_s, record), u"03"_s);
    }

    void theFileStaysInItsFolderAndGetsTheExtensionInLowerCase()
    {
        const QString path = taggedFile(m_folder.path(), u"old.MP3"_s, song());
        const PreviewRow made = previewRenaming(path, rule(2), m_store);
        QVERIFY(!made.problem);
        QCOMPARE(made.path, path);
        QCOMPARE(made.name, u"05 - Title.mp3"_s);
        QCOMPARE(made.record.Artist, u"Artist"_s);
        QVERIFY(!made.isUntouched);
    }

    void aFileBelowTheCurrentFolderStaysThere()
    {
        QVERIFY(QDir(m_folder.path()).mkpath(u"cd1/x"_s));
        const QString path = taggedFile(at(u"cd1/x"_s), u"old.mp3"_s, song());
        QCOMPARE(previewRenaming(path, rule(1), m_store).path, path);
        QCOMPARE(previewRenaming(path, rule(1), m_store).name, u"Artist - Title.mp3"_s);
    }

    void aNameThatStaysIsUnchangedUnlessItsExtensionIsWrittenOtherwise()
    {
        const QString plain = taggedFile(m_folder.path(), u"keeps.mp3"_s, {});
        QVERIFY(previewRenaming(plain, rule(1), m_store).isUntouched);
        const QString capitals = taggedFile(m_folder.path(), u"keeps too.MP3"_s, {});
        QCOMPARE(previewRenaming(capitals, rule(1), m_store).name, u"keeps too.mp3"_s);
        QVERIFY(!previewRenaming(capitals, rule(1), m_store).isUntouched);
    }

    void aFileThatCannotBeReadHasNoNewName()
    {
        const PreviewRow made = previewRenaming(m_folder.filePath(u"missing.mp3"_s), rule(3, u"%1 - %3"_s), m_store);
        QVERIFY(made.problem);
        QCOMPARE(made.problem->code, ErrorCode::NotFound);
    }

    void aGenreBeyondTheTableIsNoFailure()
    {
        const QString path = writeFile(
            m_folder.path(), u"odd.mp3"_s, audio() + id3v1({.title = "Title", .artist = "Artist", .genre = 147}));
        QCOMPARE(previewRenaming(path, rule(3, u"%1 %4 %7"_s), m_store).name, u"Artist %4 147.mp3"_s);
    }

    void bytesThatAreNoUnicodeStayInTheName()
    {
        const QString old = platform::decodePath("J\xf3ga");
        QCOMPARE(platform::encodePath(byPattern(u"%6 - %3"_s, song(), old)), QByteArray("J\xf3ga - Title"));
    }

    void accentsAndJapanese()
    {
        TagRecord record = song();
        record.Artist = u"坂本龍一"_s;
        record.Title = u"ñandú élan"_s;
        NamingRule capitals = rule(1);
        capitals.letterCase = Capitals;
        QCOMPARE(BuildNewName(u"old"_s, record, capitals), u"坂本龍一 - Ñandú Élan"_s);
    }

    void theRuleIsThatOfTheRenamingPage()
    {
        SessionChoices choices;
        choices.renameMode = 3;
        choices.renamePattern = u"%1"_s;
        choices.conversions[RenameCasePair] = {true, 0};
        choices.conversions[RenameReplacePair] = {true, 1};
        choices.conversions[MultiCasePair] = {true, 2};
        const NamingRule chosen = NamingRule::chosen(choices);
        QCOMPARE(chosen.mode, 3);
        QCOMPARE(chosen.pattern, u"%1"_s);
        QCOMPARE(chosen.letterCase, (ConversionChoice{true, 0}));
        QCOMPARE(chosen.replacement, (ConversionChoice{true, 1}));
    }
};

QTEST_GUILESS_MAIN(TestNewName)
#include "tst_newname.moc"
