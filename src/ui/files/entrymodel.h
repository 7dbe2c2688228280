// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/historytexts.h"

#include <QAbstractItemModel>

#include <array>
#include <vector>

namespace ravlin {

/// The entries of the history: time, kind, number of files and folder, below a row for today, this week and before.
/// A row without entries is not there.
class EntryModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column
    {
        Time,
        Kind,
        Files,
        Folder,
    };
    static constexpr int ColumnCount = 4;

    explicit EntryModel(const Captions &captions, QObject *parent = nullptr);

    /// entries: the newest first.
    void setEntries(std::vector<history::Entry> entries, const QDateTime &now);
    /// Shows the language of the captions.
    void applyCaptions();
    /// nullptr for the row of a group.
    const history::Entry *entryAt(const QModelIndex &index) const;
    /// The row of the entry, if it is there.
    QModelIndex indexOf(qint64 entry) const;
    const std::vector<history::Entry> &entries() const { return m_entries; }

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    struct Group
    {
        DaySpan span = DaySpan::Today;
        std::size_t first = 0; ///< of its entries
        int count = 0;
    };

    QString cell(const history::Entry &entry, DaySpan span, int column) const;

    const Captions &m_captions;
    std::vector<history::Entry> m_entries;
    std::vector<Group> m_groups;
};

} // namespace ravlin
