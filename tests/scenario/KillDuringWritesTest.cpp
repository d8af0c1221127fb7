// A tracker killed with SIGKILL at random moments, writes included: the store opens cleanly every
// time and has lost at most what came after its last write.

#include "platform/ValueJson.h"
#include "product/Database.h"
#include "support/SqliteQuery.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <random>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>

extern char** environ;

namespace vardel {
namespace {

namespace fs = std::filesystem;
using testing::querySql;
using testing::TemporaryFolder;

constexpr double longDayStart = 1772440200; // 2026-03-02T08:30:00Z
constexpr int kills = 20;
// The writer's interval and the sample that may have come after it.
constexpr double longestLossSeconds = 31;

// Eight hours of two applications taking turns every 97 seconds: long enough never to end before
// the kill, with a span ending now and then.
nlohmann::json longDay()
{
    nlohmann::json timeline = nlohmann::json::array();
    for (int at = 97, turn = 0; at < 8 * 3600; at += 97, ++turn)
        timeline.push_back({ { "at", at }, { "frontmost", turn % 2 ? 501 : 502 } });
    return { { "start", "2026-03-02T08:30:00Z" }, { "end", 8 * 3600 },
        { "applications",
            { { { "pid", 501 }, { "bundleIdentifier", "com.example.Writer" }, { "localizedName", "Writer" } },
                { { "pid", 502 }, { "bundleIdentifier", "com.example.Reader" }, { "localizedName", "Reader" } } } },
        { "frontmost", 501 }, { "timeline", timeline } };
}

pid_t startTracker(const fs::path& scenario, const fs::path& dataFolder, const fs::path& trace)
{
    std::vector<std::string> variables { "VARDEL_DESKTOP=" + scenario.string(),
        "VARDEL_DATA_DIR=" + dataFolder.string(), "VARDEL_TRACE=" + trace.string() };
    for (char** variable = environ; *variable; ++variable)
        variables.emplace_back(*variable);
    std::vector<char*> environment;
    for (std::string& variable : variables)
        environment.push_back(variable.data());
    environment.push_back(nullptr);
    char* arguments[] = { const_cast<char*>(VARDEL_TRACKER_PATH), nullptr };
    pid_t pid = 0;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    int failed = posix_spawn(&pid, VARDEL_TRACKER_PATH, &actions, nullptr, arguments, environment.data());
    posix_spawn_file_actions_destroy(&actions);
    return failed ? -1 : pid;
}

// The virtual second of the last sample the killed tracker traced; its lines are flushed one by one.
double lastSampleSecond(const fs::path& trace)
{
    std::ifstream file(trace);
    double last = 0;
    for (std::string line; std::getline(file, line);) {
        auto event = nlohmann::json::parse(line, nullptr, false);
        if (event.is_object() && event.value("event", "") == "sample")
            last = event.value("t", 0.0);
    }
    return last;
}

TEST(KillDuringWritesTest, EveryKillLosesAtMostTheLastWriteInterval)
{
    TemporaryFolder temporary;
    fs::path scenario = temporary.path() / "long-day.json";
    std::ofstream(scenario) << longDay().dump();
    std::mt19937 random(20261125);
    std::uniform_int_distribution<int> lifetimeMilliseconds(40, 400);
    std::vector<double> losses;

    for (int kill = 0; kill < kills; ++kill) {
        fs::path data = temporary.path() / ("data-" + std::to_string(kill));
        fs::path trace = temporary.path() / ("trace-" + std::to_string(kill) + ".jsonl");
        pid_t tracker = startTracker(scenario, data, trace);
        ASSERT_GT(tracker, 0);
        std::this_thread::sleep_for(std::chrono::milliseconds(lifetimeMilliseconds(random)));
        ::kill(tracker, SIGKILL);
        int status = 0;
        waitpid(tracker, &status, 0);
        double sampled = lastSampleSecond(trace);
        if (sampled < longestLossSeconds)
            continue; // killed before its first write was due: nothing to measure

        ASSERT_EQ(querySql(data / Database::fileName, "PRAGMA integrity_check"), "ok") << "kill " << kill;
        auto opened = Database::open(data);
        ASSERT_TRUE(opened.ok()) << opened.error().message;
        auto spans
            = std::move(opened).value()->activitySpansInRange(Date { longDayStart }, Date { longDayStart + 8 * 3600 });
        ASSERT_TRUE(spans.ok());
        double stored = 0;
        for (const ActivitySpan& span : spans.value())
            stored = std::max(stored, span.end.secondsSince1970 - longDayStart);
        double loss = sampled + 1 - stored;
        EXPECT_LE(loss, longestLossSeconds) << "kill " << kill << " after " << sampled << " s";
        losses.push_back(loss);
    }
    ASSERT_GE(losses.size(), static_cast<size_t>(kills / 2)) << "too few kills came after a write";
    double worst = *std::max_element(losses.begin(), losses.end());
    double mean = 0;
    for (double loss : losses)
        mean += loss / static_cast<double>(losses.size());
    std::cout << "Killed " << losses.size() << " times after the first write: lost " << mean << " s on average, "
              << worst << " s at worst\n";
}

} // namespace
} // namespace vardel
