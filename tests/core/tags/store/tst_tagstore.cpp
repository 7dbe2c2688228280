// SPDX-License-Identifier: GPL-3.0-or-later
// The tag store: reads a file's tags into a record and writes a record by the tag-save mode; what counts as a year, a
// track and a genre; the check of free space; read-only files.

#include "core/platform/filesystem.h"
#include "core/tags/record/genres.h"
#include "core/tags/store/tagstore.h"
#include "support/filesteps.h"
#include "support/mp3builder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestTagStore : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};

    QString file(const QByteArray &content) const
    {
        return writeFile(m_folder.path(), QStringLiteral("a.mp3"), content);
    }
    TagRecord read(const QString &path) const
    {
        TagRecord record;
        if (const Result<void> result = m_store.ReadTag(path, record); !result)
            qFatal("%s", qPrintable(result.error().detail));
        return record;
    }
    /// Saves a record in that mode and returns what the file then holds.
    QByteArray saved(const QString &path, const TagRecord &record, int mode)
    {
        m_state.tagSaveMode = mode;
        const Result<void> result = m_store.SaveTag(path, record);
        if (!result)
            qFatal("%s", qPrintable(result.error().detail));
        return readFile(path);
    }
    static TagRecord fullRecord()
    {
        TagRecord record;
        record.Title = QStringLiteral("Canción");
        record.Artist = QStringLiteral("Björk");
        record.Album = QStringLiteral("Début");
        record.Year = QStringLiteral("1993");
        record.Comment = QStringLiteral("hello");
        record.Track = QStringLiteral("7");
        record.Genre = QStringLiteral("Electronic");
        return record;
    }

