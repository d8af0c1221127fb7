#pragma once

#include "platform/Accessibility.h"
#include "platform/JsonPath.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace vardel {

// A value of a JSON document with its path: typed reads that fail with a JsonValueError naming the
// path and what was expected.
class JsonCursor {
public:
    using Json = nlohmann::ordered_json;

    JsonCursor(const Json& json, JsonPath path)
        : json_(&json)
        , path_(std::move(path))
    {
    }

    const Json& json() const { return *json_; }
    const JsonPath& path() const { return path_; }
    [[noreturn]] void fail(std::string_view problem) const { path_.fail(problem); }

    bool isNull() const { return json_->is_null(); }
    bool isObject() const { return json_->is_object(); }
    bool isArray() const { return json_->is_array(); }

    std::string text() const;
    bool boolean() const;
    int64_t integer() const;
    int64_t integerBetween(int64_t minimum, int64_t maximum) const;
    // A finite number.
    double number() const;
    double nonNegativeNumber() const;
    ProcessIdentifier processIdentifier() const;

    void requireObject() const;
    void requireArray() const;
    // Rejects any key of this object not in the list.
    void allowOnlyKeys(std::initializer_list<std::string_view> keys) const;

    // The member when the key is present, null included.
    std::optional<JsonCursor> member(std::string_view key) const;
    // The member when the key is present and not null: for keys where null means absent.
    std::optional<JsonCursor> nonNullMember(std::string_view key) const;
    JsonCursor requiredMember(std::string_view key) const;

    // Calls visit(JsonCursor) for each item of an array.
    template<typename Visit> void forEachItem(Visit visit) const
    {
        requireArray();
        for (size_t index = 0; index < json_->size(); ++index)
            visit(JsonCursor((*json_)[index], path_.index(index)));
    }

    // Calls visit(key, JsonCursor) for each member of an object, in file order.
    template<typename Visit> void forEachMember(Visit visit) const
    {
        requireObject();
        for (const auto& [key, value] : json_->items())
            visit(key, JsonCursor(value, path_.member(key)));
    }

    // For keys that take one item or an array of them.
    template<typename Visit> void forOneOrMany(Visit visit) const
    {
        if (isArray())
            forEachItem(visit);
        else
            visit(*this);
    }

private:
    const Json* json_;
    JsonPath path_;
};

} // namespace vardel
