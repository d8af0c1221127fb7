// Where Outlook shows what. Every window has a split group as a child; in the main window that split
// group holds a second one, whose children (the panes) are read as follows:
//
// - Folder pane: the first scroll area → its first outline → the selected row, when exactly one is
//   selected. A row's name is in its first cell, among the children of the cell's children: the first
//   static text or text field. Parent rows are reached through "AXDisclosedByRow".
// - Message list: the first split group of the panes → its first split group → first scroll area →
//   first table → first selected row → first cell. The cell's description summarises the message
//   ("Subject: …, Sender: …, …"). Rows that summarise differently carry the sender's picture as the
//   cell's first image, described with the sender's name.
// - Reading pane: the pane identified as "HeaderMainContainer"; among its children or grandchildren
//   the one identified as "messageHeaderFromContent"; its first button is titled (else described)
//   with the sender, who is added unless the message list already named them.
//
// A message or compose window has no second split group; its first split group's children hold a
// header identified as "HeaderMainContainer" (or, failing that, a leading group), else the compose
// form's fields. Its title reads "<subject> - <account> - Outlook": without the application's name,
// the title is cut at its last " - " into two parts, which lead the context path.

#include "extractors/NewOutlookInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "platform/ProcessWide.h"
#include "platform/RegularExpression.h"
#include "product/TextHelpers.h"

#include <algorithm>

