#pragma once

#include "platform/JsonCursor.h"
#include "platform/Value.h"
#include "platform/scripted/Scenario.h"

#include <vector>

namespace vardel::scripted {

// Reads the values of scenario files: the value encoding, plus in attributes the element
// references {"ref": "id"} and the error codes {"error": CODE}. Elsewhere both keys are refused, so
// that a value reads the same wherever it is written.
class ScenarioValueDecoder {
public:
    // A value of a preference, property list, window list or assertion record. Not null.
    static Value plain(const JsonCursor&);
    // An object of plain values, null members left out.
    static Value::Dictionary plainDictionary(const JsonCursor&);
    // An attribute value: element references anywhere (noted in `references`), or an error code as
    // the whole value. Not null.
    static AttributeValue attribute(const JsonCursor&, std::vector<ElementReferenceUse>& references);
};

} // namespace vardel::scripted
