// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/filesystem.h"
#include "core/storage/journal.h"
#include "core/storage/leftovers.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

/// The record of all changes to files: what is needed to finish an interrupted one and to take back a finished one. It
/// is a database in the user's data folder, which all running programs of ours share.
namespace ravlin::history {

struct Ending;
struct MovedPath;
struct SpooledChange;
class Spool;
class Store;

/// What an entry stands for. The names in the database and in what the command line prints are those of kindName().
enum class Kind
{
    Single,  ///< the tag of one file
    Multi,   ///< the tags of several files
    Extract, ///< tags from names
    Lookup,  ///< tags from an album looked up
    RemoveTags,
    Rename,
    RenameFolder,
    Copy,
    Move,
    Trash,
    Delete,
    Playlist,
};

QString kindName(Kind kind);

/// What became of one file.
enum class FileState
{
    Pending, ///< its change was interrupted, or is being made
    Done,
    Failed,
    Undone,
};

struct FileRecord
{
    qint64 id = 0; ///< 0: only in memory
    storage::ChangeKind change = storage::ChangeKind::Content;
    FileState state = FileState::Done;
    QString path = {};                             ///< before
    QString newPath = {};                          ///< after; empty if it is the same, or there is none
    std::vector<storage::ValueChange> values = {}; ///< only those that changed
    std::optional<Error> error = {};               ///< of Failed
};

struct Entry
{
    qint64 id = 0;   ///< 0: not recorded
    qint64 time = 0; ///< milliseconds since 1970, UTC
    Kind kind = Kind::Single;
    QString folder;
    qsizetype fileCount = 0;   ///< files changed
    qsizetype undoneCount = 0; ///< of these
};

/// The outcome of an operation that has just ended, for the notice and the command line. Complete even if nothing could
/// be recorded.
struct Summary
{
    Entry entry;
    std::vector<FileRecord> files; ///< in the order in which they were taken; at most MostFiles
    qsizetype doneCount = 0;
    qsizetype failedCount = 0;
    qsizetype notTriedCount = 0;  ///< the operation ended before these; set by whoever ran it
    std::optional<Error> problem; ///< why it can't be taken back, if it can't
    QStringList changedByOthers;  ///< files that another program had changed since they were shown

    static constexpr qsizetype MostFiles = 20'000;
};

/// Which entries to list, newest first.
struct Query
{
    qsizetype limit = -1;             ///< -1: all
    QString folder = {};              ///< only those of that folder or one below it
    QString text = {};                ///< only those with the text in a path or a value
    std::optional<qint64> since = {}; ///< milliseconds since 1970, UTC
};

/// A change as undo needs it.
struct StoredChange
{
    FileRecord record;
    bool isFolder = false;
    platform::FileInfo before;
    platform::FileInfo after; ///< size, times, inode
    platform::FileIdentity identity;
    std::vector<storage::Segment> inverse;
    QByteArray digest; ///< of the written bytes
    bool replaced = false;
    std::optional<platform::TrashedItem> trashed;
};

/// What finishing interrupted changes did.
struct Recovery
{
    QStringList completed;   ///< files that have their new content
    QStringList rolledBack;  ///< files that have their old content again
    std::vector<Error> left; ///< what can't be finished now, and why
    int temporaryFiles = 0;  ///< removed
};

/// Keeps the record. Opens the database at the first need. A database that can't be used never stops a change;
/// problem() has the reason then. One thread at a time.
class History final : public storage::Journal
{
    Q_DISABLE_COPY_MOVE(History)

public:
    /// ravlin/history.sqlite in $XDG_DATA_HOME or ~/.local/share; in the local application data on Windows.
    static QString defaultPath();

    explicit History(platform::FileSystem &fileSystem, QString path = defaultPath());
    ~History() override;

    /// Without recording, only what an interrupted change needs is kept while it is made.
    void setRecording(bool isOn) { m_isRecording = isOn; }
    void setLimits(int days, int megabytes);
    /// Why nothing can be recorded, if so.
    const std::optional<Error> &problem() const;

    /// Opens an entry: what is changed from now on belongs to it. Finishes interrupted changes first.
    void beginEntry(Kind kind, const QString &folder);
    /// A file of the entry that could not be changed.
    void addFailure(const QString &path, const Error &error);
    /// Closes the entry; one without changes is not kept.
    Summary endEntry();

    std::optional<Ticket> begin(const storage::ChangeRecord &given) override;
    void end(Ticket ticket, const Result<storage::ChangeDone> &done) override;
    std::optional<Ticket> beginTemporary(const QString &folder, const QString &name) override;
    void endTemporary(Ticket ticket) override;
    void addChangedByOther(const QString &path) override;

    /// Finishes what interrupted runs left: completes or rolls back their changes and removes their temporary files.
    /// One query if there is nothing.
    Recovery recover();

    Result<std::vector<Entry>> entries(const Query &wanted = {});
    Result<std::optional<Entry>> entry(qint64 id);
    /// The files of an entry, failed ones too, in the order in which they were taken.
    Result<std::vector<FileRecord>> files(qint64 entry);

