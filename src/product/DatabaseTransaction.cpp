#include "product/DatabaseTransaction.h"

#include <optional>
#include <string>

namespace vardel {

namespace {

std::optional<DatabaseError> refusal(const TaskActivityDescriptor& descriptor, bool preventTooShortDurations)
{
    if (descriptor.durationSeconds() < 0)
        return DatabaseError { DatabaseError::Kind::endsBeforeStart, "The time entry ends before it starts." };
    if (preventTooShortDurations && descriptor.durationSeconds() < TaskActivityDescriptor::minimumDurationSeconds)
        return DatabaseError { DatabaseError::Kind::tooShort,
            "The time entry is shorter than the minimum of "
                + std::to_string(static_cast<int>(TaskActivityDescriptor::minimumDurationSeconds)) + " seconds." };
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
    auto prepared = connection_.prepare(
        "INSERT INTO time_entries (started_at, ended_at, title, project, created_at) VALUES (?1, ?2, ?3, ?4, ?5)");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement insert = std::move(prepared).value();
    insert.bind(1, descriptor.start.secondsSince1970);
    insert.bind(2, descriptor.end.secondsSince1970);
    insert.bind(3, std::string_view(descriptor.title));
    insert.bind(4, descriptor.project);
    insert.bind(5, now_.secondsSince1970);
    auto done = insert.step();
    if (!done.ok())
        return done.error();
    TaskActivity created { connection_.lastInsertRowIdentifier(), descriptor, now_ };
    createdEntries_.push_back(created);
    return created;
}

} // namespace vardel
