// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/foldercopy.h"
#include "core/platform/path.h"

#include <QScopeGuard>

namespace ravlin {

using platform::Node;
using platform::NodeKind;

Result<void> CopyQueue::add(const CopiedNode &copied, const QString &tag, bool replaces)
{
    auto copy = storage::FileCopy::prepare(m_fileSystem, copied.source, platform::folderOf(copied.target), m_watch);
    if (!copy)
        return tl::unexpected(copy.error());
    Pending &pending = m_pending.emplace_back(Pending{{copied, tag, replaces, {}}, std::move(*copy), {}});
    const auto placing = replaces ? storage::Placing::InPlaceOf : storage::Placing::New;
    // Deferred only if the system has no threads left: then settle() does the work.
    pending.outcome = std::async(std::launch::async | std::launch::deferred, [this, &pending, placing] {
        m_mayWait.acquire();
        const auto ended = qScopeGuard([this] { m_mayWait.release(); });
        return pending.copy.secure(m_check).and_then(
            [&] { return pending.copy.place(pending.result.copied.target, placing); });
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

Result<void> FolderCopy::copy(const CopiedNode &folder)
{
    auto filled = fill(folder);
    // Even after a failure: no copy may be running when the folder is discarded.
    auto settled = settle();
    if (!filled)
        return filled;
    if (!settled)
        return settled;
    return finishFolders();
}

Result<void> FolderCopy::fill(const CopiedNode &folder)
{
    m_folders.push_front(folder);
    const auto names = m_fileSystem.names(folder.source);
    if (!names)
        return tl::unexpected(names.error());
    for (const QString &name : *names) {
        const QString source = platform::inFolder(folder.source, name);
        if (m_stop.stop_requested())
            return tl::unexpected(Error{ErrorCode::Cancelled, source, QStringLiteral("stopped")});
        const auto node = platform::nodeAt(source);
        if (!node)
            return tl::unexpected(node.error());
        if (auto taken = take({source, platform::inFolder(folder.target, name), *node}); !taken)
            return taken;
    }
    return {};
}

Result<void> FolderCopy::take(const CopiedNode &entry)
{
    switch (entry.node.kind) {
    case NodeKind::File:
        if (m_queue.isFull()) {
            if (auto settled = settle(); !settled)
                return settled;
        }
        return m_queue.add(entry, {}, false);
    case NodeKind::Link:
        m_others.push_back(entry);
        return platform::copyLink(entry.source, entry.target).and_then([&] {
            return platform::takeAttributes(entry.source, entry.target);
        });
    case NodeKind::Folder:
        return m_fileSystem.createFolder(entry.target).and_then([&] { return fill(entry); });
    case NodeKind::Other:
        break;
    }
    return tl::unexpected(Error{ErrorCode::NotAFile, entry.source, QStringLiteral("a device, pipe or socket")});
}

Result<void> FolderCopy::settle()
{
    Result<void> outcome;
    for (CopyQueue::Settled &settled : m_queue.settle()) {
        if (settled.outcome)
            m_others.push_back(settled.copied);
        else if (outcome)
            outcome = settled.outcome;
    }
    return outcome;
}

/// From the innermost outwards, since changes to a folder's entries change its time.
Result<void> FolderCopy::finishFolders()
{
    for (const CopiedNode &folder : m_folders) {
        auto finished = platform::takeAttributes(folder.source, folder.target).and_then([&] {
            return m_fileSystem.syncFolder(folder.target);
        });
        // A folder that may not be read can't be opened to sync it. Don't give up the copy for that.
        if (!finished && finished.error().code != ErrorCode::AccessDenied)
            return finished;
    }
    return {};
}

Result<void> FolderCopy::removeSource()
{
    for (const CopiedNode &other : m_others) {
        if (auto removed = removeCopied(m_fileSystem, other); !removed)
            return removed;
    }
    for (const CopiedNode &folder : m_folders) {
        // Fails if something was added since: the folder is not empty.
        if (auto removed = m_fileSystem.removeFolder(folder.source); !removed)
            return removed;
    }
    return {};
}

Result<void> removeCopied(platform::FileSystem &fileSystem, const CopiedNode &copied)
{
    const auto now = platform::nodeAt(copied.source);
    if (!now)
        return tl::unexpected(now.error());
    const bool isUnchanged = now->kind == copied.node.kind && now->isSameAs(copied.node) &&
                             now->info.size == copied.node.info.size && now->info.modified == copied.node.info.modified;
    if (!isUnchanged)
        return tl::unexpected(
            Error{ErrorCode::ChangedMeanwhile, copied.source, QStringLiteral("it was copied, but has changed since")});
    return fileSystem.remove(copied.source);
}

} // namespace ravlin
