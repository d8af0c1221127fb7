#include "activity/VDInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/GeneralAccessibilityInfoExtractor.h"
#include "activity/UIElementUtilities.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "platform/RegularExpression.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <filesystem>

namespace vardel {

namespace {

ProcessWideVariable<AccessibilityStatistics> processStatistics;

AccessibilityStatistics& stats()
{
    return processStatistics.get();
}

bool userDefault(const char* key)
{
    return platform().standardUserDefaults().getBool(key).value_or(false);
}

bool contains(const BundleIdentifierSet& set, const std::optional<std::string>& identifier)
{
    return identifier && set.contains(*identifier);
}

std::string lastPathComponent(const std::string& path)
{
    return std::filesystem::path(path).filename().string();
}

bool isAlwaysIgnored(const VDActivity& activity)
{
    if (contains(VDInfoExtractor::alwaysIgnoredApplicationBundleIdentifiers(), activity.applicationBundleIdentifier))
        return true;
    const auto& executable = activity.applicationExecutableURL;
    return executable
        && VDInfoExtractor::alwaysIgnoredApplicationExecutableNames().contains(lastPathComponent(*executable));
}

bool skipsAccessibility(const VDActivity& activity)
{
    const auto& identifier = activity.applicationBundleIdentifier;
    if (!platform().accessibility().isProcessTrusted())
        return true;
    if (contains(VDInfoExtractor::noAccessibilityApplicationBundleIdentifiers(), identifier))
        return true;
    // Web applications installed from that browser.
    if (identifier && TextHelpers::hasPrefix(*identifier, "com.brave.Browser.app."))
        return true;
    const auto& executable = activity.applicationExecutableURL;
    return executable && TextHelpers::contains(*executable, "Gephi");
}

std::vector<Size> screenSizes()
{
    std::vector<Size> sizes;
    for (const Rect& frame : platform().windowServer().screenFrames())
        sizes.push_back(frame.size);
    return sizes;
}

bool matchesAnyScreen(Size size, const std::vector<Size>& screens)
{
    return std::find(screens.begin(), screens.end(), size) != screens.end();
}

std::optional<AXUIElement> elementAttribute(const char* attribute, const AXUIElement& element)
{
    auto value = UIElementUtilities::valueOfAttribute(attribute, element);
    if (!value || !value->asElement())
        return std::nullopt;
    return *value->asElement();
}

// A sheet stands for the window it is attached to.
std::optional<AXUIElement> windowOwningSheets(std::optional<AXUIElement> window)
{
    constexpr int maxSheetNesting = 100;
    for (int step = 0; window && step < maxSheetNesting; ++step) {
        if (UIElementUtilities::roleOfUIElement(*window) != AX::sheetRole)
            return window;
        window = UIElementUtilities::parentOfUIElement(*window);
    }
    return std::nullopt;
}

// The main window, then the focused one, each at most once.
std::vector<AXUIElement> distinctWindows(const std::vector<AXUIElement>& candidates)
{
    std::vector<AXUIElement> kept;
    std::vector<std::string> seenIdentifiers;
    for (const AXUIElement& candidate : candidates) {
        auto window = windowOwningSheets(candidate);
        if (!window)
            continue;
        if (auto identifier = UIElementUtilities::stringValueOfAttribute(AX::identifier, *window)) {
            if (std::find(seenIdentifiers.begin(), seenIdentifiers.end(), *identifier) != seenIdentifiers.end())
                continue;
            seenIdentifiers.push_back(*identifier);
        } else if (std::find(kept.begin(), kept.end(), *window) != kept.end()) {
            continue;
        }
        kept.push_back(*window);
    }
    return kept;
}

void recordWindowFetch(
    const VDActivity& activity, const std::vector<AXUIElement>& candidates, const AXUIElement& application)
{
    const auto& identifier = activity.applicationBundleIdentifier;
    if (candidates.empty()) {
        stats().lastApplicationWithoutWindow = identifier;
        stats().unsuccessfulWindowFetchesSinceLastSuccessful += 1;
        AXError error = platform().accessibility().copyAttributeValue(application, AX::mainWindow).error;
        if (error != AXErrorCode::success)
            stats().lastWindowFetchError = error;
        return;
    }
    // The product's own applications say nothing about accessibility working for others.
    if (identifier && TextHelpers::contains(*identifier, "Vardel"))
        return;
    stats().hasSuccessfullyFetchedAccessibilityWindow = true;
    stats().lastSuccessfulAccessibilityWindowFetch = platform().clock().now();
    stats().unsuccessfulWindowFetchesSinceLastSuccessful = 0;
}

void readWindow(VDActivity& activity, const AXUIElement& window, const std::vector<Size>& screens)
{
    if (!activity.isFullscreen) {
        auto fullScreen = UIElementUtilities::valueOfAttribute(AX::fullScreen, window);
        activity.isFullscreen = fullScreen && fullScreen->asBoolean().value_or(false);
    }
    // Finder's desktop window covers the screen without being full screen.
    if (!activity.isFullscreen && activity.applicationBundleIdentifier != "com.apple.finder")
        activity.isFullscreen = matchesAnyScreen(UIElementUtilities::sizeOfUIElement(window), screens);
    if (!activity.details.windowTitle) {
        activity.details.windowTitle = UIElementUtilities::stringValueOfAttribute(AX::title, window);
        if (activity.details.windowTitle)
            stats().hasSuccessfullyUsedAccessibility = true;
    }
    if (!activity.details.documentPath
        && !contains(
            VDInfoExtractor::noPathExtractionApplicationBundleIdentifiers(), activity.applicationBundleIdentifier)) {
        activity.details.documentPath = UIElementUtilities::stringValueOfAttribute(AX::document, window);
        if (activity.details.documentPath)
            stats().hasSuccessfullyUsedAccessibility = true;
    }
}

void readThroughAccessibility(VDActivity& activity, const std::vector<Size>& screens)
{
    stats().hasEnteredAccessibilityBranchAtAll = true;
    UIElementUtilities::applyGlobalMessagingTimeoutOnce();
    auto application = platform().accessibility().createApplication(activity.applicationProcessIdentifier);
    if (!application)
        return;
    stats().hasSuccessfullyFetchedAccessibilityApplication = true;

    std::vector<AXUIElement> candidates;
    for (const char* attribute : { AX::mainWindow, AX::focusedWindow }) {
        if (auto window = elementAttribute(attribute, *application))
            candidates.push_back(*window);
    }
    std::vector<AXUIElement> windows = distinctWindows(candidates);
    recordWindowFetch(activity, candidates, *application);
    activity.accessibilityWindows = windows;
    for (const AXUIElement& window : windows)
        readWindow(activity, window, screens);
    GeneralAccessibilityInfoExtractor::extractAdditionalInformationFor(activity);
}

std::optional<std::string> nonEmptyText(const Value::Dictionary& entry, const char* key)
{
    auto found = entry.find(key);
    if (found == entry.end() || !found->second.asText() || found->second.asText()->empty())
        return std::nullopt;
    return *found->second.asText();
}

bool isKeptWindowListEntry(const Value::Dictionary& entry, ProcessIdentifier pid)
{
    auto owner = entry.find(WindowInfoKey::ownerPID);
    if (owner == entry.end() || owner->second.asInteger() != pid)
        return false;
    auto sharing = entry.find(WindowInfoKey::sharingState);
    if (sharing != entry.end() && sharing->second.asInteger() == 0)
        return false;
    auto name = entry.find(WindowInfoKey::name);
    return name == entry.end() || !name->second.asText()
        || !TextHelpers::hasPrefix(*name->second.asText(), "Activity window for");
}

bool isRegularWindow(const Value::Dictionary& entry)
{
    auto layer = entry.find(WindowInfoKey::layer);
    return layer != entry.end() && layer->second.asInteger() == 0;
}

std::optional<Size> boundsSize(const Value::Dictionary& entry)
{
    auto bounds = entry.find(WindowInfoKey::bounds);
    if (bounds == entry.end() || !bounds->second.asDictionary())
        return std::nullopt;
    const auto& dictionary = *bounds->second.asDictionary();
    auto width = dictionary.find("Width");
    auto height = dictionary.find("Height");
    if (width == dictionary.end() || height == dictionary.end() || !width->second.asNumber()
        || !height->second.asNumber())
        return std::nullopt;
    return Size { *width->second.asNumber(), *height->second.asNumber() };
}

std::vector<Value::Dictionary> keptWindowListEntries(ProcessIdentifier pid)
{
    std::vector<Value::Dictionary> kept;
    for (const Value& entry : platform().windowServer().onScreenWindowList()) {
        if (entry.asDictionary() && isKeptWindowListEntry(*entry.asDictionary(), pid))
            kept.push_back(*entry.asDictionary());
    }
    return kept;
}

void readWindowList(VDActivity& activity, const std::vector<Size>& screens)
{
    auto entries = keptWindowListEntries(activity.applicationProcessIdentifier);
    auto& title = activity.details.windowTitle;
    if (!userDefault("VDInfoExtractor_doNotPreferTitleOfRegularWindow")) {
        for (const auto& entry : entries) {
            if (auto name = nonEmptyText(entry, WindowInfoKey::name); name && isRegularWindow(entry)) {
                title = name;
                break;
            }
        }
    }
    for (const auto& entry : entries) {
        if (auto name = nonEmptyText(entry, WindowInfoKey::name); name && (!title || title->empty()))
            title = name;
        if (auto size = boundsSize(entry); size && matchesAnyScreen(*size, screens))
            activity.isFullscreen = true;
    }
}

const std::vector<RegularExpression>& cleanUpExpressions()
{
    static const std::vector<RegularExpression> expressions = {
        RegularExpression::literal("\\*$"),
        RegularExpression::literal("\\s?[-\u2013\u2014]\\s?Edited$"),
        RegularExpression::literal("^Edited\\s?[-\u2013\u2014]\\s?"),
    };
    return expressions;
}

const RegularExpression& mailCountExpression()
{
    static const RegularExpression expression = RegularExpression::literal("\\s?\\(\\d[^()]+\\)$");
    return expression;
}

void removeMatches(std::optional<std::string>& text, const RegularExpression& expression)
{
    if (text)
        text = expression.replacingMatches(*text);
}

void cleanUp(VDActivity& activity)
{
    auto& details = activity.details;
    for (const RegularExpression& expression : cleanUpExpressions()) {
        removeMatches(details.windowTitle, expression);
        removeMatches(details.documentTitle, expression);
    }
    if (details.windowTitle) {
        details.windowTitle = TextHelpers::removingCodePoint(*details.windowTitle, U'\u200E');
        details.windowTitle = TextHelpers::removingCodePoint(*details.windowTitle, U'\u200F');
    }
    const auto& identifier = activity.applicationBundleIdentifier;
    if (identifier == "com.apple.mail" || identifier == "com.freron.MailMate")
        removeMatches(details.documentTitle, mailCountExpression());
}

void fillFromWindows(VDActivity& activity)
{
    std::vector<Size> screens = screenSizes();
    if (!skipsAccessibility(activity))
        readThroughAccessibility(activity, screens);
    WindowServer& windowServer = platform().windowServer();
    if (userDefault("VDInfoExtractor_shouldRequestScreenCaptureAccess") && !windowServer.preflightScreenCaptureAccess())
        windowServer.requestScreenCaptureAccess();
    if (!activity.details.windowTitle && !userDefault("VDInfoExtractor_skipWindowTitleExtraction"))
        readWindowList(activity, screens);
}

} // namespace

const AccessibilityStatistics& VDInfoExtractor::statistics()
{
    return stats();
}

std::optional<VDActivity> VDInfoExtractor::currentActivity()
{
    if (userDefault("VDInfoExtractor_skipAllTracking"))
        return std::nullopt;
    auto frontmost = platform().workspace().frontmostApplication();
    if (!frontmost)
        return std::nullopt;
    VDActivity activity(std::move(*frontmost), VDActivityDetails {});
    if (isAlwaysIgnored(activity)) {
        stats().numberOfTimesWeHaveSeenAlwaysIgnoredApplications += 1;
        stats().lastAlwaysIgnoredApplication = activity.applicationBundleIdentifier;
        return std::nullopt;
    }
    bool readsWindows = !userDefault("VDInfoExtractor_skipAccessibilityTracking")
        && !contains(noWindowTitleApplicationBundleIdentifiers(), activity.applicationBundleIdentifier);
    if (readsWindows)
        fillFromWindows(activity);
    if (!userDefault("VDInfoExtractor_skipTrackingPostprocessing"))
        cleanUp(activity);
    return activity;
}

} // namespace vardel
