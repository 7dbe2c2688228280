// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: where several roots lead to a folder, find() takes the root of the given place, else the deepest; a root
// holds the folders below it and no others. The tree's test covers the rest of the model.

#include "core/files/list/foldermodel.h"
#include "core/platform/scratchfolder.h"

#include <QTest>

using namespace ravlin;
using namespace ravlin::test;

class TestFolderModel : public QObject
{
    Q_OBJECT

private:
    ScratchFolder m_folder;

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *path : {"music/cd", "music2"})
            QVERIFY(QDir(m_folder.path()).mkpath(QString::fromLatin1(path)));
    }

    void theDeepestRootIsTakenUnlessThePlaceIsBelowAnother()
    {
        FolderModel model({{m_folder.path(), FolderRoot::Kind::Home}, {m_folder.path(QStringLiteral("music")), {}}});
        const QModelIndex outer = model.index(0, 0);
        const QModelIndex inner = model.index(1, 0);
        const QString cd = m_folder.path(QStringLiteral("music/cd"));
        const FolderModel::Found found = model.find(cd);
        QVERIFY(found.isExact);
        QCOMPARE(found.index.parent(), inner);
        QCOMPARE(model.pathOf(found.index), cd);
        QCOMPARE(model.find(cd, outer).index.parent().parent(), outer);
        QCOMPARE(model.find(cd, found.index).index, found.index);
    }

    void aRootWhoseNameOnlyBeginsThePathIsNotTaken()
    {
        FolderModel model({{m_folder.path(QStringLiteral("music")), {}}});
        const FolderModel::Found found = model.find(m_folder.path(QStringLiteral("music2")), model.index(0, 0));
        QVERIFY(!found.isExact && !found.index.isValid());
    }

    void aFolderThatDoesNotExistGivesItsNearestAncestor()
    {
        FolderModel model({{m_folder.path(), FolderRoot::Kind::Home}});
        const FolderModel::Found found = model.find(m_folder.path(QStringLiteral("music/gone/deep")));
        QVERIFY(!found.isExact);
        QCOMPARE(model.pathOf(found.index), m_folder.path(QStringLiteral("music")));
    }
};

QTEST_GUILESS_MAIN(TestFolderModel)
#include "tst_foldermodel.moc"
