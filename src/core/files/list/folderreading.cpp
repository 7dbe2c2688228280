// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/list/folderreading.h"

#include "core/files/list/alignment.h"
#include "core/files/list/tagcache.h"
#include "core/platform/folder.h"
#include "core/platform/parallel.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <utility>

namespace ravlin {

namespace {

qint64 nanosecondsNow()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

/// Returns the old entries of the files in the order of names, with empty ones for new files. Usually both lists have
/// the same order but for a few names, and next to nothing is searched.
TagCache::Entries alignedEntries(TagCache::Entries old, const std::vector<QString> &names)
{
    TagCache::Entries aligned(names.size());
    const std::vector<std::size_t> positions = alignedPositions(old.size(), names.size(),
        [&](std::size_t former, std::size_t i) { return old[former].file.isNamed(names[i]); });
    std::vector<std::size_t> outOfOrder;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (positions[i] != NotAligned)
            aligned[i] = std::exchange(old[positions[i]], {});
        else
            outOfOrder.push_back(i);
    }
    if (outOfOrder.empty())
        return aligned;
    QHash<QString, std::size_t> left;
    for (std::size_t i = 0; i < old.size(); ++i) {
        if (const QString name = old[i].file.name(); !name.isEmpty()) // else it was moved out
            left.insert(name, i);
    }
    for (const std::size_t i : outOfOrder) {
        if (const auto found = left.constFind(names[i]); found != left.cend()) {
            aligned[i] = std::move(old[*found]);
            left.erase(found);
        } else {
            aligned[i].file = ListedFile(names[i]);
        }
    }
    return aligned;
}

/// One call of readFolders().
class FolderReading
{
public:
    FolderReading(std::vector<FolderFiles> folders, const ScanOptions &options);

    FolderRows run();

private:
    enum class Outcome : quint8
    {
        Missing, ///< failed or not reached
        Cached,
        Read
    };
    struct ScannedFolder
    {
        QString path;
        std::size_t firstRow = 0;
        std::vector<QString> names; ///< of its files
        TagCache::Entries entries;  ///< in the same order
    };
    /// Files of one folder that a thread reads in one go.
    struct Stretch
    {
        std::size_t folder = 0;
        std::size_t begin = 0; ///< within the folder
        std::size_t end = 0;
    };
    /// Enough that opening the folder once more costs nothing in comparison.
    static constexpr std::size_t LongestStretch = 64;

    qsizetype fileCount() const { return static_cast<qsizetype>(m_rows.size()); }
    void readStretch(const Stretch &stretch);
    Result<Outcome> readFile(
        const platform::Folder &folder, const QString &name, TagCache::Entry &entry, ListRow &row) const;
    void addFailure(std::size_t row, const QString &path, const Error &error);
    void updateCache();

