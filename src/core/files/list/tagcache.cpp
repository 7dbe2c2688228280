// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/tagcache.h"

namespace ravlin {

namespace {

constexpr qint64 Second = 1'000'000'000;
/// Kernels stamp files with a clock that ticks at least every 16 ms.
constexpr qint64 FineStampMargin = Second / 10;
/// FAT counts in steps of two seconds, some network file systems in whole seconds.
constexpr qint64 CoarseStampMargin = 3 * Second;

} // namespace

bool TagCache::isSettled(const platform::FileInfo &info, qint64 now)
{
    const bool isCoarse = info.changed % Second == 0;
    return info.changed < now - (isCoarse ? CoarseStampMargin : FineStampMargin);
}

TagCache::Entries TagCache::take(const QString &folderPath)
{
    const auto found = m_folders.find(folderPath);
    if (found == m_folders.end())
        return {};
    Entries entries = std::move(found->entries);
    m_size -= entries.size();
    m_byLastUse.erase(found->lastUse);
    m_folders.erase(found);
    return entries;
}

void TagCache::put(const QString &folderPath, Entries entries)
{
    take(folderPath);
    if (entries.empty() || entries.size() > m_capacity)
        return;
    while (m_size + entries.size() > m_capacity) {
        const QString oldest = m_byLastUse.begin()->second;
        take(oldest);
    }
    m_size += entries.size();
    m_byLastUse.emplace(++m_clock, folderPath);
    m_folders[folderPath] = {std::move(entries), m_clock};
}

void TagCache::clear()
{
    m_folders.clear();
    m_byLastUse.clear();
    m_size = 0;
}

} // namespace ravlin
