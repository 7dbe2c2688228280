// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/texttable.h"
#include "core/files/operations/fileoperations.h"

#include <QString>

class QWidget;

namespace ravlin {

class Busy;
class Captions;

/// A line for each thing that an operation did not do: its path and the reason.
QStringList outcomeLines(const OperationReport &report, const Captions &captions);
/// How many were done and how many were not.
QString outcomeHeadline(const OperationReport &report, const Captions &captions);

/// What FileOperations asks and shows, as windows over the main window: the questions before a deletion and about a
/// taken name, the wait window with its way to stop, and what was not done.
class OperationDialogs final : public FileOperationHost
{
public:
    /// All must outlive this.
    OperationDialogs(const Captions &captions, Busy &busy, QWidget *window);

    ClashDecision askClash(const Clash &clash) override;
    bool confirmTrash(const QStringList &paths) override;
    bool confirmDeleteForGood(const QStringList &paths, NoWayBack reason) override;
    bool runLong(OperationKind kind, const std::function<void(const Watch &)> &work) override;
    void tell(const OperationReport &report) override;
    void recorded(const history::Summary &summary) override { m_recorded(summary, false); }
    void takenBack(const history::Summary &summary) override { m_recorded(summary, true); }

    using Recorded = std::function<void(const history::Summary &summary, bool isTakenBack)>;
    /// Gets what the history has of each operation.
    void setRecorded(Recorded recorded) { m_recorded = std::move(recorded); }

    /// Whether files may have changed since the last call of this: not if a question was answered with no, or other
    /// work was under way.
    bool takeHasWorked();

private:
    struct Question
    {
        Text oneFile;
        Text manyFiles;
        Text folder;
    };
    QString questionAbout(const QStringList &paths, const Question &question) const;
    bool ask(const QString &question, const QStringList &paths, bool isForGood);

    const Captions &m_captions;
    Busy &m_busy;
    QWidget *m_window;
    bool m_hasWorked = false;
    Recorded m_recorded = [](const history::Summary &, bool) {};
};

} // namespace ravlin
