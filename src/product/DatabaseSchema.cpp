#include "product/DatabaseSchema.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

namespace vardel {

namespace {

// Migration i brings a file from version i to version i + 1. Released migrations never change;
// a new schema is a new entry.
constexpr std::array migrations = {
    R"sql(
        CREATE TABLE time_entries (
            id INTEGER PRIMARY KEY,
            started_at REAL NOT NULL,
            ended_at REAL NOT NULL,
            title TEXT NOT NULL,
            project TEXT,
            created_at REAL NOT NULL,
            CHECK (ended_at >= started_at)
        );
        CREATE INDEX time_entries_by_start ON time_entries (started_at);
        CREATE INDEX time_entries_by_title ON time_entries (title, started_at);
    )sql",
    // The recorded activity, one row per span of identical samples, and the integrations that the
    // step after a sync refreshes. Spans are looked up by their end, since "today" and every report
    // ask for the spans that end after a moment.
    R"sql(
        CREATE TABLE activity_spans (
            id INTEGER PRIMARY KEY,
            started_at REAL NOT NULL,
            ended_at REAL NOT NULL,
            bundle_identifier TEXT,
            application_name TEXT,
            window_title TEXT,
            document_path TEXT,
            document_title TEXT,
            context_path TEXT,
            is_private INTEGER NOT NULL DEFAULT 0,
            is_fullscreen INTEGER NOT NULL DEFAULT 0,
            CHECK (ended_at >= started_at)
        );
        CREATE INDEX activity_spans_by_end ON activity_spans (ended_at);
        CREATE TABLE integrations (
            identifier TEXT PRIMARY KEY NOT NULL,
            name TEXT NOT NULL,
            refreshed_at REAL
        );
    )sql",
    // Spans are looked up by their start, bounded from below by the longest span stored, which the
    // meta table keeps: a day's report then reads that day's rows and not every row after it.
    R"sql(
        CREATE INDEX activity_spans_by_start ON activity_spans (started_at);
        DROP INDEX activity_spans_by_end;
        INSERT OR REPLACE INTO meta (key, value)
            SELECT 'longest_span_seconds', CAST(COALESCE(max(ended_at - started_at), 0) AS INTEGER) + 1
            FROM activity_spans;
    )sql",
};
static_assert(migrations.size() == DatabaseSchema::currentVersion);

// A file written before versioning began, or a fresh one, has no meta table and counts as version 0.
constexpr const char* createMetaTable
    = "CREATE TABLE IF NOT EXISTS meta (key TEXT PRIMARY KEY NOT NULL, value INTEGER NOT NULL)";

} // namespace

std::optional<DatabaseError> DatabaseSchema::migrate(SqliteConnection& connection)
{
    // The write lock is taken before the version is read, so that two processes opening the same
    // file cannot both migrate it.
    return connection.writeTransaction([&connection] { return migrateWithinTransaction(connection); });
}

std::optional<DatabaseError> DatabaseSchema::migrateWithinTransaction(SqliteConnection& connection)
{
    if (auto failure = connection.execute(createMetaTable))
        return failure;
    auto stored = readVersion(connection);
    if (!stored.ok())
        return stored.error();
    const StoredVersion& version = stored.value();
    if (version.lastCompatibleVersion > currentVersion)
        return DatabaseError { DatabaseError::Kind::newerSchema,
            "The database was written by a newer version of Vardel (schema " + std::to_string(version.version)
                + ") and cannot be changed by this one (schema " + std::to_string(currentVersion)
                + "). Please update Vardel." };
    if (version.version >= currentVersion)
        return std::nullopt;
    for (int64_t next = std::max<int64_t>(version.version, 0); next < currentVersion; ++next) {
        if (auto failure = connection.execute(migrations[static_cast<size_t>(next)]))
            return failure;
    }
    return writeVersion(connection);
}

DatabaseResult<DatabaseSchema::StoredVersion> DatabaseSchema::readVersion(SqliteConnection& connection)
{
    auto statement
        = connection.prepare("SELECT key, value FROM meta WHERE key IN ('version', 'last_compatible_version')");
    if (!statement.ok())
        return statement.error();
    SqliteStatement rows = std::move(statement).value();
    StoredVersion stored;
    auto failed = rows.forEachRow([&](const SqliteStatement& row) {
        int64_t value = row.integerColumn(1);
        if (row.textColumn(0) == "version")
            stored.version = value;
        else
            stored.lastCompatibleVersion = value;
    });
    if (failed)
        return *failed;
    return stored;
}

std::optional<DatabaseError> DatabaseSchema::writeVersion(SqliteConnection& connection)
{
    auto statement = connection.prepare(
        "INSERT OR REPLACE INTO meta (key, value) VALUES ('version', ?1), ('last_compatible_version', ?1)");
    if (!statement.ok())
        return statement.error();
    SqliteStatement write = std::move(statement).value();
    write.bind(1, int64_t { currentVersion });
    auto done = write.step();
    if (!done.ok())
        return done.error();
    return std::nullopt;
}

} // namespace vardel
