// SPDX-License-Identifier: GPL-3.0-or-later
// What a pattern takes from a file's name: the matching, character by character, and the run over many files. The run
// leaves alone files that do not fit, skips files that fail, and stops when a save is refused for lack of space.

#include "core/naming/extraction.h"
#include "core/naming/filename.h"
#include "support/faultyfilesystem.h"
#include "support/nativepath.h"
#include "support/tagfixture.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

/// The fields that an extraction can fill, each after the digit of its placeholder: "1=Artist 3=Song".
QString filled(const TagRecord &record)
{
    QStringList parts;
    const auto add = [&parts](char16_t digit, const QString &text) {
        if (!text.isEmpty())
            parts << QString(QChar(digit)) + u'=' + text;
    };
    add(u'1', record.Artist);
    add(u'2', record.Album);
    add(u'3', record.Title);
    add(u'4', record.Track);
    add(u'5', record.Year);
    add(u'6', record.Genre);
    add(u'7', record.Comment);
    return parts.join(u'|');
}

/// The characters of a text from a position, which counts from 1.
QString part(const QString &text, qsizetype from, qsizetype count)
{
    return text.mid(from - 1, count);
}

/// The position of a text in another at or after a position, both from 1; 0 if it is not there. The empty text is
/// everywhere.
qsizetype place(const QString &text, const QString &sought, qsizetype from)
{
    return sought.isEmpty() ? from : text.indexOf(sought, from - 1) + 1;
}

/// The matching once more, step by step with positions, as a reference. For texts without surrogate pairs.
std::optional<TagRecord> witness(const QString &name, const QString &pattern)
{
    TagRecord record;
    const QList<QPair<QString, QString TagRecord::*>> table{{u"1"_s, &TagRecord::Artist}, {u"2"_s, &TagRecord::Album},
        {u"3"_s, &TagRecord::Title}, {u"4"_s, &TagRecord::Track}, {u"5"_s, &TagRecord::Year},
        {u"6"_s, &TagRecord::Genre}, {u"7"_s, &TagRecord::Comment}};
    qsizetype patternAt = 1;
    qsizetype nameAt = 1;
    while (const qsizetype percent = place(pattern, u"%"_s, patternAt)) {
        const qsizetype literal = percent - patternAt;
        if (part(pattern, patternAt, literal) != part(name, nameAt, literal))
            return std::nullopt;
        const QString digit = part(pattern, percent + 1, 1);
        const qsizetype start = nameAt + literal;
        patternAt = percent + 2;
        qsizetype end = name.size() + 1;
        if (patternAt <= pattern.size()) {
            const qsizetype next = place(pattern, u"%"_s, patternAt);
            end = place(name, part(pattern, patternAt, next > 0 ? next - patternAt : 1), start);
            if (end == 0)
                return std::nullopt;
        }
        for (const auto &[known, field] : table) {
            if (known == digit)
                record.*field = part(name, start, end - start);
        }
        nameAt = end;
    }
    return record;
}

/// What the pattern takes from the name, or "no match".
QString taken(const QString &name, const QString &pattern)
{
    TagRecord record;
    return MatchNameToPattern(name, pattern, record) ? filled(record) : u"no match"_s;
}

} // namespace

class TestExtraction : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;
    ProgressRecorder m_progress;
    TagStore m_store{m_state, platform::FileSystem::native()};

    QString file(const QString &name, const TagRecord &record = {}) const
    {
        return taggedFile(m_folder.path(), name, record);
    }
    ExtractionOutcome run(const QStringList &paths, const QString &pattern)
    {
        return runExtraction(paths, pattern, m_store, m_state, m_progress);
    }

