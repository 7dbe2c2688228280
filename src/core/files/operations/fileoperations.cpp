// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/operations/fileoperations.h"

#include "core/storage/recorder.h"
#include "core/storage/saferename.h"

#include "core/platform/path.h"

#include <QSet>

#include <algorithm>

namespace ravlin {

namespace {

/// Neither ResultDone nor ResultCancelled, whatever the code.
int resultOf(ErrorCode code)
{
    return 1 + static_cast<int>(code);
}

bool isFolder(platform::FileSystem &fileSystem, const QString &path)
{
    const auto info = fileSystem.info(path);
    return info && info->isFolder;
}

/// Into the destination if that is a folder; else a single source gets it as its path.
TransferRequest transferRequest(platform::FileSystem &fileSystem, const FileRequest &request, TransferKind kind)
{
    const QStringList sources = sourcePaths(request.source);
    const QString &destination = request.destination;
    if (sources.size() != 1 || destination.endsWith(platform::Separator) || isFolder(fileSystem, destination) ||
        !destination.contains(platform::Separator))
        return {kind, sources, destination};
    return {kind, sources, platform::folderOf(destination), platform::nameOf(destination)};
}

OperationReport reportOf(TransferKind kind, const TransferReport &report)
{
    OperationReport told;
    told.kind = kind == TransferKind::Copy ? OperationKind::Copy : OperationKind::Move;
    told.doneCount = report.doneCount();
    told.failures = report.failures;
    told.inBothPlaces = report.inBothPlaces;
    told.lost = report.lost;
    told.skipped = report.skipped;
    told.notDone = report.notDone;
    told.wasStopped = report.wasStopped;
    return told;
}

/// Removes and returns the paths that could not go into the trash for that reason.
QStringList takeOut(DeletionReport &report, ErrorCode reason)
{
    QStringList paths;
    std::erase_if(report.failures, [&](const FileFailure &failure) {
        if (failure.error.code != reason)
            return false;
        paths.append(failure.path);
        return true;
    });
    return paths;
}

/// The paths that are not in the report of those that can't be deleted.
QStringList deletable(QStringList paths, const DeletionReport &refused)
{
    QSet<QString> out(refused.notDone.begin(), refused.notDone.end());
    for (const FileFailure &failure : refused.failures)
        out.insert(failure.path);
    paths.removeIf([&](const QString &path) { return out.contains(platform::withoutEndSeparator(path)); });
    return paths;
}

void append(DeletionReport &report, const DeletionReport &further)
{
    report.trashed.insert(report.trashed.end(), further.trashed.begin(), further.trashed.end());
    report.deleted.append(further.deleted);
    report.failures.insert(report.failures.end(), further.failures.begin(), further.failures.end());
    report.notDone.append(further.notDone);
    report.wasStopped = report.wasStopped || further.wasStopped;
}

} // namespace

int FileOperations::perform(const FileRequest &request)
{
    switch (request.operation) {
    case FileOperation::Copy:
        return transfer(request, TransferKind::Copy);
    case FileOperation::Move:
        return transfer(request, TransferKind::Move);
    case FileOperation::Delete:
        return remove(request);
    case FileOperation::Rename:
        return rename(request);
    }
    return resultOf(ErrorCode::InvalidArgument);
}

int FileOperations::finish(const OperationReport &report)
{
    if (!report.isComplete())
        m_host.tell(report);
    if (!report.failures.empty())
        return resultOf(report.failures.front().error.code);
    if (!report.inBothPlaces.empty())
        return resultOf(report.inBothPlaces.front().error.code);
    return report.wasStopped ? ResultCancelled : ResultDone;
}

int FileOperations::transfer(const FileRequest &request, TransferKind kind)
{
    const auto operation = kind == TransferKind::Copy ? OperationKind::Copy : OperationKind::Move;
    const TransferRequest wanted = transferRequest(m_fileSystem, request, kind);
    Result<TransferPlan> plan;
    const bool planned = m_host.runLong(
        operation, [&](const Watch &watch) { plan = makeTransferPlan(m_fileSystem, wanted, watch.stop); });
    if (!planned)
        return ResultCancelled;
    if (!plan && plan.error().code == ErrorCode::Cancelled)
        return ResultCancelled;
    if (!plan) {
        OperationReport report;
        report.kind = operation;
        report.failures.push_back({wanted.folder, plan.error()});
        report.notDone = wanted.sources;
        return finish(report);
    }
    if (!answerClashes(*plan, [&](const Clash &clash) { return m_host.askClash(clash); }))
        return ResultCancelled;
    TransferReport report;
    history::Summary summary;
    const bool ran = m_host.runLong(operation, [&](const Watch &watch) {
        history::Operation entry(&m_history, kind == TransferKind::Copy ? history::Kind::Copy : history::Kind::Move,
            folderOfEntry(wanted.sources));
        report = runTransfer(m_fileSystem, *plan, watch, &m_history);
        for (const FileFailure &failure : report.failures)
            entry.failed(failure.path, failure.error);
        summary = entry.finish();
    });
    if (!ran)
        return ResultCancelled;
    m_host.recorded(summary);
    return finish(reportOf(kind, report));
}

int FileOperations::remove(const FileRequest &request)
{
    DeletionReport done = undeletable(sourcePaths(request.source));
    const QStringList paths = deletable(sourcePaths(request.source), done);
    QStringList withoutWayBack = (request.flags & FlagAllowUndo) != 0 ? withoutTrash(paths) : paths;
    QStringList forTrash = paths;
    forTrash.removeIf([&](const QString &path) { return withoutWayBack.contains(path); });
    QStringList tooFull;
    // Open across the questions: what is asked for at once is one entry.
    std::optional<history::Operation> entry;
    const auto begin = [&](history::Kind kind) {
        if (!entry)
            entry.emplace(&m_history, kind, folderOfEntry(paths));
    };
    if (!forTrash.isEmpty()) {
        const bool asks = (request.flags & FlagNoConfirmation) == 0;
        if (asks && !m_host.confirmTrash(forTrash))
            return ResultCancelled;
        const bool ran = m_host.runLong(OperationKind::Trash, [&](const Watch &watch) {
            begin(history::Kind::Trash);
            append(done, putIntoTrash(forTrash, watch, &m_history));
        });
        if (!ran)
            return ResultCancelled;
        withoutWayBack += takeOut(done, ErrorCode::NoTrash);
        tooFull = takeOut(done, ErrorCode::NoSpace);
    }
    // Ask separately: a yes to the trash is not a yes to losing files.
    const auto removeForGood = [&](const QStringList &given, NoWayBack reason) {
        if (given.isEmpty())
            return true;
        if (done.wasStopped || !m_host.confirmDeleteForGood(given, reason))
            return false;
        return m_host.runLong(OperationKind::DeleteForGood, [&](const Watch &watch) {
            begin(history::Kind::Delete);
            append(done, deleteForGood(m_fileSystem, given, watch, &m_history));
        });
    };
    const bool areDeleted = removeForGood(withoutWayBack, NoWayBack::NoTrash);
    const bool areAllDeleted = removeForGood(tooFull, NoWayBack::TrashFull) && areDeleted;
    if (entry) {
        for (const FileFailure &failure : done.failures)
            entry->failed(failure.path, failure.error);
        m_host.recorded(entry->finish());
    }
    OperationReport report;
    report.kind = forTrash.isEmpty() ? OperationKind::DeleteForGood : OperationKind::Trash;
    report.doneCount = static_cast<qsizetype>(done.trashed.size()) + done.deleted.size();
    report.failures = done.failures;
    report.notDone = done.notDone;
    report.wasStopped = done.wasStopped;
    const int result = finish(report);
    return result == ResultDone && !areAllDeleted ? ResultCancelled : result;
}

int FileOperations::rename(const FileRequest &request)
{
    const QString source = sourcePaths(request.source).value(0);
    const QString &target = request.destination;
    const bool isOther = source != target;
    OperationReport report;
    report.kind = OperationKind::Rename;
    history::Operation entry(&m_history, history::Kind::Rename, folderOfEntry({source}));
    storage::Recorder recorder(m_fileSystem, isOther ? &m_history : nullptr);
    const QString aside = isOther ? storage::asidePath(source) : QString();
    const auto ticket = recorder.begin(storage::ChangeKind::Move, source, target, aside);
    if (const auto renamed = storage::renameFile(m_fileSystem, source, target, aside); renamed) {
        recorder.done(ticket, target);
        report.doneCount = 1;
    } else {
        recorder.failed(ticket, renamed.error());
        entry.failed(source, renamed.error());
        report.failures.push_back({source, renamed.error()});
    }
    m_host.recorded(entry.finish());
    return finish(report);
}

int FileOperations::undo(const UndoRequest &request, UndoReport *report)
{
    const auto next = m_history.nextUndo();
    if (!request.entry && next && !*next)
        return ResultDone;
    return takeBack([&](const Watch &watch) { return ravlin::undo(m_history, m_fileSystem, request, watch); }, report);
}

int FileOperations::redo()
{
    const auto next = m_history.nextRedo();
    if (next && !*next)
        return ResultDone;
    return takeBack([&](const Watch &watch) { return ravlin::redo(m_history, m_fileSystem, watch); }, nullptr);
}

int FileOperations::takeBack(const TakeBack &work, UndoReport *told)
{
    Result<UndoReport> undone;
    const bool ran = m_host.runLong(OperationKind::Undo, [&](const Watch &watch) { undone = work(watch); });
    if (!ran)
        return ResultCancelled;
    OperationReport report;
    report.kind = OperationKind::Undo;
    if (!undone) {
        report.failures.push_back({undone.error().path, undone.error()});
        return finish(report);
    }
    report.doneCount = undone->undone.size();
    report.failures = undone->failures;
    report.notDone = undone->notDone;
    report.lost = undone->lost;
    report.wasStopped = undone->wasStopped;
    if (undone->later.empty())
        m_host.takenBack(undone->summary);
    const bool isLeft = !undone->later.empty();
    if (told != nullptr)
        *told = *std::move(undone);
    return isLeft ? ResultCancelled : finish(report);
}

QString FileOperations::folderOfEntry(const QStringList &paths)
{
    return platform::folderOf(storage::recordedPath(m_fileSystem, paths.value(0)));
}

QString nearestFolder(platform::FileSystem &fileSystem, const QString &path)
{
    QString folder = platform::withoutEndSeparator(path);
    while (!isFolder(fileSystem, folder)) {
        const QString above = platform::folderOf(folder);
        if (above == folder || !folder.contains(platform::Separator))
            return {}; // its drive is gone
        folder = above;
    }
    return platform::withEndSeparator(folder);
}

} // namespace ravlin
