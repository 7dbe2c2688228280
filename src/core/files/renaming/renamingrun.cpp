// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/files/renaming/renaming.h"
#include "core/platform/fileio.h"
#include "core/platform/path.h"
#include "core/storage/saferename.h"

#include <algorithm>
#include <set>

namespace ravlin {

namespace {

/// Returns false if it is not empty or can't be removed.
bool removeEmptyFolder(platform::FileSystem &fileSystem, const QString &path)
{
    const auto place = platform::placeAt(fileSystem, path);
    return place && place->folder->removeFolder(place->name).has_value();
}

/// Carries one plan out. Takes the rows in order, but before a row the one whose file still bears its new name.
class RenamingRun
{
public:
    RenamingRun(platform::FileSystem &fileSystem, const RenamingPlan &plan)
        : m_fileSystem(fileSystem), m_plan(plan), m_isDone(plan.rows().size(), false)
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
        if (const Result<void> renamed = rename(row, m_outcome.rows[row].from); !renamed)
            fail(row, renamed.error());
    }

    /// Gives the row its new path. from: where its file is now.
    Result<void> rename(std::size_t row, const QString &from)
    {
        const RenameRow &planned = m_outcome.rows[row];
        if (planned.makesFolder) {
            if (Result<void> made = makeFolderOf(planned.path); !made)
                return made;
        }
        return storage::renameFile(m_fileSystem, from, planned.path);
    }

    /// Moves the first row's file aside, renames the others from the last on, then gives the first one its name. If one
    /// can't be renamed, all go back to where they were.
    void takeRing(const std::vector<std::size_t> &ring)
    {
        for (const std::size_t row : ring)
            m_isDone[row] = true;
        const QString first = m_outcome.rows[ring.front()].from;
        const QString aside = storage::asidePath(first);
        const auto lock = storage::lockAside(m_fileSystem, first);
        if (const Result<void> moved = storage::renameFile(m_fileSystem, first, aside); !moved) {
            for (const std::size_t row : ring)
                fail(row, moved.error());
            return;
        }
        std::vector<std::size_t> renamed;
        std::optional<Error> error;
        for (std::size_t i = ring.size(); i > 0 && !error; --i) {
            const std::size_t row = ring[i - 1];
            const Result<void> done = rename(row, i == 1 ? aside : m_outcome.rows[row].from);
            if (done)
                renamed.push_back(row);
            else
                error = done.error();
        }
        if (error)
            takeBack(ring, renamed, aside, *error);
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
            const Result<void> made = m_fileSystem.createFolder(next);
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
            if (removeEmptyFolder(m_fileSystem, m_outcome.foldersMade[i - 1]))
                m_outcome.foldersMade.removeAt(i - 1);
        }
    }

    platform::FileSystem &m_fileSystem;
    const RenamingPlan &m_plan;
    RenamingOutcome m_outcome;
    std::vector<bool> m_isDone;
    std::set<QString> m_foldersThere;
};

} // namespace

RenamingOutcome runRenaming(platform::FileSystem &fileSystem, const RenamingPlan &plan, const Watch &watch)
{
    return RenamingRun(fileSystem, plan).run(watch);
}

RenamingOutcome undoRenaming(platform::FileSystem &fileSystem, const std::vector<RenameDone> &renames,
    const QStringList &foldersMade, const Watch &watch)
{
    std::vector<RenameRow> rows;
    rows.reserve(renames.size());
    for (const RenameDone &done : renames)
        rows.push_back({.from = done.to, .wanted = done.from});
    RenamingPlan plan(fileSystem, std::move(rows));
    plan.answerAll(ClashAnswer::KeepBoth);
    RenamingOutcome outcome = runRenaming(fileSystem, plan, watch);
    QStringList folders = foldersMade;
    while (!folders.isEmpty())
        removeEmptyFolder(fileSystem, folders.takeLast()); // one that is not empty holds files of others
    return outcome;
}

} // namespace ravlin
