// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"
#include "core/platform/filesystem.h"

#include <QObject>
#include <QStringList>

#include <stop_token>
#include <thread>

namespace ravlin {

/// Measures how long files play, on a thread of its own. Reports each file, in order, and the end by signals in the
/// thread of the object. Can stop in the middle of a large file.
class PlayingTimes : public QObject
{
    Q_OBJECT

public:
    explicit PlayingTimes(platform::FileSystem &fileSystem = platform::FileSystem::native(), QObject *parent = nullptr);
    /// Cancels, and waits for the current read.
    ~PlayingTimes() override;

    /// Starts anew; an earlier run ends without further signals.
    void measure(const QStringList &paths);
    /// No signal follows.
    void cancel();
    /// Cancels, and deletes itself once the current read has ended, without making the caller wait.
    void leave();

Q_SIGNALS:
    /// file: index of its path.
    void measured(int file, const ravlin::PlayedAudio &played);
    /// NoStream: the file has no audio. Otherwise an error of reading.
    void notMeasured(int file, const ravlin::Error &error);
    void finished();

private:
    void measureAll(const QStringList &paths, const std::stop_token &stop);
    void end(const std::stop_token &stop);

    platform::FileSystem &m_fileSystem;
    std::stop_source m_stop;
    int m_running = 0; ///< runs whose end was not reported yet
    bool m_isLeaving = false;
    std::jthread m_thread; ///< measures; last, so that it ends before the rest goes
};

} // namespace ravlin
