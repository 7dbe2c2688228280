// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"

#include <QTabWidget>

#include <functional>
#include <vector>

namespace ravlin {

class Captions;

/// The strip of working modes at the foot of the main window. Each mode is a page with a tab, whose text and tooltip
/// are captions.
class ModeTabs : public QTabWidget
{
    Q_OBJECT

public:
    explicit ModeTabs(QWidget *parent);

    /// Takes the page over and adds its tab behind the others. applyPageCaptions puts the current language's texts on
    /// the page itself.
    void addPage(QWidget *page, Caption textCaption, Caption tipCaption, std::function<void()> applyPageCaptions);

    /// Puts the current language's texts on the tabs and pages.
    void applyCaptions(const Captions &captions);

private:
    struct Page
    {
        Caption textCaption;
        Caption tipCaption;
        std::function<void()> applyCaptions;
    };

    void nameArrows(const Captions &captions);

    std::vector<Page> m_pages; ///< by the tabs' indices
};

} // namespace ravlin
