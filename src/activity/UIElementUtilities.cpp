#include "activity/UIElementUtilities.h"

#include "activity/AccessibilityNames.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace vardel {

namespace {

Accessibility& accessibility()
{
    return platform().accessibility();
}

constexpr double defaultGlobalTimeoutSeconds = 2.0;
constexpr int defaultMaxRecursionLevel = 20;
// Walks recurse once per level; a larger bound from the preferences would only risk the stack.
constexpr int64_t maxAllowedRecursionLevel = 1000;

ProcessWide<bool> globalTimeoutApplied([] {
    auto systemWide = accessibility().createSystemWide();
    if (!systemWide)
        return true;
    auto seconds = platform().standardUserDefaults().getDouble("VDInfoExtractor_globalAccessibilityTimeout");
    // A time-out that is no time at all cannot be set; a huge one is kept within a day.
    if (!seconds || !std::isfinite(*seconds) || *seconds < 0)
        seconds = defaultGlobalTimeoutSeconds;
    accessibility().setMessagingTimeout(*systemWide, static_cast<float>(std::min(*seconds, 86400.0)));
    return true;
});

ProcessWide<int> recursionLevel([] {
    auto preference = platform().productPreferences().getInt("AXUIElement_maxRecursionLevel");
    if (!preference)
        return defaultMaxRecursionLevel;
    return static_cast<int>(std::clamp<int64_t>(*preference, -1, maxAllowedRecursionLevel));
});

std::optional<Value> typedValueFromText(const Value& current, std::string_view text)
{
    // The components are read as single-precision floats, as the platform's value parser does.
    std::string input(text);
    float first = 0, second = 0, third = 0, fourth = 0;
    long position = 0, length = 0;
    switch (current.kind()) {
    case Value::Kind::Point:
        if (std::sscanf(input.c_str(), "x=%g y=%g", &first, &second) != 2)
            return std::nullopt;
        return Value(Point { first, second });
    case Value::Kind::Size:
        if (std::sscanf(input.c_str(), "w=%g h=%g", &first, &second) != 2)
            return std::nullopt;
        return Value(Size { first, second });
    case Value::Kind::Rect:
        if (std::sscanf(input.c_str(), "x=%g y=%g w=%g h=%g", &first, &second, &third, &fourth) != 4)
            return std::nullopt;
        return Value(Rect { { first, second }, { third, fourth } });
    case Value::Kind::Range:
        if (std::sscanf(input.c_str(), "pos=%ld len=%ld", &position, &length) != 2)
            return std::nullopt;
        return Value(Range { position, length });
    case Value::Kind::Text:
        return Value(std::move(input));
    case Value::Kind::Integer:
    case Value::Kind::Real:
    case Value::Kind::Boolean:
        return Value(static_cast<double>(std::strtof(input.c_str(), nullptr)));
    default:
        return std::nullopt;
    }
}

} // namespace

ProcessIdentifier UIElementUtilities::processIdentifierOfUIElement(const AXUIElement& element)
{
    return accessibility().pid(element).value.value_or(0);
}

std::optional<std::vector<std::string>> UIElementUtilities::attributeNamesOfUIElement(const AXUIElement& element)
{
    return accessibility().copyAttributeNames(element).value;
}

std::optional<std::vector<std::string>> UIElementUtilities::actionNamesOfUIElement(const AXUIElement& element)
{
    return accessibility().copyActionNames(element).value;
}

std::optional<std::string> UIElementUtilities::descriptionOfAction(std::string_view action, const AXUIElement& element)
{
    return accessibility().copyActionDescription(element, action).value;
}

void UIElementUtilities::performAction(std::string_view action, const AXUIElement& element)
{
    accessibility().performAction(element, action);
}

std::optional<Value> UIElementUtilities::valueOfAttribute(std::string_view attribute, const AXUIElement& element)
{
    auto result = accessibility().copyAttributeValue(element, attribute);
    if (result.error != AXErrorCode::success)
        return std::nullopt;
    return std::move(result.value);
}

