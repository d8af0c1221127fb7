// Power-management assertion records of any shape, as another process may hold them: the call
// detector samples them as the tracker does, and the assertion dump prints them, as support would.

#include "calls/PowerManagementDumper.h"
#include "calls/RunningCallDetector.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace vardel;
    auto records = nlohmann::json::parse(std::string_view(reinterpret_cast<const char*>(data), size), nullptr, false);
    if (records.is_discarded())
        return 0;
    // Applications a record may name, call applications and a browser among them.
    nlohmann::json scenario = { { "applications",
                                    { { { "pid", 10 }, { "bundleIdentifier", "us.zoom.xos" } },
                                        { { "pid", 11 }, { "bundleIdentifier", "com.google.Chrome" } },
                                        { { "pid", 12 }, { "bundleIdentifier", "com.tinyspeck.slackmacgap" } } } },
        { "frontmost", 11 }, { "powerAssertions", records }, { "end", 3 } };
    std::unique_ptr<scripted::ScriptedDesktop> desktop;
    try {
        desktop = scripted::ScriptedDesktop::fromJson(scenario.dump());
    } catch (const scripted::ScenarioError&) {
        return 0;
    }
    ProcessWideState::resetAll();
    Platform::install(desktop.get());
    auto& detector = RunningCallDetector::sharedInstance();
    for (double second = 1; second <= 3; ++second) {
        desktop->runUntil(second);
        detector.updateCallStatusForActivity(nullptr, true);
    }
    PowerManagementDumper::dumpPowerManagementAssertions();
    Platform::install(nullptr);
    return 0;
}
