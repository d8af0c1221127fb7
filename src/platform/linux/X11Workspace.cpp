#include "platform/linux/X11Workspace.h"

#include <algorithm>
#include <filesystem>
#include <unistd.h>

namespace vardel::linux_desktop {

namespace {

constexpr const char* gioProgram = "/usr/bin/gio";
constexpr const char* xdgOpenProgram = "/usr/bin/xdg-open";

} // namespace

std::optional<RunningApplication> X11Workspace::frontmostApplication()
{
    auto active = connection_.activeWindow();
    // A Wayland toplevel whose process is unknown is still known by its app id.
    if (!active || (active->pid <= 0 && active->className.empty()))
        return std::nullopt;
    return identity_.identify(active->pid, &*active);
}

std::vector<RunningApplication> X11Workspace::runningApplications()
{
    std::vector<RunningApplication> applications;
    std::vector<ProcessIdentifier> seen;
    for (const X11Window& window : connection_.clientWindowsFrontToBack()) {
        if (window.pid <= 0 || std::find(seen.begin(), seen.end(), window.pid) != seen.end())
            continue;
        seen.push_back(window.pid);
        applications.push_back(identity_.identify(window.pid, &window));
    }
    return applications;
}

ApplicationBundle X11Workspace::bundleOf(const DesktopEntry& entry) const
{
    ApplicationBundle bundle;
    bundle.path = entry.path;
    bundle.bundleIdentifier = identity_.bundleIdentifierOf(entry);
    if (!entry.name.empty())
        bundle.localizedName = entry.name;
    bundle.info = { { "CFBundleIdentifier", *bundle.bundleIdentifier }, { "CFBundleName", entry.name } };
    // The icon is a file of the theme folder the lookup found it in, in whatever format it has there.
    if (auto icon = DesktopEntries::iconFile(entry)) {
        std::filesystem::path file(*icon);
        bundle.info.emplace("CFBundleIconFile", file.filename().string());
        bundle.resourcesPath = file.parent_path().string();
        bundle.iconExtension = file.extension().string();
    }
    if (!entry.executable.empty())
        bundle.info.emplace("CFBundleExecutable", entry.executable);
    return bundle;
}

std::optional<ApplicationBundle> X11Workspace::applicationBundle(std::string_view bundleIdentifier)
{
    auto entry = identity_.entryForBundleIdentifier(bundleIdentifier);
    if (!entry)
        return std::nullopt;
    return bundleOf(*entry);
}

std::optional<ApplicationBundle> X11Workspace::applicationBundleAtPath(const std::string& path)
{
    DesktopEntries entries;
    auto entry = entries.atPath(path);
    if (!entry)
        return std::nullopt;
    return bundleOf(*entry);
}

bool X11Workspace::openApplication(const std::string& bundlePath)
{
    trace_.write("open", { { "target", bundlePath } });
    if (bundlePath.ends_with(".desktop"))
        return !launcher_.launch(gioProgram, { "launch", bundlePath });
    if (::access(bundlePath.c_str(), X_OK) != 0)
        return false;
    return !launcher_.launch(bundlePath, {});
}

bool X11Workspace::openURL(const std::string& url)
{
    trace_.write("open", { { "target", url } });
    return !launcher_.launch(xdgOpenProgram, { url });
}

} // namespace vardel::linux_desktop
