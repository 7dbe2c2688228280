// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/listmodel.h"

namespace ravlin {

/// The list's rows as they look: a row with a long name is bold and pure red, all others as the desktop has it.
class FileListModel : public ListModel
{
    Q_OBJECT

public:
    using ListModel::ListModel;

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
};

} // namespace ravlin
