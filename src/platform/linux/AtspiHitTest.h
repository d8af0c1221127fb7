#pragma once

#include "platform/linux/AtspiCalls.h"

#include <optional>

namespace vardel::linux_desktop {

// Finds the deepest element of an application at a point: the showing window the point lies in (the
// active one first), then one level down per call.
class AtspiHitTest {
public:
    explicit AtspiHitTest(AtspiCalls&);

    // The point is in top-left-origin global coordinates.
    std::optional<AXUIElement> deepestElementAt(AtspiAccessible* application, Point);

private:
    std::optional<AXUIElement> windowAt(AtspiAccessible* application, Point);

    AtspiCalls& calls_;
};

} // namespace vardel::linux_desktop
