// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/rowdrag.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QTimerEvent>
#include <QTreeView>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int MarkThickness = 2;   ///< pixels
constexpr int MarkArrow = 6;       ///< length of the arrow at the mark's beginning, in pixels
constexpr int ScrollInterval = 50; ///< milliseconds between two rows while the pointer is beyond the edge

} // namespace

RowDrag::RowDrag(QTreeView *list, DropRule rule) : QObject(list), m_list(list), m_rule(rule) {}

RowsPlace RowDrag::rows() const
{
    const QAbstractItemModel *model = m_list->model();
    const QRect first = m_list->visualRect(model->index(0, 0));
    return {first.top(), first.height(), model->rowCount()};
}

void RowDrag::press(const QMouseEvent &event)
{
    giveUp(); // a drag by another button
    m_row = m_list->indexAt(event.pos()).row();
    m_pressPosition = event.pos();
    m_mayBegin = m_row >= 0 && event.buttons() == Qt::LeftButton && event.modifiers() == Qt::NoModifier;
}

bool RowDrag::move(const QMouseEvent &event)
{
    if (!m_mayBegin || !(event.buttons() & Qt::LeftButton))
        return false;
    if (!isUnderWay() && (event.pos() - m_pressPosition).manhattanLength() < QApplication::startDragDistance())
        return true;
    if (!isUnderWay())
        begin();
    dragTo(event.pos().y());
    return true;
}

void RowDrag::begin()
{
    m_list->viewport()->setCursor(Qt::DragMoveCursor);
    Q_EMIT began();
}

void RowDrag::dragTo(int y)
{
    m_y = y;
    m_position = dropPosition(y, rows(), m_rule);
    m_list->viewport()->update();
    const bool isBeyondEdge = y < 0 || y >= m_list->viewport()->height();
    if (!isBeyondEdge)
        m_scrollTimer.stop();
    else if (!m_scrollTimer.isActive())
        m_scrollTimer.start(ScrollInterval, this);
}

void RowDrag::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_scrollTimer.timerId()) {
        QObject::timerEvent(event);
        return;
    }
    m_list->verticalScrollBar()->triggerAction(
        m_y < 0 ? QScrollBar::SliderSingleStepSub : QScrollBar::SliderSingleStepAdd);
    dragTo(m_y);
}

std::optional<RowDrag::Drop> RowDrag::release(const QMouseEvent &event)
{
    const bool isDrop = isUnderWay() && event.button() == Qt::LeftButton;
    const Drop drop{m_row, m_position};
    giveUp();
    return isDrop ? std::optional(drop) : std::nullopt;
}

bool RowDrag::keyPress(const QKeyEvent &event)
{
    if (!isUnderWay() || event.key() != Qt::Key_Escape)
        return false;
    giveUp();
    return true;
}

void RowDrag::giveUp()
{
    m_scrollTimer.stop();
    m_mayBegin = false;
    if (!isUnderWay())
        return;
    m_position = -1;
    m_list->viewport()->unsetCursor();
    m_list->viewport()->update();
}

void RowDrag::paintMark()
{
    if (!isUnderWay())
        return;
    QWidget *viewport = m_list->viewport();
    QPainter painter(viewport);
    painter.setRenderHint(QPainter::Antialiasing);
    const int lowest = std::max(MarkArrow, viewport->height() - MarkArrow);
    const int middle = std::clamp(rows().topOf(m_position), MarkArrow / 2, lowest);
    const QColor colour = m_list->palette().color(QPalette::Active, QPalette::WindowText);
    painter.fillRect(0, middle - MarkThickness / 2, viewport->width(), MarkThickness, colour);
    QPainterPath arrow;
    arrow.moveTo(0, middle - MarkArrow);
    arrow.lineTo(MarkArrow, middle);
    arrow.lineTo(0, middle + MarkArrow);
    arrow.closeSubpath();
    painter.fillPath(arrow, colour);
}

} // namespace ravlin
