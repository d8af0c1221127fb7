#include "calls/PowerManagementAssertions.h"

#include "support/ScriptedDesktopTest.h"

#include <gmock/gmock.h>

#include <random>

namespace vardel {
namespace {

using namespace vardel::testing;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* systemSleep = "PreventUserIdleSystemSleep";

// An active call-type assertion; `extra` adds or replaces keys.
Json record(Json resources, Json extra = Json::object())
{
    Json made = { { "AssertLevel", 255 }, { "AssertType", systemSleep }, { "ResourcesUsed", std::move(resources) } };
    for (auto& [key, value] : extra.items())
        made[key] = value;
    return made;
}

Json named(const std::string& name, Json extra = Json::object())
{
    extra["AssertName"] = name;
    return record(nullptr, std::move(extra));
}

Json date(const std::string& iso8601)
{
    return { { "date", iso8601 } };
}

class PowerManagementAssertionsTest : public ScriptedDesktopTest {
protected:
    PowerManagementAssertions snapshot(Json powerAssertions, Json scenario = Json::object())
    {
        scenario["powerAssertions"] = std::move(powerAssertions);
        load(scenario);
        return PowerManagementAssertions();
    }

    static std::vector<std::string> names(const PowerManagementAssertions& taken)
    {
        std::vector<std::string> found;
        for (const auto& assertion : taken.assertions)
            found.emplace_back(assertion.name.value_or("(none)"));
        return found;
    }

