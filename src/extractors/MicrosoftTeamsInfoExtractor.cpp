#include "extractors/MicrosoftTeamsInfoExtractor.h"

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

// The new client is a web view that publishes its full tree only to assistive technology.
constexpr const char* webViewClientBundleIdentifier = "com.microsoft.teams2";

// "Jane Doe (External)": the parenthesised part qualifies the person, it is not part of the name.
ProcessWide<RegularExpression> parenthesisedSuffix([] { return RegularExpression::literal(R"(^(.+) \((.+)\)$)"); });

std::string withoutParenthesisedSuffix(const std::string& component)
{
    auto groups = parenthesisedSuffix.get().firstMatch(component);
    if (!groups || groups->size() < 2 || !(*groups)[1])
        return component;
    return *(*groups)[1];
}

} // namespace

void MicrosoftTeamsInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.details.windowTitle)
        return;
    if (activity.applicationBundleIdentifier == webViewClientBundleIdentifier)
        EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    Components components = TextHelpers::componentsSeparatedBy(*activity.details.windowTitle, " | ");
    std::erase(components, "Microsoft Teams");
    std::erase(components, "Chat");
    if (components.empty())
        return;
    // The title's first part is the most specific one; the path ends with it.
    std::string conversation = withoutParenthesisedSuffix(components.front());
    components.erase(components.begin());
    components.push_back(std::move(conversation));
    activity.details.contextPath = std::move(components);
}

} // namespace vardel
