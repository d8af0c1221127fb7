#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace vardel::linux_desktop {

// The data files shipped with the program: in $VARDEL_SHARE_DIR when it is set, else in
// share/vardel-tracker beside or above the executable's folder (the build folder, or the install
// prefix's bin).
class ShippedData {
public:
    // The path of the file or folder; under $VARDEL_SHARE_DIR whether or not it exists there, else
    // only when it exists.
    static std::optional<std::filesystem::path> find(std::string_view relativePath);
};

} // namespace vardel::linux_desktop
