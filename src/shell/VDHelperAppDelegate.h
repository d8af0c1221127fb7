#pragma once

#include "platform/InfoLoggerExtractor.h"
#include "product/InfoLogger.h"

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

    // Start-up, given the process arguments (the program path first).
    void awakeFromNib(const std::vector<std::string>& arguments);

    std::optional<VDActivity> getCurrentActivity() override;
    void callInfoExtractorFor(VDActivity&) override;
    const std::set<std::string, std::less<>>& noAccessibilityApplicationBundleIdentifiers() override;

private:
    InfoLogger& infoLogger_;
};

} // namespace vardel
