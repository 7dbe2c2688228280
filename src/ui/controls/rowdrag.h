// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/controls/dropposition.h"

#include <QBasicTimer>
#include <QObject>
#include <QPoint>

#include <optional>

class QKeyEvent;
class QMouseEvent;
class QTreeView;

namespace ravlin {

/// The dragging of a row within a list by the left button: from the press to the release, with a mark where the row
/// would go and scrolling beyond the edge. Escape gives it up.
///
/// The list, whose rows are of equal height, hands on its events before it deals with them itself, and moves the row.
class RowDrag : public QObject
{
    Q_OBJECT

public:
    struct Drop
    {
        int row = 0;
        int position = 0; ///< before the row that is there now; the number of rows: last
    };

    /// The list owns it.
    RowDrag(QTreeView *list, DropRule rule);

    bool isUnderWay() const { return m_position >= 0; }
    void press(const QMouseEvent &event);
    /// True: the list has nothing to do with this move.
    bool move(const QMouseEvent &event);
    /// Nothing: it was no drop, the release is the list's.
    std::optional<Drop> release(const QMouseEvent &event);
    /// True: the key has ended a drag.
    bool keyPress(const QKeyEvent &event);
    /// Without a drop. Until the next press no drag begins.
    void giveUp();
    /// To be called at the end of the viewport's painting.
    void paintMark();

Q_SIGNALS:
    void began();

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    RowsPlace rows() const;
    void begin();
    void dragTo(int y);

    QTreeView *m_list;
    DropRule m_rule;
    int m_row = -1; ///< that was pressed
    QPoint m_pressPosition;
    bool m_mayBegin = false; ///< the left button alone is down on a row
    int m_position = -1;     ///< where the row would go; -1: no drag
    int m_y = 0;             ///< height of the pointer that drags
    QBasicTimer m_scrollTimer;
};

} // namespace ravlin
