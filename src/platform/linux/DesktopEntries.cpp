#include "platform/linux/DesktopEntries.h"

#include "platform/linux/GLibHandles.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <strings.h>
#include <system_error>

namespace vardel::linux_desktop {

namespace {

std::string text(const char* value)
{
    return value ? value : "";
}

std::string withoutDesktopSuffix(std::string id)
{
    constexpr std::string_view suffix = ".desktop";
    if (id.size() > suffix.size() && id.ends_with(suffix))
        id.resize(id.size() - suffix.size());
    return id;
}

std::string canonical(const std::string& path)
{
    std::error_code error;
    auto resolved = std::filesystem::canonical(path, error);
    return error ? path : resolved.string();
}

std::string resolvedExecutable(const char* program)
{
    if (!program || !*program)
        return "";
    if (program[0] == '/')
        return program;
    GMallocHandle<gchar> found(g_find_program_in_path(program));
    return text(found.get());
}

std::optional<DesktopEntry> entryOf(GObjectHandle<GDesktopAppInfo> owned)
{
    if (!owned)
        return std::nullopt;
    GDesktopAppInfo* info = owned.get();
    GAppInfo* application = G_APP_INFO(info);
    DesktopEntry entry;
    entry.id = withoutDesktopSuffix(text(g_app_info_get_id(application)));
    entry.path = text(g_desktop_app_info_get_filename(info));
    if (entry.id.empty())
        entry.id = withoutDesktopSuffix(std::filesystem::path(entry.path).filename().string());
    entry.name = text(g_app_info_get_name(application));
    entry.icon = text(GMallocHandle<gchar>(g_desktop_app_info_get_string(info, "Icon")).get());
    entry.executable = resolvedExecutable(g_app_info_get_executable(application));
    entry.startupWindowClass = text(g_desktop_app_info_get_startup_wm_class(info));
    return entry;
}

bool equalIgnoringCase(const std::string& left, const std::string& right)
{
    return !left.empty() && left.size() == right.size() && strcasecmp(left.c_str(), right.c_str()) == 0;
}

std::vector<std::string> dataFolders()
{
    std::vector<std::string> folders { text(g_get_user_data_dir()) };
    for (const gchar* const* folder = g_get_system_data_dirs(); folder && *folder; ++folder)
        folders.emplace_back(*folder);
    return folders;
}

// Sizes of the hicolor theme, largest first; scalable last, since a bitmap is what a copy wants.
constexpr std::array<const char*, 9> iconSizes
    = { "512x512", "256x256", "128x128", "96x96", "64x64", "48x48", "32x32", "16x16", "scalable" };

} // namespace

std::optional<DesktopEntry> DesktopEntries::withId(const std::string& id) const
{
    if (id.empty())
        return std::nullopt;
    return entryOf(GObjectHandle<GDesktopAppInfo>(g_desktop_app_info_new((id + ".desktop").c_str())));
}

std::optional<DesktopEntry> DesktopEntries::atPath(const std::string& path) const
{
    if (!path.ends_with(".desktop"))
        return std::nullopt;
    return entryOf(GObjectHandle<GDesktopAppInfo>(g_desktop_app_info_new_from_filename(path.c_str())));
}

std::vector<std::string> DesktopEntries::applicationFolders()
{
    std::vector<std::string> folders;
    for (const std::string& folder : dataFolders())
        folders.push_back((std::filesystem::path(folder) / "applications").string());
    return folders;
}

void DesktopEntries::forget()
{
    installed_.clear();
    loaded_ = false;
}

const std::vector<DesktopEntry>& DesktopEntries::installed()
{
    if (loaded_)
        return installed_;
    loaded_ = true;
    GObjectListHandle all(g_app_info_get_all());
    for (GList* item = all.get(); item; item = item->next) {
        if (!G_IS_DESKTOP_APP_INFO(item->data))
            continue;
        GObjectHandle<GDesktopAppInfo> info(G_DESKTOP_APP_INFO(g_object_ref(item->data)));
        if (auto entry = entryOf(std::move(info)))
            installed_.push_back(std::move(*entry));
    }
    return installed_;
}

std::optional<DesktopEntry> DesktopEntries::forWindowClass(
    const std::string& instanceName, const std::string& className)
{
    const auto& entries = installed();
    for (const std::string& name : { className, instanceName }) {
        auto found = std::find_if(entries.begin(), entries.end(),
            [&](const DesktopEntry& entry) { return !name.empty() && entry.startupWindowClass == name; });
        if (found != entries.end())
            return *found;
    }
    for (const std::string& name : { instanceName, className }) {
        auto found = std::find_if(entries.begin(), entries.end(),
            [&](const DesktopEntry& entry) { return equalIgnoringCase(entry.id, name); });
        if (found != entries.end())
            return *found;
    }
    return std::nullopt;
}

std::optional<DesktopEntry> DesktopEntries::forExecutable(const std::string& executablePath)
{
    if (executablePath.empty())
        return std::nullopt;
    const auto& entries = installed();
    std::string resolved = canonical(executablePath);
    auto sameProgram = std::find_if(entries.begin(), entries.end(), [&](const DesktopEntry& entry) {
        return !entry.executable.empty() && canonical(entry.executable) == resolved;
    });
    if (sameProgram != entries.end())
        return *sameProgram;
    std::string fileName = std::filesystem::path(executablePath).filename().string();
    auto sameName = std::find_if(entries.begin(), entries.end(), [&](const DesktopEntry& entry) {
        return !entry.executable.empty() && std::filesystem::path(entry.executable).filename() == fileName;
    });
    return sameName == entries.end() ? std::nullopt : std::optional(*sameName);
}

std::optional<std::string> DesktopEntries::iconFile(const DesktopEntry& entry)
{
    if (entry.icon.empty())
        return std::nullopt;
    std::error_code error;
    if (entry.icon.front() == '/')
        return std::filesystem::exists(entry.icon, error) ? std::optional(entry.icon) : std::nullopt;
    // A theme icon is named without its extension, though many entries give one all the same.
    std::string name = entry.icon;
    for (std::string_view extension : { ".png", ".svg", ".xpm" }) {
        if (name.size() > extension.size() && name.ends_with(extension))
            name.resize(name.size() - extension.size());
    }
    for (const std::string& folder : dataFolders()) {
        for (const char* size : iconSizes) {
            for (const char* extension : { ".png", ".svg" }) {
                auto candidate
                    = std::filesystem::path(folder) / "icons" / "hicolor" / size / "apps" / (name + extension);
                if (std::filesystem::exists(candidate, error))
                    return candidate.string();
            }
        }
        for (const char* extension : { ".png", ".svg", ".xpm" }) {
            auto candidate = std::filesystem::path(folder) / "pixmaps" / (name + extension);
            if (std::filesystem::exists(candidate, error))
                return candidate.string();
        }
    }
    return std::nullopt;
}

} // namespace vardel::linux_desktop
