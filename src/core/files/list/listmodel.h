// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/listcolumns.h"
#include "core/files/list/listsort.h"

#include <QAbstractTableModel>

#include <array>
#include <optional>
#include <vector>

namespace ravlin {

/// The rows of the file list: plain values, set in one batch. Everything is in memory; asking never reads a file.
///
/// It keeps what it is sorted by (ListOrder). While automatic sorting is on, rows that are set come out sorted, those
/// that are equal in their order of before. How rows look (colour, weight) is the view's business; the model only tells
/// which names are long. Interface thread only.
class ListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Role
    {
        LongNameRole = Qt::UserRole ///< bool: the bare name has 65 characters or more
    };

    explicit ListModel(QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    /// The texts of names are as they can be shown; rowAt has the real ones.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    /// Sorts by that column in that order, by the kind that its header tag asks for.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    const std::vector<ListRow> &rows() const { return m_rows; }
    const ListRow &rowAt(int row) const { return m_rows[static_cast<std::size_t>(row)]; }

    /// Takes the place of all rows.
    void setRows(std::vector<ListRow> rows);
    /// What the rows show of their tags, row by row; a row without a new one, or beyond their number, keeps its own.
    /// Rows and their order stay, also while automatic sorting is on.
    void setTags(const std::vector<std::optional<ListedFile>> &tags);
    /// Takes a row out and puts it in again so that it stands before the row that is now at position to; rowCount()
    /// puts it last. False when that changes nothing or there is no such row.
    bool moveRowTo(int from, int to);

    const ListOrder &order() const { return m_order; }
    /// Whether the rows are in that order: not after a row was moved or tags were read again.
    bool isInOrder() const { return m_isInOrder; }
    /// For rows set from now on.
    void setAutomaticSorting(bool automatic) { m_order.automatic = automatic; }
    /// What a click on a column's header does. Returns where the rows were before: at its position in the list, the
    /// former position of each.
    std::vector<std::size_t> sortByHeader(int column);

    void setHeaderText(ListColumn column, const QString &text);
    /// Free text; "numeric" and "date" choose how the column compares.
    void setHeaderTag(ListColumn column, const QString &tag);

    /// For the order of texts; the user's at first.
    void setLocale(const QLocale &locale);

private:
    std::vector<std::size_t> sortedAsBefore(const std::vector<ListRow> &rows) const;
    std::vector<std::size_t> sortedAnew(const std::vector<ListRow> &rows) const;
    void arrange(std::vector<ListRow> rows, const std::vector<std::size_t> &positions);
    std::vector<std::size_t> reorder(const ListOrder &order);
    QString textAt(const QModelIndex &index) const;

    std::vector<ListRow> m_rows;
    ListOrder m_order;
    bool m_isInOrder = true;
    /// Where each row was among the rows as they were set. Empty once the rows are in another order than setRows, given
    /// the same rows now, would put them in.
    std::vector<std::size_t> m_setPositions;
    QLocale m_locale;
    std::array<QString, ListColumnCount> m_headerTexts;
    std::array<QString, ListColumnCount> m_headerTags;
};

} // namespace ravlin
