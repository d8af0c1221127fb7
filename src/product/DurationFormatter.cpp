#include "product/DurationFormatter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vardel::DurationFormatter {

namespace {

// Far beyond any real duration, yet safely convertible to a 64-bit count.
constexpr double longestDurationInSeconds = 1e15;

int64_t wholeSeconds(double seconds)
{
    if (!(seconds > 0))
        return 0;
    return static_cast<int64_t>(std::floor(std::min(seconds, longestDurationInSeconds)));
}

void appendPart(std::string& text, int64_t count, char unit)
{
    if (count == 0)
        return;
    if (!text.empty())
        text += ' ';
    text += std::to_string(count) + unit;
}

} // namespace

std::string format(double seconds)
{
    int64_t remaining = wholeSeconds(seconds);
    if (remaining == 0)
        return "0s";
    std::string text;
    appendPart(text, remaining / 3600, 'h');
    appendPart(text, remaining / 60 % 60, 'm');
    appendPart(text, remaining % 60, 's');
    return text;
}

std::string shortStringFor(double seconds, int maxComponents, bool alwaysShowMinutes)
{
    maxComponents = std::clamp(maxComponents, 1, 3);
    int64_t total = wholeSeconds(seconds);
    const int64_t parts[] = { total / 3600, total / 60 % 60, total % 60 };
    const char units[] = { 'h', 'm', 's' };
    int first = 0;
    while (first < 2 && parts[first] == 0)
        ++first;
    std::string text;
    for (int unit = first; unit < 3 && unit < first + maxComponents; ++unit) {
        if (parts[unit] == 0 && units[unit] == 'm' && alwaysShowMinutes)
            text += text.empty() ? "0m" : " 0m";
        else
            appendPart(text, parts[unit], units[unit]);
    }
    return text.empty() ? "0" + std::string(1, units[std::min(first + maxComponents, 3) - 1]) : text;
}

} // namespace vardel::DurationFormatter
