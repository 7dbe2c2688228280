// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/app/principal.h"

#include "core/app/windowlayout.h"
#include "ui/app/batchpages.h"
#include "ui/app/commandbar.h"
#include "ui/app/filecommands.h"
#include "ui/app/foldercommand.h"
#include "ui/app/listcontroller.h"
#include "ui/app/lookupcommand.h"
#include "ui/app/modetabs.h"
#include "ui/app/openwindows.h"
#include "ui/app/program.h"
#include "ui/app/programdialogs.h"
#include "ui/app/statuspanels.h"
#include "ui/app/toolbar.h"
#include "ui/app/windowservices.h"
#include "ui/controls/busy.h"
#include "ui/controls/esperate.h"
#include "ui/controls/splitpanel.h"
#include "ui/files/filelist.h"
#include "ui/files/foldertree.h"
#include "ui/tags/singlefilepage.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
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

/// Keys of the window's own in the settings, beside those that all parts share.
constexpr QStringView GeometryKey = u"window geometry";
constexpr QStringView SplitterPositionKey = u"splitter Position";

constexpr int Margin = 6;
constexpr QSize StartSize(1000, 700);

/// Takes what is dropped without moving it: the program that it comes from keeps its files.
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
    setObjectName(QStringLiteral("principal"));
    setWindowTitle(QStringLiteral("ravlin!"));
    setMinimumWidth(windowlayout::MinimumWidth);
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
    ListView1->setFocus();
}

principal::~principal() = default;

void principal::createToolbar()
{
    tb = new Toolbar(this, m_area);
    tb->setObjectName(QStringLiteral("tb"));
    m_options =
        tb->addButton(16, {Caption::Options, QStringLiteral("settings"), QKeySequence(Qt::CTRL | Qt::Key_Comma)});
    m_info =
        tb->addEndButton(QStringLiteral("info"), {Caption::Info, QStringLiteral("info"), QKeySequence(Qt::Key_F1)});
}

void principal::createPanes()
{
    sp2 = new SplitPanel(m_area);
    sp2->setObjectName(QStringLiteral("sp2"));
    folder = new FolderTree(sp2);
    folder->setObjectName(QStringLiteral("folder"));
    ListView1 = new FileList(sp2);
    ListView1->setObjectName(QStringLiteral("ListView1"));
    sp2->setFirstPanel(folder);
    sp2->setSecondPanel(ListView1);
    sp2->setPosition(windowlayout::SplitterStart);
    sbStatusBar = new StatusPanels(this);
    setStatusBar(sbStatusBar);
    m_lister = new ListController(m_program, *ListView1, *sbStatusBar, *m_busy, this);
}

void principal::createPages()
{
    m_services = new WindowServices(m_program.state, *ListView1, *m_lister, *m_busy, this);
    tabs = new ModeTabs(m_area);
    tabs->setObjectName(QStringLiteral("tabs"));
    m_singleFilePage = new SingleFilePage(m_program.pageContext(*m_services), tabs);
    tabs->addPage(m_singleFilePage, Caption::SingleFileTab, Caption::SingleFileTip,
        [this] { m_singleFilePage->applyCaptions(); });
    m_batchPages = new BatchPages(m_program, *m_services, *tabs, *ListView1, this);
    m_area->installEventFilter(this);
    for (QLineEdit *edit : tabs->findChildren<QLineEdit *>())
        edit->installEventFilter(this);
}

void principal::createCommands()
{
    m_dialogs = new ProgramDialogs(m_program, this);
    m_fileCommands = new FileCommands({m_program, *m_lister, *ListView1, *folder, *sbStatusBar, *m_busy, this}, this);
    m_fileCommands->setLastTag([this] { return lastTag(); });
    auto *folderCommand = new FolderCommand(m_program, *m_services, *folder, *ListView1, this);
    auto *lookup = new LookupCommand(m_program, *m_services, *ListView1, this);
    m_commandBar = new CommandBar(
        {m_program, *tb, *ListView1, *folder, *m_lister, this}, *m_fileCommands, *folderCommand, *lookup);
    m_commandBar->addToListMenu(m_options);
    connect(m_commandBar, &CommandBar::patternsEdited, m_batchPages, &BatchPages::refreshPatterns);
    connect(m_batchPages, &BatchPages::finished, m_fileCommands, &FileCommands::ended);
}