std::optional<std::string> UIElementUtilities::stringValueOfAttribute(
    std::string_view attribute, const AXUIElement& element)
{
    auto value = valueOfAttribute(attribute, element);
    if (!value || !value->asText())
        return std::nullopt;
    return *value->asText();
}

std::optional<double> UIElementUtilities::numberValueOfAttribute(std::string_view attribute, const AXUIElement& element)
{
    auto value = valueOfAttribute(attribute, element);
    return value ? value->asNumberOrBoolean() : std::nullopt;
}

bool UIElementUtilities::canSetAttribute(std::string_view attribute, const AXUIElement& element)
{
    return accessibility().isAttributeSettable(element, attribute).value.value_or(false);
}

void UIElementUtilities::setStringValue(std::string_view text, std::string_view attribute, const AXUIElement& element)
{
    if (attribute.empty())
        return;
    auto current = valueOfAttribute(attribute, element);
    if (!current)
        return;
    if (auto typed = typedValueFromText(*current, text))
        accessibility().setAttributeValue(element, attribute, *typed);
}

void UIElementUtilities::setNumberValue(const Value& number, std::string_view attribute, const AXUIElement& element)
{
    accessibility().setAttributeValue(element, attribute, number);
}

std::optional<AXUIElement> UIElementUtilities::parentOfUIElement(const AXUIElement& element)
{
    auto value = valueOfAttribute(AX::parent, element);
    if (!value || !value->asElement())
        return std::nullopt;
    return *value->asElement();
}

std::optional<std::string> UIElementUtilities::roleOfUIElement(const AXUIElement& element)
{
    return stringValueOfAttribute(AX::role, element);
}

std::optional<std::string> UIElementUtilities::titleOfUIElement(const AXUIElement& element)
{
    return stringValueOfAttribute(AX::title, element);
}

bool UIElementUtilities::isApplicationUIElement(const AXUIElement& element)
{
    return roleOfUIElement(element) == AX::applicationRole;
}

Point UIElementUtilities::originOfUIElement(const AXUIElement& element)
{
    auto value = valueOfAttribute(AX::position, element);
    return value ? value->asPoint().value_or(Point {}) : Point {};
}

Size UIElementUtilities::sizeOfUIElement(const AXUIElement& element)
{
    auto value = valueOfAttribute(AX::size, element);
    return value ? value->asSize().value_or(Size {}) : Size {};
}

Rect UIElementUtilities::frameOfUIElement(const AXUIElement& element)
{
    auto position = valueOfAttribute(AX::position, element);
    auto size = valueOfAttribute(AX::size, element);
    if (!position || !size || !position->asPoint() || !size->asSize())
        return Rect {};
    return flippedScreenBounds(Rect { *position->asPoint(), *size->asSize() });
}

Rect UIElementUtilities::flippedScreenBounds(Rect rect)
{
    auto screens = platform().windowServer().screenFrames();
    Rect primary = screens.empty() ? Rect {} : screens.front();
    double flippedY = (primary.origin.y + primary.size.height) - (rect.origin.y + rect.size.height);
    return Rect { { rect.origin.x, flippedY }, rect.size };
}

Point UIElementUtilities::carbonScreenPointFromCocoaScreenPoint(Point point)
{
    std::optional<Rect> holder;
    for (const Rect& screen : platform().windowServer().screenFrames()) {
        if (screen.contains(point))
            holder = screen;
    }
    if (!holder)
        return Point {};
    return Point { point.x, holder->size.height - point.y - 1 };
}

void UIElementUtilities::applyGlobalMessagingTimeoutOnce()
{
    globalTimeoutApplied.get();
}

int UIElementUtilities::maxRecursionLevel()
{
    return recursionLevel.get();
}

} // namespace vardel
