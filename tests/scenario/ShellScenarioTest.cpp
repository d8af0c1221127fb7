#include "product/Database.h"
#include "support/TemporaryFolder.h"
#include "support/TrackerProcess.h"

#include <gtest/gtest.h>

namespace vardel::testing {
namespace {

// A working hour: tracking is paused until tomorrow at 10 minutes, resumed by hand at 20, and the
// user quits, confirming it, at 30. Only the two tracked stretches reach the store.
TEST(ShellScenarioTest, APauseUntilTomorrowAResumeAndAConfirmedQuit)
{
    TemporaryFolder data;
    TrackerRun run
        = runTracker(std::filesystem::path(VARDEL_SCENARIOS_DIR) / "pause-resume-quit.json", "", data.path());
    EXPECT_EQ(run.exitStatus, 0) << run.standardError;

    auto menus = run.events("menu");
    ASSERT_EQ(menus.size(), 4u);
    auto entry = [&](size_t menu, const std::string& action) {
        for (const auto& item : menus[menu]["items"]) {
            if (item["action"] == action)
                return item;
        }
        return nlohmann::ordered_json();
    };
    EXPECT_EQ(entry(1, "toggleTracking:")["title"], "Resume App Tracking");
    EXPECT_EQ(entry(1, "pauseTrackingForContainer:")["title"], "Paused for the next 15h 45m");
    EXPECT_EQ(entry(3, "toggleTracking:")["title"], "Pause until Tomorrow");

    auto alerts = run.events("alert");
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(alerts[0]["answer"], 2);
    auto exits = run.events("exit");
    ASSERT_EQ(exits.size(), 1u);
    EXPECT_EQ(exits[0]["t"], 1800);
    EXPECT_EQ(exits[0]["reason"], "quit");

    auto database = Database::open(data.path());
    ASSERT_TRUE(database.ok());
    auto day = Date { 1772409600 };
    auto total = database.value()->totalActivitySecondsBetween(day, Date { day.secondsSince1970 + 86400 });
    ASSERT_TRUE(total.ok());
    EXPECT_NEAR(total.value(), 1200, 2);
}

} // namespace
} // namespace vardel::testing
