// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>

/// Where a row dragged over a list goes: pure functions over rows of equal height, in pixels.
namespace ravlin {

enum class DropRule
{
    NearestEdge,    ///< between the two rows whose common edge is the nearest
    BeforeRowUnder, ///< before the row under the pointer
};

/// The rows of a list as they lie on its viewport.
struct RowsPlace
{
    int firstTop = 0; ///< of row 0, negative when it is scrolled out of sight
    int rowHeight = 0;
    int rowCount = 0;

    int topOf(int row) const { return firstTop + row * rowHeight; }
};

/// The position between the rows for a height y: 0 before the first row, rowCount behind the last, also for any y
/// beyond them. Rows without a height: behind the last.
constexpr int dropPosition(int y, const RowsPlace &rows, DropRule rule)
{
    if (rows.rowHeight <= 0)
        return rows.rowCount;
    const int below = y - rows.firstTop + (rule == DropRule::NearestEdge ? rows.rowHeight / 2 : 0);
    return std::clamp(below / rows.rowHeight, 0, rows.rowCount);
}

} // namespace ravlin
