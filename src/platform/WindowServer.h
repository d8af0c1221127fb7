#pragma once

#include "platform/Geometry.h"
#include "platform/Value.h"

#include <vector>

namespace vardel {

// Keys of a window-list entry, as the platform names them.
namespace WindowInfoKey {
inline constexpr const char* ownerPID = "kCGWindowOwnerPID";
inline constexpr const char* name = "kCGWindowName";
inline constexpr const char* layer = "kCGWindowLayer";
inline constexpr const char* sharingState = "kCGWindowSharingState";
inline constexpr const char* bounds = "kCGWindowBounds";
} // namespace WindowInfoKey

// Screens, the on-screen window list and the screen-capture permission.
class WindowServer {
public:
    virtual ~WindowServer() = default;

    // Screen frames in the system's order, the primary screen first, in bottom-left-origin
    // global coordinates.
    virtual std::vector<Rect> screenFrames() = 0;

    // The on-screen windows front to back, desktop elements excluded; each entry a dictionary with
    // the WindowInfoKey keys (bounds as a dictionary of "X", "Y", "Width", "Height").
    virtual Value::List onScreenWindowList() = 0;

    virtual bool preflightScreenCaptureAccess() = 0;
    virtual bool requestScreenCaptureAccess() = 0;
};

} // namespace vardel
