// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/online/matchdialog.h"

#include "core/app/idiomas.h"
#include "core/app/showntext.h"
#include "core/online/cddb/disccomparison.h"
#include "ui/controls/plain/plainlabel.h"

#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace ravlin {

namespace {

constexpr int MostReadAhead = 10; ///< discs
constexpr QSize StartSize(680, 480);

enum MatchColumn
{
    Artist,
    Album,
    Category,
    TrackCount,
    Fit
};

enum TrackColumn
{
    Track,
    Title,
    Time,
    Difference
};

QTreeWidget *table(const char *name, const QStringList &headers, const QSet<int> &wide, QWidget *parent)
{
    auto *tree = new QTreeWidget(parent);
    tree->setObjectName(QLatin1String(name));
    tree->setHeaderLabels(headers);
    tree->setRootIsDecorated(false);
    tree->setUniformRowHeights(true);
    tree->setAlternatingRowColors(true);
    tree->setAllColumnsShowFocus(true);
    tree->header()->setStretchLastSection(false);
    tree->header()->setHighlightSections(false);
    tree->header()->setSectionsMovable(false);
    for (int column = 0; column < headers.size(); ++column)
        tree->header()->setSectionResizeMode(
            column, wide.contains(column) ? QHeaderView::Stretch : QHeaderView::ResizeToContents);
    return tree;
}

void setRightAligned(QTreeWidgetItem *item, std::initializer_list<int> columns)
{
    for (const int column : columns)
        item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
}

bool isOfThisDiscOnly(LookupFailureKind kind)
{
    return kind == LookupFailureKind::NoEntry || kind == LookupFailureKind::BrokenEntry ||
           kind == LookupFailureKind::Garbage;
}

} // namespace

MatchDialog::MatchDialog(
    const Captions &captions, uFREEDB &database, std::optional<DiscContents> contents, QWidget *parent)
    : QDialog(parent), m_captions(captions), m_database(database), m_contents(std::move(contents)),
      m_candidates(static_cast<std::size_t>(database.result()))
{
    setObjectName(QStringLiteral("matchDialog"));
    setWindowTitle(captions.text(Text::MatchTitle));
    setWindowModality(Qt::WindowModal);
    setSizeGripEnabled(true);
    createControls(captions);
    listMatches();
    connect(&database, &uFREEDB::recordRead, this, &MatchDialog::recordRead);
    connect(&database, &uFREEDB::failed, this, &MatchDialog::failed);
    connect(m_matches, &QTreeWidget::currentItemChanged, this, &MatchDialog::currentChanged);
    connect(m_matches, &QTreeWidget::itemActivated, m_ok, &QPushButton::click);
    resize(StartSize);
    m_matches->setCurrentItem(m_matches->topLevelItem(0));
    m_matches->setFocus();
}

void MatchDialog::createControls(const Captions &captions)
{
    m_matches = table("matches",
        {captions.text(Caption::Artist), captions.text(Caption::Album), captions.text(Text::MatchCategory),
            captions.text(Text::MatchTracks), captions.text(Text::MatchDifference)},
        {Artist, Album}, this);
    m_matches->setAccessibleName(captions.text(Text::NameMatches));
    m_tracks = table("matchTracks",
        {captions.text(Caption::Track), captions.text(Caption::Title), captions.text(Caption::Time),
            captions.text(Text::MatchDifference)},
        {Title}, this);
    m_tracks->setAccessibleName(captions.text(Text::NameTracks));
    m_tracks->setSelectionMode(QAbstractItemView::NoSelection);
    m_status = new PlainLabel(this);
    m_status->setObjectName(QStringLiteral("matchStatus"));
    m_status->setWordWrap(true);
    m_ok = new QPushButton(captions.text(Caption::Ok), this);
    m_ok->setObjectName(QStringLiteral("matchOk"));
    m_ok->setDefault(true);
    m_ok->setEnabled(false);
    m_cancel = new QPushButton(captions.text(Caption::Cancel), this);
    m_cancel->setObjectName(QStringLiteral("matchCancel"));
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *foot = new QHBoxLayout;
    foot->addWidget(m_status, 1);
    foot->addWidget(m_ok);
    foot->addWidget(m_cancel);
    auto *rows = new QVBoxLayout(this);
    rows->addWidget(m_matches, 2);
    rows->addWidget(m_tracks, 3);
    rows->addLayout(foot);
}

