// A scenario of any shape: loading it either fails with its clear error or gives a desktop, which is
// then sampled, described by every extractor and dumped with a search, as the tracker and support
// would.

#include "activity/VDInfoExtractor.h"
#include "diagnostics/AccessibilityDumper.h"
#include "extractors/BuiltInExtractors.h"
#include "platform/ProcessWide.h"
#include "platform/scripted/ScriptedDesktop.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace vardel;
    std::unique_ptr<scripted::ScriptedDesktop> desktop;
    try {
        desktop = scripted::ScriptedDesktop::fromJson(std::string_view(reinterpret_cast<const char*>(data), size));
    } catch (const scripted::ScenarioError&) {
        return 0;
    }
    BuiltInExtractors::install();
    ProcessWideState::resetAll();
    Platform::install(desktop.get());
    if (auto activity = VDInfoExtractor::currentActivity()) {
        VDInfoExtractor::callInfoExtractorForActivity(*activity);
        if (activity->applicationBundleIdentifier) {
            AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier(
                *activity->applicationBundleIdentifier, std::nullopt);
            AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier(
                *activity->applicationBundleIdentifier, "role=AXWebArea");
        }
    }
    Platform::install(nullptr);
    return 0;
}
