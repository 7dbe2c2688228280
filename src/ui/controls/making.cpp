// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/making.h"

#include <QPushButton>

namespace ravlin {

void tabThrough(const QList<QWidget *> &controls)
{
    for (qsizetype i = 1; i < controls.size(); ++i)
        QWidget::setTabOrder(controls[i - 1], controls[i]);
}

void makeRoomy(QPushButton *button)
{
    button->setMinimumWidth(button->sizeHint().width() + 2 * button->fontMetrics().averageCharWidth());
}

} // namespace ravlin
