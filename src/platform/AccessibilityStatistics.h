#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vardel {

// How well accessibility access has worked in this process, as the recording service reads it.
struct AccessibilityStatistics {
    uint64_t numberOfTimesWeHaveSeenAlwaysIgnoredApplications = 0;
    std::optional<std::string> lastAlwaysIgnoredApplication;
    bool hasEnteredAccessibilityBranchAtAll = false;
    bool hasSuccessfullyFetchedAccessibilityApplication = false;
    bool hasSuccessfullyFetchedAccessibilityWindow = false;
    std::optional<Date> lastSuccessfulAccessibilityWindowFetch;
    uint64_t unsuccessfulWindowFetchesSinceLastSuccessful = 0;
    std::optional<std::string> lastApplicationWithoutWindow;
    // Accessibility error codes are 0 or negative; 1 means none recorded yet.
    int32_t lastWindowFetchError = 1;
    bool hasSuccessfullyUsedAccessibility = false;

    bool operator==(const AccessibilityStatistics&) const = default;
};

} // namespace vardel
