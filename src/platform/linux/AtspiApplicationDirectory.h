#pragma once

#include "platform/linux/AtspiCallGuard.h"
#include "platform/linux/ToplevelProcessMatcher.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// A window with the accessibility bus's `active` state.
struct ActiveAccessibleWindow {
    ProcessIdentifier pid = 0;
    std::string title;
    // Its application's accessible name, which stands in for the app id.
    std::string applicationName;
};

// The applications registered on the accessibility bus with their windows' names, for what a Wayland
// compositor leaves untold: whose process a toplevel is, and, where the compositor tells nothing,
// which window is active. Its calls have a guard of their own under libatspi's messaging time-out.
class AtspiApplicationDirectory {
public:
    // Nothing when there is no accessibility bus.
    static std::unique_ptr<AtspiApplicationDirectory> connect();

    std::vector<AccessibleApplication> applications();
    // The first window that reports the `active` state, the last application seen with one asked
    // first; nothing when no toolkit reports it.
    std::optional<ActiveAccessibleWindow> activeWindow();

    uint64_t callCount() const { return guard_.callCount(); }

private:
    AtspiApplicationDirectory();

    AtspiCallGuard guard_;
    ProcessIdentifier lastActive_ = 0;
};

} // namespace vardel::linux_desktop
