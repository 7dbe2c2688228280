// SPDX-License-Identifier: GPL-3.0-or-later
// The rules for laying out a split panel and for releasing its bar: each case by itself, then the invariants over
// thousands of random rules, states and extents.

#include "core/controls/splitlayout.h"

#include <QRandomGenerator>
#include <QTest>

#include <limits>

using namespace ravlin;

Q_DECLARE_METATYPE(ravlin::SnappedPanel)

class TestSplitLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void correctsThePosition_data();
    void correctsThePosition();
    void showsWhatIsNotShut();
    void panelsFillWhatTheBarLeaves();
    void barStaysInsideWhereAPanelIsShut();
    void centreOfTheBarFollowsThePointer();
    void releasing_data();
    void releasing();
    void releasingRoundsToAWholeNumber();
    void twipsAndPixels();
    void anyRuleStateAndExtent();
    void extremeNumbers();
};

void TestSplitLayout::correctsThePosition_data()
{
    using enum SnappedPanel;
    QTest::addColumn<int>("extent");
    QTest::addColumn<int>("position");
    QTest::addColumn<SnappedPanel>("snapped");
    QTest::addColumn<int>("corrected");

    QTest::newRow("3000 wide, less than twice the minimum, nothing snapped") << 3000 << 2700 << None << 1500;
    QTest::newRow("less than twice the minimum, first snapped") << 3000 << 2700 << First << 0;
    QTest::newRow("less than twice the minimum, second snapped") << 3000 << 100 << Second << 2962;
    QTest::newRow("one below twice the minimum") << 3999 << 3000 << None << 2000;
    QTest::newRow("exactly twice the minimum") << 4000 << 3000 << None << 2000;
    QTest::newRow("500 in 10000") << 10000 << 500 << None << 2000;
    QTest::newRow("1999 in 10000") << 10000 << 1999 << None << 2000;
    QTest::newRow("2000 in 10000") << 10000 << 2000 << None << 2000;
    QTest::newRow("between") << 10000 << 4321 << None << 4321;
    QTest::newRow("8000 in 10000") << 10000 << 8000 << None << 8000;
    QTest::newRow("9000 in 10000") << 10000 << 9000 << None << 8000;
    QTest::newRow("negative") << 10000 << -5 << None << 2000;
    QTest::newRow("below the minimum, first snapped") << 10000 << 1999 << First << 0;
    QTest::newRow("below the minimum, second snapped") << 10000 << 1999 << Second << 2000;
    QTest::newRow("above, first snapped") << 10000 << 9000 << First << 8000;
    QTest::newRow("above, second snapped") << 10000 << 8001 << Second << 9962;
    QTest::newRow("second snapped, half a bar to the even neighbour") << 10001 << 9000 << Second << 9964;
    QTest::newRow("middle of an odd extent, to the even neighbour") << 3003 << 0 << None << 1502;
    QTest::newRow("no extent") << 0 << 3000 << None << 0;
}

void TestSplitLayout::correctsThePosition()
{
    QFETCH(int, extent);
    QFETCH(int, position);
    QFETCH(SnappedPanel, snapped);
    QTEST(layOutSplit(SplitRule(), {position, snapped}, extent).position, "corrected");
}

void TestSplitLayout::showsWhatIsNotShut()
{
    const SplitLayout none = layOutSplit({}, {5000, SnappedPanel::None}, 10000);
    QVERIFY(none.firstVisible && none.secondVisible);
    const SplitLayout first = layOutSplit({}, {0, SnappedPanel::First}, 10000);
    QVERIFY(!first.firstVisible && first.secondVisible);
    const SplitLayout second = layOutSplit({}, {9962, SnappedPanel::Second}, 10000);
    QVERIFY(second.firstVisible && !second.secondVisible);
}

