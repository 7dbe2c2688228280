// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/filelist.h"

#include "core/controls/splitlayout.h"
#include "ui/controls/evenrows.h"
#include "ui/controls/rowdrag.h"

#include <QBrush>
#include <QColor>
#include <QContextMenuEvent>
#include <QFont>
#include <QHeaderView>
#include <QKeyEvent>
#include <QSet>

#include <algorithm>
#include <numeric>
#include <utility>

namespace ravlin {

namespace {

constexpr int SmallestColumnWidth = 20; ///< pixels

bool isShiftAlone(const QKeyEvent &event)
{
    return (event.modifiers() & ~Qt::KeypadModifier) == Qt::ShiftModifier;
}

bool isCommandLetter(int key)
{
    return key == Qt::Key_B || key == Qt::Key_L || key == Qt::Key_P;
}

/// The list's rows as they look: a long name makes its row bold and pure red. What the note says of a row stands in the
/// tooltips of its cells and describes its file.
class FileListModel : public ListModel
{
public:
    explicit FileListModel(FileList *list) : ListModel(list), m_list(list) {}

    FileList::RowNote note;

    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override
    {
        if (role == Qt::ToolTipRole || role == Qt::AccessibleDescriptionRole)
            return noted(index, role);
        if (role != Qt::FontRole && role != Qt::ForegroundRole)
            return ListModel::data(index, role);
        if (!ListModel::data(index, LongNameRole).toBool())
            return {};
        if (role == Qt::ForegroundRole)
            return QBrush(QColor(255, 0, 0));
        QFont font;
        font.setBold(true); // the view fills in what is not set
        return font;
    }

private:
    QVariant noted(const QModelIndex &index, int role) const
    {
        const bool isTip = role == Qt::ToolTipRole;
        // Assistive tools may ask for all rows at once; only the current one is read out.
        if (!note || !index.isValid() || (!isTip && (index.column() != 0 || index.row() != m_list->currentRow())))
            return ListModel::data(index, role);
        QStringList lines{ListModel::data(index, role).toString(), note(rowAt(index.row()).text())};
        lines.removeAll(QString());
        return lines.join(u'\n');
    }

