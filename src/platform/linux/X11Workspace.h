#pragma once

#include "platform/EventTrace.h"
#include "platform/ProcessLauncher.h"
#include "platform/Workspace.h"
#include "platform/linux/ApplicationIdentity.h"
#include "platform/linux/X11WindowFacts.h"

namespace vardel::linux_desktop {

// Running applications are the processes that own client windows; the frontmost one owns
// _NET_ACTIVE_WINDOW (on Wayland: the activated toplevel). Installed applications are desktop
// entries, a bundle's path being the entry's.
class X11Workspace final : public Workspace {
public:
    X11Workspace(
        X11WindowFacts& connection, ApplicationIdentity& identity, ProcessLauncher& launcher, EventTrace& trace)
        : connection_(connection)
        , identity_(identity)
        , launcher_(launcher)
        , trace_(trace)
    {
    }

    std::optional<RunningApplication> frontmostApplication() override;
    std::vector<RunningApplication> runningApplications() override;
    std::optional<ApplicationBundle> applicationBundle(std::string_view bundleIdentifier) override;
    std::optional<ApplicationBundle> applicationBundleAtPath(const std::string& path) override;
    // A desktop entry is started with `gio launch`, anything else as a program.
    bool openApplication(const std::string& bundlePath) override;
    // With `xdg-open`.
    bool openURL(const std::string& url) override;

private:
    ApplicationBundle bundleOf(const DesktopEntry&) const;

    X11WindowFacts& connection_;
    ApplicationIdentity& identity_;
    ProcessLauncher& launcher_;
    EventTrace& trace_;
};

} // namespace vardel::linux_desktop