void MatchDialog::listMatches()
{
    for (const cddb::Match &match : m_database.matches()) {
        auto *item = new QTreeWidgetItem(
            m_matches, {shownLine(match.artist), shownLine(match.album), shownLine(match.category)});
        setRightAligned(item, {TrackCount, Fit});
        item->setToolTip(Artist, item->text(Artist));
        item->setToolTip(Album, item->text(Album));
    }
}

const DiscRecord &MatchDialog::chosen() const
{
    return *m_candidates[static_cast<std::size_t>(current())].record;
}

void MatchDialog::done(int result)
{
    m_database.cancel();
    QDialog::done(result);
}

int MatchDialog::current() const
{
    return m_matches->indexOfTopLevelItem(m_matches->currentItem());
}

void MatchDialog::currentChanged()
{
    showTracks();
    const int match = current();
    if (match >= 0 && match != m_reading && !m_candidates[static_cast<std::size_t>(match)].record)
        take(match); // one that is being read comes later
}

void MatchDialog::take(int match)
{
    m_reading = match;
    m_candidates[static_cast<std::size_t>(match)].failure.reset();
    m_database.take(match);
    showTracks();
}

void MatchDialog::readNext()
{
    m_reading = -1;
    const auto end = m_candidates.begin() + std::min<std::ptrdiff_t>(MostReadAhead, std::ssize(m_candidates));
    const auto next = std::ranges::find_if_not(m_candidates.begin(), end, &Candidate::isSettled);
    if (m_readsAhead && next != end)
        take(static_cast<int>(next - m_candidates.begin()));
}

void MatchDialog::recordRead()
{
    const int match = m_reading;
    m_candidates[static_cast<std::size_t>(match)].record = m_database.record();
    showFit(match);
    readNext();
    showTracks();
}

void MatchDialog::failed(const LookupFailure &failure)
{
    m_candidates[static_cast<std::size_t>(m_reading)].failure = failure;
    m_readsAhead = m_readsAhead && isOfThisDiscOnly(failure.kind);
    readNext();
    showTracks();
}

std::vector<std::optional<qint64>> MatchDialog::differences(const DiscRecord &record) const
{
    return m_contents ? lengthDifferences(*m_contents, record) : std::vector<std::optional<qint64>>();
}

/// Shows the number of tracks and, if there are as many files, the largest difference.
void MatchDialog::showFit(int match)
{
    const DiscRecord &record = *m_candidates[static_cast<std::size_t>(match)].record;
    QTreeWidgetItem *item = m_matches->topLevelItem(match);
    item->setText(TrackCount, QString::number(record.tracks.size()));
    std::optional<qint64> worst;
    for (const std::optional<qint64> &difference : differences(record)) {
        if (difference && (!worst || std::abs(*difference) > std::abs(*worst)))
            worst = difference;
    }
    const bool areAsMany = m_contents && std::ssize(record.tracks) == m_contents->trackCount();
    item->setText(Fit, areAsMany ? shownDifference(worst) : QString());
}

void MatchDialog::showTracks()
{
    m_tracks->clear();
    const int match = current();
    if (match < 0)
        return;
    const Candidate &candidate = m_candidates[static_cast<std::size_t>(match)];
    m_ok->setEnabled(candidate.record.has_value());
    m_status->setText(candidate.failure ? lookupFailureText(m_captions, *candidate.failure) : QString());
    if (!candidate.record)
        return;
    const std::vector<std::optional<qint64>> differing = differences(*candidate.record);
    for (std::size_t i = 0; i < candidate.record->tracks.size(); ++i) {
        const QString title = shownLine(shownTitle(candidate.record->tracks[i]));
        const int index = static_cast<int>(i);
        auto *item = new QTreeWidgetItem(
            m_tracks, {QString::number(i + 1), title, shownTime(trackFrames(*candidate.record, index)),
                          i < differing.size() ? shownDifference(differing[i]) : QString()});
        setRightAligned(item, {Track, Time, Difference});
        item->setToolTip(Title, title);
    }
}

} // namespace ravlin
