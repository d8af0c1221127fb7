#include "platform/linux/ApplicationIdentity.h"

#include "platform/linux/GLibHandles.h"

#include <filesystem>
#include <fstream>
#include <glib.h>
#include <iterator>
#include <system_error>

namespace vardel::linux_desktop {

namespace {

std::string procPath(ProcessIdentifier pid, const char* name)
{
    return "/proc/" + std::to_string(pid) + "/" + name;
}

std::string readWhole(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

// One variable of the process's environment as it was at its start.
std::optional<std::string> environmentVariable(ProcessIdentifier pid, std::string_view name)
{
    std::string environment = readWhole(procPath(pid, "environ"));
    size_t start = 0;
    while (start < environment.size()) {
        size_t end = environment.find('\0', start);
        if (end == std::string::npos)
            end = environment.size();
        std::string_view entry(environment.data() + start, end - start);
        if (entry.size() > name.size() && entry.starts_with(name) && entry[name.size()] == '=')
            return std::string(entry.substr(name.size() + 1));
        start = end + 1;
    }
    return std::nullopt;
}

std::optional<std::string> flatpakApplicationId(ProcessIdentifier pid)
{
    GKeyFileHandle file(g_key_file_new());
    if (!g_key_file_load_from_file(
            file.get(), (procPath(pid, "root") + "/.flatpak-info").c_str(), G_KEY_FILE_NONE, nullptr))
        return std::nullopt;
    GMallocHandle<gchar> name(g_key_file_get_string(file.get(), "Application", "name", nullptr));
    if (!name || !*name)
        return std::nullopt;
    return std::string(name.get());
}

// An application the desktop entries do not list, known by its id only.
DesktopEntry unlistedEntry(std::string id)
{
    DesktopEntry entry;
    entry.id = std::move(id);
    return entry;
}

std::string commandName(ProcessIdentifier pid)
{
    std::string name = readWhole(procPath(pid, "comm"));
    while (!name.empty() && name.back() == '\n')
        name.pop_back();
    return name;
}

} // namespace

std::optional<std::string> ApplicationIdentity::executableOf(ProcessIdentifier pid)
{
    std::error_code error;
    auto path = std::filesystem::read_symlink(procPath(pid, "exe"), error);
    if (error)
        return std::nullopt;
    return path.string();
}

std::optional<DesktopEntry> ApplicationIdentity::desktopEntryOf(ProcessIdentifier pid, const X11Window* window)
{
    if (auto flatpak = flatpakApplicationId(pid)) {
        auto entry = entries_.withId(*flatpak);
        return entry ? entry : unlistedEntry(*flatpak);
    }
    if (auto snap = environmentVariable(pid, "SNAP_NAME"); snap && !snap->empty()) {
        auto entry = entries_.withId(*snap + "_" + *snap);
        if (entry)
            entry->id = *snap;
        return entry ? entry : unlistedEntry(*snap);
    }
    // Children inherit the variable; it names the launched process only.
    auto launchedPid = environmentVariable(pid, "GIO_LAUNCHED_DESKTOP_FILE_PID");
    if (launchedPid == std::to_string(pid)) {
        if (auto file = environmentVariable(pid, "GIO_LAUNCHED_DESKTOP_FILE")) {
            if (auto entry = entries_.atPath(*file))
                return entry;
        }
    }
    if (window && !window->gtkApplicationId.empty()) {
        if (auto entry = entries_.withId(window->gtkApplicationId))
            return entry;
    }
    if (window) {
        if (auto entry = entries_.forWindowClass(window->instanceName, window->className))
            return entry;
    }
    if (auto executable = executableOf(pid))
        return entries_.forExecutable(*executable);
    return std::nullopt;
}

std::string ApplicationIdentity::bundleIdentifierOf(const DesktopEntry& entry) const
{
    return table_.identifierFor(entry.id).value_or(entry.id);
}

std::optional<DesktopEntry> ApplicationIdentity::entryForBundleIdentifier(std::string_view identifier) const
{
    for (const std::string& entryId : table_.desktopEntryIdsFor(identifier)) {
        if (auto entry = entries_.withId(entryId))
            return entry;
    }
    return entries_.withId(std::string(identifier));
}

RunningApplication ApplicationIdentity::identify(ProcessIdentifier pid, const X11Window* window)
{
    auto executable = executableOf(pid);
    // Without a pid (a Wayland toplevel whose application is not on the accessibility bus) only the
    // window tells who it is, and nothing is remembered.
    if (auto known = known_.find(pid); pid > 0 && known != known_.end() && executable == known->second.executable)
        return known->second.application;

    RunningApplication application;
    application.processIdentifier = pid;
    application.executablePath = executable;
    if (auto entry = desktopEntryOf(pid, window)) {
        application.bundleIdentifier = bundleIdentifierOf(*entry);
        if (!entry->name.empty())
            application.localizedName = entry->name;
        if (!entry->path.empty())
            application.bundlePath = entry->path;
    } else if (window && !window->className.empty()) {
        application.bundleIdentifier = table_.identifierFor(window->className).value_or(window->className);
    }
    if (!application.localizedName) {
        std::string name = window && !window->className.empty() ? window->className : commandName(pid);
        if (!name.empty())
            application.localizedName = name;
    }
    if (pid > 0) {
        // Met seldom: only a process not met before, or one that became another program.
        forgetEndedProcesses();
        known_.insert_or_assign(pid, Known { executable.value_or(""), application });
    }
    return application;
}

void ApplicationIdentity::desktopEntriesChanged()
{
    entries_.forget();
    known_.clear();
}

void ApplicationIdentity::forgetEndedProcesses()
{
    std::erase_if(known_, [](const auto& known) {
        std::error_code error;
        return !std::filesystem::exists(procPath(known.first, ""), error);
    });
}

} // namespace vardel::linux_desktop
