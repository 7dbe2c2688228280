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
    Text,    ///< as people order words in their language, ignoring case
    Numeric, ///< numbers as the locale writes them
    Date     ///< dates, with or without a time, as the locale writes them or as in ISO 8601
};

/// What a column's header tag asks for: "numeric" and "date", whatever their case, or else text.
SortKind sortKindFromTag(QStringView headerTag);

/// By what a list is sorted.
struct ListOrder
{
    int column = 0; ///< from 0
    Qt::SortOrder order = Qt::AscendingOrder;
    bool automatic = true; ///< the list keeps the rows sorted while some are added

    bool operator==(const ListOrder &) const = default;
};

/// The order after a click on a column's header: the same column turns round, another one starts ascending. A list goes
/// on sorting itself by text only; by numbers and dates it is sorted once.
ListOrder SortListView(const ListOrder &current, int clickedColumn, QStringView headerTag);

/// The positions of the values in sorted order; equal values keep their order whichever way the list is sorted. Values
/// that are no number or date come before all that are, in ascending order. Takes n log n steps, on all cores where
/// that pays; text is called by several threads at once.
std::vector<std::size_t> sortedPositions(std::size_t count, const std::function<QString(std::size_t)> &text,
    SortKind kind, Qt::SortOrder order, const QLocale &locale = QLocale());

/// The same for texts most of which are in order already: what sortedPositions gives for all of them. sorted: the
/// positions of those, as sortedPositions has them among themselves; others: the positions of the rest.
std::vector<std::size_t> sortedPositionsWith(const std::vector<std::size_t> &others,
    const std::vector<std::size_t> &sorted, const std::function<QString(std::size_t)> &text, Qt::SortOrder order,
    const QLocale &locale = QLocale());

} // namespace ravlin
