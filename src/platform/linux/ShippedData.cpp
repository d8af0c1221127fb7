#include "platform/linux/ShippedData.h"

#include <cstdlib>

namespace vardel::linux_desktop {

std::optional<std::filesystem::path> ShippedData::find(std::string_view relativePath)
{
    std::error_code error;
    if (const char* shareFolder = std::getenv("VARDEL_SHARE_DIR"); shareFolder && *shareFolder)
        return std::filesystem::path(shareFolder) / relativePath;
    auto executableFolder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    if (error)
        return std::nullopt;
    for (const auto& folder : { executableFolder / "share", executableFolder.parent_path() / "share" }) {
        auto candidate = folder / "vardel-tracker" / relativePath;
        if (std::filesystem::exists(candidate, error))
            return candidate;
    }
    return std::nullopt;
}

} // namespace vardel::linux_desktop
