#include "product/VardelIntegrationsDatabaseAdapter.h"

namespace vardel {

DatabaseResult<int64_t> VardelIntegrationsDatabaseAdapter::markRefreshed(
    const std::optional<std::vector<std::string>>& identifiers, Date at)
{
    std::optional<DatabaseResult<int64_t>> outcome;
    auto failure = db_.connection().writeTransaction([&]() -> std::optional<DatabaseError> {
        outcome = identifiers ? markEachRefreshed(*identifiers, at) : markAllRefreshed(at);
        if (!outcome->ok())
            return outcome->error();
        return std::nullopt;
    });
    if (failure)
        return *failure;
    return *outcome;
}

DatabaseResult<int64_t> VardelIntegrationsDatabaseAdapter::markAllRefreshed(Date at)
{
    auto prepared = db_.connection().prepare("UPDATE integrations SET refreshed_at = ?1");
    if (!prepared.ok())
        return prepared.error();
    SqliteStatement update = std::move(prepared).value();
    update.bind(1, at.secondsSince1970);
    auto done = update.step();
    if (!done.ok())
        return done.error();
    return int64_t { db_.connection().changes() };
}

DatabaseResult<int64_t> VardelIntegrationsDatabaseAdapter::markEachRefreshed(
    const std::vector<std::string>& identifiers, Date at)
{
    int64_t refreshed = 0;
    for (const std::string& identifier : identifiers) {
        auto prepared = db_.connection().prepare("UPDATE integrations SET refreshed_at = ?1 WHERE identifier = ?2");
        if (!prepared.ok())
            return prepared.error();
        SqliteStatement update = std::move(prepared).value();
        update.bind(1, at.secondsSince1970);
        update.bind(2, std::string_view(identifier));
        auto done = update.step();
        if (!done.ok())
            return done.error();
        if (db_.connection().changes() == 0)
            return DatabaseError { DatabaseError::Kind::notFound, "No integration \"" + identifier + "\" is set up." };
        refreshed += db_.connection().changes();
    }
    return refreshed;
}

} // namespace vardel
