// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMutex>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <atomic>
#include <functional>
#include <optional>
#include <stop_token>

namespace ravlin {

class esperate;

/// How far the work of a Busy has come. The work may call it from any number of threads; a call takes well under a
/// microsecond and never waits for the screen.
class BusyProgress
{
public:
    /// One more step is done. The file at work is shown from now on, unless it is empty.
    void step(const QString &file = {});
    /// For work that learns only on its way how many steps it has.
    void setSteps(int steps) { m_steps = steps; }
    /// Instead of steps: bytes done, out of so many. The file at work is shown from now on, unless it is empty.
    void setBytes(qint64 done, qint64 total, const QString &file);

private:
    friend class Busy;

    explicit BusyProgress(int steps) : m_steps(steps) {}
    QString file();
    void tell(const QString &file);

    std::atomic<int> m_done{0};
    std::atomic<int> m_steps;
    std::atomic<qint64> m_bytes{0};
    std::atomic<qint64> m_totalBytes{0}; ///< 0: steps are counted
    QMutex m_fileLock;
    QString m_file;
};

/// Runs one operation at a time on a thread of its own while the windows go on painting and the wait window tells how
/// far it has come. For the caller it is a plain call: it returns when the work has ended.
///
/// The user's input meanwhile reaches the wait window only; input for other windows is dropped, and a request to close
/// the main window is carried out afterwards (InputBarrier). Timers and queued calls do run: they must not change what
/// the work uses. Used by the interface thread alone.
class Busy : public QObject
{
    Q_OBJECT

public:
    /// Both windows must outlive it.
    Busy(esperate &waitWindow, QWidget *mainWindow, QObject *parent = nullptr);

    /// False, without having done anything, while another operation is at work.
    ///
    /// The work must not touch any widget, nor anything that the windows paint from. An exception that leaves it
    /// (memory running out) ends it and is thrown again from here, when the windows are back to normal. Where the
    /// system has no thread to give, the work is done on this one.
    bool run(int steps, const std::function<void(BusyProgress &)> &work) { return run(steps, std::nullopt, work); }
    /// The same for work that can be stopped: the wait window then has a button that requests it of the source.
    bool run(int steps, std::optional<std::stop_source> stop, const std::function<void(BusyProgress &)> &work);

    bool isRunning() const { return m_running; }

private:
    class Worker;

    void keepPainting(BusyProgress &progress, Worker &worker);
    void show(BusyProgress &progress);

    esperate &m_waitWindow;
    QPointer<QWidget> m_mainWindow;
    bool m_running = false;
    int m_shownSteps = 0;
    int m_shownDone = 0;
};

} // namespace ravlin
