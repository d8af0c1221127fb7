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
    savedEntries_.push_back(created);
    return created;
}

DatabaseResult<TaskActivity> DatabaseTransaction::updateTaskActivity(
    const TaskActivity& entry, const TaskActivityDescriptor& descriptor, bool preventTooShortDurations)
{
    if (auto refused = refusal(descriptor, preventTooShortDurations))
        return *refused;
    auto prepared = connection_.prepare(
        "UPDATE time_entries SET started_at = ?1, ended_at = ?2, title = ?3, project = ?4 WHERE id = ?5");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement update = std::move(prepared).value();
    update.bind(1, descriptor.start.secondsSince1970);
    update.bind(2, descriptor.end.secondsSince1970);
    update.bind(3, std::string_view(descriptor.title));
    update.bind(4, descriptor.project);
    update.bind(5, entry.identifier);
    auto done = update.step();
    if (!done.ok())
        return done.error();
    if (connection_.changes() == 0)
        return DatabaseError { DatabaseError::Kind::notFound, "The time entry no longer exists." };
    TaskActivity updated { entry.identifier, descriptor, entry.createdAt };
    savedEntries_.push_back(updated);
    return updated;
}

} // namespace vardel
