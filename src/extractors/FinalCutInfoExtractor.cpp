// Panes: window → first "AXSplitGroup" child → its "AXGroup" children → the first "AXSplitGroup"
// child of each → the children of those split groups, ordered top to bottom.
// First outline: the panes are searched top to bottom, each pane itself before its children, for
// the first "AXScrollArea" whose "AXContents" hold an "AXOutline"; the topmost pane holding one
// is the library sidebar.
// Second outline: the first "AXSplitGroup" among the panes' children → first "AXScrollArea" child
// → first "AXOutline" child.
// Of each outline the first "AXRow" among its "AXSelectedRows" is followed up through
// "AXDisclosedByRow" to its root.

#include "extractors/FinalCutInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

namespace vardel {

namespace {

using ElementHelpers::ElementList;

constexpr const char* rowRole = "AXRow";
// Outlines are seldom more than a few levels deep; the bound only stops rows that disclose each
// other in a circle.
constexpr size_t maximumAncestryLength = 100;
// A row's text sits a level or two below it; each level may try two children, so the bound stays
// small.
constexpr int maximumRowTextDepth = 5;

ElementList panes(const AXUIElement& splitGroup)
{
    ElementList paneSplitGroups;
    for (const AXUIElement& child : ElementHelpers::children(splitGroup)) {
        if (ElementHelpers::roleText(child) != AX::groupRole)
            continue;
        if (auto inner = ElementHelpers::firstChildWithRole(child, AX::splitGroupRole))
            paneSplitGroups.push_back(*inner);
    }
    return ElementHelpers::childrenOfElements(paneSplitGroups);
}

// Frames have their origin at the bottom left, so a higher top edge is a larger value.
double topEdge(const AXUIElement& element)
{
    Rect frame = UIElementUtilities::frameOfUIElement(element);
    double edge = frame.origin.y + frame.size.height;
    return std::isnan(edge) ? -std::numeric_limits<double>::infinity() : edge;
}

// Stable, so that panes at the same height keep their order.
ElementList orderedTopToBottom(const ElementList& elements)
{
    std::vector<std::pair<double, AXUIElement>> keyed;
    for (const AXUIElement& element : elements)
        keyed.emplace_back(topEdge(element), element);
    std::stable_sort(
        keyed.begin(), keyed.end(), [](const auto& upper, const auto& lower) { return upper.first > lower.first; });
    ElementList ordered;
    for (auto& [edge, element] : keyed)
        ordered.push_back(std::move(element));
    return ordered;
}

std::optional<AXUIElement> outlineInContents(const AXUIElement& element)
{
    if (ElementHelpers::roleText(element) != AX::scrollAreaRole)
        return std::nullopt;
    return ElementHelpers::firstElementWithRole(ElementHelpers::contents(element), AX::outlineRole);
}

std::optional<AXUIElement> firstOutline(const ElementList& orderedPanes)
{
    for (const AXUIElement& pane : orderedPanes) {
        if (auto outline = outlineInContents(pane))
            return outline;
        for (const AXUIElement& child : ElementHelpers::children(pane)) {
            if (auto outline = outlineInContents(child))
                return outline;
        }
    }
    return std::nullopt;
}

std::optional<AXUIElement> secondOutline(const ElementList& orderedPanes)
{
    auto element
        = ElementHelpers::firstElementWithRole(ElementHelpers::childrenOfElements(orderedPanes), AX::splitGroupRole);
    for (const char* role : { AX::scrollAreaRole, AX::outlineRole }) {
        if (!element)
            return std::nullopt;
        element = ElementHelpers::firstChildWithRole(*element, role);
    }
    return element;
}

std::optional<AXUIElement> selectedRow(const std::optional<AXUIElement>& outline)
{
    if (!outline)
        return std::nullopt;
    return ElementHelpers::firstElementWithRole(ElementHelpers::selectedRows(*outline), rowRole);
}

std::optional<std::string> valueOfFirstChild(const AXUIElement& row, std::string_view role)
{
    auto child = ElementHelpers::firstChildWithRole(row, role);
    return child ? ElementHelpers::valueText(*child) : std::nullopt;
}

std::optional<std::string> rowText(const AXUIElement& row, int depth)
{
    if (depth > maximumRowTextDepth)
        return std::nullopt;
    if (auto text = valueOfFirstChild(row, "AXTextField"))
        return text;
    if (auto text = valueOfFirstChild(row, "AXStaticText"))
        return text;
    for (const char* role : { "AXCell", AX::groupRole }) {
        auto child = ElementHelpers::firstChildWithRole(row, role);
        if (auto text = child ? rowText(*child, depth + 1) : std::nullopt)
            return text;
    }
    return std::nullopt;
}

// The row's ancestry, root first.
ElementList ancestry(const AXUIElement& row)
{
    ElementList rows { row };
    while (rows.size() < maximumAncestryLength) {
        auto parent = UIElementUtilities::valueOfAttribute("AXDisclosedByRow", rows.front());
        const AXUIElement* parentRow = parent ? parent->asElement() : nullptr;
        if (!parentRow || ElementHelpers::elementListContains(rows, *parentRow))
            break;
        rows.insert(rows.begin(), *parentRow);
    }
    return rows;
}

void appendTexts(std::vector<std::string>& texts, const std::optional<AXUIElement>& row)
{
    if (!row)
        return;
    for (const AXUIElement& member : ancestry(*row)) {
        if (auto text = rowText(member, 0))
            texts.push_back(std::move(*text));
    }
}

std::vector<std::string> selectionPath(const AXUIElement& window)
{
    std::vector<std::string> texts;
    auto splitGroup = ElementHelpers::firstChildWithRole(window, AX::splitGroupRole);
    if (!splitGroup)
        return texts;
    ElementList orderedPanes = orderedTopToBottom(panes(*splitGroup));
    appendTexts(texts, selectedRow(firstOutline(orderedPanes)));
    appendTexts(texts, selectedRow(secondOutline(orderedPanes)));
    return texts;
}

bool hasContextPath(const VDActivity& activity)
{
    return activity.details.contextPath && !activity.details.contextPath->empty();
}

} // namespace

void FinalCutInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        if (hasContextPath(activity))
            return;
        auto texts = selectionPath(window);
        if (!texts.empty())
            activity.details.contextPath = std::move(texts);
    }
}

} // namespace vardel
