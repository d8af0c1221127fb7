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

    // Bundles here are folders ending in ".app": resources in Contents/Resources, icons in ".icns"
    // files.
    static ApplicationBundle bundleAtPath(const std::string& path, std::optional<std::string> bundleIdentifier,
        std::optional<std::string> localizedName, Value::Dictionary info);

private:
    const DesktopWorld& world_;
    TraceWriter& trace_;
};

} // namespace vardel::scripted
