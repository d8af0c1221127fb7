#pragma once

#include "platform/JsonCursor.h"
#include "platform/Value.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vardel {

// Reads what ValueJson writes: JSON text, numbers, booleans and arrays as themselves, the one-key
// objects {"point"}, {"size"}, {"rect"}, {"range"}, {"url"} and {"date"} as those types, and any
// other object as a dictionary. Null members are absent everywhere, so {"date": "…", "note": null}
// is a date, as it reads once written again. The first problem ends the reading with a
// JsonValueError naming its path.
class ValueDecoder {
public:
    // Deeper values are rejected before they are read, so reading never exhausts the stack.
    static constexpr size_t maximumNesting = 1000;

    // Reads a one-key object whose key is none of the types above, for documents that give more
    // keys a meaning; nothing when the object is an ordinary dictionary. May fail through either
    // cursor.
    using TagReader = std::function<std::optional<Value>(
        const JsonCursor& object, const std::string& key, const JsonCursor& content)>;

    ValueDecoder() = default;
    explicit ValueDecoder(TagReader readTag)
        : readTag_(std::move(readTag))
    {
    }

    // Not null.
    Value decode(const JsonCursor&) const;
    // An object of values, null members left out. Member by member, so that a value nested too
    // deeply is reported where it is.
    Value::Dictionary decodeDictionary(const JsonCursor&) const;
    // A JSON number: integers stay integers.
    static Value number(const JsonCursor&);
    // Whether a one-key object with this key reads as one of the types above.
    static bool isTypeTag(std::string_view key);

private:
    static void requireBoundedNesting(const JsonCursor&);
    Value decodeNested(const JsonCursor&) const;
    Value decodeList(const JsonCursor&) const;
    using MemberDecoder = Value (ValueDecoder::*)(const JsonCursor&) const;
    Value::Dictionary decodeMembers(const JsonCursor&, MemberDecoder) const;
    std::optional<Value> decodeTagged(const JsonCursor& object) const;

    TagReader readTag_;
};

} // namespace vardel
