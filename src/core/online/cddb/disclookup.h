// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"
#include "core/online/cddb/lookupfailure.h"
#include "core/online/cddb/xmcdrecord.h"
#include "core/platform/filesystem.h"

#include <QObject>
#include <QStringList>

#include <optional>
#include <vector>

namespace ravlin {

class PlayingTimes;
class Settings;
class uFREEDB;

/// Looks for the disc that files make up: measures how long they play, then asks the CD database of the settings for
/// it. The user may search the database by a text instead, at any moment; the files are measured all the same.
///
/// Works on the event loop of its thread and tells of everything by signals; a file is told by its place among the
/// paths, from 0.
class DiscLookup : public QObject
{
    Q_OBJECT

public:
    DiscLookup(const Settings &settings, platform::FileSystem &fileSystem, QObject *parent);
    /// A drive that has to wake up first keeps nobody waiting.
    ~DiscLookup() override;

    /// To be called once, first.
    void setFiles(const QStringList &paths);
    /// The order in which the files make up the disc, that of the paths at first: each file once.
    void setOrder(std::vector<int> files);
    /// Begins to measure. The database is asked once that is done, unless a search has come before. More files than a
    /// disc has tracks are not measured: failed().
    void begin();
    /// Nothing happens for a text without words.
    void search(const QString &text);
    /// No further signal comes.
    void cancel();

    /// The database's answer is being waited for.
    bool isAsking() const;
    /// The disc that the files make up, as far as they are measured and make one.
    std::optional<DiscContents> contents() const;
    uFREEDB &database() { return *m_database; }

Q_SIGNALS:
    void measured(int file, const ravlin::PlayedAudio &played);
    void notMeasured(int file, const ravlin::Error &error);
    /// How far the measuring has come, while the database is to be asked afterwards.
    void measuring(int done, int count);
    void measuringEnded();
    void askingBegan();

    // Each search, and begin() without one, ends with one of these:

    /// This file, the first of those that could not be measured, keeps the disc from being asked for.
    void incomplete(int file, const ravlin::Error &error);
    void notFound();
    /// There are matches to be chosen from: see database().
    void choiceOffered();
    /// Comes for each match that is read while the user chooses, too; and so does failed().
    void recordRead(const ravlin::DiscRecord &record);
    void failed(const ravlin::LookupFailure &failure);

private:
    void configureDatabase(const Settings &settings);
    void takeMeasure(int file, const PlayedAudio &played);
    void takeFailure(int file, const Error &error);
    void countMeasured();
    void endMeasuring();
    void askForDisc();
    std::vector<PlayedAudio> playedInOrder() const;

    struct Unmeasured
    {
        int file = 0;
        Error error;
    };

    QStringList m_paths;
    std::vector<std::optional<PlayedAudio>> m_played; ///< by the place of the path, as far as measured
    std::vector<int> m_order;
    std::optional<Unmeasured> m_unmeasured; ///< the first one
    int m_measuredCount = 0;
    bool m_asksOnceMeasured = true; ///< no search has taken the question's place
    uFREEDB *m_database;
    PlayingTimes *m_times;
};

} // namespace ravlin
