#pragma once

#include "platform/linux/AtspiCalls.h"
#include "platform/linux/X11WindowFacts.h"

#include <optional>

namespace vardel::linux_desktop {

// Pairs an application's AT-SPI windows with the X11 client windows that show them, for what only
// X11 knows: which window is active, which is full screen, and the titles some windows leave out of
// their accessible name. Windows pair up within one process: the active ones, else by title or by
// frame.
class AtspiWindowMatcher {
public:
    // The facts may be nullptr: then nothing is paired.
    AtspiWindowMatcher(AtspiCalls&, X11WindowFacts*);

    // The X11 client window that shows the AT-SPI window.
    std::optional<X11Window> x11WindowOf(AtspiAccessible* window);
    // Which of the application's windows (its window children) the X11 active window shows.
    std::optional<AXUIElement> windowOfActiveX11Window(
        AtspiAccessible* application, const std::vector<AXUIElement>& windows);

private:
    AtspiCalls& calls_;
    X11WindowFacts* windowFacts_;
};

} // namespace vardel::linux_desktop
