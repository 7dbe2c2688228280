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

/// Looks up the disc that files make: measures how long they play, then asks the CD database of the settings. The user
/// may search by text instead at any moment; the files are measured all the same.
///
/// Works on the event loop of its thread and reports by signals. Files are numbered by their place among the paths,
/// from 0.
class DiscLookup : public QObject
{
    Q_OBJECT

public:
    DiscLookup(const Settings &settings, platform::FileSystem &fileSystem, QObject *parent);
    /// Does not wait for a drive that has to wake up.
    ~DiscLookup() override;

    /// Must be called once, first.
    void setFiles(const QStringList &paths);
    /// The order of the files on the disc, each file once. At first that of the paths.
    void setOrder(std::vector<int> files);
    /// Starts measuring, then asks the database unless a search came first. With more files than a disc has tracks it
    /// measures nothing and emits failed().
    void begin();
    /// Does nothing for a text without words.
    void search(const QString &text);
    /// No signal follows.
    void cancel();

    /// Whether an answer of the database is pending.
    bool isAsking() const;
    /// The disc that the files make, once all are measured and if they make one.
    std::optional<DiscContents> contents() const;
    uFREEDB &database() { return *m_database; }

Q_SIGNALS:
    void measured(int file, const ravlin::PlayedAudio &played);
    void notMeasured(int file, const ravlin::Error &error);
    /// Progress of the measuring, while the database is to be asked afterwards.
    void measuring(int done, int count);
    void measuringEnded();
    void askingBegan();

    // Each search, and begin() without one, ends with one of these:

    /// The disc cannot be looked up because this file, the first of such, could not be measured.
    void incomplete(int file, const ravlin::Error &error);
    void notFound();
    /// There are several matches: see database().
    void choiceOffered();
    /// Like failed(), also comes for each match that is read while the user chooses.
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
    std::vector<std::optional<PlayedAudio>> m_played; ///< by file, once measured
    std::vector<int> m_order;
    std::optional<Unmeasured> m_unmeasured; ///< the first one
    int m_measuredCount = 0;
    bool m_asksOnceMeasured = true; ///< no search came first
    uFREEDB *m_database;
    PlayingTimes *m_times;
};

} // namespace ravlin
