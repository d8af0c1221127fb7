#pragma once

#include "platform/Value.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace vardel {

// Activity stores found damaged when they were opened. Each is kept beside the fresh store that
// replaces it, under its own name with the time it was set aside, so that nothing is deleted and
// the user can be told about it.
class DamagedStores {
public:
    // Moves the store's file and its write-ahead log aside; the path of the kept file, or nothing
    // when it could not be moved.
    static std::optional<std::filesystem::path> setAside(const std::filesystem::path& dataFolder, Date now);
    // The stores set aside in the folder, oldest first.
    static std::vector<std::filesystem::path> list(const std::filesystem::path& dataFolder);
    // What happened to one of them, in a sentence for the log and the reports; names the newest
    // backup taken before it was set aside.
    static std::string describe(const std::filesystem::path& dataFolder, const std::filesystem::path& setAsideFile);
};

} // namespace vardel
