// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/listmodel.h"

#include <QStringList>
#include <QTreeView>

#include <functional>
#include <optional>
#include <vector>

namespace ravlin {

class RowDrag;

/// The list of MP3 files: rows of eight columns, sorted by a click on a header, rearranged by dragging a row.
///
/// It shows rows and reports what the user does with keys and mouse; what that leads to is its owner's business. Rows
/// are told by their position from 0. A row's current text is the path of its file below the current folder.
class FileList : public QTreeView
{
    Q_OBJECT

public:
    explicit FileList(QWidget *parent = nullptr);

    const ListModel &rows() const { return *m_model; }
    /// Shows a fresh listing, sorted: automatic sorting is switched on. The first row becomes current, none is
    /// selected.
    void setRows(std::vector<ListRow> rows);
    /// See ListModel::setTags.
    void setTags(const std::vector<std::optional<ListedFile>> &tags)
    {
        m_model->setTags(tags);
        updateSortArrow();
    }
    void setHeaderText(ListColumn column, const QString &text) { m_model->setHeaderText(column, text); }
    /// Hides these columns and shows the others. The column of the file is always shown.
    void setHiddenColumns(ColumnSet hidden);
    void setHeaderTag(ListColumn column, const QString &tag) { m_model->setHeaderTag(column, tag); }

    int rowCount() const { return m_model->rowCount(); }
    /// As the file is found, not as it is shown. Empty for no row.
    QString rowText(int row) const;
    QStringList rowTexts() const;
    /// The row of that text; -1 for none.
    int rowOf(QStringView text) const;

    /// The selected rows and their texts, in the order of the list.
    std::vector<int> selectedRows() const;
    QStringList selectedRowTexts() const;
    bool isRowSelected(int row) const;
    void selectAllRows();
    void selectNone();
    void selectAll() override { selectAllRows(); }

    /// -1: none.
    int currentRow() const { return currentIndex().row(); }
    QString currentRowText() const { return rowText(currentRow()); }
    enum class Selection
    {
        Keep,
        ThisRowOnly
    };
    /// Makes a row current and scrolls to it. Reports nothing.
    void setCurrentRow(int row, Selection selection);

    /// What a click on that column's header does.
    void sortByHeader(int column);
    /// What dropping a dragged row does: it is put in before the row at that position (rowCount(): last), and automatic
    /// sorting is switched off.
    void dropRow(int from, int position);

Q_SIGNALS:
    /// The user clicked a row, or released a key that has no other meaning: the current row is to be shown.
    void itemSelected(int row);
    void fileActivated(int row);
    void rightClicked();
    /// The context menu is wanted at that place of the screen: by the right button's release, or by the keyboard.
    void menuRequested(const QPoint &globalPosition);
    void deleteRequested();
    void deletePlaylistsRequested();
    void writePlaylistRequested();
    void playRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void reportCurrentRow();
    void updateSortArrow();
    void applyColumnWidths();

    QItemSelection rangesOf(const std::vector<bool> &selected) const;
    std::vector<bool> selectionFlags() const;
    /// Runs a change of the rows' order, which tells the former position of each row, and gives selection and current
    /// row to the same rows as before. The selection is taken off meanwhile: the selection model would keep track of
    /// every single cell.
    void keepSelection(const std::function<std::vector<std::size_t>()> &reorder);

    ListModel *const m_model;
    RowDrag *const m_drag;
    int m_pressedCommand = 0; ///< the letter that was pressed with Shift alone and is still down
    int m_pressedRow = -1;    ///< that may be clicked: under the mouse button, and not dragged
    ColumnSet m_hidden;
    int m_laidOutWidth = -1; ///< the list's width that the columns fit
};

} // namespace ravlin
