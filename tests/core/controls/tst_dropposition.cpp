// SPDX-License-Identifier: GPL-3.0-or-later
// A dragged row goes between the rows with the nearest edge, or before the row under the pointer; beyond the rows, to
// the first or last position.
#include "core/controls/dropposition.h"

#include <QTest>

using namespace ravlin;

class TestDropPosition : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theNearestEdgeCounts()
    {
        const RowsPlace rows{0, 20, 5};
        QCOMPARE(dropPosition(-50, rows, DropRule::NearestEdge), 0);
        QCOMPARE(dropPosition(9, rows, DropRule::NearestEdge), 0);
        QCOMPARE(dropPosition(11, rows, DropRule::NearestEdge), 1);
        QCOMPARE(dropPosition(95, rows, DropRule::NearestEdge), 5);
        QCOMPARE(dropPosition(4000, rows, DropRule::NearestEdge), 5);
    }

    void theRowUnderThePointerCounts()
    {
        const RowsPlace rows{0, 20, 5};
        QCOMPARE(dropPosition(-50, rows, DropRule::BeforeRowUnder), 0);
        QCOMPARE(dropPosition(19, rows, DropRule::BeforeRowUnder), 0);
        QCOMPARE(dropPosition(20, rows, DropRule::BeforeRowUnder), 1);
        QCOMPARE(dropPosition(99, rows, DropRule::BeforeRowUnder), 4);
        QCOMPARE(dropPosition(100, rows, DropRule::BeforeRowUnder), 5);
        QCOMPARE(dropPosition(4000, rows, DropRule::BeforeRowUnder), 5);
    }

    void rowsMayBeScrolledOutOfSight()
    {
        const RowsPlace rows{-40, 20, 5};
        QCOMPARE(dropPosition(5, rows, DropRule::NearestEdge), 2);
        QCOMPARE(dropPosition(15, rows, DropRule::BeforeRowUnder), 2);
        QCOMPARE(rows.topOf(3), 20);
    }

    void withoutRowsThereIsOnePosition()
    {
        QCOMPARE(dropPosition(5, {0, 0, 0}, DropRule::NearestEdge), 0);
        QCOMPARE(dropPosition(5, {0, 0, 0}, DropRule::BeforeRowUnder), 0);
    }
};

QTEST_GUILESS_MAIN(TestDropPosition)
#include "tst_dropposition.moc"
