#pragma once

#include "platform/Accessibility.h"
#include "platform/Geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// What the X server knows about one top-level client window.
struct X11Window {
    uint32_t id = 0;
    ProcessIdentifier pid = 0;
    // _NET_WM_NAME, else WM_NAME.
    std::string title;
    // Top-left-origin global coordinates, as the window manager placed the frame.
    Rect frame;
    bool fullScreen = false;
    // WM_CLASS: the instance and the class name.
    std::string instanceName;
    std::string className;
    // _GTK_APPLICATION_ID, set by GApplication-based programs.
    std::string gtkApplicationId;
    // 0 for normal windows; docks, panels and menus float above.
    int layer = 0;
};

// The window facts that accessibility cannot tell: which window is active, its full-screen state and
// the title of windows whose accessible name is empty. The X server tells them on X11, the
// compositor on Wayland (WaylandWindowFacts, where a window's id is its toplevel's and its class its
// app id).
class X11WindowFacts {
public:
    virtual ~X11WindowFacts() = default;

    virtual std::optional<X11Window> activeWindow() = 0;
    // The process's client windows, front to back.
    virtual std::vector<X11Window> windowsOfProcess(ProcessIdentifier) = 0;
    // Every managed client window, on screen or not, front to back.
    virtual std::vector<X11Window> clientWindowsFrontToBack() = 0;
};

} // namespace vardel::linux_desktop
