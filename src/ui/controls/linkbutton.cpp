// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/linkbutton.h"

#include <QPainter>
#include <QStyleOptionFocusRect>

namespace ravlin {

namespace {

constexpr int Margin = 1; ///< pixels around the text, for the frame of the focus

/// The palette's own colour for links is made for light windows, and dark ones often still have it.
QColor linkColour(const QPalette &palette)
{
    const QColor colour = palette.color(QPalette::Link);
    const bool isDark = palette.color(QPalette::Window).lightness() < 128;
    return isDark && colour.lightness() < 160 ? QColor(122, 178, 255) : colour;
}

} // namespace

LinkButton::LinkButton(const QString &address, QWidget *parent) : QPushButton(address, parent)
{
    setFlat(true);
    setAutoDefault(false);
    setCursor(Qt::PointingHandCursor);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    QFont underlined = font();
    underlined.setUnderline(true);
    setFont(underlined);
}

QSize LinkButton::sizeHint() const
{
    return fontMetrics().size(Qt::TextSingleLine, text()) + QSize(2 * Margin, 2 * Margin);
}

void LinkButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(linkColour(palette()));
    painter.drawText(rect().adjusted(Margin, 0, -Margin, 0), Qt::AlignVCenter | Qt::AlignLeft, text());
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.backgroundColor = palette().color(QPalette::Window);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

} // namespace ravlin
