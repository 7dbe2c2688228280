// SPDX-License-Identifier: GPL-3.0-or-later
// Editing many files: which fields are written, the running track, conversions that apply to the boxes as well, and
// when the run ends.

#include "core/naming/multiedit.h"
#include "core/naming/previewrows.h"
#include "core/naming/sessionchoices.h"
#include "support/faultyfilesystem.h"
#include "support/tagfixture.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

constexpr ConversionChoice Upper{true, 0};
constexpr ConversionChoice Capitals{true, 2};
constexpr ConversionChoice Underscores{true, 0};

TagRecord ownTag(int number)
{
    TagRecord record;
    record.Title = u"title %1"_s.arg(number);
    record.Artist = u"artist %1"_s.arg(number);
    record.Album = u"album %1"_s.arg(number);
    record.Year = QString::number(1990 + number);
    record.Comment = u"comment %1"_s.arg(number);
    record.Track = QString::number(20 + number);
    record.Genre = u"Country"_s;
    record.HasV2 = true;
    return record;
}

} // namespace

class TestMultiEdit : public QObject
{
    Q_OBJECT

private:
    ProgramState m_state;
    ProgressRecorder m_progress;
    TagStore m_store{m_state, platform::FileSystem::native()};

    static QStringList files(const QTemporaryDir &folder, int count)
    {
        QStringList paths;
        for (int number = 1; number <= count; ++number)
            paths << taggedFile(folder.path(), u"file %1.mp3"_s.arg(number), ownTag(number));
        return paths;
    }
    static QStringList tracksOf(const QStringList &paths)
    {
        QStringList tracks;
        for (const QString &path : paths)
            tracks << readRecord(path).Track;
        return tracks;
    }
    BatchOutcome run(const QStringList &paths, MultiEdit &edit)
    {
        return runMultiEdit(paths, edit, m_store, m_state, m_progress);
    }

private Q_SLOTS:
    void init()
    {
        m_state = roomyState();
        m_progress.paths.clear();
    }

