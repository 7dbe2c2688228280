// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace ravlin::platform {

/// A few threads that do the waiting for the disk while the caller goes on. Jobs must not throw.
class Workers
{
public:
    /// Where the system has no threads left, jobs run on the caller's.
    explicit Workers(std::size_t count);
    /// Waits for the jobs that were submitted.
    ~Workers();
    Workers(const Workers &) = delete;
    Workers &operator=(const Workers &) = delete;

    void submit(std::function<void()> job);
    /// Returns when no job is left.
    void drain();

private:
    void work();

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_jobs;
    std::size_t m_running = 0;
    bool m_isEnding = false;
    std::vector<std::thread> m_threads;
};

} // namespace ravlin::platform
