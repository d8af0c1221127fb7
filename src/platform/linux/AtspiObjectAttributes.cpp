#include "platform/linux/AtspiObjectAttributes.h"

#include <algorithm>
#include <charconv>
#include <sstream>

namespace vardel::linux_desktop::AtspiObjectAttributes {

namespace {

bool isDigit(char character)
{
    return character >= '0' && character <= '9';
}

} // namespace

std::optional<int64_t> headingLevel(std::string_view text)
{
    // from_chars alone would take a minus sign.
    if (text.empty() || !std::all_of(text.begin(), text.end(), isDigit))
        return std::nullopt;
    int level = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), level);
    if (error != std::errc() || end != text.data() + text.size())
        return std::nullopt;
    return level;
}

std::vector<std::string> classNames(std::string_view text)
{
    std::istringstream words { std::string(text) };
    std::vector<std::string> names;
    for (std::string word; words >> word;)
        names.push_back(word);
    return names;
}

} // namespace vardel::linux_desktop::AtspiObjectAttributes
