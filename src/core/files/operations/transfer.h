// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/files/renaming/renaming.h"
#include "core/platform/nodes.h"
#include "core/platform/trash.h"
#include "core/storage/journal.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

/// Copies and moves files, links and folders into a folder and loses nothing. Three steps: makeTransferPlan() looks and
/// touches nothing, answerClashes() decides about taken names, runTransfer() does the work.
///
/// - Under its final name a file or folder is complete or absent, even if the program is killed; unfinished work bears
/// a
///   name that storage::isLeftoverName() knows.
/// - A move to another drive deletes the source only after all of it was copied, synced and compared.
/// - If anything of a source fails, or it is stopped, the source stays whole and nothing of it appears at the target.
/// - Nothing is overwritten without the answer Replace. What is replaced goes into the trash first; where there is none
///   or it is full, it is lost. A folder never replaces a file, nor a file a folder, and a
/// folder
///   never goes into itself.
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
    /// False if Replace would lose something: for a folder and a file, a file and itself, or a name that an earlier
    /// source of the same request gets.
    bool canReplace = true;
    bool isMerge = false; ///< both are folders; Replace leads to questions about their entries
    bool hasTrash = true; ///< the target's drive has one, for what is replaced
};

/// A source or, in a folder that is merged into another, one of its entries.
struct TransferItem
{
    QString source;
    QString target; ///< the final path
    platform::Node node;
    std::optional<Clash> clash;
    std::optional<ClashAnswer> answer;  ///< a clash without one is skipped
    std::optional<Error> error;         ///< why it can't be copied or moved at all
    qint64 bytes = 0;                   ///< with all below it
    std::vector<TransferItem> children; ///< only of a merged folder

    bool isSkipped() const { return clash && answer.value_or(ClashAnswer::Skip) == ClashAnswer::Skip; }
    bool isMerged() const { return clash && clash->isMerge && answer == ClashAnswer::Replace; }
    bool replaces() const { return clash && !clash->isMerge && answer == ClashAnswer::Replace; }
};

struct TransferPlan
{
    TransferKind kind = TransferKind::Copy;
    std::vector<TransferItem> items; ///< in the order of the sources
    QSet<QString> targets;           ///< all final paths claimed, without case where that is ignored
};

/// Looks at the sources and the target. A source that can't be copied or moved is an item with an error. Errors: the
/// target is not a folder; newName is not a name; Cancelled.
Result<TransferPlan> makeTransferPlan(
    platform::FileSystem &fileSystem, const TransferRequest &request, const std::stop_token &stop = {});

using ClashChooser = std::function<ClashDecision(const Clash &clash)>;

/// Asks about each clash, but inside a folder only if the folder's own was answered Replace. An answer for all holds
/// for the later clashes of its kind (folders against folders, or others) that allow it. Returns false if the request
/// was called off (Stop). A Replace that is not allowed counts as Skip.
bool answerClashes(TransferPlan &plan, const ClashChooser &choose);

/// Something that was done completely.
struct TransferStep
{
    QString source;
    QString target;
    bool isMove = false; ///< the source is gone
    bool isFolder = false;
    bool replaced = false;                             ///< a file or link bore the name
    std::optional<platform::TrashedItem> trashed = {}; ///< that one; if it is none, it is lost
    platform::FileInfo made;                           ///< the target, as it was left
};

struct FileFailure
{
    QString path; ///< the source
    Error error;  ///< its path is the place inside a folder
};

struct TransferReport
{
    std::vector<TransferStep> done;
    std::vector<FileFailure> failures;
    /// Moved files and folders that are in both places: the copy is complete, but the source could not be deleted, or
    /// not all of it. Each has a step as well, whose isMove is false.
    std::vector<FileFailure> inBothPlaces;
    QStringList lost;    ///< targets whose former file was to go into the trash, which had no room
    QStringList skipped; ///< by an answer
    QStringList notDone; ///< not begun, or given up without a trace, after a stop or on a full or read-only disk
    bool wasStopped = false;

    bool isComplete() const { return failures.empty() && inBothPlaces.empty() && notDone.isEmpty(); }
    /// Copied, or moved so that the source is gone.
    qsizetype doneCount() const { return static_cast<qsizetype>(done.size() - inBothPlaces.size()); }
};

/// Carries the plan out. Reports sources and bytes; a stop ends even the copying of a long file. Begins no further
/// source once the target's drive is full or turns out to be read-only.
/// journal: see storage::Journal; a move that could only copy is recorded as a copy.
TransferReport runTransfer(platform::FileSystem &fileSystem, const TransferPlan &plan, const Watch &watch = {},
    storage::Journal *journal = nullptr);

} // namespace ravlin
