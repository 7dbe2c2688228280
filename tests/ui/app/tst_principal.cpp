// SPDX-License-Identifier: GPL-3.0-or-later
// The main window at work on real files: what it shows after a listing, a click, a key, a save and a drop.

#include "support/filesteps.h"
#include "support/links.h"
#include "ui/app/principalfixture.h"
#include "ui/controls/busy.h"
#include "ui/controls/esperate.h"

#include <QAccessible>
#include <QDesktopServices>
#include <QHeaderView>
#include <QMessageBox>
#include <QMimeData>
#include <QScrollBar>
#include <QTimer>

#include <filesystem>
#include <functional>
#include <string>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestPrincipal : public PrincipalFixture
{
    Q_OBJECT

private:
    QUrl m_openedUrl;

    void addThree() const
    {
        for (const QString &name : {u"a"_s, u"b"_s, u"c"_s})
            addFile(name + u".mp3"_s, titled(u"title "_s + name));
    }
    /// So many files below the folder that a listing takes a while. Returns the number.
    int addMany() const
    {
        constexpr int Count = platform::Separator == u'\\' ? 2'000 : 20'000; // Windows makes them more slowly
        const std::filesystem::path file = addFile(u"below/0.mp3"_s, titled(u"many"_s)).toStdU16String();
        for (int i = 1; i < Count; ++i)
            std::filesystem::create_hard_link(file, file.parent_path() / (std::to_string(i) + ".mp3"));
        return Count;
    }
    /// Lists everything and, once some files are read, does something that stops it. On a busy machine the listing may
    /// have ended by then, so tries several times. Returns whether it was stopped.
    bool listTree(int count, const std::function<void()> &stop)
    {
        QTimer poll;
        poll.callOnTimeout(this, [&] {
            if (!m_window->findChild<Busy *>()->isRunning() || control<esperate>(u"esperate"_s)->value() == 0)
                return;
            poll.stop();
            stop();
        });
        for (int attempt = 0; attempt < 20; ++attempt) {
            m_program->tagCache.clear();
            poll.start(0);
            m_window->show();
            QTest::keyClick(tree(), Qt::Key_F2);
            if (list()->rowCount() < count)
                return true;
        }
        return false;
    }
    /// Drags this address over the widget and drops it there. Returns whether it was accepted, and with which action.
    static Qt::DropAction drop(QWidget *target, const QUrl &url, Qt::DropActions possible = Qt::CopyAction)
    {
        QMimeData data;
        data.setUrls({url});
        QDragEnterEvent enter(target->rect().center(), possible, &data, Qt::LeftButton, {});
        enter.ignore();
        QApplication::sendEvent(target, &enter);
        if (!enter.isAccepted())
            return Qt::IgnoreAction;
        QDropEvent dropped(target->rect().center(), possible, &data, Qt::LeftButton, {});
        QApplication::sendEvent(target, &dropped);
        QCoreApplication::processEvents();
        return dropped.dropAction();
    }

public Q_SLOTS:
    void noteUrl(const QUrl &url) { m_openedUrl = url; }

private Q_SLOTS:
    void init() { startAfresh(); }
    void cleanup() { closeWindow(); }

    void aListingShowsItsFilesWithAllRowsSelectedAndThePageEmpty()
    {
        addThree();
        open(path());
        QCOMPARE(list()->rowTexts(), (QStringList{u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s}));
        QCOMPARE(list()->selectedRows(), (std::vector<int>{0, 1, 2}));
        QCOMPARE(panel(1), u"3 files"_s);
        QCOMPARE(panel(2), at(u"a.mp3"_s));
        QVERIFY(!control(u"edita"_s)->isEnabled());
        QVERIFY(!control(u"nfile"_s)->isEnabled());
        QCOMPARE(field(u"Ttitulo"_s), QString());
    }

    void filesAreSortedByTheRulesOfTheLanguage()
    {
        const QLocale before;
        QLocale::setDefault(QLocale::c());
        for (const QString &name : {u"zorro.mp3"_s, u"Álamo.mp3"_s, u"ñu.mp3"_s, u"nuez.mp3"_s})
            addFile(name);
        store({{u"idioma"_s, u"es"_s}});
        open(path());
        QCOMPARE(list()->rowTexts(), (QStringList{u"Álamo.mp3"_s, u"nuez.mp3"_s, u"ñu.mp3"_s, u"zorro.mp3"_s}));
        QLocale::setDefault(before);
    }

    void aFolderWithoutFilesLeavesBothPanelsEmpty()
    {
        addThree();
        QDir(path()).mkdir(u"empty"_s);
        open(path());
        clickRow(1);
        tree()->setPath(at(u"empty"_s));
        QCOMPARE(list()->rowCount(), 0);
        QCOMPARE(panel(1), QString());
        QCOMPARE(panel(2), QString());
        QCOMPARE(field(u"Ttitulo"_s), QString());
        QVERIFY(!control(u"edita"_s)->isEnabled());
    }

    void aClickOnARowShowsItsFile()
    {
        addThree();
        open(path());
        clickRow(1);
        QCOMPARE(field(u"Ttitulo"_s), u"title b"_s);
        QCOMPARE(panel(1), u"3 files"_s);
        QCOMPARE(panel(2), at(u"b.mp3"_s));
        QCOMPARE(list()->selectedRows(), std::vector<int>{1});
        QVERIFY(control(u"edita"_s)->isEnabled());
        QTRY_COMPARE(control<QLabel>(u"mode"_s)->text(), u"128 kbps"_s);
    }

    void anyOtherKeyReleasedOnTheListShowsTheRowThatItLeadsTo()
    {
        addThree();
        open(path());
        QTest::keyClick(list(), Qt::Key_Down);
        QCOMPARE(field(u"Ttitulo"_s), u"title b"_s);
        QTest::keyClick(list(), Qt::Key_B); // without Shift the key has no command
        QCOMPARE(field(u"Ttitulo"_s), u"title b"_s);
    }

    void rightClickSelectsTheFirstTab()
    {
        addThree();
        open(path());
        tabs()->addTab(new QWidget, u"another"_s);
        tabs()->setCurrentIndex(1);
        clickRow(2);
        QCOMPARE(field(u"Ttitulo"_s), QString()); // the page is hidden
        clickRow(1, Qt::RightButton);
        QCOMPARE(tabs()->currentIndex(), 0);
        QCOMPARE(field(u"Ttitulo"_s), u"title b"_s);
    }

    void aPageThatComesBackIntoSightShowsTheRowThatWasClickedMeanwhile()
    {
        addThree();
        open(path());
        tabs()->addTab(new QWidget, u"another"_s);
        clickRow(0);
        control<QLineEdit>(u"Ttitulo"_s)->setText(u"not saved yet"_s);
        tabs()->setCurrentIndex(1);
        tabs()->setCurrentIndex(0);
        QCOMPARE(field(u"Ttitulo"_s), u"not saved yet"_s);
        tabs()->setCurrentIndex(1);
        clickRow(2);
        tabs()->setCurrentIndex(0);
        QCOMPARE(field(u"Ttitulo"_s), u"title c"_s);
    }

    void doubleClickOpensTheFileWithTheSystemsPlayer()
    {
        addThree();
        open(path());
        QDesktopServices::setUrlHandler(u"file"_s, this, "noteUrl");
        const QModelIndex index = list()->model()->index(1, 0);
        QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, list()->visualRect(index).center());
        QDesktopServices::unsetUrlHandler(u"file"_s);
        QCOMPARE(m_openedUrl, QUrl::fromLocalFile(at(u"b.mp3"_s)));
    }

    void doubleClickPassesTheBytesOfANameThatIsNoUnicode()
    {
        const QString name = platform::decodePath(QByteArray("-caf\xe9 \xff.mp3"));
        const QString file = at(name);
        auto made = createNew(file);
        if (!made)
            QSKIP("this file system takes Unicode names only");
        QVERIFY(platform::writeAll(**made, audio(), 0));
        open(path());
        QDesktopServices::setUrlHandler(u"file"_s, this, "noteUrl");
        const QModelIndex index = list()->model()->index(0, 0);
        QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, list()->visualRect(index).center());
        QDesktopServices::unsetUrlHandler(u"file"_s);
        QCOMPARE(m_openedUrl.toEncoded(), "file://" + QFile::encodeName(path()) + "/-caf%E9%20%FF.mp3");
        QVERIFY(removeFile(file)); // QTemporaryDir can't
    }

    void savingRefreshesTheListAndShowsTheCurrentRowAgain()
    {
        addThree();
        open(path());
        clickRow(1);
        control<QLineEdit>(u"Ttitulo"_s)->setText(u"new"_s);
        control<QPushButton>(u"edita"_s)->click();
        QCOMPARE(titleOf(u"b.mp3"_s), u"new"_s);
        QCOMPARE(titleOf(u"a.mp3"_s), u"title a"_s);
        QCOMPARE(cell(1, 2), u"new"_s);
        QCOMPARE(field(u"Ttitulo"_s), u"new"_s);
        QCOMPARE(list()->currentRowText(), u"b.mp3"_s);
        QCOMPARE(panel(2), at(u"b.mp3"_s));
        QCOMPARE(list()->selectedRows().size(), std::size_t{3});
        QVERIFY(control(u"edita"_s)->isEnabled());
    }

    void aRefreshedListStaysAtItsPlace()
    {
        for (int i = 0; i < 200; ++i)
            addFile(u"%1.mp3"_s.arg(i, 3, 10, QChar(u'0')));
        open(path());
        clickRow(150);
        const int place = list()->verticalScrollBar()->value();
        QVERIFY(place > 0);
        control<QPushButton>(u"edita"_s)->click();
        QCOMPARE(list()->currentRowText(), u"150.mp3"_s);
        QCOMPARE(list()->verticalScrollBar()->value(), place);
    }

    void aSaveRefusedForWantOfSpaceDoesNotBlockTheNextOne()
    {
        addThree();
        open(path());
        clickRow(0);
        m_program->state.freeMegabytes = 1;
        control<QLineEdit>(u"Ttitulo"_s)->setText(u"new"_s);
        QString message;
        QTimer answer; // the save may take a while
        answer.callOnTimeout(this, [&] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                message = box->text();
                box->accept();
            }
        });
        answer.start(0);
        control<QPushButton>(u"edita"_s)->click();
        answer.stop();
        QCOMPARE(message, u"low disk space, operation cancelled"_s);
        QCOMPARE(titleOf(u"a.mp3"_s), u"title a"_s);

        m_program->state.freeMegabytes = 100000; // space was freed
        clickRow(0);
        control<QLineEdit>(u"Ttitulo"_s)->setText(u"new"_s);
        control<QPushButton>(u"edita"_s)->click();
        QCOMPARE(titleOf(u"a.mp3"_s), u"new"_s);
    }

    void anotherFolderClearsTheCancelledFlag()
    {
        addThree();
        addFile(u"other/d.mp3"_s);
        open(path());
        m_program->state.cancelled = true;
        tree()->setPath(at(u"other"_s));
        QVERIFY(!m_program->state.cancelled);
    }

    void f2ListsTheTreeWithPrefixes()
    {
        for (const QString &name : {u"start.mp3"_s, u"x/name.mp3"_s, u"x/y/name.mp3"_s})
            addFile(name);
        open(path());
        QCOMPARE(list()->rowCount(), 1);
        QTest::keyClick(tree(), Qt::Key_F2);
        QCOMPARE(list()->rowTexts(), (QStringList{u"start.mp3"_s, QDir::toNativeSeparators(u"x/name.mp3"_s),
                                         QDir::toNativeSeparators(u"x/y/name.mp3"_s)}));
        QCOMPARE(panel(1), u"3 files"_s);
        clickRow(2);
        QCOMPARE(panel(2), at(u"x/y/name.mp3"_s));
    }

    void aNameOf64CharactersIsPlainAndOneOf65BoldAndRed()
    {
        addFile(QString(60, u'a') + u".mp3"_s);
        addFile(QString(61, u'b') + u".mp3"_s);
        open(path());
        const auto font = [this](int row) { return list()->model()->index(row, 0).data(Qt::FontRole).value<QFont>(); };
        const auto colour = [this](int row) {
            return list()->model()->index(row, 0).data(Qt::ForegroundRole).value<QBrush>().color();
        };
        QVERIFY(!font(0).bold());
        QVERIFY(colour(0) != QColor(255, 0, 0));
        QVERIFY(font(1).bold());
        QCOMPARE(colour(1), QColor(255, 0, 0));
    }

    void track9Shows09AndTrack10Shows10()
    {
        addFile(u"a.mp3"_s, id3v2(3, textFrame(3, "TRCK", u"9"_s)) + audio());
        addFile(u"b.mp3"_s, id3v2(3, textFrame(3, "TRCK", u"10"_s)) + audio());
        open(path());
        QCOMPARE(cell(0, 1), u"09"_s);
        QCOMPARE(cell(1, 1), u"10"_s);
        QCOMPARE(cell(0, 6), u"no"_s);
        QCOMPARE(cell(0, 7), u"yes"_s);
    }

    void aLinkOutOfTheFolderIsToldOfInItsTooltip()
    {
        const QString target = addFile(u"home/.profile"_s);
        addFile(u"music/a.mp3"_s);
        if (!symbolicLink(target, at(u"music/Band - Song.mp3"_s)))
            QSKIP("no symbolic links here");
        open(at(u"music"_s));
        const auto tip = [this](const QString &file) {
            return list()->model()->index(rowOf(file), 0).data(Qt::ToolTipRole).toString();
        };
        QCOMPARE(tip(u"a.mp3"_s), u"a.mp3"_s);
        QCOMPARE(tip(u"Band - Song.mp3"_s),
            u"Band - Song.mp3\na link out of this folder, to "_s + native(QFileInfo(target).canonicalFilePath()));
    }

    void selectAllAndNoneByTheToolbar()
    {
        addThree();
        open(path());
        clickRow(0);
        control<QAbstractButton>(u"tb_12"_s)->click();
        QCOMPARE(list()->selectedRows().size(), std::size_t{3});
        m_window->findChild<QAction *>(u"tb_none"_s)->trigger();
        QVERIFY(list()->selectedRows().empty());
    }

    void aFolderDroppedOnTheWindowIsOpened_data()
    {
        QTest::addColumn<QString>("target");
        for (const char *target : {"ListView1", "folder", "tabs", "Ttitulo", "Tpista", "sbStatusBar", "tb"})
            QTest::newRow(target) << QString::fromLatin1(target);
    }
    void aFolderDroppedOnTheWindowIsOpened()
    {
        QFETCH(QString, target);
        addThree();
        addFile(u"other/d.mp3"_s);
        open(path());
        QCOMPARE(drop(control(target), QUrl::fromLocalFile(at(u"other"_s))), Qt::CopyAction);
        QCOMPARE(list()->rowTexts(), QStringList{u"d.mp3"_s});
        QCOMPARE(field(u"Ttitulo"_s), QString());
    }

    void aDroppedFileOpensItsFolderAndIsNeverMoved()
    {
        addThree();
        const QString file = addFile(u"other/d.mp3"_s);
        open(path());
        QCOMPARE(drop(list(), QUrl::fromLocalFile(file), Qt::MoveAction), Qt::IgnoreAction);
        QCOMPARE(list()->rowCount(), 3);
        QCOMPARE(drop(list(), QUrl::fromLocalFile(file), Qt::MoveAction | Qt::CopyAction), Qt::CopyAction);
        QCOMPARE(list()->rowTexts(), QStringList{u"d.mp3"_s});
    }

    void anAddressOfTheNetIsNotTaken()
    {
        open(path());
        QCOMPARE(drop(list(), QUrl(u"https://example.org/a.mp3"_s)), Qt::IgnoreAction);
    }

    void aFolderOfAnotherComputerIsRefusedWithAMessage()
    {
        addThree();
        open(path());
        for (const QUrl &url : {QUrl(u"file://nas/share"_s), QUrl(u"file:////nas/share"_s)}) {
            QCOMPARE(drop(list(), url), Qt::IgnoreAction);
            const QString told = control<QLabel>(u"report"_s)->accessibleName();
            QVERIFY2(told.contains(u"another computer (nas)"_s), qPrintable(told));
            QCOMPARE(list()->rowCount(), 3);
        }
    }

    void aStoppedListingKeepsItsRowsAndF5CompletesIt()
    {
        const int count = addMany();
        open(path());
        for (const QString &key : {u"click"_s, u"Escape"_s}) {
            // The window itself shows only after a while.
            const bool isStopped = listTree(count, [&] {
                if (key == u"click"_s)
                    control<QPushButton>(u"stop"_s)->click();
                else
                    QTest::keyClick(control(u"esperate"_s), Qt::Key_Escape);
            });
            QVERIFY(isStopped);
            QVERIFY(list()->rowCount() > 0);
            QVERIFY(list()->selectedRows().empty());
            QCOMPARE(panel(1), u"%1 files, not all"_s.arg(list()->rowCount()));
            if (key == u"click"_s)
                QTest::keyClick(tree(), Qt::Key_F5);
            else
                m_window->findChild<QAction *>(u"refreshTree"_s)->trigger();
            QCOMPARE(list()->rowCount(), count);
            QCOMPARE(list()->selectedRows().size(), std::size_t(count));
            QCOMPARE(panel(1), u"%1 files"_s.arg(count));
        }
    }

    void theButtonThatStopsAListingHasANameInEachLanguage()
    {
        open();
        auto *button = control<QPushButton>(u"stop"_s);
        for (const auto &[language, name] : {std::pair{u"english"_s, u"stop"_s}, std::pair{u"spanish"_s, u"detener"_s},
                 std::pair{u"french"_s, u"arrêter"_s}}) {
            speak(language);
            QCOMPARE(QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name), name);
        }
    }

    void closingDuringAListingEndsIt()
    {
        const int count = addMany();
        open(path());
        QVERIFY(listTree(count, [&] { m_window->close(); }));
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(stored(u"ruta"), path() + QDir::separator());
    }

    void closingWhileWorkIsUnderWayWaitsForItsEnd()
    {
        addThree();
        open(path());
        auto *busy = m_window->findChild<Busy *>();
        QVERIFY(busy);
        bool visibleAtWork = false;
        const bool ran = busy->run(1, [&](const ProgressReport &) {
            QMetaObject::invokeMethod(m_window.get(), [&] {
                m_window->close();
                visibleAtWork = m_window->isVisible();
            });
            QTest::qSleep(100);
        });
        QVERIFY(ran);
        QVERIFY(visibleAtWork);
        QTRY_VERIFY(!m_window->isVisible());
        QCOMPARE(stored(u"ruta"), path() + QDir::separator());
    }
};

QTEST_MAIN(TestPrincipal)
#include "tst_principal.moc"
