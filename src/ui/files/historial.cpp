// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/historial.h"

#include "core/app/historytexts.h"
#include "core/app/idiomas.h"
#include "core/app/showntext.h"
#include "ui/controls/evenrows.h"
#include "ui/controls/making.h"
#include "ui/controls/plain/messagebox.h"
#include "ui/controls/plain/plainlabel.h"
#include "ui/files/changemodel.h"
#include "ui/files/entrymodel.h"

#include <QComboBox>
#include <QDir>
#include <QEvent>
#include <QGridLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace std::chrono_literals;

namespace ravlin {

namespace {

constexpr QSize StartSize(900, 620);
constexpr std::chrono::milliseconds TypingPause = 300ms;
constexpr int MostFoldersOffered = 100;
constexpr int MostFilesExpanded = 100; ///< beyond it the user expands the files that matter
constexpr int MostLaterNamed = 8;

bool isSame(const history::Entry &one, const history::Entry &other)
{
    return one.id == other.id && one.fileCount == other.fileCount && one.undoneCount == other.undoneCount;
}

/// widths: of the columns but the last, in average letters.
void arrange(QTreeView *list, const std::vector<int> &widths)
{
    list->setItemDelegate(new EvenRows(list));
    list->setUniformRowHeights(true);
    list->setAlternatingRowColors(true);
    list->setAllColumnsShowFocus(true);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    list->setMinimumHeight(3 * list->fontMetrics().height());
    list->header()->setSectionsMovable(false);
    list->header()->setHighlightSections(false);
    list->header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    for (std::size_t i = 0; i < widths.size(); ++i)
        list->header()->resizeSection(static_cast<int>(i), widths[i] * list->fontMetrics().averageCharWidth());
}

} // namespace

historial::historial(const Captions &captions, platform::FileSystem &fileSystem, const QString &path, QWidget *parent)
    : QDialog(parent), m_captions(captions), m_reader(fileSystem, path), m_entryModel(new EntryModel(captions, this)),
      m_changeModel(new ChangeModel(captions, this)), m_typing(new QTimer(this))
{
    setObjectName(QStringLiteral("historial"));
    setSizeGripEnabled(true);
    createControls();
    createLayout();
    applyCaptions();
    connectControls();
    resize(StartSize.boundedTo(screen()->availableSize() * 9 / 10));
    m_entries->setFocus();
    readEntries();
}

historial::~historial() = default;

void historial::createControls()
{
    m_textLabel = made<PlainLabel>("ltexto", this);
    m_text = made<QLineEdit>("texto", this);
    m_text->setClearButtonEnabled(true);
    m_folderLabel = made<PlainLabel>("lcarpeta", this);
    m_folder = made<QComboBox>("carpeta", this);
    m_folder->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_folder->setMinimumContentsLength(10);
    guardAgainstWheel(m_folder);
    m_entries = made<QTreeView>("entries", this);
    m_entries->setModel(m_entryModel);
    arrange(m_entries, {26, 32, 20});
    m_files = made<QTreeView>("changes", this);
    m_files->setModel(m_changeModel);
    m_files->setSelectionMode(QAbstractItemView::ExtendedSelection);
    arrange(m_files, {40, 26, 26});
    m_state = made<PlainLabel>("state", this);
    m_state->setWordWrap(true);
    m_undo = made<QPushButton>("deshacer", this);
    m_undoChosen = made<QPushButton>("deshacerArchivos", this);
    m_close = made<QPushButton>("close", this);
    for (QPushButton *button : {m_undo, m_undoChosen, m_close})
        button->setAutoDefault(false); // Enter in the box of the text looks for it
    m_textLabel->setBuddy(m_text);
    m_folderLabel->setBuddy(m_folder);
    m_typing->setSingleShot(true);
    m_typing->setInterval(TypingPause);
}

void historial::createLayout()
{
    auto *filters = new QHBoxLayout;
    filters->addWidget(m_textLabel);
    filters->addWidget(m_text, 1);
    filters->addWidget(m_folderLabel);
    filters->addWidget(m_folder, 1);
    auto *foot = new QHBoxLayout;
    foot->addWidget(m_undo);
    foot->addWidget(m_undoChosen);
    foot->addStretch();
    foot->addWidget(m_close);
    auto *rows = new QVBoxLayout(this);
    rows->addLayout(filters);
    rows->addWidget(m_entries, 2);
    rows->addWidget(m_files, 3);
    rows->addWidget(m_state);
    rows->addLayout(foot);
    tabThrough({m_text, m_folder, m_entries, m_files, m_undo, m_undoChosen, m_close});
}

void historial::connectControls()
{
    connect(m_text, &QLineEdit::textChanged, m_typing, qOverload<>(&QTimer::start));
    connect(m_text, &QLineEdit::returnPressed, this, &historial::readEntries);
    connect(m_typing, &QTimer::timeout, this, &historial::readEntries);
    connect(m_folder, &QComboBox::activated, this, &historial::readEntries);
    connect(m_entries->selectionModel(), &QItemSelectionModel::currentChanged, this, &historial::showFiles);
    connect(m_files->selectionModel(), &QItemSelectionModel::selectionChanged, this, &historial::updateButtons);
    connect(m_undo, &QPushButton::clicked, this, [this] { undo({}); });
    connect(m_undoChosen, &QPushButton::clicked, this, [this] { undo(chosenFiles()); });
    connect(m_close, &QPushButton::clicked, this, &historial::close);
}

void historial::applyCaptions()
{
    setWindowTitle(m_captions.text(Text::TitleHistory));
    m_textLabel->setText(m_captions.text(Text::LabelHistoryText));
    m_folderLabel->setText(m_captions.text(Text::LabelHistoryFolder));
    for (const PlainLabel *label : {m_textLabel, m_folderLabel})
        label->buddy()->setAccessibleName(label->text().remove(u'&'));
    m_text->setToolTip(m_captions.text(Text::TipHistoryText));
    m_folder->setToolTip(m_captions.text(Text::TipHistoryFolder));
    m_entries->setAccessibleName(m_captions.text(Text::TitleHistory));
    m_files->setAccessibleName(m_captions.text(Text::NameHistoryFiles));
    m_undo->setText(m_captions.text(Text::UndoWhole));
    m_undo->setToolTip(m_captions.text(Text::TipUndoWhole));
    m_undoChosen->setText(m_captions.text(Text::UndoChosen));
    m_undoChosen->setToolTip(m_captions.text(Text::TipUndoChosen));
    m_close->setText(m_captions.text(Text::CloseWindow));
    for (QPushButton *button : {m_undo, m_undoChosen, m_close})
        makeRoomy(button);
    if (m_folder->count() > 0)
        m_folder->setItemText(0, m_captions.text(Text::ItemAllFolders));
    if (!m_entryModel->entries().empty())
        showEntries(m_entryModel->entries());
}

void historial::changeEvent(QEvent *event)
{
    QDialog::changeEvent(event);
    // The user comes back from another window, which may have changed something.
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && m_close != nullptr)
        refresh();
}

