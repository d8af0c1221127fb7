#include "product/TextHelpers.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>

namespace vardel::TextHelpers {

namespace {

icu::UnicodeString toUnicode(std::string_view text)
{
    // ICU lengths are 32-bit; text beyond that is cut rather than misread as NUL-terminated.
    auto length = static_cast<int32_t>(std::min<size_t>(text.size(), INT32_MAX));
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), length));
}

std::string toUtf8(const icu::UnicodeString& text)
{
    std::string result;
    text.toUTF8String(result);
    return result;
}

template<typename Predicate> std::string keepingCodePoints(std::string_view text, Predicate shouldKeep)
{
    auto unicodeText = toUnicode(text);
    icu::UnicodeString kept;
    for (int32_t index = 0; index < unicodeText.length(); index = unicodeText.moveIndex32(index, 1)) {
        UChar32 codePoint = unicodeText.char32At(index);
        if (shouldKeep(codePoint))
            kept.append(codePoint);
    }
    return toUtf8(kept);
}

bool isInvisibleControlCharacter(UChar32 codePoint)
{
    if (codePoint == U'\n' || codePoint == U'\t')
        return false;
    auto category = u_charType(codePoint);
    return category == U_CONTROL_CHAR || category == U_FORMAT_CHAR;
}

} // namespace

std::string removingInvisibleControlCharacters(std::string_view text)
{
    return keepingCodePoints(text, [](UChar32 codePoint) { return !isInvisibleControlCharacter(codePoint); });
}

std::string removingSuffixIfPresent(std::string_view text, std::string_view suffix)
{
    if (!hasSuffix(text, suffix))
        return std::string(text);
    return std::string(text.substr(0, text.size() - suffix.size()));
}

std::string removingPrefixIfPresent(std::string_view text, std::string_view prefix)
{
    if (!hasPrefix(text, prefix))
        return std::string(text);
    return std::string(text.substr(prefix.size()));
}

std::string lowercased(std::string_view text)
{
    return toUtf8(toUnicode(text).toLower(icu::Locale::getRoot()));
}

// Comparing bytes is exact for valid UTF-8: a well-formed prefix or suffix can only match on
// character boundaries.
bool hasPrefix(std::string_view text, std::string_view prefix)
{
    return text.starts_with(prefix);
}

bool hasSuffix(std::string_view text, std::string_view suffix)
{
    return text.ends_with(suffix);
}

bool contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

std::string removingCodePoint(std::string_view text, char32_t codePoint)
{
    return keepingCodePoints(
        text, [codePoint](UChar32 candidate) { return candidate != static_cast<UChar32>(codePoint); });
}

} // namespace vardel::TextHelpers
