// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

#include <functional>
#include <stop_token>

namespace ravlin {

/// How far long work has come.
struct Progress
{
    qsizetype done = 0;    ///< steps, which are files or rows
    qsizetype total = 0;   ///< 0: not known; may grow
    QString path = {};     ///< what is being worked on; empty: not known
    qint64 bytesDone = 0;  ///< of work that also counts bytes
    qint64 bytesTotal = 0; ///< 0: it doesn't count them
};

/// Receives the progress, on the thread that works. Work that takes one accepts an empty one.
using ProgressReport = std::function<void(const Progress &)>;

/// How work that can be stopped reports and learns of the stop.
struct Watch
{
    ProgressReport progress = {};
    std::stop_token stop = {};

    void report(const Progress &now) const
    {
        if (progress)
            progress(now);
    }
};

} // namespace ravlin
