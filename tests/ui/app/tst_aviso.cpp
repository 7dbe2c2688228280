// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of the notice in the main window: it stands between list and tabs and takes its height from the list, the
// pages stay where they are; it says what failed in silence before; typed texts come back by its button, also after a
// restart; it offers the protections once.

#include "ui/app/aviso.h"
#include "ui/app/principalfixture.h"
#include "ui/app/programdialogs.h"
#include "ui/app/windowservices.h"
#include "ui/controls/splitpanel.h"

#include <QToolButton>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestAviso : public PrincipalFixture
{
    Q_OBJECT

private:
    aviso *bar() const { return control<aviso>(u"aviso"_s); }
    QLineEdit *title() const { return control<QLineEdit>(u"Ttitulo"_s); }
    void press(const QString &name) const { control<QAbstractButton>(name)->click(); }
    bool isOffered(const QString &name) const { return control<QWidget>(name)->isVisible(); }
    static void settle()
    {
        for (int round = 0; round < 10; ++round)
            QCoreApplication::processEvents();
    }
    static history::Summary written(int count)
    {
        history::Summary summary;
        summary.doneCount = count;
        return summary;
    }
    QRect place(const QWidget *widget) const { return {widget->mapTo(m_window.get(), QPoint()), widget->size()}; }
    void startAgain()
    {
        closeWindow();
        open(path());
        m_window->chooseAtFirstRun();
    }

private Q_SLOTS:
    void init()
    {
        startAfresh();
        store({{u"tags"_s, u"2"_s}, {u"idioma"_s, u"en"_s}, {u"cuida ofrecido"_s, u"si"_s}});
        addFile(u"a.mp3"_s, titled(u"A"_s));
        addFile(u"b.mp3"_s, titled(u"B"_s));
        open(path());
    }
    void cleanup() { closeWindow(); }

    void itsHeightComesFromTheList()
    {
        const auto *panes = control<SplitPanel>(u"sp2"_s);
        const QRect tabsBefore = place(tabs());
        const QRect panesBefore = place(panes);
        QVERIFY(!bar()->isVisible());
        bar()->showSummary(written(3));
        settle();
        QVERIFY(bar()->isVisible());
        QCOMPARE(place(tabs()), tabsBefore);
        QCOMPARE(place(panes).topLeft(), panesBefore.topLeft());
        QVERIFY(place(panes).bottom() < place(bar()).top());
        QVERIFY(place(bar()).bottom() < tabsBefore.top());
        QVERIFY(place(bar()).height() >= bar()->sizeHint().height());
        press(u"aviso_cerrar"_s);
        settle();
        QVERIFY(!bar()->isVisible());
        QCOMPARE(place(panes), panesBefore);
    }

    void assistiveToolsAreTold()
    {
        bar()->showSummary(written(1));
        QCOMPARE(bar()->accessibleName(), u"1 file written"_s); // to set it tells them
        bar()->showSummary(written(2));
        QCOMPARE(bar()->accessibleName(), u"2 files written"_s);
        for (const QString &name : {u"aviso_detalles"_s, u"aviso_cerrar"_s}) {
            const auto *button = control<QToolButton>(name);
            QVERIFY(!(button->text() + button->accessibleName()).isEmpty());
            QVERIFY(button->focusPolicy() & Qt::TabFocus);
        }
    }

    void itFollowsTheLanguage()
    {
        bar()->showSummary(written(2));
        speak(u"spanish"_s);
        QCOMPARE(bar()->text(), u"2 archivos escritos"_s);
        QCOMPARE(control<QToolButton>(u"aviso_detalles"_s)->text(), u"detalles"_s);
    }

    void anOperationWithoutEffectClosesIt()
    {
        bar()->showSummary(written(2));
        bar()->showSummary({});
        QVERIFY(!bar()->isVisible());
    }

    void aSaveIsToldWithWhatItRemoved()
    {
        addFile(u"c.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"C"_s) + textFrame(3, "TCON", u"(0)"_s)) + audio());
        tree()->refresh();
        m_window->openAtStart(path());
        list()->selectNone();
        clickRow(rowOf(u"a.mp3"_s));
        title()->setText(u"new"_s);
        press(u"edita"_s);
        QCOMPARE(bar()->text(), u"1 file written"_s);
        QVERIFY(!isOffered(u"aviso_recuperar"_s));
        press(u"aviso_detalles"_s);
        const QAbstractItemModel *files = control<QTreeView>(u"detalles_lista"_s)->model();
        QCOMPARE(files->rowCount(files->index(0, 0)), 1); // the title
        QCOMPARE(files->index(0, 1, files->index(0, 0)).data().toString(), u"A"_s);
        QCOMPARE(files->index(0, 2, files->index(0, 0)).data().toString(), u"new"_s);
        tabs()->setCurrentIndex(1);
        list()->selectAllRows();
        control<QCheckBox>(u"chmartista"_s)->click();
        control<QLineEdit>(u"Tmartista"_s)->setText(u"X"_s);
        press(u"multiple"_s);
        QCOMPARE(bar()->text(), u"3 files written · the genre of 1 file removed"_s); // "Blues" can't be written
        press(u"multiple"_s);                                                        // all is so already
        QVERIFY2(!bar()->isVisible(), qPrintable(bar()->text()));
    }

    void aSaveIsTakenBackAndRepeatedAlsoAfterARestart()
    {
        const QByteArray before = readFile(at(u"a.mp3"_s));
        clickRow(0);
        title()->setText(u"a longer title"_s);
        press(u"edita"_s);
        const QByteArray after = readFile(at(u"a.mp3"_s));
        QVERIFY(after != before);
        QVERIFY(isOffered(u"aviso_deshacer"_s));
        press(u"aviso_deshacer"_s);
        QCOMPARE(readFile(at(u"a.mp3"_s)), before);
        QCOMPARE(bar()->text(), u"1 change taken back"_s);
        QVERIFY(!isOffered(u"aviso_deshacer"_s));
        QCOMPARE(cell(0, 2), u"A"_s); // the list shows it
        control<QAction>(u"redo"_s)->trigger();
        QCOMPARE(readFile(at(u"a.mp3"_s)), after);
        QCOMPARE(bar()->text(), u"1 change made again"_s);
        startAgain();
        QCOMPARE(control<QAction>(u"undo"_s)->text(), u"undo writing tags"_s);
        control<QAction>(u"undo"_s)->trigger();
        QCOMPARE(readFile(at(u"a.mp3"_s)), before);
        QVERIFY(!control<QAction>(u"undo"_s)->isEnabled());
        QVERIFY(control<QAction>(u"redo"_s)->isEnabled());
    }

    void theMenuHoldsTheLastTen()
    {
        for (int i = 0; i < 12; ++i) {
            clickRow(i % 2);
            title()->setText(QString::number(i));
            press(u"edita"_s);
        }
        auto *menu = control<QMenu>(u"undoMenu"_s);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().size(), 10);
        QVERIFY2(menu->actions().first()->text().endsWith(u"undo writing tags (1 file)"_s),
            qPrintable(menu->actions().first()->text()));
        menu->actions().at(1)->trigger(); // of a.mp3: not the last one
        QCOMPARE(titleOf(u"a.mp3"_s), u"8"_s);
        QCOMPARE(titleOf(u"b.mp3"_s), u"11"_s);
        Q_EMIT menu->aboutToShow();
        QCOMPARE(menu->actions().size(), 10);
    }

    void anOlderEntryTakesTheLaterOnesAlongIfAgreed_data()
    {
        QTest::addColumn<bool>("agrees");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void anOlderEntryTakesTheLaterOnesAlongIfAgreed()
    {
        QFETCH(bool, agrees);
        for (const QString &text : {u"one"_s, u"two"_s}) {
            clickRow(0);
            title()->setText(text);
            press(u"edita"_s);
        }
        QString named;
        QTimer answering;
        connect(&answering, &QTimer::timeout, this, [&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                named = box->informativeText();
                box->button(agrees ? QMessageBox::Yes : QMessageBox::No)->click();
            }
        });
        answering.start(10);
        auto *menu = control<QMenu>(u"undoMenu"_s);
        Q_EMIT menu->aboutToShow();
        menu->actions().at(1)->trigger();
        QVERIFY2(named.endsWith(u"(1 file)"_s), qPrintable(named));
        QCOMPARE(titleOf(u"a.mp3"_s), agrees ? u"A"_s : u"two"_s);
    }

    void aSilentFailureIsSaid()
    {
        clickRow(0);
        title()->setText(u"new"_s);
        QVERIFY(QFile::remove(at(u"a.mp3"_s)));
        press(u"edita"_s);
        QVERIFY2(bar()->text().contains(u"1 failed"_s), qPrintable(bar()->text()));
        QVERIFY2(bar()->text().contains(u"unsaved changes of a.mp3"_s), qPrintable(bar()->text()));
        QVERIFY(isOffered(u"aviso_recuperar"_s));
        QVERIFY(!isOffered(u"aviso_deshacer"_s));
    }

    void detailsNameEachFile()
    {
        clickRow(0);
        title()->setText(u"new"_s);
        QVERIFY(QFile::remove(at(u"a.mp3"_s)));
        press(u"edita"_s);
        press(u"aviso_detalles"_s);
        auto *window = control<QDialog>(u"detalles"_s);
        QVERIFY(window->isVisible());
        QVERIFY(!window->isModal());
        const QAbstractItemModel *files = window->findChild<QTreeView *>(u"detalles_lista"_s)->model();
        QCOMPARE(files->rowCount(), 1);
        QStringList cells;
        for (int column = 0; column < files->columnCount(); ++column)
            cells << files->index(0, column).data().toString();
        QVERIFY2(cells.first().endsWith(u"a.mp3"_s), qPrintable(cells.first()));
        QVERIFY2(cells.last().contains(m_program->captions.errorText(ErrorCode::NotFound)), qPrintable(cells.last()));
        window->findChild<QPushButton *>(u"detalles_cerrar"_s)->click();
        QVERIFY(!window->isVisible());
    }

    void twentyThousandFilesOpenWithoutAPause()
    {
        history::Summary summary;
        for (int i = 0; i < history::Summary::MostFiles; ++i)
            summary.files.push_back({.path = at(u"%1.mp3"_s.arg(i)),
                .values = {{u"title"_s, u"<b>old</b>"_s, u"new"_s}, {u"genre"_s, u"Blues"_s, {}}}});
        summary.doneCount = history::Summary::MostFiles;
        bar()->showSummary(summary);
        QElapsedTimer clock;
        clock.start();
        press(u"aviso_detalles"_s);
        settle();
        QVERIFY2(
            clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed()))); // unoptimised, on a busy machine
        QCOMPARE(control<QTreeView>(u"detalles_lista"_s)->model()->rowCount(), history::Summary::MostFiles);
    }

    void typedTextsComeBackAfterAnotherRow()
    {
        clickRow(0);
        title()->setText(u"typed"_s);
        clickRow(1);
        QCOMPARE(title()->text(), u"B"_s);
        QCOMPARE(bar()->text(), u"unsaved changes of a.mp3"_s);
        tabs()->setCurrentIndex(2);
        press(u"aviso_recuperar"_s);
        QCOMPARE(tabs()->currentIndex(), 0);
        QCOMPARE(list()->currentRowText(), u"a.mp3"_s);
        QCOMPARE(list()->selectedRowTexts(), QStringList(u"a.mp3"_s));
        QCOMPARE(title()->text(), u"typed"_s);
        QVERIFY(!bar()->isVisible());
        press(u"edita"_s);
        QCOMPARE(titleOf(u"a.mp3"_s), u"typed"_s);
        QCOMPARE(titleOf(u"b.mp3"_s), u"B"_s);
        QVERIFY(!bar()->text().contains(u"unsaved"_s));
    }

    void severalFilesComeBackOneAfterTheOther()
    {
        clickRow(0);
        title()->setText(u"first"_s);
        clickRow(1);
        title()->setText(u"second"_s);
        press(u"nfile"_s); // the last row: shows nothing else
        QCOMPARE(bar()->text(), u"unsaved changes of a.mp3"_s);
        press(u"pfile"_s);
        QCOMPARE(bar()->text(), u"unsaved changes of b.mp3"_s);
        press(u"aviso_recuperar"_s);
        QCOMPARE(title()->text(), u"second"_s);
        QCOMPARE(bar()->text(), u"unsaved changes of a.mp3"_s);
        press(u"aviso_recuperar"_s);
        QCOMPARE(title()->text(), u"first"_s);
        QCOMPARE(bar()->text(), u"unsaved changes of b.mp3"_s); // what the page held in turn
    }

    void whatWasNotTypedIsNotOffered()
    {
        clickRow(0);
        clickRow(1);
        title()->setText(u"x"_s);
        title()->setText(u"B"_s);
        clickRow(0);
        QVERIFY(!bar()->isVisible());
        title()->setText(u"saved"_s);
        press(u"edita"_s);
        clickRow(1);
        QVERIFY2(!bar()->text().contains(u"unsaved"_s), qPrintable(bar()->text()));
    }

    void anotherFolderIsOpenedForThem()
    {
        clickRow(0);
        title()->setText(u"typed"_s);
        QVERIFY(QDir(m_folder->path()).mkdir(u"sub"_s));
        addFile(u"sub/c.mp3"_s);
        tree()->refresh();
        tree()->setPath(at(u"sub"_s));
        QCOMPARE(bar()->text(), u"unsaved changes of a.mp3"_s);
        press(u"aviso_recuperar"_s);
        QCOMPARE(m_program->state.currentFolderAsChosen, path());
        QCOMPARE(title()->text(), u"typed"_s);
    }

    void theyStayOfferedWhileTheirFileIsAway()
    {
        clickRow(0);
        title()->setText(u"typed"_s);
        clickRow(1);
        QVERIFY(QFile::rename(at(u"a.mp3"_s), at(u"away"_s)));
        tree()->setPath(native(QDir::rootPath()));
        press(u"aviso_recuperar"_s);
        QCOMPARE(bar()->text(), u"unsaved changes of a.mp3"_s);
        QVERIFY(QFile::rename(at(u"away"_s), at(u"a.mp3"_s)));
        tree()->setPath(native(QDir::rootPath()));
        press(u"aviso_recuperar"_s);
        QCOMPARE(title()->text(), u"typed"_s);
    }

    void theyAreOfferedAgainAtTheNextStart()
    {
        clickRow(0);
        title()->setText(u"typed “here”"_s);
        startAgain();
        QCOMPARE(bar()->text(), u"unsaved changes of a.mp3"_s);
        press(u"aviso_recuperar"_s);
        QCOMPARE(title()->text(), u"typed “here”"_s);
        press(u"edita"_s);
        startAgain();
        QVERIFY(!bar()->isVisible());
    }

    void closingTheNoticeDropsThem()
    {
        clickRow(0);
        title()->setText(u"typed"_s);
        clickRow(1);
        press(u"aviso_cerrar"_s);
        startAgain();
        QVERIFY(!bar()->isVisible());
    }

    void protectionsAreOfferedOnce()
    {
        closeWindow();
        QFile::remove(Settings::defaultPath());
        store({{u"tags"_s, u"2"_s}, {u"idioma"_s, u"en"_s}});
        startAgain();
        QCOMPARE(bar()->text(), u"new: a save can leave alone what you did not edit"_s);
        press(u"aviso_elegir"_s);
        QVERIFY(!bar()->isVisible());
        auto *dialog = control<QDialog>(u"opciones"_s);
        for (const QString &name : {u"chcampos"_s, u"chseleccion"_s, u"chsubcarpetas"_s, u"chpapelera"_s})
            QVERIFY(dialog->findChild<QCheckBox *>(name)->isChecked());
        dialog->findChild<QCheckBox *>(u"chcampos"_s)->setChecked(false);
        dialog->findChild<QPushButton *>(u"ok"_s)->click();
        QCOMPARE(stored(u"cuida campos"), QString());
        QCOMPARE(stored(u"cuida seleccion"), u"si"_s);
        QVERIFY(m_program->state.options.keepSelection);
        startAgain();
        QVERIFY(!bar()->isVisible());
    }

    void whoDeclinesIsNotAskedAgain()
    {
        closeWindow();
        QFile::remove(Settings::defaultPath());
        store({{u"tags"_s, u"2"_s}});
        startAgain();
        QVERIFY(bar()->isVisible());
        press(u"aviso_cerrar"_s);
        startAgain();
        QVERIFY(!bar()->isVisible());
        QVERIFY(!FurtherOptions::hasProtections(m_program->settings));
    }

    void theSaveKeySavesWhereTagsAreSaved()
    {
        clickRow(0);
        title()->setText(u"by key"_s);
        QTest::keyClick(title(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(titleOf(u"a.mp3"_s), u"by key"_s);
        clickRow(0);
        title()->setText(u"not now"_s);
        tabs()->setCurrentIndex(3); // renames
        QTest::keyClick(list(), Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(titleOf(u"a.mp3"_s), u"by key"_s);
        QCOMPARE(list()->rowTexts(), (QStringList{u"a.mp3"_s, u"b.mp3"_s}));
    }

    void aTextBoxWithNothingToUndoLeavesTheKey()
    {
        clickRow(0);
        auto *undo = control<QAction>(u"undo"_s);
        undo->setEnabled(true);
        int undone = 0;
        undo->disconnect();
        connect(undo, &QAction::triggered, this, [&undone] { ++undone; });
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        title()->setFocus();
        QTest::keyClick(title(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(undone, 1);
        QTest::keyClicks(title(), u"x"_s);
        QTest::keyClick(title(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(undone, 1); // the box has taken back its own
        QCOMPARE(title()->text(), u"A"_s);
        QTest::keyClick(title(), Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(undone, 2);
    }
};

QTEST_MAIN(TestAviso)
#include "tst_aviso.moc"