    static std::vector<ProcessIdentifier> meetingPids(const PowerManagementAssertions& taken)
    {
        std::vector<ProcessIdentifier> pids;
        for (const auto& application : taken.appsWithMeetingRelatedPMAssertions)
            pids.push_back(application.pid);
        return pids;
    }
};

TEST_F(PowerManagementAssertionsTest, OnlyActiveCallTypeAssertionsAreAccepted)
{
    auto taken = snapshot({ { "10",
        { named("active"), named("released", { { "AssertLevel", 0 } }),
            named("text level", { { "AssertLevel", "255" } }), named("no level", { { "AssertLevel", nullptr } }),
            named("other type", { { "AssertType", "NoIdleSleep" } }),
            named("true type",
                { { "AssertType", "NoIdleSleep" }, { "AssertionTrueType", "PreventUserIdleDisplaySleep" } }) } } });
    EXPECT_THAT(names(taken), ElementsAre("active", "true type"));
    EXPECT_EQ(taken.assertions[1].type, "NoIdleSleep");
}

TEST_F(PowerManagementAssertionsTest, AssertionsAsOldAsTheLimitAreDropped)
{
    Json atLimit = named("at limit", { { "AssertStartWhen", date("2026-01-05T05:00:00Z") } });
    Json justYounger = named("younger", { { "AssertStartWhen", date("2026-01-05T05:00:00.5Z") } });
    EXPECT_THAT(
        names(snapshot({ { "10", { atLimit, justYounger, named("undated") } } })), ElementsAre("younger", "undated"));

    ProcessWideState::resetAll();
    Json minuteOld = named("minute", { { "AssertStartWhen", date("2026-01-05T08:59:00Z") } });
    EXPECT_THAT(names(snapshot({ { "10", { minuteOld, justYounger } } },
                    { { "preferences", { { "RunningCallDetector_maximumPMAssertionAge", 60 } } } })),
        IsEmpty());
}

TEST_F(PowerManagementAssertionsTest, USBAudioAssertionsAreDroppedOnlyWhenAsked)
{
    Json assertions = { { "10", { named("USBAudio 2.0"), named("usbaudio") } } };
    EXPECT_THAT(names(snapshot(assertions)), ElementsAre("USBAudio 2.0", "usbaudio"));
    ProcessWideState::resetAll();
    EXPECT_THAT(names(snapshot(assertions,
                    { { "preferences", { { "PowerManagementAssertions_suppressUSBAudioDevices", true } } } })),
        ElementsAre("usbaudio"));
}

TEST_F(PowerManagementAssertionsTest, ResourcesSortProcessesByAudioDirection)
{
    auto taken = snapshot({ { "10", { record({ "audio-in", "audio-out" }) } },
        { "20", { record({ "BuiltInSpeakerDevice" }), record({ "BuiltInMicrophoneDevice" }) } },
        { "30", { record({ "audio-out" }) } }, { "40", { record({ "Audio-In", "audio-out " }) } },
        { "50", { record(Json::array()) } } });
    EXPECT_THAT(taken.pidsOfAppsWithBothAssertions, ElementsAre(10));
    EXPECT_THAT(taken.pidsOfAppsWithAudioOutAssertion, ElementsAre(20, 30));
    EXPECT_THAT(taken.pidsOfAppsWithAudioInAssertion, ElementsAre(20));
    ASSERT_THAT(meetingPids(taken), ElementsAre(10, 20));
    EXPECT_FALSE(taken.appsWithMeetingRelatedPMAssertions[0].audioInAndOutAssertionsHaveBeenRecordedSeparately);
    EXPECT_TRUE(taken.appsWithMeetingRelatedPMAssertions[1].audioInAndOutAssertionsHaveBeenRecordedSeparately);
    EXPECT_EQ(taken.assertions.size(), 6u);
}

TEST_F(PowerManagementAssertionsTest, CallNamesCountAsBothDirectionsAsConfigured)
{
    Json assertions = { { "10", { named("Call in progress") } }, { "20", { named("Zoom is on a call") } },
        { "30", { named("WebRTC has active PeerConnections") } } };
    EXPECT_THAT(meetingPids(snapshot(assertions)), ElementsAre(10, 20));

    ProcessWideState::resetAll();
    Json preferences = { { "PowerManagementAssertions_treatOnACallLikeAudioInAndOutAssertions", false },
        { "PowerManagementAssertions_treatWebRTCLikeAudioInAndOutAssertions", true } };
    EXPECT_THAT(meetingPids(snapshot(assertions, { { "preferences", preferences } })), ElementsAre(10, 30));

    // Read once per process: a later change needs a restart.
    desktop().productPreferences().setObject("PowerManagementAssertions_treatOnACallLikeAudioInAndOutAssertions", true);
    EXPECT_THAT(meetingPids(PowerManagementAssertions()), ElementsAre(10, 30));
}

TEST_F(PowerManagementAssertionsTest, AssertionsHeldOnBehalfOfAnotherProcessCountForIt)
{
    auto taken = snapshot({ { "10",
        { record({ "audio-in", "audio-out" }, { { "AssertionOnBehalfOfPID", 600 } }),
            record({ "audio-out" }, { { "AssertionOnBehalfOfPID", "700" } }),
            record({ "audio-out" }, { { "AssertionOnBehalfOfPID", 4294967296 } }) } } });
    EXPECT_THAT(taken.pidsOfAppsWithBothAssertions, ElementsAre(600));
    EXPECT_THAT(taken.pidsOfAppsWithAudioOutAssertion, ElementsAre(10));
}

TEST_F(PowerManagementAssertionsTest, ProcessesAreNamedAfterTheirApplication)
{
    Json chrome = application(501, "com.google.Chrome");
    chrome["localizedName"] = "\u200EGoogle Chrome Helper (Renderer)";
    Json unnamedHelper = { { "pid", 502 }, { "localizedName", "Zoom Helper" },
        { "executablePath", "/Applications/zoom.us.app/Contents/Frameworks/cpthost.app/Contents/MacOS/CptHost" } };
    Json zoomHelperBundle = { { "pid", 503 }, { "bundleIdentifier", "us.zoom.CptHost" }, { "localizedName", "CptHost" },
        { "running", false }, { "bundlePath", "/Applications/zoom.us.app/Contents/Frameworks/cpthost.app" } };
    Json slack = { { "pid", 504 }, { "bundleIdentifier", "com.tinyspeck.slackmacgap" }, { "localizedName", "Slack" },
        { "running", false }, { "bundlePath", "/Applications/Slack.app" } };
    Json scenario = { { "applications", { chrome, unnamedHelper, zoomHelperBundle, slack } },
        { "processes",
            { { { "pid", 600 }, { "path", "/Applications/Slack.app/Contents/MacOS/Slack Helper" } },
                { { "pid", 601 }, { "path", "/usr/libexec/coreaudiod" } } } } };
    Json both = record({ "audio-in", "audio-out" });
    auto taken = snapshot(
        { { "501", { both } }, { "502", { both } }, { "600", { both } }, { "601", { both } }, { "602", { both } } },
        scenario);

    ASSERT_THAT(meetingPids(taken), ElementsAre(501, 502, 600, 601, 602));
    const auto& apps = taken.appsWithMeetingRelatedPMAssertions;
    EXPECT_EQ(apps[0].applicationName, "Google Chrome");
    EXPECT_EQ(apps[0].bundleIdentifier, "com.google.Chrome");
    EXPECT_EQ(apps[1].bundleIdentifier, "us.zoom.CptHost");
    EXPECT_EQ(apps[1].applicationName, "Zoom");
    EXPECT_EQ(apps[2].bundleIdentifier, "com.tinyspeck.slackmacgap");
    EXPECT_EQ(apps[2].applicationName, "Slack");
    EXPECT_FALSE(apps[2].application);
    for (const auto& unknown : { apps[3], apps[4] }) {
        EXPECT_FALSE(unknown.bundleIdentifier);
        EXPECT_FALSE(unknown.applicationName);
    }
}

TEST_F(PowerManagementAssertionsTest, DescriptionsListWhatIsPresent)
{
    Json full = record({ "audio-out", "audio-in" },
        { { "Process Name", "zoom.us" }, { "AssertName", "Zoom" },
            { "AssertStartWhen", date("2026-01-05T08:30:00Z") } });
    auto taken
        = snapshot({ { "501", { full } }, { "7", { named("speaker", { { "ResourcesUsed", { "audio-out" } } }) } } },
            desktopWith(application(501, "us.zoom.xos")));
    EXPECT_EQ(taken.description(),
        "PowerManagementAssertions\n\tassertions:\n"
        "\t\tAssertion(pid: 501, processName: zoom.us, type: PreventUserIdleSystemSleep, name: Zoom, "
        "startedAt: 2026-01-05T08:30:00Z, resourcesUsed: [\"audio-in\", \"audio-out\"])\n"
        "\t\tAssertion(pid: 7, type: PreventUserIdleSystemSleep, name: speaker, resourcesUsed: [\"audio-out\"])\n"
        "\tpidsOfAppsWithAudioOutAssertion: [7]\n\tpidsOfAppsWithAudioInAssertion: []\n"
        "\tpidsOfAppsWithBothAssertions: [501]\n\tappsWithMeetingRelatedPMAssertions:\n"
        "\t\tPIDAndRunningApplication(pid: 501, applicationName: us.zoom.xos, bundleIdentifier: us.zoom.xos, "
        "application: RunningApplication(pid: 501, bundleIdentifier: us.zoom.xos, localizedName: us.zoom.xos), "
        "audioInAndOutSeparate: false)");
}

TEST_F(PowerManagementAssertionsTest, LoggerReceivesTheRawDataTheDerivationAndEveryProcessNamed)
{
    Json rejected = { { "AssertLevel", 0 }, { "AssertionOnBehalfOfPID", 900 } };
    load({ { "applications", { application(501, "us.zoom.xos") } },
        { "powerAssertions", { { "501", { record({ "audio-in", "audio-out" }) } }, { "20", { rejected } } } } });
    std::vector<std::string> lines;
    PowerManagementAssertions taken([&](const std::string& line) { lines.push_back(line); });

    ASSERT_EQ(lines.size(), 4u + 3 * 7);
    EXPECT_EQ(lines[0], "PowerManagementAssertions.pmAssertionsDictionary:");
    EXPECT_NE(lines[1].find("\"AssertionOnBehalfOfPID\": 900"), std::string::npos);
    EXPECT_EQ(lines[2], "\n" + taken.description());
    EXPECT_EQ(lines[3], "\nInfo for *all* processes found in the assertions dictionary:\n");
    EXPECT_THAT(std::vector(lines.begin() + 4, lines.begin() + 11),
        ElementsAre("PID: 20", "bundleIdentifier: (nil)", "localizedName: (nil)", "executableURL: (nil)",
            "alternativeBundleIdentifier: (nil)", "alternativeLocalizedName: (nil)", ""));
    EXPECT_EQ(lines[11], "PID: 501");
    EXPECT_EQ(lines[12], "bundleIdentifier: us.zoom.xos");
    EXPECT_EQ(lines[18], "PID: 900");
}

TEST_F(PowerManagementAssertionsTest, FailingCallGivesAnEmptySnapshotWithoutLogging)
{
    load({ { "powerAssertionsStatus", -536870199 }, { "powerAssertions", { { "10", { named("Call in progress") } } } },
        { "defaults", { { "PowerManagementAssertions_dumpRecordedAssertions", true } } } });
    std::vector<std::string> lines;
    ::testing::internal::CaptureStdout();
    PowerManagementAssertions taken([&](const std::string& line) { lines.push_back(line); });
    PowerManagementAssertions unlogged;
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_THAT(taken.assertions, IsEmpty());
    EXPECT_THAT(taken.appsWithMeetingRelatedPMAssertions, IsEmpty());
    EXPECT_THAT(lines, IsEmpty());
}

TEST_F(PowerManagementAssertionsTest, DumpPreferencePrintsTheDerivationWhenNoLoggerIsGiven)
{
    load({ { "powerAssertions", { { "10", { named("Call in progress") } } } },
        { "defaults", { { "PowerManagementAssertions_dumpRecordedAssertions", true } } } });
    ::testing::internal::CaptureStdout();
    PowerManagementAssertions taken;
    std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(printed.rfind("PowerManagementAssertions.pmAssertionsDictionary:\n", 0), 0u);
    EXPECT_NE(printed.find("\nPID: 10\n"), std::string::npos);
}

TEST_F(PowerManagementAssertionsTest, FieldsOfTheWrongTypeCountAsAbsent)
{
    auto taken = snapshot({ { "10",
        { record({ "audio-in", 3 },
            { { "Process Name", { "zoom" } }, { "AssertName", 5 }, { "AssertStartWhen", "2020-01-01T00:00:00Z" },
                { "AssertionOnBehalfOfPID", 1.5 } }) } } });
    ASSERT_EQ(taken.assertions.size(), 1u);
    EXPECT_EQ(taken.assertions[0].description(), "Assertion(pid: 10, type: PreventUserIdleSystemSleep)");
}

TEST_F(PowerManagementAssertionsTest, TimelineReplacesTheAssertions)
{
    load({ { "powerAssertions", { { "10", { named("Call in progress") } } } },
        { "timeline", { { { "at", 5 }, { "powerAssertions", Json::object() } } } } });
    EXPECT_THAT(meetingPids(PowerManagementAssertions()), ElementsAre(10));
    desktop().runUntil(5);
    EXPECT_THAT(PowerManagementAssertions().assertions, IsEmpty());
}

Json randomFieldValue(std::mt19937& random)
{
    const Json choices[] = { nullptr, 255, 255.0, 0, -1, 4294967296.0, 1e300, true, "255", systemSleep,
        "PreventUserIdleDisplaySleep", "Call in progress", "USBAudio", Json::array(), Json({ "audio-in", "audio-out" }),
        Json({ "audio-in", 7 }), date("1970-01-01T00:00:00Z"), date("2026-01-05T09:00:00Z"), Json({ { "x", 1 } }) };
    return choices[random() % std::size(choices)];
}

TEST_F(PowerManagementAssertionsTest, RandomRecordsNeverBreakTheSnapshot)
{
    const char* const keys[] = { "AssertLevel", "AssertType", "AssertionTrueType", "AssertName",
        "AssertionOnBehalfOfPID", "Process Name", "AssertStartWhen", "ResourcesUsed" };
    std::mt19937 random(20260105);
    for (int round = 0; round < 200; ++round) {
        Json assertions = Json::object();
        for (unsigned owners = random() % 4; owners > 0; --owners) {
            Json records = Json::array();
            for (unsigned count = random() % 4; count > 0; --count) {
                Json made = Json::object();
                for (const char* key : keys) {
                    if (random() % 3 != 0)
                        made[key] = randomFieldValue(random);
                }
                records.push_back(made);
            }
            assertions[std::to_string(1 + random() % 5)] = records;
        }
        SCOPED_TRACE(assertions.dump());
        load({ { "applications", { application(1, "one") } }, { "powerAssertions", assertions } });
        size_t lineCount = 0;
        PowerManagementAssertions taken([&](const std::string&) { ++lineCount; });
        EXPECT_GE(lineCount, 4u);
        EXPECT_FALSE(taken.description().empty());
    }
}

} // namespace
} // namespace vardel
