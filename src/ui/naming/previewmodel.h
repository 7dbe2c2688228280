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

/// How a row of the preview is marked, besides a long name. Of several marks a row has the last.
enum class PreviewMark
{
    None,
    Untouched,   ///< the run would leave the file as it is
    MakesFolder, ///< the new name leads into a folder that is made for it
    Adjusted,    ///< the new name is not quite what the rule gave
    Trouble      ///< something prevents what the run would do, or it would lose something
};

inline constexpr std::size_t PreviewMarkCount = 5;

/// A row of the preview with remarks about it.
struct PreviewLine
{
    PreviewRow row;
    PreviewMark mark = PreviewMark::None;
    QStringList remarks; ///< whole sentences, in the user's language
    QString remarkText;  ///< all of them in one line

    bool isMarked() const { return mark != PreviewMark::None || row.isLongName; }
};

/// The lines for the rows of an extraction or a renaming.
std::vector<PreviewLine> extractionLines(const std::vector<PreviewRow> &rows, const Captions &captions);
std::vector<PreviewLine> renamingLines(const FileRenaming &renaming, const Captions &captions);

/// The rows of the preview window: name, track, title, artist, album, year, the presence of tags, and remarks. A long
/// name makes its row bold and red. Another mark is an icon before the name. The remarks are in the row's tooltip too
/// and, for assistive tools, part of the name.
class PreviewModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int RemarkColumn = 8;
    static constexpr int ColumnCount = 9;

    using QAbstractTableModel::QAbstractTableModel;

    void setLines(std::vector<PreviewLine> lines);
    const PreviewLine &lineAt(int row) const { return m_lines[static_cast<std::size_t>(row)]; }
    int markedCount() const;

    void setHeaderTexts(const QStringList &texts);
    /// For each mark its icon.
    void setMarkIcons(const std::array<QIcon, PreviewMarkCount> &icons);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    std::vector<PreviewLine> m_lines;
    QStringList m_headerTexts;
    std::array<QIcon, PreviewMarkCount> m_icons;
};

} // namespace ravlin
