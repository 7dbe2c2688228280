// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/statuspanels.h"

#include "ui/controls/elidedlabel.h"

namespace ravlin {

namespace {

constexpr int PassingTime = 6000; ///< milliseconds

ElidedLabel *panel(QWidget *parent, const QString &name)
{
    auto *label = new ElidedLabel(parent);
    label->setObjectName(name);
    label->setContentsMargins(6, 0, 6, 0);
    return label;
}

} // namespace

StatusPanels::StatusPanels(QWidget *parent)
    : QStatusBar(parent), panel1(panel(this, QStringLiteral("panel1"))), panel2(panel(this, QStringLiteral("panel2")))
{
    setObjectName(QStringLiteral("sbStatusBar"));
    addWidget(panel1, 1);
    addWidget(panel2, 5);
}

void StatusPanels::showPassing(const QString &text)
{
    showMessage(text, PassingTime);
}

void StatusPanels::setTexts(const QString &count, const QString &path)
{
    panel1->setFullText(count);
    panel2->setFullText(path);
}

} // namespace ravlin
