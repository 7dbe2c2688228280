// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/foldercopy.h"

#include <QScopeGuard>

namespace ravlin {

using platform::Node;
using platform::NodeKind;

Result<void> CopyQueue::add(const CopiedNode &copied, const TransferItem *item)
{
    auto copy = storage::FileCopy::prepare(copied.source, copied.target.folder, m_watch);
    if (!copy)
        return tl::unexpected(copy.error());
    Pending &pending = m_pending.emplace_back(Pending{{copied, item, {}}, std::move(*copy), {}});
    const bool replaces = item != nullptr && item->replaces();
    // Deferred only if the system has no threads left: then settle() does the work.
    pending.outcome = std::async(std::launch::async | std::launch::deferred, [this, &pending, replaces] {
        m_mayWait.acquire();
        const auto ended = qScopeGuard([this] { m_mayWait.release(); });
        const platform::Place &target = pending.result.copied.target;
        return pending.copy.secure(m_check).and_then([&] {
            return putInPlace(
                target, replaces, [&](storage::Placing placing) { return pending.copy.place(target.name, placing); });
        });
    });
    return {};
}

std::vector<CopyQueue::Settled> CopyQueue::settle()
{
    std::vector<Settled> settled;
    settled.reserve(m_pending.size());
    for (Pending &pending : m_pending) {
        pending.result.outcome = pending.outcome.get();
        settled.push_back(std::move(pending.result));
    }
    m_pending.clear(); // removes the temporary files of those that failed
    return settled;
}

Result<void> FolderCopy::copy()
{
    const auto source = m_place.folder->openFolder(m_place.name);
    if (!source)
        return tl::unexpected(source.error());
    m_source = *source;
    const auto from = m_source->info();
    const auto to = m_target->info();
    if (!from || !to)
        return tl::unexpected(from ? to.error() : from.error());
    m_levels.push_back({0, {}, *from, *to, {}});
    auto filled = fill(0, m_source, m_target);
    // Even after a failure: no copy may be running when the folder is discarded.
    auto settled = settle();
    if (!filled)
        return filled;
    if (!settled)
        return settled;
    return finishFolders();
}

Result<void> FolderCopy::fill(std::size_t level, const FolderPointer &source, const FolderPointer &target)
{
    const auto names = source->names();
    if (!names)
        return tl::unexpected(names.error());
    for (const QString &name : *names) {
        const CopiedNode entry{{source, name}, {target, name}, {}, level};
        if (m_stop.stop_requested())
            return tl::unexpected(Error{ErrorCode::Cancelled, entry.source.path(), QStringLiteral("stopped")});
        if (auto taken = take(level, entry); !taken)
            return taken;
    }
    return {};
}

Result<void> FolderCopy::take(std::size_t level, const CopiedNode &found)
{
    CopiedNode entry = found;
    const auto node = entry.source.folder->node(entry.source.name);
    if (!node)
        return tl::unexpected(node.error());
    entry.node = *node;
    switch (node->kind) {
    case NodeKind::File:
        if (m_queue.isFull()) {
            if (auto settled = settle(); !settled)
                return settled;
        }
        return m_queue.add(entry, nullptr);
    case NodeKind::Link:
        m_levels[level].copied.push_back({entry.source.name, *node});
        return entry.target.folder->copyLink(*entry.source.folder, entry.source.name, entry.target.name);
    case NodeKind::Folder:
        return takeFolder(level, entry);
    case NodeKind::Other:
        break;
    }
    return tl::unexpected(Error{ErrorCode::NotAFile, entry.source.path(), QStringLiteral("a device, pipe or socket")});
}

Result<void> FolderCopy::takeFolder(std::size_t level, const CopiedNode &entry)
{
    const auto source = entry.source.folder->openFolder(entry.source.name);
    if (!source)
        return tl::unexpected(source.error());
    const auto target = entry.target.folder->createFolder(entry.target.name);
    if (!target)
        return tl::unexpected(target.error());
    const auto from = (*source)->info();
    const auto to = (*target)->info();
    if (!from || !to)
        return tl::unexpected(from ? to.error() : from.error());
    m_levels.push_back({level, entry.source.name, *from, *to, {}});
    return fill(m_levels.size() - 1, *source, *target);
}

Result<void> FolderCopy::settle()
{
    Result<void> outcome;
    for (CopyQueue::Settled &settled : m_queue.settle()) {
        if (settled.outcome)
            m_levels[settled.copied.level].copied.push_back({settled.copied.source.name, settled.copied.node});
        else if (outcome)
            outcome = tl::unexpected(settled.outcome.error());
    }
    return outcome;
}

Result<FolderCopy::FolderPointer> FolderCopy::reopen(std::size_t level, Side side) const
{
    if (level == 0)
        return side == Side::Source ? m_source : m_target;
    const Level &wanted = m_levels[level];
    const auto above = reopen(wanted.above, side);
    if (!above)
        return above;
    auto folder = (*above)->openFolder(wanted.name);
    if (!folder)
        return folder;
    const auto info = (*folder)->info();
    if (!info)
        return tl::unexpected(info.error());
    const platform::FileInfo &known = side == Side::Source ? wanted.source : wanted.target;
    if (info->inode != known.inode || info->device != known.device)
        return tl::unexpected(Error{
            ErrorCode::ChangedMeanwhile, (*folder)->path(), QStringLiteral("another folder has taken its place")});
    return folder;
}

/// From the innermost outwards, since changes to a folder's entries change its time.
Result<void> FolderCopy::finishFolders()
{
    for (std::size_t level = m_levels.size(); level-- > 0;) {
        const auto source = reopen(level, Side::Source);
        const auto target = reopen(level, Side::Target);
        if (!source || !target)
            return tl::unexpected(source ? target.error() : source.error());
        auto finished = (*target)->takeAttributes(**source).and_then([&] { return (*target)->sync(); });
        if (!finished)
            return finished;
    }
    return {};
}

Result<void> FolderCopy::removeSource()
{
    for (std::size_t level = m_levels.size(); level-- > 0;) {
        const auto folder = reopen(level, Side::Source);
        if (!folder)
            return tl::unexpected(folder.error());
        for (const CopiedName &copied : m_levels[level].copied) {
            if (auto removed = removeCopied(**folder, copied.name, copied.node); !removed)
                return removed;
        }
        const auto above =
            level == 0 ? Result<FolderPointer>(m_place.folder) : reopen(m_levels[level].above, Side::Source);
        if (!above)
            return tl::unexpected(above.error());
        // Fails if something was added since: the folder is not empty.
        if (auto removed = (*above)->removeFolder(level == 0 ? m_place.name : m_levels[level].name); !removed)
            return removed;
    }
    return {};
}

Result<void> removeCopied(platform::HeldFolder &folder, const QString &name, const platform::Node &copied)
{
    const auto now = folder.node(name);
    if (!now)
        return tl::unexpected(now.error());
    const bool isUnchanged = now->kind == copied.kind && now->isSameAs(copied) && now->info.size == copied.info.size &&
                             now->info.modified == copied.info.modified;
    if (!isUnchanged)
        return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, platform::inFolder(folder.path(), name),
            QStringLiteral("it was copied, but has changed since")});
    return folder.remove(name);
}

} // namespace ravlin
