// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/principal.h"

#include "core/files/list/linknote.h"
#include "core/platform/desktop.h"
#include "core/platform/path.h"
#include "ui/app/aviso.h"
#include "ui/app/batchpages.h"
#include "ui/app/commandbar.h"
#include "ui/app/filecommands.h"
#include "ui/app/listcontroller.h"
#include "ui/app/modetabs.h"
#include "ui/app/notices.h"
#include "ui/app/openwindows.h"
#include "ui/app/program.h"
#include "ui/app/programdialogs.h"
#include "ui/app/statuspanels.h"
#include "ui/app/toolbar.h"
#include "ui/app/windowservices.h"
#include "ui/controls/busy.h"
#include "ui/controls/esperate.h"
#include "ui/controls/pagearea.h"
#include "ui/controls/plain/tooltips.h"
#include "ui/controls/splitpanel.h"
#include "ui/files/filelist.h"
#include "ui/files/foldertree.h"
#include "ui/tags/singlefilepage.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QScreen>
#include <QTabBar>
#include <QTimer>
#include <QToolButton>
#include <QUrl>

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>
#include <vector>

namespace ravlin {

namespace {

/// The window's own keys in the settings.
constexpr QStringView GeometryKey = u"window geometry";
constexpr QStringView SplitterPositionKey = u"splitter Position";

constexpr int SmallestWidth = 6000 / TwipsPerPixel;
constexpr int PanesMargins = 200 / TwipsPerPixel; ///< both sides of the toolbar and the panes
constexpr int TabsMargins = 800 / TwipsPerPixel;
constexpr int SplitterStart = 3800; ///< twips: the bar's centre from the left at the first start
constexpr int Margin = 6;
constexpr QSize StartSize(1000, 700);

/// Accepts a drop without moving files: the program that they come from keeps them.
void acceptWithoutMoving(QDropEvent *event)
{
    if (event->possibleActions() & Qt::CopyAction)
        event->setDropAction(Qt::CopyAction);
    else if (event->possibleActions() & Qt::LinkAction)
        event->setDropAction(Qt::LinkAction);
    else
        return;
    event->accept();
}

} // namespace

principal::principal(Program &program)
    : m_program(program), m_openWindows(new OpenWindows(this)), m_waitWindow(new esperate(this)),
      m_busy(new Busy(*m_waitWindow, this, this)), m_area(new QWidget(this))
{
    new ToolTips(this);
    setObjectName(QStringLiteral("principal"));
    setWindowTitle(QStringLiteral("ravlin!"));
    setMinimumWidth(SmallestWidth);
    setAcceptDrops(true);
    setCentralWidget(m_area);
    createToolbar();
    createPanes();
    createPages();
    createCommands();
    connectParts();
    setTabOrder();

    m_program.choices = SessionChoices::restored(m_program.settings);
    m_batchPages->showChoices();
    chooseTagSaveMode();
    m_program.captions.chooseAtStart(m_program.settings);
    m_program.qtTexts.speak(m_program.captions.languageName());
    m_program.state.options = FurtherOptions::restored(m_program.settings);
    applyOptions();
    restoreWindow();
    m_list->setFocus();
}

principal::~principal() = default;

void principal::createToolbar()
{
    m_toolbar = new Toolbar(this, m_area);
    m_toolbar->setObjectName(QStringLiteral("tb"));
    m_options = m_toolbar->addButton(
        16, {Caption::Options, QStringLiteral("settings"), QKeySequence(Qt::CTRL | Qt::Key_Comma)});
    m_info = m_toolbar->addEndButton(
        QStringLiteral("info"), {Caption::Info, QStringLiteral("info"), QKeySequence(Qt::Key_F1)});
}

void principal::createPanes()
{
    m_splitter = new SplitPanel(m_area);
    m_splitter->setObjectName(QStringLiteral("sp2"));
    m_tree = new FolderTree(m_splitter);
    m_tree->setObjectName(QStringLiteral("folder"));
    m_list = new FileList(m_splitter);
    m_list->setObjectName(QStringLiteral("ListView1"));
    m_list->setRowNote([this](const QString &rowText) {
        return linkNote(m_program.captions, m_program.fileSystem, m_program.state.currentFolder, rowText);
    });
    m_splitter->setFirstPanel(m_tree);
    m_splitter->setSecondPanel(m_list);
    m_splitter->setPosition(SplitterStart);
    m_statusPanels = new StatusPanels(this);
    setStatusBar(m_statusPanels);
    m_lister = new ListController(m_program, *m_list, *m_statusPanels, *m_busy, this);
}

void principal::createPages()
{
    m_services = new WindowServices(m_program.state, *m_list, *m_lister, *m_busy, m_program.history, this);
    m_notice = new aviso(m_program.captions, m_area);
    m_notice->installEventFilter(this);
    m_tabs = new ModeTabs(m_area);
    m_tabs->setObjectName(QStringLiteral("tabs"));
    m_singleFilePage = new SingleFilePage(m_program.pageContext(*m_services), m_tabs);
    m_tabs->addPage(m_singleFilePage, Caption::SingleFileTab, Caption::SingleFileTip,
        [this] { m_singleFilePage->applyCaptions(); });
    m_batchPages = new BatchPages(m_program, *m_services, *m_tabs, *m_list, this);
    m_area->installEventFilter(this);
    for (QLineEdit *edit : m_tabs->findChildren<QLineEdit *>())
        edit->installEventFilter(this);
}

void principal::createCommands()
{
    const WindowParts parts{
        m_program, this, *m_toolbar, *m_tree, *m_list, *m_statusPanels, *m_busy, *m_lister, *m_services};
    m_dialogs = new ProgramDialogs(parts);
    m_fileCommands = new FileCommands(parts, [this] { return lastTag(); });
    m_commandBar = new CommandBar(parts, *m_fileCommands, *m_dialogs);
    m_commandBar->addToListMenu(m_options);
    m_notices = new Notices(
        parts, *m_notice, *m_singleFilePage, *m_dialogs, [this](const QString &path) { return showFile(path); });
    m_save = new QAction(this);
    m_save->setObjectName(QStringLiteral("save"));
    m_save->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_S));
    addAction(m_save);
    connect(m_save, &QAction::triggered, this, &principal::saveByKey);
    connect(m_dialogs, &ProgramDialogs::patternsEdited, m_batchPages, &BatchPages::refreshPatterns);
    connect(m_batchPages, &BatchPages::finished, m_fileCommands, &FileCommands::ended);
    connect(m_fileCommands, &FileCommands::ended, m_dialogs, &ProgramDialogs::refreshHistory);
}

