// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

/// Where a row that is dragged over a list goes: pure functions over rows of equal height, in pixels.
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

/// The position between the rows that a height y stands for: 0 before the first, rowCount behind the last, also for any
/// y beyond them. Rows without a height: behind the last.
int dropPosition(int y, const RowsPlace &rows, DropRule rule);

} // namespace ravlin
