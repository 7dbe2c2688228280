// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/filecommands.h"

#include "core/app/historytexts.h"
#include "core/app/notice.h"
#include "core/app/pageowner.h"
#include "core/files/list/listcolumns.h"
#include "core/files/renaming/renaming.h"
#include "core/platform/desktop.h"
#include "core/platform/path.h"
#include "ui/app/listcontroller.h"
#include "ui/app/statuspanels.h"
#include "ui/controls/busy.h"
#include "ui/controls/outcomebox.h"
#include "ui/files/filelist.h"
#include "ui/files/foldertree.h"
#include "ui/naming/dialog.h"
#include "ui/naming/problemtext.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>

#include <tuple>
#include <utility>

namespace ravlin {

namespace {

/// Key in the settings: the folder that files were last copied or moved to.
constexpr QStringView DestinationKey = u"destination";

void openBySystem(const QString &path)
{
    QDesktopServices::openUrl(platform::addressOf(path));
}

} // namespace

FileCommands::FileCommands(const WindowParts &parts, LastTag lastTag)
    : QObject(parts.window), m_parts(parts), m_dialogs(parts.program.captions, parts.busy, parts.window),
      m_operations(parts.program.fileSystem, m_dialogs, parts.program.history),
      m_files(parts.program.fileSystem, m_operations), m_lastTag(std::move(lastTag)), m_open(&openBySystem),
      m_chooseFolder([window = parts.window](const QString &title, const QString &start) {
          QFileDialog dialog(window, title, start);
          dialog.setObjectName(QStringLiteral("destination"));
          dialog.setFileMode(QFileDialog::Directory);
          dialog.setOption(QFileDialog::ShowDirsOnly);
          return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
      })
{
    m_dialogs.setRecorded([this](const history::Summary &summary, bool isTakenBack) {
        if (m_isRepeating)
            Q_EMIT repeated(summary);
        else if (isTakenBack)
            Q_EMIT takenBack(summary);
        else
            Q_EMIT recorded(summary);
    });
}

QString FileCommands::selectedSources() const
{
    return sourceList(m_parts.program.state.currentFolder, m_parts.list.selectedRowTexts());
}

/// The current folder itself: without a separator at its end.
QString FileCommands::folderSource() const
{
    return platform::withoutEndSeparator(m_parts.program.state.currentFolderAsChosen);
}

bool FileCommands::isFolder(const QString &path) const
{
    const auto info = m_parts.program.fileSystem.info(path);
    return info && info->isFolder;
}

void FileCommands::moveFiles()
{
    transfer(&clsFileFunc::MoveFile, Caption::MoveFiles, [this] { return selectedSources(); });
}

void FileCommands::copyFiles()
{
    transfer(&clsFileFunc::CopyFile, Caption::CopyFiles, [this] { return selectedSources(); });
}

void FileCommands::moveFolder()
{
    transfer(&clsFileFunc::MoveFile, Caption::MoveFolder, [this] { return folderSource(); });
}

void FileCommands::copyFolder()
{
    transfer(&clsFileFunc::CopyFile, Caption::CopyFolder, [this] { return folderSource(); });
}

void FileCommands::transfer(Transfer operation, Caption caption, const std::function<QString()> &sources)
{
    const QString source = sources();
    if (source.isEmpty())
        return;
    const QString destination = askDestination(m_parts.program.captions.text(caption));
    if (destination.isEmpty()) {
        m_parts.tree.refresh();
        return;
    }
    std::ignore = (m_files.*operation)(source, platform::withEndSeparator(destination), true, 0);
    if (m_dialogs.takeHasWorked())
        showChanges();
    Q_EMIT ended();
}

/// Starts at the folder chosen last, or at the nearest folder above it that is left.
QString FileCommands::askDestination(const QString &title)
{
    Settings &settings = m_parts.program.settings;
    const QString last = settings.read(DestinationKey);
    const QString left = last.isEmpty() ? QString() : nearestFolder(m_parts.program.fileSystem, last);
    const QString start = left.isEmpty() ? m_parts.program.state.currentFolder : left;
    const QString chosen = QDir::toNativeSeparators(m_chooseFolder(title, start));
    if (!chosen.isEmpty())
        settings.write(DestinationKey, chosen);
    return chosen;
}

void FileCommands::deleteFiles()
{
    remove(selectedSources());
}

void FileCommands::deleteFolder()
{
    remove(folderSource());
}

void FileCommands::remove(const QString &source)
{
    if (source.isEmpty())
        return;
    std::ignore = m_files.DeleteFile(source, true, 0);
    // If the user declined, the list keeps its selection.
    if (m_dialogs.takeHasWorked())
        showChanges();
    Q_EMIT ended();
}

/// Makes tree and list show the folder as it is now or, if it is gone, the nearest one that is left; or another folder,
/// if one is given.
void FileCommands::showChanges(const QString &otherFolder)
{
    FolderTree &tree = m_parts.tree;
    const QString before = tree.path();
    if (otherFolder.isEmpty())
        tree.refresh();
    else
        tree.refreshTo(otherFolder);
    if (tree.path() == before)
        m_parts.lister.RefreshList(); // otherwise the tree has reported its new folder
}

void FileCommands::renameFolder()
{
    const QString folder = m_parts.program.state.currentFolder;
    if (folder.isEmpty())
        return;
    const QString firstFile = m_parts.list.rowCount() == 0 ? QString() : folder + m_parts.list.rowText(0);
    auto *dialog = new Dialog(m_parts.program.pageContext(m_parts.owner), folder, firstFile, m_parts.window);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &Dialog::renameRequested, this, &FileCommands::rename);
    dialog->show();
}

