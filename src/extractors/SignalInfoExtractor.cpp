// Where Signal keeps the conversation name, from each window down:
//
//   window
//   └ the first web area of the window
//     └ following first children: the element whose DOM identifier is "app-container"
//       └ following first children: the AXGroup whose DOM classes include "NavTabs__Container"
//         (the navigation column together with the tab panels it switches)
//         └ among its children: the AXGroup with subrole AXTabPanel (the open tab)
//           └ first AXGroup child (the conversation stack)
//             └ first AXGroup child (the open conversation)
//               └ first AXGroup child (the conversation header)
//                 └ its first AXButton child, else its first AXStaticText child
//
// A candidate's text is its AXValue, else its AXTitle, else its AXDescription (the first that is
// not empty): a static text carries the name as its value, the header button as its title or, when
// the name is a label, its description. Invisible control characters are removed from the name.
#include "extractors/SignalInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

#include <optional>
#include <string>

namespace vardel {

namespace {

using namespace ElementHelpers;

constexpr const char* applicationContainerIdentifier = "app-container";
constexpr const char* navigationContainerClass = "NavTabs__Container";
// Groups between the open tab and the conversation header.
constexpr int headerDepthBelowTabPanel = 3;

bool hasDOMClass(const AXUIElement& element, std::string_view className)
{
    auto classes = UIElementUtilities::valueOfAttribute(AX::domClassList, element);
    if (!classes || !classes->asList())
        return false;
    for (const Value& member : *classes->asList()) {
        if (const std::string* text = member.asText(); text && *text == className)
            return true;
    }
    return false;
}

bool isApplicationContainer(const AXUIElement& element)
{
    return stringAttribute(AX::domIdentifier, element) == applicationContainerIdentifier;
}

bool isNavigationContainer(const AXUIElement& element)
{
    return roleText(element) == AX::groupRole && hasDOMClass(element, navigationContainerClass);
}

std::optional<AXUIElement> conversationHeader(const AXUIElement& webArea)
{
    int depth = UIElementUtilities::maxRecursionLevel();
    auto application = descendFirstChildren(webArea, isApplicationContainer, depth);
    if (!application)
        return std::nullopt;
    auto navigation = descendFirstChildren(*application, isNavigationContainer, depth);
    if (!navigation)
        return std::nullopt;
    auto group = firstElementWithRoleAndSubrole(children(*navigation), AX::groupRole, AX::tabPanelRole);
    for (int level = 0; group && level < headerDepthBelowTabPanel; ++level)
        group = firstElementWithRole(children(*group), AX::groupRole);
    return group;
}

std::optional<std::string> conversationNameInWindow(const AXUIElement& window, VDActivity& activity)
{
    ElementList webAreas = findWebAreas(window, &activity);
    if (webAreas.empty())
        return std::nullopt;
    auto header = conversationHeader(webAreas.front());
    if (!header)
        return std::nullopt;
    auto name = textOfFirstChildWithRole(
        *header, { AX::buttonRole, AX::staticTextRole }, { AX::value, AX::title, AX::description });
    if (!name)
        return std::nullopt;
    std::string cleaned = TextHelpers::removingInvisibleControlCharacters(*name);
    return cleaned.empty() ? std::nullopt : std::optional(cleaned);
}

} // namespace

void SignalInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        if (auto name = conversationNameInWindow(window, activity)) {
            activity.details.contextPath = std::vector { *name };
            return;
        }
    }
}

} // namespace vardel
