// SPDX-License-Identifier: GPL-3.0-or-later
// Starting and closing the main window: what it reads from the settings and the command line, what it writes back, and
// the order in which windows close.

#include "core/app/programstate.h"
#include "ui/app/principalfixture.h"
#include "ui/controls/splitpanel.h"

#include <QComboBox>
#include <QDialog>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

/// A window that records its closing.
class NotingWindow : public QWidget
{
public:
    NotingWindow(QString name, QStringList &closed) : m_name(std::move(name)), m_closed(closed) {}

protected:
    void closeEvent(QCloseEvent *) override { m_closed << m_name; }

private:
    QString m_name;
    QStringList &m_closed;
};

class TestPrincipalStart : public PrincipalFixture
{
    Q_OBJECT

private:
    static bool isTicked(const SessionChoices &choices, std::size_t pair) { return choices.conversions.at(pair).on; }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeWindow(); }

    void firstRunWithAnEmptyStore()
    {
        open();
        QCOMPARE(m_program->choices.renameMode, 2);
        for (std::size_t pair = 0; pair < 5; ++pair)
            QVERIFY(!isTicked(m_program->choices, pair));
        QVERIFY(!control<QCheckBox>(u"op4_2"_s)->isChecked());
        QCOMPARE(control<QComboBox>(u"ccase_2"_s)->currentIndex(), 1);
        QCOMPARE(m_program->state.tagSaveMode, 2);
        QCOMPARE(m_program->captions.languageName(), u"english"_s);
        QCOMPARE(list()->rowCount(), 0);
        QCOMPARE(panel(1), QString());
        QCOMPARE(panel(2), QString());
        QCOMPARE(m_window->windowTitle(), u"ravlin!"_s);
    }

    void onTheFirstRunTheOptionsOpenBeforeTheWindowIsShown()
    {
        m_program = std::make_unique<Program>();
        m_window = std::make_unique<principal>(*m_program);
        bool wasWindowShown = true;
        bool wasDialogModal = false;
        QTimer::singleShot(0, this, [&] {
            auto *dialog = control<QDialog>(u"opciones"_s);
            wasWindowShown = m_window->isVisible();
            wasDialogModal = dialog->isVisible() && dialog->isModal();
            auto *languages = dialog->findChild<QComboBox *>(u"cidioma"_s);
            languages->setFocus();
            QTest::keyClick(languages, Qt::Key_End);
            dialog->findChild<QComboBox *>(u"ctags"_s)->setCurrentIndex(4);
            dialog->findChild<QPushButton *>(u"ok"_s)->click();
        });
        m_window->chooseAtFirstRun();
        QVERIFY(!wasWindowShown);
        QVERIFY(wasDialogModal);
        // The choice applies at once ...
        QCOMPARE(m_program->state.tagSaveMode, 5);
        QCOMPARE(tabs()->tabText(0), u"editeur de tag id3"_s);
        QVERIFY(m_window->findChild<QDialog *>(u"opciones"_s) == nullptr);
        closeWindow();
        // ... and after a restart, which opens no options.
        open();
        QCOMPARE(m_program->state.tagSaveMode, 5);
        QCOMPARE(tabs()->tabText(0), u"editeur de tag id3"_s);
        m_window->chooseAtFirstRun();
        QVERIFY(m_window->findChild<QDialog *>(u"opciones"_s) == nullptr);
    }

    void cancelOnTheFirstRunKeepsTheLanguageForTheRunOnlyAndAsksAgain()
    {
        for (int run = 0; run < 2; ++run) {
            m_program = std::make_unique<Program>();
            m_window = std::make_unique<principal>(*m_program);
            QString languageShown;
            QTimer::singleShot(0, this, [&] {
                auto *dialog = control<QDialog>(u"opciones"_s);
                auto *languages = dialog->findChild<QComboBox *>(u"cidioma"_s);
                languageShown = languages->currentText();
                languages->setFocus();
                QTest::keyClick(languages, Qt::Key_Home);
                dialog->findChild<QPushButton *>(u"cancel"_s)->click();
            });
            m_window->chooseAtFirstRun();
            QCOMPARE(languageShown, u"english"_s);
            QCOMPARE(m_program->captions.languageName(), u"spanish"_s);
            QCOMPARE(tabs()->tabText(0), u"editar id3"_s);
            QCOMPARE(m_program->state.tagSaveMode, 2);
            closeWindow();
            QCOMPARE(stored(u"idioma"_s), QString());
            QCOMPARE(stored(u"tags"_s), QString());
        }
    }

    void theFirstRunOffersToRememberTheFolder_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<bool>("ticked");
        QTest::newRow("nothing stored") << QString() << true;
        QTest::newRow("stored no") << u"no"_s << false;
        QTest::newRow("stored yes") << u"si"_s << true;
    }
    void theFirstRunOffersToRememberTheFolder()
    {
        QFETCH(QString, before);
        QFETCH(bool, ticked);
        if (!before.isEmpty())
            store({{u"recuerda"_s, before}});
        m_program = std::make_unique<Program>();
        m_window = std::make_unique<principal>(*m_program);
        bool wasTicked = !ticked;
        QStringList order;
        QTimer::singleShot(0, this, [&] {
            auto *dialog = control<QDialog>(u"opciones"_s);
            wasTicked = dialog->findChild<QCheckBox *>(u"opreme"_s)->isChecked();
            order = {u"cidioma"_s, u"ctags"_s, u"opreme"_s, u"tserver"_s, u"tmail"_s, u"upd"_s};
            std::ranges::stable_sort(order, {}, [dialog](const QString &name) {
                return dialog->findChild<QWidget *>(name)->mapTo(dialog, QPoint()).y();
            });
            dialog->findChild<QPushButton *>(u"ok"_s)->click();
        });
        m_window->chooseAtFirstRun();
        QCOMPARE(wasTicked, ticked);
        QCOMPARE(order.join(u' '), u"cidioma ctags opreme tserver tmail upd"_s);
        QCOMPARE(stored(u"recuerda"_s), ticked ? u"si"_s : u"no"_s);
    }

    void theFirstRunStoresNothingWhenItIsCancelled()
    {
        m_program = std::make_unique<Program>();
        m_window = std::make_unique<principal>(*m_program);
        QTimer::singleShot(
            0, this, [&] { control<QDialog>(u"opciones"_s)->findChild<QPushButton *>(u"cancel"_s)->click(); });
        m_window->chooseAtFirstRun();
        closeWindow();
        QCOMPARE(stored(u"recuerda"_s), QString());
    }

    void anUnknownStoredModeIsNoFirstRun()
    {
        store({{u"tags"_s, u"7"_s}});
        open();
        m_window->chooseAtFirstRun();
        QVERIFY(m_window->findChild<QDialog *>(u"opciones"_s) == nullptr);
        QCOMPARE(m_program->state.tagSaveMode, 2);
    }

    void tickingOp42InOneRunDoesNotSurviveARestart()
    {
        open();
        control<QCheckBox>(u"op4_2"_s)->setChecked(true);
        control<QComboBox>(u"ccase_2"_s)->setCurrentIndex(2);
        closeWindow();
        open();
        QVERIFY(!control<QCheckBox>(u"op4_2"_s)->isChecked());
        QCOMPARE(control<QComboBox>(u"ccase_2"_s)->currentIndex(), 1);
    }

    void tickingOp43Does()
    {
        open();
        control<QCheckBox>(u"op4_3"_s)->setChecked(true);
        control<QComboBox>(u"ccase_3"_s)->setCurrentIndex(0);
        closeWindow();
        QCOMPARE(stored(u"rename replace"), u"0"_s);
        open();
        QVERIFY(isTicked(m_program->choices, 3));
        QCOMPARE(m_program->choices.conversions.at(3).index, 0);
        control<QCheckBox>(u"op4_3"_s)->setChecked(false);
        closeWindow();
        QCOMPARE(stored(u"rename replace"), QString());
    }

    void aQuotedCommandLineNamingAFileOpensItsFolder()
    {
        const QString file = addFile(u"a.mp3"_s);
        open(folderOfCommandLine(u'"' + file + u'"'));
        QCOMPARE(m_program->state.currentFolder, path() + QDir::separator());
        QCOMPARE(tree()->path(), path());
        QCOMPARE(list()->rowTexts(), QStringList{u"a.mp3"_s});
    }

    void aCommandLineNamingAFolderOpensItAndARememberedFolderIsThenNotUsed()
    {
        addFile(u"remembered/r.mp3"_s);
        addFile(u"named/n.mp3"_s);
        store({{u"recuerda"_s, u"si"_s}, {u"ruta"_s, at(u"remembered"_s)}});
        open(folderOfCommandLine(at(u"named"_s)));
        QCOMPARE(list()->rowTexts(), QStringList{u"n.mp3"_s});
    }

    void theRememberedFolderIsOpenedOnlyWithExactlySi_data()
    {
        QTest::addColumn<QString>("recuerda");
        QTest::addColumn<int>("rows");
        QTest::newRow("si") << u"si"_s << 1;
        QTest::newRow("Si") << u"Si"_s << 0;
        QTest::newRow("no") << u"no"_s << 0;
        QTest::newRow("empty") << QString() << 0;
    }
    void theRememberedFolderIsOpenedOnlyWithExactlySi()
    {
        QFETCH(QString, recuerda);
        addFile(u"a.mp3"_s);
        store({{u"recuerda"_s, recuerda}, {u"ruta"_s, path()}});
        open();
        QTEST(list()->rowCount(), "rows");
    }

    void ofARememberedFolderThatIsGoneNothingIsListedOrForgotten()
    {
        addFile(u"a.mp3"_s);
        store({{u"recuerda"_s, u"si"_s}, {u"ruta"_s, at(u"gone/deeper"_s)}});
        for (int start = 0; start < 2; ++start) {
            open();
            QCOMPARE(tree()->path(), QString());
            QCOMPARE(tree()->currentIndex().data(FolderModel::PathRole).toString(), path());
            QCOMPARE(list()->rowCount(), 0);
            QCOMPARE(panel(1), QString());
            QTest::keyClick(tree(), Qt::Key_F2);
            QTest::keyClick(tree(), Qt::Key_F5);
            QCOMPARE(list()->rowCount(), 0);
            closeWindow();
            QCOMPARE(stored(u"ruta"), at(u"gone/deeper"_s));
        }
        open();
        tree()->setPath(path());
        closeWindow();
        QCOMPARE(stored(u"ruta"), path() + QDir::separator());
    }

    void aRememberedFolderThatAppearsIsOpenedByARefresh()
    {
        store({{u"recuerda"_s, u"si"_s}, {u"ruta"_s, at(u"stick/music"_s) + QDir::separator()}});
        open();
        QCOMPARE(list()->rowCount(), 0);
        addFile(u"stick/music/a.mp3"_s);
        QTest::keyClick(tree(), Qt::Key_F5);
        QCOMPARE(list()->rowTexts(), QStringList{u"a.mp3"_s});
        closeWindow();
        QCOMPARE(stored(u"ruta"), at(u"stick/music"_s) + QDir::separator());
    }

    void ofACommandLineThatNamesNoFolderNothingIsListedOrForgotten_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("folder") << u"gone"_s;
        QTest::newRow("file in no folder") << u"gone/a.mp3"_s;
        QTest::newRow("file of another type") << u"cover.jpg"_s;
    }
    void ofACommandLineThatNamesNoFolderNothingIsListedOrForgotten()
    {
        QFETCH(QString, name);
        addFile(u"a.mp3"_s);
        addFile(u"cover.jpg"_s);
        addFile(u"last/b.mp3"_s);
        store({{u"recuerda"_s, u"si"_s}, {u"ruta"_s, at(u"last"_s)}});
        open(folderOfCommandLine(at(name)));
        QCOMPARE(list()->rowCount(), 0);
        QCOMPARE(tree()->path(), QString());
        QCOMPARE(tree()->currentIndex().data(FolderModel::PathRole).toString(), path());
        closeWindow();
        QCOMPARE(stored(u"ruta"), at(u"last"_s));
    }

    void theOpenedFolderStandsInTheMiddleOfTheTreeWhenTheWindowGrows()
    {
        for (int i = 100; i < 200; ++i)
            addFile(u"%1/a.mp3"_s.arg(i));
        open(at(u"150"_s), QSize(800, 500));
        for (const QSize size : {QSize(800, 500), QSize(1100, 900), QSize(700, 450)}) {
            m_window->resize(size);
            QCoreApplication::processEvents();
            const QRect place = tree()->visualRect(tree()->currentIndex());
            const int middle = tree()->viewport()->rect().center().y();
            QVERIFY(std::abs(place.center().y() - middle) <= place.height());
        }
    }

    void genreListIndex0IsTheEmptyEntryAndGenre0IsIndex1()
    {
        open();
        const auto *genres = control<QComboBox>(u"cestilo"_s);
        QCOMPARE(genres->itemText(0), QString());
        QCOMPARE(genres->itemText(1), u"Blues"_s);
        QCOMPARE(genres->count(), 127);
    }

    void closingWithNoRenameModeChosenWritesAnEmptyRename()
    {
        store({{u"rename"_s, u"7"_s}});
        open();
        QCOMPARE(m_program->choices.renameMode, 0);
        closeWindow();
        QCOMPARE(stored(u"rename"), QString());
    }

    void closingSavesTheFolderAndTheRenameChoices()
    {
        open(path());
        control<QRadioButton>(u"op3"_s)->setChecked(true);
        control<QComboBox>(u"tavanzado"_s)->setEditText(u"%1 - %2"_s);
        QCOMPARE(stored(u"ruta"), QString()); // nothing is written before
        closeWindow();
        QCOMPARE(stored(u"ruta"), path() + QDir::separator());
        QCOMPARE(stored(u"rename"), u"3"_s);
        QCOMPARE(stored(u"rename var"), u"%1 - %2"_s);
    }

    void theStoredTagSaveModeCountsWhenItIsExactlyOneOfTheFive_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<int>("mode");
        QTest::newRow("1") << u"1"_s << 1;
        QTest::newRow("5") << u"5"_s << 5;
        QTest::newRow("0") << u"0"_s << 2;
        QTest::newRow("6") << u"6"_s << 2;
        QTest::newRow("two digits") << u"33"_s << 2;
        QTest::newRow("text") << u"three"_s << 2;
    }
    void theStoredTagSaveModeCountsWhenItIsExactlyOneOfTheFive()
    {
        QFETCH(QString, value);
        store({{u"tags"_s, value}});
        open();
        QTEST(m_program->state.tagSaveMode, "mode");
    }

    void theStoredLanguageIsSpoken()
    {
        store({{u"idioma"_s, u"fr"_s}});
        open();
        QCOMPARE(list()->model()->headerData(0, Qt::Horizontal).toString(), u"fichier"_s);
        QCOMPARE(tabs()->tabText(0), u"editeur de tag id3"_s);
    }

    void sizeAndSplitterAreFoundAsLeft()
    {
        open();
        const auto *panes = control<SplitPanel>(u"sp2"_s);
        QCOMPARE(panes->position(), 3800);
        control<SplitPanel>(u"sp2"_s)->setPosition(4500);
        m_window->resize(820, 610);
        closeWindow();
        open();
        QCOMPARE(m_window->size(), QSize(820, 610));
        QCOMPARE(control<SplitPanel>(u"sp2"_s)->position(), 4500);
    }

    void settingsThatMakeNoSenseAreIgnored()
    {
        store({{u"window geometry"_s, u"never"_s}, {u"splitter Position"_s, u"left"_s}, {u"idioma"_s, u"xx"_s},
            {u"multi case"_s, u"99"_s}});
        open();
        QCOMPARE(control<SplitPanel>(u"sp2"_s)->position(), 3800);
        QCOMPARE(m_program->captions.languageName(), u"english"_s);
        QVERIFY(m_window->width() >= 400);
    }

    void theWindowIsNeverNarrowerThan6000Twips()
    {
        open({}, QSize(100, 500));
        QCOMPARE(m_window->width(), 400);
    }

    void closingClosesEveryOtherWindowFromTheLastOpenedToTheFirst()
    {
        open();
        QStringList closed;
        NotingWindow first(u"first"_s, closed);
        NotingWindow second(u"second"_s, closed);
        NotingWindow third(u"third"_s, closed);
        NotingWindow hidden(u"hidden"_s, closed);
        third.show();
        first.show();
        second.show();
        third.hide();
        third.show(); // opened again, so it is the last one
        hidden.show();
        hidden.hide();
        m_window->close();
        QCOMPARE(closed, (QStringList{u"third"_s, u"second"_s, u"first"_s}));
        QVERIFY(!m_window->isVisible());
    }

    void settingsAreSavedBeforeOtherWindowsClose()
    {
        open(path());
        QString atClosing;
        QDialog other;
        other.show();
        connect(&other, &QDialog::finished, this, [&] { atClosing = stored(u"ruta"); });
        m_window->close();
        QCOMPARE(atClosing, path() + QDir::separator());
    }

    void theListHasTheFocusAtFirst()
    {
        open(path());
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QCOMPARE(QApplication::focusWidget(), list());
    }
};

QTEST_MAIN(TestPrincipalStart)
#include "tst_principalstart.moc"
