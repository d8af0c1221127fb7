#include "platform/ValueJson.h"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace vardel::ValueJson {

using nlohmann::ordered_json;

ordered_json encode(const std::optional<Value>& value)
{
    return value ? encode(*value) : ordered_json(nullptr);
}

ordered_json encode(const Value& value)
{
    return encode(value, formatIso8601);
}

ordered_json encode(const Value& value, std::string (*formatDate)(Date))
{
    switch (value.kind()) {
    case Value::Kind::Text:
        return *value.asText();
    case Value::Kind::Integer:
        return *value.asInteger();
    case Value::Kind::Real:
        return *value.asNumber();
    case Value::Kind::Boolean:
        return *value.asBoolean();
    case Value::Kind::Date:
        return { { "date", formatDate(*value.asDate()) } };
    case Value::Kind::Url:
        return { { "url", value.asUrl()->absoluteString } };
    case Value::Kind::List: {
        ordered_json array = ordered_json::array();
        for (const Value& member : *value.asList())
            array.push_back(encode(member, formatDate));
        return array;
    }
    case Value::Kind::Dictionary: {
        ordered_json object = ordered_json::object();
        for (const auto& [key, member] : *value.asDictionary())
            object[key] = encode(member, formatDate);
        return object;
    }
    case Value::Kind::Element: {
        auto name = value.asElement()->traceName();
        return { { "ref", name ? ordered_json(*name) : ordered_json(nullptr) } };
    }
    case Value::Kind::Point: {
        auto point = *value.asPoint();
        return { { "point", { point.x, point.y } } };
    }
    case Value::Kind::Size: {
        auto size = *value.asSize();
        return { { "size", { size.width, size.height } } };
    }
    case Value::Kind::Rect: {
        auto rect = *value.asRect();
        return { { "rect", { rect.origin.x, rect.origin.y, rect.size.width, rect.size.height } } };
    }
    case Value::Kind::Range: {
        auto range = *value.asRange();
        return { { "range", { range.location, range.length } } };
    }
    }
    return nullptr;
}

std::string formatIso8601(Date date)
{
    // Rounded to the millisecond before it is split, so that 0.9996 s past a second reads as the next
    // second and not as the one before.
    double milliseconds = std::round(date.secondsSince1970 * 1000);
    double whole = std::floor(milliseconds / 1000);
    auto fraction = static_cast<int>(milliseconds - whole * 1000);
    std::time_t seconds = static_cast<std::time_t>(whole);
    std::tm parts {};
    gmtime_r(&seconds, &parts);
    char buffer[64];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S", &parts);
    std::string text = buffer;
    if (fraction > 0) {
        char fractionText[16];
        std::snprintf(fractionText, sizeof fractionText, ".%03d", fraction);
        text += fractionText;
    }
    return text + "Z";
}

std::optional<Date> parseIso8601(const std::string& text)
{
    int year = 0, month = 0, day = 0, hour = 0, minute = 0;
    double second = 0;
    int consumed = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%lf%n", &year, &month, &day, &hour, &minute, &second, &consumed)
        != 6)
        return std::nullopt;
    std::string zone = text.substr(static_cast<size_t>(consumed));
    if (zone != "Z" && zone != "+00:00")
        return std::nullopt;
    if (month < 1 || month > 12 || day < 1 || day > 31 || hour > 23 || minute > 59 || second < 0 || second >= 61)
        return std::nullopt;
    std::tm parts {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    double whole = std::floor(second);
    parts.tm_sec = static_cast<int>(whole);
    std::time_t seconds = timegm(&parts);
    return Date { static_cast<double>(seconds) + (second - whole) };
}

} // namespace vardel::ValueJson
