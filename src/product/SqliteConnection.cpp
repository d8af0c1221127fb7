#include "product/SqliteConnection.h"

#include <sqlite3.h>
#include <string>

namespace vardel {

namespace {

// Another tracker process may hold the write lock briefly (a relaunch overlaps the old and the new
// process), so a locked database is waited for rather than reported at once; but only for a second:
// a write that still cannot go is tried again later by its caller, so the sampling never stalls long.
constexpr int busyTimeoutMilliseconds = 1000;

} // namespace

void SqliteConnection::Closer::operator()(sqlite3* connection) const
{
    sqlite3_close_v2(connection);
}

SqliteConnection::SqliteConnection(sqlite3* connection)
    : connection_(connection)
{
}

DatabaseResult<SqliteConnection> SqliteConnection::open(const std::filesystem::path& file)
{
    sqlite3* handle = nullptr;
    int code = sqlite3_open_v2(
        file.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    // SQLite hands out a connection even when opening fails, so that the message can be read.
    SqliteConnection connection(handle);
    if (code != SQLITE_OK) {
        std::string reason = handle ? sqlite3_errmsg(handle) : sqlite3_errstr(code);
        return DatabaseError { DatabaseError::Kind::cannotOpen,
            "The database " + file.string() + " cannot be opened: " + reason };
    }
    sqlite3_busy_timeout(handle, busyTimeoutMilliseconds);
    return connection;
}

std::optional<DatabaseError> SqliteConnection::execute(std::string_view sql)
{
    // sqlite3_exec needs a terminated text.
    std::string statements(sql);
    if (sqlite3_exec(connection_.get(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        return failure();
    return std::nullopt;
}

DatabaseResult<SqliteStatement> SqliteConnection::prepare(std::string_view sql)
{
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection_.get(), sql.data(), static_cast<int>(sql.size()), &statement, nullptr)
        != SQLITE_OK)
        return failure();
    return SqliteStatement(statement);
}

std::optional<DatabaseError> SqliteConnection::writeTransaction(
    const std::function<std::optional<DatabaseError>()>& body)
{
    if (auto failure = execute("BEGIN IMMEDIATE"))
        return failure;
    std::optional<DatabaseError> failure;
    try {
        failure = body();
    } catch (...) {
        execute("ROLLBACK");
        throw;
    }
    // A commit that fails (the disk is full) leaves the transaction open, so it is rolled back too.
    if (!failure)
        failure = execute("COMMIT");
    if (failure)
        execute("ROLLBACK");
    return failure;
}

int64_t SqliteConnection::lastInsertRowIdentifier() const
{
    return sqlite3_last_insert_rowid(connection_.get());
}

int SqliteConnection::changes() const
{
    return sqlite3_changes(connection_.get());
}

std::optional<DatabaseError> SqliteConnection::backUpInto(const std::filesystem::path& file)
{
    auto opened = open(file);
    if (!opened.ok())
        return opened.error();
    SqliteConnection destination = std::move(opened).value();
    sqlite3_backup* backup = sqlite3_backup_init(destination.connection_.get(), "main", connection_.get(), "main");
    if (!backup)
        return destination.failure();
    // One step copies every page, so the copy cannot mix two versions of the database.
    int stepCode = sqlite3_backup_step(backup, -1);
    int finishCode = sqlite3_backup_finish(backup);
    if (stepCode != SQLITE_DONE)
        return DatabaseError::statementFailure(sqlite3_errstr(stepCode));
    if (finishCode != SQLITE_OK)
        return destination.failure();
    return std::nullopt;
}

DatabaseError SqliteConnection::failure() const
{
    return failureOf(connection_.get());
}

DatabaseError SqliteConnection::failureOf(sqlite3* connection)
{
    int code = sqlite3_errcode(connection) & 0xff;
    return DatabaseError::statementFailure(sqlite3_errmsg(connection), code == SQLITE_CORRUPT || code == SQLITE_NOTADB);
}

} // namespace vardel
