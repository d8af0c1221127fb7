#include "platform/linux/MessageBus.h"

namespace vardel::linux_desktop::MessageBus {

// A connection of the holder's own rather than GLib's shared one: GLib keeps handing out its shared
// connection after the bus closed it, and ends the process when that bus goes away.
GObjectHandle<GDBusConnection> connect(GBusType type)
{
    GMallocHandle<gchar> address(g_dbus_address_get_for_bus_sync(type, nullptr, nullptr));
    if (!address)
        return nullptr;
    GObjectHandle<GDBusConnection> connection(g_dbus_connection_new_for_address_sync(address.get(),
        static_cast<GDBusConnectionFlags>(
            G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
    if (connection)
        g_dbus_connection_set_exit_on_close(connection.get(), FALSE);
    return connection;
}

} // namespace vardel::linux_desktop::MessageBus
