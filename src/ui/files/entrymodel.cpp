// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/entrymodel.h"

#include "core/app/idiomas.h"
#include "core/app/showntext.h"

#include <QDir>

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

QString header(const Captions &captions, int column)
{
    switch (column) {
    case EntryModel::Time:
        return captions.text(Text::ColumnTime);
    case EntryModel::Kind:
        return captions.text(Text::ColumnKind);
    case EntryModel::Files:
        return captions.text(Caption::Files);
    default:
        return captions.text(Text::ColumnFolder);
    }
}

} // namespace

EntryModel::EntryModel(const Captions &captions, QObject *parent) : QAbstractItemModel(parent), m_captions(captions) {}

void EntryModel::setEntries(std::vector<history::Entry> entries, const QDateTime &now)
{
    beginResetModel();
    m_entries = std::move(entries);
    m_groups.clear();
    const Qt::DayOfWeek firstDay = m_captions.locale().firstDayOfWeek();
    for (std::size_t i = 0; i < m_entries.size(); ++i) {
        DaySpan span = daySpan(QDateTime::fromMSecsSinceEpoch(m_entries[i].time).date(), now.date(), firstDay);
        if (!m_groups.empty()) // where the clock was set back
            span = std::max(span, m_groups.back().span);
        if (m_groups.empty() || m_groups.back().span != span)
            m_groups.push_back({span, i, 0});
        ++m_groups.back().count;
    }
    endResetModel();
}

void EntryModel::applyCaptions()
{
    beginResetModel();
    endResetModel();
}

const history::Entry *EntryModel::entryAt(const QModelIndex &index) const
{
    if (!index.isValid() || index.internalId() == 0)
        return nullptr;
    const Group &group = m_groups[index.internalId() - 1];
    return &m_entries[group.first + static_cast<std::size_t>(index.row())];
}

QModelIndex EntryModel::indexOf(qint64 entry) const
{
    const auto found = std::ranges::find(m_entries, entry, &history::Entry::id);
    if (found == m_entries.end())
        return {};
    const auto place = static_cast<std::size_t>(found - m_entries.begin());
    const auto after = std::ranges::upper_bound(m_groups, place, {}, &Group::first);
    const auto group = static_cast<int>(after - m_groups.begin()) - 1;
    return index(static_cast<int>(place - m_groups[static_cast<std::size_t>(group)].first), 0, index(group, 0));
}

QModelIndex EntryModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount || row >= rowCount(parent))
        return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : quintptr(0));
}

QModelIndex EntryModel::parent(const QModelIndex &index) const
{
    if (!index.isValid() || index.internalId() == 0)
        return {};
    return createIndex(static_cast<int>(index.internalId() - 1), 0, quintptr(0));
}

int EntryModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return static_cast<int>(m_groups.size());
    const bool isGroup = parent.internalId() == 0 && parent.column() == 0;
    return isGroup ? m_groups[static_cast<std::size_t>(parent.row())].count : 0;
}

int EntryModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QString EntryModel::cell(const history::Entry &entry, DaySpan span, int column) const
{
    switch (column) {
    case Time:
        return timeText(QDateTime::fromMSecsSinceEpoch(entry.time), span, m_captions.locale());
    case Kind:
        return kindText(m_captions, entry.kind);
    case Files:
        return filesText(m_captions, entry);
    default:
        return shownLine(QDir::toNativeSeparators(entry.folder));
    }
}

QVariant EntryModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const history::Entry *entry = entryAt(index);
    const bool isText = role == Qt::DisplayRole || role == Qt::ToolTipRole || role == Qt::AccessibleTextRole;
    if (!isText)
        return {};
    if (entry == nullptr) {
        const Group &group = m_groups[static_cast<std::size_t>(index.row())];
        return index.column() == 0 ? QVariant(m_captions.text(daySpanText(group.span))) : QVariant();
    }
    const DaySpan span = m_groups[index.internalId() - 1].span;
    if (role != Qt::AccessibleTextRole || index.column() != 0)
        return cell(*entry, span, index.column());
    QStringList texts; // the first cell speaks for the row
    for (int column = 0; column < ColumnCount; ++column)
        texts << cell(*entry, span, column);
    return texts.join(QStringLiteral("; "));
}

QVariant EntryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= ColumnCount)
        return {};
    return header(m_captions, section);
}

Qt::ItemFlags EntryModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return {};
    if (entryAt(index) == nullptr)
        return Qt::ItemIsEnabled; // a day is a heading
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

} // namespace ravlin
