#include "platform/linux/AtspiErrors.h"

#include <array>
#include <gio/gio.h>

namespace vardel::linux_desktop {

namespace {

struct ErrorRow {
    GQuark (*domain)();
    int code;
    AXError axError;
};

GQuark atspiDomain()
{
    return atspiErrorDomain();
}
GQuark dbusDomain()
{
    return G_DBUS_ERROR;
}
GQuark ioDomain()
{
    return G_IO_ERROR;
}

const std::array errorRows = {
    ErrorRow { atspiDomain, int(AtspiErrorCode::applicationGone), AXErrorCode::invalidUIElement },
    ErrorRow { dbusDomain, G_DBUS_ERROR_NO_REPLY, AXErrorCode::cannotComplete },
    ErrorRow { dbusDomain, G_DBUS_ERROR_TIMEOUT, AXErrorCode::cannotComplete },
    ErrorRow { dbusDomain, G_DBUS_ERROR_TIMED_OUT, AXErrorCode::cannotComplete },
    ErrorRow { dbusDomain, G_DBUS_ERROR_UNKNOWN_OBJECT, AXErrorCode::invalidUIElement },
    ErrorRow { dbusDomain, G_DBUS_ERROR_SERVICE_UNKNOWN, AXErrorCode::invalidUIElement },
    ErrorRow { dbusDomain, G_DBUS_ERROR_NAME_HAS_NO_OWNER, AXErrorCode::invalidUIElement },
    ErrorRow { dbusDomain, G_DBUS_ERROR_DISCONNECTED, AXErrorCode::invalidUIElement },
    ErrorRow { ioDomain, G_IO_ERROR_TIMED_OUT, AXErrorCode::cannotComplete },
    ErrorRow { ioDomain, G_IO_ERROR_CLOSED, AXErrorCode::invalidUIElement },
};

} // namespace

GQuark atspiErrorDomain()
{
    return g_quark_from_static_string("atspi_error");
}

AXError axErrorFor(const GError& error)
{
    for (const ErrorRow& row : errorRows) {
        if (g_error_matches(&error, row.domain(), row.code))
            return row.axError;
    }
    return AXErrorCode::failure;
}

} // namespace vardel::linux_desktop
