#include "platform/linux/WindowSystemChoice.h"

namespace vardel::linux_desktop {

namespace {

std::string variable(const std::function<const char*(const char*)>& environment, const char* name)
{
    const char* value = environment(name);
    return value ? value : "";
}

WindowSystemChoice wayland(std::string reason)
{
    return { WindowSystem::wayland, std::move(reason) };
}

WindowSystemChoice x11(std::string reason)
{
    return { WindowSystem::x11, std::move(reason) };
}

} // namespace

std::optional<WindowSystemChoice> WindowSystemChoice::choose(
    const std::function<const char*(const char*)>& environment, const std::optional<std::string>& preference)
{
    std::string waylandDisplay = variable(environment, "WAYLAND_DISPLAY");
    std::string display = variable(environment, "DISPLAY");
    std::string sessionType = variable(environment, "XDG_SESSION_TYPE");
    if (waylandDisplay.empty() && display.empty())
        return std::nullopt;

    std::string preferred = preference.value_or("");
    std::string forced = std::string(preferenceKey) + " is \"" + preferred + "\"";
    if (preferred == "wayland")
        return waylandDisplay.empty() ? x11(forced + " but WAYLAND_DISPLAY is not set: X11 on " + display)
                                      : wayland(forced + ": Wayland on " + waylandDisplay);
    if (preferred == "x11")
        return display.empty() ? wayland(forced + " but DISPLAY is not set: Wayland on " + waylandDisplay)
                               : x11(forced + ": X11 on " + display);
    std::string unknown = preferred.empty() ? "" : " (" + forced + ", neither \"x11\" nor \"wayland\": ignored)";

    if (waylandDisplay.empty())
        return x11("DISPLAY is " + display + " and WAYLAND_DISPLAY is not set: X11" + unknown);
    if (display.empty())
        return wayland("WAYLAND_DISPLAY is " + waylandDisplay + " and DISPLAY is not set: Wayland" + unknown);
    // Both are set: a Wayland session with Xwayland, unless the session says it is an X11 one (an X
    // session that runs a nested compositor).
    if (sessionType == "x11")
        return x11("XDG_SESSION_TYPE is x11: X11 on " + display + unknown);
    return wayland("WAYLAND_DISPLAY is " + waylandDisplay + " and XDG_SESSION_TYPE is "
        + (sessionType.empty() ? "not set" : sessionType) + ": Wayland; DISPLAY " + display + " is left to Xwayland"
        + unknown);
}

} // namespace vardel::linux_desktop
