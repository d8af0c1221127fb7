#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vardel::linux_desktop {

enum class WindowSystem { x11, wayland };

// Which display server the desktop tracks, and why. A Wayland session is tracked through the
// compositor even when Xwayland also provides a DISPLAY; the standard user defaults key
// LinuxDesktop_windowSystem ("x11" or "wayland") forces either while its display is there.
struct WindowSystemChoice {
    WindowSystem windowSystem = WindowSystem::x11;
    // One sentence for the log.
    std::string reason;

    static constexpr const char* preferenceKey = "LinuxDesktop_windowSystem";

    // environment(name) gives a variable's value, nullptr when unset. Nothing when neither
    // WAYLAND_DISPLAY nor DISPLAY names a display.
    static std::optional<WindowSystemChoice> choose(
        const std::function<const char*(const char*)>& environment, const std::optional<std::string>& preference);
};

} // namespace vardel::linux_desktop
