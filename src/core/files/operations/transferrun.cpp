// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/foldercopy.h"
#include "core/storage/saferename.h"

#include "core/platform/path.h"
#include "core/storage/leftovers.h"

#include <QSet>

namespace ravlin {

namespace {

using platform::NodeKind;

/// How far a transfer has come.
class ProgressCounter
{
public:
    ProgressCounter(const TransferPlan &plan, const Watch &watch) : m_watch(watch)
    {
        m_now.total = static_cast<qsizetype>(plan.items.size());
        for (const TransferItem &item : plan.items)
            m_now.bytesTotal += item.error || item.isSkipped() ? 0 : item.bytes;
    }

    void begin(const QString &path)
    {
        m_now.path = path;
        m_watch.report(m_now);
    }
    void advance(qint64 bytes)
    {
        m_now.bytesDone += bytes;
        m_now.bytesTotal = std::max(m_now.bytesTotal, m_now.bytesDone); // a source may grow
        m_watch.report(m_now);
    }
    void endItem()
    {
        ++m_now.done;
        m_watch.report(m_now);
    }

private:
    const Watch &m_watch;
    Progress m_now;
};

class Runner
{
public:
    Runner(platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch)
        : m_fileSystem(fileSystem), m_plan(plan), m_stop(watch.stop), m_progress(plan, watch),
          m_queue(fileSystem, {[this](qint64 bytes) { m_progress.advance(bytes); }, watch.stop},
              moves() ? storage::CopyCheck::Everything : storage::CopyCheck::Ends)
    {
    }

    TransferReport run();

private:
    bool moves() const { return m_plan.kind == TransferKind::Move; }
    void take(const TransferItem &item);
    void takeFree(const TransferItem &item);
    void merge(const TransferItem &item);
    Result<void> rename(const TransferItem &item);
    void copyOne(const TransferItem &item);
    Result<void> copyLinkTo(const TransferItem &item);
    void copyFolder(const TransferItem &item);
    void settle();
    void removeSources(const std::vector<CopyQueue::Settled> &copied);
    void fail(const QString &source, const Error &error);
    void done(const CopiedNode &copied, bool isMove, bool replaced);

