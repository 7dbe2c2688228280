// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/online/rowlistmodel.h"

#include <QItemSelection>
#include <QTreeView>

#include <vector>

namespace ravlin {

class RowDrag;

/// A list whose rows the user puts in order: a row is dragged with the left button and dropped before the row under the
/// pointer, which a mark shows meanwhile, or moved by Alt and an arrow key. The selection goes with the rows.
class RowList : public QTreeView
{
    Q_OBJECT

public:
    /// wideColumn: takes the room that the others, which are as wide as their texts, leave.
    RowList(const char *name, int wideColumn, QWidget *parent);

    RowListModel &rows() { return *m_model; }
    const RowListModel &rows() const { return *m_model; }
    void setHeaderTexts(const QStringList &texts);
    /// By position, from 0 on.
    std::vector<bool> selectionFlags() const;

    /// What dropping a row there does; see RowListModel::moveTo.
    void moveRowTo(int row, int position);
    /// From now on the two lists show the same rows side by side: who scrolls one, scrolls the other.
    static void scrollTogether(RowList *one, RowList *other);

Q_SIGNALS:
    /// The rows stand in another order, or are others.
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
    bool m_isFollowing = false;       ///< the other list's scrolling
    QItemSelection m_selectionBefore; ///< the press, which a drag gives back
};

} // namespace ravlin
