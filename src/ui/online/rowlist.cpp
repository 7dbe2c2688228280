// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/rowlist.h"

#include "ui/controls/evenrows.h"
#include "ui/controls/rowdrag.h"

#include <QEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>

namespace ravlin {

RowList::RowList(const char *name, int wideColumn, QWidget *parent)
    : QTreeView(parent), m_model(new RowListModel(this)), m_drag(new RowDrag(this, DropRule::BeforeRowUnder)),
      m_wideColumn(wideColumn)
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
    connect(m_drag, &RowDrag::began, this,
        [this] { selectionModel()->select(m_selectionBefore, QItemSelectionModel::ClearAndSelect); });
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

/// A shorter list scrolls as far as it can and does not pull the other one back.
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
    if (m_drag->keyPress(*event))
        return;
    const bool isMove = (event->modifiers() & ~Qt::KeypadModifier) == Qt::AltModifier;
    const int row = currentIndex().row();
    if (isMove && event->key() == Qt::Key_Up)
        moveRowTo(row, row - 1);
    else if (isMove && event->key() == Qt::Key_Down)
        moveRowTo(row, row + 2); // after the next row
    else if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter)
        QTreeView::keyPressEvent(event);
    // Enter ends the editing of a cell; it must not also press the default button.
}

// Dragging a row

void RowList::mousePressEvent(QMouseEvent *event)
{
    m_drag->press(*event);
    m_selectionBefore = selectionModel()->selection();
    QTreeView::mousePressEvent(event);
}

void RowList::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_drag->move(*event))
        QTreeView::mouseMoveEvent(event);
}

void RowList::mouseReleaseEvent(QMouseEvent *event)
{
    if (const std::optional<RowDrag::Drop> drop = m_drag->release(*event)) {
        setState(NoState); // which the press has set
        moveRowTo(drop->row, drop->position);
    } else {
        QTreeView::mouseReleaseEvent(event);
    }
}

void RowList::mouseDoubleClickEvent(QMouseEvent *event)
{
    QTreeView::mouseDoubleClickEvent(event);
    m_drag->giveUp();
}

void RowList::focusOutEvent(QFocusEvent *event)
{
    m_drag->giveUp();
    QTreeView::focusOutEvent(event);
}

void RowList::paintEvent(QPaintEvent *event)
{
    QTreeView::paintEvent(event);
    m_drag->paintMark();
}

} // namespace ravlin
