// A compose window's header fields are the window's children, or the children of its first child
// when that is a split group. The header opens with a field label ("To:") followed by the
// recipients' text field; the "From" pop-up holds the sending address and the last text field the
// subject. A viewer window does not open that way and is skipped.

#include "extractors/MailWritingInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "product/TextHelpers.h"

#include <map>

namespace vardel {

namespace {

using ElementHelpers::ElementList;
using FieldsByRole = std::map<std::string, ElementList, std::less<>>;

constexpr const char* textAttachmentSubrole = "AXTextAttachment";

// The tracker's string table holds English texts only: these are its "From: %@" and "To: %@".
constexpr std::string_view senderLinePrefix = "From: ";
constexpr std::string_view recipientLinePrefix = "To: ";
constexpr std::string_view recipientSeparator = ", ";

ElementList headerFields(const AXUIElement& window)
{
    ElementList fields = ElementHelpers::children(window);
    if (!fields.empty() && ElementHelpers::roleText(fields.front()) == AX::splitGroupRole)
        return ElementHelpers::children(fields.front());
    return fields;
}

bool isComposeHeader(const ElementList& fields)
{
    if (fields.size() < 3 || ElementHelpers::roleText(fields[0]) != AX::staticTextRole)
        return false;
    auto label = ElementHelpers::valueText(fields[0]);
    return label && TextHelpers::contains(*label, ":") && ElementHelpers::roleText(fields[1]) == AX::textFieldRole;
}

FieldsByRole groupedByRole(const ElementList& fields)
{
    FieldsByRole grouped;
    for (const AXUIElement& field : fields) {
        if (auto role = ElementHelpers::roleText(field))
            grouped[*role].push_back(field);
    }
    return grouped;
}

const ElementList& fieldsWithRole(const FieldsByRole& grouped, std::string_view role)
{
    static const ElementList none;
    auto found = grouped.find(role);
    return found == grouped.end() ? none : found->second;
}

// The "From" pop-up is the one showing an address; other pop-ups (priority, signature) are not.
std::optional<std::string> senderAddress(const ElementList& popUpButtons)
{
    for (const AXUIElement& button : popUpButtons) {
        auto value = ElementHelpers::valueText(button);
        if (value && TextHelpers::contains(*value, "@"))
            return value;
    }
    return std::nullopt;
}

// Each recipient is a token attached to the text field.
std::string recipientList(const AXUIElement& recipientField)
{
    std::string list;
    for (const AXUIElement& token : ElementHelpers::children(recipientField)) {
        if (ElementHelpers::stringAttribute(AX::subrole, token) != textAttachmentSubrole)
            continue;
        auto recipient = ElementHelpers::valueText(token);
        if (!recipient || recipient->empty())
            continue;
        if (!list.empty())
            list += recipientSeparator;
        list += *recipient;
    }
    return list;
}

std::vector<std::string> composeContext(const ElementList& fields)
{
    FieldsByRole grouped = groupedByRole(fields);
    std::vector<std::string> context;
    if (auto sender = senderAddress(fieldsWithRole(grouped, AX::popUpButtonRole)))
        context.push_back(std::string(senderLinePrefix) + *sender);
    const ElementList& textFields = fieldsWithRole(grouped, AX::textFieldRole);
    if (textFields.empty())
        return context;
    context.push_back(std::string(recipientLinePrefix) + recipientList(textFields.front()));
    auto subject = ElementHelpers::valueText(textFields.back());
    if (subject && !subject->empty())
        context.push_back(*subject);
    return context;
}

} // namespace

void MailWritingInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        ElementList fields = headerFields(window);
        if (!isComposeHeader(fields))
            continue;
        auto context = composeContext(fields);
        if (!context.empty()) {
            activity.details.contextPath = std::move(context);
            return;
        }
    }
}

} // namespace vardel
