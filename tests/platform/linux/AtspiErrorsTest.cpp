#include "platform/linux/AtspiErrors.h"

#include "platform/linux/GLibHandles.h"

#include <gtest/gtest.h>

#include <gio/gio.h>

// libatspi's own domain; the library exports it though no public header declares it.
extern "C" GQuark _atspi_error_quark(void);

namespace vardel::linux_desktop {

namespace {

AXError classify(GQuark domain, int code, const char* message = "failed")
{
    GErrorHandle error(g_error_new_literal(domain, code, message));
    return axErrorFor(*error);
}

TEST(AtspiErrorsTest, UnansweredCallsCannotComplete)
{
    for (int code : { G_DBUS_ERROR_NO_REPLY, G_DBUS_ERROR_TIMEOUT, G_DBUS_ERROR_TIMED_OUT })
        EXPECT_EQ(classify(G_DBUS_ERROR, code), AXErrorCode::cannotComplete) << code;
    EXPECT_EQ(classify(G_IO_ERROR, G_IO_ERROR_TIMED_OUT), AXErrorCode::cannotComplete);
}

TEST(AtspiErrorsTest, VanishedPeersLeaveInvalidElements)
{
    for (int code : { G_DBUS_ERROR_UNKNOWN_OBJECT, G_DBUS_ERROR_SERVICE_UNKNOWN, G_DBUS_ERROR_NAME_HAS_NO_OWNER,
             G_DBUS_ERROR_DISCONNECTED })
        EXPECT_EQ(classify(G_DBUS_ERROR, code), AXErrorCode::invalidUIElement) << code;
    EXPECT_EQ(classify(G_IO_ERROR, G_IO_ERROR_CLOSED), AXErrorCode::invalidUIElement);
    EXPECT_EQ(classify(atspiErrorDomain(), int(AtspiErrorCode::applicationGone)), AXErrorCode::invalidUIElement);
}

TEST(AtspiErrorsTest, OtherErrorsFailWhateverTheirMessageSays)
{
    EXPECT_EQ(classify(G_DBUS_ERROR, G_DBUS_ERROR_ACCESS_DENIED, "Timeout; NoReply"), AXErrorCode::failure);
    EXPECT_EQ(classify(atspiErrorDomain(), int(AtspiErrorCode::ipc), "timed out, UnknownObject"), AXErrorCode::failure);
    EXPECT_EQ(classify(G_IO_ERROR, G_DBUS_ERROR_NO_REPLY), AXErrorCode::failure);
    EXPECT_EQ(classify(g_quark_from_static_string("vardel-test-error"), 0), AXErrorCode::failure);
}

TEST(AtspiErrorsTest, DomainIsLibatspis)
{
    EXPECT_EQ(atspiErrorDomain(), _atspi_error_quark());
}

} // namespace

} // namespace vardel::linux_desktop
