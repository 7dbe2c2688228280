// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/commandbar.h"

#include "core/app/notice.h"
#include "ui/app/filecommands.h"
#include "ui/app/listcontroller.h"
#include "ui/app/programdialogs.h"
#include "ui/controls/busy.h"
#include "ui/controls/icons.h"
#include "ui/files/filelist.h"
#include "ui/files/foldertree.h"

#include <QDateTime>
#include <QDir>
#include <QMenu>
#include <QToolButton>

namespace ravlin {

namespace {

// The buttons' places.
constexpr int Lookup = 1;
constexpr int Playlist = 3;
constexpr int Play = 5;
constexpr int Folder = 7;
constexpr int Files = 9;
constexpr int Selection = 12;
constexpr int Patterns = 14;

/// A command whose key the list or the tree handles: elsewhere the key means something else, such as a letter.
ToolbarCommand withKeyOfAView(Caption caption, const char *icon, const QKeySequence &key)
{
    return {caption, QLatin1String(icon), key, Qt::WidgetShortcut};
}

ToolbarCommand withKey(Caption caption, const char *icon, const QKeySequence &key)
{
    return {caption, QLatin1String(icon), key};
}

Text undoText(history::Kind kind)
{
    switch (kind) {
    case history::Kind::Single:
    case history::Kind::Multi:
    case history::Kind::Extract:
    case history::Kind::Lookup:
        return Text::CommandUndoTags;
    case history::Kind::RemoveTags:
        return Text::CommandUndoRemoveTags;
    case history::Kind::Rename:
    case history::Kind::RenameFolder:
        return Text::CommandUndoRename;
    case history::Kind::Copy:
        return Text::CommandUndoCopy;
    case history::Kind::Move:
        return Text::CommandUndoMove;
    case history::Kind::Trash:
    case history::Kind::Delete:
        return Text::CommandUndoDelete;
    case history::Kind::Playlist:
        return Text::CommandUndoPlaylist;
    }
    return Text::CommandUndo;
}

} // namespace

CommandBar::CommandBar(const WindowParts &parts, FileCommands &files, ProgramDialogs &dialogs)
    : QObject(parts.window), m_parts(parts), m_listMenu(new QMenu(&parts.list)), m_treeMenu(new QMenu(&parts.tree))
{
    addLookupButton(dialogs);
    addPlaylistButtons(files);
    addFolderButton(files);
    addFilesButton(files);
    addSelectionButton();
    addPatternsButton(dialogs);
    addUndoButton(files);
    addFurtherActions(files, dialogs);
    connectKeys(files);
    makeMenus();
    connect(&parts.lister, &ListController::listed, this, &CommandBar::updateEnabling);
    connect(&files, &FileCommands::ended, this, &CommandBar::updateEnabling);
    connect(parts.list.selectionModel(), &QItemSelectionModel::selectionChanged, this, &CommandBar::updateEnabling);
    updateEnabling();
}

void CommandBar::addLookupButton(ProgramDialogs &dialogs)
{
    const ToolbarCommand command = withKey(Caption::LookUpDisc, "disc-3", Qt::Key_F3);
    m_lookup = m_parts.toolbar.addButton(Lookup, command);
    m_lookupEntry = m_parts.toolbar.addMenuEntry(Lookup, QStringLiteral("freedb"),
        {command.caption, command.icon, command.shortcut, Qt::WidgetShortcut}); // the button has the key
    for (QAction *action : {m_lookup, m_lookupEntry})
        connect(action, &QAction::triggered, &dialogs, &ProgramDialogs::openLookup);
}

void CommandBar::addPlaylistButtons(FileCommands &files)
{
    const QKeySequence writeKey(Qt::SHIFT | Qt::Key_L);
    const QKeySequence playKey(Qt::SHIFT | Qt::Key_P);
    Toolbar &toolbar = m_parts.toolbar;
    m_writePlaylist = toolbar.addButton(Playlist, withKeyOfAView(Caption::WritePlaylist, "list-music", writeKey));
    m_writeEntry = toolbar.addMenuEntry(
        Playlist, QStringLiteral("lista"), withKeyOfAView(Caption::WritePlaylist, "list-music", writeKey));
    m_deletePlaylists = toolbar.addMenuEntry(Playlist, QStringLiteral("blistas"),
        withKeyOfAView(Caption::DeletePlaylists, "list-minus", QKeySequence(Qt::SHIFT | Qt::Key_B)));
    m_play = toolbar.addButton(Play, withKeyOfAView(Caption::PlayFiles, "play", playKey));
    m_playEntry =
        toolbar.addMenuEntry(Play, QStringLiteral("play"), withKeyOfAView(Caption::PlayFiles, "play", playKey));
    for (QAction *action : {m_writePlaylist, m_writeEntry})
        connect(action, &QAction::triggered, &files, &FileCommands::writePlaylist);
    for (QAction *action : {m_play, m_playEntry})
        connect(action, &QAction::triggered, &files, &FileCommands::playSelection);
    connect(m_deletePlaylists, &QAction::triggered, &files, &FileCommands::deletePlaylists);
}

void CommandBar::addFolderButton(FileCommands &files)
{
    Toolbar &toolbar = m_parts.toolbar;
    m_renameFolder = toolbar.addButton(Folder, withKey(Caption::RenameFolder, "folder-pen", Qt::Key_F8));
    m_moveFolder = toolbar.addMenuEntry(Folder, QStringLiteral("mcarpeta"),
        withKey(Caption::MoveFolder, "folder-output", QKeySequence(Qt::SHIFT | Qt::Key_F6)));
    m_copyFolder = toolbar.addMenuEntry(Folder, QStringLiteral("ccarpeta"),
        withKey(Caption::CopyFolder, "folders", QKeySequence(Qt::SHIFT | Qt::Key_F7)));
    // Not in the menu of the files, which a click opens while no file is selected.
    m_deleteFolder = toolbar.addMenuEntry(Folder, QStringLiteral("bcarpeta"),
        withKey(Caption::DeleteFolder, "folder-x", QKeySequence(Qt::SHIFT | Qt::Key_F8)));
    connect(m_renameFolder, &QAction::triggered, &files, &FileCommands::renameFolder);
    connect(m_moveFolder, &QAction::triggered, &files, &FileCommands::moveFolder);
    connect(m_copyFolder, &QAction::triggered, &files, &FileCommands::copyFolder);
    connect(m_deleteFolder, &QAction::triggered, &files, &FileCommands::deleteFolder);
}

void CommandBar::addFilesButton(FileCommands &files)
{
    Toolbar &toolbar = m_parts.toolbar;
    m_deleteFiles = toolbar.addButton(Files, withKeyOfAView(Caption::DeleteFiles, "trash-2", QKeySequence::Delete));
    m_moveFiles =
        toolbar.addMenuEntry(Files, QStringLiteral("mover"), withKey(Caption::MoveFiles, "folder-input", Qt::Key_F6));
    m_copyFiles =
        toolbar.addMenuEntry(Files, QStringLiteral("copiar"), withKey(Caption::CopyFiles, "copy", Qt::Key_F7));
    connect(m_deleteFiles, &QAction::triggered, &files, &FileCommands::deleteFiles);
    connect(m_moveFiles, &QAction::triggered, &files, &FileCommands::moveFiles);
    connect(m_copyFiles, &QAction::triggered, &files, &FileCommands::copyFiles);
}

void CommandBar::addSelectionButton()
{
    Toolbar &toolbar = m_parts.toolbar;
    m_selectAll = toolbar.addButton(Selection, withKey(Caption::SelectAll, "list-checks", QKeySequence::SelectAll));
    m_selectNone = toolbar.addMenuEntry(Selection, QStringLiteral("none"),
        withKey(Caption::SelectNone, "list-x", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_A)));
    connect(m_selectAll, &QAction::triggered, &m_parts.list, &FileList::selectAllRows);
    connect(m_selectNone, &QAction::triggered, &m_parts.list, &FileList::selectNone);
}

