#include "app/ui/listcontroller.h"

#include "app/ui/program.h"
#include "app/ui/statuspanels.h"
#include "controls/ui/busy.h"
#include "files/currentfolder.h"
#include "files/ui/filelist.h"

namespace ravlin {

namespace {

constexpr int CaptionFiles = 10;

} // namespace

ListController::ListController(Program &program, FileList &list, StatusPanels &panels, Busy &busy, QObject *parent)
    : QObject(parent), m_program(program), m_list(list), m_panels(panels), m_busy(busy)
{
}

void ListController::openFolder(const QString &path)
{
    m_program.state.currentFolderAsChosen = path;
    RefreshList();
}

void ListController::RefreshList()
{
    if (!m_program.state.currentFolderAsChosen.isEmpty())
        list(&ravlin::RefreshList);
}

void ListController::ListFolderTree()
{
    if (!m_program.state.currentFolderAsChosen.isEmpty())
        list(&RefreshListTree);
}

void ListController::list(Listing (*scan)(const QString &, const ScanOptions &))
{
    if (m_busy.isRunning())
        return;
    ProgramState &state = m_program.state;
    enterFolder(state, state.currentFolderAsChosen, m_program.fileSystem);
    Listing listing;
    m_busy.run(0, [&](BusyProgress &progress) {
        std::size_t told = 0;
        ScanOptions options;
        options.cache = &m_program.tagCache;
        options.progress = [&](const ScanProgress &scanned) {
            progress.setSteps(static_cast<int>(scanned.total));
            for (; told < scanned.done; ++told)
                progress.step(scanned.name);
        };
        listing = scan(state.currentFolder, options);
    });
    m_list.setRows(std::move(listing.rows));
    showCurrentRow();
    m_list.selectAllRows();
    Q_EMIT listed();
}

void ListController::RefreshListTags()
{
    const QStringList texts = m_list.rowTexts();
    std::vector<std::optional<ListTag>> tags;
    const bool ran = m_busy.run(static_cast<int>(texts.size()), [&](BusyProgress &) {
        ScanOptions options;
        options.cache = &m_program.tagCache;
        tags = readListTags(m_program.state.currentFolder, texts, options);
    });
    if (ran)
        m_list.setTags(std::move(tags));
}

const QString &ListController::currentFolder() const
{
    return m_program.state.currentFolder;
}

QString ListController::pathOfRow(int row) const
{
    return row < 0 ? QString() : currentFolder() + m_list.rowText(row);
}

void ListController::showCurrentRow()
{
    const int row = m_list.currentRow();
    const StatusTexts texts = statusTexts(m_list.rowCount(), m_program.captions.text(CaptionFiles),
        m_program.state.currentFolder, row < 0 ? QString() : m_list.rowText(row));
    m_panels.setTexts(texts.panel1, texts.panel2);
}

} // namespace ravlin
