#include "calls/RunningCallDetector.h"

#include "support/ScriptedDesktopTest.h"

namespace vardel {
namespace {

using namespace vardel::testing;

Json assertion(Json resources, std::string name = "Call audio")
{
    return { { "AssertLevel", 255 }, { "AssertType", "PreventUserIdleSystemSleep" }, { "AssertName", std::move(name) },
        { "Process Name", "caller" }, { "ResourcesUsed", std::move(resources) } };
}

// Records what the product was asked to do with finished calls.
class RecordingReaction final : public CallEndReaction {
public:
    bool canOffer = true;
    bool permissionGranted = true;
    std::vector<std::string> requests;

    bool canOfferTimeEntries() override { return canOffer; }
    std::optional<TaskActivity> saveTimeEntry(const CallProperties& call, const std::string& key) override
    {
        requests.push_back("save " + key + " " + std::to_string(static_cast<int>(call.duration())));
        return TaskActivity { 7, {}, {} };
    }
    void editTimeEntry(const TaskActivity& entry) override
    {
        requests.push_back("edit " + std::to_string(entry.identifier));
    }
    void presentCallEditor(const CallProperties&, const std::string& key) override
    {
        requests.push_back("editor " + key);
    }
    void requestNotificationPermission(std::function<void(bool)> answer) override { answer(permissionGranted); }
    void presentCallEndedNotification(const CallProperties&, const std::string& key) override
    {
        requests.push_back("notification " + key);
    }
};

class RunningCallDetectorTest : public ScriptedDesktopTest {
protected:
    // Zoom holds the microphone and the speaker from 0 to `until` seconds.
    void loadCall(double until, Json preferences = Json::object(), Json zoomAssertion = nullptr,
        std::string bundleIdentifier = "us.zoom.xos")
    {
        Json zoom = application(501, bundleIdentifier);
        zoom["localizedName"] = "zoom.us";
        Json scenario = desktopWith(zoom);
        scenario["preferences"] = std::move(preferences);
        Json held = zoomAssertion.is_null() ? assertion({ "audio-in" }) : zoomAssertion;
        scenario["powerAssertions"] = { { "501", { held, assertion({ "audio-out" }) } } };
        scenario["timeline"] = { { { "at", until }, { "powerAssertions", Json::object() } } };
        scenario["end"] = 10000;
        load(scenario);
        detector().setCallEndReaction(&reaction);
    }

    RunningCallDetector& detector() { return RunningCallDetector::sharedInstance(); }

    // One sample every second from `from` to `to` inclusive.
    void sampleEverySecond(double from, double to, bool tracking = true)
    {
        for (double second = from; second <= to; ++second) {
            desktop().runUntil(second);
            detector().updateCallStatusForActivity(nullptr, tracking);
        }
    }

    std::vector<Json> analytics(const std::string& name)
    {
        std::vector<Json> matching;
        for (const auto& event : events("analytics")) {
            if (event["name"] == name)
                matching.push_back(event);
        }
        return matching;
    }

