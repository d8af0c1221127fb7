#pragma once

#include "platform/Geometry.h"
#include "platform/linux/WaylandToplevels.h"

#include <chrono>
#include <memory>
#include <vector>

namespace vardel::linux_desktop {

// One output (screen) as the compositor describes it.
struct WaylandOutput {
    uint32_t id = 0;
    // Top-left-origin compositor coordinates; the size in logical pixels (the mode divided by the
    // output's scale).
    Rect frame;
};

// The one connection to the Wayland compositor: its outputs and, where the compositor offers
// wlr-foreign-toplevel-management (wlroots compositors), its toplevel windows. Events are read
// when the run loop sees the socket readable (readEvents), so that what a sample asks is in memory.
// A compositor that goes away leaves an empty list, never an error.
class WaylandConnection {
public:
    // Nothing when no compositor answers on that display (nullptr for $WAYLAND_DISPLAY) within the
    // time-out.
    static std::unique_ptr<WaylandConnection> open(
        const char* display = nullptr, std::chrono::milliseconds timeout = std::chrono::milliseconds(2000));
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    // Whether the compositor tells its toplevels.
    bool listsToplevels() const;
    bool isConnected() const;
    const WaylandToplevels& toplevels() const;
    // In the order the compositor announced them.
    std::vector<WaylandOutput> outputs() const;

    // -1 once the compositor has gone.
    int fileDescriptor() const;
    // Reads and handles what the compositor sent; false once the connection is lost (then the
    // toplevels and outputs are empty and the descriptor is no longer to be watched).
    bool readEvents();

private:
    struct State;
    explicit WaylandConnection(std::unique_ptr<State>);

    std::unique_ptr<State> state_;
};

} // namespace vardel::linux_desktop
