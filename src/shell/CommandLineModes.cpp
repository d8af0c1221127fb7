#include "shell/CommandLineModes.h"

#include "calls/PowerManagementDumper.h"
#include "diagnostics/AccessibilityDumper.h"
#include "platform/Platform.h"
#include "product/HelperHelper.h"
#include "product/URLHandler.h"

namespace vardel {

namespace {

// The exit status of an icon dump that could not write the icon; 2 stays with unreadable scenarios.
constexpr int failedDumpStatus = 1;

// Gives the target application time to come to the front and settle before its windows are read.
constexpr double windowDumpDelaySeconds = 3;

// A crash shortly after the last recorded activity is a crash loop in the making: the new process
// waits, and then leaves the restart to the next login.
constexpr double crashRecoveryWaitSeconds = 50;
constexpr double recentActivitySeconds = 86400;

// The query of a window dump: a fourth argument, unless it is an option.
std::optional<std::string> searchQuery(const std::vector<std::string>& arguments)
{
    if (arguments.size() < 4 || arguments[3].starts_with('-'))
        return std::nullopt;
    return arguments[3];
}

bool lastActivityIsRecent()
{
    auto lastDate = platform().standardUserDefaults().object("_currentDate");
    auto date = lastDate ? lastDate->asDate() : std::nullopt;
    if (!date)
        return false;
    double age = platform().clock().now().secondsSince1970 - date->secondsSince1970;
    return age >= 0 && age < recentActivitySeconds;
}

} // namespace

std::optional<int> CommandLineModes::runDumpMode(const std::vector<std::string>& arguments)
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

bool CommandLineModes::recoverFromCrashIfAsked(const std::vector<std::string>& arguments)
{
    if (arguments.size() < 2 || arguments[1] != "--fromCrashRecovery")
        return false;
    bool recent = lastActivityIsRecent();
    HelperHelper::logEventWithName(
        "VDHelperAppDelegate.awakeFromNib.fromCrashRecovery", { { "successful", Value(recent ? 0 : 1) } }, true);
    platform().runLoop().sleep(crashRecoveryWaitSeconds);
    if (recent)
        platform().runLoop().stop(0, "crashRecovery");
    return recent;
}

void CommandLineModes::handleURLArguments(const std::vector<std::string>& arguments)
{
    for (size_t index = 1; index < arguments.size(); ++index) {
        const std::string& argument = arguments[index];
        auto scheme = argument.find("://");
        if (scheme != std::string::npos && scheme > 0 && !argument.starts_with('-'))
            URLHandler::handleGetURL(argument);
    }
}

} // namespace vardel
