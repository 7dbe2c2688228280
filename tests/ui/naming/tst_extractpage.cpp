// SPDX-License-Identifier: GPL-3.0-or-later
// The page that fills tags from file names, through its real controls over real files: the labels, what a run writes
// and leaves alone, the patterns that it remembers, and its preview.

#include "ui/naming/extractpage.h"
#include "ui/naming/namingfixture.h"
#include "ui/naming/preview.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QGroupBox>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestExtractPage : public NamingFixture
{
    Q_OBJECT

private:
    std::unique_ptr<ExtractPage> m_page;

    QComboBox *pattern() const { return control<QComboBox>(m_page.get(), u"tpatron"_s); }
    void extract(const QString &text) const
    {
        pattern()->setEditText(text);
        control<QPushButton>(m_page.get(), u"extrae"_s)->click();
    }
    QPushButton *label(int number) const { return control<QPushButton>(m_page.get(), u"lt_%1"_s.arg(number)); }
    QStringList offered() const
    {
        QStringList patterns;
        for (int i = 0; i < pattern()->count(); ++i)
            patterns << pattern()->itemText(i);
        return patterns;
    }

private Q_SLOTS:
    void init()
    {
        m_page.reset();
        startAfresh();
        m_page = std::make_unique<ExtractPage>(context());
    }

    void eachLabelAppendsItsPlaceholderToTheEndOfThePattern_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("placeholder");
        QTest::newRow("artist") << 9 << u"%1"_s;
        QTest::newRow("album") << 10 << u"%2"_s;
        QTest::newRow("track") << 11 << u"%4"_s;
        QTest::newRow("year") << 12 << u"%5"_s;
        QTest::newRow("skipped") << 13 << u"%0"_s;
        QTest::newRow("genre") << 14 << u"%6"_s;
        QTest::newRow("comment") << 15 << u"%7"_s;
        QTest::newRow("title") << 17 << u"%3"_s;
    }
    void eachLabelAppendsItsPlaceholderToTheEndOfThePattern()
    {
        QFETCH(int, number);
        QFETCH(QString, placeholder);
        pattern()->setEditText(u"a - "_s);
        pattern()->lineEdit()->setCursorPosition(0);
        QTest::mouseClick(label(number), Qt::LeftButton);
        QCOMPARE(pattern()->currentText(), u"a - "_s + placeholder);
    }

    void theHintSaysWhatTheModeLosesOrDoesNotShow()
    {
        const auto *hint = control<QLabel>(m_page.get(), u"extractHint"_s);
        const QString loses = u"lost in ID3v1: "_s;
        const QString letters = u"characters outside Latin-1 (“???” or similar letters)"_s;
        addFile(u"Кино - Ночь.mp3"_s);
        m_state.tagSaveMode = 4;
        pattern()->setEditText(u"%1 - %3"_s);
        m_page->selectionChanged();
        QTest::qWait(300);
        QCOMPARE(hint->text(), QString()); // nobody sees the page
        m_page->show();
        QTRY_COMPARE(hint->text(), loses + letters);
        pattern()->setEditText(u"%1_%3"_s); // fits no name, so nothing is saved
        QTRY_COMPARE(hint->text(), QString());
        m_state.tagSaveMode = 1;
        addFile(u"A - B.mp3"_s, {.title = u"x"_s});
        pattern()->setEditText(u"%1 - %3"_s);
        m_page->selectionChanged();
        QTRY_COMPARE(hint->text(), u"goes into 2 files; ID3v1 is written; the list shows ID3v2"_s);
    }

    void theLabelsNameTheirFieldsInTheUsersLanguage()
    {
        speak(u"spanish"_s);
        m_page->applyCaptions();
        QStringList texts;
        for (const int number : {9, 10, 11, 12, 13, 14, 15, 17})
            texts << label(number)->text();
        QCOMPARE(texts, QStringList({u"%1 - artista"_s, u"%2 - album"_s, u"%4 - pista"_s, u"%5 - año"_s,
                            u"%0 - obviar"_s, u"%6 - estilo"_s, u"%7 - comentarios"_s, u"%3 - título"_s}));
    }

    void theLabelsAreButtonsForKeyboardAndAssistiveTools()
    {
        m_page->show();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        QVERIFY(label(9)->focusPolicy() & Qt::TabFocus);
        pattern()->setFocus();
        QTest::mouseClick(label(9), Qt::LeftButton);
        QVERIFY(!label(9)->hasFocus());
        label(11)->setFocus();
        QTest::keyClick(label(11), Qt::Key_Space);
        QTest::keyClick(label(11), Qt::Key_Return);
        QCOMPARE(pattern()->currentText(), u"%1%4%4"_s);
        QAccessibleInterface *face = QAccessible::queryAccessibleInterface(label(9));
        QVERIFY(face);
        QCOMPARE(face->role(), QAccessible::Button);
        QCOMPARE(face->text(QAccessible::Name), u"%1 - artist"_s);
    }

    void namesAreTakenApart_data()
    {
        QTest::addColumn<QString>("pattern");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("expected"); // track, artist, title, album; empty when the file is skipped
        QTest::newRow("three fields") << u"%4 - %1 - %3"_s << u"07 - Artist - Song"_s
                                      << QStringList{u"7"_s, u"Artist"_s, u"Song"_s, QString()};
        QTest::newRow("separator missing") << u"%4. %3"_s << u"07 Song"_s << QStringList();
        QTest::newRow("blanks missing") << u"%1 - %3"_s << u"Artist-Song"_s << QStringList();
        QTest::newRow("skipped part") << u"%0 - %3"_s << u"CD1 - Song"_s
                                      << QStringList{QString(), QString(), u"Song"_s, QString()};
        QTest::newRow("one character of the end")
            << u"%1 (%2)"_s << u"Band (Live) (Remaster)"_s << QStringList{QString(), u"Band"_s, QString(), u"Live"_s};
        QTest::newRow("case counts") << u"%1 Feat %3"_s << u"A feat B"_s << QStringList();
        QTest::newRow("first separator") << u"%1 - %3"_s << u"A - B - C"_s
                                         << QStringList{QString(), u"A"_s, u"B - C"_s, QString()};
        QTest::newRow("accents and Japanese")
            << u"%1 - %3"_s << u"Björk - 人間"_s << QStringList{QString(), u"Björk"_s, u"人間"_s, QString()};
    }
    void namesAreTakenApart()
    {
        QFETCH(QString, pattern);
        QFETCH(QString, name);
        QFETCH(QStringList, expected);
        const QString path = addFile(name + u".mp3"_s);
        const QByteArray before = readFile(path);
        extract(pattern);
        if (expected.isEmpty()) {
            QCOMPARE(readFile(path), before);
            return;
        }
        const TagRecord record = read(path);
        QCOMPARE(QStringList({record.Track, record.Artist, record.Title, record.Album}), expected);
    }

    void fieldsThatThePatternLacksKeepTheirValues()
    {
        const QString path =
            addFile(u"Song.mp3"_s, Fields{.title = u"old"_s, .album = u"Debut"_s, .comment = u"kept"_s});
        extract(u"%3"_s);
        QCOMPARE(read(path).Title, u"Song"_s);
        QCOMPARE(read(path).Album, u"Debut"_s);
        QCOMPARE(read(path).Comment, u"kept"_s);
    }

    void aFileThatDoesNotFitIsPassedOverAndTheOthersAreWritten()
    {
        const QString odd = addFile(u"odd.mp3"_s);
        const QString fitting = addFile(u"A - B.mp3"_s);
        const QByteArray before = readFile(odd);
        extract(u"%1 - %3"_s);
        QCOMPARE(readFile(odd), before);
        QCOMPARE(read(fitting).Title, u"B"_s);
        QCOMPARE(m_owner.events, QStringList({u"run"_s, u"refresh"_s}));
        QCOMPARE(m_owner.rowCounts, QList<qsizetype>{2});
    }

    void afterARunTheListIsFilledAgain()
    {
        addFile(u"A - B.mp3"_s);
        QSignalSpy finished(m_page.get(), &ExtractPage::finished);
        extract(u"%1 - %3"_s);
        QCOMPARE(m_owner.events, QStringList({u"run"_s, u"refresh"_s}));
        QCOMPARE(finished.size(), 1);
    }

    void theOutcomeIsToldBesideTheButton()
    {
        addFile(u"A - B.mp3"_s);
        addFile(u"odd.mp3"_s);
        QFile::remove(addFile(u"C - D.mp3"_s));
        addFile(u"E - F.mp3"_s);
        extract(u"%1 - %3"_s);
        QCOMPARE(control<QLabel>(m_page.get(), u"extractHint"_s)->text(), u"saved: 2; left as they were: 2"_s);
        m_state.freeMegabytes = 1;
        extract(u"%1 - %3"_s);
        QCOMPARE(control<QLabel>(m_page.get(), u"extractHint"_s)->text(), u"saved: 0; left as they were: 4"_s);
    }

    void aRefusalForWantOfSpaceIsShownOnceAndEndsTheRun()
    {
        addFile(u"A - B.mp3"_s);
        addFile(u"C - D.mp3"_s);
        m_state.freeMegabytes = 1;
        extract(u"%1 - %3"_s);
        QCOMPARE(m_owner.events, QStringList({u"run"_s, u"error low disk space, operation cancelled"_s, u"refresh"_s}));
        QCOMPARE(m_owner.advanced.size(), 1);
    }

    void usedPatternsAreOfferedTheLastOneFirst()
    {
        QCOMPARE(offered(), QStringList());
        extract(u"%1 - %3"_s);
        extract(u"%4 %3"_s);
        extract(u"%1 - %3"_s);
        QCOMPARE(offered(), QStringList({u"%1 - %3"_s, u"%4 %3"_s}));
        QCOMPARE(pattern()->currentText(), u"%1 - %3"_s);
    }

    void usedPatternsAreOfferedAtTheNextStartButTheBoxIsEmpty()
    {
        extract(u"%4 %3"_s);
        m_page.reset();
        QVERIFY(m_settings->save());
        reopenSettings();
        m_page = std::make_unique<ExtractPage>(context());
        QCOMPARE(offered(), QStringList{u"%4 %3"_s});
        QCOMPARE(pattern()->currentText(), QString());
    }

    void thePreviewShowsTheExtractionAndWritesNothing()
    {
        const QString path = addFile(u"A - B.mp3"_s);
        const QByteArray before = readFile(path);
        pattern()->setEditText(u"%1 - %3"_s);
        control<QPushButton>(m_page.get(), u"extractPreview"_s)->click();
        auto *window = m_page->findChild<preview *>();
        QVERIFY(window);
        QVERIFY(window->isVisible());
        QCOMPARE(m_state.previewMode, PreviewMode::Extrae);
        QCOMPARE(control<QAbstractItemView>(window, u"ListView1"_s)->model()->index(0, 3).data().toString(), u"A"_s);
        window->close();
        QCOMPARE(readFile(path), before);
        QCOMPARE(m_owner.events, QStringList{u"run"_s});
    }

    void aRefusedFileIsToldOf()
    {
        addFile(u"A - B.mp3"_s);
        const QString other = at(u"C - D.mp3"_s);
        writeFile(musicFolder(), u"C - D.mp3"_s, picture());
        m_owner.selected.insert(m_owner.rows.size());
        m_owner.rows << other;
        pattern()->setEditText(u"%1 - %3"_s);
        control<QPushButton>(m_page.get(), u"extrae"_s)->click();
        QCOMPARE(toldRefusals(m_page.get()), (QStringList{u"files left as they are: 1"_s,
                                                 u"C - D.mp3: "_s + m_captions.errorText(ErrorCode::NotMp3Content)}));
        QCOMPARE(read(m_owner.rows.at(0)).Artist, u"A"_s);
        QCOMPARE(readFile(other), picture());
    }

    void captionsInThreeLanguages_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::newRow("english") << u"english"_s << QStringList{u"&save id3"_s, u"&preview"_s, u"variables"_s};
        QTest::newRow("spanish") << u"spanish"_s << QStringList{u"g&uardar id3"_s, u"&vista previa"_s, u"variables"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"&sauvegarder id3"_s, u"&prévisualiser"_s, u"variables"_s};
    }
    void captionsInThreeLanguages()
    {
        QFETCH(QString, language);
        speak(language);
        m_page->applyCaptions();
        const QStringList texts{control<QPushButton>(m_page.get(), u"extrae"_s)->text(),
            control<QPushButton>(m_page.get(), u"extractPreview"_s)->text(), m_page->findChild<QGroupBox *>()->title()};
        QTEST(texts, "texts");
        bool isBuddied = false;
        for (const QLabel *text : m_page->findChildren<QLabel *>())
            isBuddied =
                isBuddied || (text->buddy() == pattern() && text->text() == m_captions.text(Caption::FileNameMask));
        QVERIFY(isBuddied);
    }
};

QTEST_MAIN(TestExtractPage)
#include "tst_extractpage.moc"
