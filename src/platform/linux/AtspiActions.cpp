#include "platform/linux/AtspiActions.h"

#include <algorithm>
#include <array>

namespace vardel::linux_desktop {

namespace {

// As toolkits spell them; the first the element has plays the accessibility action.
constexpr std::array<std::string_view, 5> pressActions = { "click", "press", "activate", "jump", "toggle" };
constexpr std::array<std::string_view, 3> showMenuActions = { "showmenu", "show-menu", "menu" };

std::optional<std::string_view> axActionName(std::string_view atspiName)
{
    if (std::find(pressActions.begin(), pressActions.end(), atspiName) != pressActions.end())
        return "AXPress";
    if (std::find(showMenuActions.begin(), showMenuActions.end(), atspiName) != showMenuActions.end())
        return "AXShowMenu";
    return std::nullopt;
}

} // namespace

AtspiActions::AtspiActions(AtspiCalls& calls)
    : calls_(calls)
{
}

std::vector<std::string> AtspiActions::names(AtspiAccessible* accessible)
{
    std::vector<std::string> names;
    for (const std::string& atspiName : calls_.actionNames(accessible)) {
        std::string name(axActionName(atspiName).value_or(atspiName));
        if (!atspiName.empty() && std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
    }
    return names;
}

std::optional<int> AtspiActions::indexOf(AtspiAccessible* accessible, std::string_view action)
{
    auto atspiNames = calls_.actionNames(accessible);
    for (size_t index = 0; index < atspiNames.size(); ++index) {
        if (atspiNames[index] == action || axActionName(atspiNames[index]) == action)
            return static_cast<int>(index);
    }
    return std::nullopt;
}

} // namespace vardel::linux_desktop
