#pragma once

#include "platform/Value.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace vardel::ValueJson {

// The JSON encoding shared by scenarios, traces and preference files: text, numbers and booleans as
// themselves, lists as arrays, dictionaries as objects, and {"point": [x, y]}, {"size": [w, h]},
// {"rect": [x, y, w, h]}, {"range": [pos, len]}, {"url": "…"}, {"date": "ISO 8601"} and
// {"ref": "element id"} for the rest. ValueDecoder reads it back.
nlohmann::ordered_json encode(const Value&);
nlohmann::ordered_json encode(const std::optional<Value>&);
// The same, with dates written by formatDate (for stores that must read dates back exactly).
nlohmann::ordered_json encode(const Value&, std::string (*formatDate)(Date));

std::string formatIso8601(Date);
std::optional<Date> parseIso8601(const std::string&);

} // namespace vardel::ValueJson
