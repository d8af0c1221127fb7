#include "activity/ElementHelpers.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementTreeWalker.h"
#include "activity/UIElementUtilities.h"
#include "platform/Platform.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vardel::ElementHelpers {

namespace {

// Parent walks give up after this many elements, the starting one included.
constexpr int maxParentChainLength = 100;

// The depth bound alone lets a tree whose children are shared or refer back to their ancestors grow a
// search exponentially; past this many elements it gives up.
constexpr int maxDescendantVisits = 10000;

bool hasRole(const AXUIElement& element, std::string_view role)
{
    return roleText(element) == role;
}

bool isWebArea(const AXUIElement& element)
{
    return hasRole(element, AX::webAreaRole);
}

// The nearest element with the web-area role, starting with the given one.
std::optional<AXUIElement> nearestWebArea(std::optional<AXUIElement> element)
{
    for (int examined = 0; element && examined < maxParentChainLength; ++examined) {
        if (isWebArea(*element))
            return element;
        element = UIElementUtilities::parentOfUIElement(*element);
    }
    return std::nullopt;
}

bool isHttpAddress(const std::optional<std::string>& address)
{
    return address && (TextHelpers::hasPrefix(*address, "http://") || TextHelpers::hasPrefix(*address, "https://"));
}

float probeCoordinate(double origin, double extent, int offset, bool centre)
{
    double coordinate = centre ? origin + extent / 2 : origin + offset;
    // The hit test takes single precision; keep absurd geometry within its range.
    constexpr double limit = std::numeric_limits<float>::max();
    return static_cast<float>(std::isnan(coordinate) ? 0 : std::clamp(coordinate, -limit, limit));
}

std::optional<AXUIElement> webAreaUnderProbe(const AXUIElement& window, WebAreaProbe probe)
{
    auto application = UIElementUtilities::parentOfUIElement(window);
    if (!application)
        return std::nullopt;
    Point origin = UIElementUtilities::originOfUIElement(window);
    Size size = UIElementUtilities::sizeOfUIElement(window);
    float x = probeCoordinate(origin.x, size.width, probe.horizontalOffset, probe.centreHorizontally);
    float y = probeCoordinate(origin.y, size.height, probe.verticalOffset, probe.centreVertically);
    auto hit = platform().accessibility().copyElementAtPosition(*application, x, y);
    if (!hit.ok())
        return std::nullopt;
    return enclosingWebArea(*hit.value);
}

void takeFirstWebAreaTitle(const ElementList& webAreas, VDActivity& activity)
{
    for (const AXUIElement& webArea : webAreas) {
        auto title = titleText(webArea);
        if (title && !title->empty()) {
            activity.details.windowTitle = title;
            return;
        }
    }
}

} // namespace

std::optional<std::string> stringAttribute(std::string_view attribute, const AXUIElement& element)
{
    return UIElementUtilities::stringValueOfAttribute(attribute, element);
}

ElementList elementArrayAttribute(std::string_view attribute, const AXUIElement& element)
{
    ElementList elements;
    auto value = UIElementUtilities::valueOfAttribute(attribute, element);
    if (!value || !value->asList())
        return elements;
    for (const Value& member : *value->asList()) {
        if (const AXUIElement* memberElement = member.asElement())
            elements.push_back(*memberElement);
    }
    return elements;
}

std::optional<std::string> valueText(const AXUIElement& element)
{
    return stringAttribute(AX::value, element);
}
std::optional<std::string> titleText(const AXUIElement& element)
{
    return stringAttribute(AX::title, element);
}
std::optional<std::string> roleText(const AXUIElement& element)
{
    return stringAttribute(AX::role, element);
}
ElementList children(const AXUIElement& element)
{
    return elementArrayAttribute(AX::children, element);
}
ElementList windows(const AXUIElement& element)
{
    return elementArrayAttribute(AX::windows, element);
}
ElementList contents(const AXUIElement& element)
{
    return elementArrayAttribute(AX::contents, element);
}
ElementList selectedRows(const AXUIElement& element)
{
    return elementArrayAttribute(AX::selectedRows, element);
}

ElementList childrenOfElements(const ElementList& elements)
{
    ElementList all;
    for (const AXUIElement& element : elements) {
        ElementList elementChildren = children(element);
        all.insert(all.end(), elementChildren.begin(), elementChildren.end());
    }
    return all;
}

ElementList childrenInNavigationOrder(const AXUIElement& element)
{
    return elementArrayAttribute(AX::childrenInNavigationOrder, element);
}

std::optional<std::string> urlStringOfElement(const AXUIElement& element)
{
    auto value = UIElementUtilities::valueOfAttribute(AX::url, element);
    if (!value)
        return std::nullopt;
    if (const Url* url = value->asUrl())
        return url->absoluteString;
    if (const std::string* text = value->asText())
        return *text;
    return std::nullopt;
}

bool elementListContains(const ElementList& elements, const AXUIElement& element)
{
    return std::find(elements.begin(), elements.end(), element) != elements.end();
}

