#include "platform/linux/ColorSchemeWatcher.h"

#include <gio/gio.h>
#include <string_view>

namespace vardel::linux_desktop {

namespace {

void onSettingChanged(
    GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* parameters, gpointer watcher)
{
    if (!g_variant_is_of_type(parameters, G_VARIANT_TYPE("(ssv)")))
        return;
    const gchar* settingsNamespace = nullptr;
    const gchar* key = nullptr;
    g_variant_get_child(parameters, 0, "&s", &settingsNamespace);
    g_variant_get_child(parameters, 1, "&s", &key);
    if (std::string_view(settingsNamespace) == "org.freedesktop.appearance" && std::string_view(key) == "color-scheme")
        (*static_cast<std::function<void()>*>(watcher))();
}

} // namespace

ColorSchemeWatcher::ColorSchemeWatcher(GDBusConnection* bus, std::function<void()> changed)
    : bus_(bus)
    , changed_(std::move(changed))
{
    if (!bus_)
        return;
    subscription_ = g_dbus_connection_signal_subscribe(bus_, "org.freedesktop.portal.Desktop",
        "org.freedesktop.portal.Settings", "SettingChanged", "/org/freedesktop/portal/desktop", nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE, onSettingChanged, &changed_, nullptr);
}

ColorSchemeWatcher::~ColorSchemeWatcher()
{
    if (bus_)
        g_dbus_connection_signal_unsubscribe(bus_, subscription_);
}

} // namespace vardel::linux_desktop
