// SPDX-License-Identifier: GPL-3.0-or-later
// The page that edits one file's tag, through its real controls over real files: what it shows of the current row, and
// stepping through the list.

#include "support/gatedfilesystem.h"
#include "ui/tags/singlefilepagefixture.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestSingleFilePage : public SingleFilePageFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { start(); }

    void atFirstNothingIsShownAndNothingCanBeSaved()
    {
        for (const char *name : {"edita", "nfile", "pfile", "eliminav1", "eliminav2"})
            QVERIFY2(!isEnabled(name), name);
        for (const char *name : {"Ttitulo", "tartista", "talbum", "ta_o", "Tpista", "tcomentarios"})
            QCOMPARE(text(name), QString());
        QVERIFY(!control<QCheckBox>("op4_2")->isChecked());
        QCOMPARE(control<QComboBox>("ccase_2")->currentIndex(), 1);
    }

    void theListsHoldTheirEntries()
    {
        const auto *genres = control<QComboBox>("cestilo");
        QCOMPARE(genres->count(), 127);
        QCOMPARE(genres->itemText(0), QString());
        QCOMPARE(genres->itemText(1), u"Blues"_s);
        QCOMPARE(genres->itemText(126), u"DanceHall"_s);
        QVERIFY(!genres->isEditable());
        const auto *cases = control<QComboBox>("ccase_2");
        QCOMPARE(cases->count(), 3);
        for (int entry = 0; entry < 3; ++entry)
            QCOMPARE(cases->itemData(entry).toInt(), 10 + entry);
    }

    void theCurrentRowsTagIsShown()
    {
        addFile(u"a.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"Human Behaviour"_s) + textFrame(3, "TPE1", u"Björk"_s) +
                                         textFrame(3, "TALB", u"Debut"_s) + textFrame(3, "TYER", u"1993"_s) +
                                         textFrame(3, "TRCK", u"1"_s) + textFrame(3, "TCON", u"(52)"_s) +
                                         commentFrame(3, u"from CD"_s)) +
                                audio());
        clickRow(0);
        QCOMPARE(text("Ttitulo"), u"Human Behaviour"_s);
        QCOMPARE(text("tartista"), u"Björk"_s);
        QCOMPARE(text("talbum"), u"Debut"_s);
        QCOMPARE(text("ta_o"), u"1993"_s);
        QCOMPARE(text("Tpista"), u"1"_s);
        QCOMPARE(text("tcomentarios"), u"from CD"_s);
        QCOMPARE(control<QComboBox>("cestilo")->currentText(), u"Electronic"_s);
        for (const char *name : {"edita", "nfile", "pfile"})
            QVERIFY2(isEnabled(name), name);
        QVERIFY(!isEnabled("eliminav1"));
        QVERIFY(isEnabled("eliminav2"));
        QCOMPARE(label("fileName"), u"a.mp3"_s);
    }

    void eachRemoveButtonIsEnabledExactlyWhenTheFileHasThatTag_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("v1");
        QTest::addColumn<bool>("v2");
        QTest::newRow("none") << audio() << false << false;
        QTest::newRow("id3v1") << audio() + id3v1({.title = "x"}) << true << false;
        QTest::newRow("id3v2") << tagged(u"x"_s) << false << true;
        QTest::newRow("both") << tagged(u"x"_s) + id3v1({.title = "x"}) << true << true;
    }
    void eachRemoveButtonIsEnabledExactlyWhenTheFileHasThatTag()
    {
        QFETCH(QByteArray, content);
        addFile(u"a.mp3"_s, content);
        clickRow(0);
        QTEST(isEnabled("eliminav1"), "v1");
        QTEST(isEnabled("eliminav2"), "v2");
    }

    void theStreamInformationIsShown()
    {
        const QByteArray content = audio(100);
        addFile(u"a.mp3"_s, content);
        clickRow(0);
        QTRY_COMPARE(label("mode"), u"128 kbps"_s);
        QCOMPARE(label("time"), u"2.612 s"_s);
        QCOMPARE(label("frequency"), u"44100 hz"_s);
        QCOMPARE(label("size"), u"%1 bytes"_s.arg(content.size()));
    }

    void aCutStreamIsToldInTheLanguageOfTheWindow()
    {
        addFile(u"sound.mp3"_s, audio(20));
        addFile(u"cut.mp3"_s, audio(20).chopped(100));
        addFile(u"hole.mp3"_s, audio(20) + QByteArray(1000, '\1') + audio(20));
        m_page->resize(900, 300);
        m_page->show();
        const auto *fault = control<QLabel>("fault");
        clickRow(0);
        QTRY_COMPARE(label("mode"), u"128 kbps"_s);
        QVERIFY(!fault->isVisible());
        const int height = m_page->sizeHint().height();
        clickRow(1);
        QTRY_VERIFY(fault->isVisible());
        QCOMPARE(fault->text(), u"the audio is cut off"_s);
        QCOMPARE(fault->toolTip(), u"the values hold for what there is"_s);
        QCOMPARE(label("mode"), u"128 kbps"_s);
        QCOMPARE(m_page->sizeHint().height(), height);
        for (const auto &[language, text] :
            {std::pair(u"spanish"_s, u"el audio está cortado"_s), std::pair(u"french"_s, u"l'audio est coupé"_s)}) {
            speak(language);
            m_page->applyCaptions();
            QCOMPARE(fault->text(), text);
        }
        clickRow(2);
        QTRY_COMPARE(fault->text(), u"l'audio est endommagé"_s);
        m_page->reset();
        QVERIFY(!fault->isVisible());
    }

    void aSlowStreamComesLaterAndNeverBesideAnotherFilesTag()
    {
        GatedFileSystem fileSystem;
        addFile(u"1.mp3"_s, tagged(u"one"_s) + audio(1));
        addFile(u"2.mp3"_s, tagged(u"two"_s) + audio(2));
        const QString second = u"%1 bytes"_s.arg(QFile(m_owner.rows.at(1)).size());
        m_page.reset();
        m_page = std::make_unique<SingleFilePage>(context(fileSystem));
        clickRow(0);
        QCOMPARE(text("Ttitulo"), u"one"_s);
        QCOMPARE(label("size"), QString());
        clickRow(1);
        fileSystem.letThrough(2);
        QTRY_COMPARE(label("size"), second);
        QCOMPARE(text("Ttitulo"), u"two"_s);
    }

    void aGenreThatIsNotInTheListShowsTheEmptyEntry()
    {
        addFile(u"1.mp3"_s, id3v2(3, textFrame(3, "TCON", u"Ska"_s)) + audio());
        addFile(u"2.mp3"_s, id3v2(3, textFrame(3, "TCON", u"Chamber Ska"_s)) + audio());
        clickRow(0);
        QCOMPARE(control<QComboBox>("cestilo")->currentText(), u"Ska"_s);
        clickRow(1);
        QCOMPARE(control<QComboBox>("cestilo")->currentIndex(), 0);
    }

    void aGenreNumberAboveTheTableStillShowsTheRest()
    {
        addFile(u"a.mp3"_s, audio() + id3v1({.title = "x", .genre = 200}));
        clickRow(0);
        QCOMPARE(text("Ttitulo"), u"x"_s);
        QCOMPARE(control<QComboBox>("cestilo")->currentIndex(), 0);
        QVERIFY(isEnabled("eliminav1"));
    }

    void afterAListingThePageIsEmptyAgain()
    {
        addFile(u"a.mp3"_s, tagged(u"x"_s, u"y"_s));
        clickRow(0);
        control<QComboBox>("cestilo")->setCurrentIndex(5);
        m_page->reset();
        for (const char *name : {"edita", "nfile", "pfile", "eliminav1", "eliminav2"})
            QVERIFY2(!isEnabled(name), name);
        for (const char *name : {"Ttitulo", "tartista", "talbum", "ta_o", "Tpista", "tcomentarios"})
            QCOMPARE(text(name), QString());
        QCOMPARE(control<QComboBox>("cestilo")->currentIndex(), 0);
        for (const char *name : {"mode", "time", "frequency", "size", "fileName"})
            QCOMPARE(label(name), QString());
    }

    void withoutACurrentRowThePageIsEmpty()
    {
        addFile(u"a.mp3"_s, tagged(u"x"_s));
        clickRow(0);
        m_owner.current = -1;
        m_page->ShowCurrent();
        QVERIFY(!isEnabled("edita"));
        QCOMPARE(text("Ttitulo"), QString());
    }

    void fileNamesAreShownAsTheyAre()
    {
        addFile(u"R&B &lt;more&gt;.mp3"_s);
        clickRow(0);
        m_page->resize(900, 300);
        m_page->show();
        QCOMPARE(label("fileName"), u"R&B &lt;more&gt;.mp3"_s);
        QCOMPARE(control<QLabel>("fileName")->textFormat(), Qt::PlainText);
        QVERIFY(control<QLabel>("fileName")->toolTip().contains(u"R&B &lt;more"_s));
    }

    void nextAndPreviousShowTheNeighbourAndSaveNothing()
    {
        const QByteArray one = tagged(u"one"_s);
        addFile(u"1.mp3"_s, one);
        addFile(u"2.mp3"_s, tagged(u"two"_s));
        clickRow(0);
        setText("Ttitulo", u"changed"_s);
        press("nfile");
        QCOMPARE(text("Ttitulo"), u"two"_s);
        QCOMPARE(m_owner.selected, QSet<qsizetype>{1});
        press("pfile");
        QCOMPARE(text("Ttitulo"), u"one"_s);
        QCOMPARE(m_owner.selected, QSet<qsizetype>{0});
        QCOMPARE(readFile(m_owner.rows.at(0)), one);
        QCOMPARE(m_owner.events, QStringList());
    }

    void nfileOnTheLastRowAndPfileOnTheFirstDoNothingButMoveTheFocus()
    {
        addFile(u"1.mp3"_s, tagged(u"one"_s));
        addFile(u"2.mp3"_s, tagged(u"two"_s));
        m_page->show();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
        for (const auto &[row, button] : {std::pair(1, "nfile"), std::pair(0, "pfile")}) {
            clickRow(row);
            control<QWidget>("Ttitulo")->setFocus();
            setText("Ttitulo", u"not saved"_s);
            press(button);
            QCOMPARE(text("Ttitulo"), u"not saved"_s);
            QCOMPARE(m_owner.current, row);
            QVERIFY(control<QWidget>("tartista")->hasFocus());
        }
    }
};

QTEST_MAIN(TestSingleFilePage)
#include "tst_singlefilepage.moc"
