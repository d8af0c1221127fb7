#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

namespace vardel {
namespace {

using namespace vardel::testing;
using Json = nlohmann::ordered_json;

TEST(TrackerScenarioTest, AMalformedScenarioStopsWithItsPathAndNoTrace)
{
    TrackerRun run = runTracker(scenarios / "malformed-pid.json");
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.standardError,
        (scenarios / "malformed-pid.json").string() + ": $.applications[2].pid: expected an integer\n");
    EXPECT_TRUE(run.trace.empty());

    run = runTracker(scenarios / "does-not-exist.json");
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_NE(run.standardError.find("does-not-exist.json"), std::string::npos);
}

TEST(TrackerScenarioTest, EverySecondTheFrontmostApplicationIsRecorded)
{
    TrackerRun run = runTracker(scenarios / "switching-applications.json");
    ASSERT_EQ(run.exitStatus, 0) << run.standardError;
    auto samples = run.events("sample");
    ASSERT_EQ(samples.size(), 6u);

    for (int second = 0; second < 5; ++second) {
        EXPECT_EQ(samples[second]["t"], second);
        EXPECT_EQ(samples[second]["paused"], false);
        EXPECT_EQ(
            samples[second]["calls"], Json({ { "hasRunningCall", false }, { "descriptionOfRunningCalls", nullptr } }));
    }

    const Json& writer = samples[0]["activity"];
    EXPECT_EQ(writer["bundleIdentifier"], "com.example.Writer");
    EXPECT_EQ(writer["pid"], 501);
    EXPECT_EQ(writer["localizedName"], "Writer");
    EXPECT_EQ(writer["executablePath"], "/Applications/Writer.app/Contents/MacOS/Writer");
    EXPECT_EQ(writer["accessibilityWindows"], Json({ "draft" }));
    EXPECT_EQ(writer["details"]["windowTitle"], "Draft.md");
    EXPECT_EQ(writer["details"]["documentPath"], "/Users/me/Draft.md");
    EXPECT_EQ(writer["details"]["isPrivate"], false);
    EXPECT_EQ(writer["saveSheet"], false);
    EXPECT_EQ(samples[1]["activity"], writer);

    const Json& browser = samples[2]["activity"]["details"];
    EXPECT_EQ(browser["windowTitle"], "Shift");
    EXPECT_EQ(browser["documentTitle"], "Team board");
    EXPECT_EQ(browser["documentPath"], "https://board.example/team");
    EXPECT_EQ(samples[3]["activity"]["details"]["documentPath"], "https://board.example/me");

    EXPECT_EQ(samples[4]["activity"], nullptr);

    // The application that never answers costs three time-outs of two seconds before its record is
    // written, titled from the window list.
    EXPECT_EQ(samples[5]["t"], 11);
    EXPECT_EQ(samples[5]["activity"]["details"]["windowTitle"], "Frozen report");
    EXPECT_EQ(samples[5]["activity"]["accessibilityWindows"], Json::array());

    auto timeouts = run.events("ax.timeout");
    ASSERT_EQ(timeouts.size(), 1u);
    EXPECT_EQ(timeouts[0]["seconds"], 2);

    auto exits = run.events("exit");
    ASSERT_EQ(exits.size(), 1u);
    EXPECT_EQ(exits[0]["status"], 0);
    EXPECT_EQ(run.trace.back()["event"], "exit");
}

} // namespace
} // namespace vardel
