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

// Every occurrence of the character (a code point) removed.
std::string removingCodePoint(std::string_view text, char32_t codePoint);

// The element at the index, or nothing when the index is out of bounds.
template<typename T> const T* elementAt(const std::vector<T>& list, size_t index)
{
    return index < list.size() ? &list[index] : nullptr;
}

} // namespace vardel::TextHelpers