void TestSplitLayout::panelsFillWhatTheBarLeaves()
{
    const SplitLayout layout = layOutSplit({.splitterWidth = 80}, {3000, SnappedPanel::None}, 10000);
    QCOMPARE(layout.first, (Span{0, 2960}));
    QCOMPARE(layout.bar, (Span{2960, 80}));
    QCOMPARE(layout.second, (Span{3040, 6960}));
    QCOMPARE(layout.lowest, 2000);
    QCOMPARE(layout.highest, 8000);
}

void TestSplitLayout::barStaysInsideWhereAPanelIsShut()
{
    const SplitLayout first = layOutSplit({}, {0, SnappedPanel::First}, 10000);
    QCOMPARE(first.position, 0);
    QCOMPARE(first.bar, (Span{0, 75}));
    QCOMPARE(first.second, (Span{75, 9925}));
    QCOMPARE(first.lowest, 0);
    const SplitLayout second = layOutSplit({}, {9962, SnappedPanel::Second}, 10000);
    QCOMPARE(second.position, 9962);
    QCOMPARE(second.bar.length, 75);
    QVERIFY(second.bar.end() >= 9999 && second.bar.end() <= 10000);
    QCOMPARE(second.highest, 9962);
}

void TestSplitLayout::centreOfTheBarFollowsThePointer()
{
    const SplitRule rule{.splitterWidth = 80};
    QCOMPARE(draggedBarBegin(2960, 40, rule, 10000), 2960); // taken at its centre: stays
    QCOMPARE(draggedBarBegin(2960, 1040, rule, 10000), 3960);
    QCOMPARE(draggedBarBegin(2960, -960, rule, 10000), 1960);
    QCOMPARE(draggedBarBegin(2960, -9000, rule, 10000), 0); // never out of sight
    QCOMPARE(draggedBarBegin(2960, 90000, rule, 10000), 9920);
    QCOMPARE(draggedBarBegin(0, 1000, SplitRule(), 10000), 962); // 962.5
}

void TestSplitLayout::releasing_data()
{
    using enum SnappedPanel;
    QTest::addColumn<bool>("snapToEdge");
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("released");
    QTest::addColumn<SnappedPanel>("snapped");

    QTest::newRow("at 400, below 2000 / 4") << true << 400 << 0 << First;
    QTest::newRow("at 499") << true << 499 << 0 << First;
    QTest::newRow("at 500") << true << 500 << 500 << None;
    QTest::newRow("at 5000") << true << 5000 << 5000 << None;
    QTest::newRow("at 9500") << true << 9500 << 9500 << None;
    QTest::newRow("at 9501") << true << 9501 << 9962 << Second;
    QTest::newRow("at 9600") << true << 9600 << 9962 << Second;
    QTest::newRow("left of the control") << true << -300 << 0 << First;
    QTest::newRow("right of the control") << true << 12000 << 9962 << Second;
    QTest::newRow("at 400 without SnapToEdge") << false << 400 << 400 << None;
    QTest::newRow("at 9600 without SnapToEdge") << false << 9600 << 9600 << None;
}

void TestSplitLayout::releasing()
{
    QFETCH(bool, snapToEdge);
    QFETCH(int, position);
    const SplitRule rule{.splitterWidth = 76, .snapToEdge = snapToEdge};
    constexpr int Offset = 20;
    const int barBegin = position - Offset - 38; // half a bar is added to the pointer's place
    const SplitState released = releasedBar(barBegin, Offset, rule, 10000);
    QTEST(released.snapped, "snapped");
    QTEST(released.position, "released");
}

void TestSplitLayout::releasingRoundsToAWholeNumber()
{
    QCOMPARE(releasedBar(3000, 0, SplitRule(), 10000).position, 3038); // 3037.5
    QCOMPARE(releasedBar(3001, 0, SplitRule(), 10000).position, 3038); // 3038.5
    const SplitRule snapping{.snapToEdge = true};
    QCOMPARE(releasedBar(9600, 0, snapping, 10000), (SplitState{9962, SnappedPanel::Second})); // 9962.5
    QCOMPARE(releasedBar(300, 0, snapping, 10000), (SplitState{0, SnappedPanel::First}));
}

