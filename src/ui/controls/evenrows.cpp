// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/evenrows.h"

#include <QApplication>
#include <QStyle>

namespace ravlin {

QSize EvenRows::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem withIcon = option;
    initStyleOption(&withIcon, index);
    const QStyle *style = option.widget != nullptr ? option.widget->style() : QApplication::style();
    const int icon = style->pixelMetric(QStyle::PM_SmallIconSize, &withIcon, option.widget);
    withIcon.features |= QStyleOptionViewItem::HasDecoration;
    withIcon.decorationSize = QSize(icon, icon);
    const int height = style->sizeFromContents(QStyle::CT_ItemViewItem, &withIcon, {}, option.widget).height();
    return {QStyledItemDelegate::sizeHint(option, index).width(), height};
}

} // namespace ravlin
