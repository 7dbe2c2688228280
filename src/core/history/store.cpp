// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/store.h"

#include "core/platform/nodes.h"
#include "core/platform/path.h"

#include <QCryptographicHash>

/// What writes the tables.
namespace ravlin::history {
namespace {

constexpr int SchemaVersion = 1;

// Each change that is begun writes every page that it touches to the journal, so there are few indices, and none that a
// change leaves when it ends. A run is a program that has recorded something and has not ended in order.
// A change's run is null once it is no longer pending; an entry is null where nothing is recorded for longer than
// needed.
constexpr const char *Tables = R"(
CREATE TABLE entry(id INTEGER PRIMARY KEY AUTOINCREMENT, time INTEGER NOT NULL, kind INTEGER NOT NULL,
    folder TEXT NOT NULL, reverts INTEGER REFERENCES entry(id) ON DELETE CASCADE, tried INTEGER NOT NULL DEFAULT 0);
CREATE TABLE change(id INTEGER PRIMARY KEY, entry INTEGER REFERENCES entry(id) ON DELETE CASCADE, run TEXT,
    kind INTEGER NOT NULL, state INTEGER NOT NULL, path TEXT NOT NULL, newPath TEXT, isFolder INTEGER NOT NULL,
    beforeSize INTEGER, beforeModified INTEGER, volume INTEGER, inode INTEGER, born INTEGER,
    way INTEGER, newSize INTEGER, inverse BLOB, digest BLOB, written BLOB, vals TEXT, aside TEXT,
    afterSize INTEGER, afterModified INTEGER, afterChanged INTEGER, afterInode INTEGER,
    replaced INTEGER, trashed BLOB, reverts INTEGER, code INTEGER, detail TEXT);
CREATE INDEX changesOfEntry ON change(entry);
CREATE INDEX entriesReverting ON entry(reverts) WHERE reverts IS NOT NULL;
CREATE INDEX revertingMoves ON change(reverts) WHERE reverts IS NOT NULL AND kind=1;
CREATE TABLE run(name TEXT PRIMARY KEY, taken INTEGER NOT NULL DEFAULT 0) WITHOUT ROWID;
CREATE TABLE content(key BLOB PRIMARY KEY, bytes BLOB NOT NULL) WITHOUT ROWID;
CREATE TABLE piece(change INTEGER NOT NULL REFERENCES change(id) ON DELETE CASCADE, key BLOB NOT NULL,
    PRIMARY KEY(change, key)) WITHOUT ROWID;
CREATE TABLE temporary(id INTEGER PRIMARY KEY, run TEXT NOT NULL, folder TEXT NOT NULL, name TEXT NOT NULL);
)";

template <typename Number>
void bindUnlessZero(Statement &statement, int index, Number number)
{
    if (number == 0)
        statement.bindNull(index);
    else
        statement.bind(index, static_cast<qint64>(number));
}

} // namespace

Result<std::unique_ptr<Store>> Store::open(const QString &path)
{
    const auto journal = platform::isOnNetwork(path) ? Database::Journal::Rollback : Database::Journal::Wal;
    auto database = Database::open(path, journal);
    if (!database)
        return tl::unexpected(database.error());
    auto store = std::unique_ptr<Store>(new Store(std::move(*database)));
    const auto version = store->m_database.version();
    if (!version)
        return tl::unexpected(version.error());
    if (*version > SchemaVersion)
        return tl::unexpected(Error{ErrorCode::NewerVersion, path, {}});
    if (*version == 0) {
        if (auto made = store->makeTables(); !made)
            return tl::unexpected(made.error());
    }
    return store;
}

Result<void> Store::makeTables()
{
    // Another program may be at it.
    return m_database.run("PRAGMA auto_vacuum=INCREMENTAL").and_then([this] {
        return m_database.transaction([this]() -> Result<void> {
            const auto version = m_database.version();
            if (!version)
                return tl::unexpected(version.error());
            if (*version != 0)
                return {};
            return m_database.run(Tables).and_then([this] { return m_database.setVersion(SchemaVersion); });
        });
    });
}

