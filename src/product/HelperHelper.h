#pragma once

#include "platform/AccessibilityStatistics.h"
#include "platform/Value.h"

#include <optional>
#include <string>

namespace vardel {

// The product's services for the tracker application.
class HelperHelper {
public:
    // Whether the product offers task timers at all, and whether their buttons may be used now.
    static bool tasksAvailable();
    static bool taskButtonsEnabled();
    // Seconds from now until the next local midnight.
    static double secondsUntilTomorrow();
    // The line about the time left in the user's plan; this build has no plans.
    static std::optional<std::string> remainingTimeInfo() { return std::nullopt; }

    static void logEventWithName(std::string name, Value::Dictionary attributes = {}, bool critical = false);
    // Reports how well accessibility has worked since start-up.
    static void checkForAccessibilitySuccess(const AccessibilityStatistics&);
};

} // namespace vardel
