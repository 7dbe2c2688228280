// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractSlider>
#include <QColor>
#include <QPoint>

namespace ravlin {

/// The bar of a SplitPanel: paints itself, reports drags, and turns keys into values.
///
/// For the keyboard and assistive tools it is a slider whose value is the panel's position in twips. The mouse moves it
/// only through the panel. It takes the focus by the keyboard only, so that a drag leaves the focus where it is.
class SplitBar : public QAbstractSlider
{
    Q_OBJECT

public:
    explicit SplitBar(QWidget *parent);

    /// The direction in which the bar moves.
    void setAxis(Qt::Orientation axis);

    /// Colours at rest and while dragged; an invalid one means the palette's (button and button text).
    QColor restColor() const { return m_restColor; }
    QColor shownRestColor() const;
    void setRestColor(const QColor &color);
    QColor dragColor() const { return m_dragColor; }
    QColor shownDragColor() const;
    void setDragColor(const QColor &color);

    bool isDragging() const { return m_dragging; }

Q_SIGNALS:
    /// The pointer's place relative to the bar's upper left corner, in pixels.
    void dragMoved(QPoint offset);
    void dragReleased(QPoint offset);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void setDragging(bool dragging);
    void paintGrip(QPainter &painter, const QColor &color) const;

    QColor m_restColor;
    QColor m_dragColor;
    bool m_dragging = false;
};

} // namespace ravlin
