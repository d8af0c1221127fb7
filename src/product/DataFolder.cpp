#include "product/DataFolder.h"

#include <string_view>

namespace vardel::DataFolder {

namespace {

std::optional<std::filesystem::path> variable(const EnvironmentLookup& environment, const char* name)
{
    const char* value = environment(name);
    if (!value || std::string_view(value).empty())
        return std::nullopt;
    return std::filesystem::path(value);
}

} // namespace

std::optional<std::filesystem::path> fromEnvironment(const EnvironmentLookup& environment)
{
    if (auto explicitFolder = variable(environment, "VARDEL_DATA_DIR"))
        return explicitFolder;
    // The XDG base-directory rules treat a relative XDG_DATA_HOME as invalid, so it is ignored.
    if (auto dataHome = variable(environment, "XDG_DATA_HOME"); dataHome && dataHome->is_absolute())
        return *dataHome / "vardel";
    if (auto home = variable(environment, "HOME"))
        return *home / ".local" / "share" / "vardel";
    return std::nullopt;
}

} // namespace vardel::DataFolder
