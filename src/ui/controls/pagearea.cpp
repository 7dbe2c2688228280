// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/pagearea.h"

#include <QEvent>
#include <QLayout>
#include <QStyle>

namespace ravlin {

namespace {

constexpr int MaximumLetters = 180; ///< width of a page in average letters

} // namespace

PageArea::PageArea(QWidget *parent) : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus); // Tab goes on to its first control
}

void PageArea::setContent(QWidget *content)
{
    content->setMaximumWidth(fontMetrics().averageCharWidth() * MaximumLetters);
    setWidget(content);
}

void PageArea::contentChanged()
{
    widget()->layout()->activate();
    updateGeometry();
}

void PageArea::changeEvent(QEvent *event)
{
    QScrollArea::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && widget() != nullptr)
        applyIcons();
}

QSize PageArea::sizeHint() const
{
    return widget() == nullptr ? QScrollArea::sizeHint() : widget()->sizeHint();
}

QSize PageArea::minimumSizeHint() const
{
    if (widget() == nullptr)
        return QScrollArea::minimumSizeHint();
    // A page narrower than its content can be scrolled; a lower one would be useless.
    const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
    return {QScrollArea::minimumSizeHint().width(), widget()->minimumSizeHint().height() + bar};
}

} // namespace ravlin
