#include "platform/RegularExpression.h"

#include "platform/IcuText.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace vardel {

namespace {

using IcuText::toUnicode;
using IcuText::toUtf8;

// Bounds the backtracking of one match, in the engine's steps (roughly milliseconds), so that a
// pattern from preferences meeting hostile text fails to match instead of hanging a sample.
constexpr int32_t matchStepLimit = 1000;

uint32_t icuFlags(unsigned options)
{
    uint32_t flags = 0;
    if (options & RegularExpression::caseInsensitive)
        flags |= UREGEX_CASE_INSENSITIVE;
    if (options & RegularExpression::dotMatchesLineSeparators)
        flags |= UREGEX_DOTALL;
    return flags;
}

std::shared_ptr<const icu::RegexPattern> compilePattern(std::string_view pattern, unsigned options, UErrorCode& status)
{
    UParseError parseError;
    std::shared_ptr<const icu::RegexPattern> compiled(
        icu::RegexPattern::compile(toUnicode(pattern), icuFlags(options), parseError, status));
    if (U_FAILURE(status))
        return nullptr;
    return compiled;
}

// A matcher over the text, or nullptr when ICU cannot make one (out of memory).
std::unique_ptr<icu::RegexMatcher> makeMatcher(const icu::RegexPattern& pattern, const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(text, status));
    if (U_FAILURE(status))
        return nullptr;
    matcher->setTimeLimit(matchStepLimit, status);
    return matcher;
}

// Whether the test passes on a matcher over the text; a matcher ICU cannot make, or a match that ran
// out of steps, is no match.
template<typename MatcherTest> bool matches(const icu::RegexPattern& pattern, std::string_view text, MatcherTest test)
{
    auto unicodeText = toUnicode(text);
    auto matcher = makeMatcher(pattern, unicodeText);
    if (!matcher)
        return false;
    UErrorCode status = U_ZERO_ERROR;
    bool passed = test(*matcher, status);
    return U_SUCCESS(status) && passed;
}

} // namespace

RegularExpression::RegularExpression(std::string pattern, std::shared_ptr<const icu::RegexPattern> compiled)
    : pattern_(std::move(pattern))
    , compiled_(std::move(compiled))
{
}

RegularExpression RegularExpression::literal(std::string_view pattern, unsigned options)
{
    UErrorCode status = U_ZERO_ERROR;
    auto compiled = compilePattern(pattern, options, status);
    if (!compiled) {
        std::fprintf(stderr, "Regular expression literal does not compile (%s): %.*s\n", u_errorName(status),
            static_cast<int>(pattern.size()), pattern.data());
        std::abort();
    }
    return RegularExpression(std::string(pattern), std::move(compiled));
}

std::optional<RegularExpression> RegularExpression::compile(std::string_view pattern, unsigned options)
{
    UErrorCode status = U_ZERO_ERROR;
    auto compiled = compilePattern(pattern, options, status);
    if (!compiled)
        return std::nullopt;
    return RegularExpression(std::string(pattern), std::move(compiled));
}

std::string RegularExpression::replacingMatches(std::string_view text, std::string_view replacementTemplate) const
{
    auto unicodeText = toUnicode(text);
    auto matcher = makeMatcher(*compiled_, unicodeText);
    if (!matcher)
        return std::string(text);
    UErrorCode status = U_ZERO_ERROR;
    auto replaced = matcher->replaceAll(toUnicode(replacementTemplate), status);
    // A template naming a missing group, or a match that ran out of steps, leaves the text as it was.
    if (U_FAILURE(status))
        return std::string(text);
    return toUtf8(replaced);
}

bool RegularExpression::matchesAnywhere(std::string_view text) const
{
    return matches(
        *compiled_, text, [](icu::RegexMatcher& matcher, UErrorCode& status) { return matcher.find(0, status); });
}

bool RegularExpression::matchesWhole(std::string_view text) const
{
    return matches(
        *compiled_, text, [](icu::RegexMatcher& matcher, UErrorCode& status) { return matcher.matches(status); });
}

std::optional<std::vector<std::optional<std::string>>> RegularExpression::firstMatch(std::string_view text) const
{
    auto unicodeText = toUnicode(text);
    auto matcher = makeMatcher(*compiled_, unicodeText);
    if (!matcher)
        return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    if (!matcher->find(0, status) || U_FAILURE(status))
        return std::nullopt;
    std::vector<std::optional<std::string>> groups;
    for (int32_t group = 0; group <= matcher->groupCount(); ++group) {
        if (matcher->start(group, status) < 0) {
            groups.push_back(std::nullopt);
            continue;
        }
        groups.push_back(toUtf8(matcher->group(group, status)));
    }
    if (U_FAILURE(status))
        return std::nullopt;
    return groups;
}

} // namespace vardel
