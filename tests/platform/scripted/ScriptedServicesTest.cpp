#include "platform/ValueJson.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "platform/scripted/ScriptedTesting.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace vardel::scripted::testing {
namespace {

TEST(ScriptedWorkspace, ShowsRunningApplicationsOnly)
{
    auto desktop = desktopFrom(Json::parse(R"({"applications": [
        {"pid": 1, "bundleIdentifier": "a", "localizedName": "A", "executablePath": "/a", "bundlePath": "/A.app"},
        {"pid": 2, "running": false}], "processes": [{"pid": 3, "name": "daemon"}], "frontmost": 3})"));
    auto running = desktop->workspace().runningApplications();
    EXPECT_EQ(running, (std::vector<RunningApplication> { { 1, "a", "A", "/a", "/A.app" } }));
    EXPECT_EQ(desktop->workspace().frontmostApplication(), std::nullopt);
    EXPECT_EQ(desktopFrom(Json::object())->workspace().frontmostApplication(), std::nullopt);
    EXPECT_EQ(
        desktopFrom({ { "applications", { { { "pid", 1 } } } } })->workspace().frontmostApplication(), std::nullopt);
}

TEST(ScriptedWindowServer, ShowsScreensAndWindowsAsTheScenarioSays)
{
    Json scenario = Json::parse(R"({"windowList": [{"kCGWindowOwnerPID": 1, "kCGWindowName": "Report",
        "kCGWindowLayer": 0, "kCGWindowBounds": {"X": 0, "Y": 0, "Width": 1920.5, "Height": 1080},
        "kCGWindowAlpha": 1}]})");
    auto desktop = desktopFrom(scenario);
    EXPECT_EQ(desktop->windowServer().screenFrames(), (std::vector<Rect> { { { 0, 0 }, { 1920, 1080 } } }));
    auto windows = desktop->windowServer().onScreenWindowList();
    ASSERT_EQ(windows.size(), 1u);
    // Dictionaries sort their keys, so the comparison ignores key order.
    EXPECT_EQ(nlohmann::json::parse(ValueJson::encode(windows[0]).dump()),
        nlohmann::json::parse(scenario["windowList"][0].dump()));
    EXPECT_TRUE(desktop->windowServer().preflightScreenCaptureAccess());

    scenario["screenCaptureAccess"] = false;
    desktop = desktopFrom(scenario);
    windows = desktop->windowServer().onScreenWindowList();
    EXPECT_FALSE(windows[0].asDictionary()->contains(WindowInfoKey::name));
    EXPECT_TRUE(windows[0].asDictionary()->contains(WindowInfoKey::ownerPID));
    EXPECT_FALSE(desktop->windowServer().requestScreenCaptureAccess());
    EXPECT_EQ(events(*desktop, "screenCaptureRequest").size(), 1u);
}

TEST(ScriptedPreferences, WritesStayInMemoryAndAreTraced)
{
    auto desktop = desktopFrom(Json::parse(R"({"defaults": {"VDInfoExtractor_globalAccessibilityTimeout": 1.5},
        "preferences": {"callNotificationMode": 1}, "domains": {"com.example.Chat": {"voiceOverOnOffKey": false}}})"));
    EXPECT_EQ(desktop->standardUserDefaults().getDouble("VDInfoExtractor_globalAccessibilityTimeout"), 1.5);
    EXPECT_EQ(desktop->productPreferences().getInt("callNotificationMode"), 1);
    PreferenceStore* chat = desktop->defaultsDomains().open("com.example.Chat");
    ASSERT_TRUE(chat);
    EXPECT_EQ(chat->getBool("voiceOverOnOffKey"), false);
    EXPECT_EQ(desktop->defaultsDomains().open("com.example.Other"), nullptr);

    desktop->standardUserDefaults().setObject("lastSelfRelaunchAt", Value(Date { 1767603600 }));
    desktop->productPreferences().setObject("callNotificationMode", std::nullopt);
    chat->setObject("voiceOverOnOffKey", Value(true));
    EXPECT_EQ(desktop->productPreferences().object("callNotificationMode"), std::nullopt);
    EXPECT_EQ(chat->getBool("voiceOverOnOffKey"), true);
    EXPECT_EQ(events(*desktop, "defaults"),
        (std::vector<Json> { { { "store", "defaults" }, { "key", "lastSelfRelaunchAt" },
                                 { "value", { { "date", "2026-01-05T09:00:00Z" } } } },
            { { "store", "preferences" }, { "key", "callNotificationMode" }, { "value", nullptr } },
            { { "store", "com.example.Chat" }, { "key", "voiceOverOnOffKey" }, { "value", true } } }));
}

