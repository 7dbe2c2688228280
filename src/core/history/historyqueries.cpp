// SPDX-License-Identifier: GPL-3.0-or-later
// What a history is asked for, and the frame in which changes are taken back.
#include "core/history/history.h"

#include "core/history/store.h"
#include "core/platform/path.h"

#include <tuple>

namespace ravlin::history {
namespace {

constexpr qsizetype MostRedo = 100; ///< that are looked at for one whose files are as they were

} // namespace

template <typename Found>
Result<Found> History::query(const std::function<Result<Found>(Store &)> &find)
{
    if (!m_queue.empty() || !m_endings.empty()) {
        if (const auto flushed = change([](Store &) { return Result<void>(); }); !flushed)
            return tl::unexpected(flushed.error());
    }
    Store *const open = store(false);
    if (open == nullptr)
        return m_problem ? Result<Found>(tl::unexpected(*m_problem)) : Found();
    auto found = find(*open);
    if (!found && found.error().code == ErrorCode::Damaged)
        std::ignore = setAside();
    return found;
}

Result<std::vector<Entry>> History::entries(const Query &wanted)
{
    return query<std::vector<Entry>>([&](Store &store) { return store.entries(wanted); });
}

Result<std::optional<Entry>> History::entry(qint64 id)
{
    return query<std::optional<Entry>>([&](Store &store) { return store.entry(id); });
}

Result<std::vector<FileRecord>> History::files(qint64 entry)
{
    return query<std::vector<FileRecord>>([&](Store &store) { return store.files(entry); });
}

Result<std::optional<Entry>> History::nextUndo()
{
    return query<std::optional<Entry>>([](Store &store) { return store.nextUndo(); });
}

Result<std::optional<Entry>> History::nextRedo()
{
    return query<std::optional<Entry>>([](Store &store) -> Result<std::optional<Entry>> {
        const auto candidates = store.reverting(MostRedo);
        if (!candidates)
            return tl::unexpected(candidates.error());
        for (const Entry &candidate : *candidates) {
            const auto later = store.laterOnSameFiles(candidate.id);
            if (!later)
                return tl::unexpected(later.error());
            if (later->empty())
                return candidate;
        }
        return std::nullopt;
    });
}

Result<std::vector<Entry>> History::laterOnSameFiles(qint64 entry, const std::set<qint64> &onlyFiles)
{
    return query<std::vector<Entry>>([&](Store &store) { return store.laterOnSameFiles(entry, onlyFiles); });
}

Result<std::vector<StoredChange>> History::changesToUndo(qint64 entry, const std::set<qint64> &onlyFiles)
{
    auto changes = query<std::vector<StoredChange>>([&](Store &store) { return store.changes(entry); });
    if (changes && !onlyFiles.empty())
        std::erase_if(*changes, [&](const StoredChange &one) { return !onlyFiles.contains(one.record.id); });
    return changes;
}

Result<QString> History::presentPath(qint64 change, const QString &path)
{
    // Of an earlier entry, so nothing that waits for the database matters.
    Store *const open = store(false);
    const auto entry = open != nullptr ? open->entryOf(change) : Result<qint64>(0);
    if (!entry)
        return tl::unexpected(entry.error());
    if (!m_moves || change < m_movesSince || !m_isOpen) {
        auto moves = query<std::vector<MovedPath>>([&](Store &store) { return store.movesSince(change); });
        if (!moves)
            return tl::unexpected(moves.error());
        m_moves = std::move(*moves);
        m_movesSince = change;
    }
    QString present = path;
    qint64 last = 0; // an entry renames a file once: within it, names may swap
    for (const MovedPath &move : *m_moves) {
        if (move.change <= change || move.entry == *entry)
            continue;
        const bool isBelow = move.isFolder && present.startsWith(platform::withEndSeparator(move.from));
        if (!isBelow && (present != move.from || move.entry == last))
            continue;
        present = move.to + present.sliced(move.from.size());
        last = isBelow ? last : move.entry;
    }
    return present;
}

void History::beginReverting(qint64 entry)
{
    const auto files = this->files(entry);
    beginEntry(Kind::Single, {});
    m_reverts = entry;
    const auto original = query<qint64>([&](Store &store) { return store.original(entry); });
    if (const auto taken = this->entry(original.value_or(entry)); taken && *taken) {
        m_summary.entry.kind = (*taken)->kind;
        m_summary.entry.folder = (*taken)->folder;
    }
    for (const FileRecord &file : files.value_or(std::vector<FileRecord>()))
        m_toRevert.emplace(file.id, file);
}

void History::reverting(qint64 change)
{
    m_reverting = change;
}

Summary History::endReverting(bool isTried)
{
    const qint64 entry = m_reverts;
    m_summary.entry.fileCount = m_summary.doneCount;
    if (m_store) {
        std::ignore = change([&](Store &store) -> Result<void> {
            // Of a repetition the first one is meant.
            const auto original = store.original(entry);
            if (!original)
                return tl::unexpected(original.error());
            const bool isUndo = *original == entry;
            return store.setTried(*original, isUndo && isTried).and_then([&] { return store.removeEmpty(); });
        });
    }
    return close();
}

qint64 History::size()
{
    return query<qint64>([](Store &store) { return store.size(); }).value_or(0);
}

} // namespace ravlin::history
