// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/rowlistmodel.h"

#include "core/app/showntext.h"

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

/// The full text of the cell, which may be cut off, and the remark.
QString toolTip(const QString &cell, const QString &remark)
{
    QStringList lines;
    for (const QString &line : {cell, remark}) {
        if (!line.isEmpty())
            lines << line;
    }
    return lines.join(u'\n');
}

} // namespace

void RowListModel::setHeaderTexts(const QStringList &texts)
{
    beginResetModel();
    m_headerTexts = texts;
    endResetModel();
}

void RowListModel::setRemarkIcon(const QIcon &icon)
{
    m_remarkIcon = icon;
    if (!m_lines.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), {Qt::DecorationRole});
}

void RowListModel::setLines(std::vector<ListedLine> lines)
{
    beginResetModel();
    m_lines = std::move(lines);
    endResetModel();
}

void RowListModel::setCell(int id, int column, const QString &text)
{
    const auto line = std::ranges::find(m_lines, id, &ListedLine::id);
    line->cells[column] = text;
    const QModelIndex changed = index(static_cast<int>(line - m_lines.begin()), column);
    Q_EMIT dataChanged(changed, changed);
}

void RowListModel::setRemark(int row, const QString &remark)
{
    ListedLine &line = m_lines[static_cast<std::size_t>(row)];
    if (line.remark == remark)
        return;
    line.remark = remark;
    Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

bool RowListModel::moveTo(int row, int position)
{
    if (!beginMoveRows({}, row, row, {}, position))
        return false; // already there
    const auto first = m_lines.begin();
    if (position > row)
        std::rotate(first + row, first + row + 1, first + position);
    else
        std::rotate(first + position, first + row, first + row + 1);
    endMoveRows();
    return true;
}

int RowListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

int RowListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_headerTexts.size());
}

QVariant RowListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const ListedLine &line = m_lines[static_cast<std::size_t>(index.row())];
    const QString cell = shownLine(line.cells[index.column()]);
    const bool hasRemark = !line.remark.isEmpty();
    switch (role) {
    case Qt::EditRole:
        return line.cells[index.column()];
    case Qt::DisplayRole:
        return cell;
    case Qt::AccessibleTextRole:
        return hasRemark && index.column() == 0 ? QStringLiteral("%1; %2").arg(cell, line.remark) : cell;
    case Qt::ToolTipRole:
        return toolTip(cell, line.remark);
    case Qt::DecorationRole:
        return hasRemark && index.column() == columnCount() - 1 ? QVariant(m_remarkIcon) : QVariant();
    case Qt::TextAlignmentRole:
        return int(Qt::AlignVCenter | (m_rightAligned.contains(index.column()) ? Qt::AlignRight : Qt::AlignLeft));
    default:
        return {};
    }
}

bool RowListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || index.column() != m_editable)
        return false;
    m_lines[static_cast<std::size_t>(index.row())].cells[index.column()] = value.toString();
    Q_EMIT dataChanged(index, index);
    return true;
}

Qt::ItemFlags RowListModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    flags.setFlag(Qt::ItemIsEditable, index.isValid() && index.column() == m_editable);
    return flags;
}

QVariant RowListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignVCenter | (m_rightAligned.contains(section) ? Qt::AlignRight : Qt::AlignLeft));
    return role == Qt::DisplayRole ? QVariant(m_headerTexts.value(section)) : QVariant();
}

} // namespace ravlin
