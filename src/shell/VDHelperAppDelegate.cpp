#include "shell/VDHelperAppDelegate.h"

#include "activity/VDInfoExtractor.h"
#include "calls/PowerManagementDumper.h"
#include "calls/RunningCallDetector.h"
#include "diagnostics/AccessibilityDumper.h"
#include "platform/Platform.h"

namespace vardel {

namespace {

// The exit status of an icon dump that could not write the icon; 2 stays with unreadable scenarios.
constexpr int failedDumpStatus = 1;

// Gives the target application time to come to the front and settle before its windows are read.
constexpr double windowDumpDelaySeconds = 3;

// The query of a window dump: a fourth argument, unless it is an option.
std::optional<std::string> searchQuery(const std::vector<std::string>& arguments)
{
    if (arguments.size() < 4 || arguments[3].starts_with('-'))
        return std::nullopt;
    return arguments[3];
}

} // namespace

void VDHelperAppDelegate::awakeFromNib(const std::vector<std::string>& arguments)
{
    if (auto status = runDumpMode(arguments)) {
        platform().log().info("Dump finished; exiting.");
        platform().runLoop().stop(*status, "dump");
        return;
    }
    startTracking();
}

std::optional<int> VDHelperAppDelegate::runDumpMode(const std::vector<std::string>& arguments)
{
    // Only the first argument selects a mode; a mode that needs a bundle identifier is no mode without one.
    if (arguments.size() < 2)
        return std::nullopt;
    const std::string& mode = arguments[1];
    if (mode == "--dumpPMAssertions") {
        PowerManagementDumper::dumpPowerManagementAssertions();
        return 0;
    }
    if (arguments.size() < 3)
        return std::nullopt;
    const std::string& bundleIdentifier = arguments[2];
    if (mode == "--dumpApplicationWindows") {
        platform().runLoop().sleep(windowDumpDelaySeconds);
        AccessibilityDumper::dumpWindowsForApplicationWithBundleIdentifier(bundleIdentifier, searchQuery(arguments));
        return 0;
    }
    if (mode == "--dumpApplicationIcon")
        return AccessibilityDumper::dumpIconForApplicationWithPossibleBundleIdentifier(bundleIdentifier)
            ? 0
            : failedDumpStatus;
    return std::nullopt;
}

void VDHelperAppDelegate::startTracking()
{
    callTimeEntryOffers_.registerNotificationCategory();
    RunningCallDetector::sharedInstance().setCallEndReaction(&callTimeEntryOffers_);
    infoLogger_.setCallDetector(&RunningCallDetector::sharedInstance());
    infoLogger_.setInfoExtractor(this);
    infoLogger_.setShouldTrack(true);
    infoLogger_.startSampling();
}

std::optional<VDActivity> VDHelperAppDelegate::getCurrentActivity()
{
    return VDInfoExtractor::currentActivity();
}

void VDHelperAppDelegate::callInfoExtractorFor(VDActivity& activity)
{
    VDInfoExtractor::callInfoExtractorForActivity(activity);
}

const std::set<std::string, std::less<>>& VDHelperAppDelegate::noAccessibilityApplicationBundleIdentifiers()
{
    return VDInfoExtractor::noAccessibilityApplicationBundleIdentifiers();
}

} // namespace vardel
