// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/filelistmodel.h"

#include <QBrush>
#include <QColor>
#include <QFont>

namespace ravlin {

QVariant FileListModel::data(const QModelIndex &index, int role) const
{
    if (role != Qt::FontRole && role != Qt::ForegroundRole)
        return ListModel::data(index, role);
    if (!ListModel::data(index, LongNameRole).toBool())
        return {};
    if (role == Qt::ForegroundRole)
        return QBrush(QColor(255, 0, 0));
    QFont font;
    font.setBold(true); // the view fills in what is not set
    return font;
}

} // namespace ravlin
