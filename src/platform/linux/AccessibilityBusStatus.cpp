#include "platform/linux/AccessibilityBusStatus.h"

#include <gio/gio.h>

namespace vardel::linux_desktop::AccessibilityBusStatus {

namespace {

constexpr int callTimeoutMilliseconds = 1000;

GVariant* callProperties(const char* method, GVariant* parameters, const GVariantType* replyType)
{
    GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
    if (!bus) {
        if (parameters)
            g_variant_unref(g_variant_ref_sink(parameters));
        return nullptr;
    }
    GVariant* reply
        = g_dbus_connection_call_sync(bus, "org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties", method,
            parameters, replyType, G_DBUS_CALL_FLAGS_NONE, callTimeoutMilliseconds, nullptr, nullptr);
    g_object_unref(bus);
    return reply;
}

} // namespace

std::optional<bool> isEnabled()
{
    GVariant* reply
        = callProperties("Get", g_variant_new("(ss)", "org.a11y.Status", "IsEnabled"), G_VARIANT_TYPE("(v)"));
    if (!reply)
        return std::nullopt;
    GVariant* value = nullptr;
    g_variant_get(reply, "(v)", &value);
    std::optional<bool> enabled;
    if (g_variant_is_of_type(value, G_VARIANT_TYPE_BOOLEAN))
        enabled = g_variant_get_boolean(value);
    g_variant_unref(value);
    g_variant_unref(reply);
    return enabled;
}

bool enable()
{
    GVariant* reply = callProperties(
        "Set", g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE)), nullptr);
    if (!reply)
        return false;
    g_variant_unref(reply);
    return true;
}

} // namespace vardel::linux_desktop::AccessibilityBusStatus