Result<Statement *> Store::cached(std::optional<Statement> &statement, const char *sql)
{
    if (!statement) {
        auto prepared = m_database.prepare(sql);
        if (!prepared)
            return tl::unexpected(prepared.error());
        statement = std::move(*prepared);
    }
    return &*statement;
}

Result<qint64> Store::addEntry(qint64 time, Kind kind, const QString &folder, qint64 reverts)
{
    auto statement = m_database.prepare("INSERT INTO entry(time, kind, folder, reverts) VALUES(?,?,?,?)");
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, time).bind(2, static_cast<qint64>(kind)).bind(3, platform::withEndSeparator(folder));
    bindUnlessZero(*statement, 4, reverts);
    return statement->run().map([this] { return m_database.lastId(); });
}

Result<QByteArray> Store::keepPiece(const QByteArray &piece)
{
    auto statement = cached(m_addPiece, "INSERT OR IGNORE INTO content VALUES(?,?)");
    if (!statement)
        return tl::unexpected(statement.error());
    const QByteArray key = QCryptographicHash::hash(piece, QCryptographicHash::Blake2b_256);
    m_pieces.push_back(key);
    return (*statement)->bind(1, key).bind(2, piece).run().map([&] { return key; });
}

Result<void> Store::addPieces(qint64 change)
{
    for (const QByteArray &key : std::exchange(m_pieces, {})) {
        auto statement = cached(m_addUse, "INSERT OR IGNORE INTO piece VALUES(?,?)");
        if (!statement)
            return tl::unexpected(statement.error());
        if (auto added = (*statement)->bind(1, change).bind(2, key).run(); !added)
            return added;
    }
    return {};
}

void Store::bindDone(Statement &statement, int first, const storage::ChangeDone &done)
{
    statement.bind(first, done.after.size).bind(first + 1, done.after.modified).bind(first + 2, done.after.changed);
    statement.bind(first + 3, static_cast<qint64>(done.after.inode)).bind(first + 4, done.replaced ? 1 : 0);
    statement.bind(first + 5, encodeTrashed(done.trashed));
}