TEST(ScriptedProcessLauncher, StartsNothingButAppliesDefaultsWrites)
{
    auto desktop = desktopFrom(Json::object());
    ProcessLauncher& launcher = desktop->processLauncher();
    EXPECT_EQ(
        launcher.runAndWait("/usr/bin/defaults", { "write", "com.example.App", "voiceOverOnOffKey", "-bool", "true" }),
        0);
    EXPECT_EQ(launcher.runAndWait("/usr/bin/defaults", { "write", "com.example.Other", "key", "-int", "1" }), 0);
    EXPECT_EQ(launcher.runAndWait("/bin/sh", { "-c", "exit 3" }), 0);

    PreferenceStore* written = desktop->defaultsDomains().open("com.example.App");
    ASSERT_TRUE(written);
    EXPECT_EQ(written->getBool("voiceOverOnOffKey"), true);
    EXPECT_EQ(desktop->defaultsDomains().open("com.example.Other"), nullptr);
    EXPECT_EQ(events(*desktop, "process").size(), 3u);
    EXPECT_EQ(events(*desktop, "process")[2], (Json { { "path", "/bin/sh" }, { "arguments", { "-c", "exit 3" } } }));
    EXPECT_EQ(events(*desktop, "defaults"),
        (std::vector<Json> { { { "store", "com.example.App" }, { "key", "voiceOverOnOffKey" }, { "value", true } } }));
}

TEST(ScriptedTrace, WritesOneLinePerEventWithTheVirtualTime)
{
    auto desktop = desktopFrom({ { "end", 10 } });
    std::ostringstream stream;
    desktop->setTraceStream(&stream);
    desktop->analytics().logEvent({ "RunningCallDetector.callEndDetected", { { "duration", Value(int64_t { 50 }) } },
        "always", { "sensitive" }, std::nullopt });
    desktop->runLoop().sleep(0.1);
    desktop->runLoop().sleep(0.2);
    desktop->log().warning("Dump finished; exiting.");
    desktop->trace().write("exit", { { "status", 0 }, { "reason", "end" } });

    EXPECT_EQ(stream.str(),
        "{\"t\":0,\"event\":\"analytics\",\"name\":\"RunningCallDetector.callEndDetected\","
        "\"attributes\":{\"duration\":50},\"frequency\":\"always\",\"flags\":[\"sensitive\"],\"critical\":null}\n"
        "{\"t\":0.3,\"event\":\"log\",\"level\":\"warning\",\"message\":\"Dump finished; exiting.\"}\n"
        "{\"t\":0.3,\"event\":\"exit\",\"status\":0,\"reason\":\"end\"}\n");
    EXPECT_EQ(desktop->recordedEvents().size(), 3u);
}

TEST(ScriptedTrace, WritesInvalidTextReplaced)
{
    auto desktop = desktopFrom(Json::object());
    std::ostringstream stream;
    desktop->setTraceStream(&stream);
    desktop->log().info("broken \xff text");
    EXPECT_THAT(stream.str(), ::testing::HasSubstr("broken \xef\xbf\xbd text"));
}

} // namespace
} // namespace vardel::scripted::testing