    const ScanOptions &m_options;
    const qint64 m_startTime = nanosecondsNow();
    const std::thread::id m_caller = std::this_thread::get_id();
    std::vector<ScannedFolder> m_folders;
    std::vector<Stretch> m_stretches;
    std::vector<ListRow> m_rows;
    std::vector<Outcome> m_outcomes;
    std::atomic<qsizetype> m_done{0};
    std::mutex m_failuresMutex;
    std::vector<std::pair<std::size_t, ListFailure>> m_failures; ///< with the row
};

FolderReading::FolderReading(std::vector<FolderFiles> folders, const ScanOptions &options) : m_options(options)
{
    std::size_t fileCount = 0;
    for (const FolderFiles &folder : folders)
        fileCount += folder.names.size();
    m_rows.reserve(fileCount);
    m_folders.reserve(folders.size());
    for (FolderFiles &folder : folders) {
        ScannedFolder scanned{folder.path, m_rows.size(), std::move(folder.names), {}};
        const std::size_t count = scanned.names.size();
        scanned.entries =
            alignedEntries(options.cache ? options.cache->take(folder.path) : TagCache::Entries(), scanned.names);
        for (const TagCache::Entry &entry : scanned.entries)
            m_rows.push_back({folder.prefix, entry.file});
        for (std::size_t begin = 0; begin < count; begin += LongestStretch)
            m_stretches.push_back({m_folders.size(), begin, std::min(count, begin + LongestStretch)});
        m_folders.push_back(std::move(scanned));
    }
    m_outcomes.resize(fileCount, Outcome::Missing);
}

FolderRows FolderReading::run()
{
    platform::parallelFor(
        m_stretches.size(), [&](std::size_t i) { readStretch(m_stretches[i]); }, 1);
    if (m_options.progress && !m_rows.empty() && !m_options.stop.stop_requested())
        m_options.progress({fileCount(), fileCount(), m_rows.back().text()});
    if (m_options.cache)
        updateCache();

    FolderRows result;
    result.hasTag.reserve(m_outcomes.size());
    for (const Outcome outcome : m_outcomes) {
        result.hasTag.push_back(outcome != Outcome::Missing);
        result.readCount += outcome == Outcome::Read ? 1U : 0U;
    }
    const auto byRow = [](const auto &a, const auto &b) { return a.first < b.first; };
    std::sort(m_failures.begin(), m_failures.end(), byRow);
    for (auto &[row, failure] : m_failures)
        result.failures.push_back(std::move(failure));
    result.rows = std::move(m_rows);
    return result;
}

void FolderReading::readStretch(const Stretch &stretch)
{
    if (m_options.stop.stop_requested())
        return;
    ScannedFolder &scanned = m_folders[stretch.folder];
    const Result<platform::Folder> folder = platform::Folder::open(scanned.path);
    for (std::size_t i = stretch.begin; i < stretch.end; ++i) {
        if (m_options.stop.stop_requested())
            return;
        const std::size_t row = scanned.firstRow + i;
        TagCache::Entry &entry = scanned.entries[i];
        const Result<Outcome> outcome =
            folder ? readFile(*folder, scanned.names[i], entry, m_rows[row]) : tl::unexpected(folder.error());
        if (!outcome && outcome.error().code == ErrorCode::Cancelled)
            return;
        if (outcome)
            m_outcomes[row] = *outcome;
        else
            addFailure(row, scanned.path + scanned.names[i], outcome.error());
        ++m_done;
        if (m_options.progress && std::this_thread::get_id() == m_caller)
            m_options.progress({m_done, fileCount(), m_rows[row].prefix + scanned.names[i]});
    }
}

/// Asks for the state before reading the content: a change in between leaves a state that no file has any more, so the
/// next listing reads the file again.
Result<FolderReading::Outcome> FolderReading::readFile(
    const platform::Folder &folder, const QString &name, TagCache::Entry &entry, ListRow &row) const
{
    TagCache::FileState state;
    if (m_options.cache) {
        const Result<platform::FileInfo> info = folder.info(name);
        if (!info)
            return tl::unexpected(info.error());
        state = TagCache::FileState(*info);
        if (state == entry.state)
            return Outcome::Cached; // the row has the entry's texts
        if (!TagCache::isSettled(*info, m_startTime))
            state = {};
    }
    entry.state = {};
    const Result<std::unique_ptr<platform::File>> file = folder.openFile(name);
    if (!file)
        return tl::unexpected(file.error());
    const Result<ListFields> tag = readListFields(**file, m_options.stop);
    if (!tag)
        return tl::unexpected(tag.error());
    row.file = ListedFile(name, *tag);
    entry.file = row.file;
    entry.state = state;
    return Outcome::Read;
}

void FolderReading::addFailure(std::size_t row, const QString &path, const Error &error)
{
    const std::scoped_lock lock(m_failuresMutex);
    m_failures.push_back({row, {path, error}});
}

void FolderReading::updateCache()
{
    for (ScannedFolder &folder : m_folders) {
        // Files not reached keep their old state and tag, which are as good as before.
        std::erase_if(
            folder.entries, [](const TagCache::Entry &entry) { return entry.state == TagCache::FileState(); });
        m_options.cache->put(folder.path, std::move(folder.entries));
    }
}

} // namespace

FolderRows readFolders(std::vector<FolderFiles> folders, const ScanOptions &options)
{
    return FolderReading(std::move(folders), options).run();
}

} // namespace ravlin
