// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/app/program.h"
#include "ui/app/toolbar.h"

#include <QObject>

#include <optional>

class QMenu;

namespace ravlin {

class FileCommands;
class ProgramDialogs;

/// Puts the commands for list and folder on the toolbar, into the context menus of list and tree and on their keys, and
/// disables commands that have nothing to act on.
class CommandBar : public QObject
{
    Q_OBJECT

public:
    CommandBar(const WindowParts &parts, FileCommands &files, ProgramDialogs &dialogs);

    /// Puts the current language's texts on commands without a button.
    void applyCaptions();
    /// Adds another part's command to the end of the list's context menu.
    void addToListMenu(QAction *action);

private:
    void addLookupButton(ProgramDialogs &dialogs);
    void addPlaylistButtons(FileCommands &files);
    void addFolderButton(FileCommands &files);
    void addFilesButton(FileCommands &files);
    void addSelectionButton();
    void addPatternsButton(ProgramDialogs &dialogs);
    void addFurtherActions(FileCommands &files, ProgramDialogs &dialogs);
    void connectKeys(FileCommands &files);
    void makeMenus();
    QAction *furtherAction(const QString &name, const QString &icon, const QKeySequence &shortcut);
    void updateEnabling();
    void updatePlaylists();
    std::optional<history::Entry> nextUndo() const;
    void addUndoButton(FileCommands &files);
    void fillUndoMenu(FileCommands &files);

    WindowParts m_parts;
    QAction *m_lookup = nullptr;
    QAction *m_lookupEntry = nullptr;
    QAction *m_writePlaylist = nullptr;
    QAction *m_writeEntry = nullptr;
    QAction *m_deletePlaylists = nullptr;
    QAction *m_play = nullptr;
    QAction *m_playEntry = nullptr;
    QAction *m_renameFolder = nullptr;
    QAction *m_moveFolder = nullptr;
    QAction *m_copyFolder = nullptr;
    QAction *m_deleteFolder = nullptr;
    QAction *m_deleteFiles = nullptr;
    QAction *m_moveFiles = nullptr;
    QAction *m_copyFiles = nullptr;
    QAction *m_selectAll = nullptr;
    QAction *m_selectNone = nullptr;
    QAction *m_patterns = nullptr;
    QAction *m_undo = nullptr;
    QAction *m_history = nullptr;
    QAction *m_redo = nullptr;
    QMenu *m_undoMenu = nullptr;
    QAction *m_listTree = nullptr;
    QAction *m_refreshTree = nullptr;
    QMenu *m_listMenu;
    QMenu *m_treeMenu;
};

} // namespace ravlin
