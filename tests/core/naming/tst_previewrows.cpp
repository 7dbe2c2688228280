// SPDX-License-Identifier: GPL-3.0-or-later
// What a preview shows, and that it touches nothing and is true: over random files, tags and patterns the run does what
// the preview said, and extraction by a pattern recovers what renaming by the same pattern put into a name.

#include "core/app/idiomas.h"
#include "core/naming/extraction.h"
#include "core/naming/filename.h"
#include "core/naming/previewrows.h"
#include "support/nativepath.h"
#include "support/tagfixture.h"

#include <QDir>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

namespace {

using Field = QString TagRecord::*;

constexpr int RandomRounds = 400;

/// A text of one to that many characters of an alphabet.
QString randomText(QRandomGenerator &random, const QStringList &alphabet, int longest)
{
    QString text;
    const int size = random.bounded(1, longest + 1);
    for (int i = 0; i < size; ++i)
        text += alphabet[random.bounded(int(alphabet.size()))];
    return text;
}

const QStringList &letters()
{
    static const QStringList alphabet{u"a"_s, u"B"_s, u"7"_s, u" "_s, u"-"_s, u"_"_s, u"."_s, u"é"_s, u"Ñ"_s, u"坂"_s,
        u"メ"_s, u"\U0001F600"_s, u"&"_s};
    return alphabet;
}

/// A placeholder of one table and the one of the other for the same field.
struct DigitPair
{
    char16_t renaming;
    char16_t extraction;
    Field field;
};
const std::array<DigitPair, 7> DigitPairs{{{u'1', u'1', &TagRecord::Artist}, {u'2', u'2', &TagRecord::Album},
    {u'3', u'3', &TagRecord::Title}, {u'4', u'4', &TagRecord::Track}, {u'5', u'5', &TagRecord::Year},
    {u'7', u'6', &TagRecord::Genre}, {u'8', u'7', &TagRecord::Comment}}};

QString valueFor(Field field, QRandomGenerator &random)
{
    if (field == &TagRecord::Track)
        return QString::number(random.bounded(1, 100));
    if (field == &TagRecord::Year)
        return QString::number(random.bounded(1000, 10000));
    if (field == &TagRecord::Genre)
        return u"Jazz"_s;
    return randomText(random, letters(), 8).trimmed() + u'x';
}

/// One pattern in the digits of both tables, with its fields in random order and random text between them, and a record
/// whose values don't contain that text.
struct Scene
{
    QString forRenaming;
    QString forExtraction;
    TagRecord record;
    std::vector<Field> fields;
};

Scene randomScene(QRandomGenerator &random)
{
    Scene scene;
    std::array<DigitPair, 7> pairs = DigitPairs;
    std::shuffle(pairs.begin(), pairs.end(), random);
    const std::size_t count = std::size_t(random.bounded(1, 8));
    for (std::size_t i = 0; i < count; ++i) {
        const QString separator = i == 0 ? QString() : randomText(random, letters() + QStringList{u"("_s, u"#"_s}, 4);
        if (i > 0) {
            const QString &before = scene.record.*(pairs[i - 1].field);
            // The value must not contain its separator, not even across the boundary of the two.
            if ((before + separator).indexOf(separator) != before.size())
                return randomScene(random);
        }
        scene.record.*(pairs[i].field) = valueFor(pairs[i].field, random);
        scene.forRenaming += separator + u'%' + QChar(pairs[i].renaming);
        scene.forExtraction += separator + u'%' + QChar(pairs[i].extraction);
        scene.fields.push_back(pairs[i].field);
    }
    return scene;
}

TagRecord full()
{
    TagRecord record;
    record.Title = u"Title"_s;
    record.Artist = u"Artist"_s;
    record.Album = u"Album"_s;
    record.Year = u"1999"_s;
    record.Track = u"7"_s;
    record.Comment = u"Comment"_s;
    record.Genre = u"Rock"_s;
    record.HasV2 = true;
    return record;
}

} // namespace

class TestPreviewRows : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;
    ProgressRecorder m_progress;
    TagStore m_store{m_state, platform::FileSystem::native()};

    QString file(const QString &name, const TagRecord &record = full()) const
    {
        return taggedFile(m_folder.path(), name, record);
    }
    static QString nameOf(int characters, const QString &letter = u"x"_s)
    {
        return letter.repeated(characters - 4) + u".mp3"_s;
    }

