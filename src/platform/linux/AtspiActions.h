#pragma once

#include "platform/linux/AtspiCalls.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel::linux_desktop {

// An element's actions under accessibility names: the toolkits' ways of saying press play AXPress,
// those of showing a menu AXShowMenu; other actions keep their AT-SPI names.
class AtspiActions {
public:
    explicit AtspiActions(AtspiCalls&);

    // Each name once, in the element's order.
    std::vector<std::string> names(AtspiAccessible*);
    // The index of the AT-SPI action that plays the named one.
    std::optional<int> indexOf(AtspiAccessible*, std::string_view action);

private:
    AtspiCalls& calls_;
};

} // namespace vardel::linux_desktop
