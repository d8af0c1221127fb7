// The window dump of an application whose window holds many elements. The dump reads every element
// once, so its cost must grow linearly with the number of elements.

#include "diagnostics/AccessibilityDumper.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

#include <ostream>
#include <streambuf>

namespace vardel {
namespace {

using Json = nlohmann::ordered_json;

constexpr int elementsPerGroup = 100;

// Swallows the printed dump, so that the terminal's speed stays out of the figures.
class DiscardingBuffer final : public std::streambuf {
protected:
    int overflow(int character) override { return character; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

// A window of elementCount elements: groups of a hundred, each a group and its labelled buttons.
Json mailScenario(int elementCount)
{
    Json groups = Json::array();
    for (int group = 0; group < elementCount / elementsPerGroup; ++group) {
        Json buttons = Json::array();
        for (int button = 1; button < elementsPerGroup; ++button)
            buttons.push_back({ { "AXRole", "AXButton" }, { "AXTitle", "Message " + std::to_string(button) },
                { "AXDescription", "Open the message" }, { "AXIdentifier", "message-" + std::to_string(button) } });
        groups.push_back(
            { { "AXRole", "AXGroup" }, { "AXTitle", "Day " + std::to_string(group) }, { "children", buttons } });
    }
    Json window = { { "id", "inbox" }, { "AXRole", "AXWindow" }, { "AXTitle", "Inbox" }, { "children", groups } };
    Json ui = { { "AXRole", "AXApplication" }, { "AXMainWindow", { { "ref", "inbox" } } },
        { "AXFocusedWindow", { { "ref", "inbox" } } }, { "children", { window } } };
    return { { "applications",
        { { { "pid", 501 }, { "bundleIdentifier", "com.example.Mail" }, { "localizedName", "Mail" },
            { "ui", ui } } } } };
}

void windowDump(benchmark::State& state)
{
    ProcessWideState::resetAll();
    auto desktop = scripted::ScriptedDesktop::fromJson(mailScenario(static_cast<int>(state.range(0))).dump());
    DiscardingBuffer discarding;
    std::ostream discarded(&discarding);
    desktop->redirectStandardStreams(discarded, discarded);
    Platform::install(desktop.get());
    for (auto _ : state)
        AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier("com.example.Mail", std::nullopt);
    state.SetComplexityN(state.range(0));
    Platform::install(nullptr);
}

BENCHMARK(windowDump)->Arg(10000)->Arg(20000)->Arg(40000)->Unit(benchmark::kMillisecond)->Complexity(benchmark::oN);

} // namespace
} // namespace vardel