    FileList *const m_list;
};

} // namespace

FileList::FileList(QWidget *parent)
    : QTreeView(parent), m_model(new FileListModel(this)), m_drag(new RowDrag(this, DropRule::NearestEdge))
{
    setModel(m_model);
    setItemDelegate(new EvenRows(this));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setSelectionBehavior(SelectRows);
    setEditTriggers(NoEditTriggers);
    setHorizontalScrollMode(ScrollPerPixel);
    setTextElideMode(Qt::ElideRight);

    header()->setStretchLastSection(false);
    header()->setSectionsClickable(true);
    header()->setSectionsMovable(false);
    header()->setSortIndicatorShown(true);
    header()->setHighlightSections(false);
    header()->setMinimumSectionSize(SmallestColumnWidth);
    header()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    connect(header(), &QHeaderView::sectionClicked, this, &FileList::sortByHeader);
    connect(m_model, &ListModel::headerDataChanged, this, &FileList::showWholeHeaders);
    connect(m_drag, &RowDrag::began, this, [this] { m_pressedRow = -1; });
    updateSortArrow();
}

void FileList::setRows(std::vector<ListRow> rows)
{
    m_drag->giveUp();
    m_model->setAutomaticSorting(true);
    m_model->setRows(std::move(rows));
    updateSortArrow();
    setCurrentRow(0, Selection::Keep);
}

void FileList::setRowNote(RowNote note)
{
    static_cast<FileListModel *>(m_model)->note = std::move(note);
}

QString FileList::rowText(int row) const
{
    return row >= 0 && row < rowCount() ? m_model->rowAt(row).text() : QString();
}

QStringList FileList::rowTexts() const
{
    QStringList texts;
    texts.reserve(rowCount());
    for (const ListRow &row : m_model->rows())
        texts += row.text();
    return texts;
}

int FileList::rowOf(QStringView text) const
{
    const std::vector<ListRow> &rows = m_model->rows();
    const auto found = std::ranges::find_if(rows, [text](const ListRow &row) { return row.hasText(text); });
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

std::vector<bool> FileList::selectionFlags() const
{
    std::vector<bool> selected(static_cast<std::size_t>(rowCount()));
    for (const QItemSelectionRange &range : selectionModel()->selection())
        std::fill(selected.begin() + range.top(), selected.begin() + range.bottom() + 1, true);
    return selected;
}

std::vector<int> FileList::selectedRows() const
{
    const std::vector<bool> selected = selectionFlags();
    std::vector<int> rows;
    for (std::size_t i = 0; i < selected.size(); ++i) {
        if (selected[i])
            rows.push_back(static_cast<int>(i));
    }
    return rows;
}

QStringList FileList::selectedRowTexts() const
{
    QStringList texts;
    for (const int row : selectedRows())
        texts += m_model->rowAt(row).text();
    return texts;
}

bool FileList::isRowSelected(int row) const
{
    return row >= 0 && row < rowCount() && selectionModel()->isSelected(m_model->index(row, 0));
}

void FileList::selectAllRows()
{
    if (rowCount() == 0)
        return;
    const QItemSelection all(m_model->index(0, 0), m_model->index(rowCount() - 1, ListColumnCount - 1));
    selectionModel()->select(all, QItemSelectionModel::ClearAndSelect);
}

void FileList::selectRows(const QStringList &texts)
{
    const QSet<QString> wanted(texts.begin(), texts.end());
    std::vector<bool> flags;
    flags.reserve(static_cast<std::size_t>(rowCount()));
    for (const ListRow &row : m_model->rows())
        flags.push_back(wanted.contains(row.text()));
    selectionModel()->select(rangesOf(flags), QItemSelectionModel::ClearAndSelect);
}

void FileList::selectNone()
{
    selectionModel()->clearSelection();
}

void FileList::setCurrentRow(int row, Selection selection)
{
    if (row < 0 || row >= rowCount())
        return;
    const QItemSelectionModel::SelectionFlags flags =
        selection == Selection::Keep ? QItemSelectionModel::NoUpdate
                                     : QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
    const QModelIndex index = m_model->index(row, 0);
    selectionModel()->setCurrentIndex(index, flags);
    scrollTo(index);
}

void FileList::reportCurrentRow()
{
    if (currentRow() >= 0)
        Q_EMIT itemSelected(currentRow());
}

// Sorting

void FileList::sortByHeader(int column)
{
    keepSelection([&] { return m_model->sortByHeader(column); });
    updateSortArrow();
}

void FileList::updateSortArrow()
{
    const ListOrder &order = m_model->order();
    header()->setSortIndicator(m_model->isInOrder() ? order.column : -1, order.order);
}

void FileList::keepSelection(const std::function<std::vector<std::size_t>()> &reorder)
{
    const std::vector<bool> before = selectionFlags();
    const int currentBefore = currentRow();
    selectionModel()->reset();
    const std::vector<std::size_t> oldPositions = reorder();
    std::vector<bool> after(before.size());
    for (std::size_t i = 0; i < oldPositions.size(); ++i) {
        after[i] = before[oldPositions[i]];
        if (static_cast<int>(oldPositions[i]) == currentBefore)
            setCurrentRow(static_cast<int>(i), Selection::Keep);
    }
    selectionModel()->select(rangesOf(after), QItemSelectionModel::Select);
    viewport()->update();
}

QItemSelection FileList::rangesOf(const std::vector<bool> &selected) const
{
    QItemSelection ranges;
    for (auto begin = std::find(selected.begin(), selected.end(), true); begin != selected.end();) {
        const auto end = std::find(begin, selected.end(), false);
        ranges.append({m_model->index(static_cast<int>(begin - selected.begin()), 0),
            m_model->index(static_cast<int>(end - selected.begin()) - 1, ListColumnCount - 1)});
        begin = std::find(end, selected.end(), true);
    }
    return ranges;
}

// Keys

void FileList::keyPressEvent(QKeyEvent *event)
{
    if (m_drag->keyPress(*event))
        return;
    if (isShiftAlone(*event) && isCommandLetter(event->key())) {
        m_pressedCommand = event->key();
        return; // acts when released, and must not start a search by name
    }
    QTreeView::keyPressEvent(event);
}

void FileList::keyReleaseEvent(QKeyEvent *event)
{
    QTreeView::keyReleaseEvent(event);
    if (event->isAutoRepeat())
        return; // the key is still held down
    // Fast typists release Shift first.
    const bool isCommand = isShiftAlone(*event) || event->key() == m_pressedCommand;
    if (event->key() == m_pressedCommand)
        m_pressedCommand = 0;
    if (event->key() == Qt::Key_Delete)
        Q_EMIT deleteRequested();
    else if (isCommand && event->key() == Qt::Key_B)
        Q_EMIT deletePlaylistsRequested();
    else if (isCommand && event->key() == Qt::Key_L)
        Q_EMIT writePlaylistRequested();
    else if (isCommand && event->key() == Qt::Key_P)
        Q_EMIT playRequested();
    else
        reportCurrentRow();
}

// Mouse

void FileList::mousePressEvent(QMouseEvent *event)
{
    m_pressedRow = indexAt(event->pos()).row();
    m_drag->press(*event);
    QTreeView::mousePressEvent(event);
}

void FileList::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drag->move(*event))
        QTreeView::mouseMoveEvent(event);
}

