#include "calls/PowerManagementDumper.h"

#include "calls/RunningCallDetector.h"
#include "support/ScriptedDesktopTest.h"

#include <gmock/gmock.h>

namespace vardel {
namespace {

using namespace vardel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

Json held(const std::string& processName, Json resources)
{
    return { { "AssertLevel", 255 }, { "AssertType", "PreventUserIdleDisplaySleep" }, { "AssertName", "audio" },
        { "Process Name", processName }, { "ResourcesUsed", std::move(resources) } };
}

class PowerManagementDumperTest : public ScriptedDesktopTest {
protected:
    // The printed lines, the operating-system version masked since it is the build machine's.
    std::vector<std::string> dumpedLines()
    {
        ::testing::internal::CaptureStdout();
        PowerManagementDumper::dumpPowerManagementAssertions();
        std::string printed = ::testing::internal::GetCapturedStdout();
        std::string traced;
        std::vector<std::string> lines;
        for (const auto& event : events("stdout")) {
            std::string text = event["text"];
            traced += text;
            EXPECT_TRUE(text.ends_with('\n')) << text;
            lines.push_back(text.substr(0, text.size() - 1));
        }
        EXPECT_EQ(traced, printed);
        if (lines.size() > 1 && lines[1].starts_with("macOS Version: ") && lines[1].size() > 15)
            lines[1] = "macOS Version: X";
        return lines;
    }
};

TEST_F(PowerManagementDumperTest, PrintsHeaderRawDataDerivationAndCandidates)
{
    Json zoom = application(501, "us.zoom.xos");
    zoom["localizedName"] = "zoom.us";
    Json scenario = desktopWith(zoom);
    scenario["powerAssertions"] = { { "501", { held("zoom.us", { "audio-in" }), held("zoom.us", { "audio-out" }) } },
        { "77", { held("TeamViewer_Service", Json::array()) } } };
    load(scenario);

    EXPECT_THAT(dumpedLines(),
        ElementsAre("Dump created at: 2026-01-05T09:00:00Z", "macOS Version: X",
            "PowerManagementAssertions.pmAssertionsDictionary:", StartsWith("{"),
            "\nPowerManagementAssertions\n\tassertions:\n"
            "\t\tAssertion(pid: 501, processName: zoom.us, type: PreventUserIdleDisplaySleep, name: audio, "
            "resourcesUsed: [\"audio-in\"])\n"
            "\t\tAssertion(pid: 501, processName: zoom.us, type: PreventUserIdleDisplaySleep, name: audio, "
            "resourcesUsed: [\"audio-out\"])\n"
            "\t\tAssertion(pid: 77, processName: TeamViewer_Service, type: PreventUserIdleDisplaySleep, "
            "name: audio, resourcesUsed: [])\n"
            "\tpidsOfAppsWithAudioOutAssertion: [501]\n\tpidsOfAppsWithAudioInAssertion: [501]\n"
            "\tpidsOfAppsWithBothAssertions: []\n\tappsWithMeetingRelatedPMAssertions:\n"
            "\t\tPIDAndRunningApplication(pid: 501, applicationName: zoom.us, bundleIdentifier: us.zoom.xos, "
            "application: RunningApplication(pid: 501, bundleIdentifier: us.zoom.xos, localizedName: zoom.us), "
            "audioInAndOutSeparate: true)",
            "\nInfo for *all* processes found in the assertions dictionary:\n", "PID: 77", StartsWith("bundle"),
            StartsWith("localizedName"), StartsWith("executableURL"), StartsWith("alternativeBundle"),
            StartsWith("alternativeLocalized"), "", "PID: 501", "bundleIdentifier: us.zoom.xos",
            "localizedName: zoom.us", StartsWith("executableURL"), StartsWith("alternativeBundle"),
            StartsWith("alternativeLocalized"), "", "\nCall information derived from that:",
            "[ApplicationAndMetadata(bundleIdentifier: \"us.zoom.xos\", metadata: CallMetadata(serviceName: "
            "\"Zoom\", appName: \"zoom.us\", meetingTitle: nil, audioInAndOutAssertionsHaveBeenRecordedSeparately: "
            "true)), ApplicationAndMetadata(bundleIdentifier: \"TeamViewer\", metadata: CallMetadata(serviceName: "
            "\"TeamViewer\", appName: \"TeamViewer\", meetingTitle: nil, "
            "audioInAndOutAssertionsHaveBeenRecordedSeparately: true))]"));
}

TEST_F(PowerManagementDumperTest, WithoutAssertionsTheDumpStillHasItsHeadingsAndEmptyLists)
{
    load(Json::object());
    auto lines = dumpedLines();
    ASSERT_EQ(lines.size(), 8u);
    EXPECT_EQ(lines[3], "{}");
    EXPECT_EQ(lines[4],
        "\nPowerManagementAssertions\n\tassertions:\n\n\tpidsOfAppsWithAudioOutAssertion: []\n"
        "\tpidsOfAppsWithAudioInAssertion: []\n\tpidsOfAppsWithBothAssertions: []\n"
        "\tappsWithMeetingRelatedPMAssertions:\n");
    EXPECT_THAT(std::vector(lines.begin() + 5, lines.end()),
        ElementsAre("\nInfo for *all* processes found in the assertions dictionary:\n",
            "\nCall information derived from that:", "[]"));
}

TEST_F(PowerManagementDumperTest, AFailingSystemCallLeavesOnlyTheHeadersAndAnEmptyList)
{
    load({ { "powerAssertionsStatus", -536870199 },
        { "powerAssertions", { { "10", { held("FaceTime", { "audio-in", "audio-out" }) } } } } });
    EXPECT_THAT(dumpedLines(),
        ElementsAre("Dump created at: 2026-01-05T09:00:00Z", "macOS Version: X",
            "\nCall information derived from that:", "[]"));
}

TEST_F(PowerManagementDumperTest, CandidatesFollowTheDetectorsRulesAndChangeNoState)
{
    Json zoom = application(501, "us.zoom.xos");
    Json talk = application(502, "com.example.Talk");
    talk["localizedName"] = "Say \"hi\" \\ Talk";
    Json scenario = desktopWith(zoom);
    scenario["applications"].push_back(talk);
    scenario["applications"].push_back(application(503, "com.google.Chrome"));
    scenario["preferences"] = { { "RunningCallDetector_appsWithCallTrackingDisabled", { "us.zoom.xos" } } };
    Json both = held("caller", { "audio-in", "audio-out" });
    // The browser is listed once, by the application rule: the dump leaves browser calls out.
    // Pid 9 belongs to no application and no bundle, so it has no bundle identifier.
    scenario["powerAssertions"] = { { "501", { both } }, { "502", { both } }, { "503", { both } }, { "9", { both } },
        { "10", { held("FaceTime", {}) } } };
    load(scenario);

    auto lines = dumpedLines();
    EXPECT_EQ(lines.back(),
        "[ApplicationAndMetadata(bundleIdentifier: \"com.example.Talk\", metadata: CallMetadata(serviceName: nil, "
        "appName: \"Say \\\"hi\\\" \\\\ Talk\", meetingTitle: nil, audioInAndOutAssertionsHaveBeenRecordedSeparately: "
        "false)), ApplicationAndMetadata(bundleIdentifier: \"com.google.Chrome\", metadata: CallMetadata("
        "serviceName: nil, appName: \"com.google.Chrome\", meetingTitle: nil, "
        "audioInAndOutAssertionsHaveBeenRecordedSeparately: false)), "
        "ApplicationAndMetadata(bundleIdentifier: \"com.apple.FaceTime\", metadata: CallMetadata("
        "serviceName: \"FaceTime\", appName: \"FaceTime\", meetingTitle: nil, "
        "audioInAndOutAssertionsHaveBeenRecordedSeparately: true))]");
    EXPECT_THAT(RunningCallDetector::sharedInstance().runningCallsByBundleIdentifier(), IsEmpty());
    EXPECT_THAT(events("analytics"), IsEmpty());
}

} // namespace
} // namespace vardel
