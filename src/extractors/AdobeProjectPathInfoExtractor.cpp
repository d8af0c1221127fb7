#include "extractors/AdobeProjectPathInfoExtractor.h"

#include "activity/EnhancedAccessibility.h"
#include "platform/ProcessWide.h"
#include "platform/RegularExpression.h"
#include "product/TextHelpers.h"

namespace vardel {

namespace {

struct TitleExpressions {
    RegularExpression projectPath;
    RegularExpression afterEffectsPrefix;
    RegularExpression premiereProPrefix;
};

ProcessWide<TitleExpressions> expressions([] {
    return TitleExpressions {
        RegularExpression::literal(R"re((/.+(\.prproj|\.aep)))re"),
        RegularExpression::literal(R"re(^Adobe After Effects \d+ - )re"),
        RegularExpression::literal(R"re(^Adobe Premiere Pro \d+ - )re"),
    };
});

// Both applications mark unsaved changes with a trailing asterisk.
constexpr std::string_view unsavedMarker = " *";

std::optional<std::string> projectPathInTitle(const std::string& title)
{
    auto groups = expressions.get().projectPath.firstMatch(title);
    if (!groups || groups->size() < 2)
        return std::nullopt;
    return (*groups)[1];
}

std::string removingEveryOccurrence(std::string text, std::string_view part)
{
    for (auto found = text.find(part); found != std::string::npos; found = text.find(part, found))
        text.erase(found, part.size());
    return text;
}

// What the title says besides the application's name and the project path; nothing when that is
// all it says.
std::optional<std::string> cleanedTitle(const std::string& title, const std::string& projectPath)
{
    const TitleExpressions& titleExpressions = expressions.get();
    std::string rest = TextHelpers::removingSuffixIfPresent(title, unsavedMarker);
    rest = titleExpressions.afterEffectsPrefix.replacingMatches(rest);
    rest = titleExpressions.premiereProPrefix.replacingMatches(rest);
    auto withoutPath = TextHelpers::removingTitlePrefixesAndSuffixes(rest, projectPath, true);
    if (!withoutPath)
        return std::nullopt;
    rest = removingEveryOccurrence(TextHelpers::removingSuffixIfPresent(*withoutPath, unsavedMarker), projectPath);
    if (rest.empty())
        return std::nullopt;
    return rest;
}

} // namespace

void AdobeProjectPathInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    VDActivityDetails& details = activity.details;
    if (details.documentPath || !details.windowTitle)
        return;
    auto projectPath = projectPathInTitle(*details.windowTitle);
    if (!projectPath)
        return;
    details.windowTitle = cleanedTitle(*details.windowTitle, *projectPath);
    details.documentPath = std::move(projectPath);
}

} // namespace vardel
