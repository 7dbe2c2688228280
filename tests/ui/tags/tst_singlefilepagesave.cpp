// SPDX-License-Identifier: GPL-3.0-or-later
// The page that edits one file's tag, through its real controls over real files: what it saves into which files,
// removing tags, and what happens when a file fails or space runs out.

#include "support/links.h"
#include "support/tagbombs.h"
#include "ui/tags/singlefilepagefixture.h"

#include <QFile>
#include <QTest>

#include <QSignalSpy>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestSingleFilePageSave : public SingleFilePageFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }

    void withThreeRowsSelectedEditaGivesAllThreeFilesTheSameTitleArtistAndTrack()
    {
        addFile(u"1.mp3"_s, tagged(u"one"_s));
        addFile(u"2.mp3"_s, tagged(u"two"_s));
        addFile(u"3.mp3"_s);
        const QByteArray untouched = tagged(u"four"_s);
        addFile(u"4.mp3"_s, untouched);
        clickRow(1);
        m_owner.selected = {2, 0, 1};
        setText("Ttitulo", u"Title"_s);
        setText("tartista", u"Artist"_s);
        setText("Tpista", u"7"_s);
        press("edita");
        for (int row = 0; row < 3; ++row) {
            const TagRecord record = read(m_owner.rows.at(row));
            QCOMPARE(record.Title, u"Title"_s);
            QCOMPARE(record.Artist, u"Artist"_s);
            QCOMPARE(record.Track, u"7"_s);
        }
        QCOMPARE(readFile(m_owner.rows.at(3)), untouched);
        QCOMPARE(m_owner.advanced, m_owner.rows.mid(0, 3)); // in list order
        QCOMPARE(m_owner.rowCounts, QList<qsizetype>{3});
        QCOMPARE(m_owner.events, (QStringList{u"run"_s, u"refresh"_s}));
    }

    void allFieldsAreWrittenAndEmptyOnesRemoved()
    {
        const QString path =
            addFile(u"a.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"old"_s) + textFrame(3, "TYER", u"1990"_s) +
                                             textFrame(3, "TALB", u"album"_s)) +
                                    audio());
        clickRow(0);
        setText("Ttitulo", u"new"_s);
        setText("talbum", QString());
        setText("tcomentarios", u"note"_s);
        control<QComboBox>("cestilo")->setCurrentText(u"Ska"_s);
        press("edita");
        const TagRecord record = read(path);
        QCOMPARE(record.Title, u"new"_s);
        QCOMPARE(record.Album, QString());
        QCOMPARE(record.Year, u"1990"_s);
        QCOMPARE(record.Comment, u"note"_s);
        QCOMPARE(record.Genre, u"Ska"_s);
        QVERIFY(!readFile(path).contains("TALB"));
    }

    void afterSavingTheCurrentRowIsShownAgain()
    {
        addFile(u"a.mp3"_s);
        clickRow(0);
        setText("Tpista", u"107"_s); // three digits are not written
        setText("ta_o", u"99"_s);
        setText("Ttitulo", u"x"_s);
        m_owner.onRefresh = [this] { m_page->reset(); };
        press("edita");
        QCOMPARE(text("Tpista"), QString());
        QCOMPARE(text("ta_o"), QString());
        QCOMPARE(text("Ttitulo"), u"x"_s);
        QVERIFY(isEnabled("edita"));
        QVERIFY(isEnabled("eliminav2"));
    }

    void withTheConversionTickedTheBoxesShowTheConvertedTextAfterSaving()
    {
        const QString path = addFile(u"a.mp3"_s);
        clickRow(0);
        setText("Ttitulo", u"hello world (live)"_s);
        setText("tartista", u"o'neil"_s);
        setText("talbum", u"ROCK-N-ROLL"_s);
        setText("tcomentarios", u"don't stop"_s);
        convertBy(2);
        press("edita");
        QCOMPARE(text("Ttitulo"), u"Hello World (Live)"_s);
        QCOMPARE(text("tartista"), u"O'neil"_s);
        QCOMPARE(text("talbum"), u"Rock-N-Roll"_s);
        QCOMPARE(text("tcomentarios"), u"Don't Stop"_s);
        QCOMPARE(read(path).Title, u"Hello World (Live)"_s);
    }

    void laterRowsGetTheAlreadyConvertedText()
    {
        addFile(u"1.mp3"_s);
        addFile(u"2.mp3"_s);
        clickRow(0);
        m_owner.selectAll();
        setText("Ttitulo", u"mIxEd tExt"_s);
        convertBy(2);
        press("edita");
        QCOMPARE(read(m_owner.rows.at(0)).Title, u"Mixed Text"_s);
        QCOMPARE(read(m_owner.rows.at(1)).Title, u"Mixed Text"_s);
    }

    void aConversionThatIsNotTickedChangesNothing()
    {
        const QString path = addFile(u"a.mp3"_s);
        clickRow(0);
        setText("Ttitulo", u"MiXed"_s);
        control<QComboBox>("ccase_2")->setCurrentIndex(0);
        press("edita");
        QCOMPARE(read(path).Title, u"MiXed"_s);
    }

    void aFreeTextGenreIsShownEmptyAndRemovedBySaving()
    {
        const QString path = addFile(
            u"a.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"x"_s) + textFrame(3, "TCON", u"Chamber Ska"_s)) + audio());
        clickRow(0);
        QCOMPARE(control<QComboBox>("cestilo")->currentText(), QString());
        press("edita");
        QVERIFY(!readFile(path).contains("TCON"));
        QCOMPARE(read(path).Title, u"x"_s);
    }

    void textsOfAnyLengthAndWithLineBreaksComeThroughUnchanged()
    {
        const QString comment = QString(40000, u'x') + u"\nsecond line"_s;
        const QString path =
            addFile(u"a.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"x"_s) + commentFrame(3, comment)) + audio());
        clickRow(0);
        setText("Ttitulo", u"y"_s);
        press("edita");
        QCOMPARE(read(path).Comment, comment);
        QCOMPARE(read(path).Title, u"y"_s);
    }

    void aFailingFileEndsTheLoopSilentlyAndTheListIsRefilledAllTheSame()
    {
        addFile(u"1.mp3"_s);
        m_owner.rows << m_folder->filePath(u"missing.mp3"_s);
        const QByteArray untouched = tagged(u"three"_s);
        addFile(u"3.mp3"_s, untouched);
        clickRow(0);
        m_owner.selectAll();
        setText("Ttitulo", u"x"_s);
        press("edita");
        QCOMPARE(read(m_owner.rows.at(0)).Title, u"x"_s);
        QCOMPARE(readFile(m_owner.rows.at(2)), untouched);
        QCOMPARE(m_owner.events, (QStringList{u"run"_s, u"refresh"_s}));
    }

    void a10MegabyteFileWith15FreeMegabytesIsRefusedOnceAndTheRestSkipped()
    {
        const qint64 tenMegabytes = 10 * 1024 * 1024;
        for (const QString &name : {u"1.mp3"_s, u"2.mp3"_s, u"3.mp3"_s}) {
            const QString path = addFile(name, tagged(u"old"_s));
            QVERIFY(QFile::resize(path, tenMegabytes));
        }
        m_state.freeMegabytes = 15;
        clickRow(0);
        m_owner.selectAll();
        setText("Ttitulo", u"new"_s);
        press("edita");
        QCOMPARE(m_owner.events, (QStringList{u"run"_s, u"error low disk space, operation cancelled"_s, u"refresh"_s}));
        QCOMPARE(m_owner.advanced.size(), 1);
        QVERIFY(m_state.cancelled);
        for (const QString &path : m_owner.rows)
            QCOMPARE(read(path).Title, u"old"_s);
    }

    void theRefusalSpeaksTheCurrentLanguage()
    {
        addFile(u"a.mp3"_s);
        m_captions.setLanguageName(u"french"_s);
        m_captions.fill();
        m_state.freeMegabytes = 1;
        clickRow(0);
        press("edita");
        QCOMPARE(m_owner.events.at(1), u"error espace disque faible, opération annulée"_s);
    }

    void onceCancelledNoRowIsTaken()
    {
        const QByteArray content = tagged(u"old"_s);
        const QString path = addFile(u"a.mp3"_s, content);
        m_state.cancelled = true;
        clickRow(0);
        setText("Ttitulo", u"new"_s);
        press("edita");
        QCOMPARE(readFile(path), content);
        QCOMPARE(m_owner.advanced, QStringList());
    }

    void whileOtherWorkIsUnderWayNothingIsDoneAndWhatWasTypedStays()
    {
        const QByteArray content = audio() + id3v1({.title = "x"});
        addFile(u"a.mp3"_s, content);
        clickRow(0);
        setText("Ttitulo", u"typed"_s);
        m_owner.isBusy = true;
        press("edita");
        press("eliminav1");
        QCOMPARE(text("Ttitulo"), u"typed"_s);
        QCOMPARE(readFile(m_owner.rows.at(0)), content);
        QCOMPARE(m_owner.events, QStringList(u"ask remove id3v1 tag?"_s));
    }

    void theHintSaysWhatTheModeLosesOrDoesNotShow()
    {
        addFile(u"1.mp3"_s, tagged(u"one"_s) + id3v1({.title = "one"}));
        addFile(u"2.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"two"_s) + pictureFrame(3, 2000)) + audio());
        addFile(u"3.mp3"_s, audio() + id3v1({.title = "three"}));
        const QString notShown = u"ID3v1 is written; the list shows ID3v2"_s;
        const QString loses = u"lost in ID3v1: "_s;
        const QString pictures = u"pictures"_s;
        m_state.tagSaveMode = 1;
        m_page->show();
        clickRow(0);
        QTRY_COMPARE(label("saveHint"), notShown);
        clickRow(2);
        QTRY_COMPARE(label("saveHint"), QString());
        m_owner.selectAll();
        m_page->selectionChanged();
        QTRY_COMPARE(label("saveHint"), u"goes into 3 files; "_s + notShown);
        m_owner.selected.clear();
        m_page->selectionChanged();
        QCOMPARE(label("saveHint"), u"no file is selected"_s);

        m_state.tagSaveMode = 4;
        clickRow(0);
        QTRY_COMPARE(label("saveHint"), QString());
        setText("Ttitulo", u"夜"_s);
        QTRY_COMPARE(label("saveHint"), loses + u"characters outside Latin-1 (“???” or similar letters)"_s);
        setText("Ttitulo", QString(31, u'x'));
        QTRY_COMPARE(label("saveHint"), loses + u"letters beyond 30 (28 in a comment beside a track)"_s);
        setText("Ttitulo", u"x"_s);
        QTRY_COMPARE(label("saveHint"), QString());
        clickRow(1);
        QTRY_COMPARE(label("saveHint"), loses + pictures);
        m_owner.selectAll();
        m_page->selectionChanged();
        QTRY_COMPARE(label("saveHint"), u"goes into 3 files; "_s + loses + pictures);
        press("edita");
        QTRY_COMPARE(label("saveHint"), u"goes into 3 files"_s); // gone with the tags

        for (const int mode : {2, 3, 5}) {
            m_state.tagSaveMode = mode;
            setText("Ttitulo", QString(31, u'夜'));
            m_page->selectionChanged();
            QTest::qWait(300);
            QCOMPARE(label("saveHint"), u"goes into 3 files"_s);
        }
    }

    void withNothingSelectedThePageSaysSoAndWhatWasTypedStays()
    {
        const QByteArray content = tagged(u"old"_s);
        addFile(u"a.mp3"_s, content);
        clickRow(0);
        setText("Ttitulo", u"typed"_s);
        m_owner.selected.clear();
        m_page->selectionChanged();
        press("edita");
        QCOMPARE(m_owner.events, QStringList(u"error no file is selected"_s));
        QCOMPARE(text("Ttitulo"), u"typed"_s);
        QCOMPARE(readFile(m_owner.rows.at(0)), content);
        m_owner.selected = {0};
        press("edita");
        QCOMPARE(read(m_owner.rows.at(0)).Title, u"typed"_s);
    }

    void thePageTellsHowManyFilesASaveWrites()
    {
        addFile(u"1.mp3"_s);
        addFile(u"2.mp3"_s);
        addFile(u"3.mp3"_s);
        clickRow(0);
        QCOMPARE(label("saveHint"), QString());
        m_owner.selectAll();
        m_page->selectionChanged();
        QCOMPARE(label("saveHint"), u"goes into 3 files"_s);
        QVERIFY(control<QPushButton>("edita")->toolTip().contains(u"all 3 selected files"_s));
        m_owner.selected.clear();
        m_page->selectionChanged();
        QCOMPARE(label("saveHint"), u"no file is selected"_s);
        m_page->reset();
        QCOMPARE(label("saveHint"), QString());
    }

    void theQuestionIsTheButtonsCaptionAndAnythingButYesEndsTheCommand()
    {
        const QByteArray content = tagged(u"x"_s) + id3v1({.title = "x"});
        const QString path = addFile(u"a.mp3"_s, content);
        m_owner.answer = false;
        clickRow(0);
        press("eliminav1");
        press("eliminav2");
        QCOMPARE(m_owner.events, (QStringList{u"ask remove id3v1 tag?"_s, u"ask remove id3v2 tag?"_s}));
        QCOMPARE(readFile(path), content);
        QVERIFY(m_owner.recorded.isEmpty());
    }

    void theQuestionSaysWhatGoes()
    {
        addFile(u"a.mp3"_s, tagged(u"x"_s) + id3v1({.title = "x"}));
        addFile(u"b.mp3"_s);
        m_owner.answer = false;
        clickRow(0);
        press("eliminav2");
        QCOMPARE(m_owner.askedFurther, u"1 file; pictures, lyrics and ratings in it go too"_s);
        m_owner.selectAll();
        press("eliminav2");
        QCOMPARE(m_owner.askedFurther, u"2 files; pictures, lyrics and ratings in them go too"_s);
        press("eliminav1");
        QCOMPARE(m_owner.askedFurther, u"2 files"_s); // that tag holds nothing of the kind
    }

    void whatFailedIsRecorded()
    {
        for (const QString &name : {u"1.mp3"_s, u"2.mp3"_s, u"3.mp3"_s})
            addFile(name, tagged(u"x"_s));
        clickRow(0);
        m_owner.selectAll();
        setText("Ttitulo", u"typed"_s);
        QVERIFY(QFile::remove(m_owner.rows.at(1)));
        QSignalSpy left(m_page.get(), &SingleFilePage::editsLeft);
        press("edita");
        QCOMPARE(m_owner.recorded, QList<history::Kind>{history::Kind::Single});
        QCOMPARE(m_owner.failures->failed.size(), size_t{1});
        QCOMPARE(m_owner.failures->failed.front().first, m_owner.rows.at(1));
        QCOMPARE(m_owner.failures->notTried, 1);
        QCOMPARE(left.size(), 1); // what was typed did not reach all files
        QCOMPARE(left.first().first().value<UnsavedEdits>().record.Title, u"typed"_s);
        press("eliminav2");
        QCOMPARE(m_owner.recorded.last(), history::Kind::RemoveTags);
        QCOMPARE(m_owner.failures->failed.size(), size_t{1});
        QCOMPARE(m_owner.failures->notTried, 0);
    }

    void typedTextsAreToldOnlyIfTheyWereNotSaved()
    {
        addFile(u"1.mp3"_s, tagged(u"x"_s));
        addFile(u"2.mp3"_s, tagged(u"y"_s));
        clickRow(0);
        QSignalSpy left(m_page.get(), &SingleFilePage::editsLeft);
        QVERIFY(!m_page->unsavedEdits());
        setText("Ttitulo", u"typed"_s);
        QCOMPARE(m_page->unsavedEdits()->path, m_owner.rows.at(0));
        press("edita");
        QVERIFY(!m_page->unsavedEdits());
        clickRow(1);
        QCOMPARE(left.size(), 0);
        control<QComboBox>("cestilo")->setCurrentIndex(3);
        m_page->reset();
        QCOMPARE(left.size(), 1);
        QVERIFY(!m_page->unsavedEdits());
    }

    void aTagKindIsRemovedFromEverySelectedFileInListOrder()
    {
        for (const QString &name : {u"1.mp3"_s, u"2.mp3"_s, u"3.mp3"_s})
            addFile(name, tagged(u"x"_s) + id3v1({.title = "x"}));
        clickRow(2);
        m_owner.selected = {2, 0};
        press("eliminav1");
        QCOMPARE(m_owner.events, (QStringList{u"ask remove id3v1 tag?"_s, u"run"_s, u"refresh"_s}));
        QCOMPARE(m_owner.rowCounts, QList<qsizetype>{2});
        QCOMPARE(m_owner.advanced, (QStringList{m_owner.rows.at(0), m_owner.rows.at(2)}));
        QCOMPARE(readFile(m_owner.rows.at(0)), tagged(u"x"_s));
        QCOMPARE(readFile(m_owner.rows.at(2)), tagged(u"x"_s));
        QVERIFY(read(m_owner.rows.at(1)).HasV1);
        QVERIFY(!isEnabled("eliminav1")); // the current row is shown again
        QVERIFY(isEnabled("eliminav2"));
        press("eliminav2");
        QCOMPARE(readFile(m_owner.rows.at(0)), audio());
        QVERIFY(!isEnabled("eliminav2"));
    }

    void aRecordAboveTheLimitIsToldBeforehand()
    {
        addFile(u"1.mp3"_s, id3v2(3, pictureFrame(3, 3 << 20)) + audio());
        clickRow(0);
        m_owner.answer = false;
        m_state.options.historyMegabytes = 3;
        press("eliminav2");
        QCOMPARE(m_owner.askedFurther,
            u"1 file; pictures, lyrics and ratings in it go too\nto be able to take this change back, about 3 MiB have "
            u"to be recorded; the options allow 3 MiB\nall older changes are forgotten then"_s);
        m_state.options.historyMegabytes = 4;
        press("eliminav2");
        QCOMPARE(m_owner.askedFurther, u"1 file; pictures, lyrics and ratings in it go too"_s);
        QCOMPARE(readFile(m_owner.rows.at(0)).size(), id3v2(3, pictureFrame(3, 3 << 20)).size() + audio().size());
    }

    void aReadOnlyFileIsNotStrippedAndTheOthersAre()
    {
        const QByteArray content = tagged(u"x"_s) + id3v1({.title = "x"});
        for (const QString &name : {u"1.mp3"_s, u"2.mp3"_s, u"3.mp3"_s})
            addFile(name, content);
        QVERIFY(QFile::setPermissions(m_owner.rows.at(1), QFile::ReadOwner));
        clickRow(0);
        m_owner.selectAll();
        press("eliminav1");
        QVERIFY(!read(m_owner.rows.at(0)).HasV1);
        QCOMPARE(readFile(m_owner.rows.at(1)), content);
        QVERIFY(!read(m_owner.rows.at(2)).HasV1);
        QCOMPARE(m_owner.events.size(), 3); // no message
    }

    void aReadOnlyFileCanBeTaggedAndStaysReadOnly()
    {
        const QString path = addFile(u"a.mp3"_s);
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        clickRow(0);
        setText("Ttitulo", u"x"_s);
        press("edita");
        QCOMPARE(read(path).Title, u"x"_s);
        QVERIFY(!(QFile::permissions(path) & QFile::WriteOwner));
    }

    void aRefusedFileIsToldOfAndTheOthersAreSaved()
    {
        addFile(u"1.mp3"_s);
        addFile(u"2.mp3"_s, picture());
        addFile(u"3.mp3"_s);
        clickRow(0);
        m_owner.selectAll();
        setText("Ttitulo", u"x"_s);
        press("edita");
        QCOMPARE(toldRefusals(m_page.get()), (QStringList{u"files left as they are: 1"_s,
                                                 u"2.mp3: "_s + m_captions.errorText(ErrorCode::NotMp3Content)}));
        QCOMPARE(read(m_owner.rows.at(0)).Title, u"x"_s);
        QCOMPARE(readFile(m_owner.rows.at(1)), picture());
        QCOMPARE(read(m_owner.rows.at(2)).Title, u"x"_s);
        QCOMPARE(m_owner.events, (QStringList{u"run"_s, u"refresh"_s}));
        press("edita");
        QCOMPARE(toldRefusals(m_page.get()).size(), 2);
        m_owner.selected = {0, 2};
        press("edita");
        QCOMPARE(toldRefusals(m_page.get()), QStringList());
    }

    void noTagIsRemovedFromARefusedFile()
    {
        const QByteArray content = picture() + id3v1({.title = "x"});
        addFile(u"1.mp3"_s, content);
        addFile(u"2.mp3"_s, audio() + id3v1({.title = "x"}));
        clickRow(0);
        m_owner.selectAll();
        press("eliminav1");
        QCOMPARE(toldRefusals(m_page.get()).mid(1),
            QStringList{u"1.mp3: "_s + m_captions.errorText(ErrorCode::NotMp3Content)});
        QCOMPARE(readFile(m_owner.rows.at(0)), content);
        QCOMPARE(readFile(m_owner.rows.at(1)), audio());
    }

    void aLinkThatLeadsToAnotherFileIsNotWrittenThrough()
    {
        const QString secret = writeFile(m_folder->path(), u".profile"_s, "alias ll='ls -l'\n");
        const QString link = m_folder->filePath(u"Band - Song.mp3"_s);
        if (!symbolicLink(secret, link))
            QSKIP("no symbolic links here");
        m_owner.rows << link;
        clickRow(0);
        setText("Ttitulo", u"x"_s);
        press("edita");
        QCOMPARE(toldRefusals(m_page.get()).mid(1),
            QStringList{u"Band - Song.mp3: "_s + m_captions.errorText(ErrorCode::NotMp3Name)});
        QCOMPARE(readFile(secret), "alias ll='ls -l'\n");
    }

    void aTagTooLargeIsShownAsFarAsItWasReadAndNotSaved()
    {
        const QByteArray content = bombFile(3, "COMM", 20, textFrame(3, "TIT2", u"found"_s));
        addFile(u"1.mp3"_s, content);
        addFile(u"2.mp3"_s);
        clickRow(0);
        QCOMPARE(text("Ttitulo"), u"found"_s);
        const QString mark = m_captions.errorText(ErrorCode::TagTooLarge);
        QVERIFY(mark.startsWith(m_captions.text(Text::TagTooLarge)));
        QCOMPARE(label("saveHint"), mark);
        QCOMPARE(control<QPushButton>("edita")->accessibleDescription(), mark);
        setText("Ttitulo", u"x"_s);
        m_owner.selectAll();
        press("edita");
        QCOMPARE(toldRefusals(m_page.get()).mid(1), QStringList{u"1.mp3: "_s + mark});
        QCOMPARE(readFile(m_owner.rows.at(0)), content);
        QCOMPARE(read(m_owner.rows.at(1)).Title, u"x"_s);
        clickRow(1);
        QVERIFY(label("saveHint") != mark);
        QVERIFY(control<QPushButton>("edita")->accessibleDescription() != mark);
    }

    void theFlagOfARefusedSaveDoesNotKeepTagsFromBeingRemoved()
    {
        addFile(u"a.mp3"_s, audio() + id3v1({.title = "x"}));
        clickRow(0);
        m_state.cancelled = true;
        press("eliminav1");
        QCOMPARE(readFile(m_owner.rows.at(0)), audio());
    }
};

QTEST_MAIN(TestSingleFilePageSave)
#include "tst_singlefilepagesave.moc"
