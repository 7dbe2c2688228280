// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/controls/dropposition.h"

#include <algorithm>

namespace ravlin {

int dropPosition(int y, const RowsPlace &rows, DropRule rule)
{
    if (rows.rowHeight <= 0)
        return rows.rowCount;
    const int below = y - rows.firstTop + (rule == DropRule::NearestEdge ? rows.rowHeight / 2 : 0);
    return std::clamp(below / rows.rowHeight, 0, rows.rowCount);
}

} // namespace ravlin
