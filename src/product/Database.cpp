#include "product/Database.h"

#include "platform/Platform.h"
#include "platform/ValueJson.h"
#include "product/ActivitySpanTable.h"
#include "product/DatabaseSchema.h"

#include <sys/stat.h>
#include <system_error>

namespace vardel {

namespace {

constexpr const char* selectEntries = "SELECT id, started_at, ended_at, title, project, created_at FROM time_entries ";

DatabaseError cannotOpen(const std::filesystem::path& file, const std::string& reason)
{
    return { DatabaseError::Kind::cannotOpen, "The database " + file.string() + " cannot be opened. " + reason };
}

// Write-ahead logging lets readers go on while an entry is written and survives a crash mid-write.
// The mode is stored in the file, so it is set on every open, also for files made elsewhere.
std::optional<DatabaseError> enableWriteAheadLog(SqliteConnection& connection)
{
    auto prepared = connection.prepare("PRAGMA journal_mode = WAL");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement pragma = std::move(prepared).value();
    auto row = pragma.step();
    if (!row.ok())
        return row.error();
    std::string mode = row.value() ? pragma.textColumn(0) : "";
    if (mode != "wal")
        return DatabaseError { DatabaseError::Kind::cannotOpen,
            "Write-ahead logging is not available (journal mode \"" + mode + "\")." };
    return std::nullopt;
}

TaskActivity entryAtRow(const SqliteStatement& row)
{
    return { row.integerColumn(0),
        { Date { row.realColumn(1) }, Date { row.realColumn(2) }, row.textColumn(3), row.optionalTextColumn(4) },
        Date { row.realColumn(5) } };
}

DatabaseResult<std::vector<TaskActivity>> readEntries(SqliteStatement& query)
{
    std::vector<TaskActivity> entries;
    if (auto failed = query.forEachRow([&](const SqliteStatement& row) { entries.push_back(entryAtRow(row)); }))
        return *failed;
    return entries;
}

void traceSavedEntry(const TaskActivity& entry)
{
    const TaskActivityDescriptor& saved = entry.descriptor;
    platform().trace().write("timeEntry",
        { { "start", ValueJson::formatIso8601(saved.start) }, { "end", ValueJson::formatIso8601(saved.end) },
            { "title", saved.title },
            { "project", saved.project ? nlohmann::ordered_json(*saved.project) : nlohmann::ordered_json(nullptr) } });
}

} // namespace

Database::Database(SqliteConnection connection, std::filesystem::path dataFolder)
    : connection_(std::move(connection))
    , dataFolder_(std::move(dataFolder))
    , fileIdentity_(identityOf(dataFolder_ / fileName))
{
}

std::optional<Database::FileIdentity> Database::identityOf(const std::filesystem::path& file)
{
    struct stat status { };
    if (::stat(file.c_str(), &status) != 0)
        return std::nullopt;
    return FileIdentity { static_cast<uintmax_t>(status.st_dev), static_cast<uintmax_t>(status.st_ino) };
}

DatabaseResult<bool> Database::reopenIfGone()
{
    if (fileIdentity_ && identityOf(dataFolder_ / fileName) == fileIdentity_)
        return false;
    auto reopened = open(dataFolder_);
    if (!reopened.ok())
        return reopened.error();
    std::unique_ptr<Database> fresh = std::move(reopened).value();
    connection_ = std::move(fresh->connection_);
    fileIdentity_ = fresh->fileIdentity_;
    return true;
}

DatabaseResult<std::unique_ptr<Database>> Database::open(const std::filesystem::path& dataFolder)
{
    std::filesystem::path file = dataFolder / fileName;
    std::error_code folderError;
    std::filesystem::create_directories(dataFolder, folderError);
    if (folderError)
        return cannotOpen(file, "The folder cannot be created: " + folderError.message() + ".");
    auto connected = SqliteConnection::open(file);
    if (!connected.ok())
        return connected.error();
    SqliteConnection connection = std::move(connected).value();
    // A damaged file stays recognisable as such, so that it can be set aside.
    auto openingFailure = [&](const DatabaseError& failure) {
        DatabaseError reported = cannotOpen(file, failure.message);
        if (failure.kind == DatabaseError::Kind::damaged || failure.kind == DatabaseError::Kind::newerSchema)
            reported.kind = failure.kind;
        return failure.kind == DatabaseError::Kind::newerSchema ? failure : reported;
    };
    if (auto failure = enableWriteAheadLog(connection))
        return openingFailure(*failure);
    if (auto failure = DatabaseSchema::migrate(connection))
        return openingFailure(*failure);
    return std::unique_ptr<Database>(new Database(std::move(connection), dataFolder));
}

std::optional<DatabaseError> Database::runMutation(
    const std::function<std::optional<DatabaseError>(DatabaseTransaction&)>& operation)
{
    DatabaseTransaction transaction(connection_, platform().clock().now());
    auto failure = connection_.writeTransaction([&] { return operation(transaction); });
    // Entries are traced only once they are committed, so the trace never shows a rolled-back one.
    if (!failure) {
        for (const TaskActivity& entry : transaction.savedEntries())
            traceSavedEntry(entry);
    }
    return failure;
}

void Database::present(std::string_view fileLabel, int line, const DatabaseError& error) const
{
    presenter_.present(std::string(fileLabel) + ":" + std::to_string(line), error);
}

DatabaseResult<std::vector<TaskActivity>> Database::entriesInRange(Date from, Date to)
{
    auto prepared = connection_.prepare(
        std::string(selectEntries) + "WHERE started_at < ?2 AND ended_at > ?1 ORDER BY started_at, id");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement query = std::move(prepared).value();
    query.bind(1, from.secondsSince1970);
    query.bind(2, to.secondsSince1970);
    return readEntries(query);
}

DatabaseResult<std::optional<TaskActivity>> Database::mostRecentEntry(std::string_view title)
{
    auto prepared = connection_.prepare(
        std::string(selectEntries) + "WHERE title = ?1 ORDER BY started_at DESC, id DESC LIMIT 1");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement query = std::move(prepared).value();
    query.bind(1, title);
    auto entries = readEntries(query);
    if (!entries.ok())
        return entries.error();
    if (entries.value().empty())
        return std::optional<TaskActivity>();
    return std::optional<TaskActivity>(entries.value().front());
}

std::optional<DatabaseError> Database::saveActivitySpans(std::vector<ActivitySpan>& spans)
{
    std::vector<int64_t> identifiers;
    auto failure = connection_.writeTransaction([&]() -> std::optional<DatabaseError> {
        for (const ActivitySpan& span : spans) {
            auto saved = ActivitySpanTable::save(connection_, span);
            if (!saved.ok())
                return saved.error();
            identifiers.push_back(saved.value());
        }
        return std::nullopt;
    });
    // Ids are handed out only once committed: a rolled-back insert must be inserted again.
    if (!failure) {
        for (size_t index = 0; index < spans.size(); ++index)
            spans[index].id = identifiers[index];
    }
    return failure;
}

DatabaseResult<std::vector<ActivitySpan>> Database::activitySpansInRange(Date from, Date to)
{
    return ActivitySpanTable::overlapping(connection_, from, to);
}

DatabaseResult<double> Database::totalActivitySecondsBetween(Date from, Date to)
{
    return ActivitySpanTable::totalSecondsBetween(connection_, from, to);
}

std::optional<DatabaseError> Database::backUpInto(const std::filesystem::path& file)
{
    return connection_.backUpInto(file);
}

} // namespace vardel
