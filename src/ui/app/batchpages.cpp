// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/batchpages.h"

#include "ui/app/modetabs.h"
#include "ui/app/program.h"
#include "ui/files/filelist.h"
#include "ui/naming/extractpage.h"
#include "ui/naming/patternbox.h"
#include "ui/naming/renamepage.h"
#include "ui/tags/multifilepage.h"

namespace ravlin {

BatchPages::BatchPages(Program &program, PageOwner &owner, ModeTabs &tabs, const FileList &list, QObject *parent)
    : QObject(parent), m_program(program), m_multiFilePage(new MultiFilePage(program.pageContext(owner), &tabs)),
      m_extractPage(new ExtractPage(program.pageContext(owner), &tabs)),
      m_renamePage(new RenamePage(program.pageContext(owner), &tabs))
{
    const auto add = [&](auto *page, Caption caption, Caption tip) {
        using Page = std::remove_pointer_t<decltype(page)>;
        tabs.addPage(page, caption, tip, [page] { page->applyCaptions(); });
        connect(page, &Page::finished, this, &BatchPages::finished);
        connect(list.selectionModel(), &QItemSelectionModel::selectionChanged, page, &Page::selectionChanged);
        connect(list.model(), &QAbstractItemModel::modelReset, page, &Page::selectionChanged); // ends it without a word
    };
    add(m_multiFilePage, Caption::MultiFileTab, Caption::MultiFileTip);
    add(m_extractPage, Caption::ExtractTab, Caption::ExtractTip);
    add(m_renamePage, Caption::RenameFiles, Caption::RenameFiles);
}

void BatchPages::showChoices()
{
    m_multiFilePage->showChoices(m_program.choices);
    m_renamePage->showChoices(m_program.choices);
}

void BatchPages::refreshPatterns()
{
    for (QWidget *page : {static_cast<QWidget *>(m_extractPage), static_cast<QWidget *>(m_renamePage)}) {
        for (PatternBox *box : page->findChildren<PatternBox *>())
            box->refresh();
    }
}

void BatchPages::storeChoices() const
{
    m_multiFilePage->storeChoices(m_program.choices);
    m_renamePage->storeChoices(m_program.choices);
}

} // namespace ravlin
