// The pieces of the Linux backend that need no desktop.

#include "platform/JsonLinesTrace.h"
#include "platform/linux/AtspiRoleTable.h"
#include "platform/linux/JsonPropertyListFiles.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/SpawnProcessLauncher.h"
#include "platform/linux/X11WindowServer.h"
#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atspi/atspi.h>
#include <fstream>

namespace vardel::linux_desktop {

namespace {

TEST(X11WindowServerTest, ScreensTurnBottomLeftOriginAroundThePrimary)
{
    // The primary on the right of a taller, lower-reaching second monitor.
    std::vector<Rect> topLeft { { { 1920, 0 }, { 1920, 1080 } }, { { 0, 200 }, { 1920, 1200 } } };
    auto frames = X11WindowServer::bottomLeftOriginFrames(topLeft);
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0], (Rect { { 0, 0 }, { 1920, 1080 } }));
    EXPECT_EQ(frames[1], (Rect { { -1920, -320 }, { 1920, 1200 } }));
}

TEST(X11WindowServerTest, WindowListEntryHasThePlatformKeys)
{
    X11Window window;
    window.pid = 42;
    window.title = "Notes";
    window.layer = 20;
    window.frame = { { 10, 20 }, { 300, 200 } };
    auto entry = *X11WindowServer::windowListEntry(window).asDictionary();
    EXPECT_EQ(entry.at(WindowInfoKey::ownerPID).asInteger(), 42);
    EXPECT_EQ(*entry.at(WindowInfoKey::name).asText(), "Notes");
    EXPECT_EQ(entry.at(WindowInfoKey::layer).asInteger(), 20);
    const auto& bounds = *entry.at(WindowInfoKey::bounds).asDictionary();
    EXPECT_EQ(bounds.at("X").asNumber(), 10);
    EXPECT_EQ(bounds.at("Height").asNumber(), 200);
}

TEST(AtspiRoleTableTest, MapsRolesSubrolesAndAriaLandmarks)
{
    EXPECT_EQ(axRoleNamesFor(ATSPI_ROLE_DOCUMENT_WEB).role, "AXWebArea");
    EXPECT_EQ(axRoleNamesFor(ATSPI_ROLE_FRAME).role, "AXWindow");
    EXPECT_EQ(axRoleNamesFor(ATSPI_ROLE_DIALOG).subrole, "AXDialog");
    EXPECT_EQ(axRoleNamesFor(ATSPI_ROLE_PUSH_BUTTON).role, "AXButton");
    EXPECT_EQ(axRoleNamesFor(ATSPI_ROLE_TREE_TABLE).role, "AXOutline");
    EXPECT_EQ(axRoleNamesFor(ATSPI_ROLE_INVALID).role, "AXUnknown");
    EXPECT_EQ(axSubroleForAriaRole("banner"), "AXLandmarkBanner");
    EXPECT_FALSE(axSubroleForAriaRole("button"));
    EXPECT_TRUE(isWindowRole(ATSPI_ROLE_DIALOG));
    EXPECT_FALSE(isWindowRole(ATSPI_ROLE_PANEL));
}

TEST(JsonPropertyListFilesTest, ReadsJsonAsValuesAndNothingForBadFiles)
{
    testing::TemporaryFolder folder;
    std::ofstream(folder.path() / "strings.json")
        << R"({"Private Browsing": "Privat", "count": 2, "list": [true, 1.5]})";
    std::ofstream(folder.path() / "broken.json") << "{";
    std::ofstream(folder.path() / "null.json") << R"({"a": null})";
    JsonPropertyListFiles files;
    auto value = files.read((folder.path() / "strings.json").string());
    ASSERT_TRUE(value && value->asDictionary());
    EXPECT_EQ(*value->asDictionary()->at("Private Browsing").asText(), "Privat");
    EXPECT_EQ(value->asDictionary()->at("count").asInteger(), 2);
    EXPECT_EQ(value->asDictionary()->at("list").asList()->size(), 2u);
    EXPECT_FALSE(files.read((folder.path() / "broken.json").string()));
    EXPECT_FALSE(files.read((folder.path() / "null.json").string()));
    EXPECT_FALSE(files.read((folder.path() / "missing.json").string()));
}

TEST(LinuxDesktopTest, LanguagesComeFromLanguageElseTheLocale)
{
    EXPECT_EQ(LinuxDesktop::languagesFromEnvironment("de_CH:fr", "en_US.UTF-8"),
        (std::vector<std::string> { "de-CH", "fr" }));
    EXPECT_EQ(
        LinuxDesktop::languagesFromEnvironment(nullptr, "pt_BR.UTF-8@euro"), (std::vector<std::string> { "pt-BR" }));
    EXPECT_EQ(LinuxDesktop::languagesFromEnvironment("", "C"), (std::vector<std::string> { "en" }));
}

TEST(SpawnProcessLauncherTest, RunsAndWaitsAndLaunchesDetached)
{
    JsonLinesTrace trace([] { return 0.0; });
    trace.setRecording(true);
    SpawnProcessLauncher launcher(trace);
    EXPECT_EQ(launcher.runAndWait("/bin/sh", { "-c", "exit 3" }), 3);
    EXPECT_EQ(launcher.runAndWait("/no/such/program", {}), 127);

    testing::TemporaryFolder folder;
    auto marker = folder.path() / "started";
    EXPECT_FALSE(launcher.launch("/bin/sh", { "-c", "touch '" + marker.string() + "'" }));
    auto failure = launcher.launch("/no/such/program", {});
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->find("/no/such/program"), std::string::npos);
    EXPECT_TRUE(testing::waitUntil([&] { return std::filesystem::exists(marker); }, std::chrono::seconds(5)));
    EXPECT_EQ(trace.recorded().size(), 4u);
    EXPECT_EQ(trace.recorded().front()["event"], "process");
}

} // namespace

} // namespace vardel::linux_desktop
