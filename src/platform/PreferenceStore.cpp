#include "platform/PreferenceStore.h"

namespace vardel {

std::optional<bool> PreferenceStore::getBool(std::string_view key) const
{
    auto value = object(key);
    return value ? value->asBoolean() : std::nullopt;
}

std::optional<int64_t> PreferenceStore::getInt(std::string_view key) const
{
    auto value = object(key);
    if (!value || !value->isNumber())
        return std::nullopt;
    if (auto integer = value->asInteger())
        return integer;
    // A real is truncated, as the platform's integer getter does; one out of range is no integer.
    double real = *value->asNumber();
    if (!(real > -9.2e18 && real < 9.2e18))
        return std::nullopt;
    return static_cast<int64_t>(real);
}

std::optional<double> PreferenceStore::getDouble(std::string_view key) const
{
    auto value = object(key);
    return value ? value->asNumber() : std::nullopt;
}

std::optional<std::string> PreferenceStore::getString(std::string_view key) const
{
    auto value = object(key);
    if (!value || !value->asText())
        return std::nullopt;
    return *value->asText();
}

std::optional<std::vector<std::string>> PreferenceStore::getStringList(std::string_view key) const
{
    auto value = object(key);
    return value ? value->asTextList() : std::nullopt;
}

} // namespace vardel
