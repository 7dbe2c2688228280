// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/history/database.h"

#include "core/platform/filesystem.h"
#include "core/platform/path.h"

#include <sqlite3.h>

#include <tuple>

namespace ravlin::history {
namespace {

constexpr int BusyMilliseconds = 5000; ///< to wait for another program that writes

ErrorCode codeOf(int sqliteCode)
{
    switch (sqliteCode & 0xFF) { // without the details
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return ErrorCode::Damaged;
    case SQLITE_FULL:
        return ErrorCode::NoSpace;
    case SQLITE_READONLY:
        return ErrorCode::ReadOnly;
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_CANTOPEN:
        return ErrorCode::AccessDenied;
    case SQLITE_TOOBIG:
        return ErrorCode::TooLarge;
    case SQLITE_MISUSE:
    case SQLITE_RANGE:
        return ErrorCode::InvalidArgument;
    default:
        return ErrorCode::Io;
    }
}

tl::unexpected<Error> failure(sqlite3 *connection, int code)
{
    const char *const file = connection != nullptr ? sqlite3_db_filename(connection, "main") : nullptr;
    const char *const text = connection != nullptr ? sqlite3_errmsg(connection) : sqlite3_errstr(code);
    return tl::unexpected(Error{codeOf(code), platform::decodePath(QByteArray(file)), QString::fromUtf8(text)});
}

/// SQLite would create the file with the mode that the process's mask allows.
Result<QString> ownFile(const QString &path)
{
    platform::FileSystem &fileSystem = platform::FileSystem::native();
    const QString folderPath = platform::folderOf(path);
    const auto folder = fileSystem.openFolder(folderPath);
    if (!folder)
        return tl::unexpected(folder.error());
    const QString name = platform::nameOf(path);
    if (auto created = (*folder)->createNew(name); !created && created.error().code != ErrorCode::AlreadyExists)
        return tl::unexpected(created.error());
    // SQLite refuses links anywhere in the path; those above the file are the user's own.
    return fileSystem.canonicalPath(folderPath).map([&](const QString &real) {
        return platform::inFolder(real, name);
    });
}

} // namespace

void Statement::Finalizer::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

Statement &Statement::bind(int index, qint64 value)
{
    const int code = sqlite3_bind_int64(m_statement.get(), index, value);
    m_bindCode = m_bindCode == SQLITE_OK ? code : m_bindCode;
    return *this;
}

Statement &Statement::bind(int index, const QString &text)
{
    if (text.isNull())
        return bindNull(index);
    return bindText(index, platform::encodePath(text)); // keeps what is no Unicode
}

Statement &Statement::bindText(int index, const QByteArray &utf8)
{
    if (utf8.isNull())
        return bindNull(index);
    const int code = sqlite3_bind_text64(m_statement.get(), index, utf8.constData(),
        static_cast<sqlite3_uint64>(utf8.size()), SQLITE_TRANSIENT, SQLITE_UTF8);
    m_bindCode = m_bindCode == SQLITE_OK ? code : m_bindCode;
    return *this;
}

Statement &Statement::bind(int index, const QByteArray &bytes)
{
    if (bytes.isNull())
        return bindNull(index);
    const int code = sqlite3_bind_blob64(
        m_statement.get(), index, bytes.constData(), static_cast<sqlite3_uint64>(bytes.size()), SQLITE_TRANSIENT);
    m_bindCode = m_bindCode == SQLITE_OK ? code : m_bindCode;
    return *this;
}

Statement &Statement::bindNull(int index)
{
    const int code = sqlite3_bind_null(m_statement.get(), index);
    m_bindCode = m_bindCode == SQLITE_OK ? code : m_bindCode;
    return *this;
}

Result<bool> Statement::step()
{
    const int code = m_bindCode == SQLITE_OK ? sqlite3_step(m_statement.get()) : m_bindCode;
    if (code == SQLITE_ROW)
        return true;
    auto failed = failure(m_connection, code); // reset() would replace the text
    reset();
    if (code == SQLITE_DONE)
        return false;
    return failed;
}

Result<void> Statement::run()
{
    return step().map([](bool) {});
}

void Statement::reset()
{
    sqlite3_reset(m_statement.get());
    m_bindCode = SQLITE_OK;
}

qint64 Statement::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

QString Statement::text(int column) const
{
    const auto *const text = reinterpret_cast<const char *>(sqlite3_column_text(m_statement.get(), column));
    return platform::decodePath(text, sqlite3_column_bytes(m_statement.get(), column));
}

QByteArray Statement::bytes(int column) const
{
    const auto *const bytes = static_cast<const char *>(sqlite3_column_blob(m_statement.get(), column));
    return {bytes, sqlite3_column_bytes(m_statement.get(), column)};
}

bool Statement::isNull(int column) const
{
    return sqlite3_column_type(m_statement.get(), column) == SQLITE_NULL;
}

void Database::Closer::operator()(sqlite3 *connection) const
{
    sqlite3_close_v2(connection);
}

Result<Database> Database::open(const QString &path, Journal journal)
{
    const auto real = ownFile(path);
    if (!real)
        return tl::unexpected(real.error());
    sqlite3 *connection = nullptr;
    const int code = sqlite3_open_v2(platform::encodePath(*real).constData(), &connection,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_NOMUTEX, nullptr);
    Database database(connection);
    if (code != SQLITE_OK)
        return failure(connection, code);
    sqlite3_busy_timeout(connection, BusyMilliseconds);
    // The file may be anybody's: nothing in its schema may run code.
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    const auto set = database.run(journal == Journal::Wal ? "PRAGMA journal_mode=WAL" : "PRAGMA journal_mode=TRUNCATE")
                         .and_then([&] {
                             return database.run(
                                 "PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=ON; PRAGMA wal_autocheckpoint=4000");
                         })
                         .and_then([&] { return database.version(); });
    if (!set)
        return tl::unexpected(set.error());
    return database;
}

Result<Statement> Database::prepare(const QByteArray &sql)
{
    sqlite3_stmt *statement = nullptr;
    const int code = sqlite3_prepare_v2(m_connection.get(), sql.constData(), -1, &statement, nullptr);
    if (code != SQLITE_OK)
        return failure(m_connection.get(), code);
    return Statement(m_connection.get(), statement);
}

Result<void> Database::run(const char *sql)
{
    const int code = sqlite3_exec(m_connection.get(), sql, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK)
        return failure(m_connection.get(), code);
    return {};
}

Result<void> Database::transaction(const std::function<Result<void>()> &work)
{
    for (const auto &[statement, sql] : {std::pair(&m_begin, "BEGIN IMMEDIATE"), std::pair(&m_commit, "COMMIT")}) {
        if (*statement)
            continue;
        auto prepared = prepare(sql);
        if (!prepared)
            return tl::unexpected(prepared.error());
        *statement = std::move(*prepared);
    }
    if (auto begun = m_begin->run(); !begun)
        return begun;
    auto done = work().and_then([this] { return m_commit->run(); });
    if (!done)
        std::ignore = run("ROLLBACK"); // SQLite itself may have rolled back already
    return done;
}

Result<int> Database::version()
{
    auto statement = prepare("PRAGMA user_version");
    if (!statement)
        return tl::unexpected(statement.error());
    return statement->step().map([&](bool isRow) { return isRow ? static_cast<int>(statement->integer(0)) : 0; });
}

Result<void> Database::setVersion(int version)
{
    return run(("PRAGMA user_version=" + QByteArray::number(version)).constData());
}

qint64 Database::lastId() const
{
    return sqlite3_last_insert_rowid(m_connection.get());
}

} // namespace ravlin::history
