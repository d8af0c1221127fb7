#include "calls/AccessibilityCallDetection.h"

#include "calls/RunningCallDetector.h"
#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

Json window(const std::string& title, Json children = Json::array())
{
    return node("AXWindow", { { "AXTitle", title } }, std::move(children));
}

Json applicationWithWindows(int pid, const std::string& bundleIdentifier, Json windows)
{
    return application(pid, bundleIdentifier, node("AXApplication", Json::object(), std::move(windows)));
}

Json desktopWithApplications(std::vector<Json> applications)
{
    Json frontmost = applications.front()["pid"];
    return { { "applications", Json(std::move(applications)) }, { "frontmost", frontmost } };
}

Json text(const std::string& value)
{
    return node("AXStaticText", { { "AXValue", value } });
}

// The notification centre's call controls as they show a call: caller,
// duration, buttons.
Json notificationCenter(Json callTexts, const std::string& buttonDescription = "Switch to FaceTime")
{
    Json controls = std::move(callTexts);
    controls.push_back(node("AXButton", { { "AXDescription", buttonDescription } }));
    Json scrollArea = node("AXScrollArea", Json::object(),
        { node("AXOpaqueProviderGroup", Json::object(), { node("AXGroup", Json::object(), std::move(controls)) }) });
    return applicationWithWindows(700, "com.apple.notificationcenterui",
        { window("Notification Center", { node("AXGroup", {}, { scrollArea }) }) });
}

Json classicTeamsCallWindow(const std::string& title, const std::string& duration, const std::string& controlsLabel)
{
    Json durationElement = node("AXGroup", { { "AXDOMIdentifier", "call-duration-custom" } }, { text(duration) });
    Json toolbar = node("AXToolbar", Json::object(), { node("AXGroup", Json::object(), { durationElement }) });
    Json controls = node("AXGroup", { { "AXDescription", controlsLabel } });
    Json body = node("AXGroup", { { "AXDOMIdentifier", "child-window-body" } }, { toolbar, controls });
    return window(title, { node("AXWebArea", Json::object(), { body }) });
}

VDActivity activityOf(const std::string& bundleIdentifier, std::optional<std::string> windowTitle,
    std::optional<std::string> address = std::nullopt, ProcessIdentifier pid = 600)
{
    return VDActivity(RunningApplication { pid, bundleIdentifier, bundleIdentifier, std::nullopt, std::nullopt },
        VDActivityDetails { std::move(windowTitle), std::move(address), std::nullopt, std::nullopt, false });
}

PowerManagementAssertions::PIDAndRunningApplication browserProcess(
    const std::string& bundleIdentifier, std::optional<std::string> name = "Google Chrome")
{
    PowerManagementAssertions::PIDAndRunningApplication process;
    process.pid = 800;
    process.bundleIdentifier = bundleIdentifier;
    process.applicationName = std::move(name);
    process.audioInAndOutAssertionsHaveBeenRecordedSeparately = true;
    return process;
}

class AccessibilityCallDetectionTest : public ScriptedDesktopTest {
protected:
    std::optional<std::string> slackTitle(std::vector<std::string> titles)
    {
        Json windows = Json::array();
        for (const auto& title : titles)
            windows.push_back(window(title));
        load(desktopWith(applicationWithWindows(500, "com.tinyspeck.slackmacgap", windows)));
        return AccessibilityCallDetection::meetingTitle("com.tinyspeck.slackmacgap", nullptr);
    }

    std::optional<std::string> newTeamsTitle(const std::string& title)
    {
        load(desktopWith(application(600, "com.microsoft.teams2")));
        auto activity = activityOf("com.microsoft.teams2", title);
        return AccessibilityCallDetection::meetingTitle("com.microsoft.teams2", &activity);
    }

    std::optional<std::string> classicTeamsTitle(Json window)
    {
        load(desktopWith(applicationWithWindows(600, "com.microsoft.teams", { std::move(window) })));
        auto activity = activityOf("com.microsoft.teams", "Microsoft Teams");
        return AccessibilityCallDetection::meetingTitle("com.microsoft.teams", &activity);
    }

    std::optional<std::string> notificationCenterTitle(Json notificationCenterApplication)
    {
        load(desktopWith(std::move(notificationCenterApplication)));
        return AccessibilityCallDetection::notificationCenterCallTitle(*platform().workspace().frontmostApplication());
    }

    std::optional<ApplicationAndMetadata> browserCall(
        const PowerManagementAssertions::PIDAndRunningApplication& process, const VDActivity& activity,
        const ExcludedApplications& excluded = ExcludedApplications())
    {
        load(desktopWith(application(800, "com.google.Chrome")));
        return AccessibilityCallDetection::browserCall(process, &activity, excluded);
    }
};

