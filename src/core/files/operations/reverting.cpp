// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/reverting.h"

#include "core/platform/fileio.h"
#include "core/platform/nodes.h"
#include "core/platform/path.h"
#include "core/platform/trash.h"

#include <tuple>

namespace ravlin {

using history::StoredChange;
using storage::ChangeKind;

namespace {

Result<void> refusal(const QString &path, const QString &detail)
{
    return tl::unexpected(Error{ErrorCode::Unsupported, path, detail});
}

Result<void> taken(const QString &path)
{
    return tl::unexpected(Error{ErrorCode::AlreadyExists, path, {}});
}

} // namespace

QString presentPath(history::History &history, const StoredChange &change)
{
    const history::FileRecord &record = change.record;
    const QString &path = record.newPath.isEmpty() ? record.path : record.newPath;
    return history.presentPath(record.id, path).value_or(path);
}

QString formerPath(history::History &history, const StoredChange &change)
{
    const history::FileRecord &record = change.record;
    if (record.change == ChangeKind::Content || record.change == ChangeKind::Copy ||
        record.change == ChangeKind::Create)
        return presentPath(history, change);
    const QString folder = platform::folderOf(record.path);
    return platform::inFolder(history.presentPath(record.id, folder).value_or(folder), platform::nameOf(record.path));
}

Result<QString> Reverting::revert(const StoredChange &change, const QString &path)
{
    const Step step{change, path, formerPath(m_history, change)};
    return take(step).map([&] { return step.former; });
}

Result<void> Reverting::take(const Step &step)
{
    switch (step.change.record.change) {
    case ChangeKind::Content:
        return history::revertContent(m_history, m_fileSystem, step.change, step.present, false);
    case ChangeKind::Move:
        return moveBack(step);
    case ChangeKind::Copy:
        return m_of.isMoving && !m_of.isRedo ? endHalfMove(step) : removeMade(step);
    case ChangeKind::Create:
        return step.change.isFolder && (!m_of.isRedo || m_of.isMoving) ? removeEmptyFolder(step) : removeMade(step);
    case ChangeKind::Trash:
        return fromTrash(step);
    case ChangeKind::Delete:
        return wasEmptyFolder(step.change) ? makeFolderAgain(step)
                                           : refusal(step.former, QStringLiteral("it was deleted for good"));
    }
    return refusal(step.present, QStringLiteral("of a newer version"));
}

Result<QString> Reverting::check(const StoredChange &change, const QString &path, const QSet<QString> &freed)
{
    const Step step{change, path, formerPath(m_history, change)};
    const bool isFree = freed.contains(step.former) || !platform::isTaken(step.former);
    Result<void> possible;
    switch (change.record.change) {
    case ChangeKind::Content:
        possible = history::revertContent(m_history, m_fileSystem, change, path, true);
        break;
    case ChangeKind::Move:
        if (const auto node = platform::nodeAt(path); !node)
            possible = tl::unexpected(node.error());
        else if (!isFree)
            possible = taken(step.former);
        break;
    case ChangeKind::Copy:
    case ChangeKind::Create:
        possible = isUnchanged(step);
        break;
    case ChangeKind::Trash:
        if (const auto node = platform::nodeAt(change.trashed ? change.trashed->file : QString()); !node)
            possible = tl::unexpected(Error{ErrorCode::NotFound, step.former, {}});
        else if (!isFree)
            possible = taken(step.former);
        break;
    case ChangeKind::Delete:
        if (!wasEmptyFolder(change))
            possible = refusal(step.former, QStringLiteral("it was deleted for good"));
        break;
    }
    return possible.map([&] { return step.former; });
}

Result<void> Reverting::makeFolder(const QString &path)
{
    if (platform::isTaken(path))
        return {};
    const QString above = platform::folderOf(path);
    if (above == path)
        return tl::unexpected(Error{ErrorCode::NotFound, path, QStringLiteral("this drive is not there")});
    return makeFolder(above).and_then([&] { return m_fileSystem.createFolder(path); });
}

/// forFolders: the answer about a folder that is at the former place.
Result<TransferReport> Reverting::moveBack(const Step &step, ClashAnswer forFolders)
{
    // A merge removed folders once they were empty.
    const QString folder = platform::folderOf(step.former);
    const auto made = makeFolder(folder);
    if (!made)
        return tl::unexpected(made.error());
    auto plan = makeTransferPlan(
        m_fileSystem, {TransferKind::Move, {step.present}, folder, platform::nameOf(step.former)}, m_stop);
    if (!plan)
        return tl::unexpected(plan.error());
    std::ignore = answerClashes(*plan,
        [forFolders](const Clash &clash) { return ClashDecision{clash.isMerge ? forFolders : ClashAnswer::Skip}; });
    RevertingJournal journal(m_history, step.change.record.id);
    TransferReport report = runTransfer(m_fileSystem, *plan, {.stop = m_stop}, &journal);
    if (!report.failures.empty())
        return tl::unexpected(report.failures.front().error);
    if (!report.inBothPlaces.empty())
        return tl::unexpected(report.inBothPlaces.front().error);
    if (!report.notDone.isEmpty())
        return tl::unexpected(Error{ErrorCode::Cancelled, step.former, {}});
    return report;
}

Result<void> Reverting::moveBack(const Step &step)
{
    const auto report = moveBack(step, ClashAnswer::Skip);
    if (!report)
        return tl::unexpected(report.error());
    if (!report->skipped.isEmpty())
        return taken(step.former);
    if (step.change.trashed)
        bringBackReplaced(step);
    else if (step.change.replaced)
        m_lost.append(step.present);
    return {};
}

Result<void> Reverting::isUnchanged(const Step &step) const
{
    const StoredChange &change = step.change;
    if (change.replaced && !change.trashed)
        return refusal(step.present, QStringLiteral("it has taken the place of another file"));
    const auto node = platform::nodeAt(step.present);
    if (!node)
        return tl::unexpected(node.error());
    const bool isSame =
        change.isFolder || (node->info.size == change.after.size && node->info.modified == change.after.modified);
    return isSame ? Result<void>() : tl::unexpected(Error{ErrorCode::ChangedMeanwhile, step.present, {}});
}

Result<void> Reverting::intoTrash(const Step &step)
{
    RevertingJournal journal(m_history, step.change.record.id);
    storage::Recorder recorder(m_fileSystem, &journal);
    const auto ticket = recorder.begin(ChangeKind::Trash, step.present);
    const auto trashed = platform::moveToTrash(step.present);
    if (!trashed) {
        recorder.failed(ticket, trashed.error());
        return tl::unexpected(trashed.error());
    }
    recorder.done(ticket, {}, false, *trashed);
    return {};
}

Result<void> Reverting::removeMade(const Step &step)
{
    return isUnchanged(step).and_then([&] { return intoTrash(step); }).map([&] { bringBackReplaced(step); });
}

/// One that is not empty holds files of others.
Result<void> Reverting::removeEmptyFolder(const Step &step)
{
    const auto place = platform::placeAt(m_fileSystem, step.present);
    if (!place)
        return tl::unexpected(place.error());
    RevertingJournal journal(m_history, step.change.record.id);
    storage::Recorder recorder(m_fileSystem, &journal);
    const auto ticket = recorder.begin(ChangeKind::Delete, step.present);
    const Result<void> removed = place->folder->removeFolder(place->name);
    if (removed)
        recorder.done(ticket);
    else
        recorder.failed(ticket, removed.error());
    return removed;
}

/// One that a move into another folder of its name, or a taking back, has removed.
bool Reverting::wasEmptyFolder(const StoredChange &change) const
{
    return change.isFolder && (m_of.isRedo || m_of.isMoving);
}

Result<void> Reverting::makeFolderAgain(const Step &step)
{
    if (const auto above = makeFolder(platform::folderOf(step.former)); !above)
        return above;
    RevertingJournal journal(m_history, step.change.record.id);
    storage::Recorder recorder(m_fileSystem, &journal);
    const auto ticket = recorder.beginCreate(step.former, true);
    const Result<void> made = m_fileSystem.createFolder(step.former);
    if (made)
        recorder.done(ticket, step.former);
    else
        recorder.failed(ticket, made.error());
    return made;
}

/// Recorded as something made, which goes into the trash again when it is repeated.
Result<void> Reverting::restore(platform::TrashedItem item, const QString &path, qint64 change)
{
    item.original = path;
    RevertingJournal journal(m_history, change);
    storage::Recorder recorder(m_fileSystem, &journal);
    const auto node = platform::nodeAt(item.file);
    const auto ticket = recorder.beginCreate(path, node && node->kind == platform::NodeKind::Folder);
    const Result<void> restored = platform::restoreFromTrash(item);
    if (restored)
        recorder.done(ticket, path);
    else
        recorder.failed(ticket, restored.error());
    return restored;
}

Result<void> Reverting::fromTrash(const Step &step)
{
    const auto &item = step.change.trashed;
    if (!item)
        return tl::unexpected(Error{ErrorCode::NotFound, step.former, QStringLiteral("where in the trash is unknown")});
    return restore(*item, step.former, step.change.record.id);
}

/// The copy of a move that could not delete its source goes. What is no longer at the source, or never was all there,
/// is moved back first.
Result<void> Reverting::endHalfMove(const Step &step)
{
    const QString folder = platform::folderOf(step.change.record.path);
    const Step back{step.change, step.present,
        platform::inFolder(m_history.presentPath(step.change.record.id, folder).value_or(folder),
            platform::nameOf(step.change.record.path))};
    if (!step.change.isFolder)
        return platform::isTaken(back.former) ? removeMade(step) : moveBack(back);
    const auto merged = moveBack(back, ClashAnswer::Replace);
    if (!merged)
        return tl::unexpected(merged.error());
    return platform::isTaken(step.present) ? intoTrash(step) : Result<void>();
}

/// The step itself is undone by then: a failure is one of the replaced file's.
void Reverting::bringBackReplaced(const Step &step)
{
    if (!step.change.trashed)
        return;
    if (const auto restored = restore(*step.change.trashed, step.present, step.change.record.id); !restored)
        m_notBroughtBack.push_back({step.present, restored.error()});
}

} // namespace ravlin
