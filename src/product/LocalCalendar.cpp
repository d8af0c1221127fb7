#include "product/LocalCalendar.h"

#include <charconv>
#include <cmath>
#include <ctime>

namespace vardel::LocalCalendar {

namespace {

std::tm localParts(Date date)
{
    // The time zone is read again each time, so that a changed TZ takes effect.
    tzset();
    std::time_t seconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
    std::tm parts {};
    localtime_r(&seconds, &parts);
    return parts;
}

Date midnightOf(int year, int month, int day)
{
    std::tm parts {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_isdst = -1;
    return Date { static_cast<double>(std::mktime(&parts)) };
}

std::string format(Date date, const char* pattern)
{
    std::tm parts = localParts(date);
    char text[32];
    std::strftime(text, sizeof text, pattern, &parts);
    return text;
}

std::optional<int> number(std::string_view text)
{
    int value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

} // namespace

Date startOfDay(Date date)
{
    std::tm parts = localParts(date);
    return midnightOf(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
}

Date startOfNextDay(Date date)
{
    std::tm parts = localParts(date);
    // mktime carries the 32nd of a month over into the next one.
    return midnightOf(parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday + 1);
}

std::optional<Date> parseDay(std::string_view text)
{
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return std::nullopt;
    auto year = number(text.substr(0, 4));
    auto month = number(text.substr(5, 2));
    auto day = number(text.substr(8, 2));
    if (!year || !month || !day || *month < 1 || *month > 12 || *day < 1 || *day > 31)
        return std::nullopt;
    Date start = midnightOf(*year, *month, *day);
    // A day the month does not have comes back from mktime as another date.
    if (formatDay(start) != text)
        return std::nullopt;
    return start;
}

std::string formatDay(Date date)
{
    return format(date, "%Y-%m-%d");
}

std::string formatTime(Date date)
{
    return format(date, "%H:%M:%S");
}

} // namespace vardel::LocalCalendar
