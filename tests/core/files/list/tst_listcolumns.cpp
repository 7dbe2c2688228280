// SPDX-License-Identifier: GPL-3.0-or-later
// Contract: a text and a set of hidden columns convert into each other, and the other columns get the room of hidden
// ones.

#include "core/files/list/listcolumns.h"

#include <QTest>

#include <numeric>

using namespace Qt::StringLiterals;
using namespace ravlin;

class TestListColumns : public QObject
{
    Q_OBJECT

private:
    static ColumnSet columns(std::initializer_list<ListColumn> list)
    {
        ColumnSet set;
        for (const ListColumn column : list)
            set.set(static_cast<std::size_t>(column));
        return set;
    }

private Q_SLOTS:
    void textsNameColumns_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("bits"); // the last column first
        QTest::newRow("none") << QString() << u"00000000"_s;
        QTest::newRow("two") << u"track year"_s << u"00100010"_s;
        QTest::newRow("in any order, with any blanks") << u"  year\ttrack "_s << u"00100010"_s;
        QTest::newRow("twice") << u"album album"_s << u"00010000"_s;
        QTest::newRow("all but the file") << u"track title artist album year id3v1 id3v2"_s << u"11111110"_s;
        QTest::newRow("the file can't be hidden") << u"file id3v1"_s << u"01000000"_s;
        QTest::newRow("unknown names") << u"rating year, Track"_s << u"00000000"_s;
    }
    void textsNameColumns()
    {
        QFETCH(QString, text);
        QFETCH(QString, bits);
        QCOMPARE(QString::fromStdString(hiddenColumnsFromText(text).to_string()), bits);
    }

    void everySetComesBackFromItsText()
    {
        for (unsigned bits = 0; bits < 256; ++bits) {
            ColumnSet hidden(bits);
            hidden.reset(0);
            QVERIFY(hiddenColumnsFromText(textOfHiddenColumns(hidden, u"")) == hidden);
        }
    }

    void namesThatALaterVersionStoredAreKept()
    {
        QCOMPARE(textOfHiddenColumns(columns({ListColumn::Year}), u"rating track bpm"), u"year rating bpm"_s);
        QCOMPARE(textOfHiddenColumns({}, u"rating track"), u"rating"_s);
    }

    void theRoomOfHiddenColumnsGoesToTheTexts()
    {
        for (const int width : {4000, 8571, 8572, 15000, 30000}) {
            const auto all = columnWidths(width);
            const auto hidden = columnWidths(width, columns({ListColumn::Track, ListColumn::Album}));
            QCOMPARE(hidden[1], 0);
            QCOMPARE(hidden[4], 0);
            QCOMPARE(hidden[5], all[5]);
            QCOMPARE(hidden[6], all[6]);
            for (const std::size_t text : {0U, 2U, 3U})
                QVERIFY(hidden.at(text) > all.at(text));
            // Each of the three is rounded down.
            const int sumOfAll = std::accumulate(all.begin(), all.begin() + 6, 0);
            const int sumOfHidden = std::accumulate(hidden.begin(), hidden.begin() + 6, 0);
            QVERIFY2(sumOfHidden <= sumOfAll && sumOfHidden > sumOfAll - 3, qPrintable(QString::number(width)));
        }
    }

    void hidingTheTagColumnsLeavesTheOthersAsTheyAre()
    {
        const auto all = columnWidths(12000);
        const auto hidden = columnWidths(12000, columns({ListColumn::Id3v1, ListColumn::Id3v2}));
        for (std::size_t column = 0; column < 6; ++column)
            QCOMPARE(hidden.at(column), all.at(column));
        QCOMPARE(hidden[6], 0);
        QCOMPARE(hidden[7], 0);
    }

    void aloneTheFileTakesAll()
    {
        ColumnSet hidden;
        hidden.set().reset(0);
        QCOMPARE(columnWidths(12000, hidden)[0], [] {
            const auto all = columnWidths(12000);
            return std::accumulate(all.begin(), all.begin() + 6, 0);
        }());
        for (const int width : {0, 1, 1400})
            QVERIFY(columnWidths(width, hidden).size() == 8); // no division by nothing
    }
};

QTEST_GUILESS_MAIN(TestListColumns)
#include "tst_listcolumns.moc"
