// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/busy.h"

#include "ui/controls/inputbarrier.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QGuiApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QScopeGuard>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <future>
#include <system_error>
#include <thread>
#include <utility>

using namespace std::chrono_literals;

namespace ravlin {

namespace {

/// Work as short as this ends before anybody could see the windows stand still; no event loop is set going for it.
constexpr std::chrono::milliseconds Unnoticed = 10ms;
constexpr std::chrono::milliseconds PollInterval = 40ms;

} // namespace

/// What the work reported last, for the interface thread to look at.
class Busy::State
{
public:
    explicit State(int steps) : m_steps(steps) {}

    void take(const Progress &now)
    {
        if (now.bytesTotal > 0) {
            m_bytesTotal = now.bytesTotal;
            m_bytesDone = now.bytesDone;
            takeFile(now.path);
            return;
        }
        if (now.total > 0)
            m_steps = static_cast<int>(now.total);
        if (raise(static_cast<int>(now.done)))
            takeFile(now.path);
    }

    int steps() const { return m_steps; }
    int done() const { return m_done; }
    qint64 bytesDone() const { return m_bytesDone; }
    qint64 bytesTotal() const { return m_bytesTotal; }
    QString file()
    {
        const QMutexLocker locked(&m_fileLock);
        return m_file;
    }

private:
    /// Returns false if as many steps were reported before.
    bool raise(int done)
    {
        int former = m_done;
        while (former < done && !m_done.compare_exchange_weak(former, done)) {
        }
        return former < done;
    }

    void takeFile(const QString &file)
    {
        if (file.isEmpty() || !m_fileLock.tryLock())
            return; // another thread's file is as good
        m_file = file;
        m_fileLock.unlock();
    }

    std::atomic<int> m_steps;
    std::atomic<int> m_done{0};
    std::atomic<qint64> m_bytesDone{0};
    std::atomic<qint64> m_bytesTotal{0}; ///< 0: steps are counted
    QMutex m_fileLock;
    QString m_file;
};

/// The work on its thread. The interface thread is woken when it has ended; destroying it waits for that.
class Busy::Worker
{
public:
    explicit Worker(std::function<void()> work) : m_task(std::move(work)), m_ended(m_task.get_future())
    {
        try {
            m_thread = std::jthread([this, waiting = QAbstractEventDispatcher::instance()] {
                m_task();
                waiting->wakeUp();
            });
        } catch (const std::system_error &) {
            m_task();
        }
    }

    bool hasEnded(std::chrono::milliseconds within = 0ms) const
    {
        return m_ended.wait_for(within) == std::future_status::ready;
    }

    void throwWhatTheWorkThrew() { m_ended.get(); }

private:
    std::packaged_task<void()> m_task;
    std::future<void> m_ended;
    std::jthread m_thread;
};

Busy::Busy(esperate &waitWindow, QWidget *mainWindow, QObject *parent)
    : QObject(parent), m_waitWindow(waitWindow), m_mainWindow(mainWindow)
{
}

bool Busy::run(int steps, esperate::Stopping way, std::optional<std::stop_source> stop, const Work &work)
{
    if (m_running)
        return false;
    m_running = true;
    m_shownSteps = steps;
    m_shownDone = 0;
    m_waitWindow.setStopping(way);
    m_waitWindow.BeginProgress(steps);
    const auto requestStop = [&stop] {
        if (stop)
            stop->request_stop();
    };
    const QMetaObject::Connection stopping = connect(&m_waitWindow, &esperate::stopRequested, this, requestStop);
    const auto backToNormal = qScopeGuard([this, &stopping] {
        disconnect(stopping);
        m_waitWindow.EndProgress();
        m_running = false;
    });

    const bool endsWithTheWindow = way == esperate::Stopping::ByButton;
    const InputBarrier barrier(
        &m_waitWindow, m_mainWindow, endsWithTheWindow ? std::function<void()>(requestStop) : std::function<void()>());
    State state(steps);
    Worker worker([&] { work([&state](const Progress &now) { state.take(now); }); });
    if (!worker.hasEnded(Unnoticed))
        keepPainting(state, worker);
    show(state);
    worker.throwWhatTheWorkThrew();
    return true;
}

void Busy::keepPainting(State &state, Worker &worker)
{
    QTimer poll;
    poll.callOnTimeout(this, [&] { show(state); });
    poll.start(PollInterval);

    bool cursorSet = false;
    QTimer::singleShot(esperate::ShowDelay, &poll, [&] {
        QGuiApplication::setOverrideCursor(Qt::BusyCursor);
        cursorSet = true;
    });

    // Not exec(): a quit() meanwhile ends the loops outside, this one has to go on until the work has ended.
    QEventLoop events;
    while (!worker.hasEnded())
        events.processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    events.processEvents(); // what the user did until now was meant for the windows at work, so drop that, too

    if (cursorSet)
        QGuiApplication::restoreOverrideCursor();
}

void Busy::show(State &state)
{
    if (const int steps = state.steps(); steps != m_shownSteps) {
        m_waitWindow.setSteps(steps);
        m_shownSteps = steps;
    }
    const int done = state.done();
    m_waitWindow.advance(done - m_shownDone);
    m_shownDone = done;
    if (const qint64 total = state.bytesTotal(); total > 0)
        m_waitWindow.setBytes(state.bytesDone(), total);
    if (const QString file = state.file(); !file.isEmpty())
        m_waitWindow.setCurrentFile(file);
}

} // namespace ravlin
