// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "core/history/history.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace ravlin {

class BatchOutcome;

/// What a work could not do.
struct WorkFailures
{
    std::vector<std::pair<QString, Error>> failed; ///< by path
    qsizetype notTried = 0;                        ///< rows that it ended before
};

WorkFailures failuresOf(const QStringList &paths, const BatchOutcome &outcome);

using RecordedWork = std::function<WorkFailures(const ProgressReport &)>;

/// What a page of the working modes needs from its window: the file list's rows, a place for long work, and boxes for
/// the user. All calls come from the interface thread.
class PageOwner
{
public:
    virtual ~PageOwner() = default;

    /// The file of the list's current row: current folder and row text. Empty if there is no current row.
    virtual QString currentPath() const = 0;
    /// The files of the selected rows, in list order.
    virtual QStringList selectedPaths() const = 0;
    /// The number of selected rows; called at every change of the selection.
    virtual qsizetype selectedCount() const = 0;

    /// Unselects the current row, then makes the row that many steps below it (negative: above) current and selects it.
    /// Returns false and changes nothing if there is no such row. The caller shows the new row itself.
    virtual bool moveCurrent(qsizetype step) = 0;
    /// Lists the current folder again. The caller shows the current row itself afterwards.
    virtual void refreshList() = 0;
    /// The same after files were renamed: the row of the file at that path becomes current, if it is listed. selected:
    /// where the selected files are now.
    virtual void refreshListAt(const QString &path, const QStringList &selected) = 0;

    /// Runs the work on its own thread and shows its progress out of that number of rows. Returns when the work has
    /// ended; until then the window paints but takes no input. Returns false and does nothing while other work runs.
    [[nodiscard]] virtual bool runWithProgress(
        qsizetype rowCount, const std::function<void(const ProgressReport &)> &work) = 0;

    /// Makes what work changes one entry of the history, about which a notice tells afterwards. work returns nothing if
    /// it changed nothing on purpose, such as when the user declined. Not called while other work runs.
    virtual void record(history::Kind kind, const std::function<std::optional<WorkFailures>()> &work) = 0;
    /// Both: runs work that changes files.
    [[nodiscard]] bool runRecorded(history::Kind kind, qsizetype rowCount, const RecordedWork &work);

    /// A box with the buttons yes and no, which is the default. True: yes. furtherText: what it means, below the
    /// question.
    virtual bool ask(const QString &question, const QString &furtherText) = 0;
    /// A box with the error icon.
    virtual void showError(const QString &text) = 0;
};

} // namespace ravlin
