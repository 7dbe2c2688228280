// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: what each column shows, which names are long, how the columns share the width; rows stay sorted, and can be
// moved.

#include "core/files/list/listmodel.h"
#include "support/nativepath.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <numeric>

using namespace ravlin;
using namespace ravlin::test;

class TestListModel : public QObject
{
    Q_OBJECT

private:
    static ListRow row(const QString &text, const QString &artist = {}, const QString &title = {})
    {
        ListFields tag;
        tag.artist = artist;
        tag.title = title;
        return {{}, ListedFile(text, tag)};
    }
    static QStringList texts(const ListModel &model)
    {
        QStringList texts;
        for (const ListRow &row : model.rows())
            texts += row.text();
        return texts;
    }
    static QStringList list(const char *names) { return QString::fromUtf8(names).split(u' '); }
    static std::vector<ListRow> rows(const char *names)
    {
        std::vector<ListRow> made;
        for (const QString &name : list(names))
            made.push_back(row(name));
        return made;
    }

private Q_SLOTS:
    void aRowShowsItsEightColumns()
    {
        ListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        const ListFields tag{QStringLiteral("Título"), QStringLiteral("日本"), QStringLiteral("Al"),
            QStringLiteral("1999"), QStringLiteral("7"), false, true};
        model.setRows({{QStringLiteral("cd1/"), ListedFile(u"tema.mp3", tag)}});
        QStringList shown;
        for (int column = 0; column < model.columnCount(); ++column)
            shown += model.index(0, column).data().toString();
        QCOMPARE(shown, list("cd1/tema.mp3 07 Título 日本 Al 1999 no yes"));
    }

    void aTagTooLargeIsMarkedInItsColumn()
    {
        ListModel model;
        model.setTooLargeText(QStringLiteral("tag too large"));
        ListFields tag;
        tag.hasV2 = true;
        tag.isCut = true;
        model.setRows({{{}, ListedFile(u"a.mp3", tag)}, row(QStringLiteral("b.mp3"))});
        QCOMPARE(model.index(0, 7).data().toString(), QStringLiteral("yes, tag too large"));
        QCOMPARE(model.index(1, 7).data().toString(), QStringLiteral("no"));
        QCOMPARE(model.index(0, 6).data().toString(), QStringLiteral("no"));
        ListRow renamed = row(QStringLiteral("c.mp3"));
        renamed.takeTags(model.rowAt(0).file);
        QVERIFY(renamed.file.isCut());
    }

    void headersAreAsTheyAreSet()
    {
        ListModel model;
        QSignalSpy changed(&model, &QAbstractItemModel::headerDataChanged);
        model.setHeaderText(ListColumn::Title, QStringLiteral("título"));
        QCOMPARE(changed.count(), 1);
        QCOMPARE(model.headerData(2, Qt::Horizontal).toString(), QStringLiteral("título"));
        QCOMPARE(model.headerData(6, Qt::Horizontal).toString(), QStringLiteral("id3v1"));
        QCOMPARE(model.headerData(7, Qt::Horizontal).toString(), QStringLiteral("id3v2"));
    }

    void aNameOf64CharactersIsPlainAndOneOf65IsLong()
    {
        QVERIFY(!hasLongName(QString(64, u'x')));
        QVERIFY(hasLongName(QString(65, u'x')));
        QVERIFY(!hasLongName(QString(40, u'x') + platform::Separator + QString(64, u'é'))); // the prefix doesn't count
        QVERIFY(hasLongName(native(QStringLiteral("a/")) + QString(65, u'é')));
        const QString outsideThePlane = QStringLiteral("𝄞");
        QVERIFY(!hasLongName(outsideThePlane.repeated(64)));
        QVERIFY(hasLongName(outsideThePlane.repeated(65)));
        QVERIFY(hasLongName(QString(65, QChar(0xDCE9)))); // 65 bytes that are not Unicode
    }

    void namesThatAreNoUnicodeAreShownReadably()
    {
        const QString name = QStringLiteral("caf") + QChar(0xDCE9) + QStringLiteral("𝄞.mp3");
        QCOMPARE(shownName(name), QStringLiteral("caf\uFFFD𝄞.mp3"));
        ListModel model;
        model.setRows({row(name)});
        QCOMPARE(model.rowAt(0).text(), name);
        QCOMPARE(model.index(0, 0).data().toString(), QStringLiteral("caf\uFFFD𝄞.mp3"));
    }

