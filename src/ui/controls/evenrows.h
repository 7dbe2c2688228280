// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

namespace ravlin {

/// Makes every row as high as the style makes one with a small icon, whether it has one or not. So the rows of two
/// lists side by side stay level, and lines of text don't touch.
class EvenRows final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

} // namespace ravlin