TEST_F(AccessibilityCallDetectionTest, ASlackHuddleIsNamedByItsWindowWhileTheTimerRuns)
{
    EXPECT_EQ(slackTitle({ "Slack | general", "Huddle | design-team | 12:04" }), "design-team");
    EXPECT_EQ(slackTitle({ "Huddle | design-team | 1:02:03" }), "design-team");
    EXPECT_EQ(slackTitle({ "Huddle | design-team" }), std::nullopt) << "no timer, no huddle";
    EXPECT_EQ(slackTitle({ "design-team | 12:04" }), std::nullopt);

    auto activity = activityOf("com.tinyspeck.slackmacgap", "Huddle | design-team | 12:04");
    EXPECT_EQ(AccessibilityCallDetection::meetingTitle("us.zoom.xos", &activity), std::nullopt);
}

TEST_F(AccessibilityCallDetectionTest, NewTeamsNamesTheMeetingByTheSampledWindowTitle)
{
    EXPECT_EQ(newTeamsTitle("Weekly sync (Anna) | Microsoft Teams"), "Weekly sync");
    EXPECT_EQ(newTeamsTitle("Chat | Planning (External) | Microsoft Teams"), "Planning");
    EXPECT_EQ(newTeamsTitle("Chat | Microsoft Teams"), std::nullopt);
    EXPECT_EQ(newTeamsTitle(" | Microsoft Teams"), std::nullopt);
    EXPECT_EQ(newTeamsTitle("Microsoft Teams"), std::nullopt);

    auto safari = activityOf("com.apple.Safari", "Weekly sync | Microsoft Teams");
    EXPECT_EQ(AccessibilityCallDetection::meetingTitle("com.microsoft.teams2", &safari), std::nullopt)
        << "Teams is read only while it is the sampled application";
    EXPECT_EQ(AccessibilityCallDetection::meetingTitle("com.microsoft.teams2", nullptr), std::nullopt);
}

TEST_F(AccessibilityCallDetectionTest, ClassicTeamsNeedsARunningDurationAndCallControls)
{
    EXPECT_EQ(classicTeamsTitle(classicTeamsCallWindow("Standup (Team)", "05:12", "Meeting controls")), "Standup");
    EXPECT_EQ(classicTeamsTitle(classicTeamsCallWindow("Standup", "1:05:12", "Calling controls")), "Standup");
    EXPECT_EQ(classicTeamsTitle(classicTeamsCallWindow("Standup", "Connecting", "Meeting controls")), std::nullopt);
    EXPECT_EQ(classicTeamsTitle(classicTeamsCallWindow("Standup", "05:12", "Chat controls")), std::nullopt);

    Json notACallWindow = classicTeamsCallWindow("Standup", "05:12", "Meeting controls");
    notACallWindow["children"][0]["children"][0]["AXDOMIdentifier"] = "app-body";
    EXPECT_EQ(classicTeamsTitle(notACallWindow), std::nullopt);
}

TEST_F(AccessibilityCallDetectionTest, AFaceTimeCallWindowHasAtLeastThreeWords)
{
    load(desktopWithApplications({ applicationWithWindows(
        900, "com.apple.FaceTime", { window("FaceTime"), window("Anna Berg"), window("Anna Berg (Video)") }) }));
    EXPECT_EQ(AccessibilityCallDetection::faceTimeTitle(), "Anna Berg (Video)");

    load(desktopWithApplications({ applicationWithWindows(900, "com.apple.FaceTime", { window("Anna Berg") }) }));
    EXPECT_EQ(AccessibilityCallDetection::faceTimeTitle(), std::nullopt);
}

TEST_F(AccessibilityCallDetectionTest, TheNotificationCenterShowsAFaceTimeCallByItsDurationAndButton)
{
    EXPECT_EQ(
        notificationCenterTitle(notificationCenter({ text("\u202AAnna Berg\u202C"), text("03:14") })), "Anna Berg");
    EXPECT_EQ(notificationCenterTitle(notificationCenter({ text("\u202A\u202C"), text("Anna"), text("3:14 Video") })),
        "Anna");
    EXPECT_EQ(notificationCenterTitle(notificationCenter({ text("Anna Berg"), text("Calling…") })), std::nullopt);
    EXPECT_EQ(notificationCenterTitle(notificationCenter({ text("Anna Berg"), text("03:14") }, "Mute")), std::nullopt);
}

TEST_F(AccessibilityCallDetectionTest, KnownCallSitesGiveServiceAndMeetingTitle)
{
    auto meet = browserCall(browserProcess("com.google.Chrome"),
        activityOf("com.google.Chrome", "Meet - Design review \U0001F50A \u2013 Work", "https://meet.google.com/abc"));
    ASSERT_TRUE(meet);
    EXPECT_EQ(meet->bundleIdentifier, "com.google.Chrome");
    EXPECT_EQ(meet->metadata, (CallMetadata { "Google Meet", "Google Chrome", "Design review", true }));

    auto whereby = browserCall(browserProcess("com.apple.Safari", "Safari"),
        activityOf("com.apple.Safari", "Work \u2013 /team-room Whereby", "https://whereby.com/team-room"));
    ASSERT_TRUE(whereby);
    EXPECT_EQ(whereby->metadata.serviceName, "Whereby");
    EXPECT_EQ(whereby->metadata.meetingTitle, "team-room");

    auto wherebyWithoutAddress = browserCall(
        browserProcess("com.apple.WebKit.GPU", std::nullopt), activityOf("com.apple.Safari", "/team-room Whereby"));
    ASSERT_TRUE(wherebyWithoutAddress);
    EXPECT_EQ(wherebyWithoutAddress->metadata.serviceName, "Whereby");
}

