#pragma once

#include "calls/CallTimeEntryOffers.h"
#include "platform/InfoLoggerExtractor.h"
#include "product/InfoLogger.h"

#include <optional>
#include <string>
#include <vector>

namespace vardel {

// The tracker application: connects itself to the recording service as its source of activities.
class VDHelperAppDelegate final : public InfoLoggerExtractor {
public:
    explicit VDHelperAppDelegate(InfoLogger& infoLogger)
        : infoLogger_(infoLogger)
    {
    }

    // Start-up, given the process arguments (the program path first). A dump mode prints its dump
    // and stops the run loop with the dump's exit status instead of starting the tracker.
    void awakeFromNib(const std::vector<std::string>& arguments);

    std::optional<VDActivity> getCurrentActivity() override;
    void callInfoExtractorFor(VDActivity&) override;
    const std::set<std::string, std::less<>>& noAccessibilityApplicationBundleIdentifiers() override;

private:
    // Runs the dump mode that the arguments select, if any, and gives its exit status.
    static std::optional<int> runDumpMode(const std::vector<std::string>& arguments);
    void startTracking();

    InfoLogger& infoLogger_;
    CallTimeEntryOffers callTimeEntryOffers_;
};

} // namespace vardel
