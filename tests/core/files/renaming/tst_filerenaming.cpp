// SPDX-License-Identifier: GPL-3.0-or-later
// Renames of files after their tags, made ready: which names are planned, which files stay, and how a new name is told.

#include "core/files/renaming/filerenaming.h"
#include "core/tags/store/tagstore.h"
#include "support/mp3builder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace ravlin;
using namespace ravlin::test;

class TestFileRenaming : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    ProgramState m_state;
    TagStore m_store{m_state, platform::FileSystem::native()};
    int m_reports = 0;

    QString at(const QString &name) const { return QDir::toNativeSeparators(m_folder->path() + u'/' + name); }
    QString addFile(const QString &name, const QString &title) const
    {
        return writeFile(m_folder->path(), name, id3v2(3, textFrame(3, "TIT2", title)) + audio());
    }
    FileRenaming plan(const QStringList &paths, const QString &pattern)
    {
        NamingRule rule;
        rule.mode = NamingRule::Pattern;
        rule.pattern = pattern;
        return planFileRenaming(
            paths, rule, m_store, platform::FileSystem::native(), [this](const Progress &) { ++m_reports; });
    }

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_reports = 0;
    }

    void eachFileIsReadAndPlannedInOrder()
    {
        const FileRenaming renaming = plan({addFile(u"a.mp3"_s, u"one"_s), addFile(u"b.mp3"_s, u"two"_s)}, u"%3"_s);
        QCOMPARE(m_reports, 2);
        QCOMPARE(renaming.plan.rows().at(0).path, at(u"one.mp3"_s));
        QCOMPARE(renaming.plan.rows().at(1).path, at(u"two.mp3"_s));
        QCOMPARE(newNameOf(renaming.rows.at(1), renaming.plan.rows().at(1)), u"two.mp3"_s);
        QVERIFY(QFile::exists(at(u"a.mp3"_s)));
    }

    void aFileThatCannotBeReadKeepsItsName()
    {
        const FileRenaming renaming = plan({at(u"gone.mp3"_s)}, u"fixed"_s);
        QVERIFY(!renaming.plan.rows().at(0).renames());
        QCOMPARE(newNameOf(renaming.rows.at(0), renaming.plan.rows().at(0)), u"gone.mp3"_s);
    }

    void aNameThatIsTakenIsToldAsTheRuleGaveIt()
    {
        addFile(u"one.mp3"_s, u"x"_s);
        const FileRenaming renaming = plan({addFile(u"a.mp3"_s, u"one"_s)}, u"%3"_s);
        QCOMPARE(renaming.plan.rows().at(0).state, RenameState::Clash);
        QCOMPARE(newNameOf(renaming.rows.at(0), renaming.plan.rows().at(0)), u"one.mp3"_s);
    }

    void aNameInAnotherFolderIsToldWithIt()
    {
        const FileRenaming renaming = plan({addFile(u"a.mp3"_s, u"one"_s)}, u"sub/%3"_s);
        QCOMPARE(
            newNameOf(renaming.rows.at(0), renaming.plan.rows().at(0)), QDir::toNativeSeparators(u"sub/one.mp3"_s));
        QVERIFY(!QFile::exists(at(u"sub"_s)));
    }

    void thePatternsOwnWayUpIsFollowedAndAValuesIsNot()
    {
        QDir(m_folder->path()).mkdir(u"in"_s);
        const QString file = addFile(u"in/a.mp3"_s, u"one"_s);
        const FileRenaming up = plan({file}, u"../%3"_s);
        QCOMPARE(up.plan.rows().at(0).path, at(u"one.mp3"_s));
        QCOMPARE(newNameOf(up.rows.at(0), up.plan.rows().at(0)), at(u"one.mp3"_s));
        const FileRenaming byValue = plan({addFile(u"in/b.mp3"_s, u".."_s)}, u"%3/x"_s);
        QVERIFY(!byValue.plan.rows().at(0).renames());
        QCOMPARE(byValue.plan.rows().at(0).problem, platform::NameProblem::LeadsOutside);
    }
};

QTEST_APPLESS_MAIN(TestFileRenaming)
#include "tst_filerenaming.moc"
