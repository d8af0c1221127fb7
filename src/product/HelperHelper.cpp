#include "product/HelperHelper.h"

#include "platform/JsonText.h"
#include "platform/Platform.h"
#include "product/AnalyticsWrapper.h"
#include "product/LocalCalendar.h"

namespace vardel {

namespace {

nlohmann::ordered_json optionalDate(const std::optional<Date>& date)
{
    return date ? nlohmann::ordered_json(date->secondsSince1970) : nlohmann::ordered_json(nullptr);
}

} // namespace

bool HelperHelper::tasksAvailable()
{
    return platform().productPreferences().getBool("tasksAvailable").value_or(true);
}

bool HelperHelper::taskButtonsEnabled()
{
    return platform().productPreferences().getBool("taskButtonsEnabled").value_or(true);
}

double HelperHelper::secondsUntilTomorrow()
{
    Date now = platform().clock().now();
    return LocalCalendar::startOfNextDay(now).secondsSince1970 - now.secondsSince1970;
}

void HelperHelper::logEventWithName(std::string name, Value::Dictionary attributes, bool critical)
{
    AnalyticsWrapper::logEvent(
        std::move(name), std::move(attributes), std::nullopt, {}, critical ? std::optional(true) : std::nullopt);
}

void HelperHelper::checkForAccessibilitySuccess(const AccessibilityStatistics& statistics)
{
    platform().trace().write("accessibilityStats",
        { { "numberOfTimesWeHaveSeenAlwaysIgnoredApplications",
              statistics.numberOfTimesWeHaveSeenAlwaysIgnoredApplications },
            { "lastAlwaysIgnoredApplication", textOrNull(statistics.lastAlwaysIgnoredApplication) },
            { "hasEnteredAccessibilityBranchAtAll", statistics.hasEnteredAccessibilityBranchAtAll },
            { "hasSuccessfullyFetchedAccessibilityApplication",
                statistics.hasSuccessfullyFetchedAccessibilityApplication },
            { "hasSuccessfullyFetchedAccessibilityWindow", statistics.hasSuccessfullyFetchedAccessibilityWindow },
            { "lastSuccessfulAccessibilityWindowFetch",
                optionalDate(statistics.lastSuccessfulAccessibilityWindowFetch) },
            { "unsuccessfulWindowFetchesSinceLastSuccessful", statistics.unsuccessfulWindowFetchesSinceLastSuccessful },
            { "lastApplicationWithoutWindow", textOrNull(statistics.lastApplicationWithoutWindow) },
            { "lastWindowFetchError", statistics.lastWindowFetchError },
            { "hasSuccessfullyUsedAccessibility", statistics.hasSuccessfullyUsedAccessibility } });
}

} // namespace vardel
