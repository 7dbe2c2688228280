#include "app/ui/batchpages.h"

#include "app/ui/modetabs.h"
#include "app/ui/program.h"
#include "files/ui/filelist.h"
#include "tags/ui/multifilepage.h"

namespace ravlin {

namespace {

constexpr int CaptionMultiFile = 40;
constexpr int CaptionMultiFileTip = 43;

} // namespace

BatchPages::BatchPages(Program &program, PageOwner &owner, ModeTabs &tabs, const FileList &list, QObject *parent)
    : QObject(parent), m_program(program),
      m_multiFilePage(new MultiFilePage({owner, program.state, program.tagStore, program.captions}, &tabs))
{
    const auto add = [&](auto *page, int caption, int tip) {
        using Page = std::remove_pointer_t<decltype(page)>;
        tabs.addPage(page, caption, tip, [page] { page->applyCaptions(); });
        connect(page, &Page::finished, this, &BatchPages::finished);
        connect(list.selectionModel(), &QItemSelectionModel::selectionChanged, page, &Page::selectionChanged);
    };
    add(m_multiFilePage, CaptionMultiFile, CaptionMultiFileTip);
}

void BatchPages::showChoices()
{
    m_multiFilePage->showChoices(m_program.choices);
}

void BatchPages::storeChoices() const
{
    m_multiFilePage->storeChoices(m_program.choices);
}

} // namespace ravlin
