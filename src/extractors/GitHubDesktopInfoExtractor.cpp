// Path from each window to the repository name:
//   window → its first web area
//          → first "AXGroup" child, three times
//          → the child with "AXDOMIdentifier" "desktop-app-contents"
//          → its child with "AXDOMIdentifier" "desktop-app-toolbar"
//          → the first child whose "AXDOMClassList" holds "toolbar-button" (current repository)
//          → first "AXButton" child
//          → first "AXGroup" child (the button's two lines of text)
//          → last "AXGroup" child (the name, below the "Current Repository" caption)
//          → first "AXStaticText" child, whose "AXValue" is the repository name.

#include "extractors/GitHubDesktopInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/EnhancedAccessibility.h"
#include "activity/UIElementUtilities.h"

#include <algorithm>
#include <array>

namespace vardel {

namespace {

using ElementHelpers::ElementList;

constexpr int groupLevelsAboveContents = 3;

enum class Pick { first, last };

struct Step {
    const char* role;
    Pick pick;
};

constexpr std::array stepsFromButtonToName {
    Step { "AXButton", Pick::first },
    Step { AX::groupRole, Pick::first },
    Step { AX::groupRole, Pick::last },
    Step { "AXStaticText", Pick::first },
};

std::optional<AXUIElement> childWithRole(const AXUIElement& element, const Step& step)
{
    ElementList elementChildren = ElementHelpers::children(element);
    return step.pick == Pick::first ? ElementHelpers::firstElementWithRole(elementChildren, step.role)
                                    : ElementHelpers::lastElementWithRole(elementChildren, step.role);
}

std::optional<AXUIElement> childWithDOMIdentifier(const AXUIElement& element, std::string_view identifier)
{
    return ElementHelpers::firstElementWithDOMIdentifier(ElementHelpers::children(element), identifier);
}

bool hasDOMClass(const AXUIElement& element, std::string_view domClass)
{
    auto value = UIElementUtilities::valueOfAttribute(AX::domClassList, element);
    const Value::List* classes = value ? value->asList() : nullptr;
    return classes && std::any_of(classes->begin(), classes->end(), [&](const Value& member) {
        const std::string* name = member.asText();
        return name && *name == domClass;
    });
}

std::optional<AXUIElement> toolbar(const AXUIElement& webArea)
{
    std::optional<AXUIElement> element = webArea;
    for (int level = 0; element && level < groupLevelsAboveContents; ++level)
        element = ElementHelpers::firstElementWithRole(ElementHelpers::children(*element), AX::groupRole);
    if (element)
        element = childWithDOMIdentifier(*element, "desktop-app-contents");
    if (element)
        element = childWithDOMIdentifier(*element, "desktop-app-toolbar");
    return element;
}

std::optional<AXUIElement> currentRepositoryButton(const AXUIElement& toolbarElement)
{
    ElementList buttons = ElementHelpers::children(toolbarElement);
    auto found = std::find_if(
        buttons.begin(), buttons.end(), [](const AXUIElement& child) { return hasDOMClass(child, "toolbar-button"); });
    return found == buttons.end() ? std::nullopt : std::optional(*found);
}

std::optional<std::string> repositoryName(const AXUIElement& window, VDActivity& activity)
{
    auto webAreas = ElementHelpers::findWebAreas(window, &activity);
    if (webAreas.empty())
        return std::nullopt;
    auto element = toolbar(webAreas.front());
    if (element)
        element = currentRepositoryButton(*element);
    for (const Step& step : stepsFromButtonToName) {
        if (!element)
            return std::nullopt;
        element = childWithRole(*element, step);
    }
    return element ? ElementHelpers::valueText(*element) : std::nullopt;
}

} // namespace

void GitHubDesktopInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    if (!activity.accessibilityWindows)
        return;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        auto name = repositoryName(window, activity);
        if (name && !name->empty()) {
            activity.details.contextPath = { *name };
            return;
        }
    }
}

} // namespace vardel
