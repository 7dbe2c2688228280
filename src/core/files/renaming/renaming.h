// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "core/files/renaming/renamewish.h"
#include "core/platform/filesystem.h"

#include <QHash>
#include <QString>

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

/// Renaming many files at once so that none is lost. The plan is made first and tells what the run will do; the preview
/// shows it and the run carries it out.
///
/// The new names are given as if all at once: names that swap (a to b, b to a) or chain (1 to 2, 2 to 3) inside a batch
/// are no clashes. A clash is a new name that a file has which keeps it, or that an earlier row of the batch gets.
namespace ravlin {

/// What is done about a row whose new name is taken.
enum class ClashAnswer
{
    Skip,     ///< the file keeps its name
    KeepBoth, ///< it gets the new name with a number: "Song (2).mp3"
    Stop      ///< this row and all behind it keep their names
};

enum class RenameState
{
    Rename,    ///< gets, after the run: has got, the path that the row tells
    Untouched, ///< has that name already; also a numbered one from an earlier answer KeepBoth
    Clash,     ///< the new name is taken and nobody has answered; a run skips the row
    Skipped,   ///< answered Skip
    Stopped,   ///< answered Stop
    NotTaken,  ///< behind a row answered Stop, or the run was stopped before it
    Refused,   ///< the name can't be given (problem), or the file can't be renamed at all (error)
    Failed     ///< after the run only: the system refused (error)
};

struct RenameRow
{
    RenameState state = RenameState::Untouched;
    QString from;   ///< the file's path before the run
    QString wanted; ///< the path that the rule gave
    /// The path that the file has when all is done: the final one when it is renamed, else from. After the run: where
    /// the file is.
    QString path;
    bool isAdjusted = false;  ///< the name that the rule gave was adjusted, see platform::checkName
    bool isNumbered = false;  ///< the name bears a number because the wanted one was taken
    bool isCollision = false; ///< the wanted name was taken, whatever was answered
    bool makesFolder = false; ///< the folder that it leads to does not exist yet
    std::optional<platform::NameProblem> problem = {};
    std::optional<Error> error = {};

    bool renames() const { return state == RenameState::Rename; }
};

/// What a batch of renames will do. Made of one listing of each folder concerned; touches nothing. What other programs
/// do between plan and run can make rows fail, but lets nothing be overwritten.
class RenamingPlan
{
public:
    RenamingPlan(platform::FileSystem &fileSystem, std::vector<RenameWish> wishes);
    RenamingPlan(RenamingPlan &&) noexcept;
    RenamingPlan &operator=(RenamingPlan &&) noexcept;
    ~RenamingPlan();

    /// In the order of the wishes, as things stand with the answers given so far.
    const std::vector<RenameRow> &rows() const;
    /// The next row to ask about: of those in state Clash the first one whose name is taken by a file that keeps it
    /// however other rows are answered.
    std::optional<std::size_t> nextClash() const;
    void answer(std::size_t row, ClashAnswer answer);
    /// The answer for every row without one of its own, now and later: "for all".
    void answerAll(ClashAnswer answer);
    /// How many rows are in that state.
    std::size_t count(RenameState state) const;

private:
    friend class RenamingRun;
    class Draft;

    std::unique_ptr<Draft> m_draft;
};

/// One rename that was done; to undo it, rename back.
struct RenameDone
{
    QString from;
    QString to;
};

struct RenamingOutcome
{
    std::vector<RenameRow> rows;     ///< in the order of the plan
    std::vector<RenameDone> renames; ///< those done, in the order of the plan
    QStringList foldersMade;         ///< each before the folders in it
    bool wasStopped = false;

    std::size_t count(RenameState state) const;
};

/// Carries a plan out. Reports each row in order. A stop takes effect between two rows; names that go round in a ring
/// are finished first. A row that fails keeps none of the others from being taken.
RenamingOutcome runRenaming(platform::FileSystem &fileSystem, const RenamingPlan &plan, const Watch &watch = {});

/// Renames the files back. Like any batch it overwrites nothing; KeepBoth is what takes its clashes. foldersMade by the
/// renames are removed as far as they are empty.
RenamingOutcome undoRenaming(platform::FileSystem &fileSystem, const std::vector<RenameDone> &renames,
    const QStringList &foldersMade, const Watch &watch = {});

} // namespace ravlin
