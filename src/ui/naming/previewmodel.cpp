// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/naming/previewmodel.h"

#include "core/app/idiomas.h"
#include "core/app/showntext.h"
#include "core/naming/filename.h"
#include "core/platform/path.h"
#include "ui/naming/problemtext.h"

#include <QBrush>
#include <QColor>
#include <QFont>

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

constexpr QColor LongNameColour(255, 0, 0);

/// The same words in every language.
QString yesOrNo(bool value)
{
    return value ? QStringLiteral("yes") : QStringLiteral("no");
}

QString cellOf(const PreviewRow &row, int column)
{
    switch (column) {
    case 0:
        return row.name;
    case 1:
        return row.record.Track;
    case 2:
        return row.record.Title;
    case 3:
        return row.record.Artist;
    case 4:
        return row.record.Album;
    case 5:
        return row.record.Year;
    case 6:
        return yesOrNo(row.record.HasV1);
    default:
        return yesOrNo(row.record.HasV2);
    }
}

QString cell(const PreviewLine &line, int column)
{
    return shownLine(column == PreviewModel::RemarkColumn ? line.remarkText : cellOf(line.row, column));
}

void mark(PreviewLine &line, PreviewMark mark, const QString &remark)
{
    line.mark = std::max(line.mark, mark);
    line.remarks << remark;
}

/// The whole text of the cell, which may be too narrow for it, and the remarks about the row.
QString toolTip(const QString &cellText, const QStringList &remarks)
{
    QStringList lines;
    for (const QString &line : QStringList(cellText) + remarks) {
        if (!line.isEmpty())
            lines << line;
    }
    return lines.join(u'\n');
}

QString inOneLine(const QStringList &remarks, const Captions &captions)
{
    return remarks.join(captions.mark(u';') + u' ');
}

/// What keeps the file from getting the new name, if anything does.
QString troubleOf(const PreviewRow &preview, const RenameRow &row, const Captions &captions)
{
    if (preview.problem)
        return captions.errorText(preview.problem->code);
    if (row.problem)
        return problemText(captions, *row.problem);
    if (row.error)
        return captions.errorText(row.error->code);
    if (row.isCollision)
        return captions.text(row.isGivenToAnother ? Text::RemarkGivenToAnother : Text::ErrorAlreadyExists);
    return {};
}

PreviewLine renamingLine(const PreviewRow &preview, const RenameRow &row, const Captions &captions)
{
    PreviewLine line{preview, PreviewMark::None, {}, {}};
    line.row.name = newNameOf(row);
    line.row.isLongName = isLongName(platform::nameOf(line.row.name));
    if (const QString trouble = troubleOf(preview, row, captions); !trouble.isEmpty())
        mark(line, PreviewMark::Trouble, trouble);
    else if (row.state == RenameState::Untouched)
        mark(line, PreviewMark::Untouched, captions.text(Text::RemarkKeepsName));
    if (row.isAdjusted)
        mark(line, PreviewMark::Adjusted, captions.text(Text::RemarkAdjusted));
    if (row.renames() && row.makesFolder)
        mark(line, PreviewMark::MakesFolder, captions.text(Text::RemarkMakesFolder));
    if (line.row.isLongName)
        line.remarks << captions.text(Text::RemarkLongName);
    line.remarkText = inOneLine(line.remarks, captions);
    return line;
}

PreviewLine extractionLine(const PreviewRow &row, const Captions &captions)
{
    PreviewLine line{row, PreviewMark::None, extractionRemarks(row, captions), {}};
    line.remarkText = inOneLine(line.remarks, captions);
    if (row.problem || !row.lost.empty())
        line.mark = PreviewMark::Trouble;
    else if (row.isUntouched)
        line.mark = PreviewMark::Untouched;
    return line;
}

} // namespace

std::vector<PreviewLine> extractionLines(const std::vector<PreviewRow> &rows, const Captions &captions)
{
    std::vector<PreviewLine> lines;
    lines.reserve(rows.size());
    for (const PreviewRow &row : rows)
        lines.push_back(extractionLine(row, captions));
    return lines;
}

std::vector<PreviewLine> renamingLines(const FileRenaming &renaming, const Captions &captions)
{
    std::vector<PreviewLine> lines;
    lines.reserve(renaming.rows.size());
    for (std::size_t i = 0; i < renaming.rows.size(); ++i)
        lines.push_back(renamingLine(renaming.rows[i], renaming.plan.rows()[i], captions));
    return lines;
}

void PreviewModel::setLines(std::vector<PreviewLine> lines)
{
    beginResetModel();
    m_lines = std::move(lines);
    endResetModel();
}

int PreviewModel::markedCount() const
{
    return static_cast<int>(std::ranges::count_if(m_lines, &PreviewLine::isMarked));
}

void PreviewModel::setHeaderTexts(const QStringList &texts)
{
    m_headerTexts = texts;
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

void PreviewModel::setMarkIcons(const std::array<QIcon, PreviewMarkCount> &icons)
{
    m_icons = icons;
    if (!m_lines.empty())
        Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole});
}

int PreviewModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_lines.size());
}

int PreviewModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant PreviewModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const PreviewLine &line = lineAt(index.row());
    const bool isName = index.column() == 0;
    switch (role) {
    case Qt::DisplayRole:
        return cell(line, index.column());
    case Qt::AccessibleTextRole:
        return isName ? (QStringList(cell(line, 0)) + line.remarks).join(QStringLiteral("; "))
                      : cell(line, index.column());
    case Qt::ToolTipRole:
        return toolTip(cell(line, index.column()), line.remarks);
    case Qt::DecorationRole:
        return isName ? QVariant(m_icons[static_cast<std::size_t>(line.mark)]) : QVariant();
    case Qt::FontRole:
        if (line.row.isLongName) {
            QFont bold; // the view fills in what is not set
            bold.setBold(true);
            return bold;
        }
        return {};
    case Qt::ForegroundRole:
        return line.row.isLongName ? QVariant(QBrush(LongNameColour)) : QVariant();
    default:
        return {};
    }
}

QVariant PreviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return m_headerTexts.value(section);
}

} // namespace ravlin
