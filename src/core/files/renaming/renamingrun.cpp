// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renaming.h"
#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "core/storage/recorder.h"
#include "core/storage/saferename.h"

#include <algorithm>
#include <set>

namespace ravlin {

namespace {

/// Returns false if it is not empty or can't be removed.
bool removeEmptyFolder(platform::FileSystem &fileSystem, const QString &path, storage::Recorder &recorder)
{
    const auto place = platform::placeAt(fileSystem, path);
    if (!place)
        return false;
    const auto ticket = recorder.begin(storage::ChangeKind::Delete, path);
    const Result<void> removed = place->folder->removeFolder(place->name);
    if (removed)
        recorder.done(ticket);
    else
        recorder.failed(ticket, removed.error());
    return removed.has_value();
}

/// Carries one plan out. Takes the rows in order, but before a row the one whose file still bears its new name.
class RenamingRun
{
public:
    RenamingRun(platform::FileSystem &fileSystem, const RenamingPlan &plan, storage::Journal *journal)
        : m_fileSystem(fileSystem), m_plan(plan), m_recorder(fileSystem, journal), m_isDone(plan.rows().size(), false)
    {
        m_outcome.rows = plan.rows();
    }

    RenamingOutcome run(const Watch &watch)
    {
        const auto total = static_cast<qsizetype>(m_outcome.rows.size());
        qsizetype begun = 0;
        for (std::size_t row = 0; row < m_outcome.rows.size(); ++row) {
            if (m_outcome.rows[row].renames() && !m_isDone[row] && watch.stop.stop_requested()) {
                notTaken(row);
                continue;
            }
            watch.report({++begun, total, m_outcome.rows[row].from});
            if (m_outcome.rows[row].renames() && !m_isDone[row])
                take(row, watch.stop);
        }
        for (RenameRow &row : m_outcome.rows) {
            if (row.state == RenameState::Clash)
                row.state = RenameState::Skipped;
            if (row.renames())
                m_outcome.renames.push_back({row.from, row.path});
        }
        if (m_outcome.count(RenameState::Failed) > 0)
            removeUnused();
        return std::move(m_outcome);
    }

private:
    void notTaken(std::size_t row)
    {
        m_isDone[row] = true;
        m_outcome.wasStopped = true;
        m_outcome.rows[row].state = RenameState::NotTaken;
        m_outcome.rows[row].path = m_outcome.rows[row].from;
    }

    void fail(std::size_t row, const Error &error)
    {
        m_outcome.rows[row].state = RenameState::Failed;
        m_outcome.rows[row].error = error;
        m_outcome.rows[row].path = m_outcome.rows[row].from;
    }

    /// Takes the row, after those that must go first.
    void take(std::size_t row, const std::stop_token &stop)
    {
        std::vector<std::size_t> chain{row};
        std::optional<std::size_t> occupant = m_plan.occupantOf(row);
        while (occupant && *occupant != row && !m_isDone[*occupant]) {
            chain.push_back(*occupant);
            occupant = m_plan.occupantOf(*occupant);
        }
        if (occupant == row) {
            takeRing(chain);
            return;
        }
        for (std::size_t i = chain.size(); i > 0; --i) {
            if (i < chain.size() && stop.stop_requested())
                notTaken(chain[i - 1]);
            else
                takeOne(chain[i - 1]);
        }
    }

    void takeOne(std::size_t row)
    {
        m_isDone[row] = true;
        const RenameRow &planned = m_outcome.rows[row];
        if (const Result<void> made = makeFolderFor(row); !made) {
            fail(row, made.error());
            return;
        }
        // Where the file system takes both names for the same, it is renamed in two steps.
        const QString aside = m_plan.occupantOf(row) == row ? storage::asidePath(planned.from) : QString();
        const auto ticket = m_recorder.begin(storage::ChangeKind::Move, planned.from, planned.path, aside);
        const Result<void> renamed = storage::renameFile(m_fileSystem, planned.from, planned.path, aside);
        if (!renamed)
            fail(row, renamed.error());
        record(ticket, row);
    }

    void record(const storage::Recorder::Ticket &ticket, std::size_t row)
    {
        if (m_outcome.rows[row].error)
            m_recorder.failed(ticket, *m_outcome.rows[row].error);
        else
            m_recorder.done(ticket, m_outcome.rows[row].path);
    }

    Result<void> makeFolderFor(std::size_t row)
    {
        const RenameRow &planned = m_outcome.rows[row];
        return planned.makesFolder ? makeFolderOf(planned.path) : Result<void>();
    }

