// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/modetabs.h"

#include "core/app/idiomas.h"

#include <QAbstractButton>
#include <QTabBar>

#include <utility>

namespace ravlin {

ModeTabs::ModeTabs(QWidget *parent) : QTabWidget(parent) {}

void ModeTabs::addPage(QWidget *page, Caption textCaption, Caption tipCaption, std::function<void()> applyPageCaptions)
{
    page->setFocusPolicy(Qt::NoFocus); // Tab goes on to its first control
    addTab(page, QString());
    m_pages.push_back({textCaption, tipCaption, std::move(applyPageCaptions)});
}

void ModeTabs::applyCaptions(const Captions &captions)
{
    for (int index = 0; index < count(); ++index) {
        const Page &page = m_pages.at(static_cast<size_t>(index));
        setTabText(index, captions.text(page.textCaption));
        setTabToolTip(index, captions.text(page.tipCaption));
        page.applyCaptions();
    }
    tabBar()->setAccessibleName(captions.text(Text::NamePages));
    nameArrows(captions);
}

/// The arrows appear if the tabs don't fit.
void ModeTabs::nameArrows(const Captions &captions)
{
    if (auto *left = findChild<QAbstractButton *>(QStringLiteral("ScrollLeftButton")))
        left->setAccessibleName(captions.text(Text::NameFormerTabs));
    if (auto *right = findChild<QAbstractButton *>(QStringLiteral("ScrollRightButton")))
        right->setAccessibleName(captions.text(Text::NameFurtherTabs));
}

} // namespace ravlin
