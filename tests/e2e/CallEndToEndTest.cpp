// Calls on the real desktop: what the audio server's streams tell the tracker, and the offer that
// follows through a notification server on the session bus.

#include "TrackerOnDesktopTest.h"
#include "support/AtspiWindows.h"

#include <ctime>

namespace vardel::testing {

namespace {

constexpr const char* notifications = "org.freedesktop.Notifications";
constexpr const char* notificationsPath = "/org/freedesktop/Notifications";

size_t samplesWithRunningCallOf(const Trace& trace, const std::string& name)
{
    return std::count_if(trace.begin(), trace.end(), [&](const nlohmann::json& event) {
        return event["event"] == "sample" && event["calls"]["hasRunningCall"] == true
            && event["calls"]["descriptionOfRunningCalls"].get<std::string>().find(name) != std::string::npos;
    });
}

// Long enough to be offered: the tracker's minimum is lowered to a second.
bool hasLongRunningCallOf(const Trace& trace, const std::string& name)
{
    return samplesWithRunningCallOf(trace, name) >= 3;
}

std::optional<nlohmann::json> notificationIn(const Trace& trace)
{
    for (const auto& event : trace) {
        if (event["event"] == "notification")
            return event;
    }
    return std::nullopt;
}

bool hasEditorEvent(const Trace& trace)
{
    return std::any_of(trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "editor"; });
}

// "2026-11-25 12:00:00" in local time, a number of seconds later.
std::string localTimeAfter(const std::string& text, int seconds)
{
    std::tm parts {};
    if (!strptime(text.c_str(), "%Y-%m-%d %H:%M:%S", &parts))
        return text;
    parts.tm_isdst = -1;
    std::time_t later = std::mktime(&parts) + seconds;
    std::tm laterParts {};
    localtime_r(&later, &laterParts);
    char formatted[32];
    std::strftime(formatted, sizeof formatted, "%Y-%m-%d %H:%M:%S", &laterParts);
    return formatted;
}

class CallEndToEndTest : public LinuxDesktopEndToEndTest {
protected:
    // A notification server that shows actions and writes every call it gets to a log.
    void startNotificationServer()
    {
        notificationLog_ = folder_ / "notifications.log";
        start("/usr/bin/python3",
            { "-m", "dbusmock", "--template", "notification_daemon", "-p", R"({"capabilities": "body actions"})", "-l",
                notificationLog_.string() });
        ASSERT_TRUE(waitUntil(
            [this] { return callsNotificationServer("org.freedesktop.Notifications.GetCapabilities"); }, 10s));
    }

    bool callsNotificationServer(const std::string& method, const std::vector<std::string>& arguments = {})
    {
        std::vector<std::string> call { "call", "--session", "-d", notifications, "-o", notificationsPath, "-m",
            method };
        call.insert(call.end(), arguments.begin(), arguments.end());
        try {
            desktop().run("gdbus", call);
            return true;
        } catch (const HeadlessDesktopError&) {
            return false;
        }
    }

    // The user chose an action of the first notification the server showed.
    void chooseAction(const std::string& action)
    {
        ASSERT_TRUE(callsNotificationServer("org.freedesktop.DBus.Mock.EmitSignal",
            { notifications, "ActionInvoked", "us", "[<uint32 1>, <'" + action + "'>]" }));
    }

    // Calls end after a second; the tracker's preferences live in the test's folder.
    void startCallTracker(nlohmann::json preferences = nlohmann::json::object())
    {
        preferences["RunningCallDetector_minimumCallDurationForNotifying"] = 1;
        auto file = folder_ / "config/vardel/preferences.json";
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << preferences.dump();
        startTracker({ { "XDG_CONFIG_HOME", (folder_ / "config").string() } });
    }

    std::string preferencesText() { return readText(folder_ / "config/vardel/preferences.json"); }

    // A program known as Zoom by its desktop entry: it shows a window, and the test's audio clients
    // run as its children, as a call application's audio does.
    pid_t startZoomLookalike(bool records)
    {
        auto entry = desktop().scratchFolder() / "home/.local/share/applications/zoom.desktop";
        std::filesystem::create_directories(entry.parent_path());
        std::ofstream(entry) << "[Desktop Entry]\nType=Application\nName=Zoom\nExec=" VARDEL_CONTRACT_APPLICATION_PATH
                                "\n";
        std::string clients = "paplay --raw --device=speaker /dev/zero & ";
        if (records)
            clients += "parecord --raw --device=microphone /dev/null & ";
        pid_t application = start("/bin/sh", { "-c", clients + "exec " VARDEL_CONTRACT_APPLICATION_PATH });
        desktop().waitForActiveWindow(application, "Contract Window");
        return application;
    }

