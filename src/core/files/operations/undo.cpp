// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/undo.h"

#include "core/platform/path.h"

#include <tuple>

namespace ravlin {

namespace {

/// Undo starts with what was done last.
template <typename Item>
std::vector<Item> reversed(const std::vector<Item> &items)
{
    return {items.rbegin(), items.rend()};
}

Result<void> refusal(const QString &path, const QString &detail)
{
    return tl::unexpected(Error{ErrorCode::Unsupported, path, detail});
}

/// Undoes the steps of one operation and reports on them.
class Undoing
{
public:
    Undoing(platform::FileSystem &fileSystem, const Watch &watch) : m_fileSystem(fileSystem), m_watch(watch) {}

    /// Calls work() unless a stop was requested; failures are reported for path. Returns false if a stop prevented or
    /// ended it; then all is as before.
    template <typename Work>
    bool step(const QString &path, const QString &undonePath, Work work)
    {
        if (m_watch.stop.stop_requested()) {
            m_report.notDone.append(path);
            return false;
        }
        m_progress.path = path;
        m_watch.report(m_progress);
        const Result<void> undone = work();
        ++m_progress.done;
        if (!undone && undone.error().code == ErrorCode::Cancelled) {
            m_report.notDone.append(path);
            return false;
        }
        if (undone)
            m_report.undone.append(undonePath);
        else
            m_report.failures.push_back({path, undone.error()});
        return true;
    }

    Result<void> moveBack(const TransferStep &step);
    Result<void> removeCopy(const TransferStep &step);
    Result<void> endHalfMove(const TransferStep &step);

    UndoReport m_report;
    Progress m_progress;

private:
    Result<void> makeFolder(const QString &path);
    Result<TransferReport> moveBack(const TransferStep &step, ClashAnswer forFolders);
    void bringBackReplaced(const TransferStep &step);

    platform::FileSystem &m_fileSystem;
    const Watch &m_watch;
};

Result<void> Undoing::makeFolder(const QString &path)
{
    if (platform::isTaken(path))
        return {};
    const QString above = platform::folderOf(path);
    if (above == path)
        return tl::unexpected(Error{ErrorCode::NotFound, path, QStringLiteral("this drive is not there")});
    return makeFolder(above).and_then([&] { return m_fileSystem.createFolder(path); });
}

/// forFolders: the answer about a folder that is at the former place.
Result<TransferReport> Undoing::moveBack(const TransferStep &step, ClashAnswer forFolders)
{
    // A merge removed folders once they were empty.
    const QString folder = platform::folderOf(step.source);
    const auto made = makeFolder(folder);
    if (!made)
        return tl::unexpected(made.error());
    auto plan = makeTransferPlan(
        m_fileSystem, {TransferKind::Move, {step.target}, folder, platform::nameOf(step.source)}, m_watch.stop);
    if (!plan)
        return tl::unexpected(plan.error());
    std::ignore = answerClashes(*plan,
        [forFolders](const Clash &clash) { return ClashDecision{clash.isMerge ? forFolders : ClashAnswer::Skip}; });
    TransferReport report = runTransfer(m_fileSystem, *plan, {.stop = m_watch.stop});
    if (!report.failures.empty())
        return tl::unexpected(report.failures.front().error);
    if (!report.inBothPlaces.empty())
        return tl::unexpected(report.inBothPlaces.front().error);
    if (!report.notDone.isEmpty())
        return tl::unexpected(Error{ErrorCode::Cancelled, step.source, {}});
    return report;
}

Result<void> Undoing::moveBack(const TransferStep &step)
{
    const auto report = moveBack(step, ClashAnswer::Skip);
    if (!report)
        return tl::unexpected(report.error());
    if (!report->skipped.isEmpty())
        return tl::unexpected(Error{ErrorCode::AlreadyExists, step.source, {}});
    if (step.trashed)
        bringBackReplaced(step);
    else if (step.replaced)
        m_report.lost.append(step.target);
    return {};
}

Result<void> Undoing::removeCopy(const TransferStep &step)
{
    if (step.replaced && !step.trashed)
        return refusal(step.target, QStringLiteral("it has taken the place of another file"));
    const auto node = platform::nodeAt(step.target);
    if (!node)
        return tl::unexpected(node.error());
    const bool isUnchanged =
        step.isFolder || (node->info.size == step.made.size && node->info.modified == step.made.modified);
    if (!isUnchanged)
        return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, step.target, {}});
    return platform::moveToTrash(step.target).map([&](const platform::TrashedItem &) { bringBackReplaced(step); });
}

/// The copy of a move that could not delete its source goes. What is no longer at the source, or never was all there,
/// is moved back first.
Result<void> Undoing::endHalfMove(const TransferStep &step)
{
    if (!step.isFolder)
        return platform::isTaken(step.source) ? removeCopy(step) : moveBack(step);
    const auto merged = moveBack(step, ClashAnswer::Replace);
    if (!merged)
        return tl::unexpected(merged.error());
    if (!platform::isTaken(step.target))
        return {};
    return platform::moveToTrash(step.target).map([](const platform::TrashedItem &) {});
}

/// The step itself is undone by then: a failure is one of the replaced file's.
void Undoing::bringBackReplaced(const TransferStep &step)
{
    if (!step.trashed)
        return;
    if (const auto restored = platform::restoreFromTrash(*step.trashed); !restored)
        m_report.failures.push_back({step.target, restored.error()});
}

