// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/platform/error.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

/// SQLite as the history uses it: results as values, text as QString, bytes as QByteArray.
namespace ravlin::history {

/// A prepared statement. Values are bound to its "?" from 1 on; columns count from 0.
class Statement
{
public:
    Statement &bind(int index, qint64 value);
    /// A null text or array is NULL.
    Statement &bind(int index, const QString &text);
    Statement &bind(int index, const QByteArray &bytes);
    Statement &bindText(int index, const QByteArray &utf8);
    Statement &bindNull(int index);

    /// Goes to the next row: false when there is none, and the statement can then be bound and stepped anew.
    Result<bool> step();
    /// For a statement without rows.
    Result<void> run();
    /// Gives up the rows that are left.
    void reset();

    qint64 integer(int column) const;
    QString text(int column) const;
    QByteArray bytes(int column) const;
    bool isNull(int column) const;

private:
    friend class Database;
    struct Finalizer
    {
        void operator()(sqlite3_stmt *statement) const;
    };

    Statement(sqlite3 *connection, sqlite3_stmt *statement) : m_connection(connection), m_statement(statement) {}
    Result<void> bound(int code);

    sqlite3 *m_connection;
    std::unique_ptr<sqlite3_stmt, Finalizer> m_statement;
    int m_bindCode = 0; ///< the first failure to bind
};

/// A database file. One thread at a time; several programs may have it open at once.
class Database
{
public:
    /// Opens the file and creates it if it is missing, readable by its owner alone. A link is not followed.
    ///
    /// journal: how changes are made safe. Wal lets others read meanwhile and is fast, but wants shared memory, which
    /// network drives don't have. Errors: Damaged if it is no database or a broken one, and those of files.
    enum class Journal
    {
        Wal,
        Rollback
    };
    static Result<Database> open(const QString &path, Journal journal = Journal::Wal);

    Result<Statement> prepare(const QByteArray &sql);
    /// One or more statements without parameters and rows.
    Result<void> run(const char *sql);
    /// Does the work between BEGIN IMMEDIATE and COMMIT. If it fails, nothing of it is left.
    Result<void> transaction(const std::function<Result<void>()> &work);

    /// A number that the file keeps for its users, 0 at first.
    Result<int> version();
    Result<void> setVersion(int version);
    /// Of the last row that was inserted.
    qint64 lastId() const;

private:
    struct Closer
    {
        void operator()(sqlite3 *connection) const;
    };

    explicit Database(sqlite3 *connection) : m_connection(connection) {}

    std::unique_ptr<sqlite3, Closer> m_connection;
    std::optional<Statement> m_begin; ///< prepared once; closed before the connection
    std::optional<Statement> m_commit;
};

} // namespace ravlin::history
