// Path from each window to the selected note's lines:
//   window → first "AXSplitGroup" child → first "AXScrollArea" child (the note list)
//          → first "AXTable" child → its first "AXSelectedRows" entry → first "AXCell" child
//          → the cell's "AXStaticText" children, the topmost of which holds the note's title.
// Reading the children as an element list also covers systems whose "AXChildren" holds other
// values: those are dropped.

#include "extractors/NotesInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

#include <initializer_list>
#include <limits>

namespace vardel {

namespace {

constexpr size_t maximumTitleLength = 50;
// The list shows a note without a title of its own by an excerpt that begins with an ellipsis.
constexpr std::string_view excerptMarker = "\u2026";

// Follows the first child of each role in turn.
std::optional<AXUIElement> followingFirstChildren(
    std::optional<AXUIElement> element, std::initializer_list<std::string_view> roles)
{
    for (std::string_view role : roles) {
        if (!element)
            return std::nullopt;
        element = ElementHelpers::firstChildWithRole(*element, role);
    }
    return element;
}

std::optional<AXUIElement> selectedNoteCell(const AXUIElement& window)
{
    auto noteList = followingFirstChildren(window, { "AXSplitGroup", AX::scrollAreaRole, "AXTable" });
    if (!noteList)
        return std::nullopt;
    auto rows = ElementHelpers::selectedRows(*noteList);
    if (rows.empty())
        return std::nullopt;
    return ElementHelpers::firstChildWithRole(rows.front(), "AXCell");
}

// The title is the cell's topmost line, whatever the order of its children.
std::optional<AXUIElement> topmostText(const AXUIElement& cell)
{
    std::optional<AXUIElement> topmost;
    double topmostY = std::numeric_limits<double>::infinity();
    for (const AXUIElement& child : ElementHelpers::children(cell)) {
        if (ElementHelpers::roleText(child) != "AXStaticText")
            continue;
        double y = UIElementUtilities::originOfUIElement(child).y;
        if (!topmost || y < topmostY) {
            topmost = child;
            topmostY = y;
        }
    }
    return topmost;
}

std::optional<std::string> selectedNoteTitle(const AXUIElement& window)
{
    auto cell = selectedNoteCell(window);
    if (!cell)
        return std::nullopt;
    auto text = topmostText(*cell);
    if (!text)
        return std::nullopt;
    auto title = ElementHelpers::valueText(*text);
    if (!title || TextHelpers::hasPrefix(*title, excerptMarker))
        return std::nullopt;
    return title;
}

bool isApplicationName(const std::string& title, const VDActivity& activity)
{
    const auto& name = activity.application.localizedName;
    return name && title == TextHelpers::removingInvisibleControlCharacters(*name);
}

} // namespace

void NotesInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    VDActivityDetails& details = activity.details;
    if (activity.accessibilityWindows) {
        for (const AXUIElement& window : *activity.accessibilityWindows) {
            if (auto title = selectedNoteTitle(window)) {
                // The beginning of a title is what tells notes apart, so the cut goes at its end.
                details.contextPath
                    = { TextHelpers::truncated(*title, maximumTitleLength, TextHelpers::TruncationPosition::tail) };
                return;
            }
        }
    }
    if (details.windowTitle && !isApplicationName(*details.windowTitle, activity))
        details.contextPath = { *details.windowTitle };
}

} // namespace vardel
