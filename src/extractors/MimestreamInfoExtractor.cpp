// Only the front window counts. A compose window is identified as "ComposeWindow"; its first pop-up
// button shows the sending account and its title is "New Message" until a subject is typed. In the
// main window, titled after the mailbox, the message list is the last scroll area of the first split
// group; the selected row's first cell holds the message's texts, the first static text and the
// one identified as "_NS:129".

#include "extractors/MimestreamInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "product/TextHelpers.h"

namespace vardel {

namespace {

using ElementHelpers::ElementList;

constexpr const char* composeWindowIdentifier = "ComposeWindow";
constexpr const char* newMessageTitle = "New Message";
// Assigned by the application's interface builder, so it may change with a new version.
constexpr const char* messageTextIdentifier = "_NS:129";

std::vector<std::string> composeContext(const AXUIElement& window)
{
    std::vector<std::string> context;
    if (auto account = ElementHelpers::firstChildWithRole(window, AX::popUpButtonRole))
        TextHelpers::appendIfNonEmpty(context, ElementHelpers::valueText(*account));
    context.push_back(newMessageTitle);
    auto subject = ElementHelpers::titleText(window);
    if (subject != newMessageTitle)
        TextHelpers::appendIfNonEmpty(context, subject);
    return context;
}

// The children of the selected message's first cell.
ElementList selectedMessageTexts(const AXUIElement& window)
{
    auto splitGroup = ElementHelpers::firstChildWithRole(window, AX::splitGroupRole);
    if (!splitGroup)
        return {};
    auto messageList = ElementHelpers::lastElementWithRole(ElementHelpers::children(*splitGroup), AX::scrollAreaRole);
    auto table = messageList ? ElementHelpers::firstChildWithRole(*messageList, AX::tableRole) : std::nullopt;
    if (!table)
        return {};
    ElementList rows = ElementHelpers::selectedRows(*table);
    if (rows.empty())
        return {};
    ElementList cells = ElementHelpers::children(rows.front());
    return cells.empty() ? ElementList {} : ElementHelpers::children(cells.front());
}

std::vector<std::string> mailboxContext(const AXUIElement& window)
{
    std::vector<std::string> context;
    TextHelpers::appendIfNonEmpty(context, ElementHelpers::titleText(window));
    ElementList texts = selectedMessageTexts(window);
    if (auto first = ElementHelpers::firstElementWithRole(texts, AX::staticTextRole))
        TextHelpers::appendIfNonEmpty(context, ElementHelpers::valueText(*first));
    if (auto identified = ElementHelpers::firstElementWithIdentifier(texts, messageTextIdentifier))
        TextHelpers::appendIfNonEmpty(context, ElementHelpers::valueText(*identified));
    return context;
}

} // namespace

void MimestreamInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows || activity.accessibilityWindows->empty())
        return;
    const AXUIElement& window = activity.accessibilityWindows->front();
    if (ElementHelpers::stringAttribute(AX::identifier, window) == composeWindowIdentifier) {
        activity.details.contextPath = composeContext(window);
        return;
    }
    auto context = mailboxContext(window);
    if (!context.empty())
        activity.details.contextPath = std::move(context);
}

} // namespace vardel
