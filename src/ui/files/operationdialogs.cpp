// SPDX-License-Identifier: GPL-3.0-or-later
#include "ui/files/operationdialogs.h"

#include "core/app/idiomas.h"
#include "core/app/showntext.h"
#include "core/files/list/listcolumns.h"
#include "core/platform/path.h"
#include "ui/controls/busy.h"
#include "ui/controls/clashdialog.h"
#include "ui/controls/outcomebox.h"
#include "ui/controls/plain/messagebox.h"

#include <QPushButton>

#include <algorithm>
#include <utility>

namespace ravlin {

namespace {

constexpr qsizetype NamedInQuestion = 8; ///< files that a question names

bool isFolder(const QString &path)
{
    const auto node = platform::nodeAt(path);
    return node && node->kind == platform::NodeKind::Folder;
}

QString nameIn(const QString &path)
{
    return shownLine(platform::nameOf(path), MostNameLetters);
}

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
    // What was in the list a moment ago: "does not exist" would sound as if it never had.
    const bool isGone = failure.error.code == ErrorCode::NotFound && failure.error.path == failure.path;
    QString reason = isUndo && failure.error.code == ErrorCode::Unsupported ? captions.text(Text::UndoImpossible)
                     : isGone                                               ? captions.text(Text::OutcomeGone)
                                                                            : captions.errorText(failure.error.code);
    // Name the file inside the folder.
    if (!failure.error.path.isEmpty() && failure.error.path != failure.path)
        reason += QStringLiteral(" (%1)").arg(shownName(failure.error.path));
    return reason;
}

} // namespace

QStringList outcomeLines(const OperationReport &report, const Captions &captions)
{
    QStringList lines;
    const auto add = [&](const QString &path, const QString &reason) {
        lines << shownName(path) + captions.mark(u':') + u' ' + reason;
    };
    for (const FileFailure &failure : report.failures)
        add(failure.path, reasonOf(failure, report, captions));
    const QString untouched = captions.text(report.wasStopped ? Text::ErrorCancelled : Text::OutcomeUntouched);
    for (const QString &path : report.notDone)
        add(path, untouched);
    for (const QString &path : report.skipped)
        add(path, captions.text(Text::OutcomeSkipped));
    bool isDriveNamed = false; // one that is read-only, once for all files on it
    for (const FileFailure &failure : report.inBothPlaces) {
        QString text = captions.text(Text::OutcomeInBothPlaces);
        const bool isReadOnly = failure.error.code == ErrorCode::ReadOnlyDrive;
        if (!isReadOnly || !isDriveNamed)
            text += QStringLiteral(" (%1)").arg(reasonOf(failure, report, captions));
        isDriveNamed = isDriveNamed || isReadOnly;
        add(failure.path, text);
    }
    const Text lost = report.kind == OperationKind::Undo ? Text::OutcomeLost : Text::OutcomeReplacedLost;
    for (const QString &path : report.lost)
        add(path, captions.text(lost));
    return lines;
}

QString outcomeHeadline(const OperationReport &report, const Captions &captions)
{
    const auto notDone = static_cast<qsizetype>(report.failures.size() + report.inBothPlaces.size()) +
                         report.notDone.size() + report.skipped.size();
    return captions.text(headlineOf(report.kind)).arg(report.doneCount).arg(notDone);
}

OperationDialogs::OperationDialogs(const Captions &captions, Busy &busy, QWidget *window)
    : m_captions(captions), m_busy(busy), m_window(window)
{
}

bool OperationDialogs::takeHasWorked()
{
    return std::exchange(m_hasWorked, false);
}

ClashDecision OperationDialogs::askClash(const Clash &clash)
{
    const ClashDecision decision = ClashDialog(m_captions, clash, m_window).decide();
    if (decision.answer == ClashAnswer::Stop)
        m_hasWorked = false; // so far files were only looked at
    return decision;
}

QString OperationDialogs::questionAbout(const QStringList &paths, const Question &question) const
{
    if (paths.size() != 1)
        return m_captions.text(question.manyFiles).arg(paths.size());
    const QString &path = paths.front();
    return m_captions.text(isFolder(path) ? question.folder : question.oneFile).arg(nameIn(path));
}

bool OperationDialogs::confirmTrash(const QStringList &paths)
{
    return ask(questionAbout(paths, {Text::AskTrashFile, Text::AskTrashFiles, Text::AskTrashFolder}), paths, false);
}

bool OperationDialogs::confirmDeleteForGood(const QStringList &paths, NoWayBack reason)
{
    const Question question =
        reason == NoWayBack::TrashFull
            ? Question{Text::AskDeleteFileFull, Text::AskDeleteFilesFull, Text::AskDeleteFolderFull}
            : Question{Text::AskDeleteFile, Text::AskDeleteFiles, Text::AskDeleteFolder};
    return ask(questionAbout(paths, question), paths, true);
}

/// Enter may put files into the trash, which gives them back, but must not delete for good.
bool OperationDialogs::ask(const QString &question, const QStringList &paths, bool isForGood)
{
    MessageBox box(isForGood ? MessageBox::Warning : MessageBox::Question, QString(), question,
        MessageBox::Yes | MessageBox::No, m_window);
    box.setObjectName(QStringLiteral("question"));
    box.setDefaultButton(isForGood ? MessageBox::No : MessageBox::Yes);
    box.setEscapeButton(MessageBox::No);
    if (paths.size() > 1) {
        QStringList names;
        const qsizetype named = std::min(paths.size(), NamedInQuestion);
        for (const QString &path : paths.first(named))
            names << nameIn(path);
        if (paths.size() > named)
            names << m_captions.text(Text::AndMore).arg(paths.size() - named);
        box.setFurtherText(names.join(u'\n'));
    }
    return box.exec() == MessageBox::Yes;
}

bool OperationDialogs::runLong(OperationKind /*kind*/, const std::function<void(const Watch &)> &work)
{
    std::stop_source stop;
    const bool ran = m_busy.run(0, stop, [&](const ProgressReport &show) {
        const auto showNamed = [&show](Progress now) {
            now.path = shownName(now.path);
            show(now);
        };
        work({showNamed, stop.get_token()});
    });
    m_hasWorked = m_hasWorked || ran;
    return ran;
}

void OperationDialogs::tell(const OperationReport &report)
{
    m_hasWorked = true; // a file that is not there any more is listed no longer
    OutcomeBox(m_captions, outcomeHeadline(report, m_captions), outcomeLines(report, m_captions), m_window).exec();
}

} // namespace ravlin
