// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/foldercopy.h"
#include "core/storage/saferename.h"

#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "core/storage/leftovers.h"
#include "core/storage/recorder.h"

#include <QHash>

#include <algorithm>

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

/// Names the place in the source instead of the one in an unfinished folder, of which the user knows nothing.
Error inUsersWords(Error error, const TransferItem &item)
{
    const QStringList names = error.path.split(platform::Separator);
    const auto unfinished =
        std::ranges::find_if(names, [](const QString &name) { return storage::isTemporaryName(name); });
    if (unfinished == names.end())
        return error;
    error.path = item.source;
    if (item.node.kind == NodeKind::Folder) {
        for (auto name = unfinished + 1; name != names.end(); ++name)
            error.path = platform::inFolder(error.path, *name);
    }
    return error;
}

class Runner
{
public:
    Runner(platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch, storage::Journal *journal)
        : m_fileSystem(fileSystem), m_plan(plan), m_stop(watch.stop), m_progress(plan, watch),
          m_recorder(fileSystem, journal), m_sources(fileSystem), m_targets(fileSystem),
          m_queue({[this](qint64 bytes) { m_progress.advance(bytes); }, watch.stop, journal},
              moves() ? storage::CopyCheck::Everything : storage::CopyCheck::Ends)
    {
    }

    TransferReport run();

private:
    bool moves() const { return m_plan.kind == TransferKind::Move; }
    storage::ChangeKind changeKind() const { return moves() ? storage::ChangeKind::Move : storage::ChangeKind::Copy; }
    void take(const TransferItem &item);
    void takeFree(const TransferItem &item);
    void merge(const TransferItem &item);
    Result<Replaced> rename(const TransferItem &item);
    void copyOne(const TransferItem &item, const CopiedNode &copied);
    Result<CopiedNode> placesOf(const TransferItem &item);
    Result<Replaced> copyLinkTo(const TransferItem &item, const CopiedNode &copied);
    void copyFolder(const TransferItem &item, const CopiedNode &copied);
    void settle();
    void removeSources(const std::vector<CopyQueue::Settled> &copied);
    void leave(const TransferItem &item);
    void fail(const TransferItem &item, const Error &error);
    void done(const TransferItem &item, bool isMove, const Replaced &replaced = {});
    void doneExceptSource(const TransferItem &item, const Error &error, const Replaced &replaced = {});

    platform::FileSystem &m_fileSystem;
    const TransferPlan &m_plan;
    const std::stop_token m_stop;
    ProgressCounter m_progress;
    storage::Recorder m_recorder;
    QHash<const TransferItem *, storage::Recorder::Ticket> m_tickets; ///< of the items that were begun
    LastFolder m_sources;
    LastFolder m_targets;
    CopyQueue m_queue;
    bool m_takesNoMore = false; ///< the target's drive is full or read-only
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
        fail(item, *item.error);
        return;
    }
    if (item.isSkipped()) {
        m_report.skipped.append(item.source);
        return;
    }
    if (m_stop.stop_requested() || m_takesNoMore) {
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
    m_tickets.insert(&item, m_recorder.begin(changeKind(), item.source, item.target));
    if (moves()) {
        const Result<Replaced> renamed = rename(item);
        if (renamed) {
            m_progress.advance(item.bytes);
            done(item, true, *renamed);
            return;
        }
        // Unsupported: another drive, or the same one mounted elsewhere.
        if (renamed.error().code != ErrorCode::Unsupported) {
            fail(item, renamed.error());
            return;
        }
    }
    const auto copied = placesOf(item);
    if (!copied)
        fail(item, copied.error());
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
    const auto source = m_sources.placeAt(item.source);
    if (!source)
        return;
    // Taking back what was in it makes the folder again, but nothing does so for an empty one.
    storage::Recorder::Ticket ticket;
    if (item.children.empty())
        ticket = m_recorder.begin(storage::ChangeKind::Delete, item.source);
    if (const auto removed = source->folder->removeFolder(source->name))
        m_recorder.done(ticket);
    else
        m_recorder.failed(ticket, removed.error());
}

Result<Replaced> Runner::rename(const TransferItem &item)
{
    const auto nothing = [] { return Replaced(); };
    if (!item.replaces())
        return storage::renameFile(m_fileSystem, item.source, item.target).map(nothing);
    const auto places = placesOf(item);
    if (!places)
        return tl::unexpected(places.error());
    const platform::Place &source = places->source;
    const platform::Place &target = places->target;
    const auto folder = target.folder->info();
    if (folder && folder->device != item.node.info.device)
        return tl::unexpected(Error{ErrorCode::Unsupported, item.source, QStringLiteral("another drive")});
    const auto present = target.folder->node(target.name);
    const bool isSameFile = present && present->isSameAs(item.node);
    return putInPlace(target, true, [&](storage::Placing placing) {
        if (placing == storage::Placing::New)
            return source.folder->renameNew(source.name, *target.folder, target.name);
        // Of two names of one file the system's rename would leave both.
        return isSameFile ? source.folder->remove(source.name)
                          : source.folder->replace(source.name, *target.folder, target.name);
    });
}