void FileCommands::rename(const RenameRow &wanted, ClashAnswer answer)
{
    platform::FileSystem &fileSystem = m_parts.program.fileSystem;
    RenamingOutcome outcome;
    history::Summary summary;
    const bool ran = m_parts.owner.runWithProgress(1, [&](const ProgressReport &progress) {
        RenamingPlan plan(fileSystem, {wanted});
        plan.answerAll(answer);
        history::History &history = m_parts.program.history;
        history::Operation entry(&history, history::Kind::RenameFolder, platform::folderOf(wanted.from));
        outcome = runRenaming(fileSystem, plan, {progress}, &history);
        summary = entry.finish();
    });
    if (!ran)
        return;
    Q_EMIT recorded(summary);
    const RenameRow &row = outcome.rows.front();
    const Captions &captions = m_parts.program.captions;
    if (row.renames())
        m_parts.tree.refreshTo(row.path);
    else if (row.problem)
        m_parts.owner.showError(problemText(captions, *row.problem));
    else if (row.error)
        m_parts.owner.showError(captions.errorText(row.error->code));
    else if (row.isCollision)
        m_parts.owner.showError(captions.text(Text::ErrorAlreadyExists));
}

void FileCommands::writePlaylist()
{
    Program &program = m_parts.program;
    if (program.state.currentFolder.isEmpty())
        return;
    const QString &folder = program.state.currentFolder;
    history::Operation entry(&program.history, history::Kind::Playlist, folder);
    const Result<QString> written =
        WritePlaylist(program.fileSystem, folder, m_parts.list.selectedRowTexts(), m_lastTag(), &program.history);
    if (!written)
        entry.failed(folder, written.error());
    Q_EMIT recorded(entry.finish());
    const Captions &captions = program.captions;
    m_parts.status.showPassing(
        written ? captions.text(Text::PlaylistWritten).arg(shownName(platform::nameOf(*written)))
                : captions.text(Text::PlaylistNotWritten).arg(captions.errorText(written.error().code)));
    Q_EMIT ended();
    if (written)
        tellLeftOut({});
}

/// Names the selected rows that no line of a list can hold, and says why. folder: what stands in front of each line.
void FileCommands::tellLeftOut(const QString &folder) const
{
    const Captions &captions = m_parts.program.captions;
    QStringList lines;
    for (const QString &text : m_parts.list.selectedRowTexts()) {
        if (!fitsPlaylist(folder + text))
            lines << shownName(text) + QStringLiteral(": ") + captions.text(Text::PlaylistLineBreak);
    }
    if (lines.isEmpty())
        return;
    auto *box = new OutcomeBox(captions, captions.text(Text::PlaylistLeftOut).arg(lines.size()), lines, m_parts.window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

void FileCommands::playSelection()
{
    Program &program = m_parts.program;
    if (program.state.currentFolder.isEmpty())
        return;
    const Result<void> written = PlaySelection(
        program.fileSystem, program.state.currentFolder, m_parts.list.selectedRowTexts(), playListPath(), m_open);
    if (!written)
        m_parts.status.showPassing(
            program.captions.text(Text::PlaylistNotWritten).arg(program.captions.errorText(written.error().code)));
    else
        tellLeftOut(program.state.currentFolder);
}

void FileCommands::deletePlaylists()
{
    if (m_parts.program.state.currentFolder.isEmpty())
        return;
    std::ignore = DeletePlaylists(m_files, m_parts.program.state.currentFolder);
    std::ignore = m_dialogs.takeHasWorked(); // the list shows no playlists
    Q_EMIT ended();
}

void FileCommands::undo()
{
    if (m_parts.busy.isRunning())
        return; // the history belongs to that work's thread
    const auto next = m_parts.program.history.nextUndo();
    if (next && *next)
        takeBack((*next)->id, {});
}

void FileCommands::undoEntry(qint64 entry, const std::set<qint64> &files, bool withLater)
{
    if (!m_parts.busy.isRunning())
        takeBack(entry, {.entry = entry, .onlyFiles = files, .withLater = withLater});
}

/// entry: the one that the request is about.
void FileCommands::takeBack(qint64 entry, UndoRequest request)
{
    const auto files = m_parts.program.history.files(entry);
    const QString former = files && !files->empty() ? files->front().path : QString();
    const bool wasAway = !isFolder(former);
    UndoReport report;
    std::ignore = m_operations.undo(request, &report);
    if (!report.later.empty() && agreesToUndo(report.later)) {
        request.withLater = true;
        std::ignore = m_operations.undo(request, &report);
    }
    if (m_dialogs.takeHasWorked()) {
        const bool isBack = isFolder(former) && (wasAway || !isFolder(m_parts.tree.path()));
        showChanges(isBack ? former : QString());
    }
    Q_EMIT ended();
}

bool FileCommands::agreesToUndo(const std::vector<history::Entry> &later) const
{
    constexpr std::size_t MostNamed = 10;
    const Captions &captions = m_parts.program.captions;
    QStringList names;
    for (const history::Entry &entry : later) {
        if (names.size() == MostNamed) {
            names << captions.text(Text::AndMore).arg(later.size() - MostNamed);
            break;
        }
        names << QStringLiteral("%1 (%2)").arg(
            kindText(captions, entry.kind), fileCountText(captions, entry.fileCount));
    }
    return m_parts.owner.ask(captions.text(Text::AskUndoLater), names.join(u'\n'));
}

void FileCommands::redo()
{
    if (m_parts.busy.isRunning())
        return;
    m_isRepeating = true;
    std::ignore = m_operations.redo();
    m_isRepeating = false;
    if (m_dialogs.takeHasWorked())
        showChanges();
    Q_EMIT ended();
}

} // namespace ravlin
