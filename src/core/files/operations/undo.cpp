// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/undo.h"

#include "core/files/operations/reverting.h"
#include "core/platform/path.h"
#include "core/storage/saferename.h"

#include <QSet>

#include <algorithm>
#include <tuple>

namespace ravlin {

namespace {

using history::Kind;
using history::StoredChange;
using storage::ChangeKind;

bool isRenaming(const history::Entry &entry)
{
    return entry.kind == Kind::Rename || entry.kind == Kind::RenameFolder;
}

/// Takes one entry back and reports on it.
class EntryUndo
{
public:
    EntryUndo(history::History &history, platform::FileSystem &fileSystem, const history::Entry &entry, bool isRedo,
        const Watch &watch, UndoReport &report)
        : m_history(history), m_fileSystem(fileSystem), m_entry(entry), m_isRedo(isRedo), m_watch(watch),
          m_report(report)
    {
    }

    /// isWhole: these are all of the entry.
    void run(const std::vector<StoredChange> &changes, bool isWhole)
    {
        m_progress.total = static_cast<qsizetype>(changes.size());
        m_history.beginReverting(m_entry.id);
        if (!changes.empty()) // the first look reads all moves since then at once
            std::ignore = m_history.presentPath(changes.back().record.id, {});
        Reverting reverting(m_history, m_fileSystem, {m_isRedo, m_entry.kind == Kind::Move}, m_watch.stop);
        // What renames have made is in the way of none of them, but folders that were removed must be there before.
        const bool isBatch = isRenaming(m_entry);
        const auto isMove = [](const StoredChange &change) { return change.record.change == ChangeKind::Move; };
        const auto isRemoved = [](const StoredChange &change) { return change.record.change == ChangeKind::Delete; };
        for (const StoredChange &change : changes) {
            if (!isBatch || isRemoved(change))
                step(change, reverting);
        }
        if (isBatch) {
            std::vector<StoredChange> moves;
            std::ranges::copy_if(changes, std::back_inserter(moves), isMove);
            renameBack(moves);
            for (const StoredChange &change : changes) {
                if (!isMove(change) && !isRemoved(change))
                    step(change, reverting);
            }
        }
        m_report.lost += reverting.lost();
        end(reverting, isWhole);
    }

private:
    void end(const Reverting &reverting, bool isWhole)
    {
        for (const FileFailure &failure : reverting.notBroughtBack())
            m_report.failures.push_back(failure);
        for (const FileFailure &failure : m_report.failures)
            m_history.addFailure(failure.path, failure.error);
        m_report.wasStopped = m_report.wasStopped || !m_report.notDone.isEmpty();
        m_report.summary = m_history.endReverting(isWhole && !m_report.wasStopped);
    }

    /// A folder that renames made is removed only if it is empty, and nobody need be told of it.
    void step(const StoredChange &change, Reverting &reverting)
    {
        const bool isSilent = change.isFolder && isRenaming(m_entry) && change.record.change != ChangeKind::Move;
        const QString path = reverting.presentPath(change);
        if (m_watch.stop.stop_requested()) {
            if (!isSilent)
                m_report.notDone.append(path);
            return;
        }
        m_progress.path = path;
        m_watch.report(m_progress);
        const Result<QString> undone = reverting.revert(change, path);
        ++m_progress.done;
        if (isSilent)
            return;
        if (undone)
            m_report.undone.append(*undone);
        else if (undone.error().code == ErrorCode::Cancelled)
            m_report.notDone.append(path);
        else
            m_report.failures.push_back({path, undone.error()});
    }

    /// All at once, so that names can go round in a ring.
    void renameBack(const std::vector<StoredChange> &moves)
    {
        RevertingJournal journal(m_history);
        std::vector<RenameDone> renames;
        const std::vector<StoredChange> inOrder(moves.rbegin(), moves.rend());
        for (const StoredChange &move : inOrder) {
            const RenameDone done{formerPath(m_history, move), presentPath(m_history, move)};
            journal.add(storage::recordedPath(m_fileSystem, done.to), move.record.id);
            renames.push_back(done);
        }
        const RenamingOutcome outcome = undoRenaming(m_fileSystem, renames, {}, m_watch, &journal);
        for (const RenameRow &row : outcome.rows)
            report(row);
        m_report.wasStopped = m_report.wasStopped || outcome.wasStopped;
    }

    void report(const RenameRow &row)
    {
        switch (row.state) {
        case RenameState::Rename:
        case RenameState::Untouched:
            m_report.undone.append(row.path);
            break;
        case RenameState::Stopped:
        case RenameState::NotTaken:
            m_report.notDone.append(row.from);
            break;
        case RenameState::Clash:
        case RenameState::Skipped:
            m_report.failures.push_back({row.from, Error{ErrorCode::AlreadyExists, row.wanted, {}}});
            break;
        case RenameState::Refused:
        case RenameState::Failed:
            m_report.failures.push_back(
                {row.from, row.error.value_or(Error{ErrorCode::InvalidArgument, row.from, {}})});
            break;
        }
    }

