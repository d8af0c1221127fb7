// Launch at login through the XDG autostart entry.

#include "platform/linux/XdgAutostartLoginItems.h"

#include "platform/linux/GLibHandles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <gio/gdesktopappinfo.h>
#include <map>

namespace vardel::linux_desktop {

namespace {

// The program an entry starts, as the desktop's own parser (GLib's) reads the entry.
std::string startedProgram(const std::filesystem::path& entry)
{
    GObjectHandle<GDesktopAppInfo> info(g_desktop_app_info_new_from_filename(entry.c_str()));
    if (!info)
        return "(unreadable entry)";
    gint count = 0;
    gchar** argv = nullptr;
    const char* commandLine = g_app_info_get_commandline(G_APP_INFO(info.get()));
    if (!commandLine || !g_shell_parse_argv(commandLine, &count, &argv, nullptr))
        return "(unparsable Exec)";
    std::string program = argv[0];
    g_strfreev(argv);
    return program;
}

TEST(XdgAutostartLoginItemsTest, EntryIsTheRegistrationAndStartsTheExecutableLiterally)
{
    vardel::testing::TemporaryFolder folder;
    for (const char* installFolder : { "plain", "Vardel's \"Tracker\" $HOME `id` back\\slash" }) {
        // GLib reads only entries whose program exists.
        std::filesystem::create_directories(folder.path() / installFolder);
        std::string executable = (folder.path() / installFolder / "vardel-tracker").string();
        std::ofstream(executable) << "#!/bin/sh\n";
        std::filesystem::permissions(executable, std::filesystem::perms::owner_all);
        XdgAutostartLoginItems items(folder.path() / "autostart", executable);
        EXPECT_FALSE(items.startsAtLogin());
        EXPECT_EQ(items.setStartsAtLogin(true), std::nullopt);
        EXPECT_TRUE(items.startsAtLogin());
        EXPECT_EQ(startedProgram(items.entryPath()), executable);
        EXPECT_EQ(items.setStartsAtLogin(false), std::nullopt);
        EXPECT_FALSE(items.startsAtLogin());
        EXPECT_FALSE(std::filesystem::exists(items.entryPath()));
        // Removing what is not there is no failure.
        EXPECT_EQ(items.setStartsAtLogin(false), std::nullopt);
    }
}

TEST(XdgAutostartLoginItemsTest, PercentSignsAreNotFieldCodes)
{
    // GLib checks the program before it expands field codes, so this one is compared as text.
    EXPECT_EQ(XdgAutostartLoginItems::execValue("/opt/100% sure/vardel-tracker"), "\"/opt/100%% sure/vardel-tracker\"");
}

TEST(XdgAutostartLoginItemsTest, FolderFollowsTheBaseDirectoryRules)
{
    auto folderFor = [](std::map<std::string, std::string> variables) {
        return XdgAutostartLoginItems::autostartFolder([&variables](const char* name) -> const char* {
            auto found = variables.find(name);
            return found == variables.end() ? nullptr : found->second.c_str();
        });
    };
    EXPECT_EQ(folderFor({ { "XDG_CONFIG_HOME", "/cfg" }, { "HOME", "/home/u" } }), "/cfg/autostart");
    EXPECT_EQ(folderFor({ { "XDG_CONFIG_HOME", "relative" }, { "HOME", "/home/u" } }), "/home/u/.config/autostart");
    EXPECT_EQ(folderFor({ { "XDG_CONFIG_HOME", "" }, { "HOME", "/home/u" } }), "/home/u/.config/autostart");
    EXPECT_EQ(folderFor({}), std::nullopt);
}

TEST(XdgAutostartLoginItemsTest, UnwritableFolderIsReportedNotThrown)
{
    vardel::testing::TemporaryFolder folder;
    // A file where the folder should be.
    std::ofstream(folder.path() / "autostart") << "not a folder";
    XdgAutostartLoginItems items(folder.path() / "autostart", "/usr/bin/vardel-tracker");
    auto error = items.setStartsAtLogin(true);
    ASSERT_TRUE(error.has_value());
    EXPECT_NE(error->find("autostart"), std::string::npos) << *error;
    EXPECT_FALSE(items.startsAtLogin());
}

} // namespace

} // namespace vardel::linux_desktop
