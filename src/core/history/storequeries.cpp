// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/store.h"

#include "core/history/encoding.h"
#include "core/platform/path.h"

#include <QSet>

/// What reads the tables.
namespace ravlin::history {
namespace {

constexpr const char *ChangeColumns =
    "id, kind, state, path, newPath, isFolder, beforeSize, beforeModified, volume, inode, born, inverse, digest, vals, "
    "afterSize, afterModified, afterChanged, afterInode, replaced, trashed, code, detail";
constexpr int ChangeColumnCount = 22;

constexpr const char *EntryColumns =
    "e.id, e.time, e.kind, e.folder, (SELECT count(*) FROM change c WHERE c.entry=e.id AND c.state IN (1,3)), "
    "(SELECT count(*) FROM change c WHERE c.entry=e.id AND c.state=3)";

QByteArray sqlOf(std::initializer_list<const char *> parts)
{
    QByteArray sql;
    for (const char *part : parts)
        sql += part;
    return sql;
}

/// A text for LIKE that is found anywhere.
QString anywhere(QString text)
{
    for (const QChar special : {u'\\', u'%', u'_'})
        text.replace(special, QString(u'\\') + special);
    return u'%' + text + u'%';
}

FileRecord recordFrom(const Statement &row)
{
    FileRecord record;
    record.id = row.integer(0);
    record.change = static_cast<storage::ChangeKind>(row.integer(1));
    record.state = static_cast<FileState>(row.integer(2));
    record.path = row.text(3);
    record.newPath = row.text(4);
    record.values = decodeValues(row.bytes(13));
    if (!row.isNull(20))
        record.error = Error{static_cast<ErrorCode>(row.integer(20)), record.path, row.text(21)};
    return record;
}

/// Whether a move was taken back to where it began, or is what took one back: then no file is elsewhere for it, and
/// what it replaced is there again.
constexpr const char *IsPair =
    "(c.kind=1 AND (EXISTS(SELECT 1 FROM change u WHERE u.reverts=c.id AND u.kind=1 AND u.state=1 AND u.path=c.newPath "
    "AND u.newPath=c.path) OR EXISTS(SELECT 1 FROM change r WHERE r.id=c.reverts AND r.kind=1 AND r.path=c.newPath "
    "AND r.newPath=c.path)))";

/// Follows files through later changes and finds out which of these touched them.
class Pursuit
{
public:
    void add(const QString &path) { m_paths.insert(path); }
    /// The changes that follow are of this entry. Its moves count as if made at once: names may swap.
    void enter(qint64 entry)
    {
        if (std::exchange(m_entry, entry) == entry)
            return;
        m_paths.subtract(std::exchange(m_left, {}));
        m_paths.unite(std::exchange(m_reached, {}));
        for (const auto &[from, to] : std::exchange(m_folders, {}))
            moveBelow(from, to);
    }
    /// Returns whether the change touched one of the files, other than by giving it another path.
    bool meets(const FileRecord &change, bool isFolder, bool replaced)
    {
        const bool isOurs = m_paths.contains(change.path);
        if (change.change != storage::ChangeKind::Move)
            return (isOurs && change.change != storage::ChangeKind::Copy) || m_paths.contains(change.newPath);
        if (isOurs) {
            m_left.insert(change.path);
            m_reached.insert(change.newPath);
        }
        if (isFolder)
            m_folders.emplace_back(platform::withEndSeparator(change.path), platform::withEndSeparator(change.newPath));
        return replaced && m_paths.contains(change.newPath);
    }

private:
    void moveBelow(const QString &from, const QString &to)
    {
        QSet<QString> moved;
        for (const QString &path : std::as_const(m_paths))
            moved.insert(path.startsWith(from) ? to + path.sliced(from.size()) : path);
        m_paths = std::move(moved);
    }

