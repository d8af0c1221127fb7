#pragma once

#include "platform/linux/GLibHandles.h"

#include <gio/gio.h>

namespace vardel::linux_desktop::MessageBus {

// A connection of its own to the session or system bus, or nothing when there is none. A bus that
// goes away (a restarted session bus) leaves the tracker running: the holder sees the connection
// closed and asks for a new one. For holders that keep it; a single call may use GLib's shared one.
GObjectHandle<GDBusConnection> connect(GBusType);

// Whether the connection is missing or was closed.
inline bool isGone(const GObjectHandle<GDBusConnection>& connection)
{
    return !connection || g_dbus_connection_is_closed(connection.get());
}

} // namespace vardel::linux_desktop::MessageBus
