// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/history/history.h"

#include <QAbstractItemModel>

#include <vector>

namespace ravlin {

class Captions;

/// The files of one entry of the history with what became of them; below each file its values, before and after.
class ChangeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Column
    {
        Name, ///< of the file or the field
        Former,
        New,
        Outcome,
    };
    static constexpr int ColumnCount = 4;

    explicit ChangeModel(const Captions &captions, QObject *parent = nullptr);

    /// folder: what their paths are shown without.
    void setFiles(std::vector<history::FileRecord> files, const QString &folder);
    const std::vector<history::FileRecord> &files() const { return m_files; }
    /// Of the file, or the file that the value belongs to.
    const history::FileRecord &fileAt(const QModelIndex &index) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &index) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    static bool isFile(const QModelIndex &index) { return index.internalId() == 0; }
    QString cell(const QModelIndex &index, int column) const;

    const Captions &m_captions;
    std::vector<history::FileRecord> m_files;
    QString m_folder;
};

} // namespace ravlin
