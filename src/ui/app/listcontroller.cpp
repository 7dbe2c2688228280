// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/listcontroller.h"

#include "core/files/list/currentfolder.h"
#include "ui/app/program.h"
#include "ui/app/statuspanels.h"
#include "ui/controls/busy.h"
#include "ui/files/filelist.h"

#include <QScrollBar>

#include <tuple>
#include <utility>

namespace ravlin {

ListController::ListController(Program &program, FileList &list, StatusPanels &panels, Busy &busy, QObject *parent)
    : QObject(parent), m_program(program), m_list(list), m_panels(panels), m_busy(busy)
{
}

void ListController::openFolder(const QString &path)
{
    list(path, &ravlin::RefreshList);
}

void ListController::RefreshList()
{
    const bool keepsTree = m_program.state.options.keepSubfolders && m_scan == &RefreshListTree;
    list(m_program.state.currentFolderAsChosen, keepsTree ? &RefreshListTree : &ravlin::RefreshList);
}

void ListController::RefreshListAt(const QString &rowText, const QStringList &selected)
{
    m_nextCurrent = rowText;
    m_nextSelected = selected;
    RefreshList();
    m_nextCurrent.clear();
    m_nextSelected.reset();
}

void ListController::ListFolderTree()
{
    list(m_program.state.currentFolderAsChosen, &RefreshListTree);
}

void ListController::completeListing()
{
    if (m_stopped)
        list(m_program.state.currentFolderAsChosen, m_stopped);
}

void ListController::list(const QString &folder, Scan scan)
{
    if (folder.isEmpty() || m_busy.isRunning())
        return;
    ProgramState &state = m_program.state;
    const QString formerFolder = state.currentFolder;
    const QStringList selected = m_nextSelected.value_or(m_list.selectedRowTexts());
    enterFolder(state, folder, m_program.fileSystem);
    const bool isSameFolder = state.currentFolder == formerFolder;
    Listing listing;
    std::ignore = runReading(0, [&](const ScanOptions &options) { listing = scan(state.currentFolder, options); });
    m_scan = scan;
    m_stopped = listing.isComplete ? nullptr : scan;
    if (isSameFolder)
        fillAgain(std::move(listing.rows));
    else
        m_list.setRows(std::move(listing.rows));
    showCurrentRow();
    selectRows(isSameFolder, listing.isComplete, selected);
    Q_EMIT listed();
}

void ListController::selectRows(bool isSameFolder, bool isComplete, const QStringList &selected)
{
    if (isSameFolder && m_program.state.options.keepSelection)
        m_list.selectRows(selected);
    else if (isComplete)
        m_list.selectAllRows();
    else // what works on the selected rows works on the whole folder, so not after a part of it was listed
        m_list.selectNone();
}

/// Keeps the scroll position and the current row, so that a user can work down the list.
void ListController::fillAgain(std::vector<ListRow> rows)
{
    const QString currentText = m_nextCurrent.isEmpty() ? m_list.currentRowText() : m_nextCurrent;
    const int place = m_list.verticalScrollBar()->value();
    m_list.setRows(std::move(rows));
    const int row = m_list.rowOf(currentText);
    if (row < 0)
        return;
    m_list.verticalScrollBar()->setValue(place);
    m_list.setCurrentRow(row, FileList::Selection::Keep);
}

bool ListController::runReading(int steps, const std::function<void(const ScanOptions &)> &work)
{
    std::stop_source stop;
    const bool ran = m_busy.runReading(steps, stop, [&](const ProgressReport &progress) {
        work({.cache = &m_program.tagCache,
            .progress = progress,
            .stop = stop.get_token(),
            .skipTrashFolders = m_program.state.options.skipTrashFolders});
    });
    return ran && !stop.stop_requested();
}

void ListController::RefreshListTags()
{
    const QStringList texts = m_list.rowTexts();
    std::vector<std::optional<ListedFile>> tags;
    std::ignore = runReading(static_cast<int>(texts.size()),
        [&](const ScanOptions &options) { tags = rereadFiles(m_program.state.currentFolder, texts, options); });
    m_list.setTags(tags); // a row that was not reached keeps its own
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
    const Captions &captions = m_program.captions;
    const QString files = captions.text(Caption::Files);
    StatusTexts texts =
        statusTexts(m_list.rowCount(), files, m_program.state.currentFolder, row < 0 ? QString() : m_list.rowText(row));
    if (m_stopped)
        texts.panel1 = captions.text(Text::CountStopped).arg(m_list.rowCount()).arg(files);
    m_panels.setTexts(texts.panel1, texts.panel2);
}

} // namespace ravlin
