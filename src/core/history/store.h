// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/history/database.h"
#include "core/history/encoding.h"
#include "core/history/history.h"

#include <optional>
#include <utility>
#include <vector>

/// The tables of the history. See docs/decisions/0024-history.md.
namespace ravlin::history {

/// A path that a recorded move led away from.
struct MovedPath
{
    qint64 change = 0;
    qint64 entry = 0;
    QString from;
    QString to;
    bool isFolder = false;
};

/// An interrupted change.
struct PendingChange
{
    StoredChange change;
    storage::ContentWay way = storage::ContentWay::OneStep;
    qint64 newSize = 0;
    QByteArray written; ///< only of ContentWay::Patches
    QString aside;
};

struct TemporaryRow
{
    qint64 id = 0;
    QString folder;
    QString name;
};

/// What end() knew of a change.
struct Ending
{
    qint64 change = 0;
    std::optional<storage::ChangeDone> done; ///< none: the change was not made
};

class Store
{
public:
    /// The database; creates it and its tables. Errors: those of Database::open, and NewerVersion.
    static Result<std::unique_ptr<Store>> open(const QString &path);

    Database &database() { return m_database; }

    /// reverts: the entry that the new one takes back or repeats; 0 for none.
    Result<qint64> addEntry(qint64 time, Kind kind, const QString &folder, qint64 reverts);
    /// encoded: parts of the change, which need not be in it any more. reverts: the change that it takes back; 0 for
    /// none. run: see runs(). done: what became of it; null if it is not made yet.
    Result<qint64> addChange(qint64 entry, const storage::ChangeRecord &change, const EncodedParts &encoded,
        qint64 reverts, const QString &run, const storage::ChangeDone *done = nullptr);
    Result<void> addFailure(qint64 entry, const QString &path, const Error &error);
    Result<void> end(const Ending &ending);
    Result<qint64> addTemporary(const QString &folder, const QString &name, const QString &run);
    Result<void> removeTemporary(qint64 id);
    /// The next change and all before it reach the disk before it returns.
    Result<void> setDurable(bool isOn);

    /// A program that records something, until it ends in order.
    Result<void> addRun(const QString &run);
    Result<void> removeRun(const QString &run);
    /// The number of the last change that was taken over from a run's spool.
    Result<void> setTaken(const QString &run, qint64 number);
    Result<qint64> taken(const QString &run);
    /// The names of those that have not.
    Result<std::vector<QString>> runs();
    Result<std::vector<PendingChange>> pending(const QString &run);
    Result<std::vector<TemporaryRow>> temporary(const QString &run);

    Result<std::vector<Entry>> entries(const Query &query);
    Result<std::optional<Entry>> entry(qint64 id);
    /// Also one that takes back another.
    Result<bool> hasEntry(qint64 id);
    Result<std::vector<FileRecord>> files(qint64 entry);
    Result<std::optional<Entry>> nextUndo();
    /// Entries that took back another one and were not taken back themselves, newest first; each as the one it took
    /// back but for its ID.
    Result<std::vector<Entry>> reverting(qsizetype limit);
    Result<std::vector<Entry>> laterOnSameFiles(qint64 entry, const std::set<qint64> &onlyFiles = {});
    Result<std::vector<StoredChange>> changes(qint64 entry);
    /// In the order in which they were made.
    Result<std::vector<MovedPath>> movesSince(qint64 change);
    Result<qint64> entryOf(qint64 change);
    /// The entry itself or the one that it takes back.
    Result<qint64> original(qint64 entry);
    /// Notes that an undo of the whole entry was tried.
    Result<void> setTried(qint64 entry, bool isTried);
    /// Removes entries that have no changes.
    Result<void> removeEmpty();
    /// Removes entries older than that, then the oldest until the rest takes no more than so many bytes; the newest one
    /// stays.
    Result<void> prune(qint64 oldestTime, qint64 mostBytes);
    Result<void> forgetAll();
    Result<qint64> size();

private:
    explicit Store(Database database) : m_database(std::move(database)) {}

    Result<void> makeTables();
    /// Binds six columns.
    static void bindDone(Statement &statement, int first, const storage::ChangeDone &done);
    /// A statement that is prepared once.
    Result<Statement *> cached(std::optional<Statement> &statement, const char *sql);
    Result<QByteArray> keepPiece(const QByteArray &piece);
    Result<StoredChange> changeFrom(const Statement &row, int column);
    Result<void> addPieces(qint64 change);
    Result<void> removeUnusedPieces();
    Result<std::vector<Entry>> entriesOf(Statement &statement);

    Database m_database;
    std::optional<Statement> m_addChange;
    std::optional<Statement> m_end;
    std::optional<Statement> m_remove;
    std::optional<Statement> m_addPiece;
    std::optional<Statement> m_addUse;
    std::optional<Statement> m_setTaken;
    std::optional<Statement> m_addTemporary;
    std::optional<Statement> m_removeTemporary;
    std::optional<Statement> m_entryOf;
    std::vector<QByteArray> m_pieces; ///< of the change that is being added
};

} // namespace ravlin::history
