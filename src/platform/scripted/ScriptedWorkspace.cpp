#include "platform/scripted/ScriptedWorkspace.h"

namespace vardel::scripted {

namespace {

RunningApplication runningApplication(const ApplicationDescription& description)
{
    return { description.pid, description.bundleIdentifier, description.localizedName, description.executablePath,
        description.bundlePath };
}

const ApplicationDescription* installedApplication(const DesktopWorld& world, std::string_view bundleIdentifier)
{
    for (const auto& application : world.applications()) {
        const ApplicationDescription& description = application.description;
        if (description.bundleIdentifier == bundleIdentifier && description.bundlePath)
            return &description;
    }
    return nullptr;
}

const ApplicationDescription* applicationAtBundlePath(const DesktopWorld& world, const std::string& bundlePath)
{
    for (const auto& application : world.applications()) {
        if (application.description.bundlePath == bundlePath)
            return &application.description;
    }
    return nullptr;
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

std::optional<ApplicationBundle> ScriptedWorkspace::applicationBundle(std::string_view bundleIdentifier)
{
    const ApplicationDescription* installed = installedApplication(world_, bundleIdentifier);
    // Another application may claim the same bundle path first; opening the path finds that one.
    return installed ? applicationBundleAtPath(*installed->bundlePath) : std::nullopt;
}

std::optional<ApplicationBundle> ScriptedWorkspace::applicationBundleAtPath(const std::string& path)
{
    const ApplicationDescription* opened = applicationAtBundlePath(world_, path);
    if (!opened)
        return std::nullopt;
    return bundleAtPath(
        path, opened->bundleIdentifier, opened->localizedName, opened->info.value_or(Value::Dictionary {}));
}

ApplicationBundle ScriptedWorkspace::bundleAtPath(const std::string& path, std::optional<std::string> bundleIdentifier,
    std::optional<std::string> localizedName, Value::Dictionary info)
{
    ApplicationBundle bundle;
    bundle.path = path;
    bundle.bundleIdentifier = std::move(bundleIdentifier);
    bundle.localizedName = std::move(localizedName);
    bundle.info = std::move(info);
    bundle.resourcesPath = path + "/Contents/Resources";
    return bundle;
}

bool ScriptedWorkspace::openApplication(const std::string& bundlePath)
{
    trace_.write("open", { { "target", bundlePath } });
    return true;
}

bool ScriptedWorkspace::openURL(const std::string& url)
{
    trace_.write("open", { { "target", url } });
    return true;
}

} // namespace vardel::scripted
