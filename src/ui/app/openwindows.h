// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QWidget>

namespace ravlin {

/// Knows the order in which the program's windows were opened. Menus and tooltips don't count.
class OpenWindows : public QObject
{
    Q_OBJECT

public:
    explicit OpenWindows(QObject *parent);

    /// Closes every open window but this one, the one opened last first.
    void closeAllBut(const QWidget *kept);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QList<QPointer<QWidget>> m_windows; ///< in the order of their last opening, closed ones too
};

} // namespace ravlin
