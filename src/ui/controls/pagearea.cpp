// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/pagearea.h"

#include "ui/controls/pagefoot.h"
#include "ui/controls/scroller.h"

#include <QEvent>
#include <QLayout>
#include <QVBoxLayout>

namespace ravlin {

void PageArea::setContent(QWidget *content, PageFoot *foot)
{
    m_content = content;
    m_foot = foot;
    QMargins margins = content->layout()->contentsMargins();
    margins.setBottom(margins.bottom() / 2); // the foot is near
    content->layout()->setContentsMargins(margins);
    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins({});
    rows->setSpacing(0);
    m_scroller = new Scroller(content, this);
    rows->addWidget(m_scroller, 1);
    rows->addWidget(foot);
}

void PageArea::contentChanged()
{
    m_content->layout()->activate();
    m_foot->layout()->activate();
    layout()->activate();
    updateGeometry();
}

void PageArea::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && m_content != nullptr)
        applyIcons();
}

int PageArea::heightForWidth(int width) const
{
    // The layout would ask the foot's present arrangement, whatever the width.
    return m_content == nullptr ? -1 : m_scroller->heightForWidth(width) + m_foot->heightForWidth(width);
}

QSize PageArea::sizeHint() const
{
    if (m_content == nullptr)
        return QWidget::sizeHint();
    return {m_scroller->sizeHint().expandedTo(m_foot->sizeHint()).width(), heightForWidth(QWIDGETSIZE_MAX)};
}

QSize PageArea::minimumSizeHint() const
{
    if (m_content == nullptr)
        return QWidget::minimumSizeHint();
    return {m_foot->minimumSizeHint().width(), heightForWidth(QWIDGETSIZE_MAX)};
}

} // namespace ravlin
