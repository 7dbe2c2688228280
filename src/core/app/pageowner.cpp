// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/pageowner.h"

#include "core/app/batch.h"

namespace ravlin {

WorkFailures failuresOf(const QStringList &paths, const BatchOutcome &outcome)
{
    WorkFailures failures;
    for (qsizetype row = 0; row < outcome.takenCount(); ++row) {
        if (const Error *error = outcome.error(row); error != nullptr)
            failures.failed.emplace_back(paths[row], *error);
    }
    failures.notTried = outcome.rowCount() - outcome.takenCount();
    return failures;
}

bool PageOwner::runRecorded(history::Kind kind, qsizetype rowCount, const RecordedWork &work)
{
    bool ran = false;
    record(kind, [&]() -> std::optional<WorkFailures> {
        WorkFailures failures;
        ran = runWithProgress(rowCount, [&](const ProgressReport &progress) { failures = work(progress); });
        return ran ? std::optional(std::move(failures)) : std::nullopt;
    });
    return ran;
}

} // namespace ravlin
