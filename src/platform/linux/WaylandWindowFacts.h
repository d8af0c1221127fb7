#pragma once

#include "platform/linux/AtspiApplicationDirectory.h"
#include "platform/linux/WaylandConnection.h"
#include "platform/linux/X11WindowFacts.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

namespace vardel::linux_desktop {

// The window facts of a Wayland session. Where the compositor lists its toplevels, they are the
// windows: the activated one is active, its app id stands for the window class, and its process is
// the accessibility bus's application that matches its app id and title (the protocol has no pid),
// found once per toplevel. Elsewhere the window with the accessibility bus's `active` state is the
// only window known.
class WaylandWindowFacts final : public X11WindowFacts {
public:
    using Clock = std::chrono::steady_clock;

    // Either may be nullptr: without a compositor connection there are no windows; without an
    // accessibility bus no window has a process.
    WaylandWindowFacts(
        WaylandConnection*, AtspiApplicationDirectory*, std::function<Clock::time_point()> now = Clock::now);

    std::optional<X11Window> activeWindow() override;
    std::vector<X11Window> windowsOfProcess(ProcessIdentifier) override;
    // Front to back as last activated.
    std::vector<X11Window> clientWindowsFrontToBack() override;

    static X11Window windowOf(const WaylandToplevel&, ProcessIdentifier pid);

private:
    bool toplevelsKnown() const;
    // The applications on the accessibility bus, asked for once per query and only when needed.
    using ApplicationList = std::optional<std::vector<AccessibleApplication>>;
    ProcessIdentifier processOf(const WaylandToplevel&, ApplicationList& listed);

    struct Resolution {
        ProcessIdentifier pid = 0;
        // When an unresolved toplevel may be looked for again.
        Clock::time_point retryAfter;
    };

    WaylandConnection* connection_;
    AtspiApplicationDirectory* directory_;
    std::function<Clock::time_point()> now_;
    std::map<uint32_t, Resolution> processes_;
};

} // namespace vardel::linux_desktop