    QSet<QString> m_paths;
    qint64 m_entry = 0;
    QSet<QString> m_left;
    QSet<QString> m_reached;
    std::vector<std::pair<QString, QString>> m_folders;
};

} // namespace

Result<qint64> Store::taken(const QString &run)
{
    auto statement = m_database.prepare("SELECT taken FROM run WHERE name=?");
    if (!statement)
        return tl::unexpected(statement.error());
    return statement->bind(1, run).step().map([&](bool found) { return found ? statement->integer(0) : 0; });
}

Result<std::vector<QString>> Store::runs()
{
    auto statement = m_database.prepare("SELECT name FROM run");
    if (!statement)
        return tl::unexpected(statement.error());
    std::vector<QString> runs;
    for (;;) {
        const auto row = statement->step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            return runs;
        runs.push_back(statement->text(0));
    }
}

Result<StoredChange> Store::changeFrom(const Statement &row, int column)
{
    StoredChange change;
    change.record = recordFrom(row);
    change.isFolder = row.integer(5) != 0;
    change.before.size = row.integer(6);
    change.before.modified = row.integer(7);
    change.identity = {static_cast<quint64>(row.integer(8)), static_cast<quint64>(row.integer(9)), row.integer(10)};
    change.digest = row.bytes(12);
    change.after.size = row.integer(14);
    change.after.modified = row.integer(15);
    change.after.changed = row.integer(16);
    change.after.inode = static_cast<quint64>(row.integer(17));
    change.replaced = row.integer(18) != 0;
    change.trashed = decodeTrashed(row.bytes(19));
    auto inverse = decodeSegments(row.bytes(column), [this](const QByteArray &key) -> Result<QByteArray> {
        auto find = m_database.prepare("SELECT bytes FROM content WHERE key=?");
        if (!find)
            return tl::unexpected(find.error());
        const auto found = find->bind(1, key).step();
        if (!found || !*found)
            return tl::unexpected(
                found ? Error{ErrorCode::Damaged, {}, QStringLiteral("a piece is missing")} : found.error());
        return find->bytes(0);
    });
    if (!inverse)
        return tl::unexpected(inverse.error());
    change.inverse = std::move(*inverse);
    return change;
}

Result<std::vector<PendingChange>> Store::pending(const QString &run)
{
    auto statement = m_database.prepare(
        sqlOf({"SELECT ", ChangeColumns, ", way, newSize, written, aside FROM change WHERE run=? ORDER BY id"}));
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, run);
    std::vector<PendingChange> all;
    for (;;) {
        const auto row = statement->step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            return all;
        auto change = changeFrom(*statement, 11);
        if (!change)
            return tl::unexpected(change.error());
        all.push_back({std::move(*change), static_cast<storage::ContentWay>(statement->integer(ChangeColumnCount)),
            statement->integer(ChangeColumnCount + 1), statement->bytes(ChangeColumnCount + 2),
            statement->text(ChangeColumnCount + 3)});
    }
}

Result<std::vector<TemporaryRow>> Store::temporary(const QString &run)
{
    auto statement = m_database.prepare("SELECT id, folder, name FROM temporary WHERE run=?");
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, run);
    std::vector<TemporaryRow> rows;
    for (;;) {
        const auto row = statement->step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            return rows;
        rows.push_back({statement->integer(0), statement->text(1), statement->text(2)});
    }
}

Result<std::vector<Entry>> Store::entriesOf(Statement &statement)
{
    std::vector<Entry> entries;
    for (;;) {
        const auto row = statement.step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            return entries;
        entries.push_back({statement.integer(0), statement.integer(1), static_cast<Kind>(statement.integer(2)),
            platform::withoutEndSeparator(statement.text(3)), statement.integer(4), statement.integer(5)});
    }
}

Result<std::vector<Entry>> Store::entries(const Query &query)
{
    auto statement = m_database.prepare(sqlOf({"SELECT ", EntryColumns,
        " FROM entry e WHERE e.reverts IS NULL AND EXISTS(SELECT 1 FROM change c WHERE c.entry=e.id AND c.state IN "
        "(1,3)) "
        "AND (?1 IS NULL OR substr(e.folder, 1, length(?1))=?1) AND (?2 IS NULL OR e.time>=?2) "
        "AND (?3 IS NULL OR EXISTS(SELECT 1 FROM change c WHERE c.entry=e.id AND (c.path LIKE ?3 ESCAPE '\\' "
        "OR c.newPath LIKE ?3 ESCAPE '\\' OR c.vals LIKE ?4 ESCAPE '\\'))) ORDER BY e.id DESC LIMIT ?5"}));
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, query.folder.isEmpty() ? QString() : platform::withEndSeparator(query.folder));
    if (query.since)
        statement->bind(2, *query.since);
    else
        statement->bindNull(2);
    statement->bind(3, query.text.isEmpty() ? QString() : anywhere(query.text));
    statement->bind(4, query.text.isEmpty() ? QString() : anywhere(withinValues(query.text)));
    statement->bind(5, static_cast<qint64>(query.limit));
    return entriesOf(*statement);
}

Result<std::optional<Entry>> Store::entry(qint64 id)
{
    auto statement =
        m_database.prepare(sqlOf({"SELECT ", EntryColumns, " FROM entry e WHERE e.id=? AND e.reverts IS NULL"}));
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, id);
    return entriesOf(*statement).map([](const std::vector<Entry> &found) {
        return found.empty() ? std::nullopt : std::optional(found.front());
    });
}

Result<std::vector<FileRecord>> Store::files(qint64 entry)
{
    auto statement =
        m_database.prepare(sqlOf({"SELECT ", ChangeColumns, " FROM change WHERE entry=? AND state<>0 ORDER BY id"}));
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, entry);
    std::vector<FileRecord> files;
    for (;;) {
        const auto row = statement->step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            return files;
        files.push_back(recordFrom(*statement));
    }
}

