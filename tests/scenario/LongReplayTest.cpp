// A long replay through the real store: the tracker ends cleanly, without a leak where the build
// checks for them, and every second it recorded is stored. The test command replays two hours;
// scripts/long-run replays as many days as asked (VARDEL_LONG_RUN_HOURS).

#include "product/Database.h"
#include "support/TemporaryFolder.h"
#include "support/TrackerProcess.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sys/wait.h>

namespace vardel {
namespace {

namespace fs = std::filesystem;
using namespace vardel::testing;

constexpr double replayStart = 1772440200; // 2026-03-02T08:30:00Z

int replayHours()
{
    const char* asked = std::getenv("VARDEL_LONG_RUN_HOURS");
    int hours = 2;
    if (asked)
        std::from_chars(asked, asked + std::strlen(asked), hours);
    return hours > 0 ? hours : 2;
}

// Three applications in turn, a page that changes now and then, and a break each hour with nothing
// in front, so that spans end and begin all the time.
nlohmann::json replay(int hours)
{
    nlohmann::json timeline = nlohmann::json::array();
    for (int at = 60, step = 0; at < hours * 3600; at += 60, ++step) {
        if (step % 60 == 59)
            timeline.push_back({ { "at", at }, { "frontmost", nullptr } });
        else
            timeline.push_back({ { "at", at }, { "frontmost", 501 + step % 3 } });
    }
    auto application = [](int pid, const char* name) {
        return nlohmann::json { { "pid", pid }, { "bundleIdentifier", std::string("com.example.") + name },
            { "localizedName", name },
            { "ui",
                { { "AXRole", "AXApplication" }, { "AXFocusedWindow", { { "ref", std::string(name) + "-window" } } },
                    { "children",
                        { { { "id", std::string(name) + "-window" }, { "AXRole", "AXWindow" },
                            { "AXTitle", std::string(name) + " document" } } } } } } };
    };
    return { { "start", "2026-03-02T08:30:00Z" }, { "end", hours * 3600 },
        { "applications", { application(501, "Writer"), application(502, "Reader"), application(503, "Mail") } },
        { "frontmost", 501 }, { "timeline", timeline } };
}

TEST(LongReplayTest, EverySecondRecordedIsStoredAndNothingLeaks)
{
    int hours = replayHours();
    TemporaryFolder temporary;
    fs::path scenario = temporary.path() / "replay.json";
    std::ofstream(scenario) << replay(hours).dump();
    fs::path data = temporary.path() / "data";

    // No trace: a week of it would not fit in memory.
    fs::path errors = temporary.path() / "stderr.txt";
    int status = std::system(("VARDEL_DESKTOP=" + quoted(scenario.string()) + " VARDEL_DATA_DIR="
        + quoted(data.string()) + " " + quoted(VARDEL_TRACKER_PATH) + " 2>" + quoted(errors.string()))
                                 .c_str());
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << readFile(errors).substr(0, 4000);
    // Every minute but one of each hour has an application in front.
    double recordedSeconds = hours * 3600.0 - (hours * 60 - 1) / 60 * 60.0;

    auto opened = Database::open(data);
    ASSERT_TRUE(opened.ok());
    auto spans = std::move(opened).value()->activitySpansInRange(
        Date { replayStart }, Date { replayStart + hours * 3600.0 + 1 });
    ASSERT_TRUE(spans.ok());
    double storedSeconds = 0;
    for (const ActivitySpan& span : spans.value())
        storedSeconds += span.end.secondsSince1970 - span.start.secondsSince1970;
    EXPECT_NEAR(storedSeconds, recordedSeconds, 1.0);
}

} // namespace
} // namespace vardel
