#pragma once

#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

// Conversions between our UTF-8 texts and ICU's UTF-16 strings.
namespace vardel::IcuText {

// Invalid UTF-8 becomes U+FFFD. ICU lengths are 32-bit; text beyond that is cut rather than misread.
inline icu::UnicodeString toUnicode(std::string_view text)
{
    auto length = static_cast<int32_t>(std::min<size_t>(text.size(), INT32_MAX));
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), length));
}

inline std::string toUtf8(const icu::UnicodeString& text)
{
    std::string result;
    text.toUTF8String(result);
    return result;
}

} // namespace vardel::IcuText
