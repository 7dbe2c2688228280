// SPDX-License-Identifier: GPL-3.0-or-later
// A save that leaves fields alone: with the option, only edits are written, and what no tag can hold is left out and
// told; without it, a save writes every field by the rules of a whole record. What a journal is told of either.

#include "core/tags/store/tageditor.h"
#include "core/tags/store/tagstore.h"
#include "support/fakejournal.h"
#include "support/mp3builder.h"
#include "support/tagfixture.h"

#include <QTemporaryDir>
#include <QTest>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

using storage::ValueChange;

class TestOnlyEdited : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    ProgramState m_state = roomyState();
    FakeJournal m_journal;
    TagStore m_store{m_state, platform::FileSystem::native(), &m_journal};

    QString file(const QByteArray &content, const QString &name = u"a.mp3"_s) const
    {
        return writeFile(m_folder.path(), name, content);
    }
    /// Saves an edit of the title.
    Result<TagRecord> saveTitle(const QString &path, const QString &title)
    {
        TagEdits edits;
        edits.set(&TagRecord::Title, title);
        return m_store.save(path, [&](const TagRecord &) { return edits; });
    }
    Result<TagRecord> saveField(const QString &path, TagEdits::Field field, const QString &text)
    {
        TagEdits edits;
        edits.set(field, text);
        return m_store.save(path, [&](const TagRecord &) { return edits; });
    }
    /// The values of the changes that were made.
    std::vector<std::vector<ValueChange>> values() const
    {
        std::vector<std::vector<ValueChange>> values;
        for (const FakeJournal::Kept &each : m_journal.kept) {
            if (each.isMade())
                values.push_back(each.change.values);
        }
        return values;
    }
    void forgetChanges()
    {
        m_journal.kept.clear();
        m_journal.changedByOthers.clear();
    }
    /// All frames of a file but the title, as bytes.
    static QByteArrayList others(const QString &path, const QByteArray &title = "TIT2")
    {
        QByteArrayList bytes;
        for (const RawFrame &each : rawFrames(readFile(path))) {
            if (each.id != title)
                bytes << each.bytes;
        }
        return bytes;
    }

