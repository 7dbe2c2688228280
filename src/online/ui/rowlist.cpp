#include "online/ui/rowlist.h"

#include <QApplication>
#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int DropMarkThickness = 2; ///< pixels
constexpr int DropMarkArrow = 6;     ///< pixels that the arrow at the mark's beginning is long
constexpr int RoomBetweenRows = 2;   ///< pixels
constexpr int ScrollInterval = 50;   ///< milliseconds between two rows while a drag is held beyond the edge

/// Makes a row with a sign as high as one without: rows of the two lists face each other.
class EvenRows final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const int height = std::max(option.fontMetrics.height(), option.decorationSize.height());
        return {QStyledItemDelegate::sizeHint(option, index).width(), height + RoomBetweenRows};
    }
};

} // namespace

RowList::RowList(const char *name, int wideColumn, QWidget *parent)
    : QTreeView(parent), m_model(new RowListModel(this)), m_wideColumn(wideColumn)
{
    setObjectName(QLatin1String(name));
    setModel(m_model);
    setItemDelegate(new EvenRows(this));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed);
    setTabKeyNavigation(false);
    header()->setStretchLastSection(false);
    header()->setSectionsMovable(false);
    header()->setHighlightSections(false);
    fitIcons();
    connect(m_model, &QAbstractItemModel::rowsMoved, this, &RowList::orderChanged);
    connect(m_model, &QAbstractItemModel::modelReset, this, &RowList::orderChanged);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &RowList::selectionEdited);
}

void RowList::fitIcons()
{
    setIconSize(QSize(fontMetrics().height(), fontMetrics().height()));
}

void RowList::changeEvent(QEvent *event)
{
    QTreeView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        fitIcons();
}

void RowList::scrollTogether(RowList *one, RowList *other)
{
    connect(one->verticalScrollBar(), &QScrollBar::valueChanged, other, [one, other] { other->follow(one); });
    connect(other->verticalScrollBar(), &QScrollBar::valueChanged, one, [one, other] { one->follow(other); });
}

/// A list that has fewer rows goes as far as it can, and does not pull the other one back.
void RowList::follow(const RowList *other)
{
    if (other->m_isFollowing)
        return;
    m_isFollowing = true;
    verticalScrollBar()->setValue(other->verticalScrollBar()->value());
    m_isFollowing = false;
}

void RowList::setHeaderTexts(const QStringList &texts)
{
    m_model->setHeaderTexts(texts);
    for (int column = 0; column < texts.size(); ++column)
        header()->setSectionResizeMode(
            column, column == m_wideColumn ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
}

std::vector<bool> RowList::selectionFlags() const
{
    std::vector<bool> selected(static_cast<std::size_t>(m_model->rowCount()));
    for (const QItemSelectionRange &range : selectionModel()->selection())
        std::fill(selected.begin() + range.top(), selected.begin() + range.bottom() + 1, true);
    return selected;
}

void RowList::moveRowTo(int row, int position)
{
    if (row < 0 || row >= m_model->rowCount() || position < 0 || position > m_model->rowCount())
        return;
    if (m_model->moveTo(row, position))
        scrollTo(currentIndex());
}

// Keys

void RowList::keyPressEvent(QKeyEvent *event)
{
    if (isDragging() && event->key() == Qt::Key_Escape) {
        endDrag();
        return;
    }
    const bool isMove = (event->modifiers() & ~Qt::KeypadModifier) == Qt::AltModifier;
    const int row = currentIndex().row();
    if (isMove && event->key() == Qt::Key_Up)
        moveRowTo(row, row - 1);
    else if (isMove && event->key() == Qt::Key_Down)
        moveRowTo(row, row + 2); // before the one behind the next
    else if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        QTreeView::keyPressEvent(event);
    // Enter ends the editing of a cell; it must not press the window's default button as well.
}

// Dragging a row

void RowList::mousePressEvent(QMouseEvent *event)
{
    m_pressedRow = indexAt(event->pos()).row();
    m_pressPosition = event->pos();
    m_mayDrag = m_pressedRow >= 0 && event->buttons() == Qt::LeftButton && event->modifiers() == Qt::NoModifier;
    m_selectionBefore = selectionModel()->selection();
    QTreeView::mousePressEvent(event);
}

void RowList::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_mayDrag || !(event->buttons() & Qt::LeftButton)) {
        QTreeView::mouseMoveEvent(event);
        return;
    }
    const int distance = (event->pos() - m_pressPosition).manhattanLength();
    if (!isDragging() && distance < QApplication::startDragDistance())
        return;
    if (!isDragging())
        beginDrag();
    dragTo(event->pos().y());
}

void RowList::mouseReleaseEvent(QMouseEvent *event)
{
    if (isDragging() && event->button() == Qt::LeftButton) {
        const int row = m_pressedRow;
        const int position = m_dropPosition;
        endDrag();
        setState(NoState); // of the press, which the view has seen
        moveRowTo(row, position);
        return;
    }
    QTreeView::mouseReleaseEvent(event);
    m_mayDrag = false;
}

void RowList::mouseDoubleClickEvent(QMouseEvent *event)
{
    QTreeView::mouseDoubleClickEvent(event);
    m_mayDrag = false;
}

void RowList::beginDrag()
{
    selectionModel()->select(m_selectionBefore, QItemSelectionModel::ClearAndSelect);
    viewport()->setCursor(Qt::DragMoveCursor);
}

int RowList::rowTop(int row) const
{
    const QRect first = visualRect(m_model->index(0, 0));
    return first.top() + row * first.height();
}

/// Before the row under that height; behind the last one below it.
int RowList::positionAt(int y) const
{
    const int top = rowTop(0);
    const int height = std::max(1, rowTop(1) - top);
    const int row = y < top ? 0 : (y - top) / height;
    return std::min(row, m_model->rowCount());
}

void RowList::dragTo(int y)
{
    m_dragY = y;
    m_dropPosition = positionAt(y);
    viewport()->update();
    const bool isBeyondEdge = y < 0 || y >= viewport()->height();
    if (!isBeyondEdge)
        m_scrollTimer.stop();
    else if (!m_scrollTimer.isActive())
        m_scrollTimer.start(ScrollInterval, this);
}

void RowList::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_scrollTimer.timerId()) {
        QTreeView::timerEvent(event);
        return;
    }
    verticalScrollBar()->triggerAction(m_dragY < 0 ? QScrollBar::SliderSingleStepSub : QScrollBar::SliderSingleStepAdd);
    dragTo(m_dragY);
}

void RowList::endDrag()
{
    m_scrollTimer.stop();
    m_mayDrag = false;
    m_dropPosition = -1;
    viewport()->unsetCursor();
    viewport()->update();
}

void RowList::focusOutEvent(QFocusEvent *event)
{
    if (isDragging())
        endDrag();
    QTreeView::focusOutEvent(event);
}

void RowList::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    if (!isDragging())
        return;
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    const int lowest = std::max(DropMarkArrow, viewport()->height() - DropMarkArrow);
    const int middle = std::clamp(rowTop(m_dropPosition), DropMarkArrow / 2, lowest);
    const QColor colour = palette().color(QPalette::Active, QPalette::WindowText);
    painter.fillRect(0, middle - DropMarkThickness / 2, viewport()->width(), DropMarkThickness, colour);
    QPainterPath arrow;
    arrow.moveTo(0, middle - DropMarkArrow);
    arrow.lineTo(DropMarkArrow, middle);
    arrow.lineTo(0, middle + DropMarkArrow);
    arrow.closeSubpath();
    painter.fillPath(arrow, colour);
}

} // namespace ravlin
