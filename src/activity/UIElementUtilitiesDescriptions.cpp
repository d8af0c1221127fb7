// The description operations of UIElementUtilities, which serve the diagnostic dumps.

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "platform/Platform.h"
#include "platform/ValueJson.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace vardel {

namespace {

constexpr const char* rowsAttribute = "AXRows";

std::string general(double number)
{
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", number);
    return buffer;
}

std::string pointText(Point point)
{
    return "x=" + general(point.x) + " y=" + general(point.y);
}

std::string sizeText(Size size)
{
    return "w=" + general(size.width) + " h=" + general(size.height);
}

std::string rangeText(Range range)
{
    return "pos=" + std::to_string(range.location) + " len=" + std::to_string(range.length);
}

bool isAccessibilityValue(const Value& value)
{
    switch (value.kind()) {
    case Value::Kind::Point:
    case Value::Kind::Size:
    case Value::Kind::Rect:
    case Value::Kind::Range:
        return true;
    default:
        return false;
    }
}

// How the value shows itself when nothing more specific is known about it.
std::string standardDescription(const Value& value)
{
    if (const std::string* text = value.asText())
        return *text;
    if (const Url* url = value.asUrl())
        return url->absoluteString;
    if (auto date = value.asDate())
        return ValueJson::formatIso8601(*date);
    if (const AXUIElement* element = value.asElement()) {
        std::ostringstream description;
        description << *element;
        return description.str();
    }
    // Texts from other applications may hold invalid UTF-8; the description must still be made.
    return ValueJson::encode(value).dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

std::string elementDescription(const AXUIElement& element)
{
    auto role = UIElementUtilities::roleOfUIElement(element);
    if (!role)
        return standardDescription(Value(element));
    auto title = UIElementUtilities::titleOfUIElement(element);
    return title ? "<" + *role + ": \u201c" + *title + "\u201d>" : "<" + *role + ">";
}

std::string attributeLine(const AXUIElement& element, const std::string& attribute)
{
    std::string settable = UIElementUtilities::canSetAttribute(attribute, element) ? " (W)" : "";
    auto description = UIElementUtilities::descriptionForUIElement(element, attribute, false);
    return "   " + attribute + settable + ":  \u201c" + description.value_or("(no value)") + "\u201d\n";
}

std::string actionLine(const AXUIElement& element, const std::string& action)
{
    auto description = UIElementUtilities::descriptionOfAction(action, element);
    return "   " + action + " - " + description.value_or("(no description)") + "\n";
}

} // namespace

std::string UIElementUtilities::stringDescriptionOfAXValue(const Value& value, bool beingVerbose)
{
    if (auto point = value.asPoint())
        return beingVerbose ? "<AXPointValue " + pointText(*point) + ">" : pointText(*point);
    if (auto size = value.asSize())
        return beingVerbose ? "<AXSizeValue " + sizeText(*size) + ">" : sizeText(*size);
    if (auto rect = value.asRect()) {
        std::string text = pointText(rect->origin) + " " + sizeText(rect->size);
        return beingVerbose ? "<AXRectValue  " + text + ">" : text;
    }
    if (auto range = value.asRange())
        return beingVerbose ? "<AXRangeValue " + rangeText(*range) + ">" : rangeText(*range);
    return "AXValue???";
}

std::optional<std::string> UIElementUtilities::descriptionOfValue(const std::optional<Value>& value, bool beingVerbose)
{
    if (!value)
        return std::nullopt;
    if (isAccessibilityValue(*value))
        return stringDescriptionOfAXValue(*value, beingVerbose);
    if (const Value::List* list = value->asList())
        return "<array of size " + std::to_string(list->size()) + ">";
    if (const AXUIElement* element = value->asElement())
        return elementDescription(*element);
    return standardDescription(*value);
}

std::vector<std::string> UIElementUtilities::lineageOfUIElement(const AXUIElement& element)
{
    // Parent chains can loop or run deep; the walk stops at a repeated element or at the bound.
    ElementHelpers::ElementList chain { element };
    int bound = maxRecursionLevel();
    for (int level = 0; level < bound; ++level) {
        auto parent = parentOfUIElement(chain.back());
        if (!parent || ElementHelpers::elementListContains(chain, *parent))
            break;
        chain.push_back(*parent);
    }
    std::vector<std::string> lineage;
    std::for_each(chain.rbegin(), chain.rend(),
        [&](const AXUIElement& member) { lineage.push_back(elementDescription(member)); });
    return lineage;
}

std::string UIElementUtilities::lineageDescriptionOfUIElement(const AXUIElement& element)
{
    std::string description;
    std::string indent;
    for (const std::string& line : lineageOfUIElement(element)) {
        description += indent + line + "\n";
        indent += ' ';
    }
    return description;
}

std::optional<std::string> UIElementUtilities::descriptionForUIElement(
    const AXUIElement& element, std::string_view attribute, bool beingVerbose)
{
    if (attribute == AX::children || attribute == rowsAttribute) {
        auto count = platform().accessibility().attributeValueCount(element, attribute);
        if (count.ok())
            return "<array of size " + std::to_string(*count.value) + ">";
    }
    return descriptionOfValue(valueOfAttribute(attribute, element), beingVerbose);
}

std::string UIElementUtilities::stringDescriptionOfUIElement(const AXUIElement& element)
{
    std::string description = lineageDescriptionOfUIElement(element);
    auto attributes = attributeNamesOfUIElement(element).value_or(std::vector<std::string> {});
    if (!attributes.empty())
        description += "\nAttributes:\n";
    for (const std::string& attribute : attributes)
        description += attributeLine(element, attribute);
    auto actions = actionNamesOfUIElement(element).value_or(std::vector<std::string> {});
    if (!actions.empty())
        description += "\nActions:\n";
    for (const std::string& action : actions)
        description += actionLine(element, action);
    return description;
}

std::string UIElementUtilities::descriptionOfAXDescriptionOfUIElement(const AXUIElement& element)
{
    auto description = stringValueOfAttribute(AX::description, element);
    return description && !description->empty() ? *description : "No Description";
}

} // namespace vardel
