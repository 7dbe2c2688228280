// SPDX-License-Identifier: GPL-3.0-or-later
// The facing lists: the user orders rows by dragging one, which goes before the row under the pointer, and with Alt and
// the arrow keys. The selection moves along, and a mark shows where a row would go.

#include "ui/online/lookupfixture.h"

#include <QScrollBar>
#include <QSignalSpy>

using namespace ravlin;
using namespace ravlin::test;

class TestRowList : public LookupFixture
{
    Q_OBJECT

private:
    std::unique_ptr<RowList> m_list;

    QString order() const { return column(m_list.get(), 0).join(u' '); }
    QStringList selected() const
    {
        QStringList names;
        const std::vector<bool> flags = m_list->selectionFlags();
        for (std::size_t row = 0; row < flags.size(); ++row) {
            if (flags[row])
                names << m_list->rows().lines()[row].cells.constFirst();
        }
        return names;
    }
    /// Whether something new is drawn at the edge above that row (5: below the last).
    bool isMarkedAbove(const QImage &before, int row) const
    {
        const int height = m_list->visualRect(m_list->model()->index(0, 0)).height();
        const QImage now = m_list->viewport()->grab().toImage();
        const QPoint place(now.width() - 2, std::min(row * height, now.height() - 1));
        return now.pixel(place) != before.pixel(place);
    }

private Q_SLOTS:
    void init()
    {
        m_list = std::make_unique<RowList>("list", 0, nullptr);
        m_list->setHeaderTexts({u"name"_s, u"time"_s});
        std::vector<ListedLine> lines;
        for (int id = 0; id < 5; ++id)
            lines.push_back({id, {QString(QChar(u'a' + id)), u"1"_s}, {}});
        m_list->rows().setLines(lines);
        m_list->resize(200, 300);
        m_list->show();
    }
    void cleanup() { m_list.reset(); }