private Q_SLOTS:
    void init()
    {
        m_state = ProgramState{};
        m_state.freeMegabytes = 100000;
    }

    void everyModeWritesAndRemovesItsKinds_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<bool>("v1After");
        QTest::addColumn<bool>("v2After");
        const QByteArray none = audio();
        const QByteArray v1 = audio() + id3v1({.title = "x"});
        const QByteArray v2 = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x"))) + audio();
        const QByteArray both = v2 + id3v1({.title = "x"});
        QTest::newRow("1 none") << 1 << none << true << false;
        QTest::newRow("2 none") << 2 << none << false << true;
        QTest::newRow("2 v1 stays") << 2 << v1 << true << true;
        QTest::newRow("3 none") << 3 << none << true << true;
        QTest::newRow("4 a file that has only an ID3v2 tag ends with ID3v1 and no ID3v2") << 4 << v2 << true << false;
        QTest::newRow("4 both") << 4 << both << true << false;
        QTest::newRow("5 v1") << 5 << v1 << false << true;
        QTest::newRow("5 both") << 5 << both << false << true;
    }
    void everyModeWritesAndRemovesItsKinds()
    {
        QFETCH(int, mode);
        QFETCH(QByteArray, before);
        QFETCH(bool, v1After);
        QFETCH(bool, v2After);
        const QString path = file(before);
        const QByteArray after = saved(path, fullRecord(), mode);
        const TagRecord record = read(path);
        QCOMPARE(record.HasV1, v1After);
        QCOMPARE(record.HasV2, v2After);
        QCOMPARE(record.Title, QStringLiteral("Canción"));
        QCOMPARE(record.Artist, QStringLiteral("Björk"));
        QCOMPARE(record.Album, QStringLiteral("Début"));
        QCOMPARE(record.Year, QStringLiteral("1993"));
        QCOMPARE(record.Comment, QStringLiteral("hello"));
        QCOMPARE(record.Track, QStringLiteral("7"));
        QCOMPARE(record.Genre, QStringLiteral("Electronic"));
        QVERIFY(after.contains(audio()));
        // A save that changes nothing writes nothing.
        const platform::FileInfo first = platform::FileSystem::native().info(path).value();
        QCOMPARE(saved(path, fullRecord(), mode), after);
        const platform::FileInfo second = platform::FileSystem::native().info(path).value();
        QCOMPARE(second.modified, first.modified);
        QCOMPARE(second.inode, first.inode);
    }

    void id3v1OnlyLeavesTheId3v2TagAsItIs()
    {
        const QByteArray before = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x"))) + audio();
        const QString path = file(before);
        const QByteArray after = saved(path, fullRecord(), 1);
        QCOMPARE(after.left(before.size()), before);
        QCOMPARE(after.mid(before.size()), id3v1({.title = "Canci\xF3n",
                                               .artist = "Bj\xF6rk",
                                               .album = "D\xE9"
                                                        "but",
                                               .year = "1993",
                                               .comment = "hello",
                                               .track = 7,
                                               .genre = 52}));
        // If both tags have a value, ID3v2's is shown.
        QCOMPARE(read(path).Title, QStringLiteral("x"));
        QCOMPARE(read(path).Artist, QStringLiteral("Björk"));
    }

    void anyOtherModeWritesNothing()
    {
        const QString path = file(audio());
        for (const int mode : {0, 6, -1})
            QCOMPARE(saved(path, fullRecord(), mode), audio());
    }

    void genreIsWrittenByItsNumber_data()
    {
        QTest::addColumn<QString>("genre");
        QTest::addColumn<int>("number");
        QTest::newRow("Blues is no genre") << QStringLiteral("Blues") << 255;
        QTest::newRow("blues in lower case likewise") << QStringLiteral("blues") << 255;
        QTest::newRow("DanceHall likewise") << QStringLiteral("DanceHall") << 255;
        QTest::newRow("Country is 2") << QStringLiteral("Country") << 2;
        QTest::newRow("Euro-House is 124") << QStringLiteral("Euro-House") << 124;
        QTest::newRow("rock in lower case is 17") << QStringLiteral("rock") << 17;
        QTest::newRow("a free text is none") << QStringLiteral("Shoegaze") << 255;
    }
    void genreIsWrittenByItsNumber()
    {
        QFETCH(QString, genre);
        QFETCH(int, number);
        const QString path = file(audio());
        TagRecord record = fullRecord();
        record.Genre = genre;
        const QByteArray after = saved(path, record, 3);
        QCOMPARE(static_cast<unsigned char>(after.back()), static_cast<unsigned char>(number));
        const QByteArray text = "(" + QByteArray::number(number) + ")";
        QCOMPARE(after.contains("TCON"), number != 255);
        QCOMPARE(after.contains(text), number != 255);
    }

    void aFreeTextGenreIsShownAndGoesWithTheNextSave()
    {
        const QString path = file(id3v2(3, textFrame(3, "TCON", QStringLiteral("Shoegaze"))) + audio());
        TagRecord record = read(path);
        QCOMPARE(record.Genre, QStringLiteral("Shoegaze"));
        record.Title = QStringLiteral("t");
        QVERIFY(!saved(path, record, 2).contains("TCON"));
    }

    void theLastFreeTextGenreFrameWins()
    {
        const QString path =
            file(id3v2(3, textFrame(3, "TCON", QStringLiteral("one")) + textFrame(3, "TCON", QStringLiteral("two"))) +
                 audio());
        QCOMPARE(read(path).Genre, QStringLiteral("two"));
    }

    void genreTexts_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("genre");
        QTest::newRow("(17)") << 3 << QStringLiteral("(17)") << QStringLiteral("Rock");
        QTest::newRow("17") << 4 << QStringLiteral("17") << QStringLiteral("Rock");
        QTest::newRow("(17)Rock") << 3 << QStringLiteral("(17)Rock") << QStringLiteral("Rock");
        QTest::newRow("Rock") << 3 << QStringLiteral("Rock") << QStringLiteral("Rock");
        QTest::newRow("Classic Rock") << 4 << QStringLiteral("Classic Rock") << QStringLiteral("ClassicRock");
        QTest::newRow("refined") << 3 << QStringLiteral("(4)Eurodisco") << QStringLiteral("Disco");
        QTest::newRow("two") << 3 << QStringLiteral("(51)(39)") << QStringLiteral("Techno-Industrial");
        QTest::newRow("(RX)") << 3 << QStringLiteral("(RX)") << QStringLiteral("(RX)");
        QTest::newRow("(255)") << 3 << QStringLiteral("(255)") << QStringLiteral("(255)");
        QTest::newRow("several values") << 4 << QStringLiteral("17") + QChar(0) + QStringLiteral("20")
                                        << QStringLiteral("Rock");
    }
    void genreTexts()
    {
        QFETCH(int, version);
        QFETCH(QString, text);
        QFETCH(QString, genre);
        const QByteArray before = id3v2(version, textFrame(version, "TCON", text), {.padding = 50}) + audio();
        const QString path = file(before);
        TagRecord record = read(path);
        QCOMPARE(record.Genre, genre);
        // An edit to the genre that the tag already has leaves the frame as it is.
        if (genre.startsWith(u'('))
            return;
        record.Title = QStringLiteral("new");
        const QList<RawFrame> frames = rawFrames(saved(path, record, 2));
        QCOMPARE(frames.at(0).bytes, textFrame(version, "TCON", text));
    }

    void aGenreNumberAbove125EndsTheReadAfterTheFields()
    {
        for (const QByteArray &content :
            {id3v2(3, textFrame(3, "TIT2", QStringLiteral("T")) + textFrame(3, "TCON", QStringLiteral("(130)"))) +
                    audio(),
                audio() + id3v1({.title = "T", .genre = 130})}) {
            TagRecord record;
            const Result<void> result = m_store.ReadTag(file(content), record);
            QVERIFY(!result);
            QCOMPARE(result.error().code, ErrorCode::GenreOutOfRange);
            QCOMPARE(record.Title, QStringLiteral("T"));
            QCOMPARE(record.Genre, QStringLiteral("130"));
            QCOMPARE(record.Track, QStringLiteral("0"));
        }
    }

    void onlyAYearOfFourDigitsIsWritten()
    {
        for (const QString &year : {QStringLiteral("99"), QStringLiteral("1999a"), QStringLiteral("199a"), QString()}) {
            const QString path =
                file(id3v2(3, textFrame(3, "TYER", QStringLiteral("2001")), {.padding = 100}) + audio());
            TagRecord record = fullRecord();
            record.Year = year;
            QVERIFY(!saved(path, record, 2).contains("TYER"));
        }
    }

    void onlyATrackOfOneOrTwoDigitsIsWritten()
    {
        const auto trackAfter = [this](const QString &track) {
            const QString path = file(id3v2(3, textFrame(3, "TRCK", QStringLiteral("5")), {.padding = 100}) + audio());
            TagRecord record = fullRecord();
            record.Track = track;
            saved(path, record, 2);
            return read(path).Track;
        };
        QCOMPARE(trackAfter(QStringLiteral("07")), QStringLiteral("7"));
        QCOMPARE(trackAfter(QStringLiteral("7")), QStringLiteral("7"));
        QCOMPARE(trackAfter(QStringLiteral("107")), QString());
        QCOMPARE(trackAfter(QStringLiteral("7/12")), QString());
        QCOMPARE(trackAfter(QStringLiteral("x")), QString());
    }

    void track0InAFileReadsAsEmpty()
    {
        QCOMPARE(read(file(id3v2(3, textFrame(3, "TRCK", QStringLiteral("0"))) + audio())).Track, QString());
        QCOMPARE(read(file(audio())).Track, QString());
    }

    void theTotalOfATrackStays()
    {
        const QByteArray frames = textFrame(3, "TRCK", QStringLiteral("3/12"));
        const QString path = file(id3v2(3, frames, {.padding = 200}) + audio());
        TagRecord record = read(path);
        QCOMPARE(record.Track, QStringLiteral("3"));
        record.Title = QStringLiteral("new");
        QCOMPARE(rawFrames(saved(path, record, 2)).at(0).bytes, frames);
        record.Track = QStringLiteral("4");
        QCOMPARE(rawFrames(saved(path, record, 2)).at(0).bytes, textFrame(3, "TRCK", QStringLiteral("4/12")));
    }

    void aFullDateStaysWhileTheYearIsTheSame()
    {
        const QByteArray frames = textFrame(4, "TDRC", QStringLiteral("1999-05-17"));
        const QString path = file(id3v2(4, frames, {.padding = 200}) + audio());
        TagRecord record = read(path);
        QCOMPARE(record.Year, QStringLiteral("1999"));
        record.Title = QStringLiteral("new");
        QCOMPARE(rawFrames(saved(path, record, 2)).at(0).bytes, frames);
        record.Year = QStringLiteral("2000");
        QCOMPARE(rawFrames(saved(path, record, 2)).at(0).bytes, textFrame(4, "TDRC", QStringLiteral("2000")));
    }

    void aNewYearTakesDayAndTimeOfTheOldOneAway_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QString>("oldYear"); ///< empty: none
        QTest::addColumn<QByteArray>("v1Year");
        QTest::addColumn<QString>("newYear");
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("areKept");
        const QString old = QStringLiteral("1999");
        const QString other = QStringLiteral("2001");
        for (const int version : {2, 3}) {
            const auto row = [version](
                                 const char *name) -> QTestData & { return QTest::addRow("%s, 2.%d", name, version); };
            for (const int mode : {2, 3, 5})
                row(qPrintable(QStringLiteral("new, mode %1").arg(mode)))
                    << version << old << QByteArray() << other << mode << false;
            row("the first") << version << QString() << QByteArray() << other << 2 << false;
            row("the first, only in ID3v1 before, mode 3")
                << version << QString() << QByteArray("1999") << other << 3 << false;
            row("the same") << version << old << QByteArray() << old << 2 << true;
            row("the same, in other words")
                << version << QStringLiteral("1999-05-17") << QByteArray() << old << 2 << true;
            row("the same, only in ID3v1 before") << version << QString() << QByteArray("1999") << old << 2 << true;
            row("removed") << version << old << QByteArray() << QString() << 2 << true;
            row("not writable") << version << old << QByteArray() << QStringLiteral("201") << 2 << true;
            row("new, but only ID3v1 is written") << version << old << QByteArray("1999") << other << 1 << true;
        }
        // The year's own frame holds a whole date there, and nobody reads these beside it.
        QTest::newRow("new, 2.4") << 4 << old << QByteArray() << other << 2 << true;
    }
    void aNewYearTakesDayAndTimeOfTheOldOneAway()
    {
        QFETCH(int, version);
        QFETCH(QString, oldYear);
        QFETCH(QByteArray, v1Year);
        QFETCH(QString, newYear);
        QFETCH(int, mode);
        QFETCH(bool, areKept);
        const bool isOld = version == 2;
        const QByteArray yearId = isOld ? "TYE" : version == 3 ? "TYER" : "TDRC";
        const QByteArray day = textFrame(version, isOld ? "TDA" : "TDAT", QStringLiteral("1705"));
        const QByteArray time = textFrame(version, isOld ? "TIM" : "TIME", QStringLiteral("2015"), 1);
        const QByteArray title = textFrame(version, isOld ? "TT2" : "TIT2", QStringLiteral("title"));
        const QByteArray dates = frame(version, isOld ? "TRD" : "TRDA", "\0from May to June") +
                                 textFrame(version, isOld ? "TOR" : "TORY", QStringLiteral("1970"));
        const QByteArray picture = pictureFrame(version, 2000);
        const QByteArray year = oldYear.isEmpty() ? QByteArray() : textFrame(version, yearId.constData(), oldYear);
        const QByteArray v1 = v1Year.isEmpty() ? QByteArray() : id3v1({.title = "title", .year = v1Year});
        const QString path =
            file(id3v2(version, day + title + time + year + picture + dates, {.padding = 100}) + audio() + v1);
        TagRecord record = read(path);
        record.Year = newYear;
        const QByteArray after = saved(path, record, mode);
        QCOMPARE(after.contains(day), areKept);
        QCOMPARE(after.contains(time), areKept);
        for (const QByteArray &kept : {title, picture + dates, audio()})
            QVERIFY(after.contains(kept));
        qsizetype frames = areKept ? 6 : 4; // without the year's
        for (const RawFrame &raw : rawFrames(after))
            frames -= raw.id == yearId ? 0 : 1;
        QCOMPARE(frames, 0);
        const bool isWritten = isWritableYear(newYear);
        if (mode != 1)
            QCOMPARE(read(path).Year, isWritten ? newYear : QString());
    }

    void everyTagKeepsItsVersionAndItsYearFrame()
    {
        const std::array<std::pair<int, QByteArray>, 3> versions{{{2, "TYE"}, {3, "TYER"}, {4, "TDRC"}}};
        for (const auto &[version, year] : versions) {
            const QString path =
                file(id3v2(version, textFrame(version, version == 2 ? "TT2" : "TIT2", QStringLiteral("x"))) + audio());
            const QByteArray after = saved(path, fullRecord(), 2);
            QCOMPARE(static_cast<int>(after[3]), version);
            QVERIFY(after.contains(year));
            QCOMPARE(read(path).Year, QStringLiteral("1993"));
            QCOMPARE(read(path).Title, QStringLiteral("Canción"));
        }
    }

    void aReadOnlyFileIsTaggedAndStaysReadOnly()
    {
        for (const QByteArray &content :
            {audio(), id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")), {.padding = 500}) + audio()}) {
            const QString path = file(content);
            QVERIFY(ravlin::test::setPermissions(path, 0444));
            for (const int mode : {1, 2, 3, 4, 5}) {
                saved(path, fullRecord(), mode);
                QCOMPARE(platform::FileSystem::native().info(path)->permissions, 0444U);
            }
            QCOMPARE(read(path).Title, QStringLiteral("Canción"));
            QVERIFY(ravlin::test::removeFile(path));
        }
    }

    void aReadOnlyFileIsNotStripped()
    {
        const QByteArray content =
            id3v2(3, textFrame(3, "TIT2", QStringLiteral("x"))) + audio() + id3v1({.title = "x"});
        const QString path = file(content);
        QVERIFY(ravlin::test::setPermissions(path, 0444));
        QCOMPARE(m_store.RemoveV1(path).error().code, ErrorCode::ReadOnly);
        QCOMPARE(m_store.RemoveV2(path).error().code, ErrorCode::ReadOnly);
        QCOMPARE(readFile(path), content);
        QVERIFY(ravlin::test::removeFile(path));
    }

    void stripTakesOneKindOnly()
    {
        const QByteArray v2 = id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")));
        const QByteArray v1 = id3v1({.title = "x"});
        const QString path = file(v2 + audio() + v1);
        QVERIFY(m_store.RemoveV1(path));
        QCOMPARE(readFile(path), v2 + audio());
        QVERIFY(m_store.RemoveV1(path));
        QCOMPARE(readFile(path), v2 + audio());
        QVERIFY(m_store.RemoveV2(file(v2 + audio() + v1)));
        QCOMPARE(readFile(path), audio() + v1);
        QVERIFY(m_store.RemoveV2(path));
        QCOMPARE(readFile(path), audio() + v1);
    }

    void tooLittleFreeSpaceIsRefused()
    {
        // A 10 MB file on a drive with 15 free megabytes: 10 + 5 is not below 15.
        const QString path = file(QByteArray(10 * 1024 * 1024, '\x55'));
        m_state.freeMegabytes = 15;
        m_state.tagSaveMode = 3;
        const Result<void> refused = m_store.SaveTag(path, fullRecord());
        QVERIFY(!refused);
        QCOMPARE(refused.error().code, ErrorCode::LowSpace);
        QVERIFY(m_state.cancelled);
        QCOMPARE(readFile(path).size(), 10 * 1024 * 1024);
        m_state.freeMegabytes = 16;
        QVERIFY(m_store.SaveTag(path, fullRecord()));
        QVERIFY(!m_state.cancelled);
        // The sum is not rounded: a byte less needs less than 15 MB, a byte more needs more.
        m_state.freeMegabytes = 15;
        QVERIFY(m_store.SaveTag(file(QByteArray(10 * 1024 * 1024 - 1, '\x55')), fullRecord()));
        const QString larger = file(QByteArray(10 * 1024 * 1024 + 1, '\x55'));
        QCOMPARE(m_store.SaveTag(larger, fullRecord()).error().code, ErrorCode::LowSpace);
        m_state.freeMegabytes = 16;
        QVERIFY(m_store.SaveTag(larger, fullRecord()));
    }

    void aMissingFileGivesAnEmptyRecordAndAnError()
    {
        TagRecord record = fullRecord();
        const Result<void> result = m_store.ReadTag(m_folder.filePath(QStringLiteral("none.mp3")), record);
        QVERIFY(!result);
        QCOMPARE(result.error().code, ErrorCode::NotFound);
        QCOMPARE(record.Title, QString());
        QVERIFY(!record.HasV1 && !record.HasV2);
        QCOMPARE(m_store.RemoveV1(m_folder.path()).error().code, ErrorCode::NotAFile);
    }

    void emptyFieldsRemoveTheirFrames()
    {
        const QByteArray kept = pictureFrame(3, 300);
        const QString path =
            file(id3v2(3,
                     textFrame(3, "TIT2", QStringLiteral("x")) + kept + commentFrame(3, QStringLiteral("c")) +
                         commentFrame(3, QStringLiteral("d"), QStringLiteral("d")),
                     {.padding = 10}) +
                 audio());
        const QByteArray after = saved(path, TagRecord{}, 2);
        QCOMPARE(rawFrames(after).size(), 1);
        QCOMPARE(rawFrames(after).at(0).bytes, kept);
    }

    void aTagWithoutAnyFrameLeftIsTakenAway()
    {
        const QString path = file(id3v2(3, textFrame(3, "TIT2", QStringLiteral("x")), {.padding = 10}) + audio());
        QCOMPARE(saved(path, TagRecord{}, 2), audio());
        QCOMPARE(saved(path, TagRecord{}, 2), audio());
    }
};

QTEST_GUILESS_MAIN(TestTagStore)
#include "tst_tagstore.moc"
