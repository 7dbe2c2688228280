// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/foldermodel.h"

#include <QPersistentModelIndex>
#include <QTreeView>

namespace ravlin {

/// The tree of folders. The one selected folder is the program's current folder. A folder that the program opens stands
/// in the middle, also after a resize.
class FolderTree : public QTreeView
{
    Q_OBJECT

public:
    explicit FolderTree(QWidget *parent = nullptr);
    /// A tree of these roots instead of the standard ones.
    explicit FolderTree(const std::vector<FolderRoot> &roots, QWidget *parent = nullptr);

    /// The selected folder's full path, without a separator at its end except for a drive's root. Empty if none is.
    QString path() const;
    /// Selects a folder and opens the tree down to it. If it does not exist, shows its nearest ancestor, keeps the
    /// selection and returns false. A relative path starts at the working directory.
    bool setPath(const QString &path);
    /// Reads the folders shown again. If the selected one is gone, selects its nearest ancestor. If none is selected
    /// because the one for setPath() did not exist, selects that once it does.
    void refresh();
    /// The same for the user, who may have connected a drive: shows new roots, too, and emits refreshed().
    void refreshAsAsked();
    /// The same after the selected folder was renamed or moved to newPath, which gets selected.
    void refreshTo(const QString &newPath);

Q_SIGNALS:
    /// Another folder was selected: by the user, by setPath(), or because the old one is gone or a missing one there.
    void pathChanged(const QString &path);
    void listTreeRequested();
    void deleteRequested();
    /// The user had the folders read again.
    void refreshed();

protected:
    int sizeHintForColumn(int column) const override;
    void resizeEvent(QResizeEvent *event) override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    QItemSelectionModel::SelectionFlags selectionCommand(
        const QModelIndex &index, const QEvent *event = nullptr) const override;

private:
    FolderModel::Found find(const QString &path) const;
    void select(const QModelIndex &folder);
    void showNearest(const QString &missingPath, const QModelIndex &nearest);
    void openDownTo(const QModelIndex &folder);
    void showInTheMiddle(const QModelIndex &folder);
    QModelIndex shownAtResize(int formerHeight);
    void announce();

    FolderModel *const m_model;
    bool m_hasStandardRoots = false;
    QString m_announcedPath;
    QString m_missingPath;          ///< the folder for setPath() that did not exist, until another is selected
    bool m_isChanging = false;      ///< the selection passes through other folders on its way
    QPersistentModelIndex m_middle; ///< stays in the middle until the user scrolls, opens or selects
    int m_formerHeight = 0;
};

} // namespace ravlin
