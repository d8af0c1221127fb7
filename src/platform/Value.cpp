#include "platform/Value.h"

#include "platform/JsonText.h"
#include "platform/ValueJson.h"

#include <cmath>

namespace vardel {

std::optional<bool> Value::asBoolean() const
{
    if (auto* boolean = std::get_if<bool>(&storage_))
        return *boolean;
    return std::nullopt;
}

std::optional<double> Value::asNumber() const
{
    if (auto* integer = std::get_if<int64_t>(&storage_))
        return static_cast<double>(*integer);
    if (auto* real = std::get_if<double>(&storage_))
        return *real;
    return std::nullopt;
}

std::optional<int64_t> Value::asInteger() const
{
    if (auto* integer = std::get_if<int64_t>(&storage_))
        return *integer;
    if (auto* real = std::get_if<double>(&storage_)) {
        if (std::isfinite(*real) && std::trunc(*real) == *real && std::fabs(*real) < 9.2e18)
            return static_cast<int64_t>(*real);
    }
    return std::nullopt;
}

std::optional<double> Value::asNumberOrBoolean() const
{
    if (auto boolean = asBoolean())
        return *boolean ? 1.0 : 0.0;
    return asNumber();
}

std::optional<Date> Value::asDate() const
{
    if (auto* date = std::get_if<Date>(&storage_))
        return *date;
    return std::nullopt;
}

const Value::List* Value::asList() const
{
    auto* list = std::get_if<std::shared_ptr<const List>>(&storage_);
    return list ? list->get() : nullptr;
}

const Value::Dictionary* Value::asDictionary() const
{
    auto* dictionary = std::get_if<std::shared_ptr<const Dictionary>>(&storage_);
    return dictionary ? dictionary->get() : nullptr;
}

std::optional<Point> Value::asPoint() const
{
    if (auto* point = std::get_if<Point>(&storage_))
        return *point;
    return std::nullopt;
}

std::optional<Size> Value::asSize() const
{
    if (auto* size = std::get_if<Size>(&storage_))
        return *size;
    return std::nullopt;
}

std::optional<Rect> Value::asRect() const
{
    if (auto* rect = std::get_if<Rect>(&storage_))
        return *rect;
    return std::nullopt;
}

std::optional<Range> Value::asRange() const
{
    if (auto* range = std::get_if<Range>(&storage_))
        return *range;
    return std::nullopt;
}

std::optional<std::vector<std::string>> Value::asTextList() const
{
    const List* list = asList();
    if (!list)
        return std::nullopt;
    std::vector<std::string> texts;
    texts.reserve(list->size());
    for (const Value& member : *list) {
        if (!member.asText())
            return std::nullopt;
        texts.push_back(*member.asText());
    }
    return texts;
}

bool Value::operator==(const Value& other) const
{
    if (kind() != other.kind())
        return false;
    if (const List* list = asList())
        return *list == *other.asList();
    if (const Dictionary* dictionary = asDictionary())
        return *dictionary == *other.asDictionary();
    return storage_ == other.storage_;
}

const char* kindName(Value::Kind kind)
{
    switch (kind) {
    case Value::Kind::Text:
        return "text";
    case Value::Kind::Integer:
        return "integer";
    case Value::Kind::Real:
        return "number";
    case Value::Kind::Boolean:
        return "boolean";
    case Value::Kind::Date:
        return "date";
    case Value::Kind::Url:
        return "URL";
    case Value::Kind::List:
        return "list";
    case Value::Kind::Dictionary:
        return "dictionary";
    case Value::Kind::Element:
        return "element";
    case Value::Kind::Point:
        return "point";
    case Value::Kind::Size:
        return "size";
    case Value::Kind::Rect:
        return "rectangle";
    case Value::Kind::Range:
        return "range";
    }
    return "unknown";
}

std::ostream& operator<<(std::ostream& stream, const Value& value)
{
    return stream << jsonText(ValueJson::encode(value));
}

std::ostream& operator<<(std::ostream& stream, const Point& point)
{
    return stream << "(" << point.x << ", " << point.y << ")";
}

std::ostream& operator<<(std::ostream& stream, const Size& size)
{
    return stream << "(" << size.width << " x " << size.height << ")";
}

std::ostream& operator<<(std::ostream& stream, const Rect& rect)
{
    return stream << "{" << rect.origin << ", " << rect.size << "}";
}

std::ostream& operator<<(std::ostream& stream, const Range& range)
{
    return stream << "{pos " << range.location << ", len " << range.length << "}";
}

std::ostream& operator<<(std::ostream& stream, const AXUIElement& element)
{
    return stream << "<element " << element.traceName().value_or("(unnamed)") << ">";
}

} // namespace vardel
