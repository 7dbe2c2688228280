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
/// Shows rows and reports what the user does; its owner acts on it. Rows are identified by their position, from 0. A
/// row's text is the path of its file below the current folder.
class FileList : public QTreeView
{
    Q_OBJECT

public:
    explicit FileList(QWidget *parent = nullptr);

    const ListModel &rows() const { return *m_model; }
    /// Shows a fresh listing, sorted, with automatic sorting on. Makes the first row current and selects none.
    void setRows(std::vector<ListRow> rows);
    /// See ListModel::setTags.
    void setTags(const std::vector<std::optional<ListedFile>> &tags)
    {
        m_model->setTags(tags);
        updateSortArrow();
    }
    void setTooLargeText(const QString &text) { m_model->setTooLargeText(text); }
    /// The rules that sort the next rows.
    void setSortLocale(const QLocale &locale) { m_model->setLocale(locale); }
    void setHeaderText(ListColumn column, const QString &text) { m_model->setHeaderText(column, text); }
    /// Hides these columns and shows the others, and always the file's.
    void setHiddenColumns(ColumnSet hidden);
    /// A note about a row, for its tooltip and for assistive tools: empty for most. Asked for only when somebody wants
    /// to know, so it may read the disk.
    using RowNote = std::function<QString(const QString &rowText)>;
    void setRowNote(RowNote note);
    void setHeaderTag(ListColumn column, const QString &tag) { m_model->setHeaderTag(column, tag); }

    int rowCount() const { return m_model->rowCount(); }
    /// The real name, not the shown one. Empty if there is no such row.
    QString rowText(int row) const;
    QStringList rowTexts() const;
    /// The row with that text, or -1.
    int rowOf(QStringView text) const;

    /// The selected rows and their texts, in the order of the list.
    std::vector<int> selectedRows() const;
    QStringList selectedRowTexts() const;
    bool isRowSelected(int row) const;
    void selectAllRows();
    /// Selects the rows with these texts, and no others.
    void selectRows(const QStringList &texts);
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
    /// Makes a row current and scrolls to it. Emits nothing.
    void setCurrentRow(int row, Selection selection);

    /// Does what a click on that column's header does.
    void sortByHeader(int column);
    /// Does what dropping a dragged row does: moves it before the row at that position (rowCount(): to the end) and
    /// switches automatic sorting off.
    void dropRow(int from, int position);

Q_SIGNALS:
    /// The user clicked a row or released a key without another meaning: show the current row.
    void itemSelected(int row);
    void fileActivated(int row);
    void rightClicked();
    /// The user wants the context menu: released the right button, or pressed the menu key.
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
    void showWholeHeaders();

    QItemSelection rangesOf(const std::vector<bool> &selected) const;
    std::vector<bool> selectionFlags() const;
    /// Runs reorder, which returns the former position of each row, and keeps the selection and the current row with
    /// their rows. Clears the selection meanwhile, or the selection model would track every cell.
    void keepSelection(const std::function<std::vector<std::size_t>()> &reorder);

    ListModel *const m_model;
    RowDrag *const m_drag;
    int m_pressedCommand = 0; ///< a letter pressed with Shift alone and still held
    int m_pressedRow = -1;    ///< pressed by the mouse and not dragged: it may be a click
    ColumnSet m_hidden;
    int m_laidOutWidth = -1; ///< the list width that the columns fit
};

} // namespace ravlin
