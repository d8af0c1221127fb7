#pragma once

#include "platform/Value.h"
#include "platform/scripted/JsonCursor.h"
#include "platform/scripted/Scenario.h"

#include <cstddef>
#include <vector>

namespace vardel::scripted {

// Reads the value encoding of scenario files: JSON scalars and arrays as themselves, the one-key
// objects {"point"}, {"size"}, {"rect"}, {"range"}, {"url"}, {"date"}, and in attributes {"ref"} and
// {"error"}; any other object is a dictionary, whose null members are absent.
class ValueDecoder {
public:
    // Deeper values are rejected before they are read, so reading never exhausts the stack.
    static constexpr size_t maximumNesting = 1000;

    // A value of a preference, property list, window list or assertion record. Not null.
    static Value plain(const JsonCursor&);
    // A JSON number: integers stay integers.
    static Value number(const JsonCursor&);
    // An object of plain values, null members left out.
    static Value::Dictionary plainDictionary(const JsonCursor&);
    // An attribute value: element references anywhere (noted in `references`), or an error code as
    // the whole value. Not null.
    static AttributeValue attribute(const JsonCursor&, std::vector<ElementReferenceUse>& references);

private:
    explicit ValueDecoder(std::vector<ElementReferenceUse>* references)
        : references_(references)
    {
    }

    static void requireBoundedNesting(const JsonCursor&);
    Value decode(const JsonCursor&) const;
    Value decodeList(const JsonCursor&) const;
    Value::Dictionary decodeDictionary(const JsonCursor&) const;
    std::optional<Value> decodeTyped(const JsonCursor& object) const;
    Value reference(const JsonCursor&) const;

    // Null when element references are not allowed here.
    std::vector<ElementReferenceUse>* references_;
};

} // namespace vardel::scripted
