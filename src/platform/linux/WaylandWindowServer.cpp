#include "platform/linux/WaylandWindowServer.h"

#include "platform/linux/X11WindowServer.h"

#include <algorithm>

namespace vardel::linux_desktop {

namespace {

// The window list's sharing state for windows others may read.
constexpr int readOnlySharingState = 1;

} // namespace

std::vector<Rect> WaylandWindowServer::topLeftScreenFrames() const
{
    std::vector<Rect> frames;
    if (!connection_ || !connection_->isConnected())
        return frames;
    for (const WaylandOutput& output : connection_->outputs())
        frames.push_back(output.frame);
    return frames;
}

std::vector<Rect> WaylandWindowServer::screenFrames()
{
    // The compositor names no primary output: the first announced stands for it.
    return X11WindowServer::bottomLeftOriginFrames(topLeftScreenFrames());
}

Value WaylandWindowServer::windowListEntry(const X11Window& window, const std::optional<Rect>& bounds)
{
    Value::Dictionary entry { { WindowInfoKey::ownerPID, int64_t { window.pid } },
        { WindowInfoKey::name, window.title }, { WindowInfoKey::layer, window.layer },
        { WindowInfoKey::sharingState, readOnlySharingState } };
    if (bounds) {
        entry.emplace(WindowInfoKey::bounds,
            Value::Dictionary { { "X", bounds->origin.x }, { "Y", bounds->origin.y }, { "Width", bounds->size.width },
                { "Height", bounds->size.height } });
    }
    return entry;
}

std::vector<uint32_t> WaylandWindowServer::minimizedToplevels() const
{
    std::vector<uint32_t> minimized;
    if (!connection_)
        return minimized;
    for (const WaylandToplevel& toplevel : connection_->toplevels().frontToBack()) {
        if (toplevel.minimized)
            minimized.push_back(toplevel.id);
    }
    return minimized;
}

Value::List WaylandWindowServer::onScreenWindowList()
{
    std::vector<Rect> screens = topLeftScreenFrames();
    std::vector<uint32_t> minimized = minimizedToplevels();
    Value::List entries;
    for (const X11Window& window : windows_.clientWindowsFrontToBack()) {
        if (std::find(minimized.begin(), minimized.end(), window.id) != minimized.end())
            continue;
        std::optional<Rect> bounds;
        if (window.fullScreen && !screens.empty())
            bounds = screens.front();
        entries.push_back(windowListEntry(window, bounds));
    }
    return entries;
}

} // namespace vardel::linux_desktop
