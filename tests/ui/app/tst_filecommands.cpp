// SPDX-License-Identifier: GPL-3.0-or-later
// The commands for files and folders in the real window, on real files: the questions and the effect of each answer,
// the files afterwards, and where tree and list go if their folder is gone.

#include "core/app/showntext.h"
#include "core/files/list/listcolumns.h"
#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "ui/app/commandsfixture.h"

using namespace ravlin;
using namespace ravlin::test;

class TestFileCommands : public CommandsFixture
{
    Q_OBJECT

private:
    /// What the last operation reports; empty if nothing is shown.
    QString report() const
    {
        const auto *label = control<QLabel>(u"report"_s);
        return label->isVisible() ? label->accessibleName() : QString();
    }

private Q_SLOTS:
    void init() { beginTest(); }
    void cleanup() { endTest(); }

    // Deleting

    void deletesTheSelectedFilesAfterAYes_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("button 9") << u"button tb_9"_s;
        QTest::newRow("Delete key on the list") << u"list Del"_s;
    }
    void deletesTheSelectedFilesAfterAYes()
    {
        QFETCH(QString, way);
        openThree();
        selectRows({u"a.mp3"_s, u"c.mp3"_s});
        answerWith({u"yes"_s});
        run(way);
        QCOMPARE(m_said, QStringList{u"put 2 files into the trash?\na.mp3\nc.mp3"_s});
        QCOMPARE(list()->rowTexts(), QStringList{u"b.mp3"_s});
        QVERIFY(!exists(u"music/a.mp3"_s));
        QVERIFY(contentOf(trashFolder() + u"/info/a.mp3.trashinfo"_s).contains("/music/a.mp3\n"));
        QCOMPARE(contentOf(inTrash(u"c.mp3"_s)), titled(u"title c"_s));
    }

    void aNoLeavesFilesListAndSelectionAsTheyAre()
    {
        openThree();
        selectRows({u"b.mp3"_s});
        answerWith({u"no"_s});
        QTest::keyClick(list(), Qt::Key_Delete);
        QCOMPARE(m_said, QStringList{u"put “b.mp3” into the trash?\n"_s});
        QVERIFY(exists(u"music/b.mp3"_s));
        QCOMPARE(list()->selectedRows(), std::vector<int>{1});
        QVERIFY(!action(u"undo"_s)->isEnabled());
    }

    void whatIsGoneIsSaidToBeAndLeavesTheList()
    {
        openThree();
        selectRows({u"b.mp3"_s});
        QVERIFY(QFile::remove(at(u"music/b.mp3"_s)));
        answerWith({u"outcomeOk"_s});
        QTest::keyClick(list(), Qt::Key_Delete);
        QCOMPARE(m_said.size(), 1); // no question
        QVERIFY2(m_said.front().contains(u"b.mp3: it is gone"_s), qPrintable(m_said.front()));
        QCOMPARE(list()->rowTexts(), (QStringList{u"a.mp3"_s, u"c.mp3"_s}));
    }

    void deletesTheFolderAndGoesToTheNearestOneThatIsLeft_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("Delete key on the tree") << u"tree Del"_s;
        QTest::newRow("bcarpeta") << u"menu tb_bcarpeta"_s;
        QTest::newRow("its own key") << u"list Shift+F8"_s;
    }
    void deletesTheFolderAndGoesToTheNearestOneThatIsLeft()
    {
        QFETCH(QString, way);
        addFile(u"above.mp3"_s, titled(u"above"_s));
        openThree();
        activate();
        answerWith({u"yes"_s});
        run(way);
        QCOMPARE(m_said, QStringList{u"put the folder “music” into the trash, with all that is in it?\n"_s});
        QVERIFY(!exists(u"music"_s));
        QVERIFY(QFileInfo(inTrash(u"music/a.mp3"_s)).isFile());
        QCOMPARE(tree()->path(), path());
        QCOMPARE(list()->rowTexts(), QStringList{u"above.mp3"_s});
        QCOMPARE(m_program->state.currentFolder, path() + QDir::separator());
    }

    // Moving and copying

    void movesTheSelectedFilesToTheChosenFolder_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("mover") << u"menu tb_mover"_s;
        QTest::newRow("its key") << u"list F6"_s;
    }
    void movesTheSelectedFilesToTheChosenFolder()
    {
        QFETCH(QString, way);
        openThree();
        activate();
        selectRows({u"a.mp3"_s, u"b.mp3"_s});
        run(way);
        QCOMPARE(list()->rowTexts(), QStringList{u"c.mp3"_s});
        QCOMPARE(content(u"target/a.mp3"_s), titled(u"title a"_s));
        QVERIFY(!exists(u"music/b.mp3"_s));
        QVERIFY(m_said.isEmpty());
    }

    void copiesARowOfASubfolderFromThere()
    {
        addFile(u"music/x1/a.mp3"_s, titled(u"deep"_s));
        openThree();
        QTest::keyClick(tree(), Qt::Key_F2);
        const QString row = QDir::toNativeSeparators(u"x1/a.mp3"_s);
        QCOMPARE(list()->rowTexts(), (QStringList{u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s, row}));
        selectRows({row});
        action(u"tb_copiar"_s)->trigger();
        QCOMPARE(content(u"target/a.mp3"_s), titled(u"deep"_s));
        QCOMPARE(content(u"music/x1/a.mp3"_s), titled(u"deep"_s));
    }

    void aCancelledChoiceDoesNothing()
    {
        openThree();
        selectRows({u"b.mp3"_s});
        m_destination.clear();
        for (const QString &key : {u"mover"_s, u"copiar"_s, u"mcarpeta"_s, u"ccarpeta"_s})
            action(u"tb_"_s + key)->trigger();
        QCOMPARE(m_starts.size(), 4);
        QCOMPARE(list()->selectedRows(), std::vector<int>{1});
        QCOMPARE(QDir(at(u"target"_s)).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());
    }

    void theNextChoiceBeginsWhereTheLastOneEnded()
    {
        openThree();
        action(u"tb_copiar"_s)->trigger();
        selectRows({});
        selectRows({u"a.mp3"_s});
        m_destination.clear();
        action(u"tb_mover"_s)->trigger();
        QCOMPARE(m_starts.front(), at(u"music"_s) + QDir::separator());
        QCOMPARE(m_starts.back(), at(u"target"_s) + QDir::separator());
        QDir(at(u"target"_s)).removeRecursively();
        action(u"tb_mover"_s)->trigger();
        QCOMPARE(m_starts.back(), path() + QDir::separator());
    }

    void movesTheFolderAndGoesToTheNearestOneThatIsLeft()
    {
        openThree();
        action(u"tb_mcarpeta"_s)->trigger();
        QVERIFY(!exists(u"music"_s));
        QCOMPARE(content(u"target/music/b.mp3"_s), titled(u"title b"_s));
        QCOMPARE(tree()->path(), path());
        QCOMPARE(list()->rowCount(), 0);
    }

    void theUndoneMoveOfTheFolderLeadsBackToIt_data()
    {
        QTest::addColumn<QString>("between");
        QTest::newRow("at once") << QString();
        QTest::newRow("from where it went") << u"target/music"_s;
        QTest::newRow("from elsewhere") << u"target"_s;
    }
    void theUndoneMoveOfTheFolderLeadsBackToIt()
    {
        QFETCH(QString, between);
        openThree();
        action(u"tb_mcarpeta"_s)->trigger();
        if (!between.isEmpty())
            tree()->setPath(at(between));
        action(u"undo"_s)->trigger();
        QVERIFY(!exists(u"target/music"_s));
        QCOMPARE(tree()->path(), at(u"music"_s));
        QCOMPARE(m_program->state.currentFolder, at(u"music"_s) + QDir::separator());
        QCOMPARE(list()->rowCount(), 3);
        QCOMPARE(list()->selectedRows().size(), std::size_t{3});
    }

    void theUndoneMoveOfFilesLeavesTheTreeWhereItIs()
    {
        openThree();
        selectRows({u"a.mp3"_s});
        action(u"tb_mover"_s)->trigger();
        tree()->setPath(at(u"target"_s));
        QCOMPARE(list()->rowTexts(), QStringList{u"a.mp3"_s});
        action(u"undo"_s)->trigger();
        QVERIFY(exists(u"music/a.mp3"_s));
        QCOMPARE(tree()->path(), at(u"target"_s));
        QCOMPARE(list()->rowCount(), 0);
    }

    void theMoveOfAFolderThatIsNoUnicodeIsUndoneThereToo()
    {
        const QString folder = at(platform::decodePath(QByteArray("mus\xff")));
        if (!platform::FileSystem::native().createFolder(folder))
            QSKIP("this file system takes Unicode names only");
        QDir(path()).mkdir(u"target"_s);
        m_destination = at(u"target"_s);
        openAt(folder);
        QCOMPARE(tree()->path(), folder);
        action(u"tb_mcarpeta"_s)->trigger();
        QCOMPARE(tree()->path(), path());
        action(u"undo"_s)->trigger();
        QCOMPARE(tree()->path(), folder);
        const auto place = platform::placeAt(platform::FileSystem::native(), folder);
        QVERIFY(place && place->folder->removeFolder(place->name)); // QTemporaryDir can't
    }

    void copiesTheFolder()
    {
        openThree();
        action(u"tb_ccarpeta"_s)->trigger();
        QCOMPARE(content(u"target/music/b.mp3"_s), titled(u"title b"_s));
        QCOMPARE(tree()->path(), at(u"music"_s));
        QCOMPARE(list()->rowCount(), 3);
    }

    void aFolderDoesNotGoIntoItself()
    {
        openThree();
        QDir(at(u"music"_s)).mkdir(u"below"_s);
        m_destination = at(u"music/below"_s);
        answerWith({u"outcomeOk"_s});
        action(u"tb_mcarpeta"_s)->trigger();
        QCOMPARE(m_said.size(), 1);
        QVERIFY2(m_said.front().contains(u"moved: 0; not moved: 1"_s), qPrintable(m_said.front()));
        QVERIFY2(m_said.front().contains(u"music: a folder cannot be put into itself"_s), qPrintable(m_said.front()));
        QCOMPARE(list()->rowCount(), 3);
    }

    // A name that is taken

    void aTakenNameIsAskedAbout_data()
    {
        QTest::addColumn<QStringList>("answers");
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<QString>("numbered");
        QTest::newRow("replace") << QStringList{u"takenNameReplace"_s, u"takenNameSkip"_s} << u"new"_s << u"old"_s
                                 << QString();
        QTest::newRow("replace all") << QStringList{u"takenNameForAll+takenNameReplace"_s} << u"new"_s << u"new"_s
                                     << QString();
        QTest::newRow("skip all") << QStringList{u"takenNameForAll+takenNameSkip"_s} << u"old"_s << u"old"_s
                                  << QString();
        QTest::newRow("keep both") << QStringList{u"takenNameKeepBoth"_s, u"takenNameSkip"_s} << u"old"_s << u"old"_s
                                   << u"new"_s;
        QTest::newRow("call off") << QStringList{u"takenNameReplace"_s, u"takenNameCancel"_s} << u"old"_s << u"old"_s
                                  << QString();
    }
    void aTakenNameIsAskedAbout()
    {
        QFETCH(QStringList, answers);
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(QString, numbered);
        for (const QString &name : {u"a.mp3"_s, u"b.mp3"_s}) {
            addFile(u"music/"_s + name, titled(u"new"_s));
            addFile(u"target/"_s + name, titled(u"old"_s));
        }
        m_destination = at(u"target"_s);
        openAt(at(u"music"_s));
        answerWith(answers);
        action(u"tb_copiar"_s)->trigger();
        QVERIFY2(m_said.front().contains(u"“a.mp3” exists already in “target”"_s), qPrintable(m_said.front()));
        QCOMPARE(content(u"target/a.mp3"_s), titled(a));
        QCOMPARE(content(u"target/b.mp3"_s), titled(b));
        QCOMPARE(exists(u"target/a (2).mp3"_s), !numbered.isEmpty());
        QCOMPARE(content(u"music/a.mp3"_s), titled(u"new"_s));
    }

    void undoBringsBackWhatWasReplaced()
    {
        if (!givesBackFromTrash())
            QSKIP("the shell does not tell where in the trash a file is");
        addFile(u"music/a.mp3"_s, titled(u"new"_s));
        addFile(u"target/a.mp3"_s, titled(u"old"_s));
        m_destination = at(u"target"_s);
        openAt(at(u"music"_s));
        answerWith({u"takenNameReplace"_s});
        action(u"tb_mover"_s)->trigger();
        QVERIFY2(m_said.front().contains(u"a replaced file goes into the trash"_s), qPrintable(m_said.front()));
        QCOMPARE(content(u"target/a.mp3"_s), titled(u"new"_s));
        action(u"undo"_s)->trigger();
        QCOMPARE(m_said.size(), 1); // nothing is left to be told
        QCOMPARE(content(u"target/a.mp3"_s), titled(u"old"_s));
        QCOMPARE(content(u"music/a.mp3"_s), titled(u"new"_s));
    }

    // Playlists

    void writesThePlaylistOfTheSelectedRows_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("button 3") << u"button tb_3"_s;
        QTest::newRow("lista") << u"menu tb_lista"_s;
        QTest::newRow("Shift+L on the list") << u"list Shift+L"_s;
    }
    void writesThePlaylistOfTheSelectedRows()
    {
        QFETCH(QString, way);
        openThree();
        selectRows({u"a.mp3"_s, u"c.mp3"_s});
        run(way);
        QCOMPARE(content(u"music/lista.m3u"_s), QByteArray("a.mp3\r\nc.mp3\r\n"));
        QCOMPARE(list()->selectedRows(), (std::vector<int>{0, 2})); // it is not listed again
        QCOMPARE(report(), u"playlist written: lista.m3u"_s);
    }

    void thePanelsStayWhileAnOperationReports()
    {
        openThree();
        clickRow(1);
        QCOMPARE(report(), QString());
        run(u"list Shift+L"_s);
        QCoreApplication::processEvents();
        QCOMPARE(report(), u"playlist written: lista.m3u"_s);
        QCOMPARE(control<QLabel>(u"report"_s)->text(), report()); // in full
        QCOMPARE(panel(1), u"3 files"_s);
        QCOMPARE(panel(2), at(u"music/b.mp3"_s));
        for (const QString &name : {u"panel1"_s, u"panel2"_s}) {
            const auto *label = control<QLabel>(name);
            QVERIFY2(label->isVisible() && !label->visibleRegion().isEmpty(), qPrintable(name));
        }
        QCOMPARE(control<QLabel>(u"panel1"_s)->text(), u"3 files"_s);
        clickRow(2); // so does what changes meanwhile
        QCOMPARE(panel(2), at(u"music/c.mp3"_s));
        QTRY_COMPARE_WITH_TIMEOUT(report(), QString(), 30000);
        QCOMPARE(control<QLabel>(u"panel1"_s)->text(), u"3 files"_s);
    }

    void aRowThatNoLineCanHoldIsNamedWithTheReason_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("written") << u"list Shift+L"_s;
        QTest::newRow("played") << u"list Shift+P"_s;
    }
    void aRowThatNoLineCanHoldIsNamedWithTheReason()
    {
        QFETCH(QString, way);
        if (platform::Separator == u'\\')
            QSKIP("no name has a line break on this system");
        addFile(u"music/d\ne.mp3"_s);
        openThree();
        run(way);
        auto *box = control<QDialog>(u"outcome"_s);
        QVERIFY(box->isVisible());
        QCOMPARE(box->findChild<QLabel *>(u"outcomeHeadline"_s)->text(), u"files left out of the playlist: 1"_s);
        const auto *lines = box->findChild<QListWidget *>(u"outcomeLines"_s);
        QCOMPARE(lines->count(), 1);
        QCOMPARE(lines->item(0)->text(), shownName(u"d\ne.mp3"_s) + u": a line of the list can't hold a line break"_s);
        const QString written = way.endsWith(u'L') ? at(u"music/lista.m3u"_s) : playListPath();
        QCOMPARE(contentOf(written).count("\r\n"), 3);
        box->close();
        selectRows({u"a.mp3"_s});
        QTRY_VERIFY_WITH_TIMEOUT(m_window->findChild<QDialog *>(u"outcome"_s) == nullptr, 30000);
        run(way);
        QVERIFY(m_window->findChild<QDialog *>(u"outcome"_s) == nullptr);
    }

    void thePlaylistBearsTheNameOfTheTagThatWasReadLast()
    {
        addTagged(u"music/1.mp3"_s, u"Artista"_s, u"Disco"_s);
        addTagged(u"music/2.mp3"_s, QString(), u"A/B"_s);
        addTagged(u"music/3.mp3"_s, u"Solo"_s, QString());
        openAt(at(u"music"_s));
        run(u"button tb_3"_s); // no click yet: the last listed file
        QVERIFY(exists(u"music/Solo.m3u"_s));
        clickRow(0);
        run(u"list Shift+L"_s);
        QVERIFY(exists(u"music/Artista - Disco.m3u"_s));
        clickRow(1);
        run(u"list Shift+L"_s);
        QCOMPARE(content(u"music/AB.m3u"_s), QByteArray("2.mp3\r\n"));
    }

    void withoutSelectedRowsAnEmptyListIsWritten()
    {
        openThree();
        list()->selectNone();
        action(u"tb_lista"_s)->trigger();
        QCOMPARE(content(u"music/lista.m3u"_s), QByteArray());
    }

    void rowsOfSubfoldersKeepTheirPathsInTheList()
    {
        addFile(u"music/x1/d.mp3"_s);
        openThree();
        QTest::keyClick(tree(), Qt::Key_F2);
        run(u"list Shift+L"_s);
        const QByteArray row = QDir::toNativeSeparators(u"x1/d.mp3"_s).toUtf8();
        QCOMPARE(content(u"music/lista.m3u"_s), "a.mp3\r\nb.mp3\r\nc.mp3\r\n" + row + "\r\n");
        run(u"list Shift+P"_s);
        QVERIFY(contentOf(m_played.value(0)).contains(QFile::encodeName(at(u"music/x1/d.mp3"_s)) + "\r\n"));
    }

    void playsTheSelectedRows_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("button 5") << u"button tb_5"_s;
        QTest::newRow("play") << u"menu tb_play"_s;
        QTest::newRow("Shift+P on the list") << u"list Shift+P"_s;
    }
    void playsTheSelectedRows()
    {
        QFETCH(QString, way);
        openThree();
        run(way);
        selectRows({u"b.mp3"_s});
        run(way);
        QCOMPARE(m_played, (QStringList{playListPath(), playListPath()}));
        QCOMPARE(contentOf(playListPath()), QFile::encodeName(at(u"music/b.mp3"_s)) + "\r\n");
    }

    void deletesThePlaylistsOfTheFolder_data()
    {
        QTest::addColumn<QString>("way");
        QTest::newRow("blistas") << u"menu tb_blistas"_s;
        QTest::newRow("Shift+B on the list") << u"list Shift+B"_s;
    }
    void deletesThePlaylistsOfTheFolder()
    {
        QFETCH(QString, way);
        addFile(u"music/one.m3u"_s, "x");
        addFile(u"music/TWO.M3U"_s, "x");
        openThree();
        answerWith({u"yes"_s});
        run(way);
        QVERIFY2(m_said.front().startsWith(u"put 2 files into the trash?"_s), qPrintable(m_said.front()));
        QVERIFY(!exists(u"music/one.m3u"_s) && !exists(u"music/TWO.M3U"_s));
        QVERIFY(QFileInfo::exists(inTrash(u"one.m3u"_s)));
        run(u"list Shift+B"_s); // none is left: no question
        QVERIFY(exists(u"music/a.mp3"_s));
    }

    void theMenusKnowWhetherThereArePlaylists()
    {
        openThree();
        QMenu *menu = control<QToolButton>(u"tb_3"_s)->menu();
        Q_EMIT menu->aboutToShow();
        QVERIFY(!action(u"tb_blistas"_s)->isEnabled());
        addFile(u"music/one.m3u"_s, "x");
        Q_EMIT menu->aboutToShow();
        QVERIFY(action(u"tb_blistas"_s)->isEnabled());
    }
};

QTEST_MAIN(TestFileCommands)
#include "tst_filecommands.moc"
