#include "extractors/DiscordInfoExtractor.h"

#include "product/TextHelpers.h"

#include <string>
#include <string_view>
#include <vector>

namespace vardel {

namespace {

using Components = std::vector<std::string>;

} // namespace

void DiscordInfoExtractor::writeDetailsForActivity(VDActivity& activity)
{
    auto& details = activity.details;
    if (!details.windowTitle)
        return;
    std::string withoutApplicationName = TextHelpers::removingSuffixIfPresent(*details.windowTitle, " - Discord");
    Components components = TextHelpers::componentsSeparatedBy(withoutApplicationName, " | ");
    std::erase(components, "Discord");
    std::erase(components, "");
    if (components.empty())
        return;
    details.windowTitle.reset();
    details.contextPath = Components(components.rbegin(), components.rend());
}

} // namespace vardel
