#pragma once

#include "platform/WindowServer.h"
#include "platform/linux/X11Connection.h"

#include <vector>

namespace vardel::linux_desktop {

// Screens from RandR and the window list from the window manager's stacking order. X11 lets any
// client see every window, so the screen-capture permission is always granted.
class X11WindowServer final : public WindowServer {
public:
    explicit X11WindowServer(X11Connection& connection)
        : connection_(connection)
    {
    }

    std::vector<Rect> screenFrames() override;
    Value::List onScreenWindowList() override;
    bool preflightScreenCaptureAccess() override { return true; }
    bool requestScreenCaptureAccess() override { return true; }

    // Top-left-origin monitor frames (the primary first) turned into frames whose origin is the
    // primary monitor's bottom-left corner, y growing upwards.
    static std::vector<Rect> bottomLeftOriginFrames(const std::vector<Rect>& topLeftFrames);
    static Value windowListEntry(const X11Window&);

private:
    X11Connection& connection_;
};

} // namespace vardel::linux_desktop
