// Only the first window is read.
// Title area: the window's first "AXToolbar" child → its children wider than 50 points, in order;
// the first "AXDescription" among them that is a non-empty text not beginning with "ChatGPT" (the
// model picker's label) names the conversation.
// Conversation area: the window's first "AXGroup" child → its first "AXSplitGroup" child (sidebar
// list, splitter, conversation) → its last "AXScrollArea" child.
// Combination: the window's own "AXTitle" (unless empty or beginning with "ChatGPT") and the
// toolbar's name are split at ", "; the window's parts come first, then the toolbar's parts that
// the window's title does not already hold, joined again by ", ".
// No conversation is open when the conversation area is there but neither the window title nor
// the toolbar names one; when the area is missing the window is not the one expected and nothing
// is written.

#include "extractors/ChatGPTInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

#include <algorithm>

namespace vardel {

namespace {

constexpr double minimumTitleAreaWidth = 50.0;
constexpr std::string_view applicationName = "ChatGPT";
constexpr std::string_view separator = ", ";
constexpr const char* newChat = "New Chat";

// A text that begins with the application's name is the application (or its model) speaking.
std::optional<std::string> conversationName(std::optional<std::string> text)
{
    if (!text || text->empty() || TextHelpers::hasPrefix(*text, applicationName))
        return std::nullopt;
    return text;
}

std::optional<std::string> toolbarName(const AXUIElement& window)
{
    auto toolbar = ElementHelpers::firstChildWithRole(window, "AXToolbar");
    if (!toolbar)
        return std::nullopt;
    for (const AXUIElement& item : ElementHelpers::children(*toolbar)) {
        if (UIElementUtilities::sizeOfUIElement(item).width <= minimumTitleAreaWidth)
            continue;
        if (auto name = conversationName(UIElementUtilities::stringValueOfAttribute(AX::description, item)))
            return name;
    }
    return std::nullopt;
}

bool hasConversationArea(const AXUIElement& window)
{
    auto group = ElementHelpers::firstChildWithRole(window, AX::groupRole);
    auto splitGroup = group ? ElementHelpers::firstChildWithRole(*group, "AXSplitGroup") : std::nullopt;
    return splitGroup && ElementHelpers::lastElementWithRole(ElementHelpers::children(*splitGroup), AX::scrollAreaRole);
}

std::vector<std::string> parts(std::string_view text)
{
    std::vector<std::string> found;
    while (!text.empty()) {
        size_t end = std::min(text.find(separator), text.size());
        if (end > 0)
            found.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + separator.size(), text.size()));
    }
    return found;
}

// The window often repeats the toolbar's name, or part of it; each part is kept once.
std::string combined(const std::string& windowTitle, const std::string& toolbarTitle)
{
    std::vector<std::string> kept = parts(windowTitle);
    for (std::string& part : parts(toolbarTitle)) {
        if (std::find(kept.begin(), kept.end(), part) == kept.end())
            kept.push_back(std::move(part));
    }
    return TextHelpers::joined(kept, separator);
}

std::optional<std::string> conversationTitle(const AXUIElement& window)
{
    auto fromWindow = conversationName(ElementHelpers::titleText(window));
    auto fromToolbar = toolbarName(window);
    if (!fromWindow || !fromToolbar)
        return fromWindow ? fromWindow : fromToolbar;
    // Titles made of separators only leave nothing to combine.
    return conversationName(combined(*fromWindow, *fromToolbar));
}

} // namespace

void ChatGPTInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows || activity.accessibilityWindows->empty())
        return;
    const AXUIElement& window = activity.accessibilityWindows->front();
    if (auto title = conversationTitle(window))
        activity.details.contextPath = { *title };
    else if (hasConversationArea(window))
        activity.details.contextPath = { newChat };
}

} // namespace vardel
