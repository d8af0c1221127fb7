#include "product/TextHelpers.h"

#include "platform/IcuText.h"

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace vardel::TextHelpers {

namespace {

using IcuText::toUnicode;
using IcuText::toUtf8;

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
void appendIfNonEmpty(std::vector<std::string>& texts, const std::optional<std::string>& text)
{
    if (text && !text->empty())
        texts.push_back(*text);
}

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

namespace {

bool belongsToTrailingEmoji(UChar32 codePoint)
{
    return u_hasBinaryProperty(codePoint, UCHAR_EXTENDED_PICTOGRAPHIC)
        || u_hasBinaryProperty(codePoint, UCHAR_EMOJI_MODIFIER)
        || u_hasBinaryProperty(codePoint, UCHAR_REGIONAL_INDICATOR)
        || u_hasBinaryProperty(codePoint, UCHAR_VARIATION_SELECTOR) || codePoint == 0x200D || codePoint == 0x20E3
        || u_isUWhiteSpace(codePoint);
}

bool isTitleSeparator(UChar32 codePoint)
{
    return u_isUWhiteSpace(codePoint) || u_hasBinaryProperty(codePoint, UCHAR_DASH) || codePoint == U'|'
        || codePoint == U':' || codePoint == 0x2022 || codePoint == 0x00B7;
}

// Offsets of the user-perceived characters' boundaries, 0 and the length included.
std::vector<int32_t> graphemeBoundaries(const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> iterator(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    std::vector<int32_t> boundaries;
    if (U_FAILURE(status)) {
        // Without break data every code unit counts as a character.
        for (int32_t offset = 0; offset <= text.length(); ++offset)
            boundaries.push_back(offset);
        return boundaries;
    }
    iterator->setText(text);
    for (int32_t offset = iterator->first(); offset != icu::BreakIterator::DONE; offset = iterator->next())
        boundaries.push_back(offset);
    return boundaries;
}

// The rest after a leading part, or nothing when the part does not stand there as a whole.
std::optional<icu::UnicodeString> afterLeadingPart(const icu::UnicodeString& text, const icu::UnicodeString& part)
{
    if (!text.startsWith(part))
        return std::nullopt;
    int32_t index = part.length();
    if (index < text.length() && !isTitleSeparator(text.char32At(index)))
        return std::nullopt;
    while (index < text.length() && isTitleSeparator(text.char32At(index)))
        index = text.moveIndex32(index, 1);
    return icu::UnicodeString(text, index);
}

std::optional<icu::UnicodeString> beforeTrailingPart(const icu::UnicodeString& text, const icu::UnicodeString& part)
{
    if (!text.endsWith(part))
        return std::nullopt;
    int32_t end = text.length() - part.length();
    if (end > 0 && !isTitleSeparator(text.char32At(end - 1)))
        return std::nullopt;
    while (end > 0 && isTitleSeparator(text.char32At(end - 1)))
        end = text.moveIndex32(end, -1);
    return icu::UnicodeString(text, 0, end);
}

} // namespace

std::vector<std::string> componentsSeparatedBy(std::string_view text, std::string_view separator)
{
    if (separator.empty())
        return { std::string(text) };
    std::vector<std::string> components;
    size_t start = 0;
    for (size_t found = text.find(separator); found != std::string_view::npos; found = text.find(separator, start)) {
        components.emplace_back(text.substr(start, found - start));
        start = found + separator.size();
    }
    components.emplace_back(text.substr(start));
    return components;
}

std::string joined(const std::vector<std::string>& parts, std::string_view separator)
{
    std::string text;
    for (size_t index = 0; index < parts.size(); ++index) {
        if (index > 0)
            text += separator;
        text += parts[index];
    }
    return text;
}

std::string removingTrailingEmojiAndWhitespace(std::string_view text)
{
    auto unicodeText = toUnicode(text);
    int32_t end = unicodeText.length();
    while (end > 0) {
        int32_t previous = unicodeText.moveIndex32(end, -1);
        if (!belongsToTrailingEmoji(unicodeText.char32At(previous)))
            break;
        end = previous;
    }
    return toUtf8(icu::UnicodeString(unicodeText, 0, end));
}

std::optional<std::string> removingTitlePrefixesAndSuffixes(
    std::string_view text, std::string_view prefixOrSuffix, bool alsoRemoveIfFullString)
{
    if (prefixOrSuffix.empty())
        return std::string(text);
    auto unicodeText = toUnicode(text);
    auto part = toUnicode(prefixOrSuffix);
    icu::UnicodeString rest = unicodeText;
    if (auto afterPrefix = afterLeadingPart(rest, part))
        rest = *afterPrefix;
    if (auto beforeSuffix = beforeTrailingPart(rest, part))
        rest = *beforeSuffix;
    if (!rest.isEmpty())
        return toUtf8(rest);
    if (alsoRemoveIfFullString)
        return std::nullopt;
    return std::string(text);
}

std::string truncated(std::string_view text, size_t length, TruncationPosition at)
{
    auto unicodeText = toUnicode(text);
    auto boundaries = graphemeBoundaries(unicodeText);
    size_t characterCount = boundaries.size() - 1;
    if (characterCount <= length)
        return std::string(text);
    if (length == 0)
        return {};
    size_t kept = length - 1;
    size_t keptAtHead = at == TruncationPosition::tail ? kept : at == TruncationPosition::head ? 0 : (kept + 1) / 2;
    size_t keptAtTail = kept - keptAtHead;
    icu::UnicodeString result(unicodeText, 0, boundaries[keptAtHead]);
    result.append(UChar32(0x2026));
    int32_t tailStart = boundaries[characterCount - keptAtTail];
    result.append(unicodeText, tailStart, unicodeText.length() - tailStart);
    return toUtf8(result);
}

} // namespace vardel::TextHelpers
