// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/controls/busy.h"

#include "ui/controls/esperate.h"
#include "ui/controls/inputbarrier.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QGuiApplication>
#include <QMutexLocker>
#include <QScopeGuard>
#include <QTimer>

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

void BusyProgress::step(const QString &file)
{
    ++m_done;
    tell(file);
}

void BusyProgress::setBytes(qint64 done, qint64 total, const QString &file)
{
    m_totalBytes = total;
    m_bytes = done;
    tell(file);
}

void BusyProgress::tell(const QString &file)
{
    if (file.isEmpty() || !m_fileLock.tryLock())
        return; // another thread is telling its file just now, which is as good
    m_file = file;
    m_fileLock.unlock();
}

QString BusyProgress::file()
{
    const QMutexLocker locked(&m_fileLock);
    return m_file;
}

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

bool Busy::run(int steps, std::optional<std::stop_source> stop, const std::function<void(BusyProgress &)> &work)
{
    if (m_running)
        return false;
    m_running = true;
    m_shownSteps = steps;
    m_shownDone = 0;
    m_waitWindow.setStoppable(stop.has_value());
    m_waitWindow.BeginProgress(steps);
    const QMetaObject::Connection stopping = connect(&m_waitWindow, &esperate::stopRequested, this, [&stop] {
        if (stop)
            stop->request_stop();
    });
    const auto backToNormal = qScopeGuard([this, &stopping] {
        disconnect(stopping);
        m_waitWindow.EndProgress();
        m_running = false;
    });

    const InputBarrier barrier(&m_waitWindow, m_mainWindow);
    BusyProgress progress(steps);
    Worker worker([&] { work(progress); });
    if (!worker.hasEnded(Unnoticed))
        keepPainting(progress, worker);
    show(progress);
    worker.throwWhatTheWorkThrew();
    return true;
}

void Busy::keepPainting(BusyProgress &progress, Worker &worker)
{
    QTimer poll;
    poll.callOnTimeout(this, [&] { show(progress); });
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

void Busy::show(BusyProgress &progress)
{
    if (const int steps = progress.m_steps; steps != m_shownSteps) {
        m_waitWindow.setSteps(steps);
        m_shownSteps = steps;
    }
    const int done = progress.m_done;
    m_waitWindow.advance(done - m_shownDone);
    m_shownDone = done;
    if (const qint64 total = progress.m_totalBytes; total > 0)
        m_waitWindow.setBytes(progress.m_bytes, total);
    if (const QString file = progress.file(); !file.isEmpty())
        m_waitWindow.setCurrentFile(file);
}

} // namespace ravlin
