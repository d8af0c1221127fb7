#include "activity/GeneralAccessibilityInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "activity/WebAreaURLInfoExtractor.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "product/ApplicationList.h"
#include "product/TextHelpers.h"

#include <algorithm>

namespace vardel {

namespace {

using ElementHelpers::ElementList;

struct Settings {
    bool preferTitleOfOnlyNonModalWindow = true;
    bool fallBackToDocumentPathOfOnlyNonModalWindow = true;
    bool fallBackToOnlyDocumentPathAmongAllWindows = true;
    std::vector<std::string> webApplicationPrefixes;
};

ProcessWide<Settings> settings([] {
    const PreferenceStore& preferences = platform().productPreferences();
    Settings read;
    read.preferTitleOfOnlyNonModalWindow
        = preferences.getBool("GeneralAccessibilityInfoExtractor_preferTitleOfOnlyNonModalWindow").value_or(true);
    read.fallBackToDocumentPathOfOnlyNonModalWindow
        = preferences.getBool("GeneralAccessibilityInfoExtractor_fallBackToDocumentPathOfOnlyNonModalWindow")
              .value_or(true);
    read.fallBackToOnlyDocumentPathAmongAllWindows
        = preferences.getBool("GeneralAccessibilityInfoExtractor_fallBackToOnlyDocumentPathAmongAllWindows")
              .value_or(true);
    // That browser's web applications carry no address in their window.
    for (const std::string& browser : ApplicationList::chromeBasedBrowserBundleIDs()) {
        if (!TextHelpers::contains(browser, "brave"))
            read.webApplicationPrefixes.push_back(browser + ".app.");
    }
    return read;
});

bool isModal(const AXUIElement& window)
{
    auto modal = UIElementUtilities::valueOfAttribute(AX::modal, window);
    return modal && modal->asBoolean().value_or(false);
}

std::optional<std::string> documentOf(const AXUIElement& window)
{
    return UIElementUtilities::stringValueOfAttribute(AX::document, window);
}

void takeOnlyNonModalWindow(VDActivity& activity, const AXUIElement& window)
{
    if (settings.get().preferTitleOfOnlyNonModalWindow) {
        auto title = UIElementUtilities::stringValueOfAttribute(AX::title, window);
        if (title && !title->empty())
            activity.details.windowTitle = title;
    }
    if (settings.get().fallBackToDocumentPathOfOnlyNonModalWindow) {
        if (auto document = documentOf(window))
            activity.details.documentPath = document;
    }
}

void takeOnlyDocumentAmongWindows(VDActivity& activity, const ElementList& applicationWindows)
{
    std::optional<std::string> onlyDocument;
    int documentCount = 0;
    for (const AXUIElement& window : applicationWindows) {
        if (auto document = documentOf(window)) {
            onlyDocument = document;
            ++documentCount;
        }
    }
    if (documentCount == 1)
        activity.details.documentPath = onlyDocument;
}

// A modal dialog hides the document behind it; so does a window that is not the document's.
void fallBackToDocumentWindows(VDActivity& activity)
{
    const auto& windows = *activity.accessibilityWindows;
    if (windows.empty())
        return;
    auto application = UIElementUtilities::parentOfUIElement(windows.front());
    if (!application)
        return;
    ElementList applicationWindows = ElementHelpers::windows(*application);
    if (applicationWindows.empty())
        return;
    if (std::all_of(windows.begin(), windows.end(), isModal)) {
        ElementList nonModal;
        std::copy_if(applicationWindows.begin(), applicationWindows.end(), std::back_inserter(nonModal),
            [](const AXUIElement& window) { return !isModal(window); });
        if (nonModal.size() == 1)
            takeOnlyNonModalWindow(activity, nonModal.front());
    }
    if (!activity.details.documentPath && settings.get().fallBackToOnlyDocumentPathAmongAllWindows)
        takeOnlyDocumentAmongWindows(activity, applicationWindows);
}

bool showsSaveSheet(const ElementList& windows)
{
    for (const AXUIElement& window : windows) {
        for (const AXUIElement& child : ElementHelpers::children(window)) {
            if (ElementHelpers::roleText(child) != AX::sheetRole)
                continue;
            for (const AXUIElement& sheetChild : ElementHelpers::children(child)) {
                // The label of a save panel's file-name field.
                if (UIElementUtilities::stringValueOfAttribute(AX::identifier, sheetChild) == "nameFieldLabel")
                    return true;
            }
        }
    }
    return false;
}

bool isChromiumWebApplication(const std::string& bundleIdentifier)
{
    const auto& prefixes = settings.get().webApplicationPrefixes;
    return std::any_of(prefixes.begin(), prefixes.end(),
        [&](const std::string& prefix) { return TextHelpers::hasPrefix(bundleIdentifier, prefix); });
}

void readChromiumWebApplication(VDActivity& activity)
{
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        auto group = ElementHelpers::firstElementWithRole(ElementHelpers::children(window), AX::groupRole);
        if (!group)
            continue;
        if (auto url = ElementHelpers::urlStringOfElement(*group))
            activity.details.documentPath = url;
        if (activity.details.windowTitle)
            continue;
        auto title = UIElementUtilities::stringValueOfAttribute(AX::title, *group);
        auto description = UIElementUtilities::stringValueOfAttribute(AX::description, *group);
        if (!title || title->empty() || !description)
            continue;
        if (*title == *description) {
            activity.details.windowTitle = title;
            return;
        }
    }
}

bool isSafariWebApplication(const std::string& bundleIdentifier)
{
    return TextHelpers::hasPrefix(bundleIdentifier, "com.apple.Safari.WebApp.")
        || TextHelpers::hasPrefix(bundleIdentifier, "com.apple.SafariTechnologyPreview.WebApp.");
}

} // namespace

void GeneralAccessibilityInfoExtractor::extractAdditionalInformationFor(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    if (!activity.details.documentPath && !activity.details.contextPath)
        fallBackToDocumentWindows(activity);
    if (showsSaveSheet(*activity.accessibilityWindows))
        activity.isShowingSaveSheet = true;
    if (!activity.applicationBundleIdentifier)
        return;
    const std::string& identifier = *activity.applicationBundleIdentifier;
    if (isChromiumWebApplication(identifier))
        readChromiumWebApplication(activity);
    if (isSafariWebApplication(identifier))
        writeWebAreaURLDetails(activity);
}

} // namespace vardel
