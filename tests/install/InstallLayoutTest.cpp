// `cmake --install` into a prefix whose path needs quoting everywhere: what a desktop needs to show
// and start the tracker lands in the usual places, and every file that names the tracker names the
// installed one.

#include "platform/linux/GLibHandles.h"
#include "platform/linux/XdgAutostartLoginItems.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gio/gdesktopappinfo.h>
#include <map>
#include <sstream>

namespace vardel::testing {

namespace {

std::string shellQuoted(const std::string& text)
{
    std::string quoted = "'";
    for (char character : text)
        quoted += character == '\'' ? std::string("'\\''") : std::string(1, character);
    return quoted + "'";
}

std::string readText(const std::filesystem::path& path)
{
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

int run(const std::string& command)
{
    int status = std::system((command + " >/dev/null 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class InstallLayoutTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_EQ(
            run("cmake --install " + shellQuoted(VARDEL_BUILD_DIR) + " --prefix " + shellQuoted(prefix.string())), 0);
    }

    TemporaryFolder folder;
    std::filesystem::path prefix = folder.path() / "Vardel's Tracker $HOME";
    std::string tracker = (prefix / "bin/vardel-tracker").string();
};

TEST_F(InstallLayoutTest, FilesLandInTheUsualPlaces)
{
    for (const char* file :
        { "bin/vardel-tracker", "bin/vardel", "bin/vardel-dialog", "share/vardel-tracker/application-identifiers.json",
            "share/applications/vardel-tracker.desktop", "share/icons/hicolor/scalable/apps/vardel-tracker.svg",
            "share/vardel-tracker/autostart/vardel-tracker.desktop", "lib/systemd/user/vardel-tracker.service" })
        EXPECT_TRUE(std::filesystem::is_regular_file(prefix / file)) << file;
    EXPECT_EQ(std::filesystem::status(tracker).permissions() & std::filesystem::perms::owner_exec,
        std::filesystem::perms::owner_exec);
    EXPECT_NE(
        readText(prefix / "share/icons/hicolor/scalable/apps/vardel-tracker.svg").find("<svg"), std::string::npos);

    // An icon theme lookup finds one icon per name: the tray's icons must not shadow the application's.
    std::map<std::string, std::filesystem::path> icons;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(prefix / "share")) {
        if (entry.path().extension() != ".svg")
            continue;
        auto [earlier, added] = icons.emplace(entry.path().stem().string(), entry.path());
        EXPECT_TRUE(added) << entry.path() << " has the name of " << earlier->second;
    }
}

TEST_F(InstallLayoutTest, DesktopEntryAndAutostartTemplateStartTheInstalledTracker)
{
    auto entry = prefix / "share/applications/vardel-tracker.desktop";
    linux_desktop::GObjectHandle<GDesktopAppInfo> info(g_desktop_app_info_new_from_filename(entry.c_str()));
    ASSERT_TRUE(info) << readText(entry);
    gint count = 0;
    gchar** argv = nullptr;
    ASSERT_TRUE(g_shell_parse_argv(g_app_info_get_commandline(G_APP_INFO(info.get())), &count, &argv, nullptr));
    EXPECT_EQ(std::string(argv[0]), tracker);
    g_strfreev(argv);
    EXPECT_STREQ(g_app_info_get_name(G_APP_INFO(info.get())), "Vardel Tracker");

    // The template is what the tracker writes when the user asks to launch it at login.
    EXPECT_EQ(readText(prefix / "share/vardel-tracker/autostart/vardel-tracker.desktop"),
        linux_desktop::XdgAutostartLoginItems::entryText(tracker));
}

TEST_F(InstallLayoutTest, UserUnitIsValidAndRestartsOnlyAfterACrash)
{
    std::string unit = readText(prefix / "lib/systemd/user/vardel-tracker.service");
    EXPECT_NE(unit.find("Restart=on-failure\n"), std::string::npos);
    // systemd checks the file and that the command it starts exists.
    TemporaryFolder runtime;
    EXPECT_EQ(run("XDG_RUNTIME_DIR=" + shellQuoted(runtime.path().string()) + " systemd-analyze --user verify "
                  + shellQuoted((prefix / "lib/systemd/user/vardel-tracker.service").string())),
        0)
        << unit;
}

} // namespace

} // namespace vardel::testing
