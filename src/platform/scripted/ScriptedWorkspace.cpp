#include "platform/scripted/ScriptedWorkspace.h"

namespace vardel::scripted {

namespace {

RunningApplication runningApplication(const ApplicationDescription& description)
{
    return { description.pid, description.bundleIdentifier, description.localizedName, description.executablePath,
        description.bundlePath };
}

} // namespace

std::optional<RunningApplication> ScriptedWorkspace::frontmostApplication()
{
    if (!world_.frontmost)
        return std::nullopt;
    const ScriptedApplication* application = world_.runningApplication(*world_.frontmost);
    return application ? std::optional(runningApplication(application->description)) : std::nullopt;
}

std::vector<RunningApplication> ScriptedWorkspace::runningApplications()
{
    std::vector<RunningApplication> running;
    for (const auto& application : world_.applications()) {
        if (application.description.running)
            running.push_back(runningApplication(application.description));
    }
    return running;
}

} // namespace vardel::scripted