/// The tag that was read last: of the file on the page or, when none was shown since the listing, of the last one
/// listed.
TagRecord principal::lastTag() const
{
    if (m_singleFilePage->isShowingFile())
        return m_singleFilePage->shownRecord();
    TagRecord record;
    std::ignore = m_program.tagStore.ReadTag(m_lister->pathOfRow(ListView1->rowCount() - 1), record);
    return record;
}

void principal::connectParts()
{
    connect(folder, &FolderTree::pathChanged, m_lister, &ListController::openFolder);
    connect(folder, &FolderTree::listTreeRequested, m_lister, &ListController::ListFolderTree);
    connect(m_lister, &ListController::listed, m_singleFilePage, &SingleFilePage::reset);
    connect(m_lister, &ListController::listed, this, [this] { m_isPageBehind = false; });
    connect(tabs, &QTabWidget::currentChanged, this, &principal::catchUpPage);
    connect(ListView1, &FileList::itemSelected, this, &principal::showCurrentFile);
    connect(ListView1->selectionModel(), &QItemSelectionModel::selectionChanged, m_singleFilePage,
        &SingleFilePage::selectionChanged);
    connect(m_batchPages, &BatchPages::finished, this, &principal::showCurrentFile);
    connect(ListView1, &FileList::rightClicked, this, [this] { tabs->setCurrentIndex(0); });
    connect(ListView1, &FileList::fileActivated, this, &principal::activateFile);
    connect(m_options, &QAction::triggered, m_dialogs, &ProgramDialogs::openOptions);
    connect(m_info, &QAction::triggered, m_dialogs, &ProgramDialogs::openAbout);
    connect(m_dialogs, &ProgramDialogs::optionsClosed, this, &principal::applyOptions);
}

/// As the eye goes, from the toolbar down to the pages.
void principal::setTabOrder()
{
    auto *bar = sp2->findChild<QWidget *>(QStringLiteral("pbSplit"));
    const std::vector<QToolButton *> buttons = tb->buttons();
    for (size_t next = 1; next < buttons.size(); ++next)
        QWidget::setTabOrder(buttons[next - 1], buttons[next]);
    QWidget::setTabOrder(buttons.back(), folder);
    QWidget::setTabOrder(folder, bar);
    QWidget::setTabOrder(bar, ListView1);
    QWidget::setTabOrder(ListView1, tabs->tabBar());
}

void principal::chooseTagSaveMode()
{
    const std::optional<int> mode = tagSaveModeFromText(m_program.settings.read(settingskey::Tags));
    m_program.state.tagSaveMode = mode.value_or(DefaultTagSaveMode);
}

/// What the options dialog may have changed.
void principal::applyOptions()
{
    ListView1->setHiddenColumns(hiddenColumnsFromText(m_program.state.options.hiddenColumns));
    applyCaptions();
}

void principal::chooseAtFirstRun()
{
    m_dialogs->chooseAtFirstRun();
}

/// What a double click does.
void principal::activateFile(int row)
{
    if (m_program.state.options.doubleClick == DoubleClick::Open) {
        QDesktopServices::openUrl(QUrl::fromLocalFile(m_lister->pathOfRow(row)));
        return;
    }
    tabs->setCurrentWidget(m_singleFilePage);
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
        sp2->setPosition(twips);
}

