#pragma once

#include "platform/AXUIElement.h"
#include "platform/VDActivity.h"

#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The search half of the accessibility layer: typed reads, child lists, list searches and the
// bounded tree walks every extractor is built from.
namespace vardel::ElementHelpers {

using ElementList = std::vector<AXUIElement>;
using ElementTest = std::function<bool(const AXUIElement&)>;

std::optional<std::string> stringAttribute(std::string_view attribute, const AXUIElement&);
// Empty when the attribute is absent or not a list; members that are not elements are dropped.
ElementList elementArrayAttribute(std::string_view attribute, const AXUIElement&);

std::optional<std::string> valueText(const AXUIElement&);
std::optional<std::string> titleText(const AXUIElement&);
std::optional<std::string> roleText(const AXUIElement&);
ElementList children(const AXUIElement&);
ElementList windows(const AXUIElement&);
ElementList contents(const AXUIElement&);
ElementList selectedRows(const AXUIElement&);
ElementList childrenOfElements(const ElementList&);
ElementList childrenInNavigationOrder(const AXUIElement&);

// The element's address: a URL value's absolute string, or a text value as it is.
std::optional<std::string> urlStringOfElement(const AXUIElement&);

bool elementListContains(const ElementList&, const AXUIElement&);
std::optional<AXUIElement> firstElementWithRole(const ElementList&, std::string_view role);
std::optional<AXUIElement> lastElementWithRole(const ElementList&, std::string_view role);
std::optional<AXUIElement> firstElementWithRoleAndSubrole(
    const ElementList&, std::string_view role, std::string_view subrole);
std::optional<AXUIElement> firstElementWithDOMIdentifier(const ElementList&, std::string_view identifier);
std::optional<AXUIElement> firstElementWithIdentifier(const ElementList&, std::string_view identifier);
std::optional<AXUIElement> firstChildWithRole(const AXUIElement&, std::string_view role);
bool isHeading(const AXUIElement&);

// The first non-empty text among the element's attributes, in the order given.
std::optional<std::string> firstNonEmptyText(const AXUIElement&, std::initializer_list<const char*> attributes);
// For each role in turn, the first child with that role; the first such child with a non-empty text
// among the attributes gives it.
std::optional<std::string> textOfFirstChildWithRole(
    const AXUIElement& parent, std::initializer_list<const char*> roles, std::initializer_list<const char*> attributes);

struct WebAreaProbe {
    int horizontalOffset = 0;
    bool centreHorizontally = true;
    int verticalOffset = 0;
    bool centreVertically = true;
};

// The web content areas of a window: those inside its scroll areas, else the one under a probe
// point. When an activity is given and has no window title yet, the first non-empty web-area
// title becomes it.
ElementList findWebAreas(const AXUIElement& window, VDActivity* activity, WebAreaProbe probe = {});
// The outermost enclosing web area with an http(s) address, else the nearest one.
std::optional<AXUIElement> enclosingWebArea(const AXUIElement&);

// Depth-first, pre-order; depth below 1 finds nothing, and so does a search that has looked at
// ten thousand elements.
std::optional<AXUIElement> firstDescendant(const AXUIElement&, const ElementTest&, int depth);
// Follows first children only; depth 0 still tests the element itself.
std::optional<AXUIElement> descendFirstChildren(const AXUIElement&, const ElementTest&, int depth);

} // namespace vardel::ElementHelpers
