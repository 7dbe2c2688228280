// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/contextmenukey.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QWidget>

namespace ravlin {

namespace {

bool isContextMenuKey(const QKeyEvent &key)
{
    return key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier;
}

/// What the system sends for its own menu key: the place is where the control has its cursor.
void openContextMenu(QWidget *control)
{
    const QPoint place = control->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
    QContextMenuEvent event(QContextMenuEvent::Keyboard, place, control->mapToGlobal(place));
    QApplication::sendEvent(control, &event);
}

class ContextMenuKey final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        QWidget *const focus = QApplication::focusWidget();
        const bool mayBeMeant = event->type() == QEvent::KeyPress && watched == focus && focus != nullptr;
        if (!mayBeMeant || !isContextMenuKey(*static_cast<QKeyEvent *>(event)))
            return QObject::eventFilter(watched, event);
        openContextMenu(focus);
        return true;
    }
};

} // namespace

void openContextMenusByKey(QObject *application)
{
    application->installEventFilter(new ContextMenuKey(application));
}

} // namespace ravlin
