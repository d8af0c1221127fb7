#include "product/DurationFormatter.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

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

std::string shortString(double seconds, int maxComponents, bool alwaysShowMinutes)
{
    int64_t total = wholeSeconds(seconds);
    struct Part {
        int64_t count;
        char unit;
    };
    std::vector<Part> parts = { { total / 3600, 'h' }, { total / 60 % 60, 'm' } };
    if (!alwaysShowMinutes)
        parts.push_back({ total % 60, 's' });
    auto first = std::find_if(parts.begin(), parts.end(), [](const Part& part) { return part.count != 0; });
    if (first == parts.end())
        return alwaysShowMinutes ? "0m" : "0s";
    std::string text;
    int taken = 0;
    for (auto part = first; part != parts.end() && taken < maxComponents; ++part, ++taken) {
        if (part->count != 0 || (alwaysShowMinutes && part->unit == 'm'))
            text += (text.empty() ? "" : " ") + std::to_string(part->count) + part->unit;
    }
    return text;
}

} // namespace vardel::DurationFormatter