/// The tag that was read last: that of the file on the page or, if the page has shown none since the listing, that of
/// the last listed file.
TagRecord principal::lastTag() const
{
    if (m_singleFilePage->isShowingFile())
        return m_singleFilePage->shownRecord();
    TagRecord record;
    std::ignore = m_program.tagStore.ReadTag(m_lister->pathOfRow(m_list->rowCount() - 1), record);
    return record;
}

void principal::connectParts()
{
    connect(m_tree, &FolderTree::pathChanged, m_lister, &ListController::openFolder);
    connect(m_tree, &FolderTree::refreshed, m_lister, &ListController::completeListing);
    connect(m_tree, &FolderTree::listTreeRequested, m_lister, &ListController::ListFolderTree);
    connect(m_lister, &ListController::listed, m_singleFilePage, &SingleFilePage::reset);
    connect(m_lister, &ListController::listed, this, [this] { m_isPageBehind = false; });
    connect(m_tabs, &QTabWidget::currentChanged, this, &principal::catchUpPage);
    connect(m_list, &FileList::itemSelected, this, &principal::showCurrentFile);
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, m_singleFilePage,
        &SingleFilePage::selectionChanged);
    connect(m_batchPages, &BatchPages::finished, this, &principal::showCurrentFile);
    connect(m_list, &FileList::rightClicked, this, [this] { m_tabs->setCurrentIndex(0); });
    connect(m_list, &FileList::fileActivated, this, &principal::activateFile);
    connect(m_services, &WindowServices::recorded, m_notice,
        [this](const history::Summary &summary) { m_notice->showSummary(summary); });
    connect(m_fileCommands, &FileCommands::recorded, m_notice,
        [this](const history::Summary &summary) { m_notice->showSummary(summary); });
    connect(m_fileCommands, &FileCommands::takenBack, m_notice,
        [this](const history::Summary &summary) { m_notice->showSummary(summary, SummaryOf::Undo); });
    connect(m_fileCommands, &FileCommands::takenBack, m_dialogs, &ProgramDialogs::tellTakenBack);
    connect(m_fileCommands, &FileCommands::repeated, m_notice,
        [this](const history::Summary &summary) { m_notice->showSummary(summary, SummaryOf::Redo); });
    connect(m_dialogs, &ProgramDialogs::undoRequested, m_fileCommands, &FileCommands::undoEntry);
    connect(
        m_notice, &aviso::undoRequested, m_fileCommands, [this](qint64 entry) { m_fileCommands->undoEntry(entry); });
    connect(m_options, &QAction::triggered, m_dialogs, &ProgramDialogs::openOptions);
    connect(m_info, &QAction::triggered, m_dialogs, &ProgramDialogs::openAbout);
    connect(m_dialogs, &ProgramDialogs::optionsClosed, this, &principal::applyOptions);
}

