#include "product/AnalyticsWrapper.h"

#include "support/ScriptedDesktopTest.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace vardel {
namespace {

using testing::Json;

class AnalyticsWrapperTest : public testing::ScriptedDesktopTest {
protected:
    void SetUp() override
    {
        ScriptedDesktopTest::SetUp();
        load(Json::object());
    }

    std::vector<Json> fileLines() const
    {
        std::ifstream stream(folder_.path() / AnalyticsWrapper::fileName);
        std::vector<Json> lines;
        for (std::string line; std::getline(stream, line);)
            lines.push_back(Json::parse(line));
        return lines;
    }

    testing::TemporaryFolder folder_;
};

TEST_F(AnalyticsWrapperTest, EventsReachTheSinkAndAreAppendedAsJsonLines)
{
    AnalyticsWrapper::sharedInstance().configure(folder_.path());
    AnalyticsWrapper::logEvent("RunningCallDetector.callEndDetected",
        { { "bundleIdentifier", "us.zoom.xos" }, { "duration", 1000 }, { "seen", Date { 1767603600 } } },
        AnalyticsFrequency::medium, { AnalyticsFlag::sensitive });
    AnalyticsWrapper::logEvent("Setapp.Interaction.menuWillOpen");

    auto lines = fileLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]["date"], "2026-01-05T09:00:00Z");
    EXPECT_EQ(lines[0]["name"], "RunningCallDetector.callEndDetected");
    EXPECT_EQ(lines[0]["attributes"],
        (Json { { "bundleIdentifier", "us.zoom.xos" }, { "duration", 1000 },
            { "seen", { { "date", "2026-01-05T09:00:00Z" } } } }));
    EXPECT_EQ(lines[0]["frequency"], "medium");
    EXPECT_EQ(lines[0]["flags"], Json::array({ "sensitive" }));
    EXPECT_TRUE(lines[0]["critical"].is_null());
    EXPECT_TRUE(lines[1]["frequency"].is_null());
    EXPECT_EQ(lines[1]["attributes"], Json::object());

    auto traced = events("analytics");
    ASSERT_EQ(traced.size(), 2u);
    EXPECT_EQ(traced[0]["frequency"], "medium");
    EXPECT_EQ(traced[1]["name"], "Setapp.Interaction.menuWillOpen");
}

TEST_F(AnalyticsWrapperTest, UnwritableFileIsLoggedOnceAndEventsStillReachTheSink)
{
    // A folder where the file should be cannot be appended to, even by a process that may write anywhere.
    std::filesystem::create_directory(folder_.path() / AnalyticsWrapper::fileName);
    AnalyticsWrapper::sharedInstance().configure(folder_.path());
    for (int event = 0; event < 3; ++event)
        AnalyticsWrapper::logEvent("VDHelperAppDelegate.relaunchForUpdate");

    EXPECT_EQ(events("analytics").size(), 3u);
    auto logged = events("log");
    ASSERT_EQ(logged.size(), 1u);
    EXPECT_EQ(logged[0]["level"], "warning");
}

TEST_F(AnalyticsWrapperTest, InvalidUtf8InAnAttributeIsReplacedNotFatal)
{
    AnalyticsWrapper::sharedInstance().configure(folder_.path());
    AnalyticsWrapper::logEvent("X.y", { { "windowTitle", "caf\xC3" } });

    auto lines = fileLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0]["attributes"]["windowTitle"], "caf\uFFFD");
}

} // namespace
} // namespace vardel
