// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <QSet>
#include <QStringList>

#include <vector>

namespace ravlin {

/// A row of one of the two facing lists.
struct ListedLine
{
    int id = 0; ///< stays the same wherever the row moves
    QStringList cells;
    QString remark; ///< a sentence in the interface language about something unusual; usually empty

    bool operator==(const ListedLine &) const = default;
};

/// Rows of text that the user puts in order. A row with a remark has an icon in its last column; the remark is in its
/// tooltip and in the accessible text of its first cell.
class RowListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    void setHeaderTexts(const QStringList &texts); ///< one per column; must be set first
    void setRightAligned(const QSet<int> &columns) { m_rightAligned = columns; }
    /// The editable column; -1, the default, means none.
    void setEditableColumn(int column) { m_editable = column; }
    void setRemarkIcon(const QIcon &icon);

    const std::vector<ListedLine> &lines() const { return m_lines; }
    void setLines(std::vector<ListedLine> lines);
    /// Sets a cell of the row with that id, which must exist.
    void setCell(int id, int column, const QString &text);
    void setRemark(int row, const QString &remark);
    /// Moves a row before the one now at the position; rowCount() moves it to the end. Returns false if nothing
    /// changes.
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
