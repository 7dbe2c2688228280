// SPDX-License-Identifier: GPL-3.0-or-later
// The pages for many files, and the renaming of the folder, in the main window: their tabs, what a run does to list,
// page and tree, and the choices from one start to the next.

#include "ui/app/principalfixture.h"

#include <QApplication>
#include <QRadioButton>
#include <QTimer>
#include <QToolButton>

#include <functional>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestBatchPages : public PrincipalFixture
{
    Q_OBJECT

private:
    void press(const QString &name) const { control<QPushButton>(name)->click(); }
    void tick(const QString &name) const { control<QCheckBox>(name)->click(); }
    void addAlbum() const
    {
        addFile(u"music/1.mp3"_s, id3v2(3, textFrame(3, "TIT2", u"one"_s) + textFrame(3, "TPE1", u"Band"_s) +
                                               textFrame(3, "TALB", u"Live"_s)) +
                                      audio());
        addFile(u"music/2.mp3"_s, titled(u"two"_s));
        addFile(u"other/3.mp3"_s, titled(u"three"_s));
    }
    /// Waits for a modal window of that name and passes it on. Call it before the window opens.
    void whenOpened(const QString &name, const std::function<void(QWidget *)> &act)
    {
        QTimer::singleShot(0, this, [this, name, act] {
            QWidget *window = QApplication::activeModalWidget();
            if (window != nullptr && window->objectName() == name)
                act(window);
            else
                whenOpened(name, act);
        });
    }
    QWidget *openDialog() const
    {
        control<QToolButton>(u"tb_7"_s)->click();
        return control(u"Dialog"_s);
    }
    template <typename Control>
    static Control *in(const QWidget *window, const QString &name)
    {
        return window->findChild<Control *>(name);
    }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeWindow(); }

    void theTabsBearTheirCaptions_data()
    {
        QTest::addColumn<QString>("language");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QStringList>("tips");
        QTest::newRow("english") << u"english"_s
                                 << QStringList{u"id3 tag editor"_s, u"multi file id3 tag editor"_s,
                                        u"mp3 file name to id3 tag"_s, u"rename mp3 files"_s}
                                 << QStringList{u"id3 tag editor"_s, u"multi file id3 tag editor"_s,
                                        u"mp3 file name to id3 tag"_s, u"rename mp3 files"_s};
        QTest::newRow("spanish") << u"spanish"_s
                                 << QStringList{u"editar id3"_s, u"edición multiple id3"_s,
                                        u"extraer id3 desde nombre fichero"_s, u"renombrar archivos"_s}
                                 << QStringList{u"editar etiquetas id3"_s, u"edición multiple de etiquetas id3"_s,
                                        u"extraer etiquetas id3 desde los nombre de los fichero"_s,
                                        u"renombrar archivos"_s};
        QTest::newRow("french") << u"french"_s
                                << QStringList{u"editeur de tag id3"_s, u"editeur de tag id3 multi-fichiers"_s,
                                       u"nom de fichier mp3 vers tag id3"_s, u"renommer fichiers mp3"_s}
                                << QStringList{u"editeur de tag id3"_s, u"editeur de tag id3 multi-fichiers"_s,
                                       u"nom de fichier mp3 vers tag i"_s, u"renommer fichiers mp3"_s};
    }
    void theTabsBearTheirCaptions()
    {
        QFETCH(QString, language);
        open();
        speak(language);
        QStringList texts;
        QStringList tips;
        for (int tab = 0; tab < tabs()->count(); ++tab) {
            texts << tabs()->tabText(tab);
            tips << tabs()->tabToolTip(tab);
        }
        QTEST(texts, "texts");
        QTEST(tips, "tips");
    }

    void theHintsFollowTheListAndItsSelection()
    {
        addAlbum();
        QDir(path()).mkdir(u"empty"_s);
        open(at(u"music"_s));
        tick(u"chmpista"_s);
        const auto hints = [this] {
            QStringList texts;
            for (const QString &name : {u"multiHint"_s, u"extractHint"_s, u"renameHint"_s})
                texts << control<QLabel>(name)->text();
            return texts;
        };
        const QStringList nothing(3, u"no file is selected"_s);
        const QStringList two{u"goes into 2 files"_s, u"goes into 2 files"_s, u"renames 2 files"_s};
        QCOMPARE(hints(), two);
        tree()->setPath(at(u"empty"_s));
        QCOMPARE(hints(), nothing);
        tree()->setPath(at(u"music"_s));
        QCOMPARE(hints(), two);
        for (const QString &name : {u"1.mp3"_s, u"2.mp3"_s})
            QVERIFY(QFile::remove(at(u"music/"_s + name)));
        QTest::keyClick(tree(), Qt::Key_F2);
        QCOMPARE(list()->rowCount(), 0);
        QCOMPARE(hints(), nothing);
        tree()->setPath(at(u"other"_s));
        QCOMPARE(hints(), QStringList(3, QString()));
        list()->selectNone();
        QCOMPARE(hints(), nothing);
    }

    void afterAMultiFileRunListAndEditorShowWhatWasWritten()
    {
        addAlbum();
        open(at(u"music"_s));
        clickRow(1);
        list()->selectAllRows();
        tabs()->setCurrentIndex(1);
        tick(u"chmpista"_s);
        control<QLineEdit>(u"tmpista"_s)->setText(u"7"_s);
        press(u"multiple"_s);
        QCOMPARE(cell(0, 1), u"07"_s);
        QCOMPARE(cell(1, 1), u"08"_s);
        QCOMPARE(list()->currentRow(), 1);
        tabs()->setCurrentIndex(0);
        QCOMPARE(field(u"Ttitulo"_s), u"two"_s);
        QCOMPARE(field(u"Tpista"_s), u"8"_s);
    }

    void afterAnExtractionTheListShowsTheTags()
    {
        addFile(u"Björk - Isobel.mp3"_s);
        open(path());
        tabs()->setCurrentIndex(2);
        control<QComboBox>(u"tpatron"_s)->setEditText(u"%1 - %3"_s);
        press(u"extrae"_s);
        QCOMPARE(cell(0, 2), u"Isobel"_s);
        QCOMPARE(cell(0, 3), u"Björk"_s);
    }

    void afterARenamingTheListShowsTheNewNames()
    {
        addFile(u"b.mp3"_s, titled(u"one"_s));
        addFile(u"a.mp3"_s, titled(u"two"_s));
        open(path());
        tabs()->setCurrentIndex(3);
        control<QRadioButton>(u"op3"_s)->click();
        control<QComboBox>(u"tavanzado"_s)->setEditText(u"%3"_s);
        press(u"Command2"_s);
        QCOMPARE(list()->rowTexts(), QStringList({u"one.mp3"_s, u"two.mp3"_s}));
        QVERIFY(QFile::exists(at(u"one.mp3"_s)));
    }

    void theCurrentRowStaysTheOneOfTheSameFile()
    {
        for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
            addFile(name + u".mp3"_s, titled(u"z "_s + name));
        open(path());
        clickRow(1);
        tabs()->setCurrentIndex(3);
        control<QRadioButton>(u"op3"_s)->click();
        control<QComboBox>(u"tavanzado"_s)->setEditText(u"%3"_s);
        press(u"Command2"_s);
        QCOMPARE(list()->rowTexts(), QStringList({u"a.mp3"_s, u"c.mp3"_s, u"z b.mp3"_s}));
        QCOMPARE(list()->currentRowText(), u"z b.mp3"_s);
        tabs()->setCurrentIndex(0);
        QCOMPARE(field(u"Ttitulo"_s), u"z b"_s);
    }

    void onlySelectedRowsAreRenamed()
    {
        addFile(u"a.mp3"_s, titled(u"one"_s));
        addFile(u"b.mp3"_s, titled(u"two"_s));
        open(path());
        clickRow(1);
        tabs()->setCurrentIndex(3);
        control<QRadioButton>(u"op3"_s)->click();
        control<QComboBox>(u"tavanzado"_s)->setEditText(u"%3"_s);
        press(u"Command2"_s);
        QCOMPARE(list()->rowTexts(), QStringList({u"a.mp3"_s, u"two.mp3"_s}));
    }

    void aSubfoldersRowIsRenamedInItsFolder()
    {
        addFile(u"sub/a.mp3"_s, titled(u"one"_s));
        open(path());
        QTest::keyClick(tree(), Qt::Key_F2);
        QCOMPARE(list()->rowTexts(), QStringList{native(u"sub/a.mp3"_s)});
        tabs()->setCurrentIndex(3);
        control<QRadioButton>(u"op3"_s)->click();
        control<QComboBox>(u"tavanzado"_s)->setEditText(u"%3"_s);
        press(u"Command2"_s);
        QVERIFY(QFile::exists(at(u"sub/one.mp3"_s)));
    }

    void treeAndListFollowTheRenamedFolder()
    {
        addAlbum();
        open(at(u"music"_s));
        QWidget *dialog = openDialog();
        in<QCheckBox>(dialog, u"Check1"_s)->click();
        in<QPushButton>(dialog, u"OKButton"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(tree()->path(), at(u"Band - Live"_s), 30000);
        QCOMPARE(list()->rowTexts(), QStringList({u"1.mp3"_s, u"2.mp3"_s}));
        QCOMPARE(m_program->state.currentFolder, at(u"Band - Live/"_s));
        QVERIFY(!QFile::exists(at(u"music"_s)));
        QVERIFY(QFile::exists(at(u"Band - Live/1.mp3"_s)));
    }

    void aFolderWhoseNewNameIsTakenStaysAndTheUserIsToldBefore()
    {
        addAlbum();
        addFile(u"Band - Live/4.mp3"_s);
        open(at(u"music"_s));
        QWidget *dialog = openDialog();
        in<QCheckBox>(dialog, u"Check1"_s)->click();
        QCOMPARE(
            in<QLabel>(dialog, u"newName"_s)->text(), u"Band - Live\na file or folder of that name exists already"_s);
        in<QPushButton>(dialog, u"OKButton"_s)->click();
        QVERIFY(!dialog->isVisible());
        QCOMPARE(tree()->path(), at(u"music"_s));
        QVERIFY(QFile::exists(at(u"music/1.mp3"_s)));
        QVERIFY(QFile::exists(at(u"Band - Live/4.mp3"_s)));
    }

    void aFolderWhoseNewNameIsTakenGetsANumber()
    {
        addAlbum();
        addFile(u"Band - Live/4.mp3"_s);
        open(at(u"music"_s));
        QWidget *dialog = openDialog();
        in<QCheckBox>(dialog, u"Check1"_s)->click();
        in<QRadioButton>(dialog, u"takenNumber"_s)->click();
        in<QPushButton>(dialog, u"OKButton"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(tree()->path(), at(u"Band - Live (2)"_s), 30000);
        QVERIFY(QFile::exists(at(u"Band - Live (2)/1.mp3"_s)));
        QVERIFY(QFile::exists(at(u"Band - Live/4.mp3"_s)));
    }

    void aFolderIsNotPutIntoItself()
    {
        addAlbum();
        open(at(u"music"_s));
        QWidget *dialog = openDialog();
        in<QCheckBox>(dialog, u"Check2"_s)->click();
        in<QComboBox>(dialog, u"avanzado"_s)->setEditText(u"music/a/b/%2"_s);
        QString told;
        whenOpened(u"error"_s, [&told](QWidget *box) {
            told = box->property("text").toString();
            box->close();
        });
        in<QPushButton>(dialog, u"OKButton"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(told, u"a folder cannot be put into itself or into a folder inside it"_s, 30000);
        QCOMPARE(tree()->path(), at(u"music"_s));
        QVERIFY(!QFile::exists(at(u"music/a"_s)));
    }

    void theButtonOfTheFolderBearsItsCaption()
    {
        open();
        speak(u"spanish"_s);
        QCOMPARE(control<QToolButton>(u"tb_7"_s)->defaultAction()->text(), u"renombrar directorio"_s);
    }

    void theChoicesOfThePagesAreFoundAsLeft()
    {
        open();
        control<QRadioButton>(u"op3"_s)->click();
        control<QComboBox>(u"tavanzado"_s)->setEditText(u"%4 %3"_s);
        for (const QString &pair : {u"0"_s, u"1"_s, u"3"_s, u"4"_s}) {
            tick(u"op4_"_s + pair);
            control<QComboBox>(u"ccase_"_s + pair)->setCurrentIndex(0);
        }
        closeWindow();
        QCOMPARE(stored(settingskey::Rename), u"3"_s);
        QCOMPARE(stored(settingskey::RenameVar), u"%4 %3"_s);
        for (const QStringView key :
            {settingskey::RenameCase, settingskey::MultiCase, settingskey::RenameReplace, settingskey::MultiReplace})
            QCOMPARE(stored(key), u"0"_s);
        open();
        QVERIFY(control<QRadioButton>(u"op3"_s)->isChecked());
        QCOMPARE(control<QComboBox>(u"tavanzado"_s)->currentText(), u"%4 %3"_s);
        for (const QString &pair : {u"0"_s, u"1"_s, u"3"_s, u"4"_s}) {
            QVERIFY(control<QCheckBox>(u"op4_"_s + pair)->isChecked());
            QCOMPARE(control<QComboBox>(u"ccase_"_s + pair)->currentIndex(), 0);
        }
    }

    void withAnEmptyStoreOp2IsChosenAndAllBoxesStayUnticked()
    {
        open();
        QVERIFY(control<QRadioButton>(u"op2"_s)->isChecked());
        for (int pair = 0; pair < 5; ++pair) {
            QVERIFY(!control<QCheckBox>(u"op4_%1"_s.arg(pair))->isChecked());
            QCOMPARE(control<QComboBox>(u"ccase_%1"_s.arg(pair))->currentIndex(), 1);
        }
        const auto *genres = control<QComboBox>(u"cmestilo"_s);
        QCOMPARE(genres->itemText(0), QString());
        QCOMPARE(genres->itemText(1), u"Blues"_s);
    }

    void usedPatternsAreOfferedAtTheNextStart()
    {
        addFile(u"a.mp3"_s);
        open(path());
        control<QComboBox>(u"tpatron"_s)->setEditText(u"%1 - %3"_s);
        press(u"extrae"_s);
        closeWindow();
        open();
        QCOMPARE(control<QComboBox>(u"tpatron"_s)->itemText(0), u"%1 - %3"_s);
        QCOMPARE(control<QComboBox>(u"tpatron"_s)->currentText(), QString());
    }

    void thePagesLeaveTheListItsPlace_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("700 x 500") << QSize(700, 500);
        QTest::newRow("1000 x 700") << QSize(1000, 700);
        QTest::newRow("1920 x 1000") << QSize(1920, 1000);
    }
    void thePagesLeaveTheListItsPlace()
    {
        QFETCH(QSize, size);
        open({}, size);
        for (const QString &language : {u"english"_s, u"spanish"_s, u"french"_s}) {
            speak(language);
            for (int tab = 0; tab < tabs()->count(); ++tab) {
                tabs()->setCurrentIndex(tab);
                QCoreApplication::processEvents();
                QVERIFY(list()->height() * 5 >= m_window->height() * 2);
            }
        }
    }
};

QTEST_MAIN(TestBatchPages)
#include "tst_batchpages.moc"
