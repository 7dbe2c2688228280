// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>

class QAction;

namespace ravlin {

class aviso;
class BatchPages;
class Busy;
class CommandBar;
class esperate;
class FileCommands;
class FileList;
class FolderTree;
class ListController;
class ModeTabs;
class Notices;
class OpenWindows;
class ProgramDialogs;
class SingleFilePage;
class SplitPanel;
class StatusPanels;
class Toolbar;
class WindowServices;
struct Program;
struct TagRecord;

/// The main window: folder tree and file list in a splitter, the toolbar above them, the working modes' pages below,
/// the status bar at the foot. Makes the parts, connects and places them; the parts do the work.
class principal : public QMainWindow
{
    Q_OBJECT

public:
    /// Restores what the settings hold, and shows the texts of the stored language. program outlives the window.
    explicit principal(Program &program);
    ~principal() override;

    /// On the very first run, when no tag-save mode was ever chosen, opens the options dialog to choose one. Returns
    /// once it is closed. Call it before the window is shown. Later runs offer what is left of earlier ones in the
    /// notice bar.
    void chooseAtFirstRun();
    /// Opens the folder that the command line names or, if it is empty and the user has chosen so, the last one. If
    /// that does not exist, opens none.
    void openAtStart(const QString &folderOfCommandLine);
    /// Puts the current language's texts on everything.
    void applyCaptions();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void createToolbar();
    void createPanes();
    void createPages();
    void createCommands();
    TagRecord lastTag() const;
    void connectParts();
    void setTabOrder();
    void restoreWindow();
    void chooseTagSaveMode();
    void applyOptions();
    void activateFile(int row);
    bool showFile(const QString &path);
    void saveByKey();
    bool leavesUndoToWindow(const QObject *watched, QEvent *event) const;
    void placeParts();
    void applyNames();
    QString droppedFolder(const QDropEvent *event) const;
    void openFolder(const QString &path);
    void showCurrentFile();
    void catchUpPage();
    void saveSettings();

    Program &m_program;
    OpenWindows *m_openWindows = nullptr;
    esperate *m_waitWindow = nullptr;
    Busy *m_busy = nullptr;
    QWidget *m_area = nullptr;
    Toolbar *m_toolbar = nullptr;
    QAction *m_options = nullptr;
    QAction *m_info = nullptr;
    SplitPanel *m_splitter = nullptr;
    FolderTree *m_tree = nullptr;
    FileList *m_list = nullptr;
    aviso *m_notice = nullptr;
    ModeTabs *m_tabs = nullptr;
    StatusPanels *m_statusPanels = nullptr;
    ListController *m_lister = nullptr;
    WindowServices *m_services = nullptr;
    SingleFilePage *m_singleFilePage = nullptr;
    BatchPages *m_batchPages = nullptr;
    ProgramDialogs *m_dialogs = nullptr;
    FileCommands *m_fileCommands = nullptr;
    CommandBar *m_commandBar = nullptr;
    Notices *m_notices = nullptr;
    QAction *m_save = nullptr;
    bool m_isStartFolderMissing = false;
    bool m_isPageBehind = false; ///< another row was clicked while the single-file page was hidden
};

} // namespace ravlin