void principal::openAtStart(const QString &folderOfCommandLine)
{
    QString path = folderOfCommandLine;
    if (path.isEmpty() && m_program.settings.read(settingskey::Recuerda) == QStringLiteral("si"))
        path = m_program.settings.read(settingskey::Ruta);
    if (!path.isEmpty())
        openFolder(path);
}

void principal::openFolder(const QString &path)
{
    folder->setPath(path);
}

void principal::showCurrentFile()
{
    m_lister->showCurrentRow();
    m_isPageBehind = tabs->currentWidget() != m_singleFilePage;
    if (!m_isPageBehind)
        m_singleFilePage->ShowCurrent();
}

/// The page must not offer to save one file's tag into another that was chosen while it was out of sight.
void principal::catchUpPage()
{
    if (tabs->currentWidget() == m_singleFilePage && std::exchange(m_isPageBehind, false))
        m_singleFilePage->ShowCurrent();
}

void principal::applyCaptions()
{
    const Captions &captions = m_program.captions;
    for (size_t column = 0; column < ColumnCaptions.size(); ++column)
        ListView1->setHeaderText(static_cast<ListColumn>(column), captions.text(ColumnCaptions[column]));
    tb->applyCaptions(captions);
    m_commandBar->applyCaptions();
    tabs->applyCaptions(captions);
    m_waitWindow->setWindowTitle(captions.text(Text::TitleWaiting));
    m_waitWindow->setStopText(captions.text(Caption::Cancel));
    m_lister->showCurrentRow();
    applyNames();
}

/// What assistive tools call the parts that bear no text.
void principal::applyNames()
{
    const Captions &captions = m_program.captions;
    folder->setAccessibleName(captions.text(Text::NameFolders));
    sp2->setBarAccessibleName(captions.text(Text::NameSplitter));
    ListView1->setAccessibleName(captions.text(Caption::FileList));
    sbStatusBar->setAccessibleName(captions.text(Text::NameStatusBar));
}

/// The parts' places: the toolbar on top, the pages at the foot with the height that they need, the panes between them.
void principal::placeParts()
{
    const int width = m_area->width();
    const int panes = windowlayout::panesWidth(width);
    const int left = (width - panes) / 2;
    const int toolbarHeight = tb->sizeHint().height();
    tb->setGeometry(left, 0, panes, toolbarHeight);
    const int tabsWidth = windowlayout::tabsWidth(width);
    const int tabsHeight = std::min(tabs->sizeHint().height(), (m_area->height() - toolbarHeight) / 2);
    const int tabsTop = m_area->height() - tabsHeight - Margin;
    tabs->setGeometry((width - tabsWidth) / 2, tabsTop, tabsWidth, tabsHeight);
    sp2->setGeometry(left, toolbarHeight, panes, std::max(0, tabsTop - toolbarHeight - Margin));
}

bool principal::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_area && (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest))
        placeParts();
    // A text box would take a dropped file's address as text; passed over, the window gets it.
    if (event->type() == QEvent::DragEnter && watched != m_area) {
        auto *drag = static_cast<QDragEnterEvent *>(event);
        if (drag->mimeData()->hasUrls()) {
            drag->ignore();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

/// The folder that was dropped, or that the dropped file is in; empty for anything else.
QString principal::droppedFolder(const QDropEvent *event) const
{
    const QString path = event->mimeData()->urls().value(0).toLocalFile();
    if (path.isEmpty())
        return {};
    const QFileInfo dropped(path);
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
    // The drag's source waits for the end of this event, the folder is read afterwards.
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
    settings.write(settingskey::Ruta, m_program.state.currentFolder);
    m_batchPages->storeChoices();
    m_program.choices.store(settings);
    settings.write(GeometryKey, QString::fromLatin1(saveGeometry().toBase64()));
    settings.write(SplitterPositionKey, QString::number(sp2->position()));
    // Nobody is left to be told when the settings can't be saved; the file is then as it was.
    std::ignore = settings.save();
}

} // namespace ravlin
