#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vardel::linux_desktop {

// An installed application's desktop entry, as the launchers know it.
struct DesktopEntry {
    // The desktop file id without ".desktop": "firefox-esr", "org.gnome.Calculator".
    std::string id;
    std::string path;
    std::string name;
    // The Icon key: a theme icon name or an absolute path.
    std::string icon;
    // The Exec program, resolved against PATH when it is a bare name.
    std::string executable;
    std::string startupWindowClass;
};

// The installed desktop entries of the XDG data folders, read through GIO. The list is read when
// first needed and kept until forget(), which the desktop calls when the entry folders change.
class DesktopEntries {
public:
    std::optional<DesktopEntry> withId(const std::string& id) const;
    std::optional<DesktopEntry> atPath(const std::string& path) const;
    // StartupWMClass equal to the class or instance name, else an entry whose id is one of them
    // (case ignored).
    std::optional<DesktopEntry> forWindowClass(const std::string& instanceName, const std::string& className);
    // The entry whose Exec program is that executable (compared after resolving links), else whose
    // program's file name is the executable's.
    std::optional<DesktopEntry> forExecutable(const std::string& executablePath);

    // The icon file the entry's Icon names: itself when absolute, else the largest size found in the
    // hicolor theme or the pixmaps folder of an XDG data folder.
    static std::optional<std::string> iconFile(const DesktopEntry&);
    // The folders desktop entries are installed in: `applications` of each XDG data folder.
    static std::vector<std::string> applicationFolders();

    // Entries were installed, changed or removed: the list is read again when next needed.
    void forget();

private:
    const std::vector<DesktopEntry>& installed();

    std::vector<DesktopEntry> installed_;
    bool loaded_ = false;
};

} // namespace vardel::linux_desktop
