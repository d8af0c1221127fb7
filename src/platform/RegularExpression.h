#pragma once

#include <unicode/uversion.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// "icu" is an alias of ICU's versioned namespace, so the forward declaration goes through its macros.
U_NAMESPACE_BEGIN
class RegexPattern;
U_NAMESPACE_END

namespace vardel {

// An ICU regular expression over UTF-8 text. Compile once, use from any thread.
class RegularExpression {
public:
    enum Option : unsigned { none = 0, caseInsensitive = 1u << 0, dotMatchesLineSeparators = 1u << 1 };

    // For expressions written in the code: one that does not compile is a programming error and
    // stops the process with a message naming it.
    static RegularExpression literal(std::string_view pattern, unsigned options = none);
    // For expressions from preferences or localised text: nothing when it does not compile.
    static std::optional<RegularExpression> compile(std::string_view pattern, unsigned options = none);

    // Every match replaced by the template ("$1" names a group).
    std::string replacingMatches(std::string_view text, std::string_view replacementTemplate = "") const;
    bool matchesAnywhere(std::string_view text) const;
    bool matchesWhole(std::string_view text) const;
    // The groups of the first match, group 0 first; a group that took no part is nothing.
    std::optional<std::vector<std::optional<std::string>>> firstMatch(std::string_view text) const;

    const std::string& pattern() const { return pattern_; }

private:
    RegularExpression(std::string pattern, std::shared_ptr<const icu::RegexPattern> compiled);

    std::string pattern_;
    std::shared_ptr<const icu::RegexPattern> compiled_;
};

} // namespace vardel