    void fiveFilesWithoutAFirstNumberGetTracks1To5InListOrder()
    {
        const QTemporaryDir folder;
        QStringList paths = files(folder, 5);
        std::reverse(paths.begin(), paths.end());
        MultiEditPage page;
        page.setsTrack = true;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 5);
        QCOMPARE(tracksOf(paths), (QStringList{u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s}));
        QCOMPARE(m_progress.paths, paths);
    }

    void withFirstNumber7TheyGet7To11()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 5);
        MultiEditPage page;
        page.setsTrack = true;
        page.boxes.Track = u"7"_s;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 5);
        QCOMPARE(tracksOf(paths), (QStringList{u"7"_s, u"8"_s, u"9"_s, u"10"_s, u"11"_s}));
    }

    void tracksAbove99AreNotWrittenAndTakeTheFrameAway()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 3);
        MultiEditPage page;
        page.setsTrack = true;
        page.boxes.Track = u"98"_s;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 3);
        QCOMPARE(tracksOf(paths), (QStringList{u"98"_s, u"99"_s, QString()}));
        for (const RawFrame &raw : rawFrames(readFile(paths[2])))
            QVERIFY(raw.id != "TRCK");
    }

    void firstNumbers_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("track");
        QTest::newRow("leading zeros") << u"007"_s << u"7"_s;
        QTest::newRow("zero") << u"0"_s << u"0"_s;
        QTest::newRow("beyond 16 bits") << u"40000"_s << u"40000"_s;
        QTest::newRow("beyond all bits: not to be written") << QString(40, u'9') << u"1000000000"_s;
    }
    void firstNumbers()
    {
        QFETCH(QString, text);
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 1);
        MultiEditPage page;
        page.setsTrack = true;
        page.boxes.Track = text;
        MultiEdit edit(page);
        QTEST(edit.prepare(paths[0], m_store)->Track, "track");
    }

    void withOnlyTheAlbumTickedEachFileKeepsAllElse()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 3);
        MultiEditPage page;
        page.setsAlbum = true;
        page.boxes = ownTag(9);
        page.boxes.Album = u"Compilación"_s;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 3);
        for (int number = 1; number <= 3; ++number) {
            TagRecord expected = ownTag(number);
            expected.Album = u"Compilación"_s;
            QCOMPARE(readRecord(paths[number - 1]), expected);
        }
    }

    void allFieldsButTheTitle()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 1);
        const QByteArray audioBefore = audioOf(paths[0]);
        MultiEditPage page;
        page.setsArtist = page.setsAlbum = page.setsYear = page.setsGenre = page.setsComment = page.setsTrack = true;
        page.boxes = ownTag(9);
        page.boxes.Genre = u"Jazz"_s;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 1);
        TagRecord expected = page.boxes;
        expected.Title = u"title 1"_s;
        QCOMPARE(readRecord(paths[0]), expected);
        QCOMPARE(audioOf(paths[0]), audioBefore);
    }

    void anEmptyBoxTakesTheFieldAway()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 1);
        MultiEditPage page;
        page.setsArtist = page.setsGenre = true;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 1);
        QCOMPARE(readRecord(paths[0]).Artist, QString());
        QCOMPARE(readRecord(paths[0]).Genre, QString());
        QCOMPARE(readRecord(paths[0]).Album, u"album 1"_s);
    }

    void aConversionWorksOnTheTextsOfEachFileEvenWhenNoFieldIsTicked()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 2);
        MultiEditPage page;
        page.letterCase = Capitals;
        page.replacement = Underscores;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 2);
        TagRecord expected = ownTag(2);
        expected.Title = u"Title_2"_s;
        expected.Artist = u"Artist_2"_s;
        expected.Album = u"Album_2"_s;
        expected.Comment = u"Comment_2"_s;
        QCOMPARE(readRecord(paths[1]), expected);
    }

    void conversionsWorkOnTheBoxesTooAndAnAppliedFieldTakesWhatCameOfIt()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 2);
        MultiEditPage page;
        page.setsAlbum = true;
        page.boxes.Album = u"the best of"_s;
        page.boxes.Artist = u"not ticked"_s;
        page.boxes.Comment = u"a note"_s;
        page.boxes.Genre = u"hip hop"_s;
        page.letterCase = Capitals;
        page.replacement = Underscores;
        MultiEdit edit(page);
        QCOMPARE(run(paths, edit).doneCount(), 2);
        QCOMPARE(readRecord(paths[0]).Album, u"The_Best_Of"_s);
        QCOMPARE(readRecord(paths[0]).Artist, u"Artist_1"_s);
        QCOMPARE(edit.page().boxes.Album, u"The_Best_Of"_s);
        QCOMPARE(edit.page().boxes.Artist, u"Not_Ticked"_s);
        QCOMPARE(edit.page().boxes.Comment, u"A_Note"_s);
        QCOMPARE(edit.page().boxes.Genre, u"hip hop"_s);
    }

    void theCaseIsConvertedBeforeTheReplacement()
    {
        const QTemporaryDir folder;
        TagRecord record;
        record.Title = u"'_x"_s;
        const QString path = taggedFile(folder.path(), u"order.mp3"_s, record);
        MultiEditPage page;
        page.letterCase = Capitals;
        page.replacement = {true, 1};
        MultiEdit edit(page);
        // In the other order the space would come first; both make a capital, but the page's "_" must be gone.
        QCOMPARE(edit.prepare(path, m_store)->Title, u"' X"_s);
    }

    void theBoxesStayWhenNoFileIsTaken()
    {
        MultiEditPage page;
        page.boxes.Album = u"album"_s;
        page.letterCase = Upper;
        MultiEdit edit(page);
        QCOMPARE(run({}, edit).rowCount(), 0);
        QCOMPARE(edit.page().boxes.Album, u"album"_s);
        QVERIFY(!edit.prepare(u"/missing.mp3"_s, m_store));
        QCOMPARE(edit.page().boxes.Album, u"album"_s);
    }

    void aFileThatFailsEndsTheRun()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 2);
        MultiEditPage page;
        page.setsTrack = true;
        MultiEdit edit(page);
        const BatchOutcome outcome = run({paths[0], folder.filePath(u"missing.mp3"_s), paths[1]}, edit);
        QCOMPARE(outcome.outcome(0), RowOutcome::Done);
        QCOMPARE(outcome.outcome(1), RowOutcome::Failed);
        QCOMPARE(outcome.outcome(2), RowOutcome::NotTaken);
        QCOMPARE(tracksOf(paths), (QStringList{u"1"_s, u"22"_s}));
    }

    void everyFileHasItsNumberWhetherTheTrackIsTickedOrTheFileFails()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 2);
        MultiEditPage page;
        page.setsTrack = true;
        MultiEdit edit(page);
        QVERIFY(!edit.prepare(folder.filePath(u"missing.mp3"_s), m_store));
        QCOMPARE(edit.prepare(paths[0], m_store)->Track, u"2"_s);
    }

    void aRefusalForWantOfSpaceStopsTheRun()
    {
        const QTemporaryDir folder;
        const QStringList paths = files(folder, 2);
        m_state.freeMegabytes = 5;
        MultiEditPage page;
        page.setsAlbum = true;
        MultiEdit edit(page);
        const BatchOutcome outcome = run(paths, edit);
        QVERIFY(outcome.hasError(ErrorCode::LowSpace));
        QCOMPARE(outcome.takenCount(), 1);
        QVERIFY(m_state.cancelled);
        QCOMPARE(readRecord(paths[0]), ownTag(1));
    }

    void aGenreBeyondTheTableIsNoFailureAndBringsNoTrack()
    {
        const QTemporaryDir folder;
        const QString path = writeFile(folder.path(), u"odd.mp3"_s, audio() + id3v1({.title = "old", .genre = 147}));
        MultiEditPage page;
        page.setsAlbum = true;
        page.boxes.Album = u"new"_s;
        MultiEdit edit(page);
        QCOMPARE(run({path}, edit).doneCount(), 1);
        for (const RawFrame &raw : rawFrames(readFile(path)))
            QVERIFY(raw.id != "TRCK");
    }

    void theRunSavesWhatItsPreparationTells()
    {
        const QTemporaryDir folder;
        QRandomGenerator random(20260104);
        const auto flip = [&random] { return random.bounded(2) == 1; };
        for (int round = 0; round < 25; ++round) {
            const QStringList paths = files(folder, 4);
            QByteArrayList audioBefore;
            for (const QString &path : paths)
                audioBefore << audioOf(path);
            MultiEditPage page;
            page.boxes = {{}, u"ana_cívica y"_s, u"海 und Meer"_s, u"1998"_s, u"¿qué?_"_s, u"97"_s, u"Jazz"_s};
            for (bool MultiEditPage::*box :
                {&MultiEditPage::setsArtist, &MultiEditPage::setsAlbum, &MultiEditPage::setsYear,
                    &MultiEditPage::setsGenre, &MultiEditPage::setsComment, &MultiEditPage::setsTrack})
                page.*box = flip();
            page.letterCase = {flip(), random.bounded(3)};
            page.replacement = {flip(), random.bounded(2)};
            MultiEdit preparation(page);
            std::vector<TagRecord> expected;
            for (const QString &path : paths)
                expected.push_back(*preparation.prepare(path, m_store));
            MultiEdit edit(page);
            QCOMPARE(run(paths, edit).doneCount(), paths.size());
            for (qsizetype i = 0; i < paths.size(); ++i) {
                QCOMPARE(readRecord(paths[i]), asSaved(expected[std::size_t(i)]));
                QCOMPARE(audioOf(paths[i]), audioBefore[i]);
            }
        }
    }

    void aRunMakesSenseWhenAnythingIsTicked()
    {
        QVERIFY(!MultiEditPage().changesAnything());
        for (bool MultiEditPage::*box :
            {&MultiEditPage::setsArtist, &MultiEditPage::setsAlbum, &MultiEditPage::setsYear, &MultiEditPage::setsGenre,
                &MultiEditPage::setsComment, &MultiEditPage::setsTrack}) {
            MultiEditPage page;
            page.*box = true;
            QVERIFY(page.changesAnything());
        }
        for (ConversionChoice MultiEditPage::*box : {&MultiEditPage::letterCase, &MultiEditPage::replacement}) {
            MultiEditPage page;
            (page.*box).on = true;
            QVERIFY(page.changesAnything());
        }
    }

    void theConversionsAreThoseOfThePageOfManyFiles()
    {
        SessionChoices choices;
        choices.conversions[MultiCasePair] = {true, 2};
        choices.conversions[MultiReplacePair] = {true, 1};
        choices.conversions[RenameCasePair] = {true, 0};
        MultiEditPage page;
        page.takeConversions(choices);
        QCOMPARE(page.letterCase, (ConversionChoice{true, 2}));
        QCOMPARE(page.replacement, (ConversionChoice{true, 1}));
    }
};

QTEST_GUILESS_MAIN(TestMultiEdit)
#include "tst_multiedit.moc"
