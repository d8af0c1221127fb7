// ChatGPT Atlas ("com.openai.atlas") is a native application that runs its web engine, Chromium, as a
// separate application bundled inside it: "ChatGPT Atlas.app/Contents/Support/ChatGPT Atlas.app",
// bundle identifier "com.openai.atlas.web". That companion process owns the web content, and like any
// Chromium browser it publishes the page to accessibility clients only after being told that an
// assistive technology is present; so it, not Atlas itself, gets the "AXEnhancedUserInterface" write.
// The identifier is a plain constant: it names a public bundle and needs no decoding.
//
// The value is read on every call and written whenever it is not the boolean true, rather than once
// per companion launch: a companion that restarts or drops the setting is switched on again at the
// next sample, for the cost of one read per sample.

#include "extractors/ChatGPTAtlasInfoExtractor.h"

#include "activity/AccessibilityNames.h"
#include "activity/ElementHelpers.h"
#include "activity/UIElementUtilities.h"
#include "platform/Platform.h"

namespace vardel {

namespace {

constexpr std::string_view webContentCompanionBundleIdentifier = "com.openai.atlas.web";

using ElementHelpers::ElementList;

// Tells the first running web-content companion that an assistive technology is present.
void enableWebContentAccessibility()
{
    for (const RunningApplication& running : platform().workspace().runningApplications()) {
        if (running.bundleIdentifier != webContentCompanionBundleIdentifier)
            continue;
        auto application = platform().accessibility().createApplication(running.processIdentifier);
        if (!application)
            return;
        auto current = UIElementUtilities::valueOfAttribute(AX::enhancedUserInterface, *application);
        if (!current || current->asBoolean() != true)
            UIElementUtilities::setStringValue("1", AX::enhancedUserInterface, *application);
        return;
    }
}

std::optional<AXUIElement> firstChild(const AXUIElement& element)
{
    ElementList elementChildren = ElementHelpers::children(element);
    return elementChildren.empty() ? std::nullopt : std::optional(elementChildren.front());
}

// The page's web area: window → group → its last group → web area → any element → web area. The page
// is taken as its first child reports its parent, which is the element that carries the page's
// title and address.
std::optional<AXUIElement> pageOf(const AXUIElement& window)
{
    using ElementHelpers::children;
    auto outerGroup = ElementHelpers::firstElementWithRole(children(window), AX::groupRole);
    auto innerGroup
        = outerGroup ? ElementHelpers::lastElementWithRole(children(*outerGroup), AX::groupRole) : std::nullopt;
    auto outerWebArea
        = innerGroup ? ElementHelpers::firstElementWithRole(children(*innerGroup), AX::webAreaRole) : std::nullopt;
    auto frame = outerWebArea ? firstChild(*outerWebArea) : std::nullopt;
    auto innerWebArea = frame ? ElementHelpers::firstElementWithRole(children(*frame), AX::webAreaRole) : std::nullopt;
    auto content = innerWebArea ? firstChild(*innerWebArea) : std::nullopt;
    return content ? UIElementUtilities::parentOfUIElement(*content) : std::nullopt;
}

} // namespace

void ChatGPTAtlasInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    enableWebContentAccessibility();
    auto& details = activity.details;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        auto page = pageOf(window);
        if (!page)
            continue;
        if (auto title = ElementHelpers::titleText(*page); title && !title->empty())
            details.documentTitle = std::move(title);
        if (auto address = ElementHelpers::urlStringOfElement(*page); address && !address->empty()) {
            details.documentPath = std::move(address);
            return;
        }
    }
}

} // namespace vardel