    /// The newest entry whose undo was not tried yet.
    Result<std::optional<Entry>> nextUndo();
    /// The taking back that was made last and can be taken back itself, for no later change touched its files. It has
    /// an ID of its own, for the calls below, and else what the entry has that it took back.
    Result<std::optional<Entry>> nextRedo();
    /// Later entries, not undone, that changed files of this one; newest first.
    Result<std::vector<Entry>> laterOnSameFiles(qint64 entry, const std::set<qint64> &onlyFiles = {});

    /// The changes to undo, the last one first; only of the given files if there are any.
    Result<std::vector<StoredChange>> changesToUndo(qint64 entry, const std::set<qint64> &onlyFiles = {});
    /// Where a path of a change is by now, after all later renames and moves that are recorded.
    Result<QString> presentPath(qint64 change, const QString &path);
    /// Opens the taking back of an entry, or its repetition. What is changed from now on, each after reverting(), takes
    /// back that change and makes no entry that is listed.
    void beginReverting(qint64 entry);
    void reverting(qint64 change);
    /// Closes it. The summary's files are those of the changes that were taken back.
    /// isTried: all of the entry was tried, so that it is not the next to undo any more.
    Summary endReverting(bool isTried);

    /// Forgets everything but what an interrupted change needs.
    Result<void> forgetAll();
    /// Bytes that the record takes.
    qint64 size();

private:
    /// The open database, if it can be used. isToBeMade: it is created if there is none.
    Store *store(bool isToBeMade);
    /// Does the work on the open database in one transaction, after what waits for the database.
    Result<void> change(const std::function<Result<void>(Store &)> &work);
    /// Runs a query; nothing is found where there is no database.
    template <typename Found>
    Result<Found> query(const std::function<Result<Found>(Store &)> &find);
    Result<void> open();
    Result<void> setAside();
    Result<void> flush(Store &store, std::map<Ticket, qint64> &stored);
    Result<qint64> currentEntry(Store &store);
    bool startRun();
    /// Record a change in the spool or at once in the database.
    std::optional<Ticket> beginSpooled(storage::ChangeRecord &&record, qint64 reverted);
    std::optional<Ticket> beginStored(const storage::ChangeRecord &record, qint64 reverted);
    void takeSpool(const QString &run, platform::File &file);
    QString wholePath(const QString &path);
    /// Locks the file of a run that has ended; null if that file is gone. An error while the program still runs.
    Result<std::unique_ptr<platform::File>> takeOver(const QString &run);
    void fail(const Error &error);
    Summary close();
    void recover(Store &store, const QString &run, Recovery &recovery);

    platform::FileSystem &m_fileSystem;
    const QString m_path;
    bool m_isRecording = true;
    qint64 m_mostAge = 0; ///< milliseconds; 0: for ever
    qint64 m_mostBytes = 0;
    std::unique_ptr<Store> m_store;
    std::optional<Error> m_problem;
    std::unique_ptr<storage::TemporaryFile> m_run; ///< locked while this program runs; its name is in what it records
    QString m_runName;
    bool m_isRunRecorded = false;
    int m_openTemporary = 0;            ///< temporary files that are there
    bool m_hasUnfinished = false;       ///< something is left for the next program
    QHash<QString, QString> m_folders;  ///< whole paths of folders that the open entry has met
    std::unique_ptr<Spool> m_spool;     ///< in m_run
    std::vector<SpooledChange> m_queue; ///< what is in it
    qint64 m_lastNumber = 0;            ///< of a spooled change; its ticket is the negative
    std::map<Ticket, qint64> m_stored;  ///< rows of spooled changes that went on when the spool was emptied
    qint64 m_newEntry = 0;              ///< made in the present transaction
    std::vector<Ending> m_endings;      ///< not yet in the database
    std::vector<qint64> m_endedTemporary;
    bool m_nextIsDurable = false; ///< or a power cut could bring back what has been ended

    // The open entry.
    bool m_isOpen = false;
    qint64 m_reverts = 0;   ///< the entry that it takes back
    qint64 m_reverting = 0; ///< the change that is taken back next
    Summary m_summary;
    std::map<Ticket, FileRecord> m_begun;
    std::set<Ticket> m_durable;              ///< of these, the ones that a power cut would leave pending
    std::map<qint64, FileRecord> m_toRevert; ///< as the summary shows them
    std::optional<std::vector<MovedPath>> m_moves;
    qint64 m_movesSince = 0;
};

/// An entry of the history around an operation.
class Operation
{
    Q_DISABLE_COPY_MOVE(Operation)

public:
    /// history: may be null.
    Operation(History *history, Kind kind, const QString &folder) : m_history(history)
    {
        if (m_history != nullptr)
            m_history->beginEntry(kind, folder);
    }
    ~Operation()
    {
        if (m_history != nullptr)
            m_history->endEntry();
    }
    void failed(const QString &path, const Error &error)
    {
        if (m_history != nullptr)
            m_history->addFailure(path, error);
    }
    /// Ends it. Only once.
    Summary finish() { return m_history != nullptr ? std::exchange(m_history, nullptr)->endEntry() : Summary(); }

private:
    History *m_history;
};

/// Takes back one change of a file's content: gives it its former bytes and modification time. ChangedMeanwhile if it
/// is not as the change left it; NotFound. path: where it is now.
Result<void> revertContent(
    History &history, platform::FileSystem &fileSystem, const StoredChange &change, const QString &path, bool isDryRun);

} // namespace ravlin::history