    // The editor shows the call; the user makes it two minutes long (shorter entries are refused)
    // and saves it into the store, where `vardel entries` finds it.
    void saveTheCallInTheEditor(const std::string& titleStart)
    {
        atspi::connect();
        auto title = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_TEXT, "Title");
        auto start = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_TEXT, "Start");
        auto end = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_TEXT, "End");
        auto save = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_PUSH_BUTTON, "Save");
        ASSERT_TRUE(title && start && end && save) << "the editor's fields did not show";
        std::string shownTitle = atspi::textOf(title.get());
        EXPECT_TRUE(shownTitle.starts_with(titleStart)) << shownTitle;
        atspi::type(end.get(), localTimeAfter(atspi::textOf(start.get()), 120));
        atspi::press(save.get());
        waitForTrace([](const Trace& trace) {
            return std::any_of(
                trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "timeEntry"; });
        });
        ::setenv("VARDEL_DATA_DIR", (folder_ / "data").c_str(), 1);
        auto listed
            = nlohmann::json::parse(desktop().run(VARDEL_BUILD_DIR "/vardel", { "entries", "--json" }), nullptr, false);
        ASSERT_TRUE(listed.is_object()) << listed;
        ASSERT_EQ(listed["entries"].size(), 1u) << listed;
        EXPECT_EQ(listed["entries"][0]["title"], shownTitle);
        EXPECT_EQ(listed["entries"][0]["seconds"], 120);
    }

    void TearDown() override
    {
        if (suite_)
            std::filesystem::remove(desktop().scratchFolder() / "home/.local/share/applications/zoom.desktop");
        LinuxDesktopEndToEndTest::TearDown();
    }

    std::filesystem::path notificationLog_;
};

TEST_F(CallEndToEndTest, ChromiumCallIsDetectedOfferedWithItsActionsAndStored)
{
    startNotificationServer();
    startCallTracker();
    pid_t chromium = startChromium(callUrl());
    desktop().waitForActiveWindow(chromium, "Vardel Call connected", 30);
    waitForTrace([](const Trace& trace) { return hasLongRunningCallOf(trace, "Chromium"); });

    stop(chromium);
    auto trace = waitForTrace([](const Trace& trace) { return notificationIn(trace).has_value(); });
    auto notification = notificationIn(trace).value_or(nlohmann::json::object());
    EXPECT_EQ(notification["category"], "info.quenby.Vardel2.callEnded");
    EXPECT_TRUE(notification["title"].get<std::string>().starts_with("Chromium")) << notification["title"];
    std::string shown = readText(notificationLog_);
    for (const char* action :
        { "createTaskForCall", "reportFalsePositive", "doNotAskAgain", "doNotAskAgainForThisApp" })
        EXPECT_NE(shown.find(action), std::string::npos) << action << " is not among the actions: " << shown;

    chooseAction("createTaskForCall");
    waitForTrace(hasEditorEvent);
    saveTheCallInTheEditor("Chromium");
}

TEST_F(CallEndToEndTest, BrowserMeetingSiteGivesServiceAndMeetingTitle)
{
    startCallTracker();
    // The meeting site's host leads to the test's page server.
    pid_t chromium = start("/usr/bin/chromium",
        { "--no-sandbox", "--no-first-run", "--no-default-browser-check", "--disable-background-networking",
            "--disable-component-update", "--disable-sync", "--disable-gpu", "--password-store=basic",
            "--force-renderer-accessibility", "--use-fake-ui-for-media-stream",
            "--autoplay-policy=no-user-gesture-required", "--disable-features=HttpsUpgrades",
            "--host-resolver-rules=MAP whereby.com 127.0.0.1:" + std::to_string(suite_->port),
            // The microphone is offered to secure pages only.
            "--unsafely-treat-insecure-origin-as-secure=http://whereby.com",
            "--user-data-dir=" + (folder_ / "chromium-profile").string(), "http://whereby.com/room.html" });
    desktop().waitForActiveWindow(chromium, "Vardel Call connected", 30);
    waitForTrace([](const Trace& trace) { return samplesWithRunningCallOf(trace, "Whereby call: Vardel") > 0; });
}

TEST_F(CallEndToEndTest, FirefoxCallIsOfferedAndStoredFromTheNotification)
{
    startNotificationServer();
    startCallTracker();
    pid_t firefox = startFirefox("call-profile", /*privateWindow=*/false, callUrl());
    desktop().waitForActiveWindow(firefox, "Vardel Call connected", 60);
    waitForTrace([](const Trace& trace) { return hasLongRunningCallOf(trace, "Firefox"); });

    stop(firefox);
    auto trace = waitForTrace([](const Trace& trace) { return notificationIn(trace).has_value(); });
    EXPECT_NE(notificationIn(trace).value_or(nlohmann::json::object())["title"].get<std::string>().find("Firefox"),
        std::string::npos);
    chooseAction("createTaskForCall");
    waitForTrace(hasEditorEvent);
    saveTheCallInTheEditor("Firefox");
}

