// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/list/foldermodel.h"

#include <QTreeView>

namespace ravlin {

/// The tree of folders. The one selected folder is the program's current folder.
class FolderTree : public QTreeView
{
    Q_OBJECT

public:
    explicit FolderTree(QWidget *parent = nullptr);
    /// A tree of these roots instead of the standard ones.
    explicit FolderTree(const std::vector<FolderRoot> &roots, QWidget *parent = nullptr);

    /// The selected folder's full path, without a separator at its end except for a drive's root. Empty if none is.
    QString path() const;
    /// Selects a folder and opens the tree down to it. If it does not exist, selects its nearest ancestor and returns
    /// false. A relative path starts at the working directory.
    bool setPath(const QString &path);
    /// Reads the folders shown again. If the selected one is gone, selects its nearest ancestor.
    void refresh();
    /// The same after the selected folder was renamed or moved to newPath, which gets selected.
    void refreshTo(const QString &newPath);

Q_SIGNALS:
    /// Another folder was selected: by the user, by setPath(), or because the old one is gone.
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
    bool selectFolder(const QString &path);
    void announce();

    FolderModel *const m_model;
    QString m_announcedPath;
    bool m_isChanging = false; ///< the selection passes through other folders on its way
};

} // namespace ravlin
