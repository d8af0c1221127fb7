#include "platform/linux/WaylandWindowFacts.h"

#include <algorithm>

namespace vardel::linux_desktop {

namespace {

// An application that registers on the accessibility bus a moment after its window appears is
// found on a later look; one that never registers costs one look per interval.
constexpr std::chrono::seconds unresolvedRetryInterval { 3 };

} // namespace

WaylandWindowFacts::WaylandWindowFacts(
    WaylandConnection* connection, AtspiApplicationDirectory* directory, std::function<Clock::time_point()> now)
    : connection_(connection)
    , directory_(directory)
    , now_(std::move(now))
{
}

X11Window WaylandWindowFacts::windowOf(const WaylandToplevel& toplevel, ProcessIdentifier pid)
{
    X11Window window;
    window.id = toplevel.id;
    window.pid = pid;
    window.title = toplevel.title;
    window.fullScreen = toplevel.fullScreen;
    // GTK's app id is its application id, others' their program or desktop entry name: the identity
    // tries it as both.
    window.gtkApplicationId = toplevel.appId;
    window.instanceName = toplevel.appId;
    window.className = toplevel.appId;
    return window;
}

bool WaylandWindowFacts::toplevelsKnown() const
{
    return connection_ && connection_->listsToplevels();
}

ProcessIdentifier WaylandWindowFacts::processOf(const WaylandToplevel& toplevel, ApplicationList& listed)
{
    if (!directory_)
        return 0;
    Resolution& resolution = processes_[toplevel.id];
    if (resolution.pid > 0 || now_() < resolution.retryAfter)
        return resolution.pid;
    if (!listed)
        listed = directory_->applications();
    resolution.pid = ToplevelProcessMatcher::match(toplevel.appId, toplevel.title, *listed).value_or(0);
    resolution.retryAfter = now_() + unresolvedRetryInterval;
    return resolution.pid;
}

std::optional<X11Window> WaylandWindowFacts::activeWindow()
{
    if (toplevelsKnown()) {
        auto active = connection_->toplevels().active();
        if (!active)
            return std::nullopt;
        ApplicationList listed;
        return windowOf(*active, processOf(*active, listed));
    }
    if (!directory_)
        return std::nullopt;
    auto active = directory_->activeWindow();
    if (!active)
        return std::nullopt;
    X11Window window;
    window.pid = active->pid;
    window.title = active->title;
    // GTK names its application after its program, as it does its app id.
    window.instanceName = active->applicationName;
    window.className = active->applicationName;
    return window;
}

std::vector<X11Window> WaylandWindowFacts::windowsOfProcess(ProcessIdentifier pid)
{
    std::vector<X11Window> windows;
    for (const X11Window& window : clientWindowsFrontToBack()) {
        if (window.pid == pid)
            windows.push_back(window);
    }
    return windows;
}

std::vector<X11Window> WaylandWindowFacts::clientWindowsFrontToBack()
{
    if (!toplevelsKnown()) {
        auto active = activeWindow();
        return active ? std::vector<X11Window> { *active } : std::vector<X11Window> {};
    }
    std::vector<WaylandToplevel> toplevels = connection_->toplevels().frontToBack();
    // Toplevels that are gone take their processes with them.
    std::erase_if(processes_, [&](const auto& entry) {
        return std::none_of(toplevels.begin(), toplevels.end(),
            [&](const WaylandToplevel& toplevel) { return toplevel.id == entry.first; });
    });
    std::vector<X11Window> windows;
    windows.reserve(toplevels.size());
    ApplicationList listed;
    for (const WaylandToplevel& toplevel : toplevels)
        windows.push_back(windowOf(toplevel, processOf(toplevel, listed)));
    return windows;
}

} // namespace vardel::linux_desktop
