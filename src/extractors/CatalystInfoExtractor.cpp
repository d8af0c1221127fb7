// Path from each window to the heading that names what the window shows:
//   window → its first child, which must have the subrole "iOSContentGroup"
//          → first "AXGroup" child, three times
//          → first "AXHeading" child, whose "AXDescription" is the title.

#include "extractors/CatalystInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

namespace vardel {

namespace {

constexpr const char* contentGroupSubrole = "iOSContentGroup";
constexpr int groupLevelsAboveHeading = 3;

// Only a title that is missing or just the application's name is worth replacing.
bool titleSaysNothing(const VDActivity& activity)
{
    const auto& title = activity.details.windowTitle;
    if (!title)
        return true;
    const auto& name = activity.application.localizedName;
    return name && *title == TextHelpers::removingInvisibleControlCharacters(*name);
}

std::optional<AXUIElement> contentGroup(const AXUIElement& window)
{
    auto windowChildren = ElementHelpers::children(window);
    if (windowChildren.empty())
        return std::nullopt;
    const AXUIElement& first = windowChildren.front();
    if (UIElementUtilities::stringValueOfAttribute(AX::subrole, first) != contentGroupSubrole)
        return std::nullopt;
    return first;
}

std::optional<std::string> headingDescription(const AXUIElement& window)
{
    auto element = contentGroup(window);
    for (int level = 0; element && level < groupLevelsAboveHeading; ++level)
        element = ElementHelpers::firstElementWithRole(ElementHelpers::children(*element), AX::groupRole);
    if (!element)
        return std::nullopt;
    auto heading = ElementHelpers::firstElementWithRole(ElementHelpers::children(*element), AX::headingRole);
    if (!heading)
        return std::nullopt;
    return UIElementUtilities::stringValueOfAttribute(AX::description, *heading);
}

} // namespace

void CatalystInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows || !titleSaysNothing(activity))
        return;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        if (auto description = headingDescription(window)) {
            activity.details.windowTitle = TextHelpers::removingInvisibleControlCharacters(*description);
            return;
        }
    }
}

} // namespace vardel
