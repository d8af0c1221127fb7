#include "product/DatabaseTransaction.h"

#include "platform/Platform.h"
#include "platform/ProcessWide.h"

#include <optional>
#include <string>
#include <string_view>

namespace vardel {

namespace {

// An administrator may set another minimum in the preferences, in seconds; the end-to-end tests use a
// few seconds so that a call saved without asking need not last a minute.
ProcessWide<double> minimumDurationSeconds([] {
    auto asked = platform().productPreferences().getDouble("TaskActivityDescriptor_minimumDuration");
    return asked && *asked >= 0 ? *asked : TaskActivityDescriptor::minimumDurationSeconds;
});

std::optional<DatabaseError> refusal(const TaskActivityDescriptor& descriptor, bool preventTooShortDurations)
{
    if (descriptor.durationSeconds() < 0)
        return DatabaseError { DatabaseError::Kind::endsBeforeStart, "The time entry ends before it starts." };
    double minimum = minimumDurationSeconds.get();
    if (preventTooShortDurations && descriptor.durationSeconds() < minimum)
        return DatabaseError { DatabaseError::Kind::tooShort,
            "The time entry is shorter than the minimum of " + std::to_string(static_cast<int>(minimum))
                + " seconds." };
    return std::nullopt;
}

// Runs a statement that takes the entry's start, end, title and project as ?1 to ?4 and one more
// value as ?5; nothing when it ran.
template<typename LastValue>
std::optional<DatabaseError> writeEntry(
    SqliteConnection& connection, const char* sql, const TaskActivityDescriptor& descriptor, LastValue lastValue)
{
    auto prepared = connection.prepare(sql);
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement statement = std::move(prepared).value();
    statement.bind(1, descriptor.start.secondsSince1970);
    statement.bind(2, descriptor.end.secondsSince1970);
    statement.bind(3, std::string_view(descriptor.title));
    statement.bind(4, descriptor.project);
    statement.bind(5, lastValue);
    auto done = statement.step();
    if (!done.ok())
        return done.error();
    return std::nullopt;
}

} // namespace

DatabaseTransaction::DatabaseTransaction(SqliteConnection& connection, Date now)
    : connection_(connection)
    , now_(now)
{
}

DatabaseResult<TaskActivity> DatabaseTransaction::createTaskActivity(
    const TaskActivityDescriptor& descriptor, bool preventTooShortDurations)
{
    if (auto refused = refusal(descriptor, preventTooShortDurations))
        return *refused;
    if (auto failed = writeEntry(connection_,
            "INSERT INTO time_entries (started_at, ended_at, title, project, created_at) VALUES (?1, ?2, ?3, ?4, ?5)",
            descriptor, now_.secondsSince1970))
        return *failed;
    TaskActivity created { connection_.lastInsertRowIdentifier(), descriptor, now_ };
    savedEntries_.push_back(created);
    return created;
}

DatabaseResult<TaskActivity> DatabaseTransaction::updateTaskActivity(
    const TaskActivity& entry, const TaskActivityDescriptor& descriptor, bool preventTooShortDurations)
{
    if (auto refused = refusal(descriptor, preventTooShortDurations))
        return *refused;
    if (auto failed = writeEntry(connection_,
            "UPDATE time_entries SET started_at = ?1, ended_at = ?2, title = ?3, project = ?4 WHERE id = ?5",
            descriptor, entry.identifier))
        return *failed;
    if (connection_.changes() == 0)
        return DatabaseError { DatabaseError::Kind::notFound, "The time entry no longer exists." };
    TaskActivity updated { entry.identifier, descriptor, entry.createdAt };
    savedEntries_.push_back(updated);
    return updated;
}

} // namespace vardel
