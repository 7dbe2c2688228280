// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/outcomedialog.h"

#include "core/app/idiomas.h"
#include "core/files/list/listcolumns.h"

namespace ravlin {

namespace {

Text headlineOf(OperationKind kind)
{
    switch (kind) {
    case OperationKind::Copy:
        return Text::OutcomeCopy;
    case OperationKind::Move:
        return Text::OutcomeMove;
    case OperationKind::Trash:
    case OperationKind::DeleteForGood:
        return Text::OutcomeDelete;
    case OperationKind::Rename:
        return Text::OutcomeRename;
    case OperationKind::Undo:
        break;
    }
    return Text::OutcomeUndo;
}

QString reasonOf(const FileFailure &failure, const OperationReport &report, const Captions &captions)
{
    const bool isUndo = report.kind == OperationKind::Undo;
    QString reason = isUndo && failure.error.code == ErrorCode::Unsupported ? captions.text(Text::UndoImpossible)
                                                                            : captions.errorText(failure.error.code);
    // Inside a folder: which file it was.
    if (!failure.error.path.isEmpty() && failure.error.path != failure.path)
        reason += QStringLiteral(" (%1)").arg(shownName(failure.error.path));
    return reason;
}

QString line(const QString &path, const QString &reason)
{
    return shownName(path) + QStringLiteral(": ") + reason;
}

} // namespace

QStringList outcomeLines(const OperationReport &report, const Captions &captions)
{
    QStringList lines;
    for (const FileFailure &failure : report.failures)
        lines << line(failure.path, reasonOf(failure, report, captions));
    const QString untouched = captions.text(report.wasStopped ? Text::ErrorCancelled : Text::OutcomeUntouched);
    for (const QString &path : report.notDone)
        lines << line(path, untouched);
    for (const QString &path : report.skipped)
        lines << line(path, captions.text(Text::OutcomeSkipped));
    for (const QString &path : report.lost)
        lines << line(path, captions.text(Text::OutcomeLost));
    return lines;
}

QString outcomeHeadline(const OperationReport &report, const Captions &captions)
{
    const auto notDone = static_cast<qsizetype>(report.failures.size()) + report.notDone.size() + report.skipped.size();
    return captions.text(headlineOf(report.kind)).arg(report.doneCount).arg(notDone);
}

OutcomeDialog::OutcomeDialog(const Captions &captions, const OperationReport &report, QWidget *parent)
    : OutcomeBox(captions, outcomeHeadline(report, captions), outcomeLines(report, captions), parent)
{
}

} // namespace ravlin
