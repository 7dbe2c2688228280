// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/app/progress.h"
#include "core/platform/filesystem.h"
#include "core/platform/namecheck.h"
#include "core/storage/journal.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

/// Renames many files at once and loses none. The plan comes first and shows what the run will do: the preview displays
/// it, the run carries it out.
///
/// The new names are given as if all at once: names that swap (a to b, b to a) or chain (1 to 2, 2 to 3) within a batch
/// don't clash. A clash is a new name borne by a file that keeps it, or given to an earlier row of the batch.
namespace ravlin {

/// What to do about a name that is taken; of copies and moves too.
enum class ClashAnswer
{
    Skip,     ///< the file keeps its name and place
    KeepBoth, ///< it gets the new name with a number: "Song (2).mp3"
    Stop,     ///< renaming: this row and all after it keep their names; copying and moving: the request is called off
    /// Copying and moving only: a file takes the place of the file, a folder's content goes into the folder.
    Replace
};

struct ClashDecision
{
    ClashAnswer answer = ClashAnswer::Stop;
    bool forAll = false; ///< also for the clashes still to come
};

enum class RenameState
{
    Rename,    ///< gets the row's path; after the run: has got it
    Untouched, ///< has that name already, perhaps with the number of an earlier KeepBoth
    Clash,     ///< the new name is taken and no answer was given; a run skips the row
    Skipped,   ///< answered Skip
    Stopped,   ///< answered Stop
    NotTaken,  ///< after a row answered Stop, or the run was stopped before it
    Refused,   ///< the name can't be given (problem), or the file can't be renamed at all (error)
    Failed     ///< after the run only: the system refused (error)
};

/// One file of a batch: its path and the one that it is to have. A caller fills in what a rule gives (from, wanted,
/// kind, isAdjusted, problem; see renamefromtags.h), the plan and the run fill in the rest.
struct RenameRow
{
    QString from;   ///< the file's path before the run
    QString wanted; ///< the path that the rule gives, which may differ from what it gave (isAdjusted)
    platform::NameKind kind = platform::NameKind::File;
    bool isAdjusted = false;                           ///< see platform::checkName
    std::optional<platform::NameProblem> problem = {}; ///< why the wanted name can't be given

    RenameState state = RenameState::Untouched;
    /// Where the file will be: the new path if it is renamed, else from. After the run: where it is.
    QString path = {};
    bool isNumbered = false;       ///< the name bears a number because the wanted one was taken
    bool isCollision = false;      ///< the wanted name was taken, whatever the answer
    bool isGivenToAnother = false; ///< a collision: nothing bears the wanted name, but an earlier row is to get it
    bool makesFolder = false;      ///< the folder of wanted does not exist yet
    std::optional<Error> error = {};

    bool renames() const { return state == RenameState::Rename; }
};

/// What a batch of renames will do. Lists each folder concerned once; touches nothing. Changes that other programs make
/// between plan and run can make rows fail, but nothing is overwritten.
class RenamingPlan
{
public:
    RenamingPlan(platform::FileSystem &fileSystem, std::vector<RenameRow> rows);
    RenamingPlan(RenamingPlan &&) noexcept;
    RenamingPlan &operator=(RenamingPlan &&) noexcept;
    ~RenamingPlan();

    /// In the order given, as things stand with the answers so far.
    const std::vector<RenameRow> &rows() const;
    /// The next row to ask about: the first in state Clash whose name stays taken however other rows are answered.
    std::optional<std::size_t> nextClash() const;
    /// A renaming overwrites nothing: Replace counts as Skip.
    void answer(std::size_t row, ClashAnswer answer);
    /// The answer for every row without one of its own, now and later.
    void answerAll(ClashAnswer answer);
    /// How many rows are in that state.
    std::size_t count(RenameState state) const;

    /// The row that must be renamed before this one because its file bears this one's new name. The row itself if the
    /// file system takes both names for the same; nothing if the name is free.
    std::optional<std::size_t> occupantOf(std::size_t row) const;

private:
    class Draft;

    std::unique_ptr<Draft> m_draft;
};

/// One rename that was done. The undo history keeps thousands of these, so it is no RenameRow.
struct RenameDone
{
    QString from;
    QString to;
};

struct RenamingOutcome
{
    std::vector<RenameRow> rows;     ///< in the order of the plan
    std::vector<RenameDone> renames; ///< those done, in the same order
    QStringList foldersMade;         ///< each before the folders in it
    bool wasStopped = false;

    std::size_t count(RenameState state) const;
};

/// Carries a plan out. Reports each row in order. A stop takes effect between two rows; names that go round in a ring
/// are finished first. A row that fails keeps none of the others from being taken.
/// journal: see storage::Journal.
RenamingOutcome runRenaming(platform::FileSystem &fileSystem, const RenamingPlan &plan, const Watch &watch = {},
    storage::Journal *journal = nullptr);

/// Renames the files back. Overwrites nothing: a file whose former name is taken gets a number. Removes the folders
/// made by the renames if they are empty.
RenamingOutcome undoRenaming(platform::FileSystem &fileSystem, const std::vector<RenameDone> &renames,
    const QStringList &foldersMade, const Watch &watch = {}, storage::Journal *journal = nullptr);

} // namespace ravlin