    void aDraggedRowGoesBeforeTheRowUnderThePointer_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("onto");
        QTest::addColumn<QString>("expected");
        QTest::newRow("down") << 0 << 2 << u"b a c d e"_s;
        QTest::newRow("up") << 3 << 1 << u"a d b c e"_s;
        QTest::newRow("to the top") << 4 << 0 << u"e a b c d"_s;
        QTest::newRow("below the last") << 0 << 6 << u"b c d e a"_s;
        QTest::newRow("onto the next") << 1 << 2 << u"a b c d e"_s;
        QTest::newRow("onto itself and back") << 2 << 2 << u"a b c d e"_s;
    }
    void aDraggedRowGoesBeforeTheRowUnderThePointer()
    {
        QFETCH(int, row);
        QFETCH(int, onto);
        QFETCH(QString, expected);
        QSignalSpy changes(m_list.get(), &RowList::orderChanged);
        dragRow(m_list.get(), row, onto);
        QCOMPARE(order(), expected);
        QCOMPARE(changes.size(), expected == u"a b c d e"_s ? 0 : 1);
    }

    void altAndAnArrowMoveTheCurrentRow()
    {
        m_list->setCurrentIndex(m_list->model()->index(1, 0));
        QTest::keyClick(m_list.get(), Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(order(), u"a c b d e"_s);
        QTest::keyClick(m_list.get(), Qt::Key_Up, Qt::AltModifier);
        QTest::keyClick(m_list.get(), Qt::Key_Up, Qt::AltModifier);
        QCOMPARE(order(), u"b a c d e"_s);
        QTest::keyClick(m_list.get(), Qt::Key_Up, Qt::AltModifier); // is the first already
        QCOMPARE(order(), u"b a c d e"_s);
        QCOMPARE(m_list->currentIndex().row(), 0);
        m_list->setCurrentIndex(m_list->model()->index(4, 0));
        QTest::keyClick(m_list.get(), Qt::Key_Down, Qt::AltModifier); // is the last already
        QCOMPARE(order(), u"b a c d e"_s);
    }

    void theSelectionGoesWithTheRowsAndADragKeepsIt()
    {
        clickRow(m_list.get(), 0);
        clickRow(m_list.get(), 2, Qt::ControlModifier);
        QCOMPARE(selected(), (QStringList{u"a"_s, u"c"_s}));
        dragRow(m_list.get(), 2, 0);
        QCOMPARE(order(), u"c a b d e"_s);
        QCOMPARE(selected(), (QStringList{u"c"_s, u"a"_s}));
        dragRow(m_list.get(), 4, 1);
        QCOMPARE(selected(), (QStringList{u"c"_s, u"a"_s}));
    }

    void aMarkShowsWhereTheRowWouldGo()
    {
        const QImage before = m_list->viewport()->grab().toImage();
        QTest::mousePress(m_list->viewport(), Qt::LeftButton, {}, pointOf(m_list.get(), 0));
        move(m_list.get(), pointOf(m_list.get(), 3));
        QVERIFY(isMarkedAbove(before, 3));
        QVERIFY(!isMarkedAbove(before, 2));
        move(m_list.get(), pointOf(m_list.get(), 4) + QPoint(0, 40));
        QVERIFY(isMarkedAbove(before, 5));
        QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, pointOf(m_list.get(), 4) + QPoint(0, 40));
        QCOMPARE(order(), u"b c d e a"_s);
        QVERIFY(!isMarkedAbove(before, 5));
    }

    void escapeEndsADragWithoutAMove()
    {
        QTest::mousePress(m_list->viewport(), Qt::LeftButton, {}, pointOf(m_list.get(), 0));
        move(m_list.get(), pointOf(m_list.get(), 3));
        QTest::keyClick(m_list.get(), Qt::Key_Escape);
        QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, pointOf(m_list.get(), 3));
        QCOMPARE(order(), u"a b c d e"_s);
    }

    void aDragBeyondTheEdgeScrolls()
    {
        std::vector<ListedLine> lines;
        for (int id = 0; id < 200; ++id)
            lines.push_back({id, {QString::number(id), {}}, {}});
        m_list->rows().setLines(lines);
        QTest::mousePress(m_list->viewport(), Qt::LeftButton, {}, pointOf(m_list.get(), 0));
        move(m_list.get(), QPoint(20, m_list->viewport()->height() + 30));
        QTRY_VERIFY_WITH_TIMEOUT(m_list->indexAt({5, 5}).row() > 3, PatientWait);
        QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, QPoint(20, 20));
        QVERIFY(column(m_list.get(), 0).indexOf(u"0"_s) > 3);
    }

    void aRowWithARemarkIsAsHighAsTheOthers()
    {
        const int height = m_list->visualRect(m_list->model()->index(0, 0)).height();
        QPixmap sign(64, 64);
        sign.fill(Qt::red);
        m_list->rows().setRemarkIcon(QIcon(sign));
        m_list->rows().setRemark(0, u"odd"_s);
        m_list->doItemsLayout();
        QCOMPARE(m_list->visualRect(m_list->model()->index(0, 0)).height(), height);
    }

    void twoListsScrollTogether()
    {
        RowList other("other", 0, nullptr);
        other.setHeaderTexts({u"name"_s, u"time"_s});
        for (const auto &[list, count] : {std::pair(m_list.get(), 100), std::pair(&other, 60)}) {
            std::vector<ListedLine> lines;
            for (int id = 0; id < count; ++id)
                lines.push_back({id, {QString::number(id), {}}, {}});
            list->rows().setLines(lines);
            list->resize(200, 200);
            list->show();
        }
        RowList::scrollTogether(m_list.get(), &other);
        const auto topRow = [](const RowList &list) { return list.indexAt({5, 5}).row(); };
        m_list->verticalScrollBar()->setValue(30);
        QCOMPARE(topRow(*m_list), 30);
        QCOMPARE(topRow(other), 30);
        other.verticalScrollBar()->setValue(7);
        QCOMPARE(topRow(*m_list), 7);
        // The shorter list scrolls as far as it can and does not hold the longer one back.
        m_list->verticalScrollBar()->setValue(80);
        QCOMPARE(topRow(*m_list), 80);
        QCOMPARE(other.verticalScrollBar()->value(), other.verticalScrollBar()->maximum());
    }

    void aSmallMoveOfAClickIsNoDrag()
    {
        const QPoint place = pointOf(m_list.get(), 2);
        QTest::mousePress(m_list->viewport(), Qt::LeftButton, {}, place);
        move(m_list.get(), place + QPoint(1, 1));
        QTest::mouseRelease(m_list->viewport(), Qt::LeftButton, {}, place + QPoint(1, 1));
        QCOMPARE(order(), u"a b c d e"_s);
        QCOMPARE(selected(), QStringList{u"c"_s});
    }
};

QTEST_MAIN(TestRowList)
#include "tst_rowlist.moc"
