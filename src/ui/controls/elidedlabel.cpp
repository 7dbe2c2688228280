// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/elidedlabel.h"

#include "core/app/showntext.h"

#include <QEvent>

namespace ravlin {

ElidedLabel::ElidedLabel(QWidget *parent) : PlainLabel(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ElidedLabel::setFullText(const QString &text, const QString &detail)
{
    m_fullText = shownLine(text);
    m_detail = shownLine(detail);
    setAccessibleName(m_fullText);
    elide();
    updateGeometry();
}

QSize ElidedLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    const int around = margins.left() + margins.right() + 2 * margin() + 1; // the text's width is rounded
    return {fontMetrics().horizontalAdvance(m_fullText) + around, minimumSizeHint().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    constexpr int FewLetters = 8;
    return {fontMetrics().averageCharWidth() * FewLetters, fontMetrics().height() + 2 * margin()};
}

void ElidedLabel::resizeEvent(QResizeEvent *event)
{
    PlainLabel::resizeEvent(event);
    elide();
}

void ElidedLabel::changeEvent(QEvent *event)
{
    PlainLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        elide();
}

void ElidedLabel::elide()
{
    setText(fontMetrics().elidedText(m_fullText, Qt::ElideMiddle, contentsRect().width()));
    setToolTip(m_detail.isEmpty() && text() != m_fullText ? m_fullText : m_detail);
}

} // namespace ravlin
