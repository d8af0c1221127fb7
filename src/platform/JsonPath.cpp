#include "platform/JsonPath.h"

#include "platform/JsonValueError.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <vector>

namespace vardel {

namespace {

bool isIdentifier(std::string_view key)
{
    auto isLetter = [](char character) {
        return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') || character == '_';
    };
    auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    return !key.empty() && isLetter(key.front()) && std::all_of(key.begin(), key.end(), [&](char character) {
        return isLetter(character) || isDigit(character);
    });
}

} // namespace

JsonPath::JsonPath() = default;

JsonPath::JsonPath(std::string sourceName)
    : sourceName_(std::make_shared<const std::string>(std::move(sourceName)))
{
}

JsonPath::JsonPath(std::shared_ptr<const std::string> sourceName, std::shared_ptr<const Step> last)
    : sourceName_(std::move(sourceName))
    , last_(std::move(last))
{
}

JsonPath JsonPath::appended(std::string text) const
{
    return JsonPath(sourceName_, std::make_shared<const Step>(Step { last_, std::move(text) }));
}

JsonPath JsonPath::member(std::string_view key) const
{
    if (isIdentifier(key))
        return appended("." + std::string(key));
    // Keys such as domain names or file paths are quoted, as JSON writes them.
    return appended("[" + nlohmann::json(key).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) + "]");
}

JsonPath JsonPath::index(size_t position) const
{
    return appended("[" + std::to_string(position) + "]");
}

std::string JsonPath::toString() const
{
    std::vector<const std::string*> steps;
    for (const Step* step = last_.get(); step; step = step->parent.get())
        steps.push_back(&step->text);
    std::string text = "$";
    for (auto step = steps.rbegin(); step != steps.rend(); ++step)
        text += **step;
    return text;
}

void JsonPath::fail(std::string_view problem) const
{
    std::string where = sourceName_ ? *sourceName_ + ": " + toString() : toString();
    throw JsonValueError(where + ": " + std::string(problem));
}

} // namespace vardel
