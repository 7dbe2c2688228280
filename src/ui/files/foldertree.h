// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/foldermodel.h"

#include <QTreeView>

namespace ravlin {

/// The tree of folders. One folder is selected at a time; it is the one that the program works in.
class FolderTree : public QTreeView
{
    Q_OBJECT

public:
    explicit FolderTree(QWidget *parent = nullptr);
    /// A tree of other places than the usual ones.
    explicit FolderTree(const std::vector<FolderRoot> &roots, QWidget *parent = nullptr);

    /// The selected folder's full path, without a separator at its end but for a drive's root; empty when none is.
    QString path() const;
    /// Selects a folder and opens the tree down to it. A folder that does not exist (any more) gives its nearest
    /// ancestor and false. A relative path counts from the program's working folder.
    bool setPath(const QString &path);
    /// Reads what is shown from the disk again. If the selected folder is gone its nearest ancestor gets selected.
    void refresh();
    /// The same, and selects that folder: the selected one has been renamed to it, or moved there.
    void refreshTo(const QString &newPath);

Q_SIGNALS:
    /// Another folder was selected, by the user, by setPath or because the old one is gone.
    void pathChanged(const QString &path);
    void listTreeRequested();
    void deleteRequested();

protected:
    int sizeHintForColumn(int column) const override;
    void resizeEvent(QResizeEvent *event) override;
    void drawRow(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    QItemSelectionModel::SelectionFlags selectionCommand(
        const QModelIndex &index, const QEvent *event = nullptr) const override;

private:
    bool selectFolder(const QString &path);
    void announce();

    FolderModel *const m_model;
    QString m_announcedPath;
    bool m_isChanging = false; ///< the selection moves through other folders before it is where it shall be
};

} // namespace ravlin