void CommandBar::addPatternsButton(ProgramDialogs &dialogs)
{
    m_patterns = m_parts.toolbar.addButton(
        Patterns, {Text::TitlePatterns, QStringLiteral("bookmark"), QKeySequence(Qt::Key_F9)});
    connect(m_patterns, &QAction::triggered, &dialogs, &ProgramDialogs::openPatterns);
}

/// A click takes back one entry of the history, the menu holds the last ones.
void CommandBar::addUndoButton(FileCommands &files)
{
    m_undo = m_parts.toolbar.addEndButton(
        QStringLiteral("undo"), {Text::CommandUndo, QStringLiteral("undo-2"), QKeySequence(QKeySequence::Undo)});
    m_undo->setObjectName(QStringLiteral("undo"));
    connect(m_undo, &QAction::triggered, &files, &FileCommands::undo);
    QToolButton *button = m_parts.toolbar.buttons().back();
    m_undoMenu = new QMenu(button);
    m_undoMenu->setObjectName(QStringLiteral("undoMenu"));
    button->setMenu(m_undoMenu);
    button->setPopupMode(QToolButton::MenuButtonPopup);
    connect(m_undoMenu, &QMenu::aboutToShow, this, [this, &files] { fillUndoMenu(files); });
}

/// Commands without a button.
void CommandBar::addFurtherActions(FileCommands &files, ProgramDialogs &dialogs)
{
    m_redo =
        furtherAction(QStringLiteral("redo"), QStringLiteral("redo-2"), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z));
    m_history = furtherAction(QStringLiteral("history"), QStringLiteral("history"), QKeySequence(Qt::CTRL | Qt::Key_H));
    m_listTree = furtherAction(QStringLiteral("listTree"), QStringLiteral("folder-tree"), Qt::Key_F2);
    m_refreshTree = furtherAction(QStringLiteral("refreshTree"), QStringLiteral("refresh-cw"), Qt::Key_F5);
    for (QAction *ofTheTree : {m_listTree, m_refreshTree})
        ofTheTree->setShortcutContext(Qt::WidgetShortcut); // the tree handles these keys
    connect(m_redo, &QAction::triggered, &files, &FileCommands::redo);
    connect(m_history, &QAction::triggered, &dialogs, &ProgramDialogs::openHistory);
    connect(m_listTree, &QAction::triggered, &m_parts.lister, &ListController::ListFolderTree);
    connect(m_refreshTree, &QAction::triggered, &m_parts.tree, &FolderTree::refreshAsAsked);
}

