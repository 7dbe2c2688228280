// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renamefromtags.h"
#include "core/naming/previewrows.h"

#include <QAbstractTableModel>
#include <QIcon>

#include <array>
#include <vector>

namespace ravlin {

class Captions;

/// How a row of the preview is marked, besides a long name.
enum class PreviewMark
{
    None,
    Untouched, ///< the run would leave the file as it is
    Trouble    ///< something prevents what the run would do
};

/// A row of the preview with remarks about it.
struct PreviewLine
{
    PreviewRow row;
    PreviewMark mark = PreviewMark::None;
    QStringList remarks; ///< whole sentences, in the user's language

    bool isMarked() const { return mark != PreviewMark::None || !remarks.isEmpty(); }
};

/// The lines for the rows of an extraction or a renaming.
std::vector<PreviewLine> extractionLines(const std::vector<PreviewRow> &rows, const Captions &captions);
std::vector<PreviewLine> renamingLines(const FileRenaming &renaming, const Captions &captions);

/// The rows of the preview window: name, track, title, artist, album, year and the presence of tags. A long name makes
/// its row bold and red. A mark is an icon before the name; its remarks are the row's tooltip and, for assistive tools,
/// part of the name.
class PreviewModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int ColumnCount = 8;

    using QAbstractTableModel::QAbstractTableModel;

    void setLines(std::vector<PreviewLine> lines);
    const PreviewLine &lineAt(int row) const { return m_lines[static_cast<std::size_t>(row)]; }
    int markedCount() const;

    void setHeaderTexts(const QStringList &texts);
    void setMarkIcons(const QIcon &untouched, const QIcon &trouble);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QVariant icon(const PreviewLine &line) const;

    std::vector<PreviewLine> m_lines;
    QStringList m_headerTexts;
    QIcon m_untouched;
    QIcon m_trouble;
};

} // namespace ravlin
