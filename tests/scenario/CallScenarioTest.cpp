#include "product/Database.h"
#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

using namespace vardel::testing;
using Json = nlohmann::ordered_json;

TEST(CallScenarioTest, AnEndedCallIsOfferedAndTheAcceptedEntryIsStored)
{
    auto dataFolder = std::filesystem::temp_directory_path() / ("vardel-call-" + std::to_string(::getpid()));
    std::filesystem::remove_all(dataFolder);
    TrackerRun run = runTracker(scenarios / "zoom-call.json", "", dataFolder);
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;

    auto samples = run.events("sample");
    ASSERT_GT(samples.size(), 600u);
    EXPECT_EQ(samples[600]["calls"],
        Json({ { "hasRunningCall", true }, { "descriptionOfRunningCalls", "Zoom call (10m)" } }));

    auto notifications = run.events("notification");
    ASSERT_EQ(notifications.size(), 1u);
    EXPECT_EQ(notifications[0]["title"], "Zoom call has ended (44m 59s)");
    EXPECT_EQ(notifications[0]["body"], "Click here to record time for this call.");
    EXPECT_EQ(notifications[0]["category"], "info.quenby.Vardel2.callEnded");
    EXPECT_EQ(notifications[0]["sound"], true);
    EXPECT_EQ(notifications[0]["userInfo"]["bundleIdentifier"], "us.zoom.xos");

    auto editors = run.events("editor");
    ASSERT_EQ(editors.size(), 1u);
    EXPECT_EQ(editors[0]["heading"], "Record Meeting Details");
    EXPECT_EQ(editors[0]["title"], "Zoom call");
    EXPECT_EQ(editors[0]["start"], "2026-01-05T10:00:00Z");
    EXPECT_EQ(editors[0]["end"], "2026-01-05T10:44:59Z");

    auto entries = run.events("timeEntry");
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0]["project"], "Acme");

    // The entry outlives the process.
    auto database = Database::open(dataFolder);
    ASSERT_TRUE(database.ok());
    auto stored = database.value()->entriesInRange(Date { 0 }, Date { 4e9 });
    ASSERT_TRUE(stored.ok());
    ASSERT_EQ(stored.value().size(), 1u);
    EXPECT_EQ(stored.value()[0].descriptor.title, "Zoom call");
    EXPECT_EQ(stored.value()[0].descriptor.project, "Acme");

    std::string analytics = readFile(dataFolder / "analytics.jsonl");
    EXPECT_NE(analytics.find("RunningCallDetector.callEndDetected"), std::string::npos);
    EXPECT_NE(analytics.find("RunningCallDetector.createTask.saved"), std::string::npos);
    std::filesystem::remove_all(dataFolder);
}

} // namespace
} // namespace vardel
