#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

using namespace vardel::testing;
using Json = nlohmann::ordered_json;

TEST(MoreCallScenariosTest, AHuddleIsSavedWithItsTitleAndOpenedForCorrection)
{
    TrackerRun run = runTracker(scenarios / "slack-huddle-saved.json");
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;
    EXPECT_EQ(run.events("sample")[10]["calls"]["descriptionOfRunningCalls"], "Slack call: design-team (10s)");
    EXPECT_TRUE(run.events("notification").empty());

    auto entries = run.events("timeEntry");
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0]["title"], "Slack call: design-team");
    EXPECT_EQ(entries[0]["start"], "2026-03-02T15:00:00Z");
    EXPECT_EQ(entries[0]["end"], "2026-03-02T15:01:59Z");
    EXPECT_EQ(entries[0]["project"], nullptr);
    auto editors = run.events("editor");
    ASSERT_EQ(editors.size(), 1u);
    EXPECT_EQ(editors[0]["heading"], "Edit Time Entry");
    EXPECT_EQ(entries[1]["project"], "Design");
}

TEST(MoreCallScenariosTest, AMeetingInABrowserIsNamedByItsSiteAndTitle)
{
    TrackerRun run = runTracker(scenarios / "browser-meeting.json");
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;
    EXPECT_EQ(run.events("sample")[10]["calls"]["descriptionOfRunningCalls"], "Google Meet call: Design review (10s)");
    auto notifications = run.events("notification");
    ASSERT_EQ(notifications.size(), 1u);
    EXPECT_EQ(notifications[0]["title"], "Google Meet call has ended (1m 59s): Design review");
    EXPECT_EQ(notifications[0]["userInfo"]["bundleIdentifier"], "com.google.Chrome");
}

TEST(MoreCallScenariosTest, ACallWhileATaskTimerRunsEndsWithoutAnOffer)
{
    TrackerRun run = runTracker(scenarios / "call-during-task.json");
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;
    EXPECT_TRUE(run.events("notification").empty());
    EXPECT_TRUE(run.events("editor").empty());
    EXPECT_TRUE(run.events("timeEntry").empty());
    bool endSeen = false;
    for (const auto& event : run.events("analytics"))
        endSeen = endSeen || event["name"] == "RunningCallDetector.callEndDetected";
    EXPECT_TRUE(endSeen);
}

} // namespace
} // namespace vardel
