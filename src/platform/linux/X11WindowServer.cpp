#include "platform/linux/X11WindowServer.h"

namespace vardel::linux_desktop {

namespace {

// The window list's sharing state for windows others may read.
constexpr int readOnlySharingState = 1;

} // namespace

std::vector<Rect> X11WindowServer::bottomLeftOriginFrames(const std::vector<Rect>& topLeftFrames)
{
    if (topLeftFrames.empty())
        return {};
    const Rect& primary = topLeftFrames.front();
    double primaryBottom = primary.origin.y + primary.size.height;
    std::vector<Rect> frames;
    frames.reserve(topLeftFrames.size());
    for (const Rect& frame : topLeftFrames) {
        frames.push_back({ { frame.origin.x - primary.origin.x, primaryBottom - (frame.origin.y + frame.size.height) },
            frame.size });
    }
    return frames;
}

std::vector<Rect> X11WindowServer::screenFrames()
{
    return bottomLeftOriginFrames(connection_.monitorFrames());
}

Value X11WindowServer::windowListEntry(const X11Window& window)
{
    Value::Dictionary bounds { { "X", window.frame.origin.x }, { "Y", window.frame.origin.y },
        { "Width", window.frame.size.width }, { "Height", window.frame.size.height } };
    return Value::Dictionary { { WindowInfoKey::ownerPID, int64_t { window.pid } },
        { WindowInfoKey::name, window.title }, { WindowInfoKey::layer, window.layer },
        { WindowInfoKey::sharingState, readOnlySharingState }, { WindowInfoKey::bounds, std::move(bounds) } };
}

Value::List X11WindowServer::onScreenWindowList()
{
    Value::List entries;
    for (const X11Window& window : connection_.onScreenWindowsFrontToBack())
        entries.push_back(windowListEntry(window));
    return entries;
}

} // namespace vardel::linux_desktop