/// From the toolbar down to the pages.
void principal::setTabOrder()
{
    auto *bar = m_splitter->findChild<QWidget *>(QStringLiteral("pbSplit"));
    const std::vector<QToolButton *> buttons = m_toolbar->buttons();
    for (size_t next = 1; next < buttons.size(); ++next)
        QWidget::setTabOrder(buttons[next - 1], buttons[next]);
    QWidget::setTabOrder(buttons.back(), m_tree);
    QWidget::setTabOrder(m_tree, bar);
    QWidget::setTabOrder(bar, m_list);
    QWidget::setTabOrder(m_list, m_notice);
    QWidget::setTabOrder(m_notice, m_tabs->tabBar());
}

void principal::chooseTagSaveMode()
{
    const std::optional<int> mode = tagSaveModeFromText(m_program.settings.read(settingskey::Tags));
    m_program.state.tagSaveMode = mode.value_or(DefaultTagSaveMode);
}

/// Applies what the options dialog may have changed.
void principal::applyOptions()
{
    const FurtherOptions &options = m_program.state.options;
    m_list->setHiddenColumns(hiddenColumnsFromText(options.hiddenColumns));
    m_program.history.setLimits(options.historyDays, options.historyMegabytes);
    applyCaptions();
}

void principal::chooseAtFirstRun()
{
    m_dialogs->chooseAtFirstRun();
    m_notices->offerAtStart();
}

/// The file's folder is opened if the list shows another one.
bool principal::showFile(const QString &path)
{
    const auto findRow = [&] {
        const QString &folder = m_program.state.currentFolder;
        return !folder.isEmpty() && path.startsWith(folder) ? m_list->rowOf(path.mid(folder.size())) : -1;
    };
    if (findRow() < 0)
        m_tree->setPath(platform::folderOf(path));
    const int row = findRow();
    if (row < 0)
        return false;
    m_tabs->setCurrentWidget(m_singleFilePage);
    m_list->setCurrentRow(row, FileList::Selection::ThisRowOnly);
    showCurrentFile();
    return true;
}

void principal::saveByKey()
{
    const auto *page = qobject_cast<PageArea *>(m_tabs->currentWidget());
    if (QAbstractButton *button = page == nullptr ? nullptr : page->saveButton())
        button->click();
}

