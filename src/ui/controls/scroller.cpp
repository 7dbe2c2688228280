// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/scroller.h"

#include <QEvent>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace ravlin {

Scroller::Scroller(QWidget *content, QWidget *parent) : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setWidget(content);
    content->setAutoFillBackground(false);
    viewport()->setAutoFillBackground(false);
}

int Scroller::heightForWidth(int width) const
{
    const bool isScrolled = width < widget()->minimumSizeHint().width();
    const int bar = isScrolled ? style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this) : 0;
    return contentHeight() + bar;
}

QSize Scroller::sizeHint() const
{
    return {widget()->sizeHint().width(), contentHeight()};
}

int Scroller::contentHeight() const
{
    return std::max(widget()->sizeHint().height(), m_greatestHeight);
}

/// A scroll area keeps from its parents that its content needs more room.
bool Scroller::eventFilter(QObject *watched, QEvent *event)
{
    const bool isHandled = QScrollArea::eventFilter(watched, event);
    if (watched == widget() && event->type() == QEvent::LayoutRequest) {
        const int height = contentHeight();
        if (std::exchange(m_greatestHeight, height) != height)
            updateGeometry();
    }
    return isHandled;
}

void Scroller::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        m_greatestHeight = 0;
    QScrollArea::changeEvent(event);
}

QSize Scroller::minimumSizeHint() const
{
    constexpr int FewLetters = 20;
    constexpr int FewLines = 4;
    return {fontMetrics().averageCharWidth() * FewLetters, fontMetrics().lineSpacing() * FewLines};
}

} // namespace ravlin