QAction *CommandBar::furtherAction(const QString &name, const QString &icon, const QKeySequence &shortcut)
{
    auto *action = new QAction(this);
    action->setObjectName(name);
    action->setShortcut(shortcut);
    action->setIcon(themedIcon(icon, m_parts.window->palette()));
    m_parts.window->addAction(action);
    return action;
}

void CommandBar::connectKeys(FileCommands &files)
{
    const FileList &list = m_parts.list;
    connect(&list, &FileList::deleteRequested, &files, &FileCommands::deleteFiles);
    connect(&list, &FileList::writePlaylistRequested, &files, &FileCommands::writePlaylist);
    connect(&list, &FileList::playRequested, &files, &FileCommands::playSelection);
    connect(&list, &FileList::deletePlaylistsRequested, &files, &FileCommands::deletePlaylists);
    connect(&m_parts.tree, &FolderTree::deleteRequested, m_deleteFolder, &QAction::trigger);
}

void CommandBar::makeMenus()
{
    m_listMenu->setObjectName(QStringLiteral("listMenu"));
    m_listMenu->addActions({m_playEntry, m_writeEntry, m_deletePlaylists});
    m_listMenu->addSeparator();
    m_listMenu->addAction(m_lookupEntry);
    m_listMenu->addSeparator();
    m_listMenu->addActions({m_moveFiles, m_copyFiles, m_deleteFiles});
    m_listMenu->addSeparator();
    m_listMenu->addActions({m_undo, m_redo, m_history});
    m_listMenu->addSeparator();
    m_listMenu->addActions({m_selectAll, m_selectNone});
    m_listMenu->addSeparator();
    m_listMenu->addAction(m_patterns);
    m_treeMenu->setObjectName(QStringLiteral("treeMenu"));
    m_treeMenu->addActions({m_listTree, m_refreshTree});
    m_treeMenu->addSeparator();
    m_treeMenu->addActions({m_renameFolder, m_moveFolder, m_copyFolder, m_deleteFolder, m_deletePlaylists});
    m_treeMenu->addSeparator();
    m_treeMenu->addActions({m_undo, m_redo, m_history});

    connect(&m_parts.list, &FileList::menuRequested, m_listMenu, [this](const QPoint &at) { m_listMenu->popup(at); });
    m_parts.tree.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&m_parts.tree, &QWidget::customContextMenuRequested, m_treeMenu,
        [this](const QPoint &at) { m_treeMenu->popup(m_parts.tree.viewport()->mapToGlobal(at)); });
    for (QMenu *menu : {m_listMenu, m_treeMenu, m_parts.toolbar.button(Playlist)->menu()})
        connect(menu, &QMenu::aboutToShow, this, &CommandBar::updatePlaylists);
}