void FileList::mouseReleaseEvent(QMouseEvent *event)
{
    if (const std::optional<RowDrag::Drop> drop = m_drag->release(*event)) {
        setState(NoState); // set by the press, which the view has seen
        dropRow(drop->row, drop->position);
        return;
    }
    QTreeView::mouseReleaseEvent(event);
    const int pressedRow = std::exchange(m_pressedRow, -1);
    if (event->button() == Qt::RightButton)
        Q_EMIT rightClicked();
    const bool isClick = event->button() == Qt::LeftButton || event->button() == Qt::RightButton;
    if (isClick && pressedRow >= 0 && pressedRow == indexAt(event->pos()).row())
        reportCurrentRow();
    if (event->button() == Qt::RightButton && viewport()->rect().contains(event->pos()))
        Q_EMIT menuRequested(event->globalPosition().toPoint());
}

/// A menu opened by the press would swallow the release, which has its own meaning.
void FileList::contextMenuEvent(QContextMenuEvent *event)
{
    event->accept();
    if (event->reason() == QContextMenuEvent::Mouse)
        return;
    const QRect row = visualRect(currentIndex());
    const QPoint place = row.isValid() ? row.bottomLeft() : QPoint();
    Q_EMIT menuRequested(viewport()->mapToGlobal(QPoint(place.x(), std::clamp(place.y(), 0, viewport()->height()))));
}

void FileList::mouseDoubleClickEvent(QMouseEvent *event)
{
    QTreeView::mouseDoubleClickEvent(event);
    m_drag->giveUp();
    m_pressedRow = -1; // the first click was reported
    const int row = indexAt(event->pos()).row();
    if (event->button() == Qt::LeftButton && row >= 0)
        Q_EMIT fileActivated(row);
}

// Dragging a row

void FileList::dropRow(int from, int position)
{
    if (from < 0 || from >= rowCount() || position < 0 || position > rowCount())
        return;
    m_model->setAutomaticSorting(false);
    keepSelection([&] {
        std::vector<std::size_t> positions(static_cast<std::size_t>(rowCount()));
        std::iota(positions.begin(), positions.end(), std::size_t{0});
        if (m_model->moveRowTo(from, position)) {
            const auto first = positions.begin();
            if (position > from)
                std::rotate(first + from, first + from + 1, first + position);
            else
                std::rotate(first + position, first + from, first + from + 1);
        }
        return positions;
    });
    updateSortArrow();
}

void FileList::focusOutEvent(QFocusEvent *event)
{
    m_pressedCommand = 0; // another widget gets its release
    m_drag->giveUp();
    QTreeView::focusOutEvent(event);
}

void FileList::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    m_drag->paintMark();
}

// Columns

void FileList::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    // Scroll bars cause resizes, too. Columns that the user resized stay so until the width of the list changes.
    if (std::exchange(m_laidOutWidth, width()) != width())
        applyColumnWidths();
}

void FileList::setHiddenColumns(ColumnSet hidden)
{
    hidden.reset(static_cast<std::size_t>(ListColumn::File));
    if (hidden == m_hidden)
        return;
    m_hidden = hidden;
    for (int column = 0; column < ListColumnCount; ++column)
        setColumnHidden(column, hidden[static_cast<std::size_t>(column)]);
    // Keys must continue from a visible cell.
    if (currentIndex().isValid() && isColumnHidden(currentIndex().column()))
        selectionModel()->setCurrentIndex(currentIndex().siblingAtColumn(0), QItemSelectionModel::NoUpdate);
    applyColumnWidths();
}

void FileList::applyColumnWidths()
{
    const std::array<int, ListColumnCount> widths = columnWidths(width() * TwipsPerPixel, m_hidden);
    for (int column = 0; column < ListColumnCount; ++column) {
        if (!isColumnHidden(column))
            setColumnWidth(column, widths[static_cast<std::size_t>(column)] / TwipsPerPixel);
    }
    showWholeHeaders();
}

/// Widens columns that would cut their header.
void FileList::showWholeHeaders()
{
    for (int column = 0; column < ListColumnCount; ++column) {
        if (!isColumnHidden(column))
            setColumnWidth(column, std::max(columnWidth(column), header()->sectionSizeHint(column)));
    }
}

} // namespace ravlin
