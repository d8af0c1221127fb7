#include "platform/linux/ApplicationIdentifierTable.h"

#include "platform/linux/ShippedData.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace vardel::linux_desktop {

namespace {

constexpr const char* tableFileName = "application-identifiers.json";

} // namespace

ApplicationIdentifierTable ApplicationIdentifierTable::load(const std::filesystem::path& path)
{
    std::ifstream file(path);
    if (!file)
        throw std::runtime_error("cannot read the application identifier table " + path.string());
    nlohmann::json json = nlohmann::json::parse(file, nullptr, false);
    if (!json.is_object())
        throw std::runtime_error("the application identifier table " + path.string() + " is not a JSON object");
    std::map<std::string, std::string, std::less<>> identifiers;
    for (const auto& [entryId, identifier] : json.items()) {
        if (!identifier.is_string())
            throw std::runtime_error("the application identifier table " + path.string() + " maps '" + entryId
                + "' to something other than a text");
        identifiers.emplace(entryId, identifier.get<std::string>());
    }
    return ApplicationIdentifierTable(std::move(identifiers));
}

std::optional<std::filesystem::path> ApplicationIdentifierTable::shippedTablePath()
{
    return ShippedData::find(tableFileName);
}

void ApplicationIdentifierTable::addPreferenceEntries(const Value::Dictionary& entries)
{
    for (const auto& [entryId, identifier] : entries) {
        if (identifier.asText() && !identifier.asText()->empty())
            identifiers_.insert_or_assign(entryId, *identifier.asText());
    }
}

std::optional<std::string> ApplicationIdentifierTable::identifierFor(std::string_view desktopEntryId) const
{
    auto found = identifiers_.find(desktopEntryId);
    return found == identifiers_.end() ? std::nullopt : std::optional(found->second);
}

std::vector<std::string> ApplicationIdentifierTable::desktopEntryIdsFor(std::string_view identifier) const
{
    std::vector<std::string> entryIds;
    for (const auto& [entryId, mapped] : identifiers_) {
        if (mapped == identifier)
            entryIds.push_back(entryId);
    }
    return entryIds;
}

} // namespace vardel::linux_desktop
