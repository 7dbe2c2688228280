// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: for any batch, the run does what the plan says. The number of files never falls, no content changes,
// nothing outside the batch is touched, and undo gives every file its name back.

#include "core/files/renaming/renamefromtags.h"
#include "core/files/renaming/renamingcase.h"
#include "support/caselessfilesystem.h"

#include <QtTest>

#include <random>

using namespace ravlin;
using namespace ravlin::test;
using namespace Qt::StringLiterals;

namespace {

using Files = QMap<QString, QString>;

/// Of the system itself.
constexpr bool IgnoresCase = platform::NameCase == Qt::CaseInsensitive;

/// Random batches over few names, so that collisions, chains, rings and case-only changes are frequent.
class RandomBatch
{
public:
    explicit RandomBatch(unsigned seed) : m_random(seed) {}

    QString name()
    {
        static const QStringList Stems{u"a"_s, u"A"_s, u"b"_s, u"B"_s, u"c"_s, u"ñ"_s, u"Ñ"_s, u"夜"_s, u"d"_s,
            u"a (2)"_s, u"b (2)"_s, u"x"_s, u"con"_s, u"."_s, u""_s, u".e"_s};
        return Stems.at(below(int(Stems.size()))) + u".mp3"_s;
    }
    QString nameInFolders()
    {
        static const QStringList Folders{
            u""_s, u""_s, u""_s, u""_s, u"one/"_s, u"two/"_s, u"new/deep/"_s, u"./"_s, u"../"_s};
        return Folders.at(below(int(Folders.size()))) + name();
    }
    int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(m_random); }

    /// Files in a folder of the scratch folder, so that one ".." stays inside, and in one below. caseless: no two names
    /// differ only in case.
    void fill(const RenamingCase &folder, bool caseless)
    {
        QSet<QString> present;
        const int count = 1 + below(16);
        for (int i = 0; i < count; ++i) {
            const QString file = (below(3) == 0 ? u"base/one/"_s : u"base/"_s) + name();
            if (IgnoresCase && file.endsWith(u"con.mp3"_s))
                continue; // it can't be made
            const QString key = caseless || IgnoresCase ? file.toCaseFolded() : file;
            if (file.endsWith(u".mp3"_s) && !QFileInfo(file).completeBaseName().isEmpty() && !present.contains(key)) {
                present.insert(key);
                folder.add(file);
            }
        }
    }

    std::vector<RenameRow> rows(const RenamingCase &folder)
    {
        QStringList files = folder.files().keys();
        std::shuffle(files.begin(), files.end(), m_random);
        std::vector<RenameRow> made;
        for (const QString &file : files) {
            if (below(6) != 0)
                made.push_back(fileRename(
                    folder.path(file), QDir::toNativeSeparators(below(4) == 0 ? nameInFolders() : name()), below(2)));
        }
        return made;
    }

    ClashAnswer answer()
    {
        return std::array{ClashAnswer::Skip, ClashAnswer::KeepBoth, ClashAnswer::Stop}[size_t(below(3))];
    }

private:
    std::mt19937 m_random;
};

} // namespace

class TestRenamingProperties : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePlanIsWhatHappens_data();
    void thePlanIsWhatHappens();
};

void TestRenamingProperties::thePlanIsWhatHappens_data()
{
    QTest::addColumn<bool>("caseless");
    QTest::newRow("case counts") << false;
    QTest::newRow("case is ignored") << true;
}

void TestRenamingProperties::thePlanIsWhatHappens()
{
    QFETCH(bool, caseless);
    CaselessFileSystem ignoring;
    platform::FileSystem &fileSystem =
        caseless ? static_cast<platform::FileSystem &>(ignoring) : platform::FileSystem::native();
    constexpr unsigned Batches = 250;
    std::size_t collisions = 0;
    std::size_t renames = 0;
    for (unsigned seed = 0; seed < Batches; ++seed) {
        RandomBatch random(seed + (caseless ? 100'000 : 0));
        const RenamingCase folder;
        const QString where = u"batch %1"_s.arg(seed);
        random.fill(folder, caseless);
        const Files before = folder.files();
        RenamingPlan plan(fileSystem, random.rows(folder));
        if (random.below(2) == 0)
            plan.answerAll(random.answer());
        while (const auto row = plan.nextClash())
            plan.answer(*row, random.answer());
        QCOMPARE(folder.files(), before);

        // Every file of the batch goes where its row says; every other one stays.
        Files expected = before;
        const auto relative = [&](const QString &path) {
            return QDir::fromNativeSeparators(path.mid(folder.path().size() + 1));
        };
        for (const RenameRow &row : plan.rows())
            expected.remove(relative(row.from));
        for (const RenameRow &row : plan.rows()) {
            QVERIFY2(!expected.contains(relative(row.path)), qPrintable(where));
            expected.insert(relative(row.path), before.value(relative(row.from)));
            QVERIFY(row.renames() || row.path == row.from);
            collisions += row.isCollision ? 1 : 0;
            renames += row.renames() ? 1 : 0;
        }
        for (const RenameRow &row : plan.rows())
            QVERIFY(row.path.startsWith(folder.path() + QDir::separator()));

        qsizetype reports = 0;
        const RenamingOutcome outcome = runRenaming(fileSystem, plan, {[&](const Progress &) { ++reports; }});
        QVERIFY2(folder.files() == expected, qPrintable(where));
        QCOMPARE(reports, qsizetype(plan.rows().size()));
        for (std::size_t row = 0; row < outcome.rows.size(); ++row) {
            QVERIFY2(outcome.rows[row].state == plan.rows()[row].state, qPrintable(where));
            QCOMPARE(outcome.rows[row].path, plan.rows()[row].path);
        }
        undoRenaming(fileSystem, outcome.renames, outcome.foldersMade);
        QVERIFY2(folder.files() == before, qPrintable(where));
    }
    qInfo("%d batches: %d renames, %d collisions", int(Batches), int(renames), int(collisions));
    QVERIFY(renames > Batches && collisions > Batches / 4);
}

QTEST_GUILESS_MAIN(TestRenamingProperties)
#include "tst_renamingproperties.moc"
