#include "platform/linux/JsonPropertyListFiles.h"

#include <fstream>

namespace vardel::linux_desktop {

std::optional<Value> JsonPropertyListFiles::valueOf(const nlohmann::json& json)
{
    switch (json.type()) {
    case nlohmann::json::value_t::string:
        return Value(json.get<std::string>());
    case nlohmann::json::value_t::boolean:
        return Value(json.get<bool>());
    case nlohmann::json::value_t::number_integer:
    case nlohmann::json::value_t::number_unsigned:
        return Value(json.get<int64_t>());
    case nlohmann::json::value_t::number_float:
        return Value(json.get<double>());
    case nlohmann::json::value_t::array: {
        Value::List list;
        for (const auto& member : json) {
            auto value = valueOf(member);
            if (!value)
                return std::nullopt;
            list.push_back(std::move(*value));
        }
        return Value(std::move(list));
    }
    case nlohmann::json::value_t::object: {
        Value::Dictionary dictionary;
        for (const auto& [key, member] : json.items()) {
            auto value = valueOf(member);
            if (!value)
                return std::nullopt;
            dictionary.emplace(key, std::move(*value));
        }
        return Value(std::move(dictionary));
    }
    default:
        return std::nullopt;
    }
}

std::optional<Value> JsonPropertyListFiles::read(const std::string& path)
{
    std::ifstream file(path);
    if (!file)
        return std::nullopt;
    auto json = nlohmann::json::parse(file, nullptr, false);
    if (json.is_discarded())
        return std::nullopt;
    return valueOf(json);
}

} // namespace vardel::linux_desktop