void CommandBar::addToListMenu(QAction *action)
{
    m_listMenu->addAction(action);
}

void CommandBar::updateEnabling()
{
    const QString &folder = m_parts.program.state.currentFolder;
    const bool hasFolder = !folder.isEmpty();
    const bool canChangeFolder = hasFolder && !QDir(folder).isRoot();
    const bool hasRows = m_parts.list.rowCount() > 0;
    const bool hasSelection = m_parts.list.selectionModel()->hasSelection();
    for (QAction *action : {m_writePlaylist, m_play, m_selectAll})
        action->setEnabled(hasRows);
    for (QAction *action : {m_lookup, m_lookupEntry, m_deleteFiles, m_moveFiles, m_copyFiles, m_selectNone})
        action->setEnabled(hasSelection);
    // A playlist may be written and played without files.
    for (QAction *action : {m_writeEntry, m_playEntry, m_deletePlaylists, m_listTree})
        action->setEnabled(hasFolder);
    for (QAction *action : {m_renameFolder, m_moveFolder, m_copyFolder, m_deleteFolder})
        action->setEnabled(canChangeFolder);
    m_undo->setEnabled(nextUndo().has_value());
    m_redo->setEnabled(
        !m_parts.busy.isRunning() && m_parts.program.history.nextRedo().value_or(std::nullopt).has_value());
    applyCaptions();
}

/// Called only for a menu about to be shown, since it reads the whole folder.
void CommandBar::updatePlaylists()
{
    const QString &folder = m_parts.program.state.currentFolder;
    m_deletePlaylists->setEnabled(!folder.isEmpty() && !playlistsIn(folder).isEmpty());
}

/// What undo would take back. While an operation runs, the history belongs to that one's thread.
std::optional<history::Entry> CommandBar::nextUndo() const
{
    if (m_parts.busy.isRunning())
        return std::nullopt;
    return m_parts.program.history.nextUndo().value_or(std::nullopt);
}

void CommandBar::fillUndoMenu(FileCommands &files)
{
    constexpr qsizetype MostEntries = 10;
    constexpr qsizetype MostLookedAt = 100; // some of them may be undone
    m_undoMenu->clear();
    if (m_parts.busy.isRunning())
        return;
    const Captions &captions = m_parts.program.captions;
    for (const history::Entry &entry :
        m_parts.program.history.entries({.limit = MostLookedAt}).value_or(std::vector<history::Entry>())) {
        if (entry.undoneCount >= entry.fileCount)
            continue;
        const QString time =
            captions.locale().toString(QDateTime::fromMSecsSinceEpoch(entry.time), QLocale::ShortFormat);
        const QString text = captions.text(Text::CommandUndoEntry)
                                 .arg(time, captions.text(undoText(entry.kind)),
                                     fileCountText(captions, entry.fileCount - entry.undoneCount));
        QAction *action = m_undoMenu->addAction(text);
        connect(action, &QAction::triggered, &files, [&files, id = entry.id] { files.undoEntry(id); });
        if (m_undoMenu->actions().size() == MostEntries)
            return;
    }
}

void CommandBar::applyCaptions()
{
    const Captions &captions = m_parts.program.captions;
    const std::optional<history::Entry> next = nextUndo();
    m_undo->setText(captions.text(next ? undoText(next->kind) : Text::CommandUndo));
    m_redo->setText(captions.text(Text::CommandRedo));
    m_history->setText(captions.text(Text::TitleHistory));
    m_listTree->setText(captions.text(Text::CommandListTree));
    m_refreshTree->setText(captions.text(Text::CommandRefresh));
    for (QAction *action : {m_undo, m_redo, m_history, m_listTree, m_refreshTree})
        action->setToolTip(tooltipOf(action->text(), action->shortcut()));
}

} // namespace ravlin
