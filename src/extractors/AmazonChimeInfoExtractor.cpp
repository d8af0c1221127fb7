#include "extractors/AmazonChimeInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "product/TextHelpers.h"

#include <optional>
#include <string>

namespace vardel {

namespace {

using namespace ElementHelpers;

// The window is split into the conversation list and the conversation; the latter's first group
// opens with the conversation's name.
std::optional<std::string> conversationNameInWindow(const AXUIElement& window)
{
    auto splitGroup = firstElementWithRole(children(window), AX::splitGroupRole);
    if (!splitGroup)
        return std::nullopt;
    auto conversation = firstElementWithRole(children(*splitGroup), AX::groupRole);
    if (!conversation)
        return std::nullopt;
    for (const AXUIElement& child : children(*conversation)) {
        if (roleText(child) != AX::staticTextRole)
            continue;
        auto text = valueText(child);
        if (text && !text->empty())
            return text;
    }
    return std::nullopt;
}

} // namespace

void AmazonChimeInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    if (auto name = TextHelpers::firstNonNil(*activity.accessibilityWindows, conversationNameInWindow))
        activity.details.contextPath = std::vector { *name };
}

} // namespace vardel
