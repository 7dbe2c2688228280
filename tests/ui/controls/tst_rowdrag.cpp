// SPDX-License-Identifier: GPL-3.0-or-later
// Dragging a row begins when the left button moves farther than in a click, shows a mark where the row would go,
// scrolls beyond the edge, and ends with a drop; Escape or another button ends it without one.

#include "ui/controls/rowdrag.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>
#include <QTreeView>

#include <memory>

using namespace ravlin;

namespace {

class List : public QTreeView
{
public:
    explicit List(int rowCount)
    {
        for (int row = 0; row < rowCount; ++row)
            m_model.appendRow(new QStandardItem(QString::number(row)));
        setModel(&m_model);
        setUniformRowHeights(true);
        resize(200, 300);
    }

    RowDrag drag{this, DropRule::BeforeRowUnder};

    QPoint middleOf(int row) const { return visualRect(m_model.index(row, 0)).center(); }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QTreeView::paintEvent(event);
        drag.paintMark();
    }

private:
    QStandardItemModel m_model;
};

QMouseEvent mouseEvent(QEvent::Type type, const QPoint &place, Qt::MouseButton button, Qt::MouseButtons buttons,
    Qt::KeyboardModifiers modifiers = {})
{
    return {type, place, place, button, buttons, modifiers};
}

} // namespace

class TestRowDrag : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<List> m_list;

    RowDrag &drag() { return m_list->drag; }
    void press(int row, Qt::MouseButtons buttons = Qt::LeftButton, Qt::KeyboardModifiers modifiers = {})
    {
        const Qt::MouseButton button = buttons & Qt::RightButton ? Qt::RightButton : Qt::LeftButton;
        drag().press(mouseEvent(QEvent::MouseButtonPress, m_list->middleOf(row), button, buttons, modifiers));
    }
    bool move(const QPoint &to) { return drag().move(mouseEvent(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton)); }
    std::optional<RowDrag::Drop> release(const QPoint &place, Qt::MouseButton button = Qt::LeftButton)
    {
        return drag().release(mouseEvent(QEvent::MouseButtonRelease, place, button, Qt::NoButton));
    }
    QImage picture() const { return m_list->viewport()->grab().toImage(); }

private Q_SLOTS:
    void init()
    {
        m_list = std::make_unique<List>(5);
        m_list->show();
    }
    void cleanup() { m_list.reset(); }

    void aDropTellsTheRowAndItsPosition()
    {
        QSignalSpy beginnings(&drag(), &RowDrag::began);
        press(3);
        QVERIFY(!drag().isUnderWay());
        QVERIFY(move(m_list->middleOf(2)));
        QVERIFY(move(m_list->middleOf(1)));
        QVERIFY(drag().isUnderWay());
        QCOMPARE(beginnings.size(), 1);
        const std::optional<RowDrag::Drop> drop = release(m_list->middleOf(1));
        QVERIFY(drop);
        QCOMPARE(drop->row, 3);
        QCOMPARE(drop->position, 1);
        QVERIFY(!drag().isUnderWay());
        QVERIFY(!move(m_list->middleOf(4)));
    }

    void aMoveOfAClickIsNoDragAndNotTheListsEither()
    {
        press(2);
        QVERIFY(move(m_list->middleOf(2) + QPoint(1, 1)));
        QVERIFY(!drag().isUnderWay());
        QVERIFY(!release(m_list->middleOf(2)));
    }

    void otherPressesBeginNoDrag()
    {
        press(2, Qt::RightButton);
        QVERIFY(!move(m_list->middleOf(0)));
        press(2, Qt::LeftButton, Qt::ControlModifier);
        QVERIFY(!move(m_list->middleOf(0)));
        const QPoint belowTheRows(20, m_list->viewport()->height() - 3);
        drag().press(mouseEvent(QEvent::MouseButtonPress, belowTheRows, Qt::LeftButton, Qt::LeftButton));
        QVERIFY(!move(m_list->middleOf(0)));
    }

    void escapeEndsIt()
    {
        const QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QVERIFY(!drag().keyPress(escape)); // it is the list's
        press(3);
        move(m_list->middleOf(0));
        QVERIFY(!drag().keyPress({QEvent::KeyPress, Qt::Key_A, Qt::NoModifier}));
        QVERIFY(drag().keyPress(escape));
        QVERIFY(!drag().isUnderWay());
        QVERIFY(!release(m_list->middleOf(0)));
    }

    void anotherButtonEndsIt()
    {
        press(3);
        move(m_list->middleOf(0));
        press(1, Qt::LeftButton | Qt::RightButton);
        QVERIFY(!drag().isUnderWay());
        QVERIFY(!release(m_list->middleOf(0)));
    }

    void theMarkIsWhereTheRowWouldGo()
    {
        const QImage before = picture();
        const int right = before.width() - 2;
        const auto isMarkedAbove = [&](int row) {
            const int y = m_list->middleOf(0).y() + row * (m_list->middleOf(1) - m_list->middleOf(0)).y() -
                          m_list->visualRect(m_list->model()->index(0, 0)).height() / 2;
            const QImage now = picture();
            return now.copy(right, y - 1, 1, 3) != before.copy(right, y - 1, 1, 3);
        };
        press(0);
        move(m_list->middleOf(3));
        QVERIFY(isMarkedAbove(3));
        QVERIFY(!isMarkedAbove(2));
        move(m_list->middleOf(2));
        QVERIFY(isMarkedAbove(2));
        QVERIFY(!isMarkedAbove(3));
        drag().giveUp();
        QCOMPARE(picture(), before);
    }

    void beyondTheEdgeItScrolls()
    {
        m_list = std::make_unique<List>(200);
        m_list->show();
        press(0);
        move(QPoint(20, m_list->viewport()->height() + 30));
        QTRY_VERIFY_WITH_TIMEOUT(m_list->verticalScrollBar()->value() > 3, 30'000);
        move(QPoint(20, -30));
        QTRY_COMPARE_WITH_TIMEOUT(m_list->verticalScrollBar()->value(), 0, 30'000);
        const std::optional<RowDrag::Drop> drop = release(QPoint(20, -30));
        QVERIFY(drop);
        QCOMPARE(drop->position, 0);
    }
};

QTEST_MAIN(TestRowDrag)
#include "tst_rowdrag.moc"
