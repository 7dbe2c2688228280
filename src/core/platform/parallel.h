// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <system_error>
#include <thread>
#include <vector>

namespace ravlin::platform {

/// Calls work(index) for every index below count, on all cores, and returns when all are done. The order is
/// unspecified; each call must write to places of its own and must not throw. The calling thread takes part, alone if
/// the system has no threads left. A thread takes chunkSize indices at a time (at least 1), enough to make the cost of
/// taking them negligible; a count up to that runs on the calling thread alone.
template <typename Work>
void parallelFor(std::size_t count, Work work, std::size_t chunkSize = 32)
{
    const std::size_t chunks = (count + chunkSize - 1) / chunkSize;
    const std::size_t threads = std::min<std::size_t>(std::max(1U, std::thread::hardware_concurrency()), chunks);
    std::atomic<std::size_t> nextChunk{0};
    const auto run = [&] {
        for (std::size_t chunk = nextChunk++; chunk < chunks; chunk = nextChunk++) {
            const std::size_t end = std::min(count, (chunk + 1) * chunkSize);
            for (std::size_t index = chunk * chunkSize; index < end; ++index)
                work(index);
        }
    };
    std::vector<std::jthread> helpers;
    try {
        while (helpers.size() + 1 < threads)
            helpers.emplace_back(run);
    } catch (const std::system_error &) { // those that have started do it all
    }
    run();
}

} // namespace ravlin::platform
