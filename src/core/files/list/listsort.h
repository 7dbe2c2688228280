// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>
#include <QStringView>
#include <Qt>

#include <cstddef>
#include <functional>
#include <vector>

/// Sorting of report-style lists by a column.
namespace ravlin {

/// How the values of a column compare.
enum class SortKind
{
    Text,    ///< in the order of the language, ignoring case
    Numeric, ///< numbers as the locale writes them
    Date     ///< dates, with or without a time, as the locale writes them or as in ISO 8601
};

/// "numeric" and "date" in any case choose their kinds; any other tag chooses text.
SortKind sortKindFromTag(QStringView headerTag);

/// How a list is sorted.
struct ListOrder
{
    int column = 0; ///< from 0
    Qt::SortOrder order = Qt::AscendingOrder;
    bool automatic = true; ///< rows added later are sorted, too

    bool operator==(const ListOrder &) const = default;
};

/// The order after a click on a column's header: the same column reverses, another one starts ascending. Only sorting
/// by text stays automatic; numbers and dates are sorted once.
ListOrder SortListView(const ListOrder &current, int clickedColumn, QStringView headerTag);

/// Returns the positions of the values in sorted order. Stable in both directions. In ascending order, values that are
/// not a number or date come first. Takes n log n steps, on all cores where that pays; several threads call text at
/// once.
std::vector<std::size_t> sortedPositions(std::size_t count, const std::function<QString(std::size_t)> &text,
    SortKind kind, Qt::SortOrder order, const QLocale &locale = QLocale());

/// The same result for texts most of which are in order already. sorted: the positions of those, in the order that
/// sortedPositions() gives them; others: the positions of the rest.
std::vector<std::size_t> sortedPositionsWith(const std::vector<std::size_t> &others,
    const std::vector<std::size_t> &sorted, const std::function<QString(std::size_t)> &text, Qt::SortOrder order,
    const QLocale &locale = QLocale());

} // namespace ravlin
