// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace ravlin {

/// Shows the tooltips of the whole program, as plain text made fit by shownLines() and in lines that fit on the screen.
/// Widgets, models and actions give plain text as their tooltip. A tooltip that only repeats a cell or a header appears
/// where that is cut off.
///
/// Also makes every label plain that Qt itself puts into its dialogs and tooltips. The main window makes one.
class ToolTips final : public QObject
{
    Q_OBJECT

public:
    /// From now on, until parent goes.
    explicit ToolTips(QObject *parent);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};

} // namespace ravlin
