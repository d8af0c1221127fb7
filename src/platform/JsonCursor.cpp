#include "platform/JsonCursor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vardel {

std::string JsonCursor::text() const
{
    if (!json_->is_string())
        fail("expected a string");
    return json_->get<std::string>();
}

bool JsonCursor::boolean() const
{
    if (!json_->is_boolean())
        fail("expected true or false");
    return json_->get<bool>();
}

int64_t JsonCursor::integer() const
{
    if (json_->is_number_unsigned() && json_->get<uint64_t>() > uint64_t(std::numeric_limits<int64_t>::max()))
        fail("integer out of range");
    if (!json_->is_number_integer())
        fail("expected an integer");
    return json_->get<int64_t>();
}

int64_t JsonCursor::integerBetween(int64_t minimum, int64_t maximum) const
{
    int64_t value = integer();
    if (value < minimum || value > maximum)
        fail("expected an integer from " + std::to_string(minimum) + " to " + std::to_string(maximum));
    return value;
}

double JsonCursor::number() const
{
    if (!json_->is_number())
        fail("expected a number");
    double value = json_->get<double>();
    if (!std::isfinite(value))
        fail("number out of range");
    return value;
}

double JsonCursor::nonNegativeNumber() const
{
    double value = number();
    if (value < 0)
        fail("expected a number of seconds, 0 or more");
    return value;
}

ProcessIdentifier JsonCursor::processIdentifier() const
{
    return static_cast<ProcessIdentifier>(integerBetween(1, std::numeric_limits<ProcessIdentifier>::max()));
}

void JsonCursor::requireObject() const
{
    if (!json_->is_object())
        fail("expected an object");
}

void JsonCursor::requireArray() const
{
    if (!json_->is_array())
        fail("expected an array");
}

void JsonCursor::allowOnlyKeys(std::initializer_list<std::string_view> keys) const
{
    requireObject();
    for (const auto& [key, value] : json_->items()) {
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            path_.member(key).fail("unknown key");
    }
}

std::optional<JsonCursor> JsonCursor::member(std::string_view key) const
{
    requireObject();
    auto found = json_->find(key);
    if (found == json_->end())
        return std::nullopt;
    return JsonCursor(*found, path_.member(key));
}

std::optional<JsonCursor> JsonCursor::nonNullMember(std::string_view key) const
{
    auto found = member(key);
    if (found && found->isNull())
        return std::nullopt;
    return found;
}

JsonCursor JsonCursor::requiredMember(std::string_view key) const
{
    auto found = nonNullMember(key);
    if (!found)
        path_.member(key).fail("required");
    return *found;
}

} // namespace vardel