    /// Moves the first row's file aside, renames the others from the last on, then gives the first one its name. If one
    /// can't be renamed, all go back to where they were. All are recorded before the first step and until the last:
    /// what an interruption left of the ring goes back as a whole.
    void takeRing(const std::vector<std::size_t> &ring)
    {
        const QString first = m_outcome.rows[ring.front()].from;
        const QString aside = storage::asidePath(first);
        std::vector<storage::Recorder::Ticket> tickets(ring.size());
        for (std::size_t i = 0; i < ring.size(); ++i) {
            m_isDone[ring[i]] = true;
            const RenameRow &row = m_outcome.rows[ring[i]];
            tickets[i] = m_recorder.begin(storage::ChangeKind::Move, row.from, row.path, i == 0 ? aside : QString());
        }
        const auto lock = storage::lockAside(m_fileSystem, first);
        if (const Result<void> moved = storage::renameFile(m_fileSystem, first, aside); !moved) {
            for (const std::size_t row : ring)
                fail(row, moved.error());
        } else {
            turn(ring, aside);
        }
        for (std::size_t i = 0; i < ring.size(); ++i)
            record(tickets[i], ring[i]);
        if (m_outcome.rows[ring.front()].path == aside)
            m_recorder.done(m_recorder.begin(storage::ChangeKind::Move, first, aside), aside);
    }

    void turn(const std::vector<std::size_t> &ring, const QString &aside)
    {
        std::vector<std::size_t> renamed;
        for (std::size_t i = ring.size(); i > 0; --i) {
            const RenameRow &row = m_outcome.rows[ring[i - 1]];
            const Result<void> done = storage::renameFile(m_fileSystem, i == 1 ? aside : row.from, row.path);
            if (!done) {
                takeBack(ring, renamed, aside, done.error());
                return;
            }
            renamed.push_back(ring[i - 1]);
        }
    }

    void takeBack(const std::vector<std::size_t> &ring, std::vector<std::size_t> renamed, const QString &aside,
        const Error &error)
    {
        while (!renamed.empty()) {
            RenameRow &row = m_outcome.rows[renamed.back()];
            if (!storage::renameFile(m_fileSystem, row.path, row.from))
                break; // the others keep their new names
            renamed.pop_back();
        }
        for (const std::size_t row : ring) {
            if (std::ranges::find(renamed, row) == renamed.end())
                fail(row, error);
        }
        // If this fails too, its name still shows what it was.
        RenameRow &first = m_outcome.rows[ring.front()];
        if (!storage::renameFile(m_fileSystem, aside, first.from))
            first.path = aside;
    }

    Result<void> makeFolderOf(const QString &path)
    {
        const QString folder = platform::folderOf(path);
        if (!m_foldersThere.insert(folder).second)
            return {};
        QStringList missing;
        for (QString above = folder; !m_fileSystem.info(above); above = platform::folderOf(above)) {
            missing.prepend(above);
            if (platform::folderOf(above) == above)
                break; // the root of a drive that is not there
        }
        for (const QString &next : missing) {
            const auto ticket = m_recorder.beginCreate(next, true);
            const Result<void> made = m_fileSystem.createFolder(next);
            if (made)
                m_recorder.done(ticket, next);
            else
                m_recorder.failed(ticket, made.error());
            if (!made && made.error().code != ErrorCode::AlreadyExists) {
                m_foldersThere.erase(folder);
                return made;
            }
            if (made)
                m_outcome.foldersMade.push_back(next);
        }
        return {};
    }

    /// Removes the folders that were made for rows which then failed.
    void removeUnused()
    {
        for (qsizetype i = m_outcome.foldersMade.size(); i > 0; --i) {
            if (removeEmptyFolder(m_fileSystem, m_outcome.foldersMade[i - 1], m_recorder))
                m_outcome.foldersMade.removeAt(i - 1);
        }
    }

    platform::FileSystem &m_fileSystem;
    const RenamingPlan &m_plan;
    storage::Recorder m_recorder;
    RenamingOutcome m_outcome;
    std::vector<bool> m_isDone;
    std::set<QString> m_foldersThere;
};

} // namespace

RenamingOutcome runRenaming(
    platform::FileSystem &fileSystem, const RenamingPlan &plan, const Watch &watch, storage::Journal *journal)
{
    return RenamingRun(fileSystem, plan, journal).run(watch);
}

RenamingOutcome undoRenaming(platform::FileSystem &fileSystem, const std::vector<RenameDone> &renames,
    const QStringList &foldersMade, const Watch &watch, storage::Journal *journal)
{
    std::vector<RenameRow> rows;
    rows.reserve(renames.size());
    for (const RenameDone &done : renames)
        rows.push_back({.from = done.to, .wanted = done.from});
    RenamingPlan plan(fileSystem, std::move(rows));
    plan.answerAll(ClashAnswer::KeepBoth);
    RenamingOutcome outcome = runRenaming(fileSystem, plan, watch, journal);
    storage::Recorder recorder(fileSystem, journal);
    QStringList folders = foldersMade;
    while (!folders.isEmpty())
        removeEmptyFolder(fileSystem, folders.takeLast(), recorder); // one that is not empty holds files of others
    return outcome;
}

} // namespace ravlin
