#include "extractors/FirefoxInfoExtractor.h"

#include "activity/EnhancedAccessibility.h"
#include "activity/WebAreaURLInfoExtractor.h"
#include "platform/Platform.h"
#include "platform/ProcessWide.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <array>

namespace vardel {

namespace {

// Firefox ends a private window's title with one of these, depending on version and language.
constexpr std::array<std::string_view, 3> privateBrowsingSuffixes
    = { "(Private Browsing)", "Private Browsing", "Privater Modus" };

// One more suffix for a language or fork the built-in ones miss. An empty value adds nothing: every
// title would end with it.
ProcessWide<std::optional<std::string>> extraPrivateBrowsingSuffix([]() -> std::optional<std::string> {
    auto suffix = platform().productPreferences().getString("FirefoxInfoExtractor_extraPrivateBrowsingSuffix");
    if (!suffix || suffix->empty())
        return std::nullopt;
    return suffix;
});

bool isPrivateBrowsingTitle(std::string_view title)
{
    auto endsTitle = [&](std::string_view suffix) { return TextHelpers::hasSuffix(title, suffix); };
    if (std::any_of(privateBrowsingSuffixes.begin(), privateBrowsingSuffixes.end(), endsTitle))
        return true;
    const auto& extra = extraPrivateBrowsingSuffix.get();
    return extra && endsTitle(*extra);
}

} // namespace

void FirefoxInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (activity.details.windowTitle && isPrivateBrowsingTitle(*activity.details.windowTitle))
        activity.details.isPrivate = true;
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    writeWebAreaURLDetails(activity);
}

} // namespace vardel
