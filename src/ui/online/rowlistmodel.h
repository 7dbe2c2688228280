// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <QSet>
#include <QStringList>

#include <vector>

namespace ravlin {

/// A row of one of the two lists that face each other.
struct ListedLine
{
    int id = 0; ///< stays the row's own wherever it is moved to
    QStringList cells;
    QString remark; ///< a sentence on what is odd about it, in the user's language; mostly empty

    bool operator==(const ListedLine &) const = default;
};

/// Rows of texts that the user puts in order. A row with a remark has a sign in its last column, and its words are the
/// row's tooltip and told to assistive tools with its first cell.
class RowListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    void setHeaderTexts(const QStringList &texts); ///< as many as there are columns; to be set first
    void setRightAligned(const QSet<int> &columns) { m_rightAligned = columns; }
    /// The column whose texts the user can edit; -1, as at first: none.
    void setEditableColumn(int column) { m_editable = column; }
    void setRemarkIcon(const QIcon &icon);

    const std::vector<ListedLine> &lines() const { return m_lines; }
    void setLines(std::vector<ListedLine> lines);
    /// Of the row with that id, which must be there.
    void setCell(int id, int column, const QString &text);
    void setRemark(int row, const QString &remark);
    /// Takes a row out and puts it in again before the one that is at the position now (rowCount(): last). False where
    /// nothing changes.
    bool moveTo(int row, int position);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QStringList m_headerTexts;
    QSet<int> m_rightAligned;
    int m_editable = -1;
    QIcon m_remarkIcon;
    std::vector<ListedLine> m_lines;
};

} // namespace ravlin