TEST_F(CallEndToEndTest, NativeCallIsOfferedAnsweredAfterARestartAndStored)
{
    startNotificationServer();
    startCallTracker();
    pid_t zoom = startZoomLookalike(/*records=*/true);
    waitForTrace([](const Trace& trace) { return hasLongRunningCallOf(trace, "Zoom"); });
    // What the desktop shows of the call, for a user who wonders whether it was seen.
    std::string dump = runTracker({ "--dumpPMAssertions" });
    EXPECT_NE(dump.find("audio-in"), std::string::npos) << dump;
    EXPECT_NE(dump.find("audio-out"), std::string::npos) << dump;
    EXPECT_NE(dump.find(R"(serviceName: "Zoom")"), std::string::npos) << dump;
    stop(zoom);
    auto trace = waitForTrace([](const Trace& trace) { return notificationIn(trace).has_value(); });
    EXPECT_TRUE(notificationIn(trace).value_or(nlohmann::json::object())["title"].get<std::string>().starts_with(
        "Zoom call has ended ("));

    // The answer comes to the next tracker, which still knows what the notification offered.
    stopTracker();
    startCallTracker();
    waitForTrace([](const Trace& trace) { return samples(trace) > 0; });
    chooseAction("createTaskForCall");
    waitForTrace(hasEditorEvent);

    saveTheCallInTheEditor("Zoom call");
}

TEST_F(CallEndToEndTest, DontAskAgainForThisAppStopsTheNextOffer)
{
    startNotificationServer();
    startCallTracker();
    pid_t zoom = startZoomLookalike(/*records=*/true);
    waitForTrace([](const Trace& trace) { return hasLongRunningCallOf(trace, "Zoom"); });
    stop(zoom);
    waitForTrace([](const Trace& trace) { return notificationIn(trace).has_value(); });
    chooseAction("doNotAskAgainForThisApp");
    EXPECT_TRUE(waitUntil([this] { return preferencesText().find("us.zoom.xos") != std::string::npos; }, 10s))
        << preferencesText();

    // The next call of the application is not even followed.
    Trace earlier = readTrace(tracePath_);
    size_t before = earlier.size();
    zoom = startZoomLookalike(/*records=*/true);
    auto trace = waitForTrace([&](const Trace& trace) { return samples(trace) >= samples(earlier) + 3; });
    stop(zoom);
    EXPECT_EQ(
        std::count_if(trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "notification"; }),
        1);
    for (size_t index = before; index < trace.size(); ++index)
        EXPECT_FALSE(trace[index]["event"] == "sample" && trace[index]["calls"]["hasRunningCall"] == true);
}

// Saved without asking, the call is stored when it lasts the store's minimum, here lowered from a
// minute to three seconds; the saved entry is then opened in the editor.
TEST_F(CallEndToEndTest, ACallSavedWithoutAskingIsStoredAndOpenedForEditing)
{
    startCallTracker({ { "RunningCallDetector_immediatelySaveTimeEntriesForCalls", true },
        { "TaskActivityDescriptor_minimumDuration", 3 } });
    pid_t zoom = startZoomLookalike(/*records=*/true);
    waitForTrace([](const Trace& trace) { return samplesWithRunningCallOf(trace, "Zoom") >= 5; });
    stop(zoom);
    waitForTrace([](const Trace& trace) {
        return std::any_of(trace.begin(), trace.end(), [](const auto& event) { return event["event"] == "timeEntry"; })
            && hasEditorEvent(trace);
    });

    ::setenv("VARDEL_DATA_DIR", (folder_ / "data").c_str(), 1);
    auto listed
        = nlohmann::json::parse(desktop().run(VARDEL_BUILD_DIR "/vardel", { "entries", "--json" }), nullptr, false);
    ASSERT_TRUE(listed.is_object()) << listed;
    ASSERT_EQ(listed["entries"].size(), 1u) << listed;
    std::string title = listed["entries"][0]["title"];
    EXPECT_TRUE(title.starts_with("Zoom call")) << title;
    EXPECT_GE(listed["entries"][0]["seconds"], 3);
    EXPECT_LE(listed["entries"][0]["seconds"], 15);

    atspi::connect();
    auto shownTitle = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_TEXT, "Title");
    auto cancel = atspi::waitForElement("vardel-dialog", ATSPI_ROLE_PUSH_BUTTON, "Cancel");
    ASSERT_TRUE(shownTitle && cancel) << "the editor did not show the saved entry";
    EXPECT_EQ(atspi::textOf(shownTitle.get()), title);
    atspi::press(cancel.get());
}

TEST_F(CallEndToEndTest, MusicAloneIsNoCall)
{
    startCallTracker();
    startZoomLookalike(/*records=*/false);
    auto trace = waitForTrace(
        [](const Trace& trace) { return lastActivityOf(trace, "us.zoom.xos").has_value() && samples(trace) >= 4; });
    EXPECT_TRUE(std::all_of(trace.begin(), trace.end(),
        [](const auto& event) { return event["event"] != "sample" || event["calls"]["hasRunningCall"] == false; }));
}

} // namespace

} // namespace vardel::testing
