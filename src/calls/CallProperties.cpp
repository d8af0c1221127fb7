#include "calls/CallProperties.h"

namespace vardel {

Value textOrNil(const std::optional<std::string>& text)
{
    return Value(text.value_or("(nil)"));
}

} // namespace vardel

namespace vardel::CallPropertiesJson {

namespace {

using nlohmann::json;

// Seconds between 1970-01-01 and 2001-01-01, the reference date of the platform's JSON dates.
constexpr double referenceDateOffset = 978307200;

json encodeDate(Date date)
{
    return date.secondsSince1970 - referenceDateOffset;
}

std::optional<Date> decodeDate(const json& object, const char* key)
{
    auto found = object.find(key);
    if (found == object.end() || !found->is_number())
        return std::nullopt;
    return Date { found->get<double>() + referenceDateOffset };
}

void encodeText(json& object, const char* key, const std::optional<std::string>& text)
{
    if (text)
        object[key] = *text;
}

// A present key must hold text; an absent one is nothing.
bool decodeOptionalText(const json& object, const char* key, std::optional<std::string>& text)
{
    auto found = object.find(key);
    if (found == object.end() || found->is_null())
        return true;
    if (!found->is_string())
        return false;
    text = found->get<std::string>();
    return true;
}

std::optional<CallMetadata> decodeMetadata(const json& object)
{
    if (!object.is_object())
        return std::nullopt;
    CallMetadata metadata;
    if (!decodeOptionalText(object, "serviceName", metadata.serviceName)
        || !decodeOptionalText(object, "appName", metadata.appName)
        || !decodeOptionalText(object, "meetingTitle", metadata.meetingTitle))
        return std::nullopt;
    auto separately = object.find("audioInAndOutAssertionsHaveBeenRecordedSeparately");
    if (separately == object.end() || !separately->is_boolean())
        return std::nullopt;
    metadata.audioInAndOutAssertionsHaveBeenRecordedSeparately = separately->get<bool>();
    return metadata;
}

} // namespace

json encode(const CallProperties& call)
{
    json metadata = json::object();
    encodeText(metadata, "serviceName", call.metadata.serviceName);
    encodeText(metadata, "appName", call.metadata.appName);
    encodeText(metadata, "meetingTitle", call.metadata.meetingTitle);
    metadata["audioInAndOutAssertionsHaveBeenRecordedSeparately"]
        = call.metadata.audioInAndOutAssertionsHaveBeenRecordedSeparately;
    return { { "startedAt", encodeDate(call.startedAt) }, { "lastSeen", encodeDate(call.lastSeen) },
        { "metadata", metadata } };
}

std::optional<CallProperties> decode(const json& object)
{
    if (!object.is_object())
        return std::nullopt;
    auto startedAt = decodeDate(object, "startedAt");
    auto lastSeen = decodeDate(object, "lastSeen");
    auto metadata = object.find("metadata");
    if (!startedAt || !lastSeen || metadata == object.end())
        return std::nullopt;
    auto decodedMetadata = decodeMetadata(*metadata);
    if (!decodedMetadata)
        return std::nullopt;
    return CallProperties { *startedAt, *lastSeen, *decodedMetadata };
}

std::optional<CallProperties> decodeText(std::string_view text)
{
    auto parsed = json::parse(text.begin(), text.end(), nullptr, false);
    if (parsed.is_discarded())
        return std::nullopt;
    return decode(parsed);
}

} // namespace vardel::CallPropertiesJson
