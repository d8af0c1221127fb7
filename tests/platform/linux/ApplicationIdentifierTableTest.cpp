#include "platform/linux/ApplicationIdentifierTable.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vardel::linux_desktop {

namespace {

TEST(ApplicationIdentifierTableTest, ShippedTableMapsWellKnownEntries)
{
    auto table = ApplicationIdentifierTable::load(
        std::filesystem::path(VARDEL_TESTS_DIR) / "../data/application-identifiers.json");
    EXPECT_EQ(table.identifierFor("chromium"), "org.chromium.Chromium");
    EXPECT_EQ(table.identifierFor("firefox-esr"), "org.mozilla.firefox");
    EXPECT_EQ(table.identifierFor("com.slack.Slack"), "com.tinyspeck.slackmacgap");
    EXPECT_EQ(table.identifierFor("signal-desktop"), "org.whispersystems.signal-desktop");
    EXPECT_FALSE(table.identifierFor("gedit"));
    auto firefoxEntries = table.desktopEntryIdsFor("org.mozilla.firefox");
    EXPECT_EQ(firefoxEntries, (std::vector<std::string> { "firefox", "firefox-esr", "org.mozilla.firefox" }));
}

TEST(ApplicationIdentifierTableTest, PreferenceEntriesWinAndWrongTypesAreIgnored)
{
    ApplicationIdentifierTable table(std::map<std::string, std::string, std::less<>> { { "zoom", "us.zoom.xos" } });
    table.addPreferenceEntries(
        { { "zoom", Value("com.example.zoom") }, { "mine", Value("com.example.Mine") }, { "number", Value(3) } });
    EXPECT_EQ(table.identifierFor("zoom"), "com.example.zoom");
    EXPECT_EQ(table.identifierFor("mine"), "com.example.Mine");
    EXPECT_FALSE(table.identifierFor("number"));
}

TEST(ApplicationIdentifierTableTest, UnreadableTablesGiveClearErrors)
{
    testing::TemporaryFolder folder;
    EXPECT_THROW(ApplicationIdentifierTable::load(folder.path() / "missing.json"), std::runtime_error);
    std::ofstream(folder.path() / "list.json") << "[1, 2]";
    EXPECT_THROW(ApplicationIdentifierTable::load(folder.path() / "list.json"), std::runtime_error);
    std::ofstream(folder.path() / "numbers.json") << R"({"chromium": 7})";
    try {
        ApplicationIdentifierTable::load(folder.path() / "numbers.json");
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("chromium"), std::string::npos);
    }
}

} // namespace

} // namespace vardel::linux_desktop
