#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Text helpers of the product's libraries, on ICU. All texts are UTF-8; invalid UTF-8 is treated
// as U+FFFD and never makes a helper fail.
namespace vardel::TextHelpers {

// Drops invisible control and formatting characters (general categories Cc and Cf), keeping
// line feeds and tabs.
std::string removingInvisibleControlCharacters(std::string_view text);

// The text without the suffix when it ends with it; otherwise the text unchanged.
std::string removingSuffixIfPresent(std::string_view text, std::string_view suffix);
// The text without the prefix when it starts with it; otherwise the text unchanged.
std::string removingPrefixIfPresent(std::string_view text, std::string_view prefix);

// Full Unicode lowercasing (root locale).
std::string lowercased(std::string_view text);

bool hasPrefix(std::string_view text, std::string_view prefix);
bool hasSuffix(std::string_view text, std::string_view suffix);
bool contains(std::string_view text, std::string_view part);
// Appends the text when there is one and it is not empty.
void appendIfNonEmpty(std::vector<std::string>& texts, const std::optional<std::string>& text);

// The parts between occurrences of the separator: n separators give n + 1 parts, empty ones
// included. An empty separator gives the whole text.
std::vector<std::string> componentsSeparatedBy(std::string_view text, std::string_view separator);

// The parts with the separator between each two.
std::string joined(const std::vector<std::string>& parts, std::string_view separator);

// Every occurrence of the character (a code point) removed.
std::string removingCodePoint(std::string_view text, char32_t codePoint);

// The text without emoji (with their joiners, variation selectors, skin tones and keycaps) and
// white space at its end.
std::string removingTrailingEmojiAndWhitespace(std::string_view text);

// The text without the part where it stands at its start or its end, together with the separator
// (white space and dashes, bars, bullets, colons) that joins it to the rest; the part must stand
// as a whole there, not as the beginning of a longer word. When nothing is left, the result is
// nothing if alsoRemoveIfFullString is set and the text unchanged otherwise.
std::optional<std::string> removingTitlePrefixesAndSuffixes(
    std::string_view text, std::string_view prefixOrSuffix, bool alsoRemoveIfFullString);

enum class TruncationPosition { head, middle, tail };
// At most `length` user-perceived characters: a longer text is cut at its head, middle or tail
// and the cut marked with "…", which counts towards the length.
std::string truncated(std::string_view text, size_t length, TruncationPosition at);

// The first result of the function over the list that is not nothing.
template<typename T, typename Function>
auto firstNonNil(const std::vector<T>& list, Function function) -> decltype(function(list.front()))
{
    for (const T& member : list) {
        if (auto result = function(member))
            return result;
    }
    return {};
}

// The element at the index, or nothing when the index is out of bounds.
template<typename T> const T* elementAt(const std::vector<T>& list, size_t index)
{
    return index < list.size() ? &list[index] : nullptr;
}

} // namespace vardel::TextHelpers