    platform::FileSystem &m_fileSystem;
    const TransferPlan &m_plan;
    const std::stop_token m_stop;
    ProgressCounter m_progress;
    CopyQueue m_queue;
    bool m_isFull = false; ///< the target's drive
    TransferReport m_report;
};

TransferReport Runner::run()
{
    for (const TransferItem &item : m_plan.items) {
        take(item);
        m_progress.endItem();
    }
    settle();
    m_report.wasStopped = m_stop.stop_requested() && !m_report.notDone.isEmpty();
    return std::move(m_report);
}

void Runner::take(const TransferItem &item)
{
    if (item.error) {
        fail(item.source, *item.error);
        return;
    }
    if (item.isSkipped()) {
        m_report.skipped.append(item.source);
        return;
    }
    if (m_stop.stop_requested() || m_isFull) {
        m_report.notDone.append(item.source);
        return;
    }
    m_progress.begin(item.source);
    if (item.isMerged())
        merge(item);
    else
        takeFree(item);
}

/// The name is free, or belongs to a file to replace.
void Runner::takeFree(const TransferItem &item)
{
    if (moves()) {
        const Result<void> renamed = rename(item);
        if (renamed) {
            m_progress.advance(item.bytes);
            done({item.source, item.target, item.node}, true, item.replaces());
            return;
        }
        // Unsupported: another drive, or the same one mounted elsewhere.
        if (renamed.error().code != ErrorCode::Unsupported) {
            fail(item.source, renamed.error());
            return;
        }
    }
    if (item.node.kind == NodeKind::Folder)
        copyFolder(item);
    else
        copyOne(item);
}

void Runner::merge(const TransferItem &item)
{
    for (const TransferItem &child : item.children)
        take(child);
    settle();
    // Fails unless empty: the rest was skipped, has failed or was added since.
    if (moves())
        static_cast<void>(m_fileSystem.removeFolder(item.source));
}

Result<void> Runner::rename(const TransferItem &item)
{
    if (!item.replaces())
        return storage::renameFile(m_fileSystem, item.source, item.target);
    // Two names of one file, where the system's rename does nothing.
    if (const auto present = platform::nodeAt(item.target); present && present->isSameAs(item.node))
        return m_fileSystem.remove(item.source);
    return m_fileSystem.replace(item.source, item.target);
}

void Runner::copyOne(const TransferItem &item)
{
    const CopiedNode copied{item.source, item.target, item.node};
    Result<void> begun;
    if (item.node.kind == NodeKind::File) {
        if (m_queue.isFull())
            settle();
        if (m_isFull) {
            m_report.notDone.append(item.source);
            return;
        }
        begun = m_queue.add(copied, item.source, item.replaces());
    } else if (item.node.kind == NodeKind::Link) {
        begun = copyLinkTo(item);
        if (begun)
            removeSources({{copied, item.source, item.replaces(), {}}});
    } else {
        begun = tl::unexpected(Error{ErrorCode::NotAFile, item.source, QStringLiteral("a device, pipe or socket")});
    }
    if (!begun)
        fail(item.source, begun.error());
}

Result<void> Runner::copyLinkTo(const TransferItem &item)
{
    if (!item.replaces()) {
        return platform::copyLink(item.source, item.target).and_then([&] {
            return platform::takeAttributes(item.source, item.target);
        });
    }
    // Keep it in a temporary folder until it takes the other's place.
    const QString parent = platform::folderOf(item.target);
    auto temporary = storage::TemporaryFolder::create(m_fileSystem, parent);
    if (!temporary)
        return tl::unexpected(temporary.error());
    const QString made = platform::inFolder(temporary->path(), QStringLiteral("link"));
    return platform::copyLink(item.source, made)
        .and_then([&] { return platform::takeAttributes(item.source, made); })
        .and_then([&] { return m_fileSystem.replace(made, item.target); });
}

void Runner::copyFolder(const TransferItem &item)
{
    settle();
    if (m_isFull) {
        m_report.notDone.append(item.source);
        return;
    }
    const QString parent = platform::folderOf(item.target);
    auto temporary = storage::TemporaryFolder::create(m_fileSystem, parent);
    if (!temporary) {
        fail(item.source, temporary.error());
        return;
    }
    FolderCopy copy(m_fileSystem, m_queue, m_stop);
    const auto placed = copy.copy({item.source, temporary->path(), item.node}).and_then([&] {
        return temporary->moveToNew(item.target);
    });
    if (!placed) {
        fail(item.source, placed.error());
        return;
    }
    Result<void> removed;
    if (moves())
        removed = m_fileSystem.syncFolder(parent).and_then([&] { return copy.removeSource(); });
    done({item.source, item.target, item.node}, moves() && removed, false);
    if (!removed)
        fail(item.source, removed.error());
}

void Runner::settle()
{
    std::vector<CopyQueue::Settled> copied;
    for (CopyQueue::Settled &settled : m_queue.settle()) {
        if (settled.outcome)
            copied.push_back(std::move(settled));
        else
            fail(settled.tag, settled.outcome.error());
    }
    removeSources(copied);
}

/// Records the copies as done. For a move, deletes the sources once the new names are on the disk.
void Runner::removeSources(const std::vector<CopyQueue::Settled> &copied)
{
    QHash<QString, Result<void>> synced;
    for (const CopyQueue::Settled &settled : copied) {
        Result<void> removed;
        if (moves()) {
            const QString folder = platform::folderOf(settled.copied.target);
            if (!synced.contains(folder))
                synced.insert(folder, m_fileSystem.syncFolder(folder));
            removed = synced.value(folder).and_then([&] { return removeCopied(m_fileSystem, settled.copied); });
        }
        done(settled.copied, moves() && removed, settled.replaced);
        if (!removed)
            fail(settled.tag, removed.error());
    }
}

void Runner::fail(const QString &source, const Error &error)
{
    if (error.code == ErrorCode::Cancelled) {
        m_report.notDone.append(source);
        return;
    }
    m_isFull = m_isFull || error.code == ErrorCode::NoSpace;
    m_report.failures.push_back({source, error});
}

void Runner::done(const CopiedNode &copied, bool isMove, bool replaced)
{
    const auto made = platform::nodeAt(copied.target);
    m_report.done.push_back({copied.source, copied.target, isMove, copied.node.kind == NodeKind::Folder, replaced,
        made ? made->info : platform::FileInfo()});
}

} // namespace

TransferReport runTransfer(platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch)
{
    return Runner(fileSystem, plan, watch).run();
}

} // namespace ravlin
