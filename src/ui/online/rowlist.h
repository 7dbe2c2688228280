// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/online/rowlistmodel.h"

#include <QItemSelection>
#include <QTreeView>

#include <vector>

namespace ravlin {

class RowDrag;

/// A list whose rows the user puts in order: by dragging a row with the left button and dropping it before the row
/// under the pointer, where a mark shows meanwhile, or with Alt and an arrow key. The selection moves with the rows.
class RowList : public QTreeView
{
    Q_OBJECT

public:
    /// wideColumn takes the room that the others, as wide as their texts, leave.
    RowList(const char *name, int wideColumn, QWidget *parent);

    RowListModel &rows() { return *m_model; }
    const RowListModel &rows() const { return *m_model; }
    void setHeaderTexts(const QStringList &texts);
    /// By row, from 0.
    std::vector<bool> selectionFlags() const;

    /// Does what dropping a row there does; see RowListModel::moveTo.
    void moveRowTo(int row, int position);
    /// Makes the two lists scroll together.
    static void scrollTogether(RowList *one, RowList *other);

Q_SIGNALS:
    /// Rows were moved or replaced.
    void orderChanged();
    void selectionEdited();

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void fitIcons();
    void follow(const RowList *other);

    RowListModel *const m_model;
    RowDrag *const m_drag;
    int m_wideColumn;
    bool m_isFollowing = false;       ///< the other list
    QItemSelection m_selectionBefore; ///< restored when the press becomes a drag
};

} // namespace ravlin
