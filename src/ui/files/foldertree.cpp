// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/foldertree.h"

#include "core/platform/filesystem.h"

#include <QDir>
#include <QHeaderView>
#include <QIcon>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyle>
#include <QStyledItemDelegate>

#include <algorithm>
#include <map>
#include <utility>

namespace ravlin {

namespace {

/// Gives each folder its icon; greys out those that can't be read.
class FolderDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem *option, const QModelIndex &index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        const QStyle *style = option->widget->style();
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->icon = iconOf(pixmapOf(*option, index), *option);
        const int size = style->pixelMetric(QStyle::PM_SmallIconSize, option, option->widget);
        option->decorationSize = QSize(size, size);
        if (!index.data(FolderModel::ReadableRole).toBool())
            option->state &= ~QStyle::State_Enabled;
    }

private:
    static QStyle::StandardPixmap pixmapOf(const QStyleOptionViewItem &option, const QModelIndex &index)
    {
        const QVariant rootKind = index.data(FolderModel::RootKindRole);
        if (rootKind == static_cast<int>(FolderRoot::Kind::Home))
            return QStyle::SP_DirHomeIcon;
        if (rootKind == static_cast<int>(FolderRoot::Kind::Drive))
            return QStyle::SP_DriveHDIcon;
        return option.state & QStyle::State_Open ? QStyle::SP_DirOpenIcon : QStyle::SP_DirIcon;
    }
    /// Cached: a style searches the icon themes at every call, and every painted row calls.
    QIcon iconOf(QStyle::StandardPixmap pixmap, const QStyleOptionViewItem &option) const
    {
        const QStyle *style = option.widget->style();
        const qint64 colours = option.palette.cacheKey();
        if (std::exchange(m_style, style) != style || std::exchange(m_colours, colours) != colours)
            m_icons.clear();
        QIcon &icon = m_icons[pixmap];
        if (icon.isNull())
            icon = style->standardIcon(pixmap, &option, option.widget);
        return icon;
    }

    mutable std::map<QStyle::StandardPixmap, QIcon> m_icons; ///< for the present style and colours
    mutable const QStyle *m_style = nullptr;
    mutable qint64 m_colours = 0;
};

} // namespace

FolderTree::FolderTree(QWidget *parent) : FolderTree(standardFolderRoots(), parent)
{
    m_hasStandardRoots = true;
}

FolderTree::FolderTree(const std::vector<FolderRoot> &roots, QWidget *parent)
    : QTreeView(parent), m_model(new FolderModel(roots, this))
{
    setModel(m_model);
    setItemDelegate(new FolderDelegate(this));
    setHeaderHidden(true);
    setUniformRowHeights(true);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    // A long name scrolls into view instead of being cut.
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    const auto leaveMiddle = [this] { m_middle = QModelIndex(); };
    connect(verticalScrollBar(), &QAbstractSlider::actionTriggered, this, leaveMiddle); // by the user alone
    connect(this, &QTreeView::expanded, this, leaveMiddle);
    connect(this, &QTreeView::collapsed, this, leaveMiddle);
}

QString FolderTree::path() const
{
    const QModelIndexList selected = selectionModel()->selectedIndexes();
    return selected.isEmpty() ? QString() : m_model->pathOf(selected.front());
}

bool FolderTree::setPath(const QString &path)
{
    const FolderModel::Found found = find(path);
    if (!found.isExact) {
        if (this->path().isEmpty())
            showNearest(path, found.index);
        return false;
    }
    m_isChanging = true;
    select(found.index);
    m_isChanging = false;
    announce();
    return true;
}

void FolderTree::showNearest(const QString &missingPath, const QModelIndex &nearest)
{
    m_missingPath = missingPath;
    if (!nearest.isValid())
        return;
    openDownTo(nearest);
    selectionModel()->setCurrentIndex(nearest, QItemSelectionModel::NoUpdate); // keys begin there
    showInTheMiddle(nearest);
}

FolderModel::Found FolderTree::find(const QString &path) const
{
    const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(QDir::fromNativeSeparators(path)));
    return m_model->find(QDir::toNativeSeparators(absolute), currentIndex());
}

void FolderTree::select(const QModelIndex &folder)
{
    if (!folder.isValid())
        return;
    openDownTo(folder);
    setCurrentIndex(folder);
    showInTheMiddle(folder);
}

void FolderTree::openDownTo(const QModelIndex &folder)
{
    for (QModelIndex above = folder.parent(); above.isValid(); above = above.parent())
        expand(above);
}

