#include "platform/linux/AccessibilityBusStatus.h"

#include "platform/linux/GLibHandles.h"

#include <gio/gio.h>

namespace vardel::linux_desktop::AccessibilityBusStatus {

namespace {

constexpr int callTimeoutMilliseconds = 1000;

GVariantHandle callProperties(const char* method, GVariant* parameters, const GVariantType* replyType)
{
    // The parameters are floating: owned here until the call takes them.
    GVariantHandle ownedParameters(parameters ? g_variant_ref_sink(parameters) : nullptr);
    GObjectHandle<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (!bus)
        return nullptr;
    // GLib's shared connection would otherwise end the tracker when the session bus restarts.
    g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    return GVariantHandle(g_dbus_connection_call_sync(bus.get(), "org.a11y.Bus", "/org/a11y/bus",
        "org.freedesktop.DBus.Properties", method, ownedParameters.get(), replyType, G_DBUS_CALL_FLAGS_NONE,
        callTimeoutMilliseconds, nullptr, nullptr));
}

} // namespace

std::optional<bool> isEnabled()
{
    auto reply = callProperties("Get", g_variant_new("(ss)", "org.a11y.Status", "IsEnabled"), G_VARIANT_TYPE("(v)"));
    if (!reply)
        return std::nullopt;
    GVariant* unpacked = nullptr;
    g_variant_get(reply.get(), "(v)", &unpacked);
    GVariantHandle value(unpacked);
    if (!g_variant_is_of_type(value.get(), G_VARIANT_TYPE_BOOLEAN))
        return std::nullopt;
    return g_variant_get_boolean(value.get());
}

bool enable()
{
    return callProperties(
               "Set", g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE)), nullptr)
        != nullptr;
}

} // namespace vardel::linux_desktop::AccessibilityBusStatus
