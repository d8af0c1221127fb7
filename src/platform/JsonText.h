#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace vardel {

// JSON as text, with any text that is not valid UTF-8 (a window title, a process name, a stream's
// name) written with replacement characters: the default throws, and such text comes from other
// programs.
template<typename Json> std::string jsonText(const Json& json, int indent = -1)
{
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

// A text, or null where there is none.
inline nlohmann::ordered_json textOrNull(const std::optional<std::string>& text)
{
    return text ? nlohmann::ordered_json(*text) : nlohmann::ordered_json(nullptr);
}

} // namespace vardel
