// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/programstate.h"
#include "core/app/progress.h"
#include "core/platform/error.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace ravlin {

enum class OnFailure
{
    GoOn, ///< the row counts as failed, the next is taken
    End   ///< no further row is taken, unless the program itself refused the file (isRefusal) or a value (NotStorable)
};

enum class OnCancelled
{
    GoOn,
    StopTaking ///< no further row is taken once the program's cancelled flag is set
};

struct BatchPolicy
{
    OnFailure onFailure = OnFailure::GoOn;
    OnCancelled onCancelled = OnCancelled::GoOn;
};

/// For runs that write tags.
inline constexpr BatchPolicy TagWritingPolicy{OnFailure::End, OnCancelled::StopTaking};
/// For runs whose rows do not depend on each other.
inline constexpr BatchPolicy RowByRowPolicy{OnFailure::GoOn, OnCancelled::GoOn};

enum class RowOutcome
{
    Done,
    Failed,
    NotTaken
};

/// What became of each row. Rows are taken in order, so the ones not taken are the last ones.
class BatchOutcome
{
public:
    explicit BatchOutcome(qsizetype rowCount = 0) : m_rowCount(rowCount) {}

    void add(Result<void> result) { m_taken.push_back(std::move(result)); }

    qsizetype rowCount() const { return m_rowCount; }
    qsizetype takenCount() const { return static_cast<qsizetype>(m_taken.size()); }
    qsizetype doneCount() const;
    /// row: 0 to rowCount() - 1.
    RowOutcome outcome(qsizetype row) const;
    /// Why a row failed; nullptr for the others. Valid until the outcome changes.
    const Error *error(qsizetype row) const;
    bool hasError(ErrorCode code) const;

private:
    qsizetype m_rowCount;
    std::vector<Result<void>> m_taken;
};

/// Does the work of one row, on the batch's thread.
using RowWork = std::function<Result<void>(const QString &path)>;

/// Does the work for every path in order. Reports each row before its work; done counts it already.
///
/// Meant for a worker thread. Until it returns the state belongs to the batch: the work may set its flags, and no other
/// thread may touch it. Shows nothing.
BatchOutcome runBatch(const QStringList &paths, const ProgramState &state, const ProgressReport &progress,
    const RowWork &work, BatchPolicy policy);

} // namespace ravlin
