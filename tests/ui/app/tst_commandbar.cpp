// SPDX-License-Identifier: GPL-3.0-or-later
// Every button of the toolbar with its menu, when commands are disabled, the context menus, undo, and the saved
// patterns.

#include "ui/app/commandsfixture.h"
#include "ui/naming/patternbox.h"

using namespace ravlin;
using namespace ravlin::test;

class TestCommandBar : public CommandsFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { beginTest(); }
    void cleanup() { endTest(); }

    // The toolbar

    void theToolbarHasItsButtonsAndTheirMenusByKey()
    {
        openThree();
        QCOMPARE(menuOf(1), QStringList{u"tb_freedb"_s});
        QCOMPARE(menuOf(3), (QStringList{u"tb_lista"_s, u"tb_blistas"_s}));
        QCOMPARE(menuOf(5), QStringList{u"tb_play"_s});
        QCOMPARE(menuOf(7), (QStringList{u"tb_mcarpeta"_s, u"tb_ccarpeta"_s, u"tb_bcarpeta"_s}));
        QCOMPARE(menuOf(9), (QStringList{u"tb_mover"_s, u"tb_copiar"_s}));
        QCOMPARE(menuOf(12), QStringList{u"tb_none"_s});
        QVERIFY(control<QToolButton>(u"tb_14"_s)->menu() == nullptr);
        QVERIFY(control<QToolButton>(u"tb_16"_s)->menu() == nullptr);
    }

    void everyCommandTellsItsCaptionAndItsKey_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("tip");
        QTest::newRow("1") << u"1"_s << u"get album titles from freedb (F3)"_s;
        QTest::newRow("freedb") << u"tb_freedb"_s << u"get album titles from freedb (F3)"_s;
        QTest::newRow("3") << u"3"_s << u"save files to m3u playlist (Shift+L)"_s;
        QTest::newRow("lista") << u"tb_lista"_s << u"save files to m3u playlist (Shift+L)"_s;
        QTest::newRow("blistas") << u"tb_blistas"_s << u"delete m3u lists (Shift+B)"_s;
        QTest::newRow("5") << u"5"_s << u"play files (Shift+P)"_s;
        QTest::newRow("play") << u"tb_play"_s << u"play files (Shift+P)"_s;
        QTest::newRow("7") << u"7"_s << u"rename dir (F8)"_s;
        QTest::newRow("mcarpeta") << u"tb_mcarpeta"_s << u"move folder (Shift+F6)"_s;
        QTest::newRow("ccarpeta") << u"tb_ccarpeta"_s << u"copy folder (Shift+F7)"_s;
        QTest::newRow("9") << u"9"_s << u"delete selected files (Del)"_s;
        QTest::newRow("mover") << u"tb_mover"_s << u"move files (F6)"_s;
        QTest::newRow("copiar") << u"tb_copiar"_s << u"copy files (F7)"_s;
        QTest::newRow("bcarpeta") << u"tb_bcarpeta"_s << u"delete folder (Shift+F8)"_s;
        QTest::newRow("12") << u"12"_s << u"select all (Ctrl+A)"_s;
        QTest::newRow("none") << u"tb_none"_s << u"select none (Ctrl+Shift+A)"_s;
        QTest::newRow("14") << u"14"_s << u"saved patterns (F9)"_s;
        QTest::newRow("undo") << u"undo"_s << u"undo (Ctrl+Z)"_s;
    }
    void everyCommandTellsItsCaptionAndItsKey()
    {
        QFETCH(QString, command);
        QFETCH(QString, tip);
        openThree();
        const int position = command.toInt();
        QCOMPARE((position > 0 ? buttonAction(position) : action(command))->toolTip(), tip);
    }

    void withoutRowsWhatWorksOnFilesIsDisabled()
    {
        QDir(path()).mkdir(u"empty"_s);
        openAt(at(u"empty"_s));
        for (const int position : {1, 3, 5, 9, 12})
            QVERIFY2(!buttonAction(position)->isEnabled(), qPrintable(QString::number(position)));
        for (const QString &key : {u"freedb"_s, u"mover"_s, u"copiar"_s, u"none"_s})
            QVERIFY2(!action(u"tb_"_s + key)->isEnabled(), qPrintable(key));
        for (const QString &key : {u"lista"_s, u"play"_s, u"bcarpeta"_s, u"mcarpeta"_s, u"ccarpeta"_s})
            QVERIFY2(action(u"tb_"_s + key)->isEnabled(), qPrintable(key));
        QVERIFY(buttonAction(7)->isEnabled());
        // A disabled command leaves its button's menu enabled, unless all entries are disabled.
        QVERIFY(control<QToolButton>(u"tb_3"_s)->isEnabled());
        control<QToolButton>(u"tb_3"_s)->click();
        QVERIFY(control<QToolButton>(u"tb_3"_s)->menu()->isVisible());
        control<QToolButton>(u"tb_3"_s)->menu()->close();
        for (const int position : {9, 12})
            QVERIFY2(
                !control<QToolButton>(u"tb_%1"_s.arg(position))->isEnabled(), qPrintable(QString::number(position)));
    }

    void withoutSelectedRowsNoClickLeadsToDeletingTheFolder_data()
    {
        QTest::addColumn<bool>("hasRows");
        QTest::newRow("nothing selected") << true;
        QTest::newRow("nothing listed") << false;
    }
    void withoutSelectedRowsNoClickLeadsToDeletingTheFolder()
    {
        QFETCH(bool, hasRows);
        openThree();
        if (!hasRows)
            tree()->setPath(at(u"target"_s));
        QStringList opened;
        for (QToolButton *button : control(u"tb"_s)->findChildren<QToolButton *>()) {
            QMenu *menu = button->menu();
            if (menu == nullptr || button->defaultAction() == buttonAction(7))
                continue; // opens a window of its own
            list()->selectNone();
            button->click();
            if (!menu->isVisible())
                continue;
            opened << button->objectName();
            QVERIFY2(!menu->actions().contains(action(u"tb_bcarpeta"_s)), qPrintable(button->objectName()));
            menu->close();
        }
        QCOMPARE(opened, hasRows ? QStringList() : (QStringList{u"tb_3"_s, u"tb_5"_s}));
        list()->selectNone();
        for (const QString &key : {u"list Del"_s, u"list F6"_s, u"list F7"_s})
            run(key); // no question, no dialog
        QVERIFY(m_starts.isEmpty());
        QVERIFY(exists(u"music/a.mp3"_s) && exists(u"target"_s));
    }

    void withoutSelectedRowsOnlyWhatNeedsThemIsDisabled()
    {
        openThree();
        for (const int position : {1, 3, 5, 7, 9, 12, 14})
            QVERIFY2(buttonAction(position)->isEnabled(), qPrintable(QString::number(position)));
        action(u"tb_none"_s)->trigger();
        QVERIFY(list()->selectedRows().empty());
        for (const int position : {3, 5, 12})
            QVERIFY2(buttonAction(position)->isEnabled(), qPrintable(QString::number(position)));
        QVERIFY(!buttonAction(1)->isEnabled());
        QVERIFY(!buttonAction(9)->isEnabled());
        for (const QString &key : {u"freedb"_s, u"mover"_s, u"copiar"_s, u"none"_s})
            QVERIFY2(!action(u"tb_"_s + key)->isEnabled(), qPrintable(key));
        control<QToolButton>(u"tb_12"_s)->click();
        QCOMPARE(list()->selectedRows(), (std::vector<int>{0, 1, 2}));
        QVERIFY(buttonAction(9)->isEnabled());
    }

    void atTheRootOfADriveTheFolderIsLeftAlone()
    {
        openAt(QDir::rootPath());
        QVERIFY(!buttonAction(7)->isEnabled());
        for (const QString &key : {u"bcarpeta"_s, u"mcarpeta"_s, u"ccarpeta"_s})
            QVERIFY2(!action(u"tb_"_s + key)->isEnabled(), qPrintable(key));
        QTest::keyClick(tree(), Qt::Key_Delete); // shows no question
    }

    void withoutAFolderNothingIsThereToActOn()
    {
        openAt({});
        for (const int position : {1, 3, 5, 7, 9, 12})
            QVERIFY2(
                !control<QToolButton>(u"tb_%1"_s.arg(position))->isEnabled(), qPrintable(QString::number(position)));
        for (const QString &key : {u"list Shift+L"_s, u"list Shift+P"_s, u"list Shift+B"_s, u"list Del"_s})
            run(key);
        QVERIFY(m_played.isEmpty());
    }

    // Undo

    void undoesOneAfterTheOther()
    {
        openThree();
        selectRows({u"a.mp3"_s});
        action(u"tb_mover"_s)->trigger();
        QCOMPARE(action(u"undo"_s)->text(), u"undo moving"_s);
        selectRows({u"b.mp3"_s});
        action(u"tb_copiar"_s)->trigger();
        QCOMPARE(action(u"undo"_s)->text(), u"undo copying"_s);
        if (givesBackFromTrash()) {
            selectRows({u"c.mp3"_s});
            answerWith({u"yes"_s});
            control<QToolButton>(u"tb_9"_s)->click();
            QCOMPARE(list()->rowTexts(), QStringList{u"b.mp3"_s});
            QCOMPARE(action(u"undo"_s)->text(), u"undo deleting"_s);
            activate();
            QTest::keySequence(list(), QKeySequence::Undo);
            QCOMPARE(action(u"undo"_s)->text(), u"undo copying"_s);
        }
        QCOMPARE(list()->rowTexts(), (QStringList{u"b.mp3"_s, u"c.mp3"_s}));
        activate();
        QTest::keySequence(list(), QKeySequence::Undo);
        QVERIFY(!exists(u"target/b.mp3"_s));
        action(u"undo"_s)->trigger();
        QCOMPARE(list()->rowTexts(), (QStringList{u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s}));
        QCOMPARE(content(u"music/a.mp3"_s), titled(u"title a"_s));
        QVERIFY(!action(u"undo"_s)->isEnabled());
        QCOMPARE(action(u"undo"_s)->text(), u"undo"_s);
    }

    void whatCanNotBeUndoneSaysWhy()
    {
        openThree();
        selectRows({u"a.mp3"_s});
        action(u"tb_mover"_s)->trigger();
        addFile(u"music/a.mp3"_s, titled(u"another"_s)); // takes the old name
        answerWith({u"outcomeOk"_s});
        action(u"undo"_s)->trigger();
        QVERIFY2(m_said.value(0).contains(u"undone: 0; not undone: 1"_s), qPrintable(m_said.value(0)));
        QVERIFY2(
            m_said.value(0).contains(u"a file or folder of that name exists already"_s), qPrintable(m_said.value(0)));
        QCOMPARE(content(u"target/a.mp3"_s), titled(u"title a"_s));
        QCOMPARE(content(u"music/a.mp3"_s), titled(u"another"_s));
    }

    void renamesOfTheRenamePageAreUndone()
    {
        store({{u"tags"_s, u"2"_s}, {u"rename"_s, u"3"_s}, {u"rename var"_s, u"%3"_s}});
        openThree();
        tabs()->setCurrentIndex(3);
        control<QPushButton>(u"Command2"_s)->click();
        QCOMPARE(list()->rowTexts(), (QStringList{u"title a.mp3"_s, u"title b.mp3"_s, u"title c.mp3"_s}));
        QCOMPARE(action(u"undo"_s)->text(), u"undo renaming"_s);
        action(u"undo"_s)->trigger();
        QCOMPARE(list()->rowTexts(), (QStringList{u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s}));
    }

    void theRenamingOfTheFolderIsUndoneAndTreeAndListFollow()
    {
        addTagged(u"music/1.mp3"_s, u"Band"_s, u"Live"_s);
        store({{u"tags"_s, u"2"_s}, {u"dir rename"_s, u"1"_s}});
        openAt(at(u"music"_s));
        control<QToolButton>(u"tb_7"_s)->click();
        control<QPushButton>(u"OKButton"_s)->click();
        QTRY_COMPARE_WITH_TIMEOUT(tree()->path(), at(u"Band - Live"_s), 30000);
        QTRY_VERIFY_WITH_TIMEOUT(action(u"undo"_s)->isEnabled(), 30000);
        QCOMPARE(action(u"undo"_s)->text(), u"undo renaming"_s);
        action(u"undo"_s)->trigger();
        QCOMPARE(tree()->path(), at(u"music"_s));
        QCOMPARE(list()->rowTexts(), QStringList{u"1.mp3"_s});
    }

    // Context menus

    void theRightButtonSelectsTheFirstTabAndOpensTheMenu()
    {
        openThree();
        tabs()->setCurrentIndex(1);
        clickRow(1, Qt::RightButton);
        QCOMPARE(tabs()->currentIndex(), 0);
        auto *menu = control<QMenu>(u"listMenu"_s);
        QVERIFY(menu->isVisible());
        menu->close();
        QContextMenuEvent byKey(QContextMenuEvent::Keyboard, QPoint(), list()->mapToGlobal(QPoint()));
        QApplication::sendEvent(list()->viewport(), &byKey);
        QVERIFY(menu->isVisible());
        menu->close();
    }

    void everyCommandIsInAContextMenu()
    {
        openThree();
        const QList<QAction *> inMenus =
            control<QMenu>(u"listMenu"_s)->actions() + control<QMenu>(u"treeMenu"_s)->actions();
        for (const QString &name :
            {u"tb_play"_s, u"tb_lista"_s, u"tb_blistas"_s, u"tb_mover"_s, u"tb_copiar"_s, u"tb_none"_s,
                u"tb_mcarpeta"_s, u"tb_ccarpeta"_s, u"tb_bcarpeta"_s, u"undo"_s, u"listTree"_s, u"refreshTree"_s})
            QVERIFY2(inMenus.contains(action(name)), qPrintable(name));
        for (const int position : {7, 9, 12, 14, 16})
            QVERIFY2(inMenus.contains(buttonAction(position)), qPrintable(QString::number(position)));
        const QPoint middle = tree()->viewport()->rect().center();
        QContextMenuEvent asked(QContextMenuEvent::Mouse, middle, tree()->viewport()->mapToGlobal(middle));
        QApplication::sendEvent(tree()->viewport(), &asked);
        QVERIFY(control<QMenu>(u"treeMenu"_s)->isVisible());
        control<QMenu>(u"treeMenu"_s)->close();
    }

    void theTreesMenuListsSubfoldersAndRefreshes()
    {
        addFile(u"music/cd1/d.mp3"_s);
        openThree();
        action(u"listTree"_s)->trigger();
        QCOMPARE(list()->rowCount(), 4);
        QDir(at(u"music"_s)).removeRecursively();
        action(u"refreshTree"_s)->trigger();
        QCOMPARE(tree()->path(), path());
    }

    // The saved patterns

    void editsTheSavedPatternsAndTheListsFollow()
    {
        store({{u"tags"_s, u"2"_s}, {u"extract pattern 1"_s, u"%1"_s}, {u"extract pattern 2"_s, u"%2"_s},
            {u"extract pattern 3"_s, u"%3"_s}, {u"rename pattern 1"_s, u"%4"_s}});
        openThree();
        auto *box = control<PatternBox>(u"tpatron"_s);
        box->setText(u"being typed"_s);
        control<QToolButton>(u"tb_14"_s)->click();
        auto *editor = control<QDialog>(u"patternEditor"_s);
        auto *patterns = control<QListWidget>(u"patternList"_s);
        QCOMPARE(patterns->count(), 3);
        QVERIFY(!control(u"patternUp"_s)->isEnabled());
        control<QPushButton>(u"patternDown"_s)->click(); // %2 %1 %3
        control<QPushButton>(u"patternDown"_s)->click(); // %2 %3 %1
        QVERIFY(!control(u"patternDown"_s)->isEnabled());
        QVERIFY(QTest::qWaitForWindowActive(editor, 30000));
        patterns->setFocus();
        patterns->setCurrentRow(0);
        QTest::keyClick(patterns, Qt::Key_Delete); // %3 %1
        QCOMPARE(patterns->count(), 2);
        control<QComboBox>(u"patternChoice"_s)->setCurrentIndex(1);
        QCOMPARE(patterns->item(0)->text(), u"%4"_s);
        control<QPushButton>(u"patternDelete"_s)->click();
        QVERIFY(!control(u"patternDelete"_s)->isEnabled());
        control<QPushButton>(u"patternSave"_s)->click();
        QVERIFY(!editor->isVisible());
        QCOMPARE(box->count(), 2);
        QCOMPARE(box->itemText(0), u"%3"_s);
        QCOMPARE(box->itemText(1), u"%1"_s);
        QCOMPARE(box->text(), u"being typed"_s);
        QCOMPARE(control<PatternBox>(u"tavanzado"_s)->count(), 0);
    }

    void aCancelKeepsTheSavedPatterns()
    {
        store({{u"tags"_s, u"2"_s}, {u"extract pattern 1"_s, u"%1"_s}});
        openThree();
        control<QToolButton>(u"tb_14"_s)->click();
        control<QPushButton>(u"patternDelete"_s)->click();
        control<QPushButton>(u"patternCancel"_s)->click();
        QCOMPARE(control<PatternBox>(u"tpatron"_s)->count(), 1);
        QCOMPARE(m_program->settings.read(u"extract pattern 1"), u"%1"_s);
    }
};

QTEST_MAIN(TestCommandBar)
#include "tst_commandbar.moc"