private Q_SLOTS:
    void init()
    {
        m_state = roomyState();
        m_progress.paths.clear();
    }

    void withoutFilesThereAreNoRows()
    {
        QVERIFY(previewExtraction(QStringList(), u"%3"_s, m_store, m_progress).empty());
        QVERIFY(previewRenaming(QStringList(), {3, u"%3"_s, {}, {}}, m_store, m_progress).empty());
    }

    void extractionShowsTheNameAndTheTagAsItWouldBe()
    {
        const QString path = file(u"03 - Band.mp3"_s);
        const PreviewRow row = previewExtraction(path, u"%4 - %1"_s, m_store);
        QCOMPARE(row.path, path);
        QCOMPARE(row.name, u"03 - Band.mp3"_s);
        TagRecord expected = full();
        expected.Track = u"03"_s;
        expected.Artist = u"Band"_s;
        QCOMPARE(row.record, expected);
        QVERIFY(!row.isUntouched);
        QVERIFY(!row.isUnreadable());
        QCOMPARE(readRecord(path), full());
    }

    void extractionTellsWhatItWouldLeaveUntouched()
    {
        const PreviewRow row = previewExtraction(file(u"04-Band.mp3"_s), u"%4-%1-%3"_s, m_store);
        QVERIFY(row.isUntouched);
        QCOMPARE(row.record.Track, u"04"_s); // as far as the match went
        QCOMPARE(row.record.Title, u"Title"_s);
    }

    void extractionTellsWhatASaveWouldLose()
    {
        Captions captions;
        captions.fill();
        const PreviewRow row = previewExtraction(file(u"99 - 100.mp3"_s), u"%5 - %4"_s, m_store);
        QCOMPARE(row.record.Year, u"99"_s); // shown as found
        QCOMPARE(row.record.Track, u"100"_s);
        QCOMPARE(row.lost.size(), std::size_t(2));
        QCOMPARE(extractionRemarks(row, captions),
            (QStringList{u"the track “100” is not saved: a track has one or two digits"_s,
                u"the year “99” is not saved: a year has four digits"_s,
                u"the file loses these fields: track, year"_s}));
        QVERIFY(
            extractionRemarks(previewExtraction(file(u"1999 - 10.mp3"_s), u"%5 - %4"_s, m_store), captions).isEmpty());
        // Nothing is saved where the name does not fit, so nothing is lost.
        const PreviewRow odd = previewExtraction(file(u"99 - x.mp3"_s), u"%5 - %4 - %3"_s, m_store);
        QVERIFY(odd.lost.empty());
        QCOMPARE(extractionRemarks(odd, captions),
            QStringList{u"the name does not fit the mask; the file stays as it is"_s});
    }

    void renamingShowsTheNewNameAndTheFilesOwnTag()
    {
        const QString path = file(u"old.MP3"_s);
        const PreviewRow row = previewRenaming(path, {2, {}, {}, {}}, m_store);
        QCOMPARE(row.name, u"07 - Title.mp3"_s);
        QCOMPARE(row.path, path);
        QCOMPARE(row.record, full());
        QVERIFY(!row.isUntouched);
        QVERIFY(QFile::exists(path));
        QVERIFY(!QFile::exists(m_folder.filePath(row.name)));
    }

    void whatIsNotNamedLikeMusicIsRefused()
    {
        TagRecord record;
        record.Artist = u"A"_s;
        record.Title = u"T"_s;
        const QString song = file(u"song.mp3"_s, record);
        for (const QString &name : {u"cover.jpg"_s, u"song"_s, u"song.mp3.bak"_s}) {
            const QString path = native(m_folder.filePath(name));
            QVERIFY(QFile::copy(song, path));
            for (const int mode : {0, 1, 2, 3}) {
                const PreviewRow row = previewRenaming(path, {mode, u"%3"_s, {}, {}}, m_store);
                QVERIFY(row.problem);
                QCOMPARE(row.problem->code, ErrorCode::NotMp3Name);
                QCOMPARE(row.name, name);
                QVERIFY(row.isUntouched);
            }
            QVERIFY(QFile::remove(path));
        }
    }

    void renamingTellsWhichNamesStay()
    {
        const PreviewRow row = previewRenaming(file(u"stays.mp3"_s, {}), {1, {}, {}, {}}, m_store);
        QVERIFY(row.isUntouched);
        QCOMPARE(row.name, u"stays.mp3"_s);
        QCOMPARE(platform::folderPrefix(row.path) + row.name, row.path);
    }

    void aFileWithoutTagHasNeitherKind()
    {
        const QString none = writeFile(m_folder.path(), u"none.mp3"_s, audio());
        const QString v1 = writeFile(m_folder.path(), u"v1.mp3"_s, audio() + id3v1({.title = "T"}));
        for (const PreviewRow &row :
            {previewExtraction(none, u"%3"_s, m_store), previewRenaming(none, {3, u"%6"_s, {}, {}}, m_store)}) {
            QVERIFY(!row.record.HasV1);
            QVERIFY(!row.record.HasV2);
        }
        QVERIFY(previewExtraction(v1, u"%3"_s, m_store).record.HasV1);
        QVERIFY(!previewExtraction(v1, u"%3"_s, m_store).record.HasV2);
    }

    void aFileThatCannotBeReadIsMarkedAndStays()
    {
        const QString path = native(m_folder.filePath(u"missing - file.mp3"_s));
        const PreviewRow extraction = previewExtraction(path, u"%1 - %3"_s, m_store);
        QVERIFY(extraction.isUnreadable());
        QVERIFY(extraction.isUntouched);
        QCOMPARE(extraction.problem->code, ErrorCode::NotFound);
        QCOMPARE(extraction.name, u"missing - file.mp3"_s);
        QCOMPARE(extraction.record, TagRecord{});
        const PreviewRow renaming = previewRenaming(path, {3, u"%1"_s, {}, {}}, m_store);
        QVERIFY(renaming.isUnreadable());
        QVERIFY(renaming.isUntouched);
        QCOMPARE(renaming.name, u"missing - file.mp3"_s);
        QCOMPARE(renaming.path, path);
    }

    void longNames_data()
    {
        QTest::addColumn<QString>("letter");
        QTest::newRow("plain") << u"x"_s;
        QTest::newRow("accents") << u"é"_s;
        QTest::newRow("Japanese") << u"坂"_s;
        QTest::newRow("beyond the first plane") << u"\U0001F600"_s;
    }
    void longNames()
    {
        QFETCH(QString, letter);
        QVERIFY(!isLongName(nameOf(64, letter)));
        QVERIFY(isLongName(nameOf(65, letter)));
        // Renaming: the new name with ".mp3" counts.
        TagRecord record;
        record.Title = letter.repeated(60);
        const QString path = file(u"long.mp3"_s, record);
        QVERIFY(!previewRenaming(path, {3, u"%3"_s, {}, {}}, m_store).isLongName);
        QVERIFY(previewRenaming(path, {3, u"%3!"_s, {}, {}}, m_store).isLongName);
        // Extraction: the name shown, which is the file's. The system takes at most 255 bytes, so letters of four bytes
        // are too many for a real file.
        if (letter.toUtf8().size() * 61 + 4 > 255)
            return;
        QVERIFY(!previewExtraction(file(nameOf(64, letter)), u"%3"_s, m_store).isLongName);
        QVERIFY(previewExtraction(file(nameOf(65, letter)), u"%3"_s, m_store).isLongName);
    }

    void theFolderOfAFileDoesNotCountForItsLength()
    {
        const QString folder = m_folder.filePath(u"y"_s.repeated(70));
        QVERIFY(QDir().mkpath(folder));
        const QString path = taggedFile(folder, u"short.mp3"_s, {});
        QVERIFY(!previewExtraction(path, u"%3"_s, m_store).isLongName);
        QCOMPARE(previewExtraction(path, u"%3"_s, m_store).name, u"short.mp3"_s);
        QVERIFY(!previewRenaming(path, {1, {}, {}, {}}, m_store).isLongName);
    }

    void rowsComeInListOrderAndTellTheirProgress()
    {
        const QStringList paths{file(u"c.mp3"_s), m_folder.filePath(u"missing.mp3"_s), file(u"a.mp3"_s)};
        const auto rows = previewExtraction(paths, u"%3"_s, m_store, m_progress);
        QCOMPARE(m_progress.paths, paths);
        QCOMPARE(rows.size(), 3U);
        for (std::size_t i = 0; i < rows.size(); ++i)
            QCOMPARE(rows[i].path, paths[qsizetype(i)]);
    }

    void previewsWriteNothing()
    {
        const QString path = file(u"01 - kept.mp3"_s);
        const QByteArray before = readFile(path);
        const QStringList namesBefore = QDir(m_folder.path()).entryList();
        previewExtraction(path, u"%4 - %3"_s, m_store);
        previewRenaming(path, {3, u"%3"_s, {}, {}}, m_store);
        QCOMPARE(readFile(path), before);
        QCOMPARE(QDir(m_folder.path()).entryList(), namesBefore);
    }

    void aFullDriveDoesNotConcernAPreview()
    {
        m_state.freeMegabytes = 0;
        m_state.cancelled = true;
        QCOMPARE(previewExtraction({file(u"x.mp3"_s)}, u"%3"_s, m_store, m_progress).size(), 1U);
    }

    void whatASaveMakesOfARecord()
    {
        TagRecord record = full();
        record.Track = u"07"_s;
        record.Genre = u" rock"_s;
        QCOMPARE(asSaved(record), full());
        record.Track = u"107"_s;
        record.Year = u"99"_s;
        record.Genre = u"Blues"_s;
        QCOMPARE(asSaved(record).Track, QString());
        QCOMPARE(asSaved(record).Year, QString());
        QCOMPARE(asSaved(record).Genre, QString());
        record.Track = u"0"_s;
        QCOMPARE(asSaved(record).Track, QString());
    }

    void whatARulePutsIntoANameTheSamePatternTakesOut()
    {
        QRandomGenerator random(20260101);
        for (int round = 0; round < RandomRounds; ++round) {
            const Scene scene = randomScene(random);
            const QString name = BuildNewName(u"old"_s, scene.record, {NamingRule::Pattern, scene.forRenaming, {}, {}});
            TagRecord found;
            QVERIFY2(MatchNameToPattern(name, scene.forExtraction, found),
                qPrintable(scene.forExtraction + u" on "_s + name));
            found.Track = found.Track.isEmpty() ? QString() : QString::number(found.Track.toInt());
            QCOMPARE(found, scene.record);
        }
    }

    void theExtractionDoesWhatItsPreviewShows()
    {
        QRandomGenerator random(20260102);
        const QTemporaryDir folder;
        const QStringList alphabet{u"a"_s, u"é"_s, u"坂"_s, u" "_s, u"-"_s, u"1"_s};
        const QStringList pieces{
            u"%1"_s, u"%2"_s, u"%3"_s, u"%4"_s, u"%5"_s, u"%6"_s, u"%7"_s, u"%0"_s, u"%9"_s, u" "_s, u"-"_s, u"a"_s};
        int writtenCount = 0;
        for (int round = 0; round < 20; ++round) {
            QStringList paths;
            for (int number = 0; number < 10; ++number)
                paths << taggedFile(folder.path(),
                    u"%1%2 %3.mp3"_s.arg(randomText(random, alphabet, 12)).arg(round).arg(number), full());
            const QString pattern = randomText(random, pieces, 5);
            const auto rows = previewExtraction(paths, pattern, m_store, m_progress);
            QList<QByteArray> audioBefore;
            for (const QString &path : paths)
                audioBefore << audioOf(path);
            const ExtractionOutcome outcome = runExtraction(paths, pattern, m_store, m_state, m_progress);
            QCOMPARE(outcome.rows.doneCount(), paths.size());
            for (qsizetype i = 0; i < paths.size(); ++i) {
                const PreviewRow &row = rows[std::size_t(i)];
                const TagRecord after = readRecord(paths[i]);
                QCOMPARE(outcome.isWritten[std::size_t(i)], !row.isUntouched);
                QCOMPARE(after, row.isUntouched ? full() : asSaved(row.record));
                QCOMPARE(audioOf(paths[i]), audioBefore[i]);
                writtenCount += row.isUntouched ? 0 : 1;
            }
        }
        QVERIFY(writtenCount > 0);
        QVERIFY(writtenCount < 200);
    }
};

QTEST_GUILESS_MAIN(TestPreviewRows)
#include "tst_previewrows.moc"
