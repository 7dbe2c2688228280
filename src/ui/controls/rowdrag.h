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

/// Drags a row within a list by the left button, from the press to the release, with a mark where the row would go and
/// scrolling beyond the edge. Escape cancels the drag.
///
/// The list, whose rows have equal heights, passes its events here before it handles them itself, and moves the row.
class RowDrag : public QObject
{
    Q_OBJECT

public:
    struct Drop
    {
        int row = 0;
        int position = 0; ///< before the row now at this index; the number of rows: last
    };

    /// The list becomes its parent.
    RowDrag(QTreeView *list, DropRule rule);

    bool isUnderWay() const { return m_position >= 0; }
    void press(const QMouseEvent &event);
    /// True: the list must ignore this move.
    bool move(const QMouseEvent &event);
    /// Returns nothing if it was not a drop; the release is then the list's.
    std::optional<Drop> release(const QMouseEvent &event);
    /// True: the key has ended a drag.
    bool keyPress(const QKeyEvent &event);
    /// Ends a drag without a drop. No drag begins until the next press.
    void giveUp();
    /// Call it at the end of the viewport's painting.
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
    int m_row = -1; ///< the pressed row
    QPoint m_pressPosition;
    bool m_mayBegin = false; ///< only the left button is down, on a row
    int m_position = -1;     ///< where the row would go; -1: no drag
    int m_y = 0;             ///< height of the dragging pointer
    QBasicTimer m_scrollTimer;
};

} // namespace ravlin