// Entries

void historial::refresh()
{
    if (!m_typing->isActive()) // else it will be read soon
        readEntries();
}

void historial::readEntries()
{
    m_typing->stop();
    const QString folder = m_folder->currentIndex() > 0 ? m_folder->currentData().toString() : QString();
    if (m_entryModel->entries().empty())
        m_state->setText(m_captions.text(Text::HistoryLoading));
    m_reader.readEntries(
        {.folder = folder, .text = m_text->text().trimmed()}, [this](Result<std::vector<history::Entry>> entries) {
            if (!entries || !std::ranges::equal(*entries, m_entryModel->entries(), isSame) || entries->empty())
                showEntries(std::move(entries));
        });
}

void historial::showEntries(Result<std::vector<history::Entry>> entries)
{
    const history::Entry *current = m_entryModel->entryAt(m_entries->currentIndex());
    const qint64 currentId = current != nullptr ? current->id : 0;
    m_isFilling = true;
    m_entryModel->setEntries(entries.value_or(std::vector<history::Entry>()), QDateTime::currentDateTime());
    m_entries->expandAll();
    for (int group = 0; group < m_entryModel->rowCount(); ++group)
        m_entries->setFirstColumnSpanned(group, {}, true);
    QModelIndex index = m_entryModel->indexOf(currentId);
    if (!index.isValid())
        index = m_entryModel->index(0, 0, m_entryModel->index(0, 0));
    if (index.isValid())
        m_entries->setCurrentIndex(index);
    m_isFilling = false;
    const bool isFiltered = !m_text->text().isEmpty() || m_folder->currentIndex() > 0;
    if (!entries)
        m_state->setText(m_captions.text(Text::HistoryUnreadable).arg(m_captions.errorText(entries.error().code)));
    else
        m_state->setText(
            !entries->empty() ? m_outcome : m_captions.text(isFiltered ? Text::HistoryNoMatch : Text::HistoryEmpty));
    if (!isFiltered)
        fillFolders();
    m_shownEntry = 0;
    showFiles();
}

