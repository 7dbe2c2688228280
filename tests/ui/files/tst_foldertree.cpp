// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of the folder tree: order, arrows, hidden, unreadable and oddly named folders, paths that don't exist,
// refreshing, and what keys report.

#include "core/platform/filesystem.h"
#include "support/filetree.h"
#include "ui/files/foldertree.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

using namespace ravlin;
using namespace ravlin::test;

class TestFolderTree : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FolderTree> m_tree;

    QString at(const QString &name) const { return QDir::toNativeSeparators(m_folder->filePath(name)); }
    void make(const char *name) const { QDir(m_folder->path()).mkpath(QString::fromUtf8(name)); }
    void open()
    {
        m_tree = std::make_unique<FolderTree>(
            std::vector<FolderRoot>{{at(QString()), FolderRoot::Kind::Home}, {drive(), {}}});
    }
    /// The root of the folder's drive.
    static QString drive() { return QDir::toNativeSeparators(QDir::rootPath()); }
    /// Hides a folder in the system's way: by its name or by an attribute.
    void hide(const char *name) const
    {
#ifdef Q_OS_WIN
        const QString path = at(QString::fromUtf8(name));
        QVERIFY(::SetFileAttributesW(path.toStdWString().c_str(), FILE_ATTRIBUTE_HIDDEN) != 0);
#else
        Q_UNUSED(name)
#endif
    }
    QModelIndex root() const
    {
        return m_tree->model()->index(0, 0);
    }
    QStringList childrenOf(const QModelIndex &parent) const
    {
        QAbstractItemModel *model = m_tree->model();
        if (model->canFetchMore(parent))
            model->fetchMore(parent);
        QStringList names;
        for (int row = 0; row < model->rowCount(parent); ++row)
            names += model->index(row, 0, parent).data().toString();
        return names;
    }
    static QStringList list(const char *names)
    {
        return QString::fromUtf8(names).split(u' ');
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
    }
    void cleanup()
    {
        m_tree.reset();
    }

    void foldersComeWithoutRegardToCaseAndHiddenOnesNotAtAll()
    {
        for (const char *name : {"bb", "A", "c", ".hidden", "BC"})
            make(name);
        hide(".hidden");
        QFile file(at(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        open();
        QCOMPARE(childrenOf(root()), list("A bb BC c"));
    }

    void refreshToFollowsARenamedFolderAndReportsItOnce()
    {
        make("old/sub");
        open();
        m_tree->setPath(at(QStringLiteral("old")));
        QVERIFY(QDir(m_folder->path()).rename(QStringLiteral("old"), QStringLiteral("new")));
        QSignalSpy changed(m_tree.get(), &FolderTree::pathChanged);
        m_tree->refreshTo(at(QStringLiteral("new")));
        QCOMPARE(m_tree->path(), at(QStringLiteral("new")));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(childrenOf(root()), list("new"));
    }

    void onlyFoldersWithVisibleSubfoldersCanBeOpened()
    {
        make("full/sub");
        make("empty");
        make("secret/.hidden");
        hide("secret/.hidden");
        open();
        QCOMPARE(childrenOf(root()), list("empty full secret"));
        QVERIFY(!m_tree->model()->hasChildren(m_tree->model()->index(0, 0, root())));
        QVERIFY(m_tree->model()->hasChildren(m_tree->model()->index(1, 0, root())));
        QVERIFY(!m_tree->model()->hasChildren(m_tree->model()->index(2, 0, root())));
    }

    void aFolderThatCannotBeReadIsTold()
    {
#ifdef Q_OS_WIN
        QSKIP("Wine's user is this system's, whose bits can't be set from there");
#else
        if (::geteuid() == 0)
            QSKIP("the superuser reads every folder");
        make("closed/sub");
        QCOMPARE(::chmod(qPrintable(at(QStringLiteral("closed"))), 0), 0);
        open();
        childrenOf(root());
        const QModelIndex closed = m_tree->model()->index(0, 0, root());
        QVERIFY(!closed.data(FolderModel::ReadableRole).toBool());
        QVERIFY(!m_tree->model()->hasChildren(closed));
        ::chmod(qPrintable(at(QStringLiteral("closed"))), 0700);
#endif
    }

    void aPathIsOpenedAndAnnouncedOnce()
    {
        make("a/b/c");
        open();
        QSignalSpy changes(m_tree.get(), &FolderTree::pathChanged);
        QCOMPARE(m_tree->path(), QString());
        QVERIFY(m_tree->setPath(at(QStringLiteral("a/b/"))));
        QCOMPARE(m_tree->path(), at(QStringLiteral("a/b")));
        QCOMPARE(changes.count(), 1);
        QCOMPARE(changes.front().front().toString(), at(QStringLiteral("a/b")));
        QVERIFY(m_tree->isExpanded(root()));
        QVERIFY(m_tree->setPath(at(QStringLiteral("a//b/c/.."))));
        QCOMPARE(changes.count(), 1);
        QVERIFY(m_tree->setPath(drive()));
        QCOMPARE(m_tree->path(), drive());
        QCOMPARE(changes.count(), 2);
    }

    void ofAPathThatIsGoneTheNearestAncestorIsShownAndNothingSelected()
    {
        make("a/b");
        open();
        QSignalSpy changes(m_tree.get(), &FolderTree::pathChanged);
        QVERIFY(!m_tree->setPath(at(QStringLiteral("a/none/deeper"))));
        QCOMPARE(m_tree->path(), QString());
        QCOMPARE(m_tree->currentIndex().data(FolderModel::PathRole).toString(), at(QStringLiteral("a")));
        QVERIFY(m_tree->isExpanded(root()));
        QFile file(at(QStringLiteral("a/file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(!m_tree->setPath(at(QStringLiteral("a/file"))));
        QCOMPARE(m_tree->path(), QString());
        m_tree->refresh();
        QCOMPARE(m_tree->path(), QString());
        QCOMPARE(changes.count(), 0);
        QVERIFY(m_tree->setPath(at(QStringLiteral("a/b"))));
        QVERIFY(!m_tree->setPath(drive() + QStringLiteral("no such folder")));
        QCOMPARE(m_tree->path(), at(QStringLiteral("a/b")));
        QCOMPARE(changes.count(), 1);
    }

    void aFolderThatAppearsIsSelectedByARefreshUnlessAnotherIs()
    {
        make("a");
        open();
        QSignalSpy changes(m_tree.get(), &FolderTree::pathChanged);
        m_tree->setPath(at(QStringLiteral("stick/music")));
        make("stick");
        m_tree->refresh();
        QCOMPARE(changes.count(), 0);
        make("stick/music");
        m_tree->refresh();
        QCOMPARE(m_tree->path(), at(QStringLiteral("stick/music")));
        QCOMPARE(changes.count(), 1);

        open();
        m_tree->setPath(at(QStringLiteral("later")));
        m_tree->setPath(at(QStringLiteral("a")));
        make("later");
        m_tree->refresh();
        QCOMPARE(m_tree->path(), at(QStringLiteral("a")));
    }

    void aFolderThatIsOpenedStandsInTheMiddleAlsoAfterAResize()
    {
        for (int i = 100; i < 200; ++i)
            make(QByteArray::number(i).constData());
        open();
        m_tree->resize(200, 300);
        m_tree->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_tree.get()));
        const auto distance = [this] {
            const QRect place = m_tree->visualRect(m_tree->currentIndex());
            return std::abs(place.center().y() - m_tree->viewport()->rect().center().y()) - place.height();
        };
        QVERIFY(m_tree->setPath(at(QStringLiteral("150"))));
        QVERIFY2(distance() <= 0, "opened");
        for (const QSize size : {QSize(200, 700), QSize(500, 700), QSize(150, 200)}) {
            m_tree->resize(size);
            QVERIFY2(distance() <= 0, "resized");
        }
        // A folder that was clicked stays under the pointer, and comes into the middle with the next resize.
        const QPoint middleOfTop(m_tree->viewport()->width() / 2, 5);
        const QModelIndex first = m_tree->indexAt(middleOfTop);
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, middleOfTop);
        QCOMPARE(m_tree->currentIndex(), first);
        QVERIFY(distance() > 0);
        m_tree->resize(160, 200);
        QVERIFY(distance() > 0);
        m_tree->resize(160, 600);
        QVERIFY(distance() <= 0);
        // Who has scrolled away stays there.
        m_tree->verticalScrollBar()->triggerAction(QAbstractSlider::SliderToMinimum);
        m_tree->resize(160, 300);
        QCOMPARE(m_tree->verticalScrollBar()->value(), m_tree->verticalScrollBar()->minimum());
    }

    void theNameOfADeepFolderIsSeen()
    {
        QString deep;
        for (int i = 0; i < 12; ++i)
            deep += QStringLiteral("deeper/");
        make(qPrintable(deep + QStringLiteral("end")));
        open();
        m_tree->resize(200, 300);
        m_tree->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_tree.get()));
        QVERIFY(m_tree->setPath(at(deep + QStringLiteral("end"))));
        const int left = m_tree->visualRect(m_tree->currentIndex()).left();
        QVERIFY2(left >= 0 && left < m_tree->viewport()->width() / 2 + 60, QByteArray::number(left));
        QVERIFY(m_tree->setPath(at(QStringLiteral("deeper"))));
        QCOMPARE(m_tree->horizontalScrollBar()->value(), 0);
    }

    void rootsThatComeLaterFindTheirPlace()
    {
        for (const char *name : {"a", "b", "c", "d"})
            make(name);
        const auto rootAt = [this](const char *name) { return FolderRoot{at(QString::fromLatin1(name))}; };
        FolderModel model({rootAt("b"), rootAt("d")});
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const QPersistentModelIndex last = model.index(1, 0);
        model.addRoots({rootAt("a"), rootAt("b"), rootAt("c"), rootAt("d")});
        QStringList names;
        for (int row = 0; row < model.rowCount(); ++row)
            names += model.index(row, 0).data().toString();
        QCOMPARE(names, list("a b c d"));
        QCOMPARE(last.row(), 3);
        QVERIFY(model.find(at(QStringLiteral("a"))).isExact);
        QCOMPARE(model.find(at(QStringLiteral("d"))).index.row(), 3);
    }

    void hiddenNewAndOddlyNamedFoldersAreFound()
    {
        make("a");
        open();
        childrenOf(root());
        make(".hidden/inside");
        hide(".hidden");
        make("new");
        const QString odd = at(QStringLiteral("caf") + QChar(0xDCE9));
        if (!platform::FileSystem::native().createFolder(odd))
            QSKIP("this file system takes Unicode names only");
        QVERIFY(m_tree->setPath(at(QStringLiteral(".hidden/inside"))));
        QCOMPARE(m_tree->path(), at(QStringLiteral(".hidden/inside")));
        QVERIFY(m_tree->setPath(at(QStringLiteral("new"))));
        QVERIFY(m_tree->setPath(odd));
        QCOMPARE(m_tree->path(), odd);
        QCOMPARE(childrenOf(root()), list(".hidden a caf\uFFFD new"));
        m_tree->refresh();
        QCOMPARE(childrenOf(root()), list(".hidden a caf\uFFFD new"));
    }

    void theModelKeepsTheRulesOfModels()
    {
        make("a/b/c");
        make("x");
        FolderModel model({{at(QString()), FolderRoot::Kind::Home}}); // the tester opens every folder
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QVERIFY(model.find(at(QStringLiteral("a/b/c"))).isExact);
        make("a/a");
        make(".hidden");
        hide(".hidden");
        QDir(at(QStringLiteral("x"))).removeRecursively();
        QVERIFY(model.find(at(QStringLiteral(".hidden"))).isExact);
        model.refresh();
        QCOMPARE(model.rowCount(model.index(0, 0)), 2);
    }

    void linksInACircleCanBeFollowed()
    {
        if (!MakesLinks)
            QSKIP("no symbolic links can be made here");
        make("a");
        makeLink("..", at(QStringLiteral("a/up")));
        open();
        QVERIFY(m_tree->setPath(at(QStringLiteral("a/up/a/up"))));
        QCOMPARE(m_tree->path(), at(QStringLiteral("a/up/a/up")));
    }

    void aRefreshKeepsWhatIsOpenAndSelected()
    {
        make("a/b/c");
        make("x");
        open();
        m_tree->setPath(at(QStringLiteral("a/b")));
        QSignalSpy changes(m_tree.get(), &FolderTree::pathChanged);
        make("B0");
        make("a/a");
        make("x/y");
        QDir(at(QStringLiteral("a/b/c"))).removeRecursively();
        m_tree->refresh();
        QCOMPARE(m_tree->path(), at(QStringLiteral("a/b")));
        QCOMPARE(childrenOf(root()), list("a B0 x"));
        QCOMPARE(childrenOf(m_tree->model()->index(0, 0, root())), list("a b"));
        QVERIFY(m_tree->isExpanded(m_tree->model()->index(0, 0, root())));
        QVERIFY(!m_tree->model()->hasChildren(m_tree->currentIndex()));
        QVERIFY(m_tree->model()->hasChildren(m_tree->model()->index(2, 0, root())));
        QCOMPARE(changes.count(), 0);
    }

    void aRefreshAfterTheSelectedFolderIsGoneSelectsItsNearestAncestor()
    {
        make("a/b/c");
        make("z");
        open();
        m_tree->setPath(at(QStringLiteral("a/b/c")));
        QSignalSpy changes(m_tree.get(), &FolderTree::pathChanged);
        QDir(at(QStringLiteral("a/b"))).removeRecursively();
        m_tree->refresh();
        QCOMPARE(m_tree->path(), at(QStringLiteral("a")));
        QCOMPARE(changes.count(), 1);
        QCOMPARE(changes.front().front().toString(), at(QStringLiteral("a")));
    }

    void keysReportWhenReleasedAndF5Refreshes()
    {
        make("a");
        open();
        m_tree->setPath(at(QString()));
        QSignalSpy deletes(m_tree.get(), &FolderTree::deleteRequested);
        QSignalSpy lists(m_tree.get(), &FolderTree::listTreeRequested);
        QTest::keyPress(m_tree.get(), Qt::Key_F2);
        QTest::keyPress(m_tree.get(), Qt::Key_Delete);
        QCOMPARE(deletes.count() + lists.count(), 0);
        QTest::keyRelease(m_tree.get(), Qt::Key_F2);
        QCOMPARE(lists.count(), 1);
        QTest::keyRelease(m_tree.get(), Qt::Key_Delete);
        QCOMPARE(deletes.count(), 1);
        childrenOf(root());
        make("b");
        QTest::keyClick(m_tree.get(), Qt::Key_F5);
        QCOMPARE(childrenOf(root()), list("a b"));
    }

    void aClickOnAFolderAnnouncesItAndFocusAloneDoesNot()
    {
        make("a");
        open();
        m_tree->expand(root());
        m_tree->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_tree.get()));
        QSignalSpy changes(m_tree.get(), &FolderTree::pathChanged);
        m_tree->setFocus(Qt::TabFocusReason);
        QCOMPARE(changes.count(), 0);
        QCOMPARE(m_tree->path(), QString());
        const QPoint place = m_tree->visualRect(m_tree->model()->index(0, 0, root())).center();
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(changes.count(), 1);
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, Qt::ControlModifier, place);
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, QPoint(5, m_tree->viewport()->height() - 5));
        QCOMPARE(m_tree->path(), at(QStringLiteral("a")));
        QCOMPARE(changes.count(), 1);
    }

    void theUsualPlacesExistAndTellTheirKind()
    {
        const std::vector<FolderRoot> roots = standardFolderRoots();
        QVERIFY(roots.size() >= 2);
        QVERIFY(roots.front().kind == FolderRoot::Kind::Home);
        const auto isDrive = [](const FolderRoot &root) { return root.path == drive(); };
        QVERIFY(std::any_of(roots.begin(), roots.end(), isDrive));
        QVERIFY(platform::Separator != u'/' || isDrive(roots.back()));
        for (const FolderRoot &root : roots)
            QVERIFY(QDir(root.path).exists());
    }

    void aSelectionCoversTheWholeRow()
    {
        make("a/b");
        open();
        m_tree->resize(400, 300);
        m_tree->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_tree.get()));
        QVERIFY(m_tree->setPath(at(QStringLiteral("a"))));
        const QModelIndex selected = m_tree->currentIndex();
        QCOMPARE(selected.data().toString(), QStringLiteral("a"));
        // Inside the row, beside text and arrow.
        const int y = m_tree->visualRect(selected).top() + 2;
        const int right = m_tree->viewport()->width() - 3;
        const auto isHighlighted = [&](const QImage &image, int x) {
            // A style may shade the highlight a little.
            const QColor colour = image.pixelColor(x, y);
            const auto isNear = [&](QPalette::ColorGroup group) {
                const QColor full = m_tree->palette().color(group, QPalette::Highlight);
                return std::abs(colour.red() - full.red()) < 40 && std::abs(colour.green() - full.green()) < 40 &&
                       std::abs(colour.blue() - full.blue()) < 40;
            };
            return isNear(QPalette::Active) || isNear(QPalette::Inactive);
        };
        const QImage image = m_tree->viewport()->grab().toImage();
        QVERIFY(isHighlighted(image, 2));
        QVERIFY(isHighlighted(image, right));
        // A click there selects the row.
        const QModelIndex other = selected.parent();
        const QPoint place(right, m_tree->visualRect(other).center().y());
        QTest::mouseClick(m_tree->viewport(), Qt::LeftButton, {}, place);
        QCOMPARE(m_tree->currentIndex(), other);
        const QImage after = m_tree->viewport()->grab().toImage();
        QVERIFY(!isHighlighted(after, right));
    }

    void aNameWiderThanTheTreeCanBeScrolledTo()
    {
        const QString longName(120, u'w');
        QDir(m_folder->path()).mkdir(longName);
        open();
        m_tree->resize(200, 300);
        m_tree->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_tree.get()));
        QVERIFY(m_tree->setPath(at(longName)));
        QTRY_VERIFY_WITH_TIMEOUT(m_tree->horizontalScrollBar()->maximum() > 0, 30'000);
    }
};

QTEST_MAIN(TestFolderTree)
#include "tst_foldertree.moc"
