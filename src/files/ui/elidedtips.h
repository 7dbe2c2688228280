#pragma once

#include <QStyledItemDelegate>

namespace ravlin {

/// Shows a cell's tooltip only where the cell is too narrow for its text.
class ElidedTips : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
        const QModelIndex &index) override;
};

} // namespace ravlin
