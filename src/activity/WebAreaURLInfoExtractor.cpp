#include "activity/WebAreaURLInfoExtractor.h"

#include "activity/ElementHelpers.h"

namespace vardel {

namespace {

// The first web area that has an attribute supplies it, even when it is empty.
template<typename Read> std::optional<std::string> firstPresent(const ElementHelpers::ElementList& webAreas, Read read)
{
    for (const AXUIElement& webArea : webAreas) {
        if (auto text = read(webArea))
            return text;
    }
    return std::nullopt;
}

} // namespace

void writeWebAreaURLDetails(VDActivity& activity)
{
    if (!activity.accessibilityWindows)
        return;
    auto& details = activity.details;
    for (const AXUIElement& window : *activity.accessibilityWindows) {
        auto webAreas = ElementHelpers::findWebAreas(window, &activity);
        if (auto title = firstPresent(webAreas, ElementHelpers::titleText); title && !title->empty())
            details.documentTitle = title;
        if (auto url = firstPresent(webAreas, ElementHelpers::urlStringOfElement); url && !url->empty()) {
            details.documentPath = url;
            return;
        }
    }
}

} // namespace vardel