void Runner::copyOne(const TransferItem &item, const CopiedNode &copied)
{
    Result<void> begun;
    if (item.node.kind == NodeKind::File) {
        if (m_queue.isFull())
            settle();
        if (m_takesNoMore) {
            leave(item);
            return;
        }
        begun = m_queue.add(copied, &item);
    } else if (item.node.kind == NodeKind::Link) {
        const auto linked = copyLinkTo(item, copied);
        if (linked)
            removeSources({{copied, &item, *linked}});
        else
            begun = tl::unexpected(linked.error());
    } else {
        begun = tl::unexpected(Error{ErrorCode::NotAFile, item.source, QStringLiteral("a device, pipe or socket")});
    }
    if (!begun)
        fail(item, begun.error());
}

Result<Replaced> Runner::copyLinkTo(const TransferItem &item, const CopiedNode &copied)
{
    const platform::Place &source = copied.source;
    const platform::Place &target = copied.target;
    if (!item.replaces())
        return target.folder->copyLink(*source.folder, source.name, target.name).map([] { return Replaced(); });
    // Keep it in a temporary folder until it takes the other's place.
    const auto temporary = storage::TemporaryFolder::create(target.folder, m_recorder.journal());
    if (!temporary)
        return tl::unexpected(temporary.error());
    platform::HeldFolder &between = *temporary->folder();
    return between.copyLink(*source.folder, source.name, source.name).and_then([&] {
        return putInPlace(target, true, [&](storage::Placing placing) {
            return placing == storage::Placing::New ? between.renameNew(source.name, *target.folder, target.name)
                                                    : between.replace(source.name, *target.folder, target.name);
        });
    });
}

void Runner::copyFolder(const TransferItem &item, const CopiedNode &copied)
{
    settle();
    if (m_takesNoMore) {
        leave(item);
        return;
    }
    auto temporary = storage::TemporaryFolder::create(copied.target.folder, m_recorder.journal());
    if (!temporary) {
        fail(item, temporary.error());
        return;
    }
    FolderCopy copy(m_queue, copied.source, temporary->folder(), m_stop);
    const auto placed = copy.copy().and_then([&] { return temporary->moveToNew(copied.target.name); });
    if (!placed) {
        fail(item, placed.error());
        return;
    }
    Result<void> removed;
    if (moves())
        removed = copied.target.folder->sync().and_then([&] { return copy.removeSource(); });
    if (removed)
        done(item, moves());
    else
        doneExceptSource(item, removed.error());
}

void Runner::settle()
{
    std::vector<CopyQueue::Settled> copied;
    for (CopyQueue::Settled &settled : m_queue.settle()) {
        if (settled.outcome)
            copied.push_back(std::move(settled));
        else
            fail(*settled.item, settled.outcome.error());
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
        if (removed)
            done(*settled.item, moves(), *settled.outcome);
        else
            doneExceptSource(*settled.item, removed.error(), *settled.outcome);
    }
}

/// Does not take it after all.
void Runner::leave(const TransferItem &item)
{
    m_recorder.failed(m_tickets.take(&item), Error{ErrorCode::Cancelled, item.source, {}});
    m_report.notDone.append(item.source);
}

void Runner::fail(const TransferItem &item, const Error &error)
{
    m_recorder.failed(m_tickets.take(&item), error);
    if (error.code == ErrorCode::Cancelled) {
        m_report.notDone.append(item.source);
        return;
    }
    m_takesNoMore = m_takesNoMore || error.code == ErrorCode::NoSpace || error.code == ErrorCode::ReadOnlyDrive;
    m_report.failures.push_back({item.source, inUsersWords(error, item)});
}

void Runner::done(const TransferItem &item, bool isMove, const Replaced &replaced)
{
    const auto made = platform::nodeAt(item.target);
    m_recorder.done(m_tickets.take(&item), item.target, replaced.trashed || replaced.isLost, replaced.trashed);
    m_report.done.push_back({item.source, item.target, isMove, item.node.kind == NodeKind::Folder,
        replaced.trashed || replaced.isLost, replaced.trashed, made ? made->info : platform::FileInfo()});
    if (replaced.isLost && item.clash->hasTrash)
        m_report.lost.append(item.target);
}

/// Recorded as a copy: that is what it came to.
void Runner::doneExceptSource(const TransferItem &item, const Error &error, const Replaced &replaced)
{
    const auto copy = m_recorder.begin(storage::ChangeKind::Copy, item.source, item.target);
    m_recorder.failed(m_tickets.take(&item), error);
    m_tickets.insert(&item, copy);
    done(item, false, replaced);
    m_report.inBothPlaces.push_back({item.source, error});
}

} // namespace

TransferReport runTransfer(
    platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch, storage::Journal *journal)
{
    return Runner(fileSystem, plan, watch, journal).run();
}

} // namespace ravlin
