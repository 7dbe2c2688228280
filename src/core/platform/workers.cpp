// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/platform/workers.h"

#include <system_error>
#include <utility>

namespace ravlin::platform {

Workers::Workers(std::size_t count)
{
    m_threads.reserve(count);
    try {
        while (m_threads.size() < count)
            m_threads.emplace_back([this] { work(); });
    } catch (const std::system_error &) {
        // Fewer, or none: see submit.
    }
}

Workers::~Workers()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void Workers::submit(std::function<void()> job)
{
    if (m_threads.empty()) {
        job();
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_changed.notify_all();
}

void Workers::drain()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_jobs.empty() && m_running == 0; });
}

void Workers::work()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_isEnding || !m_jobs.empty(); });
        if (m_jobs.empty())
            return;
        std::function<void()> job = std::move(m_jobs.front());
        m_jobs.pop_front();
        ++m_running;
        lock.unlock();
        job();
        job = nullptr;
        lock.lock();
        --m_running;
        m_changed.notify_all();
    }
}

} // namespace ravlin::platform
