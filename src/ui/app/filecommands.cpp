// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/filecommands.h"

#include "core/files/list/listcolumns.h"
#include "core/platform/path.h"
#include "ui/app/listcontroller.h"
#include "ui/app/program.h"
#include "ui/app/statuspanels.h"
#include "ui/files/filelist.h"
#include "ui/files/foldertree.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QUrl>

#include <tuple>

namespace ravlin {

namespace {

/// Key in the settings: the folder that something was copied or moved to last.
constexpr QStringView DestinationKey = u"destination";

void openBySystem(const QString &path)
{
    QDesktopServices::openUrl(QUrl::fromLocalFile(path));
}

} // namespace

FileCommands::FileCommands(const FileCommandsContext &context, QObject *parent)
    : QObject(parent), m_context(context), m_dialogs(context.program.captions, context.busy, context.window),
      m_operations(context.program.fileSystem, m_dialogs, context.program.undoHistory),
      m_files(context.program.fileSystem, m_operations), m_lastTag([] { return TagRecord(); }), m_open(&openBySystem),
      m_chooseFolder([window = context.window](const QString &title, const QString &start) {
          QFileDialog dialog(window, title, start);
          dialog.setObjectName(QStringLiteral("destination"));
          dialog.setFileMode(QFileDialog::Directory);
          dialog.setOption(QFileDialog::ShowDirsOnly);
          return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
      })
{
}

QString FileCommands::selectedSources() const
{
    return sourceList(m_context.program.state.currentFolder, m_context.list.selectedRowTexts());
}

/// The current folder as a thing of its own: without a separator at its end.
QString FileCommands::folderSource() const
{
    return platform::withoutEndSeparator(m_context.program.state.currentFolderAsChosen);
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
    const QString destination = askDestination(m_context.program.captions.text(caption));
    if (destination.isEmpty()) {
        m_context.tree.refresh();
        return;
    }
    std::ignore = (m_files.*operation)(source, platform::withEndSeparator(destination), true, 0);
    if (m_dialogs.takeHasWorked())
        showChanges();
    Q_EMIT ended();
}

/// Begins in the folder chosen last, or in what is left of the way to it.
QString FileCommands::askDestination(const QString &title)
{
    Settings &settings = m_context.program.settings;
    const QString last = settings.read(DestinationKey);
    const QString left = last.isEmpty() ? QString() : nearestFolder(m_context.program.fileSystem, last);
    const QString start = left.isEmpty() ? m_context.program.state.currentFolder : left;
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
    // A no keeps the list with its selection.
    if (m_dialogs.takeHasWorked())
        showChanges();
    Q_EMIT ended();
}

/// Tree and list show the folder as it is now or, when it is gone, the nearest one that is left. formerFolder: where it
/// may have come back to.
void FileCommands::showChanges(const QString &formerFolder)
{
    FolderTree &tree = m_context.tree;
    const QString before = tree.path();
    if (!formerFolder.isEmpty() && !QFileInfo(before).isDir() && QFileInfo(formerFolder).isDir())
        tree.refreshTo(formerFolder);
    else
        tree.refresh();
    if (tree.path() == before)
        m_context.lister.RefreshList(); // else the tree has told of its other folder
}

void FileCommands::writePlaylist()
{
    Program &program = m_context.program;
    if (program.state.currentFolder.isEmpty())
        return;
    const Result<QString> written =
        WritePlaylist(program.fileSystem, program.state.currentFolder, m_context.list.selectedRowTexts(), m_lastTag());
    const Captions &captions = program.captions;
    m_context.status.showPassing(
        written ? captions.text(Text::PlaylistWritten).arg(shownName(platform::nameOf(*written)))
                : captions.text(Text::PlaylistNotWritten).arg(captions.errorText(written.error().code)));
    Q_EMIT ended();
}

void FileCommands::playSelection()
{
    Program &program = m_context.program;
    if (program.state.currentFolder.isEmpty())
        return;
    const Result<void> written = PlaySelection(
        program.fileSystem, program.state.currentFolder, m_context.list.selectedRowTexts(), playListPath(), m_open);
    if (!written)
        m_context.status.showPassing(
            program.captions.text(Text::PlaylistNotWritten).arg(program.captions.errorText(written.error().code)));
}

void FileCommands::deletePlaylists()
{
    if (m_context.program.state.currentFolder.isEmpty())
        return;
    std::ignore = DeletePlaylists(m_files, m_context.program.state.currentFolder);
    std::ignore = m_dialogs.takeHasWorked(); // the list shows no playlists
    Q_EMIT ended();
}

void FileCommands::undo()
{
    const std::optional<UndoSubject> subject = m_context.program.undoHistory.next();
    if (!subject)
        return;
    std::ignore = m_operations.undo();
    if (m_dialogs.takeHasWorked())
        showChanges(subject->formerPath);
    Q_EMIT ended();
}

} // namespace ravlin
