// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/statuspanels.h"

#include "core/app/showntext.h"
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
    : QStatusBar(parent), m_count(panel(this, QStringLiteral("panel1"))), m_path(panel(this, QStringLiteral("panel2")))
{
    setObjectName(QStringLiteral("sbStatusBar"));
    addWidget(m_count, 1);
    addWidget(m_path, 5);
}

void StatusPanels::showPassing(const QString &text)
{
    showMessage(shownLine(text), PassingTime);
}

void StatusPanels::setTexts(const QString &count, const QString &path)
{
    m_count->setFullText(count);
    m_path->setFullText(path);
}

} // namespace ravlin
