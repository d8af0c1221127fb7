// A week of use replayed through the whole tracker on the scripted desktop into the real store:
// three applications in turn, a minute each, and a break every hour. Reports the process's resident
// memory at the end of the first day and at the end of the run, which should not grow.
// VARDEL_REPLAY_DAYS shortens or lengthens the run (the test command's smoke run takes a tenth of a day).

#include "extractors/BuiltInExtractors.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "product/DatabaseWrapper.h"
#include "product/InfoLogger.h"
#include "shell/VDHelperAppDelegate.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace vardel {
namespace {

using Json = nlohmann::ordered_json;

constexpr double daySeconds = 86400;

double replayDays()
{
    double days = 7;
    if (const char* asked = std::getenv("VARDEL_REPLAY_DAYS"))
        std::from_chars(asked, asked + std::strlen(asked), days);
    return days > 0 ? days : 7;
}

Json application(int pid, const std::string& name)
{
    Json window = { { "id", name + "-window" }, { "AXRole", "AXWindow" }, { "AXTitle", name + " document" } };
    Json ui = { { "AXRole", "AXApplication" }, { "AXFocusedWindow", { { "ref", name + "-window" } } },
        { "children", { window } } };
    return { { "pid", pid }, { "bundleIdentifier", "com.example." + name }, { "localizedName", name }, { "ui", ui } };
}

Json week(double seconds)
{
    Json timeline = Json::array();
    int step = 0;
    for (double at = 60; at < seconds; at += 60, ++step) {
        if (step % 60 == 59)
            timeline.push_back({ { "at", at }, { "frontmost", nullptr } });
        else
            timeline.push_back({ { "at", at }, { "frontmost", 501 + step % 3 } });
    }
    return { { "end", seconds },
        { "applications", { application(501, "Writer"), application(502, "Reader"), application(503, "Mail") } },
        { "frontmost", 501 }, { "timeline", timeline } };
}

// The process's resident memory in kilobytes, from /proc.
double residentKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmRSS:"))
            return std::strtod(line.c_str() + 6, nullptr);
    }
    return 0;
}

void replayWeek(benchmark::State& state)
{
    double seconds = replayDays() * daySeconds;
    std::string scenario = week(seconds).dump();
    testing::TemporaryFolder temporary;
    double afterFirstDay = 0;
    double atEnd = 0;
    for (auto _ : state) {
        BuiltInExtractors::install();
        ProcessWideState::resetAll();
        auto desktop = scripted::ScriptedDesktop::fromJson(scenario);
        Platform::install(desktop.get());
        DatabaseWrapper::sharedInstance().configure(temporary.path() / "data");
        {
            InfoLogger infoLogger;
            VDHelperAppDelegate delegate(infoLogger);
            delegate.awakeFromNib({ "vardel-tracker" });
            // A shorter run than a day measures at its first seventh instead.
            desktop->runLoop().schedule(
                std::min(daySeconds, seconds / 7), [&] { afterFirstDay = residentKilobytes(); });
            desktop->runLoop().run();
            atEnd = residentKilobytes();
            infoLogger.prepareForShutdownWithIsRelaunch(false);
        }
        DatabaseWrapper::sharedInstance().configureUnavailable();
        Platform::install(nullptr);
    }
    state.counters["days"] = seconds / daySeconds;
    state.counters["rss_first_day_kB"] = afterFirstDay;
    state.counters["rss_end_kB"] = atEnd;
    state.counters["rss_growth_kB"] = atEnd - afterFirstDay;
}

BENCHMARK(replayWeek)->Unit(benchmark::kSecond)->Iterations(1);

} // namespace
} // namespace vardel