UndoReport reportOf(const RenamingOutcome &outcome)
{
    UndoReport report;
    for (const RenameRow &row : outcome.rows) {
        switch (row.state) {
        case RenameState::Rename:
        case RenameState::Untouched:
            report.undone.append(row.path);
            break;
        case RenameState::Stopped:
        case RenameState::NotTaken:
            report.notDone.append(row.from);
            break;
        case RenameState::Clash:
        case RenameState::Skipped:
            report.failures.push_back({row.from, Error{ErrorCode::AlreadyExists, row.wanted, {}}});
            break;
        case RenameState::Refused:
        case RenameState::Failed:
            report.failures.push_back({row.from, row.error.value_or(Error{ErrorCode::InvalidArgument, row.from, {}})});
            break;
        }
    }
    report.wasStopped = outcome.wasStopped;
    return report;
}

bool isLeftByStop(const RenameRow &row)
{
    return row.state == RenameState::Stopped || row.state == RenameState::NotTaken;
}

} // namespace

void UndoHistory::add(Operation operation)
{
    m_operations.push_back(std::move(operation));
    if (m_operations.size() > Most)
        m_operations.pop_front();
}

void UndoHistory::addTransfer(TransferKind kind, const TransferReport &report)
{
    if (!report.done.empty())
        add(Transfers{kind, report.done});
}

void UndoHistory::addDeletion(const DeletionReport &report)
{
    if (!report.trashed.empty() || !report.deleted.isEmpty())
        add(Deletions{report.trashed, report.deleted});
}

void UndoHistory::addRenames(const std::vector<RenameDone> &renames, const QStringList &foldersMade)
{
    if (!renames.empty())
        add(Renames{renames, foldersMade});
}

UndoSubject UndoHistory::subjectOf(const Operation &operation)
{
    if (const auto *const transfers = std::get_if<Transfers>(&operation)) {
        const auto kind = transfers->kind == TransferKind::Copy ? OperationKind::Copy : OperationKind::Move;
        return {kind, static_cast<qsizetype>(transfers->steps.size()), transfers->steps.front().source,
            transfers->steps.front().source};
    }
    if (const auto *const deletions = std::get_if<Deletions>(&operation)) {
        const auto count = static_cast<qsizetype>(deletions->trashed.size()) + deletions->deleted.size();
        return deletions->trashed.empty()
                   ? UndoSubject{OperationKind::DeleteForGood, count, deletions->deleted.front()}
                   : UndoSubject{OperationKind::Trash, count, deletions->trashed.front().original};
    }
    const auto &renames = std::get<Renames>(operation).renames;
    return {OperationKind::Rename, static_cast<qsizetype>(renames.size()), renames.front().to, renames.front().from};
}

std::optional<UndoSubject> UndoHistory::next() const
{
    return m_operations.empty() ? std::nullopt : std::optional(subjectOf(m_operations.back()));
}

UndoReport UndoHistory::undo(platform::FileSystem &fileSystem, const Watch &watch)
{
    if (m_operations.empty())
        return {};
    const Operation operation = std::move(m_operations.back());
    m_operations.pop_back();
    UndoReport report = std::visit([&](const auto &one) { return take(fileSystem, one, watch); }, operation);
    report.kind = subjectOf(operation).kind;
    report.wasStopped = report.wasStopped || !report.notDone.isEmpty();
    return report;
}

UndoReport UndoHistory::take(platform::FileSystem &fileSystem, const Transfers &transfers, const Watch &watch)
{
    Undoing undoing(fileSystem, watch);
    undoing.m_progress.total = static_cast<qsizetype>(transfers.steps.size());
    Transfers left{transfers.kind, {}};
    for (const TransferStep &step : reversed(transfers.steps)) {
        const QString &undonePath = step.isMove ? step.source : step.target;
        const bool isTaken = undoing.step(step.target, undonePath, [&]() -> Result<void> {
            if (step.isMove)
                return undoing.moveBack(step);
            return transfers.kind == TransferKind::Move ? undoing.endHalfMove(step) : undoing.removeCopy(step);
        });
        if (!isTaken)
            left.steps.push_back(step);
    }
    left.steps = reversed(left.steps);
    if (!left.steps.empty())
        add(std::move(left));
    return std::move(undoing.m_report);
}

UndoReport UndoHistory::take(platform::FileSystem &fileSystem, const Deletions &deletions, const Watch &watch)
{
    Undoing undoing(fileSystem, watch);
    undoing.m_progress.total = static_cast<qsizetype>(deletions.trashed.size()) + deletions.deleted.size();
    Deletions left;
    for (const platform::TrashedItem &item : reversed(deletions.trashed)) {
        if (!undoing.step(item.original, item.original, [&] { return platform::restoreFromTrash(item); }))
            left.trashed.push_back(item);
    }
    left.trashed = reversed(left.trashed);
    for (const QString &path : deletions.deleted) {
        if (!undoing.step(path, path, [&] { return refusal(path, QStringLiteral("it was deleted for good")); }))
            left.deleted.append(path);
    }
    if (!left.trashed.empty() || !left.deleted.isEmpty())
        add(std::move(left));
    return std::move(undoing.m_report);
}

UndoReport UndoHistory::take(platform::FileSystem &fileSystem, const Renames &renames, const Watch &watch)
{
    const RenamingOutcome outcome = undoRenaming(fileSystem, renames.renames, renames.foldersMade, watch);
    Renames left{{}, renames.foldersMade};
    for (const RenameRow &row : outcome.rows) {
        if (isLeftByStop(row))
            left.renames.push_back({row.wanted, row.from});
    }
    if (!left.renames.empty())
        add(std::move(left));
    return reportOf(outcome);
}

} // namespace ravlin
