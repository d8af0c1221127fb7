#pragma once

#include <functional>
#include <gio/gio.h>

namespace vardel::linux_desktop {

// Hears the desktop's colour scheme change: the settings portal's SettingChanged signal for
// org.freedesktop.appearance color-scheme, as xdg-desktop-portal sends it on GNOME, KDE and others.
// The callback runs inside GLib's dispatch.
class ColorSchemeWatcher {
public:
    // Watches nothing without a bus.
    ColorSchemeWatcher(GDBusConnection*, std::function<void()> changed);
    ~ColorSchemeWatcher();
    ColorSchemeWatcher(const ColorSchemeWatcher&) = delete;
    ColorSchemeWatcher& operator=(const ColorSchemeWatcher&) = delete;

private:
    GDBusConnection* bus_;
    std::function<void()> changed_;
    unsigned subscription_ = 0;
};

} // namespace vardel::linux_desktop