namespace vardel {

namespace {

using ElementHelpers::ElementList;
using Texts = std::vector<std::string>;

constexpr const char* cellRole = "AXCell";
constexpr const char* imageRole = "AXImage";
constexpr const char* disclosedByRowAttribute = "AXDisclosedByRow";
constexpr const char* headerIdentifier = "HeaderMainContainer";
constexpr const char* senderHeaderIdentifier = "messageHeaderFromContent";

constexpr std::string_view titleSeparator = " - ";
constexpr std::string_view applicationNameInTitle = "outlook";
// Folders nest far less deeply; the bound ends a hostile chain of ever new rows (one that loops back
// ends at the repeated row).
constexpr int maxFolderDepth = 100;

// The English form of the tracker's localised expression for message-list summaries: group 1 is
// the subject, group 2 the sender.
ProcessWide<RegularExpression> summaryExpression(
    [] { return RegularExpression::literal("Subject: (.+), Sender: ([^,]+),"); });

void appendAll(Texts& list, Texts more)
{
    list.insert(list.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

std::optional<std::string> nonEmpty(std::optional<std::string> text)
{
    return text && !text->empty() ? text : std::nullopt;
}

// Follows one child of the given role per step; nothing as soon as a step finds none.
std::optional<AXUIElement> descendByRoles(std::optional<AXUIElement> element, std::initializer_list<const char*> roles)
{
    for (const char* role : roles) {
        if (!element)
            return std::nullopt;
        element = ElementHelpers::firstChildWithRole(*element, role);
    }
    return element;
}

std::optional<AXUIElement> parentRow(const AXUIElement& row)
{
    auto value = UIElementUtilities::valueOfAttribute(disclosedByRowAttribute, row);
    const AXUIElement* parent = value ? value->asElement() : nullptr;
    return parent ? std::optional(*parent) : std::nullopt;
}

std::optional<std::string> folderName(const AXUIElement& row)
{
    auto cell = ElementHelpers::firstChildWithRole(row, cellRole);
    if (!cell)
        return std::nullopt;
    for (const AXUIElement& candidate : ElementHelpers::childrenOfElements(ElementHelpers::children(*cell))) {
        auto role = ElementHelpers::roleText(candidate);
        if (role == AX::staticTextRole || role == AX::textFieldRole)
            return nonEmpty(ElementHelpers::valueText(candidate));
    }
    return std::nullopt;
}

// Root folder first.
Texts folderPath(const ElementList& panes)
{
    auto outline = descendByRoles(ElementHelpers::firstElementWithRole(panes, AX::scrollAreaRole), { AX::outlineRole });
    ElementList selected = outline ? ElementHelpers::selectedRows(*outline) : ElementList {};
    if (selected.size() != 1)
        return {};
    Texts path;
    ElementList visited;
    std::optional<AXUIElement> row = selected.front();
    for (int depth = 0; row && depth < maxFolderDepth && !ElementHelpers::elementListContains(visited, *row); ++depth) {
        visited.push_back(*row);
        TextHelpers::appendIfNonEmpty(path, folderName(*row));
        row = parentRow(*row);
    }
    std::reverse(path.begin(), path.end());
    return path;
}

// Sender, then subject.
Texts summarisedMessage(const std::string& summary)
{
    auto groups = summaryExpression.get().firstMatch(summary);
    if (!groups)
        return {};
    Texts message;
    TextHelpers::appendIfNonEmpty(message, (*groups)[2]);
    TextHelpers::appendIfNonEmpty(message, (*groups)[1]);
    return message;
}

Texts selectedMessage(const ElementList& panes)
{
    auto table = descendByRoles(ElementHelpers::firstElementWithRole(panes, AX::splitGroupRole),
        { AX::splitGroupRole, AX::scrollAreaRole, AX::tableRole });
    ElementList rows = table ? ElementHelpers::selectedRows(*table) : ElementList {};
    auto cell = rows.empty() ? std::nullopt : ElementHelpers::firstChildWithRole(rows.front(), cellRole);
    if (!cell)
        return {};
    if (auto summary = ElementHelpers::stringAttribute(AX::description, *cell)) {
        if (Texts message = summarisedMessage(*summary); !message.empty())
            return message;
    }
    Texts sender;
    if (auto picture = ElementHelpers::firstChildWithRole(*cell, imageRole))
        TextHelpers::appendIfNonEmpty(sender, ElementHelpers::stringAttribute(AX::description, *picture));
    return sender;
}

std::optional<std::string> readingPaneSender(const ElementList& panes)
{
    auto header = ElementHelpers::firstElementWithIdentifier(panes, headerIdentifier);
    if (!header)
        return std::nullopt;
    ElementList below = ElementHelpers::children(*header);
    auto from = ElementHelpers::firstElementWithIdentifier(below, senderHeaderIdentifier);
    if (!from)
        from = ElementHelpers::firstElementWithIdentifier(
            ElementHelpers::childrenOfElements(below), senderHeaderIdentifier);
    auto button = from ? ElementHelpers::firstChildWithRole(*from, AX::buttonRole) : std::nullopt;
    if (!button)
        return std::nullopt;
    if (auto title = nonEmpty(ElementHelpers::titleText(*button)))
        return title;
    return nonEmpty(ElementHelpers::stringAttribute(AX::description, *button));
}

Texts mainWindowContext(const ElementList& panes)
{
    Texts context = folderPath(panes);
    Texts message = selectedMessage(panes);
    auto sender = readingPaneSender(panes);
    if (sender && std::find(message.begin(), message.end(), *sender) == message.end())
        message.push_back(*sender);
    appendAll(context, std::move(message));
    return context;
}

std::optional<AXUIElement> messageHeader(const ElementList& elements)
{
    if (auto header = ElementHelpers::firstElementWithIdentifier(elements, headerIdentifier))
        return header;
    if (!elements.empty() && ElementHelpers::roleText(elements.front()) == AX::groupRole)
        return elements.front();
    return std::nullopt;
}

// Sender, then subject (or, in a compose window, the form's first fields).
Texts messageWindowContext(const ElementList& elements)
{
    std::optional<AXUIElement> first;
    std::optional<AXUIElement> second;
    if (auto header = messageHeader(elements)) {
        first = descendByRoles(header, { AX::scrollAreaRole, AX::staticTextRole, AX::buttonRole });
        second = ElementHelpers::firstChildWithRole(*header, AX::staticTextRole);
    } else {
        first = descendByRoles(ElementHelpers::firstElementWithRole(elements, AX::scrollAreaRole),
            { AX::textFieldRole, AX::staticTextRole });
        second = ElementHelpers::firstElementWithRole(elements, AX::textFieldRole);
    }
    Texts context;
    for (const auto& element : { first, second }) {
        if (element)
            TextHelpers::appendIfNonEmpty(context, ElementHelpers::valueText(*element));
    }
    return context;
}

bool isApplicationName(std::string_view text)
{
    return TextHelpers::lowercased(text) == applicationNameInTitle;
}

// Nothing unless the title, without the application's name at its end, still has a separator.
Texts titleParts(const std::optional<std::string>& title)
{
    if (!title)
        return {};
    std::string_view rest = *title;
    if (auto last = rest.rfind(titleSeparator);
        last != std::string_view::npos && isApplicationName(rest.substr(last + titleSeparator.size())))
        rest = rest.substr(0, last);
    auto separator = rest.rfind(titleSeparator);
    if (separator == std::string_view::npos)
        return {};
    Texts parts;
    TextHelpers::appendIfNonEmpty(parts, std::string(rest.substr(0, separator)));
    TextHelpers::appendIfNonEmpty(parts, std::string(rest.substr(separator + titleSeparator.size())));
    return parts;
}

Texts windowContext(const AXUIElement& window)
{
    auto outer = ElementHelpers::firstChildWithRole(window, AX::splitGroupRole);
    if (!outer)
        return {};
    if (auto inner = ElementHelpers::firstChildWithRole(*outer, AX::splitGroupRole))
        return mainWindowContext(ElementHelpers::children(*inner));
    Texts context = titleParts(ElementHelpers::titleText(window));
    appendAll(context, messageWindowContext(ElementHelpers::children(*outer)));
    return context;
}

} // namespace

void NewOutlookInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        if (Texts context = windowContext(window); !context.empty()) {
            activity.details.contextPath = std::move(context);
            return;
        }
    }
}

} // namespace vardel