    void rowsArriveSortedStablyByTheColumnChosenLast()
    {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("sortKey"))); // the rows have empty cells
        ListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        model.setRows(rows("b C a"));
        QCOMPARE(texts(model), list("a b C"));
        model.sortByHeader(3);
        model.sortByHeader(3);
        // Another folder is sorted by artist, descending; rows of one artist keep the order in which they were found.
        model.setRows({row(QStringLiteral("1"), QStringLiteral("A")), row(QStringLiteral("4"), QStringLiteral("b")),
            row(QStringLiteral("3"), QStringLiteral("B")), row(QStringLiteral("2"), QStringLiteral("c"))});
        QCOMPARE(texts(model), list("2 4 3 1"));
        QVERIFY(model.isInOrder());
    }

    void rowsThatAreSetAgainComeAsIfForTheFirstTime_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("clicks");
        QTest::newRow("by file") << 0 << 0;
        QTest::newRow("by file, descending") << 0 << 1;
        QTest::newRow("by artist") << 3 << 1;
        QTest::newRow("by artist, descending") << 3 << 2;
    }
    /// Between the listings rows change, come, go and swap places, many of them equal in the column; at times the user
    /// moves and sorts rows.
    void rowsThatAreSetAgainComeAsIfForTheFirstTime()
    {
        QFETCH(int, column);
        QFETCH(int, clicks);
        const QLocale spanish(QLocale::Spanish, QLocale::Spain);
        ListModel kept;
        kept.setLocale(spanish);
        for (int i = 0; i < clicks; ++i)
            kept.sortByHeader(column);
        QRandomGenerator random(11);
        int nextName = 0;
        const auto someRow = [&](const QString &name) {
            return row(name, QString(QChar(u'a' + random.bounded(4))), QString::number(random.bounded(1000)));
        };
        const auto newRow = [&] {
            return someRow(QStringLiteral("%1 %2").arg(QChar(u'a' + random.bounded(20))).arg(++nextName));
        };
        std::vector<ListRow> listed;
        for (int i = 0; i < 200; ++i)
            listed.push_back(newRow());
        for (int round = 0; round < 200; ++round) {
            for (int change = random.bounded(5); change > 0; --change) {
                const auto place = listed.begin() + random.bounded(static_cast<int>(listed.size()));
                switch (random.bounded(4)) {
                case 0:
                    *place = someRow(place->text());
                    break;
                case 1:
                    listed.erase(place);
                    break;
                case 2:
                    listed.insert(place, newRow());
                    break;
                default:
                    std::swap(*place, listed.back());
                }
            }
            kept.setRows(listed);
            ListModel fresh;
            fresh.setLocale(spanish);
            for (int i = 0; i < clicks; ++i)
                fresh.sortByHeader(column);
            fresh.setRows(listed);
            QCOMPARE(texts(kept), texts(fresh));
            for (int i = 0; i < kept.rowCount(); ++i)
                QVERIFY(kept.rowAt(i).file.isCopyOf(fresh.rowAt(i).file));
            if (round % 10 == 5)
                kept.moveRowTo(0, kept.rowCount());
            if (round % 10 == 8) { // there and back, which reorders equal rows
                const ListOrder before = kept.order();
                kept.sortByHeader(1);
                kept.sortByHeader(column);
                if (kept.order() != before)
                    kept.sortByHeader(column);
            }
        }
    }

    void tagsThatAreReadAgainDoNotMisleadTheNextListing()
    {
        ListModel model;
        model.sortByHeader(3);
        const auto a = row(QStringLiteral("1"), QStringLiteral("a"));
        const auto b = row(QStringLiteral("2"), QStringLiteral("b"));
        const auto z = row(QStringLiteral("1"), QStringLiteral("z"));
        model.setRows({a, b});
        model.setTags({z.file, std::nullopt});
        QCOMPARE(texts(model), list("1 2"));
        model.setRows({z, b});
        QCOMPARE(texts(model), list("2 1"));
    }

    void anotherLanguageSortsAnew()
    {
        ListModel model;
        model.setLocale(QLocale(QLocale::Spanish, QLocale::Spain));
        const std::vector<ListRow> names = rows("o ñ n");
        model.setRows(names);
        QCOMPARE(texts(model), list("n ñ o"));
        model.setLocale(QLocale::c());
        model.setRows(names);
        QCOMPARE(texts(model), list("n o ñ"));
    }

    void withoutAutomaticSortingRowsStayAsTheyCome()
    {
        ListModel model;
        model.setAutomaticSorting(false);
        model.setRows(rows("b C a"));
        QCOMPARE(texts(model), list("b C a"));
        QVERIFY(!model.isInOrder());
    }

    void numericTagsSortOnceByNumber()
    {
        ListModel model;
        model.setLocale(QLocale(QLocale::English));
        model.setHeaderTag(ListColumn::Artist, QStringLiteral("Numeric"));
        model.setRows({row(QStringLiteral("a"), QStringLiteral("10")), row(QStringLiteral("b"), QStringLiteral("9"))});
        QCOMPARE(model.sortByHeader(3), (std::vector<std::size_t>{1, 0}));
        QCOMPARE(texts(model), list("b a"));
        QVERIFY(!model.order().automatic);
    }

    void aMovedRowTakesAllItsColumnsAlong_data()
    {
        QTest::addColumn<int>("from");
        QTest::addColumn<int>("to");
        QTest::addColumn<QString>("after");
        QTest::newRow("down") << 0 << 2 << QStringLiteral("b a c d");
        QTest::newRow("to the end") << 1 << 4 << QStringLiteral("a c d b");
        QTest::newRow("up") << 3 << 1 << QStringLiteral("a d b c");
        QTest::newRow("to the start") << 2 << 0 << QStringLiteral("c a b d");
        QTest::newRow("onto itself") << 2 << 2 << QStringLiteral("a b c d");
        QTest::newRow("behind itself") << 2 << 3 << QStringLiteral("a b c d");
        QTest::newRow("from nowhere") << 4 << 0 << QStringLiteral("a b c d");
        QTest::newRow("too far") << 0 << 5 << QStringLiteral("a b c d");
    }
    void aMovedRowTakesAllItsColumnsAlong()
    {
        QFETCH(int, from);
        QFETCH(int, to);
        QFETCH(QString, after);
        ListModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        std::vector<ListRow> made = rows("a b c d");
        for (ListRow &each : made)
            each = row(each.text(), {}, each.text().toUpper());
        model.setRows(made);
        const QPersistentModelIndex kept = model.index(from, 2);
        const QVariant title = kept.data();
        const bool moves = after != QStringLiteral("a b c d");
        QCOMPARE(model.moveRowTo(from, to), moves);
        QCOMPARE(model.isInOrder(), !moves);
        QCOMPARE(texts(model), after.split(u' '));
        for (const ListRow &each : model.rows())
            QCOMPARE(each.file.title(), each.text().toUpper());
        QCOMPARE(kept.data(), title);
    }

    void rereadTagsKeepRowsAndOrder()
    {
        ListModel model;
        model.setRows(
            {row(QStringLiteral("a"), {}, QStringLiteral("1")), row(QStringLiteral("b"), {}, QStringLiteral("2"))});
        model.sortByHeader(2);
        ListFields changed;
        changed.title = QStringLiteral("3");
        model.setTags({ListedFile(u"a", changed), std::nullopt});
        QCOMPARE(texts(model), list("a b"));
        QCOMPARE(model.rowAt(0).file.title(), QStringLiteral("3"));
        QCOMPARE(model.rowAt(1).file.title(), QStringLiteral("2"));
        QVERIFY(!model.isInOrder());
    }

    void columnsOfNarrowListsShareItsWholeWidth()
    {
        const auto widths = columnWidths(8000);
        QCOMPARE(widths[0], 2400);
        QCOMPARE(widths[1], 560);
        QCOMPARE(widths[2], 1664);
        QCOMPARE(widths[3], 1184);
        QCOMPARE(widths[4], 1360);
        QCOMPARE(widths[5], 800);
    }

    void columnsOfWideListsShareWhatTheFixedOnesLeave()
    {
        const auto widths = columnWidths(11400);
        QCOMPARE(widths[0], 3500);
        QCOMPARE(widths[2], 2500);
        QCOMPARE(widths[3], 1780);
        QCOMPARE(widths[4], 2100);
        const auto wider = columnWidths(30000);
        for (const std::size_t fixed : {1U, 5U, 6U, 7U})
            QCOMPARE(wider[fixed], widths[fixed]);
    }

    void aListIsWideFrom600TwipsOfTrackColumnOn()
    {
        QCOMPARE(columnWidths(8571)[0], 2571); // 0.07 of it is 599.97
        QCOMPARE(columnWidths(8572)[0], 2510);
    }
};

QTEST_GUILESS_MAIN(TestListModel)
#include "tst_listmodel.moc"
