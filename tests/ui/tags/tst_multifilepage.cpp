// SPDX-License-Identifier: GPL-3.0-or-later
// The page that writes chosen fields into many files, through its real controls over real files: which controls are
// enabled when, what a run writes, how it numbers and converts, and what the settings remember.

#include "support/tagfixture.h"
#include "ui/tags/multifilepagefixture.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestMultiFilePage : public MultiFilePageFixture
{
    Q_OBJECT

private:
    static constexpr std::array<std::pair<const char *, const char *>, 6> Fields{
        {{"chmartista", "Tmartista"}, {"chmalbum", "tmalbum"}, {"chma_o", "tma_o"}, {"chmestilo", "cmestilo"},
            {"chmcomentarios", "tmcomentarios"}, {"chmpista", "tmpista"}}};

private Q_SLOTS:
    void init() { start(); }

    void withNoBoxTickedMultipleIsDisabled()
    {
        QVERIFY(!isEnabled("multiple"));
        for (const auto &[check, box] : Fields) {
            QVERIFY2(!control<QCheckBox>(check)->isChecked(), check);
            QVERIFY2(!isEnabled(box), box);
        }
        for (const char *name : {"op4_1", "op4_4"})
            QVERIFY2(!control<QCheckBox>(name)->isChecked(), name);
        for (const char *name : {"ccase_1", "ccase_4"})
            QCOMPARE(control<QComboBox>(name)->currentIndex(), 1);
    }

    void eachFieldsBoxIsEnabledExactlyWhileItsCheckBoxIsTicked()
    {
        for (const auto &[check, box] : Fields) {
            tick(check);
            for (const auto &[otherCheck, otherBox] : Fields)
                QCOMPARE(isEnabled(otherBox), std::string_view(otherBox) == box);
            QVERIFY2(isEnabled("multiple"), check);
            tick(check, false);
            QVERIFY2(!isEnabled(box), box);
            QVERIFY2(!isEnabled("multiple"), check);
        }
    }

    void multipleIsEnabledWhileAnyBoxIsTicked()
    {
        for (const char *name : {"op4_1", "op4_4"}) {
            tick(name);
            QVERIFY2(isEnabled("multiple"), name);
            tick("chmalbum");
            tick(name, false);
            QVERIFY2(isEnabled("multiple"), name);
            tick("chmalbum", false);
            QVERIFY2(!isEnabled("multiple"), name);
        }
    }

    void theListsHoldTheirEntries()
    {
        const auto *genres = control<QComboBox>("cmestilo");
        QCOMPARE(genres->count(), 127);
        QCOMPARE(genres->itemText(0), QString());
        QCOMPARE(genres->itemText(1), u"Blues"_s);
        QCOMPARE(control<QComboBox>("ccase_1")->count(), 3);
        QCOMPARE(control<QComboBox>("ccase_4")->count(), 2);
        QCOMPARE(control<QComboBox>("ccase_4")->itemData(0).toInt(), 10);
        QCOMPARE(control<QComboBox>("ccase_4")->itemData(1).toInt(), 11);
    }

    void tickingChmpistaMovesTheFocusIntoTheTrackBox()
    {
        m_page->resize(m_page->sizeHint());
        m_page->show();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        control("chmpista")->setFocus();
        QTest::keyClick(control("chmpista"), Qt::Key_Space);
        QVERIFY(control<QCheckBox>("chmpista")->isChecked());
        QTRY_VERIFY_WITH_TIMEOUT(control("tmpista")->hasFocus(), 30000);
        control("chmpista")->setFocus();
        QTest::keyClick(control("chmpista"), Qt::Key_Space);
        QVERIFY(!control("tmpista")->hasFocus());
    }

    void onlyDigitsCanBeTypedIntoYearAndTrack()
    {
        m_page->show();
        for (const auto &[check, box] : {std::pair("chma_o", "tma_o"), std::pair("chmpista", "tmpista")}) {
            tick(check);
            QTest::keyClicks(control(box), u"1x9 9a0"_s);
            QCOMPARE(text(box), u"1990"_s);
            QTest::keyClick(control(box), Qt::Key_Backspace);
            QTest::keyClick(control(box), Qt::Key_Return);
            QCOMPARE(text(box), u"199"_s);
        }
        QCOMPARE(m_owner.events, QStringList());
    }

    void fiveFilesWithAnEmptyFirstNumberGetTracks1To5InListOrder()
    {
        addFiles(5);
        tick("chmpista");
        press("multiple");
        QCOMPARE(tracks(), QStringList({u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s}));
    }

    void with7AsTheFirstNumberTheyGet7To11()
    {
        addFiles(5);
        tick("chmpista");
        setText("tmpista", u"7"_s);
        press("multiple");
        QCOMPARE(tracks(), QStringList({u"7"_s, u"8"_s, u"9"_s, u"10"_s, u"11"_s}));
    }

    void withOnlyChmalbumTickedEachFileKeepsItsOtherFields()
    {
        addFiles(3);
        QList<TagRecord> expected;
        for (int row = 0; row < 3; ++row) {
            expected << read(row);
            expected.last().Album = u"Björk"_s;
        }
        tick("chmalbum");
        setText("tmalbum", u"Björk"_s);
        setText("Tmartista", u"not ticked"_s);
        press("multiple");
        for (int row = 0; row < 3; ++row)
            QVERIFY(read(row) == expected.at(row));
    }

    void everyTickedFieldIsWritten()
    {
        addFiles(2);
        for (const auto &[check, box] : Fields)
            tick(check);
        setText("Tmartista", u"a"_s);
        setText("tmalbum", u"b"_s);
        setText("tma_o", u"2001"_s);
        control<QComboBox>("cmestilo")->setCurrentText(u"Rock"_s);
        setText("tmcomentarios", u"c"_s);
        press("multiple");
        const TagRecord record = read(1);
        QCOMPARE(record.Title, u"title 2"_s);
        QCOMPARE(record.Artist, u"a"_s);
        QCOMPARE(record.Album, u"b"_s);
        QCOMPARE(record.Year, u"2001"_s);
        QCOMPARE(record.Genre, u"Rock"_s);
        QCOMPARE(record.Comment, u"c"_s);
        QCOMPARE(record.Track, u"2"_s);
    }

    void tracksAbove99AreNotWritten()
    {
        addFiles(3);
        tick("chmpista");
        setText("tmpista", u"98"_s);
        press("multiple");
        QCOMPARE(tracks(), QStringList({u"98"_s, u"99"_s, QString()}));
    }

    void aConversionAloneWorksOnTheTextsOfEachFile()
    {
        addFiles(2);
        setText("Tmartista", u"shown"_s);
        tick("op4_1");
        choose("ccase_1", 0);
        tick("op4_4");
        choose("ccase_4", 0);
        press("multiple");
        QCOMPARE(read(1).Title, u"TITLE_2"_s);
        QCOMPARE(read(1).Artist, u"ARTIST_2"_s);
        QCOMPARE(read(1).Album, u"ALBUM_2"_s);
        QCOMPARE(read(1).Comment, u"COMMENT_2"_s);
        QCOMPARE(text("Tmartista"), u"SHOWN"_s);
    }

    void anAppliedFieldTakesTheBoxsConvertedText()
    {
        addFiles(2);
        tick("chmartista");
        setText("Tmartista", u"the artist"_s);
        tick("op4_1");
        choose("ccase_1", 2);
        press("multiple");
        QCOMPARE(read(0).Artist, u"The Artist"_s);
        QCOMPARE(read(1).Artist, u"The Artist"_s);
        QCOMPARE(text("Tmartista"), u"The Artist"_s);
    }

    void onlySelectedFilesAreWrittenAndCounted()
    {
        addFiles(3);
        m_owner.selected = {0, 2};
        m_page->selectionChanged();
        tick("chmpista");
        press("multiple");
        QCOMPARE(tracks(), QStringList({u"1"_s, u"88"_s, u"2"_s}));
        QCOMPARE(m_owner.rowCounts, QList<qsizetype>{2});
        QCOMPARE(m_owner.advanced, QStringList({m_owner.rows.at(0), m_owner.rows.at(2)}));
    }

    void afterARunTheListIsFilledAgainAndTheCurrentRowShownAgain()
    {
        addFiles(1);
        QSignalSpy finished(m_page.get(), &MultiFilePage::finished);
        m_owner.onRefresh = [&] { QCOMPARE(finished.size(), 0); };
        tick("chmalbum");
        press("multiple");
        QCOMPARE(m_owner.events, QStringList({u"run"_s, u"refresh"_s}));
        QCOMPARE(finished.size(), 1);
    }

    void aRefusalForWantOfSpaceIsShownOnce()
    {
        addFiles(3);
        m_state.freeMegabytes = 1;
        tick("chmalbum");
        press("multiple");
        QCOMPARE(m_owner.events, QStringList({u"run"_s, u"error low disk space, operation cancelled"_s, u"refresh"_s}));
        QCOMPARE(m_owner.advanced.size(), 1);
        QCOMPARE(read(0).Album, u"album 1"_s);
    }

    void aRefusedFileIsToldOfAndGetsNoNumber()
    {
        addFiles(3);
        writeFile(m_folder->path(), u"2.mp3"_s, picture());
        tick("chmpista");
        press("multiple");
        QCOMPARE(toldRefusals(m_page.get()), (QStringList{u"files left as they are: 1"_s,
                                                 u"2.mp3: "_s + m_captions.errorText(ErrorCode::NotMp3Content)}));
        QCOMPARE(tracks(), (QStringList{u"1"_s, QString(), u"2"_s}));
        QCOMPARE(readFile(m_owner.rows.at(1)), picture());
    }

    void whileOtherWorkIsUnderWayNothingHappens()
    {
        addFiles(1);
        m_owner.isBusy = true;
        QSignalSpy finished(m_page.get(), &MultiFilePage::finished);
        tick("chmalbum");
        press("multiple");
        QCOMPARE(m_owner.events, QStringList());
        QCOMPARE(finished.size(), 0);
        QCOMPARE(read(0).Album, u"album 1"_s);
    }

    void theConversionsComeFromTheSettingsAndGoBackThere()
    {
        SessionChoices choices;
        choices.conversions[MultiCasePair] = {true, 2};
        choices.conversions[MultiReplacePair] = {true, 0};
        m_page->showChoices(choices);
        QVERIFY(control<QCheckBox>("op4_1")->isChecked());
        QCOMPARE(control<QComboBox>("ccase_1")->currentIndex(), 2);
        QVERIFY(control<QCheckBox>("op4_4")->isChecked());
        QCOMPARE(control<QComboBox>("ccase_4")->currentIndex(), 0);
        QVERIFY(isEnabled("multiple"));
        tick("op4_1", false);
        choose("ccase_4", 1);
        SessionChoices stored;
        stored.conversions[RenameCasePair] = {true, 1};
        m_page->storeChoices(stored);
        QVERIFY(!stored.conversions[MultiCasePair].on);
        QVERIFY((stored.conversions[MultiReplacePair] == ConversionChoice{true, 1}));
        QVERIFY((stored.conversions[RenameCasePair] == ConversionChoice{true, 1}));
    }

    void aYearThatNoTagCanHoldIsRefusedAtItsBox()
    {
        addFiles(2);
        m_state.options.onlyEditedFields = true;
        m_owner.selectAll();
        const QByteArray before = readFile(m_owner.rows.front());
        tick("chma_o");
        setText("tma_o", u"99"_s);
        control<QPushButton>("multiple")->click();
        const QString reason = u"the year “99” is not saved: a year has four digits"_s;
        QCOMPARE(control<QLabel>("multiHint")->text(), reason);
        QCOMPARE(control<QLineEdit>("tma_o")->toolTip(), reason);
        QCOMPARE(readFile(m_owner.rows.front()), before);
        setText("tma_o", u"1999"_s);
        QCOMPARE(control<QLabel>("multiHint")->text(), u"goes into 2 files"_s);
        QVERIFY(control<QLabel>("multiHint")->font().bold());
        control<QPushButton>("multiple")->click();
        QCOMPARE(readRecord(m_owner.rows.front()).Year, u"1999"_s);
    }

    void theHintTellsHowManyFilesAreWritten()
    {
        const auto *hint = control<QLabel>("multiHint");
        QCOMPARE(hint->text(), u"nothing is ticked"_s);
        tick("chmalbum");
        QCOMPARE(hint->text(), u"no file is selected"_s);
        addFiles(2);
        m_page->selectionChanged();
        QCOMPARE(hint->text(), u"goes into 2 files"_s);
        m_owner.click(0);
        m_page->selectionChanged();
        QCOMPARE(hint->text(), QString());
    }

    void theHintSaysWhatTheModeLosesOrDoesNotShow()
    {
        const auto *hint = control<QLabel>("multiHint");
        const QString cut = u"lost in ID3v1: letters beyond 30 (28 in a comment beside a track)"_s;
        addFiles(2);
        m_owner.rows << writeFile(m_folder->path(), u"3.mp3"_s, audio()); // with ID3v1 after the first save
        m_state.tagSaveMode = 4;
        tick("chmcomentarios");
        m_page->show();
        setText("tmcomentarios", QString(29, u'x'));
        QTRY_COMPARE(hint->text(), u"goes into 2 files; "_s + cut);
        m_owner.click(2);
        m_page->selectionChanged();
        QTRY_COMPARE(hint->text(), QString()); // this one has no track
        tick("chmpista");
        QTRY_COMPARE(hint->text(), cut);
        tick("chmpista", false);
        tick("chmcomentarios", false);
        QTRY_COMPARE(hint->text(), u"nothing is ticked"_s);
        tick("chmcomentarios");
        m_state.tagSaveMode = 1;
        m_page->selectionChanged();
        QTRY_COMPARE(hint->text(), QString());
        m_owner.selectAll();
        m_page->selectionChanged();
        QTRY_COMPARE(hint->text(), u"goes into 3 files; ID3v1 is written; the list shows ID3v2"_s);
        press("multiple");
        QCOMPARE(hint->text(), u"goes into 3 files; ID3v1 is written; the list shows ID3v2"_s);
    }
};

QTEST_MAIN(TestMultiFilePage)
#include "tst_multifilepage.moc"