Result<std::optional<Entry>> Store::nextUndo()
{
    auto statement = m_database.prepare(sqlOf({"SELECT ", EntryColumns,
        " FROM entry e WHERE e.reverts IS NULL AND e.tried=0 "
        "AND EXISTS(SELECT 1 FROM change c WHERE c.entry=e.id AND c.state=1) ORDER BY e.id DESC LIMIT 1"}));
    if (!statement)
        return tl::unexpected(statement.error());
    return entriesOf(*statement).map([](const std::vector<Entry> &found) {
        return found.empty() ? std::nullopt : std::optional(found.front());
    });
}

Result<std::vector<Entry>> Store::reverting(qsizetype limit)
{
    auto statement = m_database.prepare(
        "SELECT r.id, e.time, e.kind, e.folder, (SELECT count(*) FROM change c WHERE c.entry=r.id AND c.state=1), 0 "
        "FROM entry r JOIN entry e ON e.id=r.reverts WHERE e.reverts IS NULL "
        "AND EXISTS(SELECT 1 FROM change c WHERE c.entry=r.id AND c.state=1) ORDER BY r.id DESC LIMIT ?");
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, static_cast<qint64>(limit));
    return entriesOf(*statement);
}

Result<std::vector<Entry>> Store::laterOnSameFiles(qint64 entry, const std::set<qint64> &onlyFiles)
{
    auto statement = m_database.prepare(sqlOf(
        {"SELECT c.entry, c.kind, c.path, c.newPath, c.isFolder, e.reverts IS NOT NULL OR c.state<>1, c.id, c.replaced "
         "FROM change c JOIN entry e ON e.id=c.entry WHERE c.entry>=?1 AND c.state IN (1,3) AND (c.entry=?1 OR NOT ",
            IsPair, ") ORDER BY c.id"}));
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, entry);
    Pursuit pursuit;
    QSet<qint64> met;
    for (;;) {
        const auto row = statement->step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            break;
        FileRecord change;
        change.change = static_cast<storage::ChangeKind>(statement->integer(1));
        change.path = statement->text(2);
        change.newPath = statement->text(3);
        if (statement->integer(0) == entry) {
            if (onlyFiles.empty() || onlyFiles.contains(statement->integer(6)))
                pursuit.add(change.newPath.isEmpty() ? change.path : change.newPath);
            continue;
        }
        pursuit.enter(statement->integer(0));
        const bool isMet = pursuit.meets(change, statement->integer(4) != 0, statement->integer(7) != 0);
        const bool isTakenBack = statement->integer(5) != 0;
        if (isMet && !isTakenBack)
            met.insert(statement->integer(0));
    }
    auto all = entries({});
    if (all)
        std::erase_if(*all, [&](const Entry &one) { return !met.contains(one.id); });
    return all;
}

Result<std::vector<StoredChange>> Store::changes(qint64 entry)
{
    auto statement = m_database.prepare(
        sqlOf({"SELECT ", ChangeColumns, " FROM change WHERE entry=? AND state=1 ORDER BY id DESC"}));
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, entry);
    std::vector<StoredChange> changes;
    for (;;) {
        const auto row = statement->step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            return changes;
        auto change = changeFrom(*statement, 11);
        if (!change)
            return tl::unexpected(change.error());
        changes.push_back(std::move(*change));
    }
}

Result<std::vector<MovedPath>> Store::movesSince(qint64 change)
{
    auto statement = m_database.prepare(
        sqlOf({"SELECT id, entry, path, newPath, isFolder FROM change c WHERE kind=? AND state IN (1,3) AND id>? "
               "AND entry IS NOT NULL AND NOT ",
            IsPair, " ORDER BY id"}));
    if (!statement)
        return tl::unexpected(statement.error());
    statement->bind(1, static_cast<qint64>(storage::ChangeKind::Move)).bind(2, change);
    std::vector<MovedPath> moves;
    for (;;) {
        const auto row = statement->step();
        if (!row)
            return tl::unexpected(row.error());
        if (!*row)
            return moves;
        moves.push_back({statement->integer(0), statement->integer(1), statement->text(2), statement->text(3),
            statement->integer(4) != 0});
    }
}

Result<bool> Store::hasEntry(qint64 id)
{
    auto statement = m_database.prepare("SELECT 1 FROM entry WHERE id=?");
    return statement ? statement->bind(1, id).step() : tl::unexpected(statement.error());
}

Result<qint64> Store::entryOf(qint64 change)
{
    auto statement = cached(m_entryOf, "SELECT coalesce(entry, 0) FROM change WHERE id=?");
    if (!statement)
        return tl::unexpected(statement.error());
    const auto found = (*statement)->bind(1, change).step();
    const qint64 entry = found && *found ? (*statement)->integer(0) : 0;
    (*statement)->reset();
    return found.map([&](bool) { return entry; });
}

Result<qint64> Store::original(qint64 entry)
{
    auto statement = m_database.prepare("SELECT coalesce(reverts, id) FROM entry WHERE id=?");
    if (!statement)
        return tl::unexpected(statement.error());
    return statement->bind(1, entry).step().map([&](bool found) { return found ? statement->integer(0) : entry; });
}

} // namespace ravlin::history
