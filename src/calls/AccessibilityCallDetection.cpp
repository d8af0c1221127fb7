// Settled reading of classic Teams call windows (Teams publishes its DOM through the enhanced tree):
// - the call window's web area holds a group with DOM identifier "child-window-body";
// - the duration is the first static text at or below the element with DOM identifier
//   "call-duration-custom" inside the first toolbar of that group;
// - the call controls are groups whose AXDescription is one of the call-control labels; a window
//   counts as a call only with both a running duration and such a group;
// - the meeting title is the call window's AXTitle.
#include "calls/AccessibilityCallDetection.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/ElementTreeWalker.h"
#include "activity/EnhancedAccessibility.h"
#include "activity/UIElementUtilities.h"
#include "platform/Platform.h"
#include "platform/RegularExpression.h"
#include "product/ApplicationList.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <array>

namespace vardel {

namespace {

using ElementHelpers::ElementList;

constexpr std::string_view slackBundleIdentifier = "com.tinyspeck.slackmacgap";
constexpr std::string_view classicTeamsBundleIdentifier = "com.microsoft.teams";
constexpr std::string_view newTeamsBundleIdentifier = "com.microsoft.teams2";
constexpr std::string_view faceTimeBundleIdentifier = "com.apple.FaceTime";
constexpr std::string_view teamsTitleMarker = " | Microsoft Teams";
constexpr std::string_view teamsTitleSeparator = " | ";
constexpr std::string_view audioIndicator = " \U0001F50A";
constexpr std::string_view browserTitleSeparator = " \u2013 ";
constexpr std::array callControlLabels = { "Calling indicators", "Meeting controls", "Calling controls" };

// The notification centre's tree can refer back to itself; the depth bound alone does not keep the
// walk small.
constexpr int maxNotificationCenterVisits = 10000;

const RegularExpression& slackHuddlePattern()
{
    static const RegularExpression pattern = RegularExpression::literal("^.* \\| (.+) \\| (\\d?\\d?:?\\d\\d:\\d\\d)$");
    return pattern;
}

const RegularExpression& callDurationPattern()
{
    static const RegularExpression pattern = RegularExpression::literal("^\\d?\\d?:?\\d?\\d:\\d\\d(\\s.+)?$");
    return pattern;
}

const RegularExpression& teamsTitleCleanUpPattern()
{
    static const RegularExpression pattern = RegularExpression::literal("^(.+) \\((.+)\\)$");
    return pattern;
}

bool matches(const RegularExpression& pattern, std::string_view text)
{
    return pattern.firstMatch(text).has_value();
}

std::optional<std::string> firstGroup(const RegularExpression& pattern, std::string_view text)
{
    auto groups = pattern.firstMatch(text);
    if (!groups || groups->size() < 2)
        return std::nullopt;
    return (*groups)[1];
}

std::string removingAll(std::string_view text, std::string_view part)
{
    std::string result;
    size_t start = 0;
    for (size_t found = text.find(part); found != std::string_view::npos; found = text.find(part, start)) {
        result.append(text.substr(start, found - start));
        start = found + part.size();
    }
    return result.append(text.substr(start));
}

std::vector<RunningApplication> runningApplications(std::string_view bundleIdentifier)
{
    std::vector<RunningApplication> found;
    for (RunningApplication& application : platform().workspace().runningApplications()) {
        if (application.bundleIdentifier == bundleIdentifier)
            found.push_back(std::move(application));
    }
    return found;
}

std::vector<std::string> windowTitles(std::string_view bundleIdentifier)
{
    std::vector<std::string> titles;
    for (const RunningApplication& application : runningApplications(bundleIdentifier)) {
        auto element = platform().accessibility().createApplication(application.processIdentifier);
        if (!element)
            continue;
        for (const AXUIElement& window : ElementHelpers::windows(*element)) {
            if (auto title = ElementHelpers::titleText(window))
                titles.push_back(std::move(*title));
        }
    }
    return titles;
}

bool hasRole(const AXUIElement& element, std::string_view role)
{
    return ElementHelpers::roleText(element) == role;
}

std::optional<std::string> slackHuddleTitle()
{
    for (const std::string& title : windowTitles(slackBundleIdentifier)) {
        if (auto meeting = firstGroup(slackHuddlePattern(), title))
            return meeting;
    }
    return std::nullopt;
}

std::string withoutTrailingParenthesis(const std::string& title)
{
    return firstGroup(teamsTitleCleanUpPattern(), title).value_or(title);
}

std::optional<std::string> newTeamsMeetingTitle(const VDActivity& activity)
{
    if (!activity.details.windowTitle)
        return std::nullopt;
    std::string title = removingAll(*activity.details.windowTitle, teamsTitleMarker);
    if (title.empty())
        return std::nullopt;
    for (const std::string& part : TextHelpers::componentsSeparatedBy(title, teamsTitleSeparator)) {
        if (part != "Microsoft Teams" && part != "Chat")
            return withoutTrailingParenthesis(part);
    }
    return std::nullopt;
}

std::optional<AXUIElement> callWindowBody(const AXUIElement& window)
{
    auto webArea = ElementHelpers::firstElementWithRole(ElementHelpers::children(window), AX::webAreaRole);
    if (!webArea)
        return std::nullopt;
    auto body = ElementHelpers::firstElementWithRole(ElementHelpers::children(*webArea), AX::groupRole);
    if (!body || ElementHelpers::stringAttribute(AX::domIdentifier, *body) != "child-window-body")
        return std::nullopt;
    return body;
}

std::optional<AXUIElement> descendant(const AXUIElement& element, const ElementHelpers::ElementTest& test)
{
    return ElementHelpers::firstDescendant(element, test, UIElementUtilities::maxRecursionLevel());
}

bool showsRunningCallDuration(const AXUIElement& body)
{
    auto toolbar = descendant(body, [](const AXUIElement& element) { return hasRole(element, AX::toolbarRole); });
    if (!toolbar)
        return false;
    auto duration = descendant(*toolbar, [](const AXUIElement& element) {
        return ElementHelpers::stringAttribute(AX::domIdentifier, element) == "call-duration-custom";
    });
    if (!duration)
        return false;
    auto text = descendant(*duration, [](const AXUIElement& element) { return hasRole(element, AX::staticTextRole); });
    auto value = text ? ElementHelpers::valueText(*text) : std::nullopt;
    return value && matches(callDurationPattern(), *value);
}

bool showsCallControls(const AXUIElement& body)
{
    return descendant(body, [](const AXUIElement& element) {
        if (!hasRole(element, AX::groupRole))
            return false;
        auto label = ElementHelpers::stringAttribute(AX::description, element);
        return label
            && std::find(callControlLabels.begin(), callControlLabels.end(), *label) != callControlLabels.end();
    }).has_value();
}

std::optional<std::string> classicTeamsMeetingTitle(const VDActivity& activity)
{
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    auto application = platform().accessibility().createApplication(activity.applicationProcessIdentifier);
    if (!application)
        return std::nullopt;
    for (const AXUIElement& window : ElementHelpers::windows(*application)) {
        auto body = callWindowBody(window);
        if (!body || !showsRunningCallDuration(*body) || !showsCallControls(*body))
            continue;
        if (auto title = ElementHelpers::titleText(window))
            return withoutTrailingParenthesis(*title);
    }
    return std::nullopt;
}

// Teams is only read while it is the sampled application: its window title is the activity's.
std::optional<std::string> teamsMeetingTitle(const VDActivity* activity)
{
    if (!activity || !activity->applicationBundleIdentifier)
        return std::nullopt;
    if (*activity->applicationBundleIdentifier == newTeamsBundleIdentifier)
        return newTeamsMeetingTitle(*activity);
    if (*activity->applicationBundleIdentifier == classicTeamsBundleIdentifier)
        return classicTeamsMeetingTitle(*activity);
    return std::nullopt;
}

std::vector<std::string> staticTexts(const ElementList& elements)
{
    std::vector<std::string> texts;
    for (const AXUIElement& element : elements) {
        if (!hasRole(element, AX::staticTextRole))
            continue;
        auto value = ElementHelpers::valueText(element);
        if (!value)
            continue;
        // Call controls wrap names in directional embedding marks.
        std::string text = TextHelpers::removingCodePoint(TextHelpers::removingCodePoint(*value, U'\u202A'), U'\u202C');
        if (!text.empty())
            texts.push_back(std::move(text));
    }
    return texts;
}

bool hasFaceTimeButton(const ElementList& elements)
{
    return std::any_of(elements.begin(), elements.end(), [](const AXUIElement& element) {
        if (!hasRole(element, AX::buttonRole))
            return false;
        auto description = ElementHelpers::stringAttribute(AX::description, element);
        return description && TextHelpers::contains(TextHelpers::lowercased(*description), "facetime");
    });
}

std::optional<std::string> faceTimeCallTitleInScrollArea(const AXUIElement& scrollArea)
{
    auto provider = ElementHelpers::firstElementWithRole(ElementHelpers::children(scrollArea), "AXOpaqueProviderGroup");
    if (!provider)
        return std::nullopt;
    auto group = ElementHelpers::firstElementWithRole(ElementHelpers::children(*provider), AX::groupRole);
    if (!group)
        return std::nullopt;
    ElementList elements = ElementHelpers::children(*group);
    std::vector<std::string> texts = staticTexts(elements);
    bool showsDuration = std::any_of(
        texts.begin(), texts.end(), [](const std::string& text) { return matches(callDurationPattern(), text); });
    if (!showsDuration || !hasFaceTimeButton(elements))
        return std::nullopt;
    return texts.front();
}

// The first scroll area showing a call ends the walk; the others are not entered.
std::optional<std::string> faceTimeCallTitleBelow(const AXUIElement& root, int depth)
{
    std::optional<std::string> title;
    if (depth < 1)
        return title;
    ElementTreeWalker(maxNotificationCenterVisits).walk(root, depth - 1, [&](const AXUIElement& element, int) {
        if (!hasRole(element, AX::scrollAreaRole))
            return TreeWalkDecision::continueWalk;
        title = faceTimeCallTitleInScrollArea(element);
        return title ? TreeWalkDecision::stop : TreeWalkDecision::skipChildren;
    });
    return title;
}

bool isBrowserProcess(std::string_view bundleIdentifier)
{
    if (TextHelpers::contains(bundleIdentifier, "com.apple.WebKit.GPU"))
        return true;
    const auto& browsers = ApplicationList::webBrowsing();
    return std::any_of(browsers.begin(), browsers.end(),
        [&](const std::string& browser) { return TextHelpers::contains(bundleIdentifier, browser); });
}

// Chrome puts the page title first, Safari after the tab group or profile.
std::string pageTitleOfBrowserTitle(const std::string& title, std::string_view bundleIdentifier)
{
    std::string lowercased = TextHelpers::lowercased(bundleIdentifier);
    size_t separator = title.find(browserTitleSeparator);
    if (TextHelpers::contains(lowercased, "chrom"))
        return title.substr(0, separator);
    bool isSafari
        = TextHelpers::contains(lowercased, "safari") || TextHelpers::contains(lowercased, "com.apple.webkit");
    if (isSafari && separator != std::string::npos)
        return title.substr(separator + browserTitleSeparator.size());
    return title;
}

std::optional<std::string> browserWindowTitle(
    const VDActivity* activity, const std::optional<std::string>& applicationName, std::string_view bundleIdentifier)
{
    if (!activity || !activity->details.windowTitle)
        return std::nullopt;
    std::optional<std::string> title = removingAll(*activity->details.windowTitle, audioIndicator);
    if (applicationName)
        title = TextHelpers::removingTitlePrefixesAndSuffixes(*title, *applicationName, true);
    if (!title)
        return std::nullopt;
    return pageTitleOfBrowserTitle(*title, bundleIdentifier);
}

struct ServiceAndMeetingTitle {
    std::optional<std::string> serviceName;
    std::optional<std::string> meetingTitle;
};

ServiceAndMeetingTitle browserService(
    const std::optional<std::string>& address, const std::optional<std::string>& title)
{
    if (address && TextHelpers::contains(*address, "meet.google.com")) {
        auto meeting = title ? TextHelpers::removingTitlePrefixesAndSuffixes(*title, "Meet", true) : std::nullopt;
        if (meeting)
            meeting = TextHelpers::componentsSeparatedBy(*meeting, " - ").front();
        return { "Google Meet", meeting };
    }
    bool isWhereby
        = address ? TextHelpers::contains(*address, "whereby.com") : title && TextHelpers::contains(*title, " Whereby");
    if (isWhereby) {
        auto room = title ? std::optional(TextHelpers::removingPrefixIfPresent(
                        TextHelpers::componentsSeparatedBy(*title, " ").front(), "/"))
                          : std::nullopt;
        return { "Whereby", room };
    }
    return {};
}

} // namespace

std::optional<std::string> AccessibilityCallDetection::meetingTitle(
    std::string_view bundleIdentifier, const VDActivity* activity)
{
    if (TextHelpers::contains(bundleIdentifier, slackBundleIdentifier))
        return slackHuddleTitle();
    if (TextHelpers::contains(bundleIdentifier, classicTeamsBundleIdentifier))
        return teamsMeetingTitle(activity);
    return std::nullopt;
}

std::optional<std::string> AccessibilityCallDetection::faceTimeTitle()
{
    for (const std::string& title : windowTitles(faceTimeBundleIdentifier)) {
        // A window that only names the application or a list has fewer words than a call with someone.
        if (TextHelpers::componentsSeparatedBy(title, " ").size() > 2)
            return title;
    }
    return std::nullopt;
}

std::optional<std::string> AccessibilityCallDetection::notificationCenterCallTitle(
    const RunningApplication& notificationCenter)
{
    auto application = platform().accessibility().createApplication(notificationCenter.processIdentifier);
    if (!application)
        return std::nullopt;
    return faceTimeCallTitleBelow(*application, UIElementUtilities::maxRecursionLevel());
}

std::optional<ApplicationAndMetadata> AccessibilityCallDetection::browserCall(
    const PowerManagementAssertions::PIDAndRunningApplication& process, const VDActivity* activity,
    const ExcludedApplications& excludedApplications)
{
    if (!process.bundleIdentifier || process.bundleIdentifier->empty())
        return std::nullopt;
    const std::string& identifier = *process.bundleIdentifier;
    std::string lowercased = TextHelpers::lowercased(identifier);
    if (excludedApplications.contains(identifier) || TextHelpers::hasPrefix(lowercased, "com.steinberg")
        || TextHelpers::hasPrefix(lowercased, "net.steinberg") || !isBrowserProcess(identifier))
        return std::nullopt;
    auto address = activity ? activity->details.documentPath : std::nullopt;
    auto title = browserWindowTitle(activity, process.applicationName, identifier);
    auto [serviceName, meetingTitle] = browserService(address, title);
    return ApplicationAndMetadata { identifier,
        CallMetadata { serviceName, process.applicationName, meetingTitle,
            process.audioInAndOutAssertionsHaveBeenRecordedSeparately } };
}

} // namespace vardel
