#include "extractors/ChromeProfileInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

#include <algorithm>
#include <array>

namespace vardel {

namespace {

constexpr const char* profileButtonClass = "AvatarToolbarButton";
// Between the page title and the profile name: space, en dash, space.
constexpr std::string_view profileSeparator = " \u2013 ";

// Chrome's incognito windows in English and German, and Brave's private windows.
constexpr std::array<std::string_view, 4> privateWindowSuffixes
    = { " (Incognito)", " (anonym)", " - Brave (Private)", " - Brave (Privat)" };

// Chrome's toolbar sits four groups below the window.
std::optional<AXUIElement> toolbarOf(const AXUIElement& window)
{
    std::optional<AXUIElement> reached = window;
    for (int depth = 0; depth < 4 && reached; ++depth)
        reached = ElementHelpers::firstElementWithRole(ElementHelpers::children(*reached), AX::groupRole);
    if (!reached)
        return std::nullopt;
    return ElementHelpers::firstElementWithRole(ElementHelpers::children(*reached), AX::toolbarRole);
}

std::optional<AXUIElement> profileButton(const AXUIElement& toolbar)
{
    for (const AXUIElement& child : ElementHelpers::children(toolbar)) {
        auto classes = UIElementUtilities::valueOfAttribute(AX::domClassList, child);
        auto classNames = classes ? classes->asTextList() : std::nullopt;
        if (classNames && std::find(classNames->begin(), classNames->end(), profileButtonClass) != classNames->end())
            return child;
    }
    return std::nullopt;
}

// Leaves a title that already ends with the name, so that several windows of one profile add it once.
void appendProfileName(VDActivityDetails& details, const std::string& profile)
{
    auto& title = details.windowTitle;
    if (!title || title->empty())
        title = profile;
    else if (!TextHelpers::hasSuffix(*title, profile))
        title = *title + std::string(profileSeparator) + profile;
}

} // namespace

void ChromeProfileInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    auto& details = activity.details;
    if (details.windowTitle) {
        const std::string& title = *details.windowTitle;
        if (std::any_of(privateWindowSuffixes.begin(), privateWindowSuffixes.end(),
                [&](std::string_view suffix) { return TextHelpers::hasSuffix(title, suffix); }))
            details.isPrivate = true;
    }

    if (!activity.accessibilityWindows)
        return;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        auto toolbar = toolbarOf(window);
        auto button = toolbar ? profileButton(*toolbar) : std::nullopt;
        if (!button)
            continue;
        auto profile = ElementHelpers::stringAttribute(AX::description, *button);
        if (profile && !profile->empty())
            appendProfileName(details, *profile);
    }
}

} // namespace vardel
