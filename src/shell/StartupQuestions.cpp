#include "shell/StartupQuestions.h"

#include "platform/Platform.h"
#include "product/MainAppPreferences.h"
#include "product/VDHelper.h"
#include "product/VDStartupManager.h"

namespace vardel {

namespace {

constexpr const char* launchAtLoginMessage
    = "Would you like to have the Vardel tracker app launch automatically at login?";

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
    AccessibilityQuestion question = platform().desktopTexts().accessibilityQuestion;
    AlertResponse response
        = platform().alerts().runModal({ question.message, question.informativeText, question.buttons, true, false });
    if (response.button == 1)
        VDHelper::openAccessibilityPreferencePane(question.settingsURL);
    rememberSuppression(response, suppressionKey);
}

} // namespace vardel
