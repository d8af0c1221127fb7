#include "shell/StartupQuestions.h"

#include "platform/Platform.h"
#include "product/MainAppPreferences.h"
#include "product/VDHelper.h"
#include "product/VDStartupManager.h"

namespace vardel {

namespace {

constexpr const char* launchAtLoginMessage
    = "Would you like to have the Vardel tracker app launch automatically at login?";
constexpr const char* accessibilityMessage
    = "To track your work, Vardel needs permission to use your Mac’s Accessibility features.";
constexpr const char* accessibilityInformativeText = "Would you like to launch System Settings so that you can "
                                                     "enable \"Vardel Tracker\" in the Accessibility list?";

bool answeredForGood(const char* suppressionKey)
{
    return platform().standardUserDefaults().getBool(suppressionKey).value_or(false);
}

// A ticked box stands for every later start.
void rememberSuppression(const AlertResponse& response, const char* suppressionKey)
{
    if (response.suppressionState)
        platform().standardUserDefaults().setObject(suppressionKey, Value(true));
}

} // namespace

void StartupQuestions::askToLaunchAtLogin()
{
    constexpr const char* suppressionKey = "dontAskToLaunchAtLogin";
    if (VDStartupManager::shouldStartAtLogin() || !MainAppPreferences::onboardingHasCompleted()
        || answeredForGood(suppressionKey))
        return;
    AlertResponse response = platform().alerts().runModal(
        { launchAtLoginMessage, trackerMustRunText, { "Launch at Login", "Don't start automatically" }, true, false });
    if (response.button == 1)
        VDStartupManager::setShouldStartAtLogin(true);
    rememberSuppression(response, suppressionKey);
}

void StartupQuestions::askForAccessibility()
{
    constexpr const char* suppressionKey = "dontNotifyAboutDisabledAccessibilityAPI";
    if (VDHelper::accessibilityAvailable() || !MainAppPreferences::onboardingHasCompleted()
        || answeredForGood(suppressionKey))
        return;
    AlertResponse response = platform().alerts().runModal({ accessibilityMessage, accessibilityInformativeText,
        { "Open System Settings", "Continue Anyway" }, true, false });
    if (response.button == 1)
        VDHelper::openAccessibilityPreferencePane();
    rememberSuppression(response, suppressionKey);
}

} // namespace vardel
