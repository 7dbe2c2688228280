// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/foldertree.h"

#include "core/platform/filesystem.h"

#include <QDir>
#include <QHeaderView>
#include <QIcon>
#include <QKeyEvent>
#include <QPainter>
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

FolderTree::FolderTree(QWidget *parent) : FolderTree(standardFolderRoots(), parent) {}

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
}

QString FolderTree::path() const
{
    const QModelIndexList selected = selectionModel()->selectedIndexes();
    return selected.isEmpty() ? QString() : m_model->pathOf(selected.front());
}

bool FolderTree::setPath(const QString &path)
{
    m_isChanging = true;
    const bool isExact = selectFolder(path);
    m_isChanging = false;
    announce();
    return isExact;
}

bool FolderTree::selectFolder(const QString &path)
{
    const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(QDir::fromNativeSeparators(path)));
    const FolderModel::Found found = m_model->find(QDir::toNativeSeparators(absolute), currentIndex());
    if (!found.index.isValid())
        return false;
    for (QModelIndex above = found.index.parent(); above.isValid(); above = above.parent())
        expand(above);
    setCurrentIndex(found.index);
    scrollTo(found.index);
    return found.isExact;
}

void FolderTree::refresh()
{
    const QString before = path();
    m_isChanging = true;
    m_model->refresh();
    if (path() != before)
        selectFolder(before);
    m_isChanging = false;
    scheduleDelayedItemsLayout(); // only a layout asks whether a closed folder can be opened
    announce();
}

void FolderTree::refreshTo(const QString &newPath)
{
    m_isChanging = true;
    m_model->refresh();
    selectFolder(newPath);
    m_isChanging = false;
    scheduleDelayedItemsLayout();
    announce();
}

void FolderTree::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeView::selectionChanged(selected, deselected);
    if (!m_isChanging)
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
    header()->resizeSections(QHeaderView::ResizeToContents);
    QTreeView::resizeEvent(event);
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
    else if (event->key() == Qt::Key_F5) {
        refresh();
        Q_EMIT refreshed();
    }
}

} // namespace ravlin
