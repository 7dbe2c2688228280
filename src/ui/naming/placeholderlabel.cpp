// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/placeholderlabel.h"

#include <QEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFocusRect>

namespace ravlin {

namespace {

constexpr QMargins Margins(3, 2, 3, 2);

} // namespace

PlaceholderLabel::PlaceholderLabel(const QString &placeholder, QWidget *parent)
    : QPushButton(parent), m_placeholder(placeholder)
{
    setFlat(true);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    setAutoDefault(false);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QSize PlaceholderLabel::sizeHint() const
{
    return fontMetrics().size(Qt::TextSingleLine, text()).grownBy(Margins);
}

bool PlaceholderLabel::event(QEvent *event)
{
    // Enter presses a link as it presses a button; in a dialog it would reach the default button instead.
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            click();
            return true;
        }
    }
    return QPushButton::event(event);
}

void PlaceholderLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QFont drawn = font();
    drawn.setUnderline(isEnabled() && (underMouse() || isDown()));
    painter.setFont(drawn);
    painter.setPen(isEnabled() ? palette().color(QPalette::Link) : palette().color(QPalette::Disabled, QPalette::Text));
    painter.drawText(rect().marginsRemoved(Margins), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, text());
    if (!hasFocus())
        return;
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = rect();
    focus.backgroundColor = palette().color(QPalette::Window);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, &painter, this);
}

} // namespace ravlin
