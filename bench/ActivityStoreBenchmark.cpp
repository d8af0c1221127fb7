// A whole working day replayed through the recording service into the activity store: 8 virtual
// hours of samples, once a second, while the user switches between four applications every 40
// seconds and the window titles change every other switch. Reports the wall time for the day and
// the size of the database it leaves.

#include "extractors/BuiltInExtractors.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "product/DatabaseWrapper.h"
#include "product/InfoLogger.h"
#include "shell/VDHelperAppDelegate.h"
#include "support/TemporaryFolder.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace vardel {
namespace {

using Json = nlohmann::ordered_json;

constexpr int daySeconds = 8 * 3600;
constexpr int switchEverySeconds = 40;

Json application(int pid, const std::string& name, const std::string& window)
{
    Json ui = { { "AXRole", "AXApplication" }, { "AXMainWindow", { { "ref", window } } },
        { "AXFocusedWindow", { { "ref", window } } },
        { "children",
            { { { "id", window }, { "AXRole", "AXWindow" }, { "AXTitle", name + " window" },
                { "AXDocument", "file:///home/me/" + name + ".txt" } } } } };
    return { { "pid", pid }, { "bundleIdentifier", "com.example." + name }, { "localizedName", name }, { "ui", ui } };
}

Json workingDay()
{
    const std::vector<std::string> names = { "Editor", "Browser", "Mail", "Terminal" };
    Json applications = Json::array();
    for (size_t index = 0; index < names.size(); ++index)
        applications.push_back(application(501 + static_cast<int>(index), names[index], names[index] + "-window"));
    Json timeline = Json::array();
    for (int step = 1; step * switchEverySeconds < daySeconds; ++step) {
        size_t index = static_cast<size_t>(step) % names.size();
        Json change = { { "at", step * switchEverySeconds }, { "frontmost", 501 + static_cast<int>(index) } };
        if (step % 2 == 0)
            change["set"] = { { { "element", names[index] + "-window" }, { "attribute", "AXTitle" },
                { "value", names[index] + " " + std::to_string(step) } } };
        timeline.push_back(change);
    }
    return { { "end", daySeconds }, { "applications", applications }, { "frontmost", 501 }, { "timeline", timeline } };
}

void replayWorkingDay(benchmark::State& state)
{
    std::string scenario = workingDay().dump();
    testing::TemporaryFolder temporary;
    std::filesystem::path folder = temporary.path() / "data";
    double databaseBytes = 0;
    double spans = 0;
    for (auto _ : state) {
        state.PauseTiming();
        BuiltInExtractors::install();
        ProcessWideState::resetAll();
        std::filesystem::remove_all(folder);
        auto desktop = scripted::ScriptedDesktop::fromJson(scenario);
        Platform::install(desktop.get());
        DatabaseWrapper::sharedInstance().configure(folder);
        state.ResumeTiming();

        InfoLogger infoLogger;
        VDHelperAppDelegate delegate(infoLogger);
        delegate.awakeFromNib({ "vardel-tracker" });
        desktop->runLoop().run();
        infoLogger.prepareForShutdownWithIsRelaunch(false);
        DatabaseWrapper::sharedInstance().configureUnavailable();

        state.PauseTiming();
        databaseBytes = static_cast<double>(std::filesystem::file_size(folder / Database::fileName));
        auto opened = Database::open(folder);
        spans = static_cast<double>(
            std::move(opened).value()->activitySpansInRange(Date { 0 }, Date { 4e9 }).value().size());
        Platform::install(nullptr);
        state.ResumeTiming();
    }
    state.counters["database_bytes"] = databaseBytes;
    state.counters["spans"] = spans;
    state.counters["samples"] = daySeconds;
}

BENCHMARK(replayWorkingDay)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace
} // namespace vardel
