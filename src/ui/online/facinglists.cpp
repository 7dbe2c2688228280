// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/facinglists.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"
#include "core/online/cddb/disccomparison.h"
#include "ui/online/rowlist.h"

#include <QIcon>

#include <algorithm>

namespace ravlin {

namespace {

constexpr int SmallestPanel = 3000; ///< in twips; keeps the titles readable

enum FileColumn
{
    Name,
    PlayingTime
};

enum TrackColumn
{
    Track,
    Title,
    Time
};

void setLines(RowList *list, std::vector<ListedLine> lines)
{
    list->rows().setLines(std::move(lines));
    list->setCurrentIndex(list->model()->index(0, 0));
    list->clearSelection();
}

} // namespace

FacingLists::FacingLists(const Captions &captions, QWidget *parent)
    : SplitPanel(parent), m_captions(captions), m_files(new RowList("archivo", Name, this)),
      m_tracks(new RowList("correlacion", Title, this))
{
    setMinPanelSize(SmallestPanel);
    setFirstPanel(m_files);
    setSecondPanel(m_tracks);
    m_files->rows().setRightAligned({PlayingTime});
    m_tracks->rows().setRightAligned({Track, Time});
    m_tracks->rows().setEditableColumn(Title);
    for (const RowList *list : {m_files, m_tracks}) {
        connect(list, &RowList::orderChanged, this, [this] {
            compareLengths();
            Q_EMIT orderChanged();
        });
    }
    connect(m_files, &RowList::selectionEdited, this, &FacingLists::fileSelectionEdited);
    RowList::scrollTogether(m_files, m_tracks);
}

void FacingLists::applyCaptions()
{
    m_files->setHeaderTexts({m_captions.text(Caption::File), m_captions.text(Caption::Time)});
    m_files->setAccessibleName(m_captions.text(Caption::Files));
    m_tracks->setHeaderTexts(
        {m_captions.text(Caption::Track), m_captions.text(Caption::Title), m_captions.text(Caption::Time)});
    m_tracks->setAccessibleName(m_captions.text(Text::NameTracks));
    for (RowList *list : {m_files, m_tracks}) {
        list->setToolTip(m_captions.text(Text::TipMoveRow));
        list->setAccessibleDescription(list->toolTip());
    }
    setBarAccessibleName(m_captions.text(Text::NameDiscSplitter));
}

void FacingLists::setRemarkIcon(const QIcon &icon)
{
    for (RowList *list : {m_files, m_tracks})
        list->rows().setRemarkIcon(icon);
}

void FacingLists::setFiles(const QStringList &paths, const QString &folder)
{
    m_paths = paths;
    m_fileFrames.assign(static_cast<std::size_t>(paths.size()), std::nullopt);
    std::vector<ListedLine> lines;
    lines.reserve(m_fileFrames.size());
    for (const QString &path : paths) {
        const QString name = path.startsWith(folder) ? path.sliced(folder.size()) : path;
        lines.push_back({static_cast<int>(lines.size()), {shownName(name), {}}, {}});
    }
    setLines(m_files, std::move(lines));
}

int FacingLists::rowOf(int file) const
{
    const std::vector<ListedLine> &lines = m_files->rows().lines();
    return static_cast<int>(std::ranges::find(lines, file, &ListedLine::id) - lines.begin());
}

QString FacingLists::fileName(int file) const
{
    return m_files->rows().lines()[static_cast<std::size_t>(rowOf(file))].cells[Name];
}

std::vector<int> FacingLists::fileOrder() const
{
    std::vector<int> order;
    for (const ListedLine &line : m_files->rows().lines())
        order.push_back(line.id);
    return order;
}

void FacingLists::setPlayed(int file, const PlayedAudio &played)
{
    m_fileFrames[static_cast<std::size_t>(file)] = played.frames();
    m_files->rows().setCell(file, PlayingTime, shownTime(played.frames()));
}

void FacingLists::setFileRemark(int file, const QString &remark)
{
    m_files->rows().setRemark(rowOf(file), remark);
}

void FacingLists::setDisc(const DiscRecord &disc)
{
    m_disc = disc;
    std::vector<ListedLine> lines;
    for (const DiscTrack &track : disc.tracks) {
        const int index = static_cast<int>(lines.size());
        lines.push_back(
            {index, {QString::number(index + 1), shownTitle(track), shownTime(trackFrames(disc, index))}, {}});
    }
    setLines(m_tracks, std::move(lines));
}

void FacingLists::compareLengths()
{
    if (!m_disc)
        return;
    Lengths files;
    for (const ListedLine &line : m_files->rows().lines())
        files.push_back(m_fileFrames[static_cast<std::size_t>(line.id)]);
    Lengths tracks;
    for (const ListedLine &line : m_tracks->rows().lines())
        tracks.push_back(trackFrames(*m_disc, line.id));
    const std::vector<qint64> differences = notableDifferences(files, tracks);
    for (std::size_t row = 0; row < differences.size(); ++row)
        m_tracks->rows().setRemark(static_cast<int>(row), differenceRemark(m_captions, differences[row]));
    m_differing = static_cast<int>(differences.size() - std::ranges::count(differences, 0));
}

QStringList FacingLists::remarks() const
{
    if (!m_disc)
        return {};
    return comparisonRemarks(m_captions, m_files->rows().rowCount(), m_tracks->rows().rowCount(), m_differing);
}

bool FacingLists::hasFiles(bool onlySelected) const
{
    return !m_paths.isEmpty() && (!onlySelected || m_files->selectionModel()->hasSelection());
}

std::vector<DiscFile> FacingLists::pairedFiles(bool onlySelected) const
{
    const std::vector<bool> selected = m_files->selectionFlags();
    const std::vector<ListedLine> &files = m_files->rows().lines();
    const std::vector<ListedLine> &tracks = m_tracks->rows().lines();
    std::vector<DiscFile> paired;
    for (std::size_t row = 0; row < files.size(); ++row) {
        if (onlySelected && !selected[row])
            continue;
        DiscFile file{m_paths[files[row].id], {}};
        if (row < tracks.size())
            file.row = {tracks[row].cells[Track], tracks[row].cells[Title]};
        paired.push_back(std::move(file));
    }
    return paired;
}

} // namespace ravlin
