// Spark's message view is web content inside the front window. From the window's first web area:
// three levels of first groups, then twice the second child (the message view beside the list),
// then two more levels of first groups: the header of the open message. In the header, the
// sender's picture is an element whose DOM classes include "avatar"; the sender's name is the first
// non-empty static text of the picture's parent outside the picture. The subject is the first
// non-empty static text of the header outside that parent.

#include "extractors/SparkInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/ElementTreeWalker.h"
#include "activity/EnhancedAccessibility.h"
#include "activity/UIElementUtilities.h"
#include "product/TextHelpers.h"

#include <algorithm>

namespace vardel {

namespace {

using ElementHelpers::ElementTest;

constexpr const char* avatarClass = "avatar";
constexpr int outerGroupLevels = 3;
constexpr int messageViewPosition = 1;
constexpr int messageViewLevels = 2;
constexpr int headerGroupLevels = 2;
// The header is small; these bounds only end searches of a looping or sprawling tree.
constexpr int maxHeaderDepth = 8;
constexpr int maxExaminedElements = 500;

std::optional<AXUIElement> firstGroupChild(const AXUIElement& element)
{
    return ElementHelpers::firstElementWithRole(ElementHelpers::children(element), AX::groupRole);
}

std::optional<AXUIElement> descendFirstGroups(std::optional<AXUIElement> element, int levels)
{
    for (int level = 0; level < levels && element; ++level)
        element = firstGroupChild(*element);
    return element;
}

std::optional<AXUIElement> descendToMessageView(std::optional<AXUIElement> element)
{
    for (int level = 0; level < messageViewLevels && element; ++level) {
        ElementHelpers::ElementList children = ElementHelpers::children(*element);
        const AXUIElement* child = TextHelpers::elementAt(children, messageViewPosition);
        element = child ? std::optional(*child) : std::nullopt;
    }
    return element;
}

std::optional<AXUIElement> messageHeader(const AXUIElement& webArea)
{
    auto messageView = descendToMessageView(descendFirstGroups(webArea, outerGroupLevels));
    return descendFirstGroups(messageView, headerGroupLevels);
}

// Depth-first and pre-order, never entering the skipped element.
std::optional<AXUIElement> searchHeader(
    const AXUIElement& root, const ElementTest& test, const std::optional<AXUIElement>& skipped = std::nullopt)
{
    std::optional<AXUIElement> found;
    ElementTreeWalker(maxExaminedElements).walk(root, maxHeaderDepth - 1, [&](const AXUIElement& element, int) {
        if (skipped && element == *skipped)
            return TreeWalkDecision::skipChildren;
        if (!test(element))
            return TreeWalkDecision::continueWalk;
        found = element;
        return TreeWalkDecision::stop;
    });
    return found;
}

bool isAvatar(const AXUIElement& element)
{
    auto classes = UIElementUtilities::valueOfAttribute(AX::domClassList, element);
    auto names = classes ? classes->asTextList() : std::nullopt;
    return names && std::find(names->begin(), names->end(), avatarClass) != names->end();
}

std::optional<std::string> nonEmptyStaticText(const AXUIElement& element)
{
    if (ElementHelpers::roleText(element) != AX::staticTextRole)
        return std::nullopt;
    auto text = ElementHelpers::valueText(element);
    return text && !text->empty() ? text : std::nullopt;
}

std::optional<std::string> firstText(const AXUIElement& root, const std::optional<AXUIElement>& skipped = std::nullopt)
{
    auto found = searchHeader(
        root, [](const AXUIElement& element) { return nonEmptyStaticText(element).has_value(); }, skipped);
    return found ? nonEmptyStaticText(*found) : std::nullopt;
}

// Subject, then sender.
std::vector<std::string> headerContext(const AXUIElement& header)
{
    std::optional<std::string> sender;
    std::optional<AXUIElement> senderBlock;
    if (auto avatar = searchHeader(header, isAvatar)) {
        senderBlock = UIElementUtilities::parentOfUIElement(*avatar);
        if (senderBlock)
            sender = firstText(*senderBlock, avatar);
    }
    std::vector<std::string> context;
    if (auto subject = firstText(header, senderBlock))
        context.push_back(*subject);
    if (sender)
        context.push_back(*sender);
    return context;
}

} // namespace

void SparkInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    EnhancedAccessibility::ensureEnhancedAccessibility(activity, true);
    if (activity.accessibilityWindows->empty())
        return;
    auto webAreas = ElementHelpers::findWebAreas(activity.accessibilityWindows->front(), &activity);
    auto header = webAreas.empty() ? std::nullopt : messageHeader(webAreas.front());
    if (!header)
        return;
    if (auto context = headerContext(*header); !context.empty())
        activity.details.contextPath = std::move(context);
}

} // namespace vardel
