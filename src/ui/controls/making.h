// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>
#include <QList>

#include <utility>

class QPushButton;
class QWidget;

namespace ravlin {

/// A new control that is found under this name; parent owns it. arguments are what its constructor takes besides.
template <typename Control, typename... Arguments>
Control *made(const char *name, QWidget *parent, Arguments &&...arguments)
{
    auto *control = new Control(std::forward<Arguments>(arguments)..., parent);
    control->setObjectName(QLatin1String(name));
    return control;
}

/// Lets the Tab key go through these controls in this order.
void tabThrough(const QList<QWidget *> &controls);

/// Gives a button that starts something a bit more room beside its text than the style does. To be called when the text
/// has changed.
void makeRoomy(QPushButton *button);

} // namespace ravlin
