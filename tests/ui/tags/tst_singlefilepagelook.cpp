// SPDX-License-Identifier: GPL-3.0-or-later
// The page used without a mouse and in three languages: captions, the order of Tab, Alt keys, names for assistive
// tools, and that nothing is cut at the narrowest usual width.

#include "ui/tags/pagefixture.h"
#include "ui/tags/singlefilepage.h"

#include <QAbstractButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestSingleFilePageLook : public PageFixture
{
    Q_OBJECT

private:
    static constexpr int NarrowWidth = 620; ///< what a window of 700 pixels leaves for the page

    std::unique_ptr<SingleFilePage> m_page;

    QScrollArea *scroller() const { return m_page->findChild<QScrollArea *>(); }
    QWidget *control(const QString &name) const { return PageFixture::control(m_page.get(), name); }
    QString caption(const char *name) const
    {
        return qobject_cast<QAbstractButton *>(control(QLatin1String(name)))->text();
    }
    QString labelOf(const char *field) const
    {
        for (const QLabel *label : m_page->findChildren<QLabel *>()) {
            if (label->buddy() == control(QLatin1String(field)))
                return label->text();
        }
        return u"no label"_s;
    }
    QString title(int row) const { return read(m_owner.rows.at(row)).Title; }
    void speak(const QString &language)
    {
        PageFixture::speak(language);
        m_page->applyCaptions();
    }
    void showActive()
    {
        m_page->resize(900, m_page->sizeHint().height());
        m_page->show();
        QVERIFY(QTest::qWaitForWindowActive(m_page.get()));
    }

private Q_SLOTS:
    void init()
    {
        m_page.reset();
        startAfresh();
        for (const QString &name : {u"1.mp3"_s, u"2.mp3"_s}) {
            m_owner.rows << writeFile(
                m_folder->path(), name, id3v2(3, textFrame(3, "TIT2", name)) + audio(300) + id3v1({.title = "x"}));
        }
        m_page = std::make_unique<SingleFilePage>(context());
        m_owner.click(0);
        m_page->ShowCurrent();
    }

    void captionsInThreeLanguagesAtRunTime_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QStringList>("fields");
        QTest::addColumn<QStringList>("cases");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"&previous"_s, u"&next"_s, u"&save id3"_s, u"remove id3v1 tag"_s,
                                        u"remove id3v2 tag"_s, u"case"_s}
                                 << QStringList{u"title"_s, u"artist"_s, u"album"_s, u"year"_s, u"track"_s,
                                        u"comment"_s, u"genre"_s}
                                 << QStringList{u"UPPER"_s, u"lower"_s, u"Capitalize First Letter"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"&anterior"_s, u"&siguiente"_s, u"g&uardar id3"_s,
                                        u"elimina id3v1 tag"_s, u"elimina id3v2 tag"_s, u"caracteres"_s}
                                 << QStringList{u"título"_s, u"artista"_s, u"album"_s, u"año"_s, u"pista"_s,
                                        u"comentarios"_s, u"estilo"_s}
                                 << QStringList{u"MAYÚSCULAS"_s, u"minúsculas"_s, u"Capitaliza Primera Letra"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"&précédent"_s, u"s&uivant"_s, u"&sauvegarder id3"_s,
                                       u"supprimer tag id3v1"_s, u"supprimer tag id3v2"_s, u"caractères"_s}
                                << QStringList{u"titre"_s, u"artiste"_s, u"album"_s, u"années"_s, u"piste"_s,
                                       u"commentaire"_s, u"genre"_s}
                                << QStringList{u"majuscule"_s, u"minuscule"_s, u"Première Lettre En Majuscule"_s};
    }
    void captionsInThreeLanguagesAtRunTime()
    {
        QFETCH(QString, language);
        speak(language);
        QStringList buttons;
        for (const char *name : {"pfile", "nfile", "edita", "eliminav1", "eliminav2", "op4_2"})
            buttons << caption(name);
        QTEST(buttons, "buttons");
        QStringList fields;
        QStringList names;
        for (const char *name : {"Ttitulo", "tartista", "talbum", "ta_o", "Tpista", "tcomentarios", "cestilo"}) {
            fields << labelOf(name);
            names << control(QLatin1String(name))->accessibleName();
        }
        QTEST(fields, "fields");
        QTEST(names, "fields");
        const auto *list = qobject_cast<QComboBox *>(control(u"ccase_2"_s));
        QStringList cases;
        for (int entry = 0; entry < list->count(); ++entry)
            cases << list->itemText(entry);
        QTEST(cases, "cases");
        QCOMPARE(list->currentIndex(), 1);
    }

    void theLabelsOfTheStreamAreTranslated()
    {
        speak(u"spanish"_s);
        QStringList texts;
        for (const QLabel *label : m_page->findChildren<QLabel *>())
            texts << label->text();
        for (const QString &expected : {u"modo:"_s, u"duración:"_s, u"frecuencia:"_s, u"tamaño:"_s})
            QVERIFY2(texts.contains(expected), qPrintable(expected));
    }

    void theQuestionIsAskedInTheLanguageOfTheWindow()
    {
        speak(u"spanish"_s);
        m_owner.answer = false;
        qobject_cast<QAbstractButton *>(control(u"eliminav2"_s))->click();
        QCOMPARE(m_owner.events, QStringList(u"ask elimina id3v2 tag?"_s));
    }

    void aChangeOfLanguageKeepsWhatTheUserTyped()
    {
        qobject_cast<QLineEdit *>(control(u"Ttitulo"_s))->setText(u"typed"_s);
        speak(u"french"_s);
        QCOMPARE(qobject_cast<QLineEdit *>(control(u"Ttitulo"_s))->text(), u"typed"_s);
    }

    void tabFollowsTheEye()
    {
        showActive();
        const QStringList order{u"pfile"_s, u"nfile"_s, u"Ttitulo"_s, u"Tpista"_s, u"tartista"_s, u"ta_o"_s,
            u"talbum"_s, u"cestilo"_s, u"tcomentarios"_s, u"eliminav1"_s, u"eliminav2"_s, u"op4_2"_s, u"ccase_2"_s,
            u"edita"_s};
        control(order.first())->setFocus();
        QStringList met;
        for (qsizetype i = 0; i < order.size(); ++i) {
            met << QApplication::focusWidget()->objectName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(met, order);
    }

    void aFileIsEditedAndSavedWithTheKeyboardAlone()
    {
        showActive();
        QTest::keyClick(m_page.get(), Qt::Key_N, Qt::AltModifier);
        QTRY_COMPARE(m_owner.current, 1);
        QVERIFY(control(u"tartista"_s)->hasFocus());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QVERIFY(control(u"Ttitulo"_s)->hasFocus());
        QTest::keyClicks(QApplication::focusWidget(), u"typed"_s);
        QTest::keyClick(m_page.get(), Qt::Key_S, Qt::AltModifier);
        QTRY_COMPARE(title(1), u"typed"_s);
        QTest::keyClick(m_page.get(), Qt::Key_P, Qt::AltModifier);
        QTRY_COMPARE(m_owner.current, 0);
        QCOMPARE(title(0), u"1.mp3"_s);
    }

    void altKeysAreTheAmpersandsOfTheLanguage()
    {
        showActive();
        speak(u"spanish"_s);
        QTest::keyClick(m_page.get(), Qt::Key_S, Qt::AltModifier); // &siguiente
        QTRY_COMPARE(m_owner.current, 1);
        QTest::keyClick(m_page.get(), Qt::Key_A, Qt::AltModifier); // &anterior
        QTRY_COMPARE(m_owner.current, 0);
        QCOMPARE(m_owner.events, QStringList());
        QTest::keyClick(m_page.get(), Qt::Key_U, Qt::AltModifier); // g&uardar
        QTRY_COMPARE(m_owner.events, (QStringList{u"run"_s, u"refresh"_s}));
    }

    void typingALetterIntoTpistaLeavesTheBoxUnchangedAndEnterDoesNothing()
    {
        showActive();
        auto *track = qobject_cast<QLineEdit *>(control(u"Tpista"_s));
        track->setText(u"7"_s);
        track->setFocus();
        QTest::keyClick(track, Qt::Key_A);
        QTest::keyClick(track, Qt::Key_Return);
        QCOMPARE(track->text(), u"7"_s);
        QVERIFY(track->hasFocus());
        QCOMPARE(m_owner.events, QStringList());
        auto *year = qobject_cast<QLineEdit *>(control(u"ta_o"_s));
        year->clear();
        QTest::keyClicks(year, u"19x9"_s);
        QCOMPARE(year->text(), u"199"_s);
    }

    void theWheelTurnsAListOnlyWhenItHasTheFocus()
    {
        showActive();
        auto *genre = qobject_cast<QComboBox *>(control(u"cestilo"_s));
        const auto turn = [genre] {
            const QPointF middle = QRectF(genre->rect()).center();
            QWheelEvent event(middle, genre->mapToGlobal(middle), {}, {0, -120}, Qt::NoButton, Qt::NoModifier,
                Qt::NoScrollPhase, false);
            QApplication::sendEvent(genre, &event);
        };
        control(u"Ttitulo"_s)->setFocus();
        turn();
        QCOMPARE(genre->currentIndex(), 0);
        QVERIFY(control(u"Ttitulo"_s)->hasFocus());
        genre->setFocus();
        turn();
        QCOMPARE(genre->currentIndex(), 1);
    }

    void everyControlHasANameForAssistiveTools()
    {
        int checked = 0;
        for (const QWidget *child : m_page->findChildren<QWidget *>()) {
            const auto *button = qobject_cast<const QAbstractButton *>(child);
            const bool named = !child->accessibleName().isEmpty() || (button && !button->text().isEmpty());
            const bool isPartOfAList = child->window() != m_page->window() || !child->isVisibleTo(m_page.get());
            if (!(child->focusPolicy() & Qt::TabFocus) || isPartOfAList)
                continue;
            QVERIFY2(named, qPrintable(child->objectName()));
            ++checked;
        }
        QCOMPARE(checked, 14);
    }

    void nothingIsCutInAnyLanguage_data()
    {
        QTest::addColumn<QString>("language");
        for (const char *language : {"english", "spanish", "french"})
            QTest::newRow(language) << QString::fromLatin1(language);
    }
    void nothingIsCutInAnyLanguage()
    {
        QFETCH(QString, language);
        m_page->show();
        speak(language);
        m_owner.selectAll();
        m_page->selectionChanged();
        m_page->resize(NarrowWidth, m_page->heightForWidth(NarrowWidth));
        QTest::qWait(10);
        QCOMPARE(scroller()->horizontalScrollBar()->maximum(), 0);
        QCOMPARE(scroller()->verticalScrollBar()->maximum(), 0);
        for (const QWidget *child : m_page->findChildren<QWidget *>()) {
            const bool hasText = qobject_cast<const QAbstractButton *>(child) ||
                                 qobject_cast<const QComboBox *>(child) ||
                                 (qobject_cast<const QLabel *>(child) && child->objectName() != u"fileName");
            if (!hasText || !child->isVisible())
                continue;
            QVERIFY2(child->width() >= child->sizeHint().width(), qPrintable(child->objectName()));
            QVERIFY2(child->height() >= child->minimumSizeHint().height(), qPrintable(child->objectName()));
        }
    }

    void theSizeHintsHoldBeforeThePageIsShown()
    {
        const int height = m_page->sizeHint().height();
        m_page->resize(900, height);
        m_page->show();
        QTest::qWait(10);
        QCOMPARE(m_page->sizeHint().height(), height);
        QCOMPARE(scroller()->verticalScrollBar()->maximum(), 0);
    }

    void aLongFileNameLosesItsMiddleOnly()
    {
        const QString name = u"01 - "_s + QString(200, u'x') + u".mp3"_s;
        m_owner.rows[0] = writeFile(m_folder->path(), name, audio());
        m_page->ShowCurrent();
        m_page->resize(NarrowWidth, 200);
        m_page->show();
        const auto *label = qobject_cast<QLabel *>(control(u"fileName"_s));
        QTRY_VERIFY(label->text().size() < name.size());
        QVERIFY(label->text().startsWith(u"01 - "_s));
        QVERIFY(label->text().endsWith(u".mp3"_s));
        QCOMPARE(label->accessibleName(), name);
        QCOMPARE(scroller()->horizontalScrollBar()->maximum(), 0);
    }
};

QTEST_MAIN(TestSingleFilePageLook)
#include "tst_singlefilepagelook.moc"
