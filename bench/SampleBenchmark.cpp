// One whole sample (the record and the per-application details) with a browser in front whose page
// has many elements. The sample visits the window, its scroll area and the web area, so its cost
// must not depend on how large the rest of the page is.

#include "activity/VDInfoExtractor.h"
#include "extractors/BuiltInExtractors.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

namespace vardel {
namespace {

using Json = nlohmann::ordered_json;

// A page of roughly the given number of elements: sections of paragraphs with links.
Json pageContent(int elementCount)
{
    Json sections = Json::array();
    int made = 0;
    while (made < elementCount) {
        Json paragraphs = Json::array();
        for (int paragraph = 0; paragraph < 9 && made < elementCount; ++paragraph, made += 2) {
            paragraphs.push_back({ { "AXRole", "AXGroup" },
                { "children", { { { "AXRole", "AXLink" }, { "AXTitle", "Link " + std::to_string(made) } } } } });
        }
        sections.push_back({ { "AXRole", "AXGroup" }, { "children", paragraphs } });
        ++made;
    }
    return sections;
}

Json browserScenario(int elementCount)
{
    Json page = { { "id", "page" }, { "AXRole", "AXWebArea" }, { "AXTitle", "Quarterly report" },
        { "AXURL", { { "url", "https://intranet.example/report" } } }, { "children", pageContent(elementCount) } };
    Json window = { { "id", "window" }, { "AXRole", "AXWindow" }, { "AXTitle", "Quarterly report" },
        { "AXPosition", { { "point", { 0, 25 } } } }, { "AXSize", { { "size", { 1440, 875 } } } },
        { "children", { { { "AXRole", "AXScrollArea" }, { "children", { page } } } } } };
    Json ui = { { "AXRole", "AXApplication" }, { "AXMainWindow", { { "ref", "window" } } },
        { "AXFocusedWindow", { { "ref", "window" } } }, { "children", { window } } };
    return { { "applications",
                 { { { "pid", 501 }, { "bundleIdentifier", "company.thebrowser.dia" }, { "localizedName", "Dia" },
                     { "ui", ui } } } },
        { "frontmost", 501 } };
}

void wholeSample(benchmark::State& state)
{
    BuiltInExtractors::install();
    ProcessWideState::resetAll();
    auto desktop = scripted::ScriptedDesktop::fromJson(browserScenario(static_cast<int>(state.range(0))).dump());
    Platform::install(desktop.get());
    for (auto _ : state) {
        auto activity = VDInfoExtractor::currentActivity();
        VDInfoExtractor::callInfoExtractorForActivity(*activity);
        benchmark::DoNotOptimize(activity);
    }
    Platform::install(nullptr);
}

BENCHMARK(wholeSample)->Arg(5000)->Arg(50000)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace vardel