    RecordingReaction reaction;
};

TEST_F(RunningCallDetectorTest, ACallIsFollowedAndEndsAfterTheThreshold)
{
    loadCall(2700);
    sampleEverySecond(0, 2699);
    ASSERT_EQ(detector().runningCallsByBundleIdentifier().size(), 1u);
    EXPECT_TRUE(detector().hasRunningCall());
    EXPECT_EQ(detector().descriptionOfRunningCalls(), "Zoom call (44m 59s)");
    EXPECT_EQ(analytics("RunningCallDetector.callStartDetected").size(), 1u);
    EXPECT_EQ(analytics("RunningCallDetector.meetingPMAssertionDetected").size(), 1u);

    // Last seen at 2699: still running 2.2 seconds later, over at 2.3.
    desktop().runUntil(2701.2);
    detector().updateCallStatusForActivity(nullptr, true);
    EXPECT_TRUE(detector().hasRunningCall());
    desktop().runUntil(2701.3);
    detector().updateCallStatusForActivity(nullptr, true);
    EXPECT_FALSE(detector().hasRunningCall());
    EXPECT_EQ(detector().descriptionOfRunningCalls(), std::nullopt);

    auto ends = analytics("RunningCallDetector.callEndDetected");
    ASSERT_EQ(ends.size(), 1u);
    EXPECT_EQ(ends[0]["attributes"]["serviceName"], "Zoom");
    EXPECT_EQ(ends[0]["attributes"]["duration"], 2000);
    EXPECT_EQ(ends[0]["attributes"]["bundleIdentifier_serviceNamePresent"], "us.zoom.xos");
    EXPECT_EQ(ends[0]["flags"], Json({ "sensitive" }));
    EXPECT_EQ(reaction.requests, std::vector<std::string> { "notification us.zoom.xos" });
}

TEST_F(RunningCallDetectorTest, OnlyCallsOfTheMinimumLengthAreOffered)
{
    loadCall(60);
    sampleEverySecond(0, 63);
    EXPECT_TRUE(reaction.requests.empty()) << "59 seconds is too short";

    ProcessWideState::resetAll();
    loadCall(61);
    sampleEverySecond(0, 64);
    EXPECT_EQ(reaction.requests, std::vector<std::string> { "notification us.zoom.xos" });

    ProcessWideState::resetAll();
    loadCall(61);
    reaction.requests.clear();
    reaction.canOffer = false;
    sampleEverySecond(0, 64);
    EXPECT_TRUE(reaction.requests.empty()) << "a running task timer or no database";
}

TEST_F(RunningCallDetectorTest, TheNotificationModeAndImmediateSaveChooseTheReaction)
{
    loadCall(120, { { "callNotificationMode", 1 } });
    sampleEverySecond(0, 124);
    EXPECT_EQ(reaction.requests, std::vector<std::string> { "editor us.zoom.xos" });

    ProcessWideState::resetAll();
    reaction.requests.clear();
    loadCall(
        120, { { "callNotificationMode", 0 }, { "RunningCallDetector_immediatelySaveTimeEntriesForCalls", true } });
    sampleEverySecond(0, 124);
    EXPECT_EQ(reaction.requests, (std::vector<std::string> { "save us.zoom.xos 119", "edit 7" }));
    EXPECT_EQ(events("defaults").back()["key"], "RunningCallDetector_lastDetectedCallDate");

    ProcessWideState::resetAll();
    reaction.requests.clear();
    reaction.permissionGranted = false;
    loadCall(120);
    sampleEverySecond(0, 124);
    EXPECT_EQ(reaction.requests, std::vector<std::string> { "editor us.zoom.xos" });

    ProcessWideState::resetAll();
    reaction.requests.clear();
    loadCall(120, { { "callNotificationMode", 2 } });
    sampleEverySecond(0, 124);
    EXPECT_TRUE(reaction.requests.empty());
}

TEST_F(RunningCallDetectorTest, UnknownApplicationsQualifyOnlyWithSeparateAssertionsByDefault)
{
    Json combined = assertion({ "audio-in", "audio-out" });
    loadCall(100, Json::object(), combined, "com.example.Talk");
    sampleEverySecond(0, 5);
    EXPECT_EQ(detector().runningCallsByBundleIdentifier().size(), 1u);
    EXPECT_FALSE(detector().hasRunningCall());
    EXPECT_EQ(analytics("RunningCallDetector.callStartDetected.forUnknownApplication").size(), 1u);

    ProcessWideState::resetAll();
    loadCall(100, { { "RunningCallDetector_callDetectionRequiresSeparateAudioAssertionsIfServiceNameUnknown", false } },
        combined, "com.example.Talk");
    sampleEverySecond(0, 5);
    EXPECT_EQ(detector().descriptionOfRunningCalls(), "zoom.us call (5s)");
}

TEST_F(RunningCallDetectorTest, PreferencesExcludeRenameAndSwitchOff)
{
    loadCall(100, { { "RunningCallDetector_appsWithCallTrackingDisabled", { "us.zoom.xos" } } });
    sampleEverySecond(0, 3);
    EXPECT_TRUE(detector().runningCallsByBundleIdentifier().empty());
    // Followed live: enabling it again takes effect on the next sample.
    platform().productPreferences().setObject(
        "RunningCallDetector_appsWithCallTrackingEnabled", Value(Value::List { Value("us.zoom.xos") }));
    sampleEverySecond(4, 4);
    EXPECT_EQ(detector().runningCallsByBundleIdentifier().size(), 1u);

    ProcessWideState::resetAll();
    loadCall(100,
        { { "RunningCallDetector_extraAppsForCallTracking", { "us.zoom.xos:Zoom Workplace", "broken", "a:b:c" } } });
    sampleEverySecond(0, 2);
    EXPECT_EQ(detector().descriptionOfRunningCalls(), "Zoom Workplace call (2s)");

    ProcessWideState::resetAll();
    loadCall(100, { { "RunningCallDetector_pmAssertionBasedCallDetectionEnabled", false } });
    sampleEverySecond(0, 2);
    EXPECT_TRUE(detector().runningCallsByBundleIdentifier().empty());

    ProcessWideState::resetAll();
    loadCall(100);
    sampleEverySecond(0, 2, false);
    EXPECT_TRUE(detector().runningCallsByBundleIdentifier().empty()) << "paused";

    ProcessWideState::resetAll();
    loadCall(100, Json::object(), nullptr, "com.microsoft.teams2");
    sampleEverySecond(0, 1);
    EXPECT_EQ(detector().descriptionOfRunningCalls(), "Teams call (1s)");
}

TEST_F(RunningCallDetectorTest, CallsTravelAsJson)
{
    CallProperties call { Date { 978307200 + 10.5 }, Date { 978307200 + 70 },
        CallMetadata { "Zoom", "zoom.us", std::nullopt, true } };
    auto encoded = CallPropertiesJson::encode(call);
    EXPECT_EQ(encoded.dump(),
        R"({"lastSeen":70.0,"metadata":{"appName":"zoom.us","audioInAndOutAssertionsHaveBeenRecordedSeparately":true,"serviceName":"Zoom"},"startedAt":10.5})");
    EXPECT_EQ(CallPropertiesJson::decodeText(encoded.dump()), call);
    EXPECT_EQ(CallPropertiesJson::decodeText("{\"startedAt\": 1}"), std::nullopt);
    EXPECT_EQ(CallPropertiesJson::decodeText("not json"), std::nullopt);

    call.metadata.meetingTitle = "Weekly planning";
    EXPECT_EQ(RunningCallDetector::callTitle(call.metadata), "Zoom call: Weekly planning");
}

} // namespace
} // namespace vardel
