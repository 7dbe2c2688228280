// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/operations/clsfilefunc.h"
#include "core/files/operations/playlist.h"
#include "ui/app/program.h"
#include "ui/files/operationdialogs.h"

#include <QObject>

#include <functional>
#include <set>
#include <vector>

namespace ravlin {

struct RenameRow;

/// The commands for the selected files and the current folder: copy, move, delete, playlists, renaming the folder, and
/// undo. Asks the user, carries the command out (files by clsFileFunc) and makes tree and list show the result. Each
/// does nothing where there is nothing to act on.
class FileCommands : public QObject
{
    Q_OBJECT

public:
    /// Lets the user choose a folder, starting at one; returns an empty text if cancelled.
    using FolderChooser = std::function<QString(const QString &title, const QString &start)>;
    /// The tag that was read last.
    using LastTag = std::function<TagRecord()>;

    /// lastTag: names the playlists.
    FileCommands(const WindowParts &parts, LastTag lastTag);

    /// Opens the play list; the system at first.
    void setOpener(Opener open) { m_open = std::move(open); }
    /// Asks for a destination; a folder dialog at first.
    void setFolderChooser(FolderChooser choose) { m_chooseFolder = std::move(choose); }

    void moveFiles();
    void copyFiles();
    void deleteFiles();
    void moveFolder();
    void copyFolder();
    void deleteFolder();
    /// Opens the dialog that renames the current folder after the tag of its first file.
    void renameFolder();
    void writePlaylist();
    void playSelection();
    void deletePlaylists();
    /// Takes back the newest entry of the history.
    void undo();
    /// Takes back an entry of the history, or only these files of it; with what was done later to them. Asks first if
    /// later entries changed the same files and withLater does not say that they are to go, too.
    void undoEntry(qint64 entry, const std::set<qint64> &files = {}, bool withLater = false);
    /// Repeats what was taken back last.
    void redo();

Q_SIGNALS:
    /// A command has ended: files may have changed, and so may the operation that undo() takes back.
    void ended();
    /// An operation that may have changed files has ended.
    void recorded(const history::Summary &summary);
    /// The same of what was taken back.
    void takenBack(const history::Summary &summary);
    void repeated(const history::Summary &summary);

private:
    using Transfer = int (clsFileFunc::*)(const QString &, const QString &, bool, int);

    QString selectedSources() const;
    QString folderSource() const;
    bool isFolder(const QString &path) const;
    void transfer(Transfer operation, Caption caption, const std::function<QString()> &sources);
    QString askDestination(const QString &title);
    void remove(const QString &source);
    bool agreesToUndo(const std::vector<history::Entry> &later) const;
    void rename(const RenameRow &wanted, ClashAnswer answer);
    void takeBack(qint64 entry, UndoRequest request);
    void showChanges(const QString &otherFolder = {});
    void tellLeftOut(const QString &folder) const;

    WindowParts m_parts;
    OperationDialogs m_dialogs;
    bool m_isRepeating = false;
    FileOperations m_operations;
    clsFileFunc m_files;
    LastTag m_lastTag;
    Opener m_open;
    FolderChooser m_chooseFolder;
};

} // namespace ravlin
