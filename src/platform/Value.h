#pragma once

#include "platform/AXUIElement.h"
#include "platform/Geometry.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <variant>
#include <vector>

namespace vardel {

struct Url {
    std::string absoluteString;
    bool operator==(const Url&) const = default;
};

// A point in time as seconds since 1970-01-01T00:00:00Z.
struct Date {
    double secondsSince1970 = 0;
    bool operator==(const Date&) const = default;
    auto operator<=>(const Date&) const = default;
};

// The dynamic value the platform hands out: attribute values, preference values and property-list
// data. Lists and dictionaries are immutable and shared, so copies are cheap.
class Value {
public:
    using List = std::vector<Value>;
    using Dictionary = std::map<std::string, Value, std::less<>>;

    enum class Kind { Text, Integer, Real, Boolean, Date, Url, List, Dictionary, Element, Point, Size, Rect, Range };

    Value(std::string text)
        : storage_(std::move(text))
    {
    }
    Value(const char* text)
        : storage_(std::string(text))
    {
    }
    Value(int64_t integer)
        : storage_(integer)
    {
    }
    Value(int integer)
        : storage_(int64_t { integer })
    {
    }
    Value(double real)
        : storage_(real)
    {
    }
    Value(bool boolean)
        : storage_(boolean)
    {
    }
    Value(Date date)
        : storage_(date)
    {
    }
    Value(Url url)
        : storage_(std::move(url))
    {
    }
    Value(List list)
        : storage_(std::make_shared<const List>(std::move(list)))
    {
    }
    Value(Dictionary dictionary)
        : storage_(std::make_shared<const Dictionary>(std::move(dictionary)))
    {
    }
    Value(AXUIElement element)
        : storage_(std::move(element))
    {
    }
    Value(Point point)
        : storage_(point)
    {
    }
    Value(Size size)
        : storage_(size)
    {
    }
    Value(Rect rect)
        : storage_(rect)
    {
    }
    Value(Range range)
        : storage_(range)
    {
    }

    Kind kind() const { return static_cast<Kind>(storage_.index()); }

    const std::string* asText() const { return std::get_if<std::string>(&storage_); }
    std::optional<bool> asBoolean() const;
    // Integers and reals; booleans are not numbers here (see asNumberOrBoolean).
    std::optional<double> asNumber() const;
    // Integers, and reals that hold a whole number.
    std::optional<int64_t> asInteger() const;
    // The platform's number class also carries booleans (true is 1).
    std::optional<double> asNumberOrBoolean() const;
    std::optional<Date> asDate() const;
    const Url* asUrl() const { return std::get_if<Url>(&storage_); }
    const List* asList() const;
    const Dictionary* asDictionary() const;
    const AXUIElement* asElement() const { return std::get_if<AXUIElement>(&storage_); }
    std::optional<Point> asPoint() const;
    std::optional<Size> asSize() const;
    std::optional<Rect> asRect() const;
    std::optional<Range> asRange() const;

    bool isNumber() const { return kind() == Kind::Integer || kind() == Kind::Real; }

    // A list whose every member is text; nothing otherwise.
    std::optional<std::vector<std::string>> asTextList() const;

    bool operator==(const Value& other) const;

private:
    using Storage = std::variant<std::string, int64_t, double, bool, Date, Url, std::shared_ptr<const List>,
        std::shared_ptr<const Dictionary>, AXUIElement, Point, Size, Rect, Range>;
    Storage storage_;
};

const char* kindName(Value::Kind);
std::ostream& operator<<(std::ostream&, const Value&);

} // namespace vardel
