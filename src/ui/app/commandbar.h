// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "ui/app/toolbar.h"

#include <QObject>
#include <QPointer>

class QMenu;

namespace ravlin {

class FileCommands;
class FileList;
class FolderCommand;
class FolderTree;
class ListController;
class LookupCommand;
struct Program;

/// What the commands of list and folder are reached from.
struct CommandBarContext
{
    Program &program;
    Toolbar &toolbar;
    FileList &list;
    FolderTree &tree;
    ListController &lister;
    QWidget *window;
};

/// Puts the commands of list and folder on the toolbar, into the context menus of list and tree and on their keys, and
/// keeps disabled what has nothing to act on.
class CommandBar : public QObject
{
    Q_OBJECT

public:
    CommandBar(const CommandBarContext &context, FileCommands &files, FolderCommand &folder, LookupCommand &lookup);

    /// Puts the current language's texts on what is not the toolbar's own.
    void applyCaptions();
    /// A command of another part, to be in the list's context menu as well; after the captions of its own.
    void addToListMenu(QAction *action);

Q_SIGNALS:
    /// The saved patterns were edited: boxes that offer them are to show the lists anew.
    void patternsEdited();

private:
    void addLookupButton(LookupCommand &lookup);
    void addPlaylistButtons(FileCommands &files);
    void addFolderButton(FileCommands &files, FolderCommand &folder);
    void addFilesButton(FileCommands &files);
    void addSelectionButton();
    void addPatternsButton();
    void addFurtherActions(FileCommands &files);
    void connectKeys(FileCommands &files);
    void makeMenus();
    QAction *furtherAction(const QString &name, const QString &icon, const QKeySequence &shortcut);
    void updateEnabling();
    void updatePlaylists();
    void editPatterns();
    Text undoText() const;

    CommandBarContext m_context;
    QAction *m_lookup = nullptr;        ///< tb_1
    QAction *m_lookupEntry = nullptr;   ///< freedb
    QAction *m_writePlaylist = nullptr; ///< tb_3
    QAction *m_writeEntry = nullptr;    ///< lista
    QAction *m_deletePlaylists = nullptr;
    QAction *m_play = nullptr;      ///< tb_5
    QAction *m_playEntry = nullptr; ///< play
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
    QAction *m_listTree = nullptr;
    QAction *m_refreshTree = nullptr;
    QMenu *m_listMenu;
    QMenu *m_treeMenu;
    QPointer<QWidget> m_patternEditor;
};

} // namespace ravlin
