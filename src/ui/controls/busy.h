// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "ui/controls/esperate.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <optional>
#include <stop_token>

namespace ravlin {

/// Runs one operation at a time on a thread of its own while the windows keep painting and the wait window shows the
/// progress. To the caller it is a plain call: it returns when the work has ended.
///
/// Meanwhile the user's input reaches the wait window only. Input for other windows is dropped, and a request to close
/// the main window is carried out afterwards (InputBarrier); work that only reads is stopped for it. Timers and queued
/// calls do run: they must not change what the work uses. Used by the interface thread alone.
class Busy : public QObject
{
    Q_OBJECT

public:
    using Work = std::function<void(const ProgressReport &)>;

    /// Both windows must outlive it.
    Busy(esperate &waitWindow, QWidget *mainWindow, QObject *parent = nullptr);

    /// Returns false and does nothing while another operation runs.
    ///
    /// The work must not touch a widget, nor anything that the windows paint from. An exception that leaves it (out of
    /// memory) ends it and is thrown again from here once the windows are back to normal. If the system has no thread
    /// left, the work runs on this one.
    ///
    /// The work may report from any number of threads; a report takes well under a microsecond and never waits for the
    /// screen. The window shows bytes instead of steps if the work counts them. A reported total replaces steps.
    bool run(int steps, const Work &work) { return run(steps, esperate::Stopping::No, std::nullopt, work); }
    /// The same for work that can be stopped: the wait window gets a button that requests the stop from the source, as
    /// closing that window does.
    bool run(int steps, const std::stop_source &stop, const Work &work)
    {
        return run(steps, esperate::Stopping::ByButtonOrClosing, stop, work);
    }
    /// The same for work that changes nothing and can be stopped at any place: a request to close the main window stops
    /// it, too. Closing the wait window doesn't.
    bool runReading(int steps, const std::stop_source &stop, const Work &work)
    {
        return run(steps, esperate::Stopping::ByButton, stop, work);
    }

    bool isRunning() const { return m_running; }

private:
    class State;
    class Worker;

    bool run(int steps, esperate::Stopping way, std::optional<std::stop_source> stop, const Work &work);
    void keepPainting(State &state, Worker &worker);
    void show(State &state);

    esperate &m_waitWindow;
    QPointer<QWidget> m_mainWindow;
    bool m_running = false;
    int m_shownSteps = 0;
    int m_shownDone = 0;
};

} // namespace ravlin