/// Does what a double click is set to do.
void principal::activateFile(int row)
{
    if (m_program.state.options.doubleClick == DoubleClick::Open) {
        QDesktopServices::openUrl(platform::addressOf(m_lister->pathOfRow(row)));
        return;
    }
    m_tabs->setCurrentWidget(m_singleFilePage);
    m_singleFilePage->startEditing();
}

void principal::restoreWindow()
{
    const QByteArray geometry = QByteArray::fromBase64(m_program.settings.read(GeometryKey).toLatin1());
    if (!restoreGeometry(geometry))
        resize(StartSize.boundedTo(screen()->availableSize()));
    const QString position = m_program.settings.read(SplitterPositionKey);
    bool isNumber = false;
    if (const int twips = position.toInt(&isNumber); isNumber)
        m_splitter->setPosition(twips);
}

void principal::openAtStart(const QString &folderOfCommandLine)
{
    // What an interrupted run has left is finished before anything is read.
    m_notice->showRecovery(m_program.history.recover());
    QString path = folderOfCommandLine;
    if (path.isEmpty() && m_program.settings.read(settingskey::Recuerda) == QStringLiteral("si"))
        path = m_program.settings.read(settingskey::Ruta);
    m_isStartFolderMissing = !path.isEmpty() && !m_tree->setPath(path);
}

void principal::openFolder(const QString &path)
{
    m_tree->setPath(path);
}

void principal::showCurrentFile()
{
    m_lister->showCurrentRow();
    m_isPageBehind = m_tabs->currentWidget() != m_singleFilePage;
    if (!m_isPageBehind)
        m_singleFilePage->ShowCurrent();
}

/// Makes the page follow the current row once it is visible again. Otherwise it would offer to save one file's tag into
/// another.
void principal::catchUpPage()
{
    if (m_tabs->currentWidget() == m_singleFilePage && std::exchange(m_isPageBehind, false))
        m_singleFilePage->ShowCurrent();
}

void principal::applyCaptions()
{
    const Captions &captions = m_program.captions;
    m_list->setSortLocale(captions.locale());
    for (size_t column = 0; column < ColumnCaptions.size(); ++column)
        m_list->setHeaderText(static_cast<ListColumn>(column), captions.text(ColumnCaptions[column]));
    m_list->setTooLargeText(captions.text(Text::TagTooLarge));
    m_toolbar->applyCaptions(captions);
    m_commandBar->applyCaptions();
    m_notice->applyCaptions();
    m_save->setText(captions.text(Text::CommandSave));
    m_tabs->applyCaptions(captions);
    m_waitWindow->setWindowTitle(captions.text(Text::TitleWaiting));
    m_waitWindow->setStopText(captions.text(Text::StopWork));
    m_lister->showCurrentRow();
    applyNames();
}

/// Names the parts without a text for assistive tools.
void principal::applyNames()
{
    const Captions &captions = m_program.captions;
    m_tree->setAccessibleName(captions.text(Text::NameFolders));
    m_splitter->setBarAccessibleName(captions.text(Text::NameSplitter));
    m_list->setAccessibleName(captions.text(Caption::FileList));
    m_statusPanels->setAccessibleName(captions.text(Text::NameStatusBar));
}

