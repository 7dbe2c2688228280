// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/scroller.h"

#include <QStyle>

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
    return widget()->sizeHint().height() + bar;
}

QSize Scroller::sizeHint() const
{
    return widget()->sizeHint();
}

QSize Scroller::minimumSizeHint() const
{
    constexpr int FewLetters = 20;
    constexpr int FewLines = 4;
    return {fontMetrics().averageCharWidth() * FewLetters, fontMetrics().lineSpacing() * FewLines};
}

} // namespace ravlin
