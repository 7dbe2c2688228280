// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStyledItemDelegate>

class QHeaderView;

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

/// Shows the full text of a header's section as its tooltip where the section is too narrow for it.
class ElidedHeaderTips : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the header.
    explicit ElidedHeaderTips(QHeaderView *header);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QHeaderView *const m_header;
};

} // namespace ravlin