TEST_F(AccessibilityCallDetectionTest, OtherBrowserCallsHaveNoServiceAndOnlyBrowsersCount)
{
    auto other = browserCall(browserProcess("com.google.Chrome"),
        activityOf("com.google.Chrome", "Team call - Example", "https://calls.example.com/room"));
    ASSERT_TRUE(other);
    EXPECT_EQ(other->metadata, (CallMetadata { std::nullopt, "Google Chrome", std::nullopt, true }));

    auto meet = activityOf("com.google.Chrome", "Meet - Design review", "https://meet.google.com/abc");
    EXPECT_EQ(browserCall(browserProcess("com.google.Chrome"), meet, ExcludedApplications({ "com.google.Chrome" })),
        std::nullopt);
    EXPECT_EQ(browserCall(browserProcess("us.zoom.xos", "zoom.us"), meet), std::nullopt);
    EXPECT_EQ(browserCall(browserProcess(""), meet), std::nullopt);
}

class AccessibilityCallCandidatesTest : public ScriptedDesktopTest {
protected:
    static Json assertion(const std::string& processName, Json resources)
    {
        return { { "AssertLevel", 255 }, { "AssertType", "PreventUserIdleSystemSleep" }, { "AssertName", "Call audio" },
            { "Process Name", processName }, { "ResourcesUsed", std::move(resources) } };
    }

    static Json inCall(const std::string& processName)
    {
        return { assertion(processName, { "audio-in" }), assertion(processName, { "audio-out" }) };
    }

    const CallMetadata* runningCall(const std::string& key)
    {
        const auto& calls = RunningCallDetector::sharedInstance().runningCallsByBundleIdentifier();
        auto found = calls.find(key);
        return found == calls.end() ? nullptr : &found->second.metadata;
    }
};

TEST_F(AccessibilityCallCandidatesTest, FaceTimeFallsBackToTheNotificationCenter)
{
    Json scenario = desktopWithApplications({ applicationWithWindows(900, "com.apple.FaceTime", { window("FaceTime") }),
        notificationCenter({ text("Anna Berg"), text("03:14") }) });
    scenario["powerAssertions"] = { { "900", inCall("FaceTime") } };
    load(scenario);
    RunningCallDetector::sharedInstance().updateCallStatusForActivity(nullptr, true);
    ASSERT_TRUE(runningCall("com.apple.FaceTime"));
    EXPECT_EQ(runningCall("com.apple.FaceTime")->meetingTitle, "Anna Berg");

    ProcessWideState::resetAll();
    scenario["applications"][1] = notificationCenter({ text("Anna Berg"), text("Calling…") });
    load(scenario);
    RunningCallDetector::sharedInstance().updateCallStatusForActivity(nullptr, true);
    ASSERT_TRUE(runningCall("com.apple.FaceTime"));
    EXPECT_EQ(runningCall("com.apple.FaceTime")->meetingTitle, std::nullopt);
}

TEST_F(AccessibilityCallCandidatesTest, ABrowserCallReplacesTheBrowsersUnknownApplicationCandidate)
{
    Json chrome = application(800, "com.google.Chrome");
    chrome["localizedName"] = "Google Chrome";
    Json scenario = desktopWith(chrome);
    scenario["powerAssertions"] = { { "800", inCall("Google Chrome Helper") } };
    auto meet = activityOf("com.google.Chrome", "Meet - Design review", "https://meet.google.com/abc", 800);

    load(scenario);
    RunningCallDetector::sharedInstance().updateCallStatusForActivity(&meet, true);
    ASSERT_TRUE(runningCall("com.google.Chrome"));
    EXPECT_EQ(runningCall("com.google.Chrome")->serviceName, "Google Meet");
    EXPECT_EQ(RunningCallDetector::sharedInstance().runningCallsByBundleIdentifier().size(), 1u);

    ProcessWideState::resetAll();
    scenario["preferences"] = { { "RunningCallDetector_browserBasedCallDetectionEnabled", false } };
    load(scenario);
    RunningCallDetector::sharedInstance().updateCallStatusForActivity(&meet, true);
    ASSERT_TRUE(runningCall("com.google.Chrome"));
    EXPECT_EQ(runningCall("com.google.Chrome")->serviceName, std::nullopt);
}

} // namespace
} // namespace vardel
