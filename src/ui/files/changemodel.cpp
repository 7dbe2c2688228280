// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/changemodel.h"

#include "core/app/historytexts.h"
#include "core/app/idiomas.h"
#include "core/app/showntext.h"

#include <QDir>
#include <QStringList>

#include <utility>

namespace ravlin {

ChangeModel::ChangeModel(const Captions &captions, QObject *parent) : QAbstractItemModel(parent), m_captions(captions)
{
}

void ChangeModel::setFiles(std::vector<history::FileRecord> files, const QString &folder)
{
    beginResetModel();
    m_files = std::move(files);
    m_folder = folder;
    endResetModel();
}

const history::FileRecord &ChangeModel::fileAt(const QModelIndex &index) const
{
    return m_files[isFile(index) ? static_cast<std::size_t>(index.row()) : index.internalId() - 1];
}

QModelIndex ChangeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (row < 0 || column < 0 || column >= ColumnCount || row >= rowCount(parent))
        return {};
    return createIndex(row, column, parent.isValid() ? static_cast<quintptr>(parent.row()) + 1 : quintptr(0));
}

QModelIndex ChangeModel::parent(const QModelIndex &index) const
{
    if (!index.isValid() || isFile(index))
        return {};
    return createIndex(static_cast<int>(index.internalId() - 1), 0, quintptr(0));
}

int ChangeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return static_cast<int>(m_files.size());
    return isFile(parent) && parent.column() == 0 ? static_cast<int>(fileAt(parent).values.size()) : 0;
}

int ChangeModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QString ChangeModel::cell(const QModelIndex &index, int column) const
{
    const history::FileRecord &file = fileAt(index);
    const auto row = static_cast<std::size_t>(index.row());
    const ChangeLine line = isFile(index) ? fileLine(file, m_folder) : valueLine(m_captions, file.values[row]);
    const auto value = [&](const QString &text) {
        if (isFile(index))
            return shownLine(QDir::toNativeSeparators(text));
        return text.isEmpty() ? m_captions.text(Text::ValueNone) : shownLine(text);
    };
    switch (column) {
    case Name:
        return shownLine(isFile(index) ? QDir::toNativeSeparators(line.name) : line.name);
    case Former:
        return value(line.before);
    case New:
        return value(line.after);
    default:
        return isFile(index) ? outcomeText(m_captions, file) : QString();
    }
}

QVariant ChangeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole || (role == Qt::AccessibleTextRole && index.column() != 0))
        return cell(index, index.column());
    if (role != Qt::AccessibleTextRole)
        return {};
    QStringList texts; // the first cell speaks for the row
    for (int column = 0; column < ColumnCount; ++column) {
        if (const QString text = cell(index, column); !text.isEmpty())
            texts << text;
    }
    return texts.join(QStringLiteral("; "));
}

QVariant ChangeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case Name:
        return m_captions.text(Text::ColumnFileOrField);
    case Former:
        return m_captions.text(Text::ColumnFormer);
    case New:
        return m_captions.text(Text::ColumnNew);
    case Outcome:
        return m_captions.text(Text::ColumnRemarks);
    default:
        return {};
    }
}

} // namespace ravlin