void TestSplitLayout::twipsAndPixels()
{
    QCOMPARE(twipsFromPixels(200), 3000);
    QCOMPARE(pixelsFromTwips(3000), 200);
    QCOMPARE(pixelsFromTwips(75), 5);
    QCOMPARE(pixelsFromTwips(3007), 200);
    QCOMPARE(pixelsFromTwips(3008), 201);
    QCOMPARE(pixelsFromTwips(-7), 0);
    QCOMPARE(pixelsFromTwips(-8), -1);
    for (int pixels = -3000; pixels <= 3000; ++pixels)
        QCOMPARE(pixelsFromTwips(twipsFromPixels(pixels)), pixels);
}

void TestSplitLayout::anyRuleStateAndExtent()
{
    QRandomGenerator random(20240229);
    for (int round = 0; round < 200'000; ++round) {
        const SplitRule rule{.minPanelSize = random.bounded(4000),
            .splitterWidth = random.bounded(300),
            .snapToEdge = random.bounded(2) == 1};
        const SplitState state{random.bounded(-2000, 14000), SnappedPanel(random.bounded(3))};
        const int extent = random.bounded(300, 12000);
        const SplitLayout layout = layOutSplit(rule, state, extent);

        QVERIFY(layout.bar.begin >= 0 && layout.bar.end() <= extent);
        QCOMPARE(layout.bar.length, rule.splitterWidth);
        QCOMPARE(layout.first, (Span{0, layout.bar.begin}));
        QCOMPARE(layout.second, (Span{layout.bar.end(), extent - layout.bar.end()}));
        QVERIFY(layout.lowest <= layout.position && layout.position <= layout.highest);
        QVERIFY(layout.firstVisible || layout.secondVisible);
        // Laying out a layout's result again changes nothing.
        QCOMPARE(layOutSplit(rule, {layout.position, state.snapped}, extent).position, layout.position);

        if (state.snapped != SnappedPanel::None)
            continue;
        QVERIFY(layout.firstVisible && layout.secondVisible);
        if (extent >= 2 * rule.minPanelSize) {
            // The minimum counts up to the bar's centre, so half a bar of it belongs to the bar.
            QVERIFY(layout.position >= rule.minPanelSize && extent - layout.position >= rule.minPanelSize);
            const int halfABar = (rule.splitterWidth + 1) / 2;
            QVERIFY(layout.first.length >= rule.minPanelSize - halfABar);
            QVERIFY(layout.second.length >= rule.minPanelSize - halfABar);
        }
    }
}

void TestSplitLayout::extremeNumbers()
{
    constexpr int Least = std::numeric_limits<int>::min();
    constexpr int Greatest = std::numeric_limits<int>::max();
    const int numbers[] = {Least, -1, 0, 1, 75, 2000, Greatest};
    for (const int minPanelSize : numbers)
        for (const int splitterWidth : numbers)
            for (const int position : numbers)
                for (const int extent : numbers)
                    for (const int snapped : {0, 1, 2}) {
                        const SplitRule rule{minPanelSize, splitterWidth, true};
                        const SplitLayout layout = layOutSplit(rule, {position, SnappedPanel(snapped)}, extent);
                        QVERIFY(layout.bar.begin >= 0 && layout.bar.end() <= std::max(extent, 0));
                        QVERIFY(layout.first.length >= 0 && layout.second.length >= 0);
                        const int dragged = draggedBarBegin(position, extent, rule, extent);
                        QVERIFY(dragged >= 0 && dragged <= std::max(extent, 0));
                        const SplitState released = releasedBar(position, extent, rule, extent);
                        QVERIFY(released.snapped != SnappedPanel::First || released.position == 0);
                    }
}

QTEST_GUILESS_MAIN(TestSplitLayout)
#include "tst_splitlayout.moc"
