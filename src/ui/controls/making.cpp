// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/making.h"

#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPushButton>

namespace ravlin {

namespace {

class WheelGuard final : public QObject
{
public:
    explicit WheelGuard(QComboBox *list) : QObject(list), m_list(list) {}

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() != QEvent::Wheel || m_list->hasFocus())
            return QObject::eventFilter(watched, event);
        event->ignore(); // for the parent to take
        return true;
    }

private:
    QComboBox *m_list;
};

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

private:
    static bool isContextMenuKey(const QKeyEvent &key)
    {
        return key.key() == Qt::Key_F10 && key.modifiers() == Qt::ShiftModifier;
    }

    /// Sends what the system sends for its own menu key: the place is the control's cursor.
    static void openContextMenu(QWidget *control)
    {
        const QPoint place = control->inputMethodQuery(Qt::ImCursorRectangle).toRect().center();
        QContextMenuEvent event(QContextMenuEvent::Keyboard, place, control->mapToGlobal(place));
        QApplication::sendEvent(control, &event);
    }
};

} // namespace

void tabThrough(const QList<QWidget *> &controls)
{
    for (qsizetype i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls[i - 1], controls[i]);
}

void makeRoomy(QPushButton *button)
{
    button->setMinimumWidth(button->sizeHint().width() + 2 * button->fontMetrics().averageCharWidth());
}

void guardAgainstWheel(QComboBox *list)
{
    list->setFocusPolicy(Qt::StrongFocus);
    list->installEventFilter(new WheelGuard(list));
}

void openContextMenusByKey(QObject *application)
{
    application->installEventFilter(new ContextMenuKey(application));
}

} // namespace ravlin
