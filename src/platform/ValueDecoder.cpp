#include "platform/ValueDecoder.h"

#include "platform/ValueJson.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace vardel {

namespace {

constexpr std::array typeTags = { "point", "size", "rect", "range", "url", "date" };

template<size_t count> std::array<double, count> numbers(const JsonCursor& cursor, const char* expected)
{
    if (!cursor.isArray() || cursor.json().size() != count)
        cursor.fail(expected);
    std::array<double, count> values {};
    for (size_t index = 0; index < count; ++index)
        values[index] = JsonCursor(cursor.json()[index], cursor.path().index(index)).number();
    return values;
}

Value range(const JsonCursor& cursor)
{
    if (!cursor.isArray() || cursor.json().size() != 2)
        cursor.fail("expected [location, length]");
    auto location = JsonCursor(cursor.json()[0], cursor.path().index(0)).integer();
    auto length = JsonCursor(cursor.json()[1], cursor.path().index(1)).integer();
    return Range { location, length };
}

Value date(const JsonCursor& cursor)
{
    auto parsed = ValueJson::parseIso8601(cursor.text());
    if (!parsed)
        cursor.fail("expected an ISO 8601 UTC date such as 2026-01-05T09:00:00Z");
    return *parsed;
}

// The one member that is not null, if there is exactly one.
std::optional<JsonCursor::Json::const_iterator> onlyPresentMember(const JsonCursor::Json& object)
{
    std::optional<JsonCursor::Json::const_iterator> only;
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (member->is_null())
            continue;
        if (only)
            return std::nullopt;
        only = member;
    }
    return only;
}

} // namespace

Value ValueDecoder::decode(const JsonCursor& cursor) const
{
    requireBoundedNesting(cursor);
    return decodeNested(cursor);
}

Value::Dictionary ValueDecoder::decodeDictionary(const JsonCursor& cursor) const
{
    return decodeMembers(cursor, &ValueDecoder::decode);
}

Value ValueDecoder::number(const JsonCursor& cursor)
{
    if (cursor.json().is_number_integer())
        return cursor.integer();
    return cursor.number();
}

bool ValueDecoder::isTypeTag(std::string_view key)
{
    return std::find(typeTags.begin(), typeTags.end(), key) != typeTags.end();
}

void ValueDecoder::requireBoundedNesting(const JsonCursor& cursor)
{
    std::vector<std::pair<const JsonCursor::Json*, size_t>> pending { { &cursor.json(), 1 } };
    while (!pending.empty()) {
        auto [value, depth] = pending.back();
        pending.pop_back();
        if (!value->is_structured())
            continue;
        if (depth > maximumNesting)
            cursor.fail("value nested deeper than " + std::to_string(maximumNesting) + " levels");
        for (const auto& member : *value)
            pending.emplace_back(&member, depth + 1);
    }
}

Value ValueDecoder::decodeNested(const JsonCursor& cursor) const
{
    const auto& json = cursor.json();
    switch (json.type()) {
    case JsonCursor::Json::value_t::string:
        return cursor.text();
    case JsonCursor::Json::value_t::boolean:
        return cursor.boolean();
    case JsonCursor::Json::value_t::number_integer:
    case JsonCursor::Json::value_t::number_unsigned:
    case JsonCursor::Json::value_t::number_float:
        return number(cursor);
    case JsonCursor::Json::value_t::array:
        return decodeList(cursor);
    case JsonCursor::Json::value_t::object:
        if (auto tagged = decodeTagged(cursor))
            return *tagged;
        return decodeMembers(cursor, &ValueDecoder::decodeNested);
    default:
        cursor.fail("expected a value");
    }
}

Value ValueDecoder::decodeList(const JsonCursor& cursor) const
{
    Value::List list;
    list.reserve(cursor.json().size());
    cursor.forEachItem([&](const JsonCursor& item) {
        if (item.isNull())
            item.fail("null is not allowed in an array");
        list.push_back(decodeNested(item));
    });
    return list;
}

Value::Dictionary ValueDecoder::decodeMembers(const JsonCursor& cursor, MemberDecoder decodeMember) const
{
    Value::Dictionary dictionary;
    cursor.forEachMember([&](const std::string& key, const JsonCursor& member) {
        if (!member.isNull())
            dictionary.insert_or_assign(key, (this->*decodeMember)(member));
    });
    return dictionary;
}

std::optional<Value> ValueDecoder::decodeTagged(const JsonCursor& object) const
{
    auto only = onlyPresentMember(object.json());
    if (!only)
        return std::nullopt;
    const std::string& key = (*only).key();
    JsonCursor value((*only).value(), object.path().member(key));
    if (key == "point") {
        auto [x, y] = numbers<2>(value, "expected [x, y]");
        return Point { x, y };
    }
    if (key == "size") {
        auto [width, height] = numbers<2>(value, "expected [width, height]");
        return Size { width, height };
    }
    if (key == "rect") {
        auto [x, y, width, height] = numbers<4>(value, "expected [x, y, width, height]");
        return Rect { { x, y }, { width, height } };
    }
    if (key == "range")
        return range(value);
    if (key == "url")
        return Url { value.text() };
    if (key == "date")
        return date(value);
    return readTag_ ? readTag_(object, key, value) : std::nullopt;
}

} // namespace vardel
