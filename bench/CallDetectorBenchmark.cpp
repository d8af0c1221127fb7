// One call-detector sample: the assertion snapshot, the candidates and the update of the running
// calls, with 40 processes holding 120 assertions of which two processes are in a call.

#include "calls/RunningCallDetector.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

namespace vardel {
namespace {

using Json = nlohmann::ordered_json;

Json assertion(const char* type, Json resources)
{
    return { { "AssertLevel", 255 }, { "AssertType", type }, { "AssertName", "media" }, { "Process Name", "process" },
        { "ResourcesUsed", std::move(resources) } };
}

Json scenario(int processCount)
{
    Json applications = Json::array();
    Json assertions = Json::object();
    for (int index = 0; index < processCount; ++index) {
        int pid = 1000 + index;
        bool inCall = index < 2;
        applications.push_back({ { "pid", pid },
            { "bundleIdentifier",
                inCall ? (index == 0 ? "us.zoom.xos" : "com.hnc.Discord") : "com.example.App" + std::to_string(index) },
            { "localizedName", "App " + std::to_string(index) } });
        Json held = Json::array();
        held.push_back(assertion("PreventUserIdleSystemSleep", inCall ? Json({ "audio-in" }) : Json({ "audio-out" })));
        held.push_back(assertion("PreventUserIdleDisplaySleep", Json({ "audio-out" })));
        held.push_back(assertion("PreventSystemSleep", Json::array()));
        assertions[std::to_string(pid)] = held;
    }
    return { { "applications", applications }, { "frontmost", 1000 }, { "powerAssertions", assertions },
        { "end", 1e9 } };
}

void detectorSample(benchmark::State& state)
{
    ProcessWideState::resetAll();
    auto desktop = scripted::ScriptedDesktop::fromJson(scenario(static_cast<int>(state.range(0))).dump());
    Platform::install(desktop.get());
    auto& detector = RunningCallDetector::sharedInstance();
    double second = 0;
    for (auto _ : state) {
        desktop->runUntil(++second);
        detector.updateCallStatusForActivity(nullptr, true);
    }
    if (detector.runningCallsByBundleIdentifier().size() != 2)
        state.SkipWithError("expected two running calls");
    Platform::install(nullptr);
    state.SetComplexityN(state.range(0) * 3);
}

BENCHMARK(detectorSample)->Arg(40)->Arg(80)->Arg(160)->Unit(benchmark::kMicrosecond)->Complexity(benchmark::oN);

} // namespace
} // namespace vardel
