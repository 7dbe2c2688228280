// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/listmodel.h"

#include "core/files/list/alignment.h"

#include <algorithm>

namespace ravlin {

namespace {

std::size_t indexOf(ListColumn column)
{
    return static_cast<std::size_t>(column);
}

} // namespace

ListModel::ListModel(QObject *parent)
    : QAbstractTableModel(parent), m_headerTexts{QStringLiteral("file"), QStringLiteral("track"),
                                       QStringLiteral("title"), QStringLiteral("artist"), QStringLiteral("album"),
                                       QStringLiteral("year"), QStringLiteral("id3v1"), QStringLiteral("id3v2")}
{
}

int ListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ListColumnCount;
}

QString ListModel::textAt(const QModelIndex &index) const
{
    const ListRow &row = rowAt(index.row());
    const auto column = static_cast<ListColumn>(index.column());
    const QString text = shownName(columnText(row, column));
    return column == ListColumn::Id3v2 && row.file.isCut() ? text + QStringLiteral(", ") + m_tooLargeText : text;
}

QVariant ListModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
        return textAt(index);
    case LongNameRole:
        return hasLongName(rowAt(index.row()).file.name());
    default:
        return {};
    }
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section >= ListColumnCount || role != Qt::DisplayRole)
        return {};
    return m_headerTexts[static_cast<std::size_t>(section)];
}

Qt::ItemFlags ListModel::flags(const QModelIndex &index) const
{
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

void ListModel::setRows(std::vector<ListRow> rows)
{
    beginResetModel();
    m_isInOrder = m_order.automatic;
    if (m_order.automatic) {
        std::vector<std::size_t> positions = sortedAsBefore(rows);
        arrange(std::move(rows), positions);
        m_setPositions = std::move(positions);
    } else {
        m_rows = std::move(rows);
        m_setPositions.clear();
    }
    endResetModel();
}

void ListModel::setTags(const std::vector<std::optional<ListedFile>> &tags)
{
    const std::size_t count = std::min(tags.size(), m_rows.size());
    for (std::size_t i = 0; i < count; ++i) {
        if (tags[i])
            m_rows[i].takeTags(*tags[i]);
    }
    m_isInOrder = m_isInOrder && m_order.column == static_cast<int>(ListColumn::File);
    m_setPositions.clear();
    if (count > 0)
        Q_EMIT dataChanged(index(0, 1), index(static_cast<int>(count) - 1, ListColumnCount - 1));
}

bool ListModel::moveRowTo(int from, int to)
{
    if (from < 0 || from >= rowCount() || to < 0 || to > rowCount() || to == from || to == from + 1)
        return false;
    beginMoveRows({}, from, from, {}, to);
    const auto first = m_rows.begin();
    if (to > from)
        std::rotate(first + from, first + from + 1, first + to);
    else
        std::rotate(first + to, first + from, first + from + 1);
    endMoveRows();
    m_isInOrder = false;
    m_setPositions.clear();
    return true;
}

std::vector<std::size_t> ListModel::sortByHeader(int column)
{
    return reorder(SortListView(m_order, column, m_headerTags[static_cast<std::size_t>(column)]));
}

void ListModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= ListColumnCount)
        return;
    const bool isText = sortKindFromTag(m_headerTags[static_cast<std::size_t>(column)]) == SortKind::Text;
    reorder({column, order, isText});
}

std::vector<std::size_t> ListModel::reorder(const ListOrder &order)
{
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    m_order = order;
    const std::vector<std::size_t> oldPositions = sortedAnew(m_rows);
    arrange(std::move(m_rows), oldPositions);
    m_setPositions.clear();
    m_isInOrder = true;
    const QModelIndexList kept = persistentIndexList();
    if (!kept.isEmpty()) {
        std::vector<int> newPositions(oldPositions.size());
        for (std::size_t i = 0; i < oldPositions.size(); ++i)
            newPositions[oldPositions[i]] = static_cast<int>(i);
        QModelIndexList moved;
        moved.reserve(kept.size());
        for (const QModelIndex &old : kept)
            moved.append(index(newPositions[static_cast<std::size_t>(old.row())], old.column()));
        changePersistentIndexList(kept, moved);
    }
    Q_EMIT layoutChanged({}, VerticalSortHint);
    return oldPositions;
}

std::vector<std::size_t> ListModel::sortedAnew(const std::vector<ListRow> &rows) const
{
    const auto column = static_cast<ListColumn>(m_order.column);
    const auto text = [&](std::size_t i) { return columnText(rows[i], column); };
    const SortKind kind = sortKindFromTag(m_headerTags[indexOf(column)]);
    return sortedPositions(rows.size(), text, kind, m_order.order, m_locale);
}

/// A folder listed again has mostly the same rows, whose order is known: those that come in the same order as before
/// with the same text in the column. Only the others are compared.
std::vector<std::size_t> ListModel::sortedAsBefore(const std::vector<ListRow> &rows) const
{
    constexpr std::size_t FewestPerNewRow = 32; ///< below that it does not pay
    const auto column = static_cast<ListColumn>(m_order.column);
    if (m_setPositions.empty() || sortKindFromTag(m_headerTags[indexOf(column)]) != SortKind::Text)
        return sortedAnew(rows);
    std::vector<std::size_t> formerRows(m_rows.size()); // by their position in the last setRows()
    for (std::size_t row = 0; row < m_rows.size(); ++row)
        formerRows[m_setPositions[row]] = row;
    const auto hasSameText = [&](std::size_t former, std::size_t i) {
        const ListRow &before = m_rows[formerRows[former]];
        const bool isSameRow = before.file.isCopyOf(rows[i].file) && before.prefix == rows[i].prefix;
        return isSameRow || columnText(before, column) == columnText(rows[i], column);
    };
    const std::size_t mostNew = rows.size() / FewestPerNewRow;
    const std::vector<std::size_t> aligned = alignedPositions(m_rows.size(), rows.size(), hasSameText, mostNew);

    std::vector<std::size_t> newPositions(m_rows.size(), NotAligned); // by former row
    std::vector<std::size_t> others;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (aligned[i] != NotAligned)
            newPositions[formerRows[aligned[i]]] = i;
        else
            others.push_back(i);
    }
    if (others.size() > mostNew)
        return sortedAnew(rows);
    std::erase(newPositions, NotAligned);
    const auto text = [&](std::size_t i) { return columnText(rows[i], column); };
    return sortedPositionsWith(others, newPositions, text, m_order.order, m_locale);
}

void ListModel::arrange(std::vector<ListRow> rows, const std::vector<std::size_t> &positions)
{
    std::vector<ListRow> arranged;
    arranged.reserve(rows.size());
    for (const std::size_t position : positions)
        arranged.push_back(std::move(rows[position]));
    m_rows = std::move(arranged);
}

void ListModel::setLocale(const QLocale &locale)
{
    m_locale = locale;
    m_setPositions.clear();
}

void ListModel::setHeaderText(ListColumn column, const QString &text)
{
    m_headerTexts[indexOf(column)] = text;
    Q_EMIT headerDataChanged(Qt::Horizontal, static_cast<int>(column), static_cast<int>(column));
}

void ListModel::setHeaderTag(ListColumn column, const QString &tag)
{
    m_headerTags[indexOf(column)] = tag;
    m_setPositions.clear();
}

} // namespace ravlin
