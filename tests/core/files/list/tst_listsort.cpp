// SPDX-License-Identifier: GPL-3.0-or-later
// Contract of sorting by a column: which order a click on a header chooses, how texts, numbers and dates compare.

#include "core/files/list/listsort.h"

#include <QRandomGenerator>
#include <QStringList>
#include <QTest>

using namespace ravlin;

class TestListSort : public QObject
{
    Q_OBJECT

private:
    static QStringList sorted(const QStringList &values, SortKind kind, Qt::SortOrder order = Qt::AscendingOrder,
        const QLocale &locale = QLocale(QLocale::Spanish, QLocale::Spain))
    {
        QStringList result;
        const auto text = [&](std::size_t i) { return values[static_cast<qsizetype>(i)]; };
        for (const std::size_t position :
            sortedPositions(static_cast<std::size_t>(values.size()), text, kind, order, locale))
            result += values[static_cast<qsizetype>(position)];
        return result;
    }
    static QStringList words(const char *text) { return QString::fromUtf8(text).split(u' '); }

private Q_SLOTS:
    void textsThatAreInOrderAreNotSortedAgain_data()
    {
        QTest::addColumn<Qt::SortOrder>("order");
        QTest::newRow("ascending") << Qt::AscendingOrder;
        QTest::newRow("descending") << Qt::DescendingOrder;
    }
    /// Whatever texts are added to sorted ones, the result is that of sorting all.
    void textsThatAreInOrderAreNotSortedAgain()
    {
        QFETCH(Qt::SortOrder, order);
        const QLocale locale(QLocale::Spanish, QLocale::Spain);
        QRandomGenerator random(7);
        for (int round = 0; round < 300; ++round) {
            const auto count = static_cast<std::size_t>(random.bounded(30));
            QStringList values;
            for (std::size_t i = 0; i < count; ++i)
                values += words("a A á b B c ñ n z")[random.bounded(9)];
            const auto text = [&](std::size_t i) { return values[static_cast<qsizetype>(i)]; };
            const std::vector<std::size_t> all = sortedPositions(count, text, SortKind::Text, order, locale);
            std::vector<std::size_t> sorted;
            std::vector<std::size_t> others;
            for (const std::size_t position : all)
                (random.bounded(4) > 0 ? sorted : others).push_back(position);
            std::shuffle(others.begin(), others.end(), random);
            QCOMPARE(sortedPositionsWith(others, sorted, text, order, locale), all);
        }
    }

    void aSecondClickReversesAndAThirdReversesBack()
    {
        ListOrder order; // by file name
        order = SortListView(order, 2, {});
        QCOMPARE(order, (ListOrder{2, Qt::AscendingOrder, true}));
        order = SortListView(order, 2, {});
        QCOMPARE(order, (ListOrder{2, Qt::DescendingOrder, true}));
        order = SortListView(order, 2, {});
        QCOMPARE(order, (ListOrder{2, Qt::AscendingOrder, true}));
    }

    void anotherColumnStartsAscendingWhateverTheOrderWas()
    {
        QCOMPARE(SortListView({2, Qt::DescendingOrder, true}, 3, {}), (ListOrder{3, Qt::AscendingOrder, true}));
        QCOMPARE(SortListView({2, Qt::AscendingOrder, true}, 3, {}), (ListOrder{3, Qt::AscendingOrder, true}));
    }

    void numbersAndDatesAreSortedOnce()
    {
        QCOMPARE(SortListView({}, 3, u"NUMERIC").automatic, false);
        QCOMPARE(SortListView({}, 3, u"Date").automatic, false);
        QCOMPARE(SortListView({3, Qt::AscendingOrder, false}, 3, u"other"), (ListOrder{3, Qt::DescendingOrder, true}));
        QCOMPARE(sortKindFromTag(u"numeric"), SortKind::Numeric);
        QCOMPARE(sortKindFromTag(u"date"), SortKind::Date);
        QCOMPARE(sortKindFromTag(u" date"), SortKind::Text);
        QCOMPARE(sortKindFromTag({}), SortKind::Text);
    }

    void trackValues01And02And10SortAsNumbersDo()
    {
        QCOMPARE(sorted(words("10 02 01"), SortKind::Text), words("01 02 10"));
    }

    void textIgnoresCaseAndPutsAccentsBesideTheirLetters()
    {
        QCOMPARE(sorted(words("b Álbum c A álbum alba B"), SortKind::Text), words("A alba Álbum álbum b B c"));
        QCOMPARE(sorted(words("b A c"), SortKind::Text, Qt::AscendingOrder, QLocale::c()), words("A b c"));
        QCOMPARE(sorted(words("日本 z あ Z"), SortKind::Text, Qt::DescendingOrder).size(), 4);
    }

    void whatComesFirstInATextCountsMost()
    {
        const QStringList texts = words("cd1/d.mp3 d b2 c.mp3 ab a2 a1 b ba a");
        QCOMPARE(sorted(texts, SortKind::Text), words("a a1 a2 ab b b2 ba c.mp3 cd1/d.mp3 d"));
        QCOMPARE(sorted({QStringLiteral("a"), {}, QStringLiteral("-"), {}}, SortKind::Text),
            QStringList({{}, {}, QStringLiteral("-"), QStringLiteral("a")}));
    }

    void equalValuesKeepTheirOrderBothWays()
    {
        QCOMPARE(sorted(words("x B a b A X"), SortKind::Text), words("a A B b x X"));
        QCOMPARE(sorted(words("x B a b A X"), SortKind::Text, Qt::DescendingOrder), words("x X B b a A"));
        QCOMPARE(sorted(words("1 01 0 1,0"), SortKind::Numeric, Qt::DescendingOrder), words("1 01 1,0 0"));
    }

    void numbersAreReadAsTheLocaleWritesThem()
    {
        QCOMPARE(sorted(words("1.000 9 10,5 -3 x 10"), SortKind::Numeric), words("x -3 9 10 10,5 1.000"));
        QCOMPARE(sorted(words("1,000 9 10.5"), SortKind::Numeric, Qt::AscendingOrder, QLocale(QLocale::English)),
            words("9 10.5 1,000"));
    }

    void datesAreReadAsTheLocaleWritesThem()
    {
        const QLocale spain(QLocale::Spanish, QLocale::Spain);
        const QLocale states(QLocale::English, QLocale::UnitedStates);
        for (const QLocale &locale : {spain, states}) {
            QStringList dates;
            for (const QDate date : {QDate(2003, 1, 12), QDate(2003, 12, 1), QDate(2003, 2, 3)})
                dates += locale.toString(date, QLocale::LongFormat);
            QCOMPARE(
                sorted(dates, SortKind::Date, Qt::AscendingOrder, locale), QStringList({dates[0], dates[2], dates[1]}));
        }
        QCOMPARE(sorted({QStringLiteral("2003-12-01"), QStringLiteral("no date"), QStringLiteral("2003-01-12T10:00")},
                     SortKind::Date),
            QStringList({QStringLiteral("no date"), QStringLiteral("2003-01-12T10:00"), QStringLiteral("2003-12-01")}));
    }

    void manyValuesComeOutAsFewDo()
    {
        const auto text = [](std::size_t i) { return QString::number(i * 7919 % 20011).rightJustified(6, u'0'); };
        const auto positions = sortedPositions(20011, text, SortKind::Text, Qt::AscendingOrder);
        for (std::size_t i = 1; i < positions.size(); ++i)
            QVERIFY(text(positions[i - 1]) < text(positions[i]));
    }
};

QTEST_GUILESS_MAIN(TestListSort)
#include "tst_listsort.moc"
