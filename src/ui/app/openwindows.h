// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace ravlin {

/// Knows in which order the program's windows were opened. Menus, tooltips and the like don't count.
class OpenWindows : public QObject
{
    Q_OBJECT

public:
    explicit OpenWindows(QObject *parent);

    /// Closes every open window but this one, from the one opened last to the first.
    void closeAllBut(const QWidget *kept);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QList<QPointer<QWidget>> m_windows; ///< shown at some time; in the order of their last opening
};

} // namespace ravlin
