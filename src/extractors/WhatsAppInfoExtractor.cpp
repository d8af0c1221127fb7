// Where WhatsApp keeps the chat name.
//
// Native layout: the anchor is the window's first AXToolbar child, else the chain window → first
// AXGroup → first AXGroup → last AXGroup → first AXGroup. The first AXHeading below the anchor's
// children (depth-first, in child order) holds the name as its AXDescription.
//
// Web layout, tried when no window has a native name:
//
//   window
//   └ the first web area of the window
//     └ first AXGroup child, first AXGroup child, … (at most the recursion limit deep), until one of
//       them has an AXGroup child with subrole AXLandmarkBanner: the chat header. Checking all
//       children for the banner lets it sit behind a side bar at its level.
//       └ the header's first AXButton child (the chat's title button), else its first AXStaticText
//         child
//
// A candidate's text is its AXValue, else its AXDescription (the first that is not empty). In both
// layouts invisible control characters (direction marks around names) are removed from the name.
#include "extractors/WhatsAppInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/EnhancedAccessibility.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

#include <optional>
#include <string>

namespace vardel {

namespace {

using namespace ElementHelpers;

// This client draws its interface as web content that only assistive technology gets to see.
constexpr const char* webContentBundleIdentifier = "net.whatsapp.WhatsApp";

std::optional<std::string> cleanedName(const std::optional<std::string>& name)
{
    if (!name)
        return std::nullopt;
    std::string cleaned = TextHelpers::removingInvisibleControlCharacters(*name);
    return cleaned.empty() ? std::nullopt : std::optional(cleaned);
}

std::optional<AXUIElement> firstGroupChild(const std::optional<AXUIElement>& element)
{
    return element ? firstElementWithRole(children(*element), AX::groupRole) : std::nullopt;
}

std::optional<AXUIElement> nativeHeaderAnchor(const AXUIElement& window)
{
    ElementList windowChildren = children(window);
    if (auto toolbar = firstElementWithRole(windowChildren, AX::toolbarRole))
        return toolbar;
    auto content = firstGroupChild(firstElementWithRole(windowChildren, AX::groupRole));
    if (!content)
        return std::nullopt;
    return firstGroupChild(lastElementWithRole(children(*content), AX::groupRole));
}

// The anchor is a toolbar or a group, so the heading is always below it.
std::optional<AXUIElement> nativeHeading(const AXUIElement& anchor)
{
    int depth = UIElementUtilities::maxRecursionLevel();
    return TextHelpers::firstNonNil(
        children(anchor), [&](const AXUIElement& child) { return firstDescendant(child, isHeading, depth); });
}

std::optional<std::string> nativeNameInWindow(const AXUIElement& window)
{
    auto anchor = nativeHeaderAnchor(window);
    if (!anchor)
        return std::nullopt;
    auto heading = nativeHeading(*anchor);
    if (!heading)
        return std::nullopt;
    return cleanedName(stringAttribute(AX::description, *heading));
}

std::optional<AXUIElement> bannerAmongChildren(const AXUIElement& element)
{
    return firstElementWithRoleAndSubrole(children(element), AX::groupRole, AX::landmarkBannerSubrole);
}

std::optional<AXUIElement> webHeader(const AXUIElement& webArea)
{
    int depth = UIElementUtilities::maxRecursionLevel();
    std::optional<AXUIElement> group = webArea;
    for (int level = 0; group && level < depth; ++level) {
        if (auto banner = bannerAmongChildren(*group))
            return banner;
        group = firstGroupChild(group);
    }
    return std::nullopt;
}

std::optional<std::string> webNameInWindow(const AXUIElement& window, VDActivity& activity)
{
    ElementList webAreas = findWebAreas(window, &activity);
    if (webAreas.empty())
        return std::nullopt;
    auto header = webHeader(webAreas.front());
    return header ? cleanedName(textOfFirstChildWithRole(
               *header, { AX::buttonRole, AX::staticTextRole }, { AX::value, AX::description }))
                  : std::nullopt;
}

std::optional<std::string> webName(VDActivity& activity)
{
    if (activity.applicationBundleIdentifier == webContentBundleIdentifier)
        EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        if (auto name = webNameInWindow(window, activity))
            return name;
    }
    return std::nullopt;
}

} // namespace

void WhatsAppInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    auto name = TextHelpers::firstNonNil(*activity.accessibilityWindows, nativeNameInWindow);
    if (!name)
        name = webName(activity);
    if (name)
        activity.details.contextPath = std::vector { *name };
}

} // namespace vardel
