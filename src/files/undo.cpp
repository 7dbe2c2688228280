#include "files/undo.h"

#include "platform/leftovers.h"

#include <ranges>

namespace ravlin {

namespace {

/// Undoes the steps of one operation and keeps account of them.
class Undoing
{
public:
    Undoing(platform::FileSystem &fileSystem, const TransferOptions &options)
        : m_fileSystem(fileSystem), m_options(options)
    {
    }

    /// Calls work(path) unless a stop was requested; path is what failures are told for.
    template <typename Work>
    void step(const QString &path, const QString &undonePath, Work work)
    {
        if (m_options.stop.stop_requested()) {
            m_report.notDone.append(path);
            return;
        }
        m_progress.path = path;
        if (m_options.progress)
            m_options.progress(m_progress);
        if (const Result<void> undone = work())
            m_report.undone.append(undonePath);
        else
            m_report.failures.push_back({path, undone.error()});
        ++m_progress.itemsDone;
    }

    Result<void> moveBack(const TransferStep &step);
    Result<void> removeCopy(const TransferStep &step);

    UndoReport m_report;
    TransferProgress m_progress;

private:
    Result<void> makeFolder(const QString &path);

    platform::FileSystem &m_fileSystem;
    const TransferOptions &m_options;
};

Result<void> Undoing::makeFolder(const QString &path)
{
    if (platform::isTaken(path))
        return {};
    return makeFolder(platform::folderOf(path)).and_then([&] { return m_fileSystem.createFolder(path); });
}

Result<void> Undoing::moveBack(const TransferStep &step)
{
    // Folders that were merged into others went away when they were empty.
    const QString folder = platform::folderOf(step.source);
    const auto made = makeFolder(folder);
    if (!made)
        return made;
    const auto plan = makeTransferPlan(
        m_fileSystem, {TransferKind::Move, {step.target}, folder, platform::nameOf(step.source)}, m_options.stop);
    if (!plan)
        return tl::unexpected(plan.error());
    const TransferReport report = runTransfer(m_fileSystem, *plan, {{}, m_options.stop});
    if (!report.failures.empty())
        return tl::unexpected(report.failures.front().error);
    if (!report.skipped.isEmpty())
        return tl::unexpected(Error{ErrorCode::AlreadyExists, step.source, {}});
    if (!report.notDone.isEmpty())
        return tl::unexpected(Error{ErrorCode::Cancelled, step.source, {}});
    if (step.replaced)
        m_report.lost.append(step.target);
    return {};
}

Result<void> Undoing::removeCopy(const TransferStep &step)
{
    if (step.replaced)
        return tl::unexpected(
            Error{ErrorCode::Unsupported, step.target, QStringLiteral("it has taken the place of another file")});
    const auto node = platform::nodeAt(step.target);
    if (!node)
        return tl::unexpected(node.error());
    const bool isUnchanged =
        step.isFolder || (node->info.size == step.made.size && node->info.modified == step.made.modified);
    if (!isUnchanged)
        return tl::unexpected(Error{ErrorCode::ChangedMeanwhile, step.target, {}});
    return platform::moveToTrash(step.target).map([](const platform::TrashedItem &) {});
}

/// A batch tells its rows; an undo shows them as its own.
class RenameProgress final : public BatchProgress
{
public:
    RenameProgress(const TransferOptions &options, qsizetype total) : m_options(options) { m_now.itemsTotal = total; }

    void advance(const QString &path) override
    {
        m_now.path = path;
        if (m_options.progress)
            m_options.progress(m_now);
        ++m_now.itemsDone;
    }

private:
    const TransferOptions &m_options;
    TransferProgress m_now;
};

UndoReport undoRenames(platform::FileSystem &fileSystem, const std::vector<RenameDone> &renames,
    const QStringList &foldersMade, const TransferOptions &options)
{
    RenameProgress progress(options, static_cast<qsizetype>(renames.size()));
    const RenamingOutcome outcome = undoRenaming(fileSystem, renames, foldersMade, progress, options.stop);
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

UndoReport UndoHistory::undo(platform::FileSystem &fileSystem, const TransferOptions &options)
{
    if (m_operations.empty())
        return {};
    const Operation operation = std::move(m_operations.back());
    m_operations.pop_back();
    const UndoSubject subject = subjectOf(operation);
    if (const auto *const renames = std::get_if<Renames>(&operation)) {
        UndoReport report = undoRenames(fileSystem, renames->renames, renames->foldersMade, options);
        report.kind = subject.kind;
        return report;
    }

    Undoing undoing(fileSystem, options);
    undoing.m_report.kind = subject.kind;
    undoing.m_progress.itemsTotal = subject.count;
    if (const auto *const transfers = std::get_if<Transfers>(&operation)) {
        for (const TransferStep &step : std::views::reverse(transfers->steps)) {
            if (step.isMove)
                undoing.step(step.target, step.source, [&] { return undoing.moveBack(step); });
            else
                undoing.step(step.target, step.target, [&] { return undoing.removeCopy(step); });
        }
    } else {
        const auto &deletions = std::get<Deletions>(operation);
        for (const platform::TrashedItem &item : std::views::reverse(deletions.trashed))
            undoing.step(item.original, item.original, [&] { return platform::restoreFromTrash(item); });
        for (const QString &path : deletions.deleted)
            undoing.m_report.failures.push_back(
                {path, Error{ErrorCode::Unsupported, path, QStringLiteral("it was deleted for good")}});
    }
    undoing.m_report.wasStopped = !undoing.m_report.notDone.isEmpty();
    return std::move(undoing.m_report);
}

} // namespace ravlin
