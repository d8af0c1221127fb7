#pragma once

#include "platform/Geometry.h"
#include "platform/linux/X11WindowFacts.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// The one persistent connection to the X server. Every query sends all its requests before it
// waits for the first reply, so that a sample costs few round trips.
class X11Connection final : public X11WindowFacts {
public:
    // Nothing when the display cannot be opened; nullptr display means $DISPLAY.
    static std::unique_ptr<X11Connection> open(const char* display = nullptr);
    ~X11Connection() override;
    X11Connection(const X11Connection&) = delete;
    X11Connection& operator=(const X11Connection&) = delete;

    std::optional<X11Window> activeWindow() override;
    std::vector<X11Window> windowsOfProcess(ProcessIdentifier) override;

    // The managed client windows that are on screen now (mapped, not minimised, on the current
    // desktop, no desktop windows), front to back.
    std::vector<X11Window> onScreenWindowsFrontToBack();
    // Every managed client window, on screen or not, in the window manager's stacking order, front
    // to back.
    std::vector<X11Window> clientWindowsFrontToBack() override;

    // The monitors in the system's order, the primary first, in top-left-origin global
    // coordinates; the whole root window when RandR knows none.
    std::vector<Rect> monitorFrames();

    int fileDescriptor() const;

private:
    struct State;
    explicit X11Connection(std::unique_ptr<State>);
    std::vector<X11Window> describe(const std::vector<uint32_t>& windows, bool onScreenOnly);
    std::vector<uint32_t> stackingFrontToBack();

    std::unique_ptr<State> state_;
};

} // namespace vardel::linux_desktop
