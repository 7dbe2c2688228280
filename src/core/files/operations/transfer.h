// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"
#include "core/platform/nodes.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

/// Copying and moving files, links and folders into a folder so that nothing is lost. Three steps: makeTransferPlan
/// looks and touches nothing, answerClashes has the names that are taken decided, runTransfer does the work.
///
/// - A file or folder is complete under its final name or absent, also when the program is killed; what it was making
///   then bears a name that storage::isLeftoverName knows.
/// - A move to another drive deletes the source only after all of it was copied, synced and compared.
/// - A source of which anything fails, or that is stopped, stays whole, and nothing of it appears at the target.
/// - Nothing is overwritten without the answer Replace. A folder is never put in the place of a file, nor a file in
///   that of a folder, and never into itself.
/// - Symbolic links are copied and moved as links.
namespace ravlin {

enum class TransferKind
{
    Copy,
    Move
};

struct TransferRequest
{
    TransferKind kind = TransferKind::Copy;
    QStringList sources;
    QString folder;       ///< where they go; it must exist
    QString newName = {}; ///< for a single source; empty: it keeps its name
};

struct Clash
{
    QString source;
    QString target;
    platform::Node sourceNode;
    platform::Node targetNode;
    /// False where Replace would lose something: a folder against a file, a file against itself, a name that an earlier
    /// source of the same request gets.
    bool canReplace = true;
    bool isMerge = false; ///< both are folders: Replace asks further about what is in them
};

/// One source, or, below a folder whose content goes into an existing one, one of its entries.
struct TransferItem
{
    QString source;
    QString target; ///< the final path
    platform::Node node;
    std::optional<Clash> clash;
    std::optional<ClashAnswer> answer;  ///< a clash without one is skipped
    std::optional<Error> error;         ///< it can't be taken at all
    qint64 bytes = 0;                   ///< its own and of all below it
    std::vector<TransferItem> children; ///< only of a folder against a folder

    bool isSkipped() const { return clash && answer.value_or(ClashAnswer::Skip) == ClashAnswer::Skip; }
    bool isMerged() const { return clash && clash->isMerge && answer == ClashAnswer::Replace; }
    bool replaces() const { return clash && !clash->isMerge && answer == ClashAnswer::Replace; }
};

struct TransferPlan
{
    TransferKind kind = TransferKind::Copy;
    std::vector<TransferItem> items; ///< in the order of the sources
    QSet<QString> targets;           ///< all final paths that are spoken for, without case where that is ignored
};

/// Looks at the sources and the target; what can't be taken is an item with an error. Errors: the folder is none, or
/// the new name is no name; Cancelled.
Result<TransferPlan> makeTransferPlan(
    platform::FileSystem &fileSystem, const TransferRequest &request, const std::stop_token &stop = {});

using ClashChooser = std::function<ClashDecision(const Clash &clash)>;

/// Asks about each clash, but inside a folder only if the folder's own was answered Replace. An answer for all holds
/// for the later clashes of its kind (folders against folders, or others) that allow it. Returns false if the request
/// was called off (Stop). A Replace that is not allowed counts as Skip.
bool answerClashes(TransferPlan &plan, const ClashChooser &choose);

/// Something that was done, in full.
struct TransferStep
{
    QString source;
    QString target;
    bool isMove = false; ///< the source is gone
    bool isFolder = false;
    bool replaced = false;   ///< something else bore the name and is lost
    platform::FileInfo made; ///< the target, as it was left
};

struct FileFailure
{
    QString path; ///< the source
    Error error;  ///< its path tells where it was inside a folder
};

struct TransferReport
{
    std::vector<TransferStep> done;
    std::vector<FileFailure> failures;
    QStringList skipped; ///< by an answer
    QStringList notDone; ///< not begun, or given up without a trace, because of a stop or a full disk
    bool wasStopped = false;

    bool isComplete() const { return failures.empty() && notDone.isEmpty(); }
};

/// Does what the plan says. Reports sources and bytes; a stop also ends the copying of a long file. After the target's
/// drive is full no further source is taken.
TransferReport runTransfer(platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch = {});

} // namespace ravlin
