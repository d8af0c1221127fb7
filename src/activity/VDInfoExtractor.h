#pragma once

#include "activity/VDApplicationInfoExtractor.h"
#include "platform/AccessibilityStatistics.h"
#include "platform/VDActivity.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace vardel {

using BundleIdentifierSet = std::set<std::string, std::less<>>;
using ExtractorRegistry = std::map<std::string, VDApplicationInfoExtractor, std::less<>>;

// Where the registry's first rows and the extractor for unregistered applications come from. The
// extractors' own layer provides them (BuiltInExtractors), so that sampling never depends on it.
struct ExtractorCatalogue {
    ExtractorRegistry (*builtInRegistrations)();
    VDApplicationInfoExtractor defaultExtractor;
};

// Answers what the user is doing right now: builds the activity record of the frontmost
// application, keeps the accessibility statistics and dispatches to the per-application extractor.
class VDInfoExtractor {
public:
    // Nothing when there is nothing to record.
    static std::optional<VDActivity> currentActivity();

    static const AccessibilityStatistics& statistics();

    // Takes effect when the registry is next built (at first use, or after a process-wide reset).
    // Without a catalogue the registry starts empty and there is no default extractor.
    static void setExtractorCatalogue(std::optional<ExtractorCatalogue>);
    // Runs the extractor registered for the activity's application, or the default one.
    static void callInfoExtractorForActivity(VDActivity&);
    // Does nothing for an empty identifier; replaces an earlier registration.
    static void addApplicationInfoExtractor(VDApplicationInfoExtractor, std::string_view bundleIdentifier);
    // The same rule for a registry being built.
    static void addTo(ExtractorRegistry&, VDApplicationInfoExtractor, std::string_view bundleIdentifier);
    // The extractor that would run for the identifier; nothing when the default one would.
    static std::optional<VDApplicationInfoExtractor> registeredExtractorForBundleIdentifier(std::string_view);

    static const BundleIdentifierSet& alwaysIgnoredApplicationBundleIdentifiers();
    static const BundleIdentifierSet& alwaysIgnoredApplicationExecutableNames();
    static const BundleIdentifierSet& noWindowTitleApplicationBundleIdentifiers();
    static const BundleIdentifierSet& noAccessibilityApplicationBundleIdentifiers();
    static const BundleIdentifierSet& noPathExtractionApplicationBundleIdentifiers();
};

} // namespace vardel
