#include "platform/linux/AtspiWindowMatcher.h"

#include <cmath>

namespace vardel::linux_desktop {

namespace {

// Window managers and toolkits disagree by a border's width.
constexpr double frameTolerance = 8;

bool nearlyEqual(double left, double right)
{
    return std::fabs(left - right) <= frameTolerance;
}

bool framesMatch(const Rect& left, const Rect& right)
{
    return nearlyEqual(left.origin.x, right.origin.x) && nearlyEqual(left.origin.y, right.origin.y)
        && nearlyEqual(left.size.width, right.size.width) && nearlyEqual(left.size.height, right.size.height);
}

} // namespace

AtspiWindowMatcher::AtspiWindowMatcher(AtspiCalls& calls, X11WindowFacts* windowFacts)
    : calls_(calls)
    , windowFacts_(windowFacts)
{
}

std::optional<X11Window> AtspiWindowMatcher::x11WindowOf(AtspiAccessible* window)
{
    if (!windowFacts_)
        return std::nullopt;
    auto application = calls_.parent(window);
    auto pid = application ? calls_.processId(AtspiElement::accessibleOf(*application)) : std::nullopt;
    if (!pid)
        return std::nullopt;
    if (calls_.hasState(window, ATSPI_STATE_ACTIVE)) {
        if (auto active = windowFacts_->activeWindow(); active && active->pid == *pid)
            return active;
    }
    auto candidates = windowFacts_->windowsOfProcess(*pid);
    if (candidates.size() == 1)
        return candidates.front();
    auto title = calls_.name(window);
    auto extents = calls_.extents(window);
    for (const X11Window& candidate : candidates) {
        if ((title && !title->empty() && *title == candidate.title)
            || (extents && framesMatch(*extents, candidate.frame)))
            return candidate;
    }
    return std::nullopt;
}

std::optional<AXUIElement> AtspiWindowMatcher::windowOfActiveX11Window(
    AtspiAccessible* application, const std::vector<AXUIElement>& windows)
{
    if (!windowFacts_)
        return std::nullopt;
    auto active = windowFacts_->activeWindow();
    if (!active || active->pid != calls_.processId(application))
        return std::nullopt;
    for (const AXUIElement& window : windows) {
        AtspiAccessible* accessible = AtspiElement::accessibleOf(window);
        if (calls_.name(accessible) == active->title && !active->title.empty())
            return window;
        if (auto extents = calls_.extents(accessible); extents && framesMatch(*extents, active->frame))
            return window;
    }
    // One window on each side is the same window, even when its accessible name is empty and its
    // frame unknown (a header-bar window on Wayland, which tells no window's position).
    if (windows.size() == 1 && windowFacts_->windowsOfProcess(active->pid).size() == 1)
        return windows.front();
    return std::nullopt;
}

} // namespace vardel::linux_desktop
