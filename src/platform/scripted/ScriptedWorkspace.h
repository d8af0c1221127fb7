#pragma once

#include "platform/Workspace.h"
#include "platform/scripted/DesktopWorld.h"

namespace vardel::scripted {

// The running applications of the scenario; plain processes are not applications.
class ScriptedWorkspace final : public Workspace {
public:
    explicit ScriptedWorkspace(const DesktopWorld& world)
        : world_(world)
    {
    }

    // None when the frontmost pid is not a running application.
    std::optional<RunningApplication> frontmostApplication() override;
    std::vector<RunningApplication> runningApplications() override;

private:
    const DesktopWorld& world_;
};

} // namespace vardel::scripted
