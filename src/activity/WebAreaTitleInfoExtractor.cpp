#include "activity/WebAreaTitleInfoExtractor.h"

#include "activity/ElementHelpers.h"
#include "activity/EnhancedAccessibility.h"
#include "product/TextHelpers.h"

#include <utility>

namespace vardel {

namespace {

// Such applications end their page titles with " • " and their own name.
std::optional<std::string> applicationNameSuffix(const VDActivity& activity)
{
    const auto& name = activity.application.localizedName;
    if (!name)
        return std::nullopt;
    return " \u2022 " + TextHelpers::removingInvisibleControlCharacters(*name);
}

} // namespace

void WebAreaTitleInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    auto& title = activity.details.windowTitle;
    auto saved = std::exchange(title, std::nullopt);
    auto suffix = applicationNameSuffix(activity);
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        ElementHelpers::findWebAreas(window, &activity);
        if (title && !title->empty()) {
            if (suffix)
                title = TextHelpers::removingSuffixIfPresent(*title, *suffix);
            return;
        }
    }
    title = std::move(saved);
}

} // namespace vardel
