// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/wheelguard.h"

#include <QComboBox>
#include <QEvent>

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

} // namespace

void guardAgainstWheel(QComboBox *list)
{
    list->setFocusPolicy(Qt::StrongFocus);
    list->installEventFilter(new WheelGuard(list));
}

} // namespace ravlin
