#pragma once

#include <filesystem>
#include <functional>
#include <optional>

// The folder for the tracker's own stores (database, analytics log, support requests).
namespace vardel::DataFolder {

// Reads a variable of the process environment; nullptr when it is not set.
using EnvironmentLookup = std::function<const char*(const char* name)>;

// VARDEL_DATA_DIR when set, else "vardel" in $XDG_DATA_HOME (an absolute path), else
// ~/.local/share/vardel; nothing when not even HOME is set.
std::optional<std::filesystem::path> fromEnvironment(const EnvironmentLookup&);

} // namespace vardel::DataFolder
