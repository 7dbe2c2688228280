// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/online/cddb/disccontents.h"
#include "core/platform/filesystem.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <stop_token>

namespace ravlin {

namespace platform {
class Workers;
}

/// Measures how long files play, on a thread of its own: the thread that the object lives in learns of each file by a
/// signal, in the order of the files, and of the end by another. Large files can be given up in the middle.
class PlayingTimes : public QObject
{
    Q_OBJECT

public:
    explicit PlayingTimes(platform::FileSystem &fileSystem = platform::FileSystem::native(), QObject *parent = nullptr);
    /// Cancels, and waits for the reading under way.
    ~PlayingTimes() override;

    /// Begins anew; what was begun before ends without further signals.
    void measure(const QStringList &paths);
    /// No further signal comes.
    void cancel();
    /// Cancels and deletes itself, now or, without keeping anybody waiting, once the reading under way has ended.
    void leave();

Q_SIGNALS:
    /// file: its place among the paths, from 0.
    void measured(int file, const ravlin::PlayedAudio &played);
    /// NoStream: it has no audio. Otherwise the errors of reading.
    void notMeasured(int file, const ravlin::Error &error);
    void finished();

private:
    void measureAll(const QStringList &paths, const std::stop_token &stop);
    void end(const std::stop_token &stop);

    platform::FileSystem &m_fileSystem;
    std::stop_source m_stop;
    int m_running = 0; ///< measurings whose end has not been told of yet
    bool m_isLeaving = false;
    std::unique_ptr<platform::Workers> m_worker; ///< from the first measuring on
};

} // namespace ravlin
