// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/clsfilefunc.h"
#include "core/files/operations/playlist.h"
#include "ui/files/operationdialogs.h"

#include <QObject>

#include <functional>

class QWidget;

namespace ravlin {

class Busy;
class FileList;
class FolderTree;
class ListController;
class StatusPanels;
struct Program;
struct TagRecord;

/// What the window's commands need of it.
struct FileCommandsContext
{
    Program &program;
    ListController &lister;
    FileList &list;
    FolderTree &tree;
    StatusPanels &status;
    Busy &busy;
    QWidget *window;
};

/// The commands that work on the selected files and on the current folder: copy, move, delete, playlists, and undo.
/// Asks what has to be asked, carries the command out by clsFileFunc, and lets tree and list show what has become of
/// the files. Each does nothing where there is nothing to act on.
class FileCommands : public QObject
{
    Q_OBJECT

public:
    /// Lets the user choose a folder, beginning in one; empty: cancelled.
    using FolderChooser = std::function<QString(const QString &title, const QString &start)>;
    /// The tag that was read last.
    using LastTag = std::function<TagRecord()>;

    FileCommands(const FileCommandsContext &context, QObject *parent);

    /// Where playlists take their name from; without it they have none to take it from.
    void setLastTag(LastTag lastTag) { m_lastTag = std::move(lastTag); }
    /// Who opens the play list; the system at first.
    void setOpener(Opener open) { m_open = std::move(open); }
    /// Who asks for a destination; a folder dialog at first.
    void setFolderChooser(FolderChooser choose) { m_chooseFolder = std::move(choose); }

    void moveFiles();
    void copyFiles();
    void deleteFiles();
    void moveFolder();
    void copyFolder();
    void deleteFolder();
    void writePlaylist();
    void playSelection();
    void deletePlaylists();
    void undo();

Q_SIGNALS:
    /// A command has ended: files may be others, and another operation the one to be undone.
    void ended();

private:
    using Transfer = int (clsFileFunc::*)(const QString &, const QString &, bool, int);

    QString selectedSources() const;
    QString folderSource() const;
    void transfer(Transfer operation, Caption caption, const std::function<QString()> &sources);
    QString askDestination(const QString &title);
    void remove(const QString &source);
    void showChanges(const QString &formerFolder = {});

    FileCommandsContext m_context;
    OperationDialogs m_dialogs;
    FileOperations m_operations;
    clsFileFunc m_files;
    LastTag m_lastTag;
    Opener m_open;
    FolderChooser m_chooseFolder;
};

} // namespace ravlin
