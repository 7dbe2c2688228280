// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/batch.h"

#include <algorithm>

namespace ravlin {

qsizetype BatchOutcome::doneCount() const
{
    return std::count_if(m_taken.begin(), m_taken.end(), [](const Result<void> &row) { return row.has_value(); });
}

RowOutcome BatchOutcome::outcome(qsizetype row) const
{
    if (row >= takenCount())
        return RowOutcome::NotTaken;
    return m_taken[static_cast<std::size_t>(row)] ? RowOutcome::Done : RowOutcome::Failed;
}

const Error *BatchOutcome::error(qsizetype row) const
{
    return outcome(row) == RowOutcome::Failed ? &m_taken[static_cast<std::size_t>(row)].error() : nullptr;
}

bool BatchOutcome::hasError(ErrorCode code) const
{
    return std::any_of(
        m_taken.begin(), m_taken.end(), [code](const Result<void> &row) { return !row && row.error().code == code; });
}

BatchOutcome runBatch(const QStringList &paths, const ProgramState &state, const ProgressReport &progress,
    const RowWork &work, BatchPolicy policy)
{
    BatchOutcome outcome(paths.size());
    for (const QString &path : paths) {
        if (state.cancelled && policy.onCancelled == OnCancelled::StopTaking)
            break;
        if (progress)
            progress({outcome.takenCount() + 1, paths.size(), path});
        Result<void> result = work(path);
        const bool failed = !result && !isRefusal(result.error().code) && result.error().code != ErrorCode::NotStorable;
        outcome.add(std::move(result));
        if (failed && policy.onFailure == OnFailure::End)
            break;
    }
    return outcome;
}

} // namespace ravlin