private Q_SLOTS:
    void init()
    {
        m_state = roomyState();
        m_progress.paths.clear();
    }

    void matching_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *title, const QString &pattern, const QString &name, const QString &expected) {
            QTest::newRow(title) << pattern << name << expected;
        };
        const QString none = u"no match"_s;
        row("track, artist, title", u"%4 - %1 - %3"_s, u"07 - Artist - Song"_s, u"1=Artist|3=Song|4=07"_s);
        row("the separator does not occur in the name", u"%4. %3"_s, u"07 Song"_s, none);
        row("the separator is missing", u"%1 - %3"_s, u"Artist-Song"_s, none);
        row("only the title is written", u"%0 - %3"_s, u"CD1 - Song"_s, u"3=Song"_s);
        row("trailing text is its first character only", u"%1 (%2)"_s, u"Band (Live) (Remaster)"_s, u"1=Band|2=Live"_s);
        row("literals tell upper from lower case", u"%1 Feat %3"_s, u"A feat B"_s, none);
        row("a value never contains its own separator", u"%1 - %3"_s, u"A - B - C"_s, u"1=A|3=B - C"_s);
        row("two placeholders side by side", u"%1%3"_s, u"Song"_s, u"3=Song"_s);
        row("three side by side", u"%1%2%3"_s, u"Song"_s, u"3=Song"_s);
        row("side by side at the end of the name", u"%1 - %2%3"_s, u"A - "_s, u"1=A"_s);
        row("without placeholders every name fits", u"anything"_s, u"Song"_s, QString());
        row("the empty pattern", QString(), u"Song"_s, QString());
        row("text at the start", u"x-%3"_s, u"x-Song"_s, u"3=Song"_s);
        row("text at the start that differs", u"x-%3"_s, u"y-Song"_s, none);
        row("text at the start, a name too short", u"long text %3"_s, u"long"_s, none);
        row("trailing text is not compared beyond its first character", u"%3 [live]"_s, u"Song (studio)"_s,
            u"3=Song"_s);
        row("trailing text whose first character is missing", u"%3[live]"_s, u"Song"_s, none);
        row("what follows the trailing character is not looked at", u"%3)"_s, u"Song) and more"_s, u"3=Song"_s);
        row("digits that name no field are skipped", u"%8-%9-%x-%3"_s, u"a-b-c-Song"_s, u"3=Song"_s);
        row("a percent sign at the end skips the rest", u"%3 - %"_s, u"Song - rest"_s, u"3=Song"_s);
        row("two percent signs are one placeholder of no field", u"%%3"_s, u"ab3c"_s, QString());
        row("a placeholder twice: the later value stays", u"%3-%3"_s, u"one-two"_s, u"3=two"_s);
        row("all fields", u"%1_%2_%3_%4_%5_%6_%7"_s, u"a_b_c_4_1999_Rock_e"_s, u"1=a|2=b|3=c|4=4|5=1999|6=Rock|7=e"_s);
        row("an empty value", u"%1 - %3"_s, u" - Song"_s, u"3=Song"_s);
        row("an empty last value", u"%1 - %3"_s, u"Band - "_s, u"1=Band"_s);
        row("an empty name and a lone placeholder", u"%3"_s, QString(), QString());
        row("blanks stay", u"%1-%3"_s, u"A - B"_s, u"1=A |3= B"_s);
        row("accents", u"%1 – %3"_s, u"Björk – Jóga"_s, u"1=Björk|3=Jóga"_s);
        row("Japanese", u"%1・%3"_s, u"坂本龍一・戦場のメリークリスマス"_s, u"1=坂本龍一|3=戦場のメリークリスマス"_s);
        row("beyond the first plane, as trailing character", u"%3\U0001F600"_s, u"a\U0001F601b\U0001F600"_s,
            u"3=a\U0001F601b"_s);
        row("beyond the first plane, as digit", u"%\U0001F600-%3"_s, u"x-Song"_s, u"3=Song"_s);
    }
    void matching()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, name);
        QTEST(taken(name, pattern), "expected");
    }

    void everyStepIsThatOfTheWitness()
    {
        QRandomGenerator random(20260103);
        const QString nameLetters = u"ab- é"_s;
        const QString patternLetters = u"ab- é%%%%0123456789"_s;
        const auto text = [&random](const QString &letters, int longest) {
            QString made;
            for (int size = random.bounded(longest + 1); size > 0; --size)
                made += letters[random.bounded(int(letters.size()))];
            return made;
        };
        int matched = 0;
        constexpr int Rounds = 200000;
        for (int round = 0; round < Rounds; ++round) {
            const QString name = text(nameLetters, 10);
            const QString pattern = text(patternLetters, 9);
            const std::optional<TagRecord> expected = witness(name, pattern);
            TagRecord found;
            const bool isMatched = MatchNameToPattern(name, pattern, found);
            if (isMatched != expected.has_value() || (isMatched && found != *expected))
                QFAIL(qPrintable(u"pattern \"%1\", name \"%2\": %3"_s.arg(pattern, name, filled(found))));
            matched += isMatched ? 1 : 0;
        }
        QVERIFY(matched > Rounds / 20);
        QVERIFY(matched < Rounds - Rounds / 20);
    }

    void fieldsBeforeTheFailureHaveBeenFilled()
    {
        TagRecord record;
        record.Title = u"own"_s;
        QVERIFY(!MatchNameToPattern(u"07 - Artist"_s, u"%4 - %1 - %3"_s, record));
        QCOMPARE(filled(record), u"3=own|4=07"_s);
    }

    void valuesLoseControlCharacters_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("expected");
        QTest::newRow("line break") << u"Band - Song\ntouch PWNED\n#"_s << u"1=Band|3=Songtouch PWNED#"_s;
        QTest::newRow("escape sequence") << u"\u001b[31mBand - So\u009bng"_s << u"1=[31mBand|3=Song"_s;
        QTest::newRow("both ends of the ranges") << u"\u0001\u001f\u007f\u009fB - \u2028\u2029S"_s << u"1=B|3=S"_s;
        QTest::newRow("nothing else") << u"\t - \r"_s << QString();
        QTest::newRow("beside the ranges")
            << u" ~\u00a0 - \u2027\u202a\ufeff"_s << u"1= ~\u00a0|3=\u2027\u202a\ufeff"_s;
        QTest::newRow("joiners") << u"می\u200cخ - \U0001F469\u200D\U0001F680\uFE0F"_s
                                 << u"1=می\u200cخ|3=\U0001F469\u200D\U0001F680\uFE0F"_s;
    }
    void valuesLoseControlCharacters()
    {
        QFETCH(QString, name);
        QTEST(taken(name, u"%1 - %3"_s), "expected");
    }

    void controlCharactersOfNameAndPatternAreCompared()
    {
        // The tag's own fields stay as they are.
        TagRecord record;
        record.Comment = u"one\ntwo"_s;
        QVERIFY(MatchNameToPattern(u"a\tb"_s, u"%1\t%3"_s, record));
        QCOMPARE(filled(record), u"1=a|3=b|7=one\ntwo"_s);
        QCOMPARE(taken(u"a\t- b"_s, u"%1- %3"_s), u"1=a|3=b"_s);
        QCOMPARE(taken(u"a\t - b"_s, u"%1 - %3"_s), u"1=a|3=b"_s);
        QCOMPARE(taken(u"a \t- b"_s, u"%1 - %3"_s), u"no match"_s);
    }

    void anEmptyValueTakesTheFieldAway()
    {
        TagRecord record;
        record.Artist = u"own"_s;
        QVERIFY(MatchNameToPattern(u" - Song"_s, u"%1 - %3"_s, record));
        QCOMPARE(filled(record), u"3=Song"_s);
    }

    void namesOfFiles()
    {
        QCOMPARE(bareName(native(u"/music/cd1/Song.mp3"_s)), u"Song"_s);
        QCOMPARE(bareName(u"Song.MP3"_s), u"Song"_s);
        QCOMPARE(bareName(native(u"/music/a.b.c.mp3"_s)), u"a.b.c"_s);
        QCOMPARE(bareName(native(u"/music/Song.flac"_s)), u"Song."_s); // four characters, whatever they are
        QCOMPARE(bareName(native(u"/music/.mp3"_s)), QString());
        QCOMPARE(bareName(u"abc"_s), QString());
    }

    void writesWhatItFindsAndKeepsTheRest()
    {
        TagRecord before;
        before.Title = u"old"_s;
        before.Album = u"Album"_s;
        before.Year = u"1999"_s;
        before.Comment = u"kept"_s;
        before.Genre = u"Rock"_s;
        const QString path = file(u"07 - Artist - Song.mp3"_s, before);
        const QByteArray audioBefore = audioOf(path);
        const ExtractionOutcome outcome = run({path}, u"%4 - %1 - %3"_s);
        QCOMPARE(outcome.rows.doneCount(), 1);
        QVERIFY(outcome.isWritten.at(0));
        const TagRecord after = readRecord(path);
        QCOMPARE(after.Track, u"7"_s);
        QCOMPARE(after.Artist, u"Artist"_s);
        QCOMPARE(after.Title, u"Song"_s);
        QCOMPARE(after.Album, u"Album"_s);
        QCOMPARE(after.Year, u"1999"_s);
        QCOMPARE(after.Comment, u"kept"_s);
        QCOMPARE(after.Genre, u"Rock"_s);
        QCOMPARE(audioOf(path), audioBefore);
    }

    void aNameThatDoesNotFitLeavesTheFileAndTheOthersAreStillProcessed()
    {
        const QString first = file(u"Artist-Song.mp3"_s);
        const QString second = file(u"Artist - Song.mp3"_s);
        const QByteArray before = readFile(first);
        const ExtractionOutcome outcome = run({first, second}, u"%1 - %3"_s);
        QCOMPARE(readFile(first), before);
        QCOMPARE(outcome.rows.doneCount(), 2);
        QCOMPARE(outcome.isWritten, (std::vector<bool>{false, true}));
        QCOMPARE(readRecord(second).Title, u"Song"_s);
        QCOMPARE(m_progress.paths, (QStringList{first, second}));
    }

    void aPatternWithoutPlaceholdersRewritesEachTagWithItsOwnValues()
    {
        const QString path = writeFile(m_folder.path(), u"own.mp3"_s, audio() + id3v1({.title = "Only"}));
        const ExtractionOutcome outcome = run({path}, u"no placeholder"_s);
        QVERIFY(outcome.isWritten.at(0));
        const TagRecord after = readRecord(path);
        QCOMPARE(after.Title, u"Only"_s);
        QVERIFY(after.HasV2); // the mode asks for it
    }

    void aFileThatFailsIsPassedOver()
    {
        const QString good = file(u"Good - Song.mp3"_s);
        const QString missing = m_folder.filePath(u"Missing - Song.mp3"_s);
        const ExtractionOutcome outcome = run({missing, good}, u"%1 - %3"_s);
        QCOMPARE(outcome.rows.outcome(0), RowOutcome::Failed);
        QCOMPARE(outcome.rows.error(0)->code, ErrorCode::NotFound);
        QCOMPARE(outcome.rows.outcome(1), RowOutcome::Done);
        QCOMPARE(outcome.isWritten, (std::vector<bool>{false, true}));
        QCOMPARE(readRecord(good).Artist, u"Good"_s);
    }

    void aFileThatCannotBeWrittenIsPassedOver()
    {
        const QStringList paths{file(u"One - Song.mp3"_s), file(u"Two - Song.mp3"_s)};
        FaultyFileSystem faulty;
        faulty.setPlan({.fault = Fault::Fail, .at = 0, .only = Call::Write});
        TagStore store(m_state, faulty);
        const ExtractionOutcome outcome = runExtraction(paths, u"%1 - %3"_s, store, m_state, m_progress);
        QVERIFY(faulty.hasFired());
        QCOMPARE(outcome.isWritten, (std::vector<bool>{false, true}));
        QCOMPARE(outcome.rows.outcome(0), RowOutcome::Failed);
        QCOMPARE(readRecord(paths[0]).Artist, QString());
        QCOMPARE(readRecord(paths[1]).Artist, u"Two"_s);
    }

    void noFurtherFileIsTakenAfterARefusalForWantOfSpace()
    {
        const QStringList paths{file(u"One - Song.mp3"_s), file(u"Two - Song.mp3"_s)};
        m_state.freeMegabytes = 5;
        const ExtractionOutcome outcome = run(paths, u"%1 - %3"_s);
        QVERIFY(m_state.cancelled);
        QVERIFY(outcome.rows.hasError(ErrorCode::LowSpace));
        QCOMPARE(outcome.rows.outcome(0), RowOutcome::Failed);
        QCOMPARE(outcome.rows.outcome(1), RowOutcome::NotTaken);
        QCOMPARE(outcome.isWritten, std::vector<bool>{false});
        QCOMPARE(readRecord(paths[0]).Artist, QString());
    }

    void aFlagSetBeforeSkipsAll()
    {
        m_state.cancelled = true;
        const ExtractionOutcome outcome = run({file(u"Late - Song.mp3"_s)}, u"%1 - %3"_s);
        QCOMPARE(outcome.rows.takenCount(), 0);
        QVERIFY(outcome.isWritten.empty());
    }

    void aReadOnlyFileIsWrittenAndStaysReadOnly()
    {
        const QString path = file(u"Locked - Song.mp3"_s);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        QVERIFY(run({path}, u"%1 - %3"_s).isWritten.at(0));
        QCOMPARE(readRecord(path).Artist, u"Locked"_s);
        QVERIFY(!(QFile::permissions(path) & QFile::WriteOwner));
    }

    void aGenreBeyondTheTableIsNoFailureAndBringsNoTrack()
    {
        const QString path =
            writeFile(m_folder.path(), u"Odd - Song.mp3"_s, audio() + id3v1({.title = "old", .genre = 147}));
        QVERIFY(run({path}, u"%1 - %3"_s).isWritten.at(0));
        const TagRecord after = readRecord(path);
        QCOMPARE(after.Artist, u"Odd"_s);
        QCOMPARE(after.Title, u"Song"_s);
        const QByteArray content = readFile(path);
        for (const RawFrame &raw : rawFrames(content))
            QVERIFY(raw.id != "TRCK");
    }

    void aNameThatIsNoUnicodeIsTakenForLatin1()
    {
        const QString name = platform::decodePath("Bj\xf6rk - J\xf3ga.mp3");
        QCOMPARE(nameAsText(name), u"Björk - Jóga.mp3"_s);
        QCOMPARE(nameAsText(u"坂本 \U0001F600"_s), u"坂本 \U0001F600"_s);
        QCOMPARE(nameAsText(QString(QChar(0xD800)) + u'x'), u"\uFFFDx"_s);
        QCOMPARE(nameAsText(u"\U0001F600"_s + QChar(0xDCE9)), u"\U0001F600é"_s);
    }

    void accentsAndJapaneseAreWritten()
    {
        const QString path = file(u"03 - 坂本龍一 - Ñandú \U0001F600.mp3"_s);
        QVERIFY(run({path}, u"%4 - %1 - %3"_s).isWritten.at(0));
        QCOMPARE(readRecord(path).Artist, u"坂本龍一"_s);
        QCOMPARE(readRecord(path).Title, u"Ñandú \U0001F600"_s);
    }
};

QTEST_GUILESS_MAIN(TestExtraction)
#include "tst_extraction.moc"
