// SPDX-License-Identifier: GPL-3.0-or-later
// What pages get from the main window: the paths of current and selected rows, a step to another row, a list filled
// again at a renamed file, and work that starts without the mark of a former refusal.

#include "ui/app/listcontroller.h"
#include "ui/app/principalfixture.h"
#include "ui/app/windowservices.h"

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestWindowServices : public PrincipalFixture
{
    Q_OBJECT

private:
    WindowServices *services() const { return m_window->findChild<WindowServices *>(); }

private Q_SLOTS:
    void init()
    {
        startAfresh();
        store({{u"tags"_s, u"2"_s}});
        for (const QString &name : {u"a.mp3"_s, u"b.mp3"_s, u"c.mp3"_s})
            addFile(name);
        open(path());
    }
    void cleanup() { closeWindow(); }

    void pathsAreThoseOfTheRows()
    {
        QCOMPARE(services()->currentPath(), at(u"a.mp3"_s));
        QCOMPARE(services()->selectedPaths(), (QStringList{at(u"a.mp3"_s), at(u"b.mp3"_s), at(u"c.mp3"_s)}));
        QCOMPARE(services()->selectedCount(), 3);
        clickRow(1);
        QCOMPARE(services()->currentPath(), at(u"b.mp3"_s));
        QCOMPARE(services()->selectedPaths(), QStringList(at(u"b.mp3"_s)));
        QCOMPARE(services()->selectedCount(), 1);
        list()->setCurrentIndex({});
        QCOMPARE(services()->currentPath(), QString());
    }

    void aStepTakesTheSelectionAlong()
    {
        clickRow(1);
        QVERIFY(services()->moveCurrent(1));
        QCOMPARE(services()->selectedPaths(), QStringList(at(u"c.mp3"_s)));
        QCOMPARE(services()->currentPath(), at(u"c.mp3"_s));
        QCOMPARE(panel(2), at(u"c.mp3"_s));
        QVERIFY(services()->moveCurrent(-2));
        QCOMPARE(services()->currentPath(), at(u"a.mp3"_s));
    }

    void aStepBeyondTheListChangesNothing()
    {
        list()->selectionModel()->clearCurrentIndex();
        QVERIFY(!services()->moveCurrent(1));
        QCOMPARE(services()->selectedCount(), 3);
        clickRow(2);
        QVERIFY(!services()->moveCurrent(1));
        QVERIFY(!services()->moveCurrent(-3));
        QCOMPARE(services()->currentPath(), at(u"c.mp3"_s));
        QCOMPARE(services()->selectedPaths(), QStringList(at(u"c.mp3"_s)));
    }

    void aRefreshStaysAtTheRenamedFile()
    {
        clickRow(0);
        QVERIFY(QFile::rename(at(u"a.mp3"_s), at(u"d.mp3"_s)));
        services()->refreshListAt(at(u"d.mp3"_s), {});
        QCOMPARE(services()->currentPath(), at(u"d.mp3"_s));
        services()->refreshList();
        QCOMPARE(services()->currentPath(), at(u"d.mp3"_s));
        services()->refreshListAt(u"/elsewhere/b.mp3"_s, {});
        QCOMPARE(services()->currentPath(), at(u"d.mp3"_s));
    }

    void aRefreshSelectsAllOrTheSameFiles()
    {
        clickRow(1);
        services()->refreshList();
        QCOMPARE(services()->selectedCount(), 3);
        m_program->state.options.keepSelection = true;
        clickRow(1);
        services()->refreshList();
        QCOMPARE(services()->selectedPaths(), QStringList(at(u"b.mp3"_s)));
        list()->selectAllRows();
        QVERIFY(QFile::remove(at(u"c.mp3"_s)));
        services()->refreshList();
        QCOMPARE(services()->selectedPaths(), (QStringList{at(u"a.mp3"_s), at(u"b.mp3"_s)}));
        list()->selectNone();
        services()->refreshList();
        QCOMPARE(services()->selectedCount(), 0);
        addFile(u"sub/x.mp3"_s);
        tree()->refresh();
        tree()->setPath(at(u"sub"_s));
        QCOMPARE(services()->selectedCount(), 1); // another folder
    }

    void renamedFilesStaySelected()
    {
        m_program->state.options.keepSelection = true;
        clickRow(0);
        QVERIFY(QFile::rename(at(u"a.mp3"_s), at(u"d.mp3"_s)));
        services()->refreshListAt(at(u"d.mp3"_s), {at(u"d.mp3"_s), u"/elsewhere/b.mp3"_s});
        QCOMPARE(services()->selectedPaths(), QStringList(at(u"d.mp3"_s)));
        QCOMPARE(services()->currentPath(), at(u"d.mp3"_s));
    }

    void aStepSelectsOneRowIfAskedTo()
    {
        list()->setCurrentRow(0, FileList::Selection::Keep);
        QVERIFY(services()->moveCurrent(1));
        QCOMPARE(services()->selectedPaths(), (QStringList{at(u"b.mp3"_s), at(u"c.mp3"_s)}));
        m_program->state.options.keepSelection = true;
        list()->selectAllRows();
        QVERIFY(services()->moveCurrent(1));
        QCOMPARE(services()->selectedPaths(), QStringList(at(u"c.mp3"_s)));
        QVERIFY(services()->moveCurrent(-1));
        QCOMPARE(services()->selectedPaths(), QStringList(at(u"b.mp3"_s)));
    }

    void aListWithSubfoldersKeepsThemIfAskedTo()
    {
        addFile(u"sub/x.mp3"_s);
        auto *lister = m_window->findChild<ListController *>();
        lister->ListFolderTree();
        QCOMPARE(list()->rowCount(), 4);
        services()->refreshList();
        QCOMPARE(list()->rowCount(), 3);
        m_program->state.options.keepSubfolders = true;
        services()->refreshList();
        QCOMPARE(list()->rowCount(), 3); // it was not made with subfolders
        lister->ListFolderTree();
        services()->refreshList();
        QCOMPARE(list()->rowCount(), 4);
        services()->refreshListAt(at(u"a.mp3"_s), {});
        QCOMPARE(list()->rowCount(), 4);
        tree()->refresh();
        tree()->setPath(at(u"sub"_s));
        tree()->setPath(path());
        QCOMPARE(list()->rowCount(), 3);
    }

    void workStartsWithoutTheFlagOfAFormerRefusal()
    {
        m_program->state.cancelled = true;
        bool wasCancelled = true;
        QVERIFY(
            services()->runWithProgress(1, [&](const ProgressReport &) { wasCancelled = m_program->state.cancelled; }));
        QVERIFY(!wasCancelled);
    }
};

QTEST_MAIN(TestWindowServices)
#include "tst_windowservices.moc"
