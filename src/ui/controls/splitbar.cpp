// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/splitbar.h"

#include "core/controls/splitlayout.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int KeyStep = twipsFromPixels(10);
constexpr int KeyPage = twipsFromPixels(100);

/// A mixture of two colours, with enough of the second to be seen on the first.
QColor blended(const QColor &ground, const QColor &mark)
{
    constexpr float Share = 0.4F;
    return QColor::fromRgbF(ground.redF() * (1 - Share) + mark.redF() * Share,
        ground.greenF() * (1 - Share) + mark.greenF() * Share, ground.blueF() * (1 - Share) + mark.blueF() * Share);
}

} // namespace

SplitBar::SplitBar(QWidget *parent) : QAbstractSlider(parent)
{
    setFocusPolicy(Qt::TabFocus);
    setSingleStep(KeyStep);
    setPageStep(KeyPage);
    // With right-to-left writing the panels keep their sides, so the arrows must keep theirs.
    setLayoutDirection(Qt::LeftToRight);
    setAxis(Qt::Horizontal);
}

void SplitBar::setAxis(Qt::Orientation axis)
{
    setOrientation(axis);
    setInvertedControls(axis == Qt::Vertical); // a slider's value grows upwards, a position downwards
    setCursor(axis == Qt::Horizontal ? Qt::SplitHCursor : Qt::SplitVCursor);
}

QColor SplitBar::shownRestColor() const
{
    return m_restColor.isValid() ? m_restColor : palette().color(QPalette::Button);
}

void SplitBar::setRestColor(const QColor &color)
{
    m_restColor = color;
    update();
}

QColor SplitBar::shownDragColor() const
{
    return m_dragColor.isValid() ? m_dragColor : palette().color(QPalette::ButtonText);
}

void SplitBar::setDragColor(const QColor &color)
{
    m_dragColor = color;
    update();
}

void SplitBar::setDragging(bool dragging)
{
    m_dragging = dragging;
    update();
}

void SplitBar::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        setDragging(true);
}

void SplitBar::mouseMoveEvent(QMouseEvent *event)
{
    if (m_dragging)
        Q_EMIT dragMoved(event->position().toPoint());
}

void SplitBar::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_dragging)
        return;
    setDragging(false);
    Q_EMIT dragReleased(event->position().toPoint());
}

void SplitBar::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // the wheel is meant for what lies around the bar
}

void SplitBar::keyPressEvent(QKeyEvent *event)
{
    const bool sideways = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right;
    const bool upright = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if ((sideways && orientation() == Qt::Vertical) || (upright && orientation() == Qt::Horizontal))
        event->ignore();
    else
        QAbstractSlider::keyPressEvent(event);
}

void SplitBar::focusInEvent(QFocusEvent *event)
{
    QAbstractSlider::focusInEvent(event);
    update();
}

void SplitBar::focusOutEvent(QFocusEvent *event)
{
    QAbstractSlider::focusOutEvent(event);
    update();
}

void SplitBar::hideEvent(QHideEvent *event)
{
    setDragging(false); // a hidden bar gets no release
    QAbstractSlider::hideEvent(event);
}

void SplitBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor ground = m_dragging ? shownDragColor() : shownRestColor();
    painter.fillRect(rect(), ground);
    if (m_dragging)
        return;
    const QColor highlight = palette().color(QPalette::Highlight);
    paintGrip(painter, hasFocus() ? highlight : blended(ground, palette().color(QPalette::ButtonText)));
    if (hasFocus()) {
        painter.setPen(highlight);
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
}

/// Paints dots about the middle, which show that the bar can be dragged.
void SplitBar::paintGrip(QPainter &painter, const QColor &color) const
{
    constexpr int Dots = 6;
    constexpr qreal Spacing = 6;
    const bool upright = orientation() == Qt::Horizontal;
    const qreal radius = std::min(1.5, (upright ? width() : height()) / 3.0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    const QPointF middle = QRectF(rect()).center();
    for (int dot = 0; dot < Dots; ++dot) {
        const qreal along = (dot - (Dots - 1) / 2.0) * Spacing;
        painter.drawEllipse(middle + (upright ? QPointF(0, along) : QPointF(along, 0)), radius, radius);
    }
    painter.restore();
}

} // namespace ravlin
