#include "calls/ExcludedApplications.h"

#include "calls/CallApplicationTables.h"
#include "platform/Platform.h"

#include <algorithm>

namespace vardel {

namespace {

bool listed(const std::vector<std::string>& list, std::string_view bundleIdentifier)
{
    return std::find(list.begin(), list.end(), bundleIdentifier) != list.end();
}

} // namespace

ExcludedApplications ExcludedApplications::current()
{
    PreferenceStore& preferences = platform().productPreferences();
    return ExcludedApplications(preferences.getStringList("RunningCallDetector_appsWithCallTrackingDisabled")
                                    .value_or(std::vector<std::string> {}),
        preferences.getStringList("RunningCallDetector_appsWithCallTrackingEnabled")
            .value_or(std::vector<std::string> {}));
}

bool ExcludedApplications::contains(std::string_view bundleIdentifier) const
{
    if (listed(enabled_, bundleIdentifier))
        return false;
    return listed(disabled_, bundleIdentifier)
        || CallApplicationTables::callTrackingExcludedApplications().contains(bundleIdentifier);
}

} // namespace vardel
