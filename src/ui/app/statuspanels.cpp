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
    : QStatusBar(parent), m_count(panel(this, QStringLiteral("panel1"))), m_path(panel(this, QStringLiteral("panel2"))),
      m_report(panel(this, QStringLiteral("report")))
{
    setObjectName(QStringLiteral("sbStatusBar"));
    addWidget(m_count, 1);
    addWidget(m_path, 5);
    // As wide as its text, so that the path gives way to it.
    m_report->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    m_report->hide();
    addWidget(m_report);
    m_reportEnd.setSingleShot(true);
    connect(&m_reportEnd, &QTimer::timeout, m_report, &QWidget::hide);
}

void StatusPanels::showPassing(const QString &text)
{
    // showMessage() would hide the panels.
    m_report->setFullText(text);
    m_report->show();
    m_reportEnd.start(PassingTime);
}

void StatusPanels::setTexts(const QString &count, const QString &path)
{
    m_count->setFullText(count);
    m_count->setMinimumWidth(m_count->sizeHint().width()); // only the path may be shortened
    m_path->setFullText(path);
}

} // namespace ravlin
