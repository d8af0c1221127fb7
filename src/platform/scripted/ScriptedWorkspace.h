#pragma once

#include "platform/Workspace.h"
#include "platform/scripted/DesktopWorld.h"
#include "platform/scripted/TraceWriter.h"

namespace vardel::scripted {

// The applications of the scenario; plain processes are not applications.
class ScriptedWorkspace final : public Workspace {
public:
    ScriptedWorkspace(const DesktopWorld& world, TraceWriter& trace)
        : world_(world)
        , trace_(trace)
    {
    }

    // The scenario's `self`.
    ApplicationBundle mainBundle() override;
    // None when the frontmost pid is not a running application.
    std::optional<RunningApplication> frontmostApplication() override;
    std::vector<RunningApplication> runningApplications() override;
    // The first application of the scenario with that identifier and a bundle path, opened by
    // that path.
    std::optional<ApplicationBundle> applicationBundle(std::string_view bundleIdentifier) override;
    // The first application of the scenario with that bundle path.
    std::optional<ApplicationBundle> applicationBundleAtPath(const std::string& path) override;
    // Nothing is started; the request is traced as an "open" event.
    bool openApplication(const std::string& bundlePath) override;
    bool openURL(const std::string& url) override;

private:
    const DesktopWorld& world_;
    TraceWriter& trace_;
};

} // namespace vardel::scripted
