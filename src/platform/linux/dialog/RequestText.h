#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace vardel::dialog {

// A text member of the tracker's request, or an empty text when it is missing or not a text.
inline std::string requestText(const nlohmann::json& request, const char* key)
{
    auto found = request.find(key);
    return found != request.end() && found->is_string() ? found->get<std::string>() : std::string();
}

} // namespace vardel::dialog
