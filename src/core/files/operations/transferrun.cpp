// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/foldercopy.h"
#include "core/storage/saferename.h"

#include "core/platform/fileio.h"
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

/// The folder that was used last, held open: most items of a request share their folders.
class LastFolder
{
public:
    explicit LastFolder(platform::FileSystem &fileSystem) : m_fileSystem(fileSystem) {}

    Result<platform::Place> placeAt(const QString &path)
    {
        const QString folder = platform::folderOf(path);
        if (m_folder && folder == m_path)
            return platform::Place{m_folder, platform::nameOf(path)};
        return platform::placeAt(m_fileSystem, path).map([&](platform::Place place) {
            m_path = folder;
            m_folder = place.folder;
            return place;
        });
    }

private:
    platform::FileSystem &m_fileSystem;
    QString m_path;
    std::shared_ptr<platform::HeldFolder> m_folder;
};

class Runner
{
public:
    Runner(platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch)
        : m_fileSystem(fileSystem), m_plan(plan), m_stop(watch.stop), m_progress(plan, watch), m_sources(fileSystem),
          m_targets(fileSystem), m_queue({[this](qint64 bytes) { m_progress.advance(bytes); }, watch.stop},
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
    void copyOne(const TransferItem &item, const CopiedNode &copied);
    Result<CopiedNode> placesOf(const TransferItem &item);
    static Result<void> copyLinkTo(const TransferItem &item, const CopiedNode &copied);
    void copyFolder(const TransferItem &item, const CopiedNode &copied);
    void settle();
    void removeSources(const std::vector<CopyQueue::Settled> &copied);
    void fail(const QString &source, const Error &error);
    void done(const TransferItem &item, bool isMove);

    platform::FileSystem &m_fileSystem;
    const TransferPlan &m_plan;
    const std::stop_token m_stop;
    ProgressCounter m_progress;
    LastFolder m_sources;
    LastFolder m_targets;
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
            done(item, true);
            return;
        }
        // Unsupported: another drive, or the same one mounted elsewhere.
        if (renamed.error().code != ErrorCode::Unsupported) {
            fail(item.source, renamed.error());
            return;
        }
    }
    const auto copied = placesOf(item);
    if (!copied)
        fail(item.source, copied.error());
    else if (item.node.kind == NodeKind::Folder)
        copyFolder(item, *copied);
    else
        copyOne(item, *copied);
}

Result<CopiedNode> Runner::placesOf(const TransferItem &item)
{
    const auto source = m_sources.placeAt(item.source);
    const auto target = m_targets.placeAt(item.target);
    if (!source || !target)
        return tl::unexpected(source ? target.error() : source.error());
    return CopiedNode{*source, *target, item.node};
}

void Runner::merge(const TransferItem &item)
{
    for (const TransferItem &child : item.children)
        take(child);
    settle();
    // Fails unless empty: the rest was skipped, has failed or was added since.
    if (!moves())
        return;
    if (const auto source = m_sources.placeAt(item.source))
        static_cast<void>(source->folder->removeFolder(source->name));
}

Result<void> Runner::rename(const TransferItem &item)
{
    if (!item.replaces())
        return storage::renameFile(m_fileSystem, item.source, item.target);
    const auto places = placesOf(item);
    if (!places)
        return tl::unexpected(places.error());
    const auto &[source, target, node, level] = *places;
    // Two names of one file, where the system's rename does nothing.
    if (const auto present = target.folder->node(target.name); present && present->isSameAs(item.node))
        return source.folder->remove(source.name);
    return source.folder->replace(source.name, *target.folder, target.name);
}

void Runner::copyOne(const TransferItem &item, const CopiedNode &copied)
{
    Result<void> begun;
    if (item.node.kind == NodeKind::File) {
        if (m_queue.isFull())
            settle();
        if (m_isFull) {
            m_report.notDone.append(item.source);
            return;
        }
        begun = m_queue.add(copied, &item, item.replaces());
    } else if (item.node.kind == NodeKind::Link) {
        begun = copyLinkTo(item, copied);
        if (begun)
            removeSources({{copied, &item, {}}});
    } else {
        begun = tl::unexpected(Error{ErrorCode::NotAFile, item.source, QStringLiteral("a device, pipe or socket")});
    }
    if (!begun)
        fail(item.source, begun.error());
}

Result<void> Runner::copyLinkTo(const TransferItem &item, const CopiedNode &copied)
{
    const platform::Place &source = copied.source;
    const platform::Place &target = copied.target;
    if (!item.replaces())
        return target.folder->copyLink(*source.folder, source.name, target.name);
    // Keep it in a temporary folder until it takes the other's place.
    const auto temporary = storage::TemporaryFolder::create(target.folder);
    if (!temporary)
        return tl::unexpected(temporary.error());
    platform::HeldFolder &between = *temporary->folder();
    const QString name = QStringLiteral("link");
    return between.copyLink(*source.folder, source.name, name).and_then([&] {
        return between.replace(name, *target.folder, target.name);
    });
}

void Runner::copyFolder(const TransferItem &item, const CopiedNode &copied)
{
    settle();
    if (m_isFull) {
        m_report.notDone.append(item.source);
        return;
    }
    auto temporary = storage::TemporaryFolder::create(copied.target.folder);
    if (!temporary) {
        fail(item.source, temporary.error());
        return;
    }
    FolderCopy copy(m_queue, copied.source, temporary->folder(), m_stop);
    const auto placed = copy.copy().and_then([&] { return temporary->moveToNew(copied.target.name); });
    if (!placed) {
        fail(item.source, placed.error());
        return;
    }
    Result<void> removed;
    if (moves())
        removed = copied.target.folder->sync().and_then([&] { return copy.removeSource(); });
    done(item, moves() && removed);
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
            fail(settled.item->source, settled.outcome.error());
    }
    removeSources(copied);
}

/// Records the copies as done. For a move, deletes the sources once the new names are on the disk.
void Runner::removeSources(const std::vector<CopyQueue::Settled> &copied)
{
    QHash<platform::HeldFolder *, Result<void>> synced;
    for (const CopyQueue::Settled &settled : copied) {
        Result<void> removed;
        if (moves()) {
            const CopiedNode &node = settled.copied;
            platform::HeldFolder *const folder = node.target.folder.get();
            if (!synced.contains(folder))
                synced.insert(folder, folder->sync());
            const platform::Place &source = node.source;
            removed =
                synced.value(folder).and_then([&] { return removeCopied(*source.folder, source.name, node.node); });
        }
        done(*settled.item, moves() && removed);
        if (!removed)
            fail(settled.item->source, removed.error());
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

void Runner::done(const TransferItem &item, bool isMove)
{
    const auto made = platform::nodeAt(item.target);
    m_report.done.push_back({item.source, item.target, isMove, item.node.kind == NodeKind::Folder, item.replaces(),
        made ? made->info : platform::FileInfo()});
}

} // namespace

TransferReport runTransfer(platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch)
{
    return Runner(fileSystem, plan, watch).run();
}

} // namespace ravlin
