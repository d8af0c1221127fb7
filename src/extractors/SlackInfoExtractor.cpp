#include "extractors/SlackInfoExtractor.h"

#include "activity/ElementHelpers.h"
#include "activity/EnhancedAccessibility.h"
#include "platform/ProcessWide.h"
#include "platform/RegularExpression.h"
#include "product/TextHelpers.h"

#include <string>
#include <string_view>
#include <vector>

namespace vardel {

namespace {

using Components = std::vector<std::string>;

struct TitleExpressions {
    // The application's own name, also with a workspace in brackets ("Slack [Acme]").
    RegularExpression applicationName = RegularExpression::literal(R"(^Slack(?:\s+\[[^\]]+\])?$)");
    // A running huddle timer ("12:34", "1:02:03").
    RegularExpression huddleTimer = RegularExpression::literal(R"(^\d?\d?:?\d\d:\d\d$)");
    // Unread counters ("3 new messages").
    RegularExpression unreadCounter = RegularExpression::literal(R"(^\d{1,3} \w+)");
    // A status marker (!, * or ^ and a space) in front of a channel name.
    RegularExpression statusMarker = RegularExpression::literal(R"(^(!|\*|\^) (.*)$)");
    // A trailing count ("12 members") after the conversation's name.
    RegularExpression leadingNumber = RegularExpression::literal(R"(^\d+ .+$)");
};

ProcessWide<TitleExpressions> expressions([] { return TitleExpressions {}; });

// Without a window title the page title of the web content stands in for it; the application
// publishes that only to assistive technology.
void takeWindowTitleFromWebAreas(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        ElementHelpers::findWebAreas(window, &activity);
        if (activity.details.windowTitle)
            return;
    }
}

Components titleComponents(std::string_view title)
{
    std::string trimmed = TextHelpers::removingTrailingEmojiAndWhitespace(title);
    // Newer versions join with bars and may keep dashes inside channel names.
    std::string_view separator = TextHelpers::contains(trimmed, " | ") ? " | " : " - ";
    return TextHelpers::componentsSeparatedBy(trimmed, separator);
}

bool saysNothingAboutTheConversation(const std::string& component, const TitleExpressions& patterns)
{
    return patterns.applicationName.matchesAnywhere(component) || patterns.huddleTimer.matchesAnywhere(component)
        || TextHelpers::contains(component, " new items") || patterns.unreadCounter.matchesAnywhere(component);
}

std::string withoutStatusMarker(const std::string& component, const TitleExpressions& patterns)
{
    auto groups = patterns.statusMarker.firstMatch(component);
    if (!groups || groups->size() < 3 || !(*groups)[2])
        return component;
    return *(*groups)[2];
}

Components conversationComponents(std::string_view title)
{
    const TitleExpressions& patterns = expressions.get();
    Components components = titleComponents(title);
    std::erase_if(
        components, [&](const auto& component) { return saysNothingAboutTheConversation(component, patterns); });
    for (std::string& component : components)
        component = withoutStatusMarker(component, patterns);
    if (components.size() > 1 && patterns.leadingNumber.matchesAnywhere(components.back()))
        components.pop_back();
    return components;
}

} // namespace

void SlackInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    auto& details = activity.details;
    if (!details.windowTitle)
        takeWindowTitleFromWebAreas(activity);
    if (!details.windowTitle)
        return;
    Components components = conversationComponents(*details.windowTitle);
    if (components.empty())
        return;
    details.windowTitle.reset();
    details.contextPath = Components(components.rbegin(), components.rend());
}

} // namespace vardel
