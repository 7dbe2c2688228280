// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>
#include <QList>
#include <QString>

#include <utility>

class QDialog;
class QLineEdit;
class QObject;
class QPushButton;
class QWidget;

/// What windows and pages do to controls when they make them.
namespace ravlin {

/// A new control with this object name, owned by parent. Its constructor gets the arguments, then parent.
template <typename Control, typename... Arguments>
Control *made(const char *name, QWidget *parent, Arguments &&...arguments)
{
    auto *control = new Control(std::forward<Arguments>(arguments)..., parent);
    control->setObjectName(QLatin1String(name));
    return control;
}

/// Makes the Tab key go through these controls in this order.
void tabThrough(const QList<QWidget *> &controls);

/// Gives a button that starts something a bit more room beside its text than the style does, and enough for a text
/// that its like shows on another page. Call it again when the text has changed.
void makeRoomy(QPushButton *button, const QString &otherText = {});

/// Makes controls that stand one below the other as wide as the widest of them. Call it again when a text has changed.
void makeEquallyWide(const QList<QWidget *> &controls);

/// Gives a dialog the size that its layout asks for, as far as the screen has room for it and its frame.
void fitToScreen(QDialog *dialog);

/// Keeps a text box wide enough to show ten letters.
void keepReadable(QLineEdit *box);

/// Keeps the mouse wheel from changing a drop-down list or a number that merely lies under the pointer: the wheel turns
/// it only if it has the keyboard focus, and otherwise scrolls what is around it.
void guardAgainstWheel(QWidget *control);

/// Makes Shift+F10 open the context menu of the control with the keyboard focus, in every window of the program, as the
/// menu key does. Keyboards without a menu key rely on it. The filter lives as long as application.
void openContextMenusByKey(QObject *application);

} // namespace ravlin
