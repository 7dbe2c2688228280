// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/online/cddb/disclookup.h"

#include "core/app/programstate.h"
#include "core/online/cddb/playingtimes.h"
#include "core/online/cddb/ufreedb.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ravlin {

DiscLookup::DiscLookup(const Settings &settings, platform::FileSystem &fileSystem, QObject *parent)
    : QObject(parent), m_database(new uFREEDB(this)), m_times(new PlayingTimes(fileSystem, this))
{
    m_database->setObjectName(QStringLiteral("uFREEDB1"));
    configureDatabase(settings);
    connect(m_times, &PlayingTimes::measured, this, &DiscLookup::takeMeasure);
    connect(m_times, &PlayingTimes::notMeasured, this, &DiscLookup::takeFailure);
    connect(m_times, &PlayingTimes::finished, this, &DiscLookup::endMeasuring);
    connect(m_database, &uFREEDB::notFound, this, &DiscLookup::notFound);
    connect(m_database, &uFREEDB::choiceOffered, this, &DiscLookup::choiceOffered);
    connect(m_database, &uFREEDB::recordRead, this, [this] { Q_EMIT recordRead(m_database->record()); });
    connect(m_database, &uFREEDB::failed, this, &DiscLookup::failed);
}

DiscLookup::~DiscLookup()
{
    m_times->leave();
}

/// Sets everything, in the usual order of the component's users.
void DiscLookup::configureDatabase(const Settings &settings)
{
    m_database->setIgnoresProxy(false);
    m_database->setUsesProxyForThisComputer(false);
    m_database->setTimeLimit(0);
    m_database->setServer(cdServer(settings));
    m_database->setMail(cdMail(settings));
    m_database->setClientName(QStringLiteral("ravlin"));
    m_database->setClientVersion(QString::fromLatin1(RAVLIN_VERSION).section(u'.', 0, 1));
}

void DiscLookup::setFiles(const QStringList &paths)
{
    m_paths = paths;
    m_played.resize(static_cast<std::size_t>(paths.size()));
    m_order.resize(m_played.size());
    std::iota(m_order.begin(), m_order.end(), 0);
}

void DiscLookup::setOrder(std::vector<int> files)
{
    m_order = std::move(files);
}

void DiscLookup::begin()
{
    if (m_paths.size() <= MaximumTracks) {
        m_times->measure(m_paths);
        if (m_asksOnceMeasured)
            Q_EMIT measuring(0, static_cast<int>(m_paths.size()));
    } else if (m_asksOnceMeasured) {
        Q_EMIT failed(
            {LookupFailureKind::BadContents, QStringLiteral("a disc has no more than %1 tracks").arg(MaximumTracks)});
    }
}

void DiscLookup::takeMeasure(int file, const PlayedAudio &played)
{
    m_played[static_cast<std::size_t>(file)] = played;
    Q_EMIT measured(file, played);
    countMeasured();
}

void DiscLookup::takeFailure(int file, const Error &error)
{
    if (!m_unmeasured)
        m_unmeasured = {file, error};
    Q_EMIT notMeasured(file, error);
    countMeasured();
}

void DiscLookup::countMeasured()
{
    ++m_measuredCount;
    if (m_asksOnceMeasured)
        Q_EMIT measuring(m_measuredCount, static_cast<int>(m_paths.size()));
}

void DiscLookup::endMeasuring()
{
    Q_EMIT measuringEnded();
    if (!m_asksOnceMeasured)
        return;
    if (m_unmeasured)
        Q_EMIT incomplete(m_unmeasured->file, m_unmeasured->error);
    else
        askForDisc();
}

void DiscLookup::askForDisc()
{
    const std::vector<PlayedAudio> files = playedInOrder();
    m_database->Query(offsetText(files), offsetTextWithUsualDelay(files));
    Q_EMIT askingBegan();
}

void DiscLookup::search(const QString &text)
{
    if (cddb::SearchWords::of(text).isEmpty())
        return;
    m_asksOnceMeasured = false;
    m_database->setSearchText(text);
    m_database->Search();
    Q_EMIT askingBegan();
}

void DiscLookup::cancel()
{
    m_times->cancel();
    m_database->cancel();
}

bool DiscLookup::isAsking() const
{
    return m_database->isBusy();
}

std::vector<PlayedAudio> DiscLookup::playedInOrder() const
{
    std::vector<PlayedAudio> files;
    files.reserve(m_order.size());
    for (const int file : m_order)
        files.push_back(m_played[static_cast<std::size_t>(file)].value_or(PlayedAudio()));
    return files;
}

std::optional<DiscContents> DiscLookup::contents() const
{
    if (!std::ranges::all_of(m_played, &std::optional<PlayedAudio>::has_value))
        return {};
    const Result<DiscContents> contents = DiscContents::parse(offsetText(playedInOrder()));
    return contents ? std::optional(*contents) : std::nullopt;
}

} // namespace ravlin
