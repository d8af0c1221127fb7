// Path from each window to the breadcrumb:
//   window → its first web area
//          → first "AXGroup" child, three times
//          → the second of that element's "AXGroup" children (the first holds the sidebar)
//          → first "AXGroup" child, three times
//          → its children are the breadcrumb items.
// An item that is a group names its page by the "AXTitle" of its first "AXButton" child; an
// "AXLink" item by its own "AXDescription".

#include "extractors/NotionInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/EnhancedAccessibility.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

namespace vardel {

namespace {

using ElementHelpers::ElementList;

constexpr int groupLevelsAboveMainArea = 3;
constexpr size_t mainAreaIndex = 1;
constexpr int groupLevelsAboveBreadcrumb = 3;

ElementList childrenWithRole(const AXUIElement& element, std::string_view role)
{
    ElementList matching;
    for (const AXUIElement& child : ElementHelpers::children(element)) {
        if (ElementHelpers::roleText(child) == role)
            matching.push_back(child);
    }
    return matching;
}

std::optional<AXUIElement> descendingFirstGroups(std::optional<AXUIElement> element, int levels)
{
    for (int level = 0; element && level < levels; ++level)
        element = ElementHelpers::firstElementWithRole(ElementHelpers::children(*element), AX::groupRole);
    return element;
}

std::optional<AXUIElement> breadcrumb(const AXUIElement& webArea)
{
    auto container = descendingFirstGroups(webArea, groupLevelsAboveMainArea);
    if (!container)
        return std::nullopt;
    ElementList branches = childrenWithRole(*container, AX::groupRole);
    const AXUIElement* mainArea = TextHelpers::elementAt(branches, mainAreaIndex);
    if (!mainArea)
        return std::nullopt;
    return descendingFirstGroups(*mainArea, groupLevelsAboveBreadcrumb);
}

std::optional<std::string> pageName(const AXUIElement& item)
{
    auto role = ElementHelpers::roleText(item);
    if (role == AX::groupRole) {
        auto button = ElementHelpers::firstElementWithRole(ElementHelpers::children(item), "AXButton");
        return button ? ElementHelpers::titleText(*button) : std::nullopt;
    }
    if (role == "AXLink")
        return UIElementUtilities::stringValueOfAttribute(AX::description, item);
    return std::nullopt;
}

std::vector<std::string> breadcrumbPages(const AXUIElement& window, VDActivity& activity)
{
    std::vector<std::string> pages;
    auto webAreas = ElementHelpers::findWebAreas(window, &activity);
    if (webAreas.empty())
        return pages;
    auto items = breadcrumb(webAreas.front());
    if (!items)
        return pages;
    for (const AXUIElement& item : ElementHelpers::children(*items)) {
        if (auto name = pageName(item))
            pages.push_back(std::move(*name));
    }
    return pages;
}

} // namespace

void NotionInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, false);
    VDActivityDetails& details = activity.details;
    if (activity.accessibilityWindows) {
        for (const AXUIElement& window : *activity.accessibilityWindows) {
            auto pages = breadcrumbPages(window, activity);
            if (!pages.empty()) {
                details.contextPath = std::move(pages);
                return;
            }
        }
    }
    // Without a breadcrumb the page still counts as a document, named by its title.
    if (details.windowTitle && !details.windowTitle->empty() && !details.documentPath)
        details.documentPath = details.windowTitle;
}

} // namespace vardel