/// Offers the folders of the entries, the one changed last first.
void historial::fillFolders()
{
    QStringList folders;
    for (const history::Entry &entry : m_entryModel->entries()) {
        if (folders.size() == MostFoldersOffered)
            break;
        if (!entry.folder.isEmpty() && !folders.contains(entry.folder))
            folders << entry.folder;
    }
    m_folder->clear();
    m_folder->addItem(m_captions.text(Text::ItemAllFolders));
    for (const QString &folder : std::as_const(folders))
        m_folder->addItem(shownLine(QDir::toNativeSeparators(folder), MostNameLetters), folder);
}

// Files

void historial::showFiles()
{
    if (m_isFilling)
        return;
    const history::Entry *entry = m_entryModel->entryAt(m_entries->currentIndex());
    const qint64 id = entry != nullptr ? entry->id : 0;
    if (id != 0 && id == m_shownEntry)
        return;
    m_shownEntry = id;
    m_reader.dropFiles();
    m_changeModel->setFiles({}, {});
    if (entry != nullptr)
        m_reader.readFiles(id, [this, id, folder = entry->folder](Result<std::vector<history::FileRecord>> files) {
            takeFiles(id, folder, std::move(files));
        });
    updateButtons();
}

void historial::takeFiles(qint64 entry, const QString &folder, Result<std::vector<history::FileRecord>> files)
{
    if (entry != m_shownEntry)
        return;
    if (!files)
        m_state->setText(m_captions.text(Text::HistoryUnreadable).arg(m_captions.errorText(files.error().code)));
    m_changeModel->setFiles(files ? std::move(*files) : std::vector<history::FileRecord>(), folder);
    if (m_changeModel->rowCount() <= MostFilesExpanded)
        m_files->expandAll();
    if (m_changeModel->rowCount() > 0)
        m_files->selectionModel()->setCurrentIndex(m_changeModel->index(0, 0), QItemSelectionModel::NoUpdate);
    updateButtons();
}

std::set<qint64> historial::chosenFiles() const
{
    std::set<qint64> files;
    for (const QModelIndex &index : m_files->selectionModel()->selectedRows()) {
        const history::FileRecord &file = m_changeModel->fileAt(index);
        if (file.state == history::FileState::Done)
            files.insert(file.id);
    }
    return files;
}

void historial::updateButtons()
{
    const history::Entry *entry = m_entryModel->entryAt(m_entries->currentIndex());
    m_undo->setEnabled(entry != nullptr && entry->undoneCount < entry->fileCount);
    m_undoChosen->setEnabled(m_undo->isEnabled() && !chosenFiles().empty());
}

// Undo

void historial::undo(const std::set<qint64> &files)
{
    const history::Entry *entry = m_entryModel->entryAt(m_entries->currentIndex());
    if (entry == nullptr)
        return;
    showOutcome({});
    m_reader.readLater(
        entry->id, files, [this, files, id = entry->id](const Result<std::vector<history::Entry>> &later) {
            if (!later)
                m_state->setText(
                    m_captions.text(Text::HistoryUnreadable).arg(m_captions.errorText(later.error().code)));
            else if (later->empty())
                Q_EMIT undoRequested(id, files, false);
            else
                askForLater(id, files, *later);
        });
}

/// An entry's name in a sentence.
QString historial::nameOf(const history::Entry &entry) const
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(entry.time);
    const QStringList parts{timeText(time, DaySpan::Before, m_captions.locale()), kindText(m_captions, entry.kind),
        shownLine(QDir::toNativeSeparators(entry.folder), MostNameLetters)};
    return parts.join(QStringLiteral("  "));
}

void historial::askForLater(qint64 entry, const std::set<qint64> &files, const std::vector<history::Entry> &later)
{
    QStringList lines;
    for (const history::Entry &one : later) {
        if (lines.size() < MostLaterNamed)
            lines << nameOf(one);
    }
    if (later.size() > MostLaterNamed)
        lines << m_captions.text(Text::AndMore).arg(later.size() - MostLaterNamed);
    auto *box = new MessageBox(MessageBox::Question, windowTitle(), m_captions.text(Text::AskUndoLater),
        MessageBox::Yes | MessageBox::No, this);
    box->setObjectName(QStringLiteral("undoLater"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setDefaultButton(MessageBox::No);
    box->setFurtherText(lines.join(u'\n'));
    connect(box, &QDialog::finished, this, [this, entry, files](int answer) {
        if (answer == MessageBox::Yes)
            Q_EMIT undoRequested(entry, files, true);
    });
    box->open();
}

void historial::showOutcome(const QString &text)
{
    m_outcome = text;
    m_state->setText(text);
}

} // namespace ravlin