/// From top to bottom; sideways so that its name is seen and, if possible, the folders above it.
void FolderTree::showInTheMiddle(const QModelIndex &folder)
{
    scrollTo(folder, PositionAtCenter);
    const int room = viewport()->width();
    const int left = visualRect(folder).left() + horizontalScrollBar()->value();
    const int beyond = left + sizeHintForIndex(folder).width() - room;
    horizontalScrollBar()->setValue(left < room / 2 ? 0 : std::clamp(beyond, 0, left));
    m_middle = folder;
}

void FolderTree::refresh()
{
    const QString before = path();
    m_isChanging = true;
    m_model->refresh();
    if (path() != before) {
        select(find(before).index);
    } else if (before.isEmpty() && !m_missingPath.isEmpty()) {
        if (const FolderModel::Found found = find(m_missingPath); found.isExact)
            select(found.index);
    }
    m_isChanging = false;
    scheduleDelayedItemsLayout(); // only a layout asks whether a closed folder can be opened
    announce();
}

void FolderTree::refreshTo(const QString &newPath)
{
    m_isChanging = true;
    m_model->refresh();
    select(find(newPath).index);
    m_isChanging = false;
    scheduleDelayedItemsLayout();
    announce();
}

void FolderTree::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (m_isChanging)
        return;
    m_middle = QModelIndex();
    announce();
}

QItemSelectionModel::SelectionFlags FolderTree::selectionCommand(const QModelIndex &index, const QEvent *event) const
{
    // A click with Ctrl would leave no folder selected.
    const QItemSelectionModel::SelectionFlags command = QTreeView::selectionCommand(index, event);
    if (command & (QItemSelectionModel::Toggle | QItemSelectionModel::Deselect))
        return QItemSelectionModel::ClearAndSelect;
    return index.isValid() ? command : QItemSelectionModel::NoUpdate;
}

void FolderTree::announce()
{
    if (!path().isEmpty())
        m_missingPath.clear();
    if (std::exchange(m_announcedPath, path()) != path() && !path().isEmpty())
        Q_EMIT pathChanged(path());
}

/// At least as wide as the view, so that a click anywhere in a row selects it.
int FolderTree::sizeHintForColumn(int column) const
{
    return std::max(QTreeView::sizeHintForColumn(column), viewport()->width());
}

void FolderTree::resizeEvent(QResizeEvent *event)
{
    const QModelIndex shown = shownAtResize(event->oldSize().height());
    header()->resizeSections(QHeaderView::ResizeToContents);
    QTreeView::resizeEvent(event);
    if (shown.isValid())
        showInTheMiddle(shown);
}

/// The folder to keep in sight: what stands in the middle, or the selected one if it was seen. When only a scroll bar
/// comes or goes, the latter stays where it is.
QModelIndex FolderTree::shownAtResize(int formerHeight)
{
    const bool isResized = std::exchange(m_formerHeight, height()) != height();
    if (m_middle.isValid() || !isResized)
        return m_middle;
    const QModelIndexList selected = selectionModel()->selectedIndexes();
    if (selected.isEmpty())
        return {};
    const QRect place = visualRect(selected.front());
    return place.top() < formerHeight && place.bottom() >= 0 ? selected.front() : QModelIndex();
}

/// The style does not highlight the indentation of a selected row.
void FolderTree::drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    if (selectionModel()->isSelected(index)) {
        const bool isReadable = index.data(FolderModel::ReadableRole).toBool();
        const QPalette::ColorGroup active = isActiveWindow() ? QPalette::Active : QPalette::Inactive;
        const QPalette::ColorGroup group = isEnabled() && isReadable ? active : QPalette::Disabled;
        painter->fillRect(option.rect, option.palette.brush(group, QPalette::Highlight));
    }
    QTreeView::drawRow(painter, option, index);
}

void FolderTree::keyReleaseEvent(QKeyEvent *event)
{
    QTreeView::keyReleaseEvent(event);
    if (event->isAutoRepeat())
        return; // the key is still held down
    if (event->key() == Qt::Key_Delete)
        Q_EMIT deleteRequested();
    else if (event->key() == Qt::Key_F2)
        Q_EMIT listTreeRequested();
    else if (event->key() == Qt::Key_F5)
        refreshAsAsked();
}

void FolderTree::refreshAsAsked()
{
    if (m_hasStandardRoots)
        m_model->addRoots(standardFolderRoots());
    refresh();
    Q_EMIT refreshed();
}

} // namespace ravlin