std::optional<AXUIElement> firstElementWithRole(const ElementList& elements, std::string_view role)
{
    auto found = std::find_if(elements.begin(), elements.end(), [&](const auto& e) { return hasRole(e, role); });
    return found == elements.end() ? std::nullopt : std::optional(*found);
}

std::optional<AXUIElement> lastElementWithRole(const ElementList& elements, std::string_view role)
{
    auto found = std::find_if(elements.rbegin(), elements.rend(), [&](const auto& e) { return hasRole(e, role); });
    return found == elements.rend() ? std::nullopt : std::optional(*found);
}

std::optional<AXUIElement> firstElementWithRoleAndSubrole(
    const ElementList& elements, std::string_view role, std::string_view subrole)
{
    auto found = std::find_if(elements.begin(), elements.end(), [&](const auto& element) {
        return hasRole(element, role) && stringAttribute(AX::subrole, element) == subrole;
    });
    return found == elements.end() ? std::nullopt : std::optional(*found);
}

std::optional<AXUIElement> firstElementWithDOMIdentifier(const ElementList& elements, std::string_view identifier)
{
    auto found = std::find_if(elements.begin(), elements.end(),
        [&](const auto& element) { return stringAttribute(AX::domIdentifier, element) == identifier; });
    return found == elements.end() ? std::nullopt : std::optional(*found);
}

std::optional<AXUIElement> firstElementWithIdentifier(const ElementList& elements, std::string_view identifier)
{
    auto found = std::find_if(elements.begin(), elements.end(),
        [&](const auto& element) { return stringAttribute(AX::identifier, element) == identifier; });
    return found == elements.end() ? std::nullopt : std::optional(*found);
}

std::optional<AXUIElement> firstChildWithRole(const AXUIElement& element, std::string_view role)
{
    return firstElementWithRole(children(element), role);
}

bool isHeading(const AXUIElement& element)
{
    return hasRole(element, AX::headingRole);
}

std::optional<std::string> firstNonEmptyText(const AXUIElement& element, std::initializer_list<const char*> attributes)
{
    for (const char* attribute : attributes) {
        auto text = stringAttribute(attribute, element);
        if (text && !text->empty())
            return text;
    }
    return std::nullopt;
}

std::optional<std::string> textOfFirstChildWithRole(
    const AXUIElement& parent, std::initializer_list<const char*> roles, std::initializer_list<const char*> attributes)
{
    ElementList parentChildren = children(parent);
    for (const char* role : roles) {
        auto candidate = firstElementWithRole(parentChildren, role);
        if (!candidate)
            continue;
        if (auto text = firstNonEmptyText(*candidate, attributes))
            return text;
    }
    return std::nullopt;
}

ElementList findWebAreas(const AXUIElement& window, VDActivity* activity, WebAreaProbe probe)
{
    ElementList scrollAreas;
    for (const AXUIElement& child : children(window)) {
        if (hasRole(child, AX::scrollAreaRole))
            scrollAreas.push_back(child);
    }
    ElementList webAreas;
    for (const AXUIElement& candidate : childrenOfElements(scrollAreas)) {
        if (isWebArea(candidate))
            webAreas.push_back(candidate);
    }
    if (webAreas.empty()) {
        auto probed = webAreaUnderProbe(window, probe);
        if (probed && !elementListContains(webAreas, *probed))
            webAreas.push_back(*probed);
    }
    if (activity && !activity->details.windowTitle)
        takeFirstWebAreaTitle(webAreas, *activity);
    return webAreas;
}

std::optional<AXUIElement> enclosingWebArea(const AXUIElement& element)
{
    auto current = nearestWebArea(element);
    std::optional<AXUIElement> result = current;
    // A parent chain that loops back must not keep the walk going.
    ElementList visited;
    while (current && !elementListContains(visited, *current)) {
        visited.push_back(*current);
        if (isHttpAddress(urlStringOfElement(*current)))
            result = current;
        current = nearestWebArea(UIElementUtilities::parentOfUIElement(*current));
    }
    return result;
}

std::optional<AXUIElement> firstDescendant(const AXUIElement& element, const ElementTest& test, int depth)
{
    if (depth < 1)
        return std::nullopt;
    std::optional<AXUIElement> found;
    ElementTreeWalker(maxDescendantVisits).walk(element, depth - 1, [&](const AXUIElement& candidate, int) {
        if (!test(candidate))
            return TreeWalkDecision::continueWalk;
        found = candidate;
        return TreeWalkDecision::stop;
    });
    return found;
}

std::optional<AXUIElement> descendFirstChildren(const AXUIElement& element, const ElementTest& test, int depth)
{
    std::optional<AXUIElement> current = element;
    for (; current && depth >= 0; --depth) {
        if (test(*current))
            return current;
        ElementList currentChildren = children(*current);
        if (currentChildren.empty())
            return std::nullopt;
        current = currentChildren.front();
    }
    return std::nullopt;
}

} // namespace vardel::ElementHelpers