private Q_SLOTS:
    void init()
    {
        m_state = roomyState();
        m_state.options.onlyEditedFields = true;
        forgetChanges();
    }

    // --- what survives

    void whatNobodyEditedStays_data()
    {
        QTest::addColumn<int>("version");
        QTest::addColumn<QByteArray>("frames");
        QTest::addColumn<bool>("staysWithoutTheOption");
        QTest::newRow("a genre outside the table") << 3 << textFrame(3, "TCON", u"(130)"_s) << false;
        QTest::newRow("a free text genre") << 3 << textFrame(3, "TCON", u"Shoegaze / Dream Pop"_s) << false;
        QTest::newRow("a genre with a refinement") << 3 << textFrame(3, "TCON", u"(4)Eurodisco"_s) << true;
        QTest::newRow("Blues") << 3 << textFrame(3, "TCON", u"(0)"_s) << false;
        QTest::newRow("DanceHall") << 3 << textFrame(3, "TCON", u"(125)"_s) << false;
        QTest::newRow("a track with a total") << 3 << textFrame(3, "TRCK", u"7/12"_s) << true;
        QTest::newRow("a track above 99") << 3 << textFrame(3, "TRCK", u"107"_s) << false;
        QTest::newRow("a full date of ID3v2.4") << 4 << textFrame(4, "TDRC", u"2003-05-01"_s) << true;
        QTest::newRow("a year and a day")
            << 3 << textFrame(3, "TYER", u"2003"_s) + textFrame(3, "TDAT", u"0105"_s) << true;
        QTest::newRow("a year that is none") << 3 << textFrame(3, "TYER", u"c. 99"_s) << false;
        QTest::newRow("comments of other programs")
            << 3 << commentFrame(3, u"a"_s, u"Songs-DB_Custom1"_s) + commentFrame(3, u"b"_s, u"mood"_s) << true;
        QTest::newRow("several artists") << 4
                                         << frame(4, "TPE1",
                                                QByteArray("\x03"
                                                           "a\0b",
                                                    4))
                                         << true;
    }
    void whatNobodyEditedStays()
    {
        QFETCH(int, version);
        QFETCH(QByteArray, frames);
        QFETCH(bool, staysWithoutTheOption);
        const QByteArray content = id3v2(version, textFrame(version, "TIT2", u"old"_s) + frames, {.padding = 50});
        for (const int mode : {2, 3, 5}) {
            m_state.tagSaveMode = mode;
            const QString path = file(content + audio());
            const QByteArrayList before = others(path);
            QVERIFY(saveTitle(path, u"new"_s));
            QCOMPARE(others(path), before);
            QCOMPARE(readRecord(path).Title, u"new"_s);
        }
        m_state.tagSaveMode = 2;
        m_state.options.onlyEditedFields = false;
        const QString path = file(content + audio());
        const QByteArrayList before = others(path);
        QVERIFY(saveTitle(path, u"new"_s));
        QCOMPARE(others(path) == before, staysWithoutTheOption);
    }

    void theOtherFieldsOfAnOldTagStay()
    {
        m_state.tagSaveMode = 3;
        const QByteArray v1 = id3v1({.title = "v1 title", .artist = "v1 artist", .track = 9, .genre = 130});
        const QString path =
            file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + textFrame(3, "TPE1", u"v2 artist"_s)) + audio() + v1);
        QVERIFY(saveTitle(path, u"new"_s));
        QCOMPARE(readFile(path).last(128), id3v1({.title = "new", .artist = "v1 artist", .track = 9, .genre = 130}));
        QCOMPARE(others(path), QByteArrayList{textFrame(3, "TPE1", u"v2 artist"_s)});
    }

    void whatOnlyTheKindThatGoesHasIsKept()
    {
        m_state.tagSaveMode = 5;
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"t"_s)) + audio() +
                                  id3v1({.title = "t", .artist = "v1 artist", .track = 9, .genre = 0}));
        QVERIFY(saveTitle(path, u"new"_s));
        const TagRecord record = readRecord(path);
        QVERIFY(!record.HasV1);
        QCOMPARE(record.Artist, u"v1 artist"_s);
        QCOMPARE(record.Track, u"9"_s);
        QCOMPARE(record.Genre, u"Blues"_s);
        m_state.tagSaveMode = 4;
        QVERIFY(saveTitle(path, u"newer"_s));
        QCOMPARE(readFile(path).last(128), id3v1({.title = "newer", .artist = "v1 artist", .track = 9, .genre = 0}));
        QVERIFY(!readRecord(path).HasV2);
    }

    void aNewTagGetsWhatTheOtherKindHas()
    {
        m_state.tagSaveMode = 2;
        const QString path = file(audio() + id3v1({.title = "t", .artist = "v1 artist", .genre = 125}));
        QVERIFY(saveTitle(path, u"new"_s));
        QCOMPARE(rawFrames(readFile(path)).size(), 3);
        QCOMPARE(readRecord(path).Genre, u"DanceHall"_s);
    }

    // --- what is edited

    void theFirstAndTheLastGenreAreStored_data()
    {
        QTest::addColumn<QString>("genre");
        QTest::addColumn<int>("number");
        QTest::newRow("first") << u"Blues"_s << 0;
        QTest::newRow("last") << u"DanceHall"_s << 125;
        QTest::newRow("in other letters") << u" dancehall "_s << 125;
    }
    void theFirstAndTheLastGenreAreStored()
    {
        QFETCH(QString, genre);
        QFETCH(int, number);
        m_state.tagSaveMode = 3;
        const QString path = file(audio());
        QVERIFY(saveField(path, &TagRecord::Genre, genre));
        QCOMPARE(rawFrames(readFile(path)).first().bytes, textFrame(3, "TCON", u"(%1)"_s.arg(number)));
        QCOMPARE(int(uchar(readFile(path).back())), number);
        m_state.options.onlyEditedFields = false;
        QVERIFY(saveField(path, &TagRecord::Genre, genre));
        QVERIFY(rawFrames(readFile(path)).isEmpty());
    }

    void anEditedFieldIsRemoved()
    {
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + textFrame(3, "TCON", u"free"_s)) + audio());
        QVERIFY(saveField(path, &TagRecord::Genre, {}));
        QCOMPARE(others(path), QByteArrayList());
    }

    void removingTheCommentKeepsThoseOfOtherPrograms()
    {
        const QByteArray foreign = commentFrame(3, u"theirs"_s, u"mood"_s);
        const QByteArray all = textFrame(3, "TIT2", u"t"_s) + commentFrame(3, u"mine"_s) + foreign;
        const QString path = file(id3v2(3, all) + audio());
        QVERIFY(saveField(path, &TagRecord::Comment, {}));
        QCOMPARE(others(path), QByteArrayList{foreign});
        m_state.options.onlyEditedFields = false;
        QVERIFY(saveField(path, &TagRecord::Comment, {}));
        QCOMPARE(others(path), QByteArrayList());
    }

    void whatNoTagCanHoldIsLeftOutAndTold_data()
    {
        QTest::addColumn<int>("field");
        QTest::addColumn<QString>("text");
        QTest::newRow("a year of two digits") << 3 << u"99"_s;
        QTest::newRow("a track above 99") << 4 << u"107"_s;
        QTest::newRow("a genre of one's own") << 5 << u"Shoegaze"_s;
    }
    void whatNoTagCanHoldIsLeftOutAndTold()
    {
        QFETCH(int, field);
        QFETCH(QString, text);
        const QByteArray kept =
            textFrame(3, "TYER", u"2003"_s) + textFrame(3, "TRCK", u"7/12"_s) + textFrame(3, "TCON", u"own genre"_s);
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + kept, {.padding = 40}) + audio());
        TagEdits edits;
        edits.set(TagFields.at(size_t(field)).member, text);
        QCOMPARE(*fieldNotStorable(edits), TagFields.at(size_t(field)).member);
        edits.set(&TagRecord::Title, u"new"_s);
        const Result<TagRecord> saved = m_store.save(path, [&](const TagRecord &) { return edits; });
        QCOMPARE(saved.error().code, ErrorCode::NotStorable);
        QCOMPARE(saved.error().path, path);
        QVERIFY(saved.error().detail.contains(text));
        QCOMPARE(others(path).join(), kept);
        QCOMPARE(readRecord(path).Title, u"new"_s);
    }

    void theSameTextIsNoEditThatFails()
    {
        const QString path = file(id3v2(3, textFrame(3, "TCON", u"own genre"_s)) + audio());
        const QByteArray before = readFile(path);
        QVERIFY(saveField(path, &TagRecord::Genre, u"own genre"_s));
        QCOMPARE(readFile(path), before);
    }

    // --- the page for one file

    void aPageWritesWhatIsNotAsItWasShown()
    {
        const QByteArray kept = textFrame(3, "TCON", u"own genre"_s) + textFrame(3, "TRCK", u"107"_s);
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + kept) + audio());
        TagRecord shown;
        shown.Title = u"t"_s;
        shown.Track = u"107"_s; // the genre's box shows nothing
        TagRecord page = shown;
        page.Title = u"new"_s;
        QVERIFY(PageSave(m_store, EditedPage{page, shown}).save(path));
        QCOMPARE(others(path).join(), kept);
        m_state.options.onlyEditedFields = false;
        QVERIFY(PageSave(m_store, EditedPage{page, shown}).save(path));
        QCOMPARE(others(path).join(), QByteArray());
    }

    void aConversionWorksOnEachFilesOwnTexts()
    {
        const auto upper = [](const QString &text) { return text.toUpper(); };
        const QString one = file(id3v2(3, textFrame(3, "TIT2", u"one"_s) + textFrame(3, "TPE1", u"X"_s)) + audio());
        const QString two = file(id3v2(3, textFrame(3, "TIT2", u"two"_s)) + audio(), u"b.mp3"_s);
        TagRecord shown = readRecord(one);
        TagRecord page = shown;
        page.Album = u"album"_s;
        PageSave save(m_store, EditedPage{page, shown}, upper);
        QVERIFY(save.save(one));
        QVERIFY(save.save(two));
        QCOMPARE(save.page().Title, u"one"_s);
        QCOMPARE(readRecord(one).Title, u"ONE"_s);
        QCOMPARE(readRecord(two).Title, u"TWO"_s);
        QCOMPARE(readRecord(two).Album, u"ALBUM"_s);
        QCOMPARE(readRecord(two).Artist, QString());
        m_state.options.onlyEditedFields = false;
        PageSave whole(m_store, EditedPage{page, shown}, upper);
        QVERIFY(whole.save(two));
        QCOMPARE(readRecord(two).Title, u"ONE"_s);
        QCOMPARE(whole.page().Title, u"ONE"_s);
    }

    // --- another program

    void aChangeMeanwhileIsMerged()
    {
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + textFrame(3, "TPE1", u"a"_s)) + audio());
        int calls = 0;
        // Another program saves while this one has read the file and not written yet.
        const auto make = [&](const TagRecord &) -> Result<TagEdits> {
            if (calls++ == 0)
                file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + textFrame(3, "TPE1", u"a"_s) +
                                  textFrame(3, "TALB", u"theirs"_s)) +
                     audio());
            TagEdits edits;
            edits.set(&TagRecord::Title, u"ours"_s);
            return edits;
        };
        QVERIFY(m_store.save(path, make));
        QCOMPARE(calls, 2);
        QCOMPARE(readRecord(path).Title, u"ours"_s);
        QCOMPARE(readRecord(path).Album, u"theirs"_s);
    }

    void aFileThatNeverRestsIsAnError()
    {
        const QString path = file(audio());
        int calls = 0;
        const auto make = [&](const TagRecord &) -> Result<TagEdits> {
            file(audio(10 + ++calls));
            TagEdits edits;
            edits.set(&TagRecord::Title, u"ours"_s);
            return edits;
        };
        QCOMPARE(m_store.save(path, make).error().code, ErrorCode::ChangedMeanwhile);
        QVERIFY(calls > 3 && calls < 100);
    }

    void aPageOfAnOlderStateIsTold_data()
    {
        QTest::addColumn<bool>("isOnlyEdited");
        QTest::addColumn<bool>("isChanged");
        QTest::newRow("all fields, changed") << false << true;
        QTest::newRow("all fields, as it was") << false << false;
        QTest::newRow("only edits, changed") << true << true;
    }
    void aPageOfAnOlderStateIsTold()
    {
        QFETCH(bool, isOnlyEdited);
        QFETCH(bool, isChanged);
        m_state.options.onlyEditedFields = isOnlyEdited;
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"t"_s)) + audio());
        EditedPage page{.texts = {}, .path = path};
        QVERIFY(m_store.ReadTag(path, page.shown, &page.state));
        page.texts = page.shown;
        page.texts.Title = u"ours"_s;
        if (isChanged)
            file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + textFrame(3, "TPE1", u"theirs"_s)) + audio());
        QVERIFY(PageSave(m_store, page).save(path));
        QCOMPARE(readRecord(path).Artist, isOnlyEdited && isChanged ? u"theirs"_s : QString());
        QCOMPARE(m_journal.changedByOthers, !isOnlyEdited && isChanged ? QStringList(path) : QStringList());
    }

    // --- what a journal is told

    void theValuesAreThoseBeforeAndAfter()
    {
        m_state.options.onlyEditedFields = false;
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"t"_s) + textFrame(3, "TCON", u"(0)"_s)) + audio());
        QVERIFY(saveTitle(path, u"new"_s));
        const std::vector<ValueChange> expected{{u"title"_s, u"t"_s, u"new"_s}, {u"genre"_s, u"Blues"_s, {}}};
        QCOMPARE(values().size(), size_t(1));
        QCOMPARE(values().front(), expected);
    }

    void aRemovedTagTellsWhatWasInIt()
    {
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"v2"_s) + pictureFrame(3, 50) + pictureFrame(3, 60) +
                                               frame(3, "USLT", "\0engwords"_ba) + frame(3, "PRIV", "x"_ba)) +
                                  audio() + id3v1({.title = "v1"}));
        QVERIFY(m_store.RemoveV2(path));
        const std::vector<ValueChange> expected{{u"title"_s, u"v2"_s, u"v1"_s}, {u"picture"_s, u"2"_s, {}},
            {u"lyrics"_s, u"1"_s, {}}, {u"other"_s, u"1"_s, {}}};
        QCOMPARE(values().front(), expected);
        QVERIFY(m_store.RemoveV1(path));
        QCOMPARE(values().back(), (std::vector<ValueChange>{{u"title"_s, u"v1"_s, {}}}));
    }

    void aFieldOfTheOldTagAloneIsToldToo()
    {
        m_state.tagSaveMode = 1;
        const QString path = file(id3v2(3, textFrame(3, "TIT2", u"v2"_s)) + audio() + id3v1({.title = "v1"}));
        QVERIFY(saveTitle(path, u"new"_s));
        QCOMPARE(values().back(), (std::vector<ValueChange>{{u"title"_s, u"v1"_s, u"new"_s}}));
    }

    void bothKindsAreOneChange()
    {
        for (const int mode : {3, 4, 5}) {
            forgetChanges();
            m_state.tagSaveMode = mode;
            const QString path =
                file(id3v2(3, textFrame(3, "TIT2", u"t"_s), {.padding = 99}) + audio() + id3v1({.title = "t"}));
            QVERIFY(saveTitle(path, u"new"_s));
            QCOMPARE(values().size(), size_t(1));
            QCOMPARE(values().front(), (std::vector<ValueChange>{{u"title"_s, u"t"_s, u"new"_s}}));
        }
    }
};

QTEST_GUILESS_MAIN(TestOnlyEdited)
#include "tst_onlyedited.moc"
