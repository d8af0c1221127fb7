#pragma once

#include "platform/VDActivity.h"

#include <optional>
#include <set>
#include <string>

namespace vardel {

// What the recording service asks of the tracker on each sample.
class InfoLoggerExtractor {
public:
    virtual ~InfoLoggerExtractor() = default;

    // Nothing when there is nothing to record.
    virtual std::optional<VDActivity> getCurrentActivity() = 0;
    // Adds the per-application details to the record.
    virtual void callInfoExtractorFor(VDActivity&) = 0;
    virtual const std::set<std::string, std::less<>>& noAccessibilityApplicationBundleIdentifiers() = 0;
};

} // namespace vardel