    history::History &m_history;
    platform::FileSystem &m_fileSystem;
    const history::Entry m_entry;
    const bool m_isRedo;
    const Watch &m_watch;
    UndoReport &m_report;
    Progress m_progress;
};

/// What could be taken back, if nothing changes meanwhile. Entries go back one after the other: what an earlier one has
/// taken back, or moved out of the way, is not looked at again.
class UndoPreview
{
public:
    UndoPreview(history::History &history, platform::FileSystem &fileSystem, UndoReport &report)
        : m_history(history), m_fileSystem(fileSystem), m_report(report)
    {
    }

    void add(const history::Entry &entry, const std::vector<StoredChange> &changes)
    {
        if (isRenaming(entry)) { // their names are free for one another
            for (const StoredChange &change : changes)
                m_touched.insert(presentPath(m_history, change));
        }
        Reverting reverting(m_history, m_fileSystem, {false, entry.kind == Kind::Move}, {});
        for (const StoredChange &change : changes) {
            if (change.isFolder && isRenaming(entry) && change.record.change != ChangeKind::Move)
                continue;
            const QString path = reverting.presentPath(change);
            const Result<QString> possible = m_touched.contains(path) && !isRenaming(entry)
                                                 ? formerPath(m_history, change)
                                                 : reverting.check(change, path, m_touched);
            m_touched.insert(path);
            if (!possible) {
                m_report.failures.push_back({path, possible.error()});
                continue;
            }
            m_touched.insert(*possible);
            m_report.undone.append(*possible);
        }
    }

private:
    history::History &m_history;
    platform::FileSystem &m_fileSystem;
    UndoReport &m_report;
    QSet<QString> m_touched;
};

Result<std::optional<history::Entry>> wantedEntry(history::History &history, const UndoRequest &request)
{
    if (!request.entry)
        return history.nextUndo();
    auto found = history.entry(*request.entry);
    if (found && !*found)
        return tl::unexpected(Error{ErrorCode::NotFound, {}, QStringLiteral("no such entry")});
    return found;
}

void merge(UndoReport &report, UndoReport further)
{
    report.undone += further.undone;
    report.failures.insert(report.failures.end(), further.failures.begin(), further.failures.end());
    report.lost += further.lost;
    report.notDone += further.notDone;
    report.wasStopped = report.wasStopped || further.wasStopped;
    history::Summary &summary = further.summary;
    summary.files.insert(summary.files.end(), report.summary.files.begin(), report.summary.files.end());
    summary.doneCount += report.summary.doneCount;
    summary.failedCount += report.summary.failedCount;
    report.summary = std::move(summary); // the entry is that of the last one, the one that was asked for
}

} // namespace

Result<UndoReport> undo(
    history::History &history, platform::FileSystem &fileSystem, const UndoRequest &request, const Watch &watch)
{
    std::ignore = history.recover();
    UndoReport report;
    const auto entry = wantedEntry(history, request);
    if (!entry)
        return tl::unexpected(entry.error());
    if (!*entry)
        return report;
    report.entry = **entry;
    std::vector<history::Entry> order;
    if (request.entry) {
        auto later = history.laterOnSameFiles(report.entry.id, request.onlyFiles);
        if (!later)
            return tl::unexpected(later.error());
        if (!later->empty() && !request.withLater) {
            report.later = std::move(*later);
            return report;
        }
        order = std::move(*later);
    }
    order.push_back(report.entry);
    UndoPreview preview(history, fileSystem, report);
    for (const history::Entry &one : order) {
        const bool isWanted = one.id == report.entry.id;
        const auto changes = history.changesToUndo(one.id, isWanted ? request.onlyFiles : std::set<qint64>());
        if (!changes)
            return tl::unexpected(changes.error());
        if (request.isDryRun) {
            preview.add(one, *changes);
            continue;
        }
        UndoReport part;
        EntryUndo(history, fileSystem, one, false, watch, part).run(*changes, !isWanted || request.onlyFiles.empty());
        merge(report, std::move(part));
        if (report.wasStopped)
            break;
    }
    return report;
}

Result<UndoReport> redo(history::History &history, platform::FileSystem &fileSystem, const Watch &watch)
{
    std::ignore = history.recover();
    UndoReport report;
    const auto entry = history.nextRedo();
    if (!entry)
        return tl::unexpected(entry.error());
    if (!*entry)
        return report;
    report.entry = **entry;
    const auto changes = history.changesToUndo(report.entry.id);
    if (!changes)
        return tl::unexpected(changes.error());
    EntryUndo(history, fileSystem, report.entry, true, watch, report).run(*changes, true);
    return report;
}

} // namespace ravlin
