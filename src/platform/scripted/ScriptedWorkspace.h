#pragma once

#include "platform/Workspace.h"
#include "platform/scripted/DesktopWorld.h"

namespace vardel::scripted {

// The applications of the scenario; plain processes are not applications.
class ScriptedWorkspace final : public Workspace {
public:
    explicit ScriptedWorkspace(const DesktopWorld& world)
        : world_(world)
    {
    }

    // None when the frontmost pid is not a running application.
    std::optional<RunningApplication> frontmostApplication() override;
    std::vector<RunningApplication> runningApplications() override;
    // The first application of the scenario with that identifier and a bundle path, opened by
    // that path.
    std::optional<ApplicationBundle> applicationBundle(std::string_view bundleIdentifier) override;
    // The first application of the scenario with that bundle path.
    std::optional<ApplicationBundle> applicationBundleAtPath(const std::string& path) override;

private:
    const DesktopWorld& world_;
};

} // namespace vardel::scripted