Result<qint64> Store::addChange(qint64 entry, const storage::ChangeRecord &change, const EncodedParts &encoded,
    qint64 reverts, const QString &run, const storage::ChangeDone *done)
{
    // Taking something back changes other rows, too, when it ends.
    const bool isEndedLater = done != nullptr && reverts != 0;
    const bool isDone = done != nullptr && !isEndedLater;
    m_pieces.clear();
    const auto inverse = encodeSegments(change.inverse, [this](const QByteArray &piece) { return keepPiece(piece); });
    if (!inverse)
        return tl::unexpected(inverse.error());
    auto cachedStatement = cached(m_addChange,
        "INSERT INTO change(entry, run, kind, path, newPath, isFolder, beforeSize, beforeModified, volume, inode, "
        "born, "
        "way, newSize, inverse, digest, written, vals, aside, reverts, state, afterSize, afterModified, afterChanged, "
        "afterInode, replaced, trashed) VALUES(?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    if (!cachedStatement)
        return tl::unexpected(cachedStatement.error());
    Statement &statement = **cachedStatement;
    const bool isContent = change.kind == storage::ChangeKind::Content;
    const bool isPatched = change.way == storage::ContentWay::Patches;
    bindUnlessZero(statement, 1, entry);
    statement.bind(2, isDone ? QString() : run).bind(3, static_cast<qint64>(change.kind));
    statement.bind(4, change.path.isEmpty() ? QStringLiteral("") : change.path);
    statement.bind(5, change.newPath.isEmpty() ? QString() : change.newPath).bind(6, change.isFolder ? 1 : 0);
    statement.bind(7, change.before.size).bind(8, change.before.modified);
    statement.bind(9, static_cast<qint64>(change.identity.volume));
    statement.bind(10, static_cast<qint64>(change.identity.inode)).bind(11, change.identity.born);
    statement.bind(12, static_cast<qint64>(change.way)).bind(13, change.newSize);
    statement.bind(14, isContent || !inverse->isEmpty() ? *inverse : QByteArray());
    statement.bind(15, isContent ? encoded.digest : QByteArray());
    statement.bind(16, isPatched && !isDone ? change.written : QByteArray());
    statement.bindText(17, encoded.values);
    statement.bind(18, change.aside.isEmpty() || isDone ? QString() : change.aside);
    bindUnlessZero(statement, 19, reverts);
    statement.bind(20, static_cast<qint64>(isDone ? FileState::Done : FileState::Pending));
    if (isDone) {
        bindDone(statement, 21, *done);
    } else {
        for (int column = 21; column <= 26; ++column)
            statement.bindNull(column);
    }
    if (auto added = statement.run(); !added)
        return tl::unexpected(added.error());
    const qint64 id = m_database.lastId();
    return addPieces(id)
        .and_then([&] {
            return isEndedLater ? end({id, *done}) : Result<void>();
        })
        .map([&] { return id; });
}

Result<void> Store::addFailure(qint64 entry, const QString &path, const Error &error)
{
    auto statement = m_database.prepare(
        "INSERT INTO change(entry, kind, state, path, isFolder, code, detail) VALUES(?,0,2,?,0,?,?)");
    if (!statement)
        return tl::unexpected(statement.error());
    return statement->bind(1, entry).bind(2, path).bind(3, static_cast<qint64>(error.code)).bind(4, error.detail).run();
}

Result<void> Store::end(const Ending &ending)
{
    if (!ending.done) {
        auto statement = cached(m_remove, "DELETE FROM change WHERE id=?");
        return statement ? (*statement)->bind(1, ending.change).run() : tl::unexpected(statement.error());
    }
    auto statement =
        cached(m_end, "UPDATE change SET state=1, run=NULL, written=NULL, aside=NULL, afterSize=?2, afterModified=?3, "
                      "afterChanged=?4, "
                      "afterInode=?5, replaced=?6, trashed=coalesce(?7, trashed) WHERE id=?1 RETURNING reverts");
    if (!statement)
        return tl::unexpected(statement.error());
    const storage::ChangeDone &done = *ending.done;
    const auto bindTo = [&](qint64 change) {
        (*statement)->bind(1, change);
        bindDone(**statement, 2, done);
    };
    bindTo(ending.change);
    const auto found = (*statement)->step();
    if (!found || !*found)
        return found.map([](bool) {});
    const qint64 reverted = (*statement)->integer(0);
    (*statement)->reset();
    if (reverted == 0)
        return {};
    auto undone = m_database.prepare("UPDATE change SET state=3 WHERE id=? RETURNING reverts");
    if (!undone)
        return tl::unexpected(undone.error());
    const auto isThere = undone->bind(1, reverted).step();
    if (!isThere || !*isThere)
        return isThere.map([](bool) {});
    const qint64 repeated = undone->integer(0);
    undone->reset();
    if (repeated == 0)
        return {};
    // It took back a taking back: what was first is done again, and the two have no more to say.
    bindTo(repeated);
    const auto again = (*statement)->step();
    (*statement)->reset();
    if (!again)
        return tl::unexpected(again.error());
    auto remove = cached(m_remove, "DELETE FROM change WHERE id=?");
    if (!remove)
        return tl::unexpected(remove.error());
    return (*remove)->bind(1, ending.change).run().and_then([&] { return (*remove)->bind(1, reverted).run(); });
}

Result<qint64> Store::addTemporary(const QString &folder, const QString &name, const QString &run)
{
    auto statement = cached(m_addTemporary, "INSERT INTO temporary(run, folder, name) VALUES(?,?,?)");
    if (!statement)
        return tl::unexpected(statement.error());
    return (*statement)->bind(1, run).bind(2, folder).bind(3, name).run().map([this] { return m_database.lastId(); });
}

Result<void> Store::removeTemporary(qint64 id)
{
    auto statement = cached(m_removeTemporary, "DELETE FROM temporary WHERE id=?");
    return statement ? (*statement)->bind(1, id).run() : tl::unexpected(statement.error());
}

Result<void> Store::setDurable(bool isOn)
{
    return m_database.run(isOn ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
}

Result<void> Store::addRun(const QString &run)
{
    auto statement = m_database.prepare("INSERT OR IGNORE INTO run(name) VALUES(?)");
    return statement ? statement->bind(1, run).run() : tl::unexpected(statement.error());
}

Result<void> Store::setTaken(const QString &run, qint64 number)
{
    auto statement = cached(m_setTaken, "UPDATE run SET taken=? WHERE name=?");
    return statement ? (*statement)->bind(1, number).bind(2, run).run() : tl::unexpected(statement.error());
}

Result<void> Store::removeRun(const QString &run)
{
    auto statement = m_database.prepare("DELETE FROM run WHERE name=?");
    return statement ? statement->bind(1, run).run() : tl::unexpected(statement.error());
}

Result<void> Store::setTried(qint64 entry, bool isTried)
{
    auto statement = m_database.prepare("UPDATE entry SET tried=? WHERE id=?");
    if (!statement)
        return tl::unexpected(statement.error());
    return statement->bind(1, isTried ? 1 : 0).bind(2, entry).run();
}

Result<void> Store::removeEmpty()
{
    return m_database.run("DELETE FROM entry WHERE NOT EXISTS(SELECT 1 FROM change c WHERE c.entry=entry.id)");
}

Result<void> Store::removeUnusedPieces()
{
    return m_database.run("DELETE FROM content WHERE key NOT IN (SELECT key FROM piece); PRAGMA incremental_vacuum");
}

Result<qint64> Store::size()
{
    auto statement = m_database.prepare(
        "SELECT (SELECT page_count FROM pragma_page_count)-(SELECT freelist_count FROM pragma_freelist_count), "
        "(SELECT page_size FROM pragma_page_size)");
    if (!statement)
        return tl::unexpected(statement.error());
    return statement->step().map([&](bool) { return statement->integer(0) * statement->integer(1); });
}

Result<void> Store::prune(qint64 oldestTime, qint64 mostBytes)
{
    constexpr const char *Newest = "(SELECT max(id) FROM entry WHERE reverts IS NULL)";
    auto old = m_database.prepare(QByteArray("DELETE FROM entry WHERE reverts IS NULL AND time<? AND id<") + Newest);
    auto first = m_database.prepare(
        QByteArray("DELETE FROM entry WHERE id=(SELECT min(id) FROM entry WHERE reverts IS NULL) AND id<") + Newest +
        " RETURNING id");
    if (!old || !first)
        return tl::unexpected(old ? first.error() : old.error());
    if (auto removed = old->bind(1, oldestTime).run(); !removed)
        return removed;
    for (;;) {
        const auto now = size();
        if (!now || *now <= mostBytes)
            return now.map([](qint64) {});
        const auto gone = first->step();
        first->reset();
        if (!gone || !*gone)
            return gone.map([](bool) {});
        if (auto removed = removeUnusedPieces(); !removed)
            return removed;
    }
}

Result<void> Store::forgetAll()
{
    // What is being changed right now must still be finished after a crash.
    return m_database
        .run("UPDATE change SET entry=NULL WHERE run IS NOT NULL; DELETE FROM entry; "
             "DELETE FROM change WHERE run IS NULL")
        .and_then([this] { return removeUnusedPieces(); });
}

} // namespace ravlin::history