/// Places the toolbar on top, the pages at the foot with the height that they need, the panes between them. The notice
/// takes its height from the panes.
void principal::placeParts()
{
    const int width = m_area->width();
    const int panes = width - PanesMargins;
    const int left = (width - panes) / 2;
    const int toolbarHeight = m_toolbar->sizeHint().height();
    m_toolbar->setGeometry(left, 0, panes, toolbarHeight);
    const int tabsWidth = width - TabsMargins;
    const int tabsHeight = std::min(m_tabs->heightForWidth(tabsWidth), (m_area->height() - toolbarHeight) / 2);
    const int tabsTop = m_area->height() - tabsHeight - Margin;
    m_tabs->setGeometry((width - tabsWidth) / 2, tabsTop, tabsWidth, tabsHeight);
    int panesEnd = tabsTop - Margin;
    if (!m_notice->isHidden()) {
        const int noticeHeight = std::min(m_notice->sizeHint().height(), std::max(0, panesEnd - toolbarHeight));
        m_notice->setGeometry(left, panesEnd - noticeHeight, panes, noticeHeight);
        panesEnd -= noticeHeight + Margin;
    }
    m_splitter->setGeometry(left, toolbarHeight, panes, std::max(0, panesEnd - toolbarHeight));
}

bool principal::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_area && (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest))
        placeParts();
    if (watched == m_notice && (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent))
        placeParts();
    if (leavesUndoToWindow(watched, event)) {
        event->ignore();
        return true;
    }
    // A text box would take a dropped file's address as text. Ignored there, the drop reaches the window.
    if (event->type() == QEvent::DragEnter && watched != m_area && watched != m_notice) {
        auto *drag = static_cast<QDragEnterEvent *>(event);
        if (drag->mimeData()->hasUrls()) {
            drag->ignore();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

/// A text box claims the keys of undo and redo even if it has nothing to take back.
bool principal::leavesUndoToWindow(const QObject *watched, QEvent *event) const
{
    const auto *edit = qobject_cast<const QLineEdit *>(watched);
    if (edit == nullptr || event->type() != QEvent::ShortcutOverride)
        return false;
    const auto *key = static_cast<QKeyEvent *>(event);
    return (key->matches(QKeySequence::Undo) && !edit->isUndoAvailable()) ||
           (key->matches(QKeySequence::Redo) && !edit->isRedoAvailable());
}

/// The dropped folder, or the folder of the dropped file; empty for anything else.
QString principal::droppedFolder(const QDropEvent *event) const
{
    const DroppedAddress address = droppedAddress(event->mimeData()->urls().value(0));
    if (!address.otherComputer.isEmpty())
        m_statusPanels->showPassing(m_program.captions.text(Text::DropFromNetwork).arg(address.otherComputer.left(64)));
    if (address.path.isEmpty())
        return {};
    const QFileInfo dropped(address.path);
    return QDir::toNativeSeparators(dropped.isDir() ? dropped.absoluteFilePath() : dropped.absolutePath());
}

void principal::dragEnterEvent(QDragEnterEvent *event)
{
    if (!droppedFolder(event).isEmpty())
        acceptWithoutMoving(event);
}

void principal::dragMoveEvent(QDragMoveEvent *event)
{
    acceptWithoutMoving(event);
}

void principal::dropEvent(QDropEvent *event)
{
    const QString path = droppedFolder(event);
    if (path.isEmpty())
        return;
    acceptWithoutMoving(event);
    // The drag's source waits until this event ends, so read the folder afterwards.
    QTimer::singleShot(0, this, [this, path] { openFolder(path); });
}

void principal::closeEvent(QCloseEvent *event)
{
    saveSettings();
    m_openWindows->closeAllBut(this);
    event->accept();
}

void principal::saveSettings()
{
    Settings &settings = m_program.settings;
    const QString &folder = m_program.state.currentFolder;
    // The remembered folder may be on a drive that is not there today.
    if (!folder.isEmpty() || !m_isStartFolderMissing)
        settings.write(settingskey::Ruta, folder);
    m_batchPages->storeChoices();
    m_program.choices.store(settings);
    m_notices->store();
    settings.write(GeometryKey, QString::fromLatin1(saveGeometry().toBase64()));
    settings.write(SplitterPositionKey, QString::number(m_splitter->position()));
    // Nobody is left to see an error. If saving fails, the file stays as it was.
    std::ignore = settings.save();
}

} // namespace ravlin
