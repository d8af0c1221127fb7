#include "product/DataFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace vardel {
namespace {

std::optional<std::filesystem::path> folderFor(const std::map<std::string, std::string>& environment)
{
    return DataFolder::fromEnvironment([&](const char* name) -> const char* {
        auto found = environment.find(name);
        return found == environment.end() ? nullptr : found->second.c_str();
    });
}

TEST(DataFolderTest, ExplicitFolderWinsThenXdgDataHomeThenHome)
{
    EXPECT_EQ(folderFor({ { "VARDEL_DATA_DIR", "/tmp/d" }, { "XDG_DATA_HOME", "/x" }, { "HOME", "/h" } }), "/tmp/d");
    EXPECT_EQ(folderFor({ { "XDG_DATA_HOME", "/x" }, { "HOME", "/h" } }), "/x/vardel");
    // Empty settings count as unset, and a relative XDG_DATA_HOME is not used.
    EXPECT_EQ(folderFor({ { "VARDEL_DATA_DIR", "" }, { "XDG_DATA_HOME", "relative" }, { "HOME", "/h" } }),
        "/h/.local/share/vardel");
    EXPECT_EQ(folderFor({}), std::nullopt);
}

} // namespace
} // namespace vardel
