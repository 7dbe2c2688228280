// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/listcolumns.h"
#include "core/files/list/listsort.h"

#include <QAbstractTableModel>

#include <array>
#include <optional>
#include <vector>

namespace ravlin {

/// The rows of the file list: plain values, set in one batch. Everything is in memory; the model never reads a file.
///
/// While automatic sorting is on, setRows() sorts, stably. Colour and weight of rows are the view's business; the model
/// only knows which names are long. Interface thread only.
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
    /// Names are made fit to show (shownName); rowAt() has the real ones.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    /// Compares as the column's header tag says.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    const std::vector<ListRow> &rows() const { return m_rows; }
    const ListRow &rowAt(int row) const { return m_rows[static_cast<std::size_t>(row)]; }

    /// Replaces all rows.
    void setRows(std::vector<ListRow> rows);
    /// Gives the rows new tags, row by row; a row without one, or beyond their number, keeps its own. Keeps the order
    /// of the rows, even while automatic sorting is on.
    void setTags(const std::vector<std::optional<ListedFile>> &tags);
    /// Moves a row to stand before the row now at position to; rowCount() moves it to the end. Returns false if that
    /// changes nothing or there is no such row.
    bool moveRowTo(int from, int to);

    const ListOrder &order() const { return m_order; }
    /// Whether the rows are in that order; false after a row was moved or tags were read again.
    bool isInOrder() const { return m_isInOrder; }
    /// For rows set from now on.
    void setAutomaticSorting(bool automatic) { m_order.automatic = automatic; }
    /// Does what a click on a column's header does. Returns the former position of each row.
    std::vector<std::size_t> sortByHeader(int column);

    void setHeaderText(ListColumn column, const QString &text);
    /// Free text; "numeric" and "date" choose how the column compares.
    void setHeaderTag(ListColumn column, const QString &tag);

    /// What the column of ID3v2 says in addition of a tag that is too large to be read in full.
    void setTooLargeText(const QString &text) { m_tooLargeText = text; }

    /// For the order of texts; at first the user's.
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
    /// Where each row was in the last setRows(). Empty if setRows() would now put the same rows in another order.
    std::vector<std::size_t> m_setPositions;
    QLocale m_locale;
    std::array<QString, ListColumnCount> m_headerTexts;
    std::array<QString, ListColumnCount> m_headerTags;
    QString m_tooLargeText;
};

} // namespace ravlin
