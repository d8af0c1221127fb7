#include "activity/EnhancedAccessibility.h"

#include "activity/AccessibilityNames.h"
#include "activity/UIElementUtilities.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"

namespace vardel {

namespace {

constexpr const char* voiceOverKey = "voiceOverOnOffKey";
constexpr const char* defaultsProgram = "/usr/bin/defaults";

ProcessWide<bool> shouldSetManualAccessibility([] {
    return platform().productPreferences().getBool("fakeVoiceOverEnabled_shouldSetManualAccessibility").value_or(false);
});

bool advancedAccessibilityTrackingEnabled()
{
    return platform().productPreferences().getBool("advancedAccessibilityTrackingEnabled").value_or(false);
}

bool voiceOverFlagIsSet(const PreferenceStore* domain)
{
    return domain && domain->getBool(voiceOverKey).value_or(false);
}

void announceAssistiveTechnology(const AXUIElement& application)
{
    platform().log().info("User hint enqueued: advancedAccessibilityTrackingEnabled");
    UIElementUtilities::setStringValue("1", AX::enhancedUserInterface, application);
    if (shouldSetManualAccessibility.get())
        UIElementUtilities::setNumberValue(Value(true), AX::manualAccessibility, application);
}

} // namespace

void EnhancedAccessibility::ensureEnhancedAccessibility(const VDActivity& activity, bool forceDefaultsWrite)
{
    if (!activity.accessibilityWindows || activity.accessibilityWindows->empty())
        return;
    auto application = UIElementUtilities::parentOfUIElement(activity.accessibilityWindows->front());
    if (!application || !activity.applicationBundleIdentifier)
        return;
    enableFakeVoiceOver(*application, *activity.applicationBundleIdentifier, forceDefaultsWrite);
}

void EnhancedAccessibility::enableFakeVoiceOver(
    const AXUIElement& application, const std::string& bundleIdentifier, bool forceDefaultsWrite)
{
    if (!advancedAccessibilityTrackingEnabled())
        return;
    DefaultsDomains& domains = platform().defaultsDomains();
    bool changed = false;
    if (forceDefaultsWrite && !voiceOverFlagIsSet(domains.open(bundleIdentifier))) {
        platform().processLauncher().runAndWait(
            defaultsProgram, { "write", bundleIdentifier, voiceOverKey, "-bool", "true" });
        changed = true;
    }
    if (PreferenceStore* domain = domains.open(bundleIdentifier); domain && !voiceOverFlagIsSet(domain)) {
        domain->setObject(voiceOverKey, Value(true));
        domain->synchronize();
        announceAssistiveTechnology(application);
        return;
    }
    if (!changed) {
        auto current = UIElementUtilities::valueOfAttribute(AX::enhancedUserInterface, application);
        if (current && current->asBoolean() == true)
            return;
    }
    announceAssistiveTechnology(application);
}

} // namespace vardel
