#pragma once

#include "platform/WindowServer.h"
#include "platform/linux/WaylandConnection.h"
#include "platform/linux/X11WindowFacts.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vardel::linux_desktop {

// Screens from the compositor's outputs and the window list from its toplevels that are not
// minimised. Wayland tells no window's position: only a full-screen window has bounds (its output's
// frame). The list's names come from the compositor, not from capturing the screen, so capture
// counts as granted.
class WaylandWindowServer final : public WindowServer {
public:
    // The connection may be nullptr: no screens.
    WaylandWindowServer(WaylandConnection* connection, X11WindowFacts& windows)
        : connection_(connection)
        , windows_(windows)
    {
    }

    std::vector<Rect> screenFrames() override;
    Value::List onScreenWindowList() override;
    bool preflightScreenCaptureAccess() override { return true; }
    bool requestScreenCaptureAccess() override { return true; }

    static Value windowListEntry(const X11Window&, const std::optional<Rect>& bounds);

private:
    std::vector<Rect> topLeftScreenFrames() const;
    // The ids of the toplevels the compositor reports minimised, which are not on screen.
    std::vector<uint32_t> minimizedToplevels() const;

    WaylandConnection* connection_;
    X11WindowFacts& windows_;
};

} // namespace vardel::linux_desktop
