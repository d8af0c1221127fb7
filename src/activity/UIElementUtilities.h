#pragma once

#include "platform/Accessibility.h"
#include "platform/Geometry.h"
#include "platform/Value.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel {

// The access half of the accessibility layer: raw reads and writes of other applications'
// elements. Nothing here reports an error: a failed read is nothing, a zero point or size.
class UIElementUtilities {
public:
    static ProcessIdentifier processIdentifierOfUIElement(const AXUIElement&);
    static std::optional<std::vector<std::string>> attributeNamesOfUIElement(const AXUIElement&);
    static std::optional<std::vector<std::string>> actionNamesOfUIElement(const AXUIElement&);
    static std::optional<std::string> descriptionOfAction(std::string_view action, const AXUIElement&);
    static void performAction(std::string_view action, const AXUIElement&);

    static std::optional<Value> valueOfAttribute(std::string_view attribute, const AXUIElement&);
    static std::optional<std::string> stringValueOfAttribute(std::string_view attribute, const AXUIElement&);
    // Numbers, booleans included (true is 1).
    static std::optional<double> numberValueOfAttribute(std::string_view attribute, const AXUIElement&);
    static bool canSetAttribute(std::string_view attribute, const AXUIElement&);

    // Converts the text to the type of the attribute's current value and writes it; does nothing
    // when the attribute has no current value.
    static void setStringValue(std::string_view text, std::string_view attribute, const AXUIElement&);
    static void setNumberValue(const Value& number, std::string_view attribute, const AXUIElement&);

    static std::optional<AXUIElement> parentOfUIElement(const AXUIElement&);
    static std::optional<std::string> roleOfUIElement(const AXUIElement&);
    static std::optional<std::string> titleOfUIElement(const AXUIElement&);
    static bool isApplicationUIElement(const AXUIElement&);

    // Top-left-origin global coordinates, as the accessibility interface gives them.
    static Point originOfUIElement(const AXUIElement&);
    static Size sizeOfUIElement(const AXUIElement&);
    // Bottom-left-origin frame; the zero rectangle when position or size is missing.
    static Rect frameOfUIElement(const AXUIElement&);

    // Top-left-origin rectangle to bottom-left-origin, relative to the primary screen.
    static Rect flippedScreenBounds(Rect);
    // Bottom-left-origin point to top-left-origin, on the screen that holds it; the zero point
    // when no screen does.
    static Point carbonScreenPointFromCocoaScreenPoint(Point);

    // Sets the process-wide messaging time-out from the user's preference, once per process.
    static void applyGlobalMessagingTimeoutOnce();
    // The depth bound of whole-tree walks, read once per process.
    static int maxRecursionLevel();

    // Descriptions for diagnostics. Point, size, rectangle and range values as "x=3 y=4.5" and so
    // on (verbose: inside the value type's angle brackets); "AXValue???" for any other value.
    static std::string stringDescriptionOfAXValue(const Value&, bool beingVerbose);
    // Lists by their size, elements by role and title, accessibility values as above, anything
    // else as itself; nothing for nothing.
    static std::optional<std::string> descriptionOfValue(const std::optional<Value>&, bool beingVerbose);
    // The descriptions of the element's ancestors, the top one first, and of the element itself.
    static std::vector<std::string> lineageOfUIElement(const AXUIElement&);
    // The lineage, one line each, indented one more space per level.
    static std::string lineageDescriptionOfUIElement(const AXUIElement&);
    // Child and row lists by their count alone; nothing when the value cannot be read.
    static std::optional<std::string> descriptionForUIElement(
        const AXUIElement&, std::string_view attribute, bool beingVerbose);
    // The lineage, then every attribute with its value and every action with its description.
    static std::string stringDescriptionOfUIElement(const AXUIElement&);
    static std::string descriptionOfAXDescriptionOfUIElement(const AXUIElement&);
};

} // namespace vardel
