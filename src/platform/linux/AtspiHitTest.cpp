#include "platform/linux/AtspiHitTest.h"

#include <algorithm>
#include <cmath>

namespace vardel::linux_desktop {

namespace {

// Hit tests descend one level per call; trees deeper than this are not real.
constexpr int maxHitTestDepth = 64;

} // namespace

AtspiHitTest::AtspiHitTest(AtspiCalls& calls)
    : calls_(calls)
{
}

std::optional<AXUIElement> AtspiHitTest::windowAt(AtspiAccessible* application, Point point)
{
    auto windows = calls_.windowsOf(application);
    // The active window lies above the others.
    std::stable_partition(windows.begin(), windows.end(), [&](const AXUIElement& window) {
        return calls_.hasState(AtspiElement::accessibleOf(window), ATSPI_STATE_ACTIVE);
    });
    for (const AXUIElement& window : windows) {
        AtspiAccessible* accessible = AtspiElement::accessibleOf(window);
        auto frame = calls_.extents(accessible);
        if (frame && frame->contains(point) && calls_.hasState(accessible, ATSPI_STATE_SHOWING))
            return window;
    }
    return std::nullopt;
}

std::optional<AXUIElement> AtspiHitTest::deepestElementAt(AtspiAccessible* application, Point point)
{
    auto current = windowAt(application, point);
    if (!current)
        return std::nullopt;
    int pointX = static_cast<int>(std::floor(point.x));
    int pointY = static_cast<int>(std::floor(point.y));
    for (int depth = 0; depth < maxHitTestDepth; ++depth) {
        auto hit = calls_.accessibleAtPoint(AtspiElement::accessibleOf(*current), pointX, pointY);
        if (!hit || hit.get() == AtspiElement::accessibleOf(*current))
            break;
        current = AtspiElement::adopt(std::move(hit));
    }
    return current;
}

} // namespace vardel::linux_desktop
