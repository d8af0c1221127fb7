#include "platform/linux/DesktopNotificationCenter.h"

#include "platform/ValueJson.h"

#include <gio/gio.h>

namespace vardel::linux_desktop {

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* objectPath = "/org/freedesktop/Notifications";
constexpr const char* applicationName = "Vardel Tracker";
constexpr int notifyTimeoutMilliseconds = 2000;
// NotificationClosed's reason for "dismissed by the user".
constexpr uint32_t dismissedByUser = 2;

void onActionInvoked(
    GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* parameters, gpointer center)
{
    guint32 id = 0;
    const gchar* action = nullptr;
    g_variant_get(parameters, "(u&s)", &id, &action);
    std::string actionKey = action ? action : "";
    UserNotificationResponse response = actionKey == "default"
        ? UserNotificationResponse { UserNotificationResponse::Kind::clicked, {} }
        : UserNotificationResponse { UserNotificationResponse::Kind::action, actionKey };
    static_cast<DesktopNotificationCenter*>(center)->answer(id, response);
}

void onClosed(
    GDBusConnection*, const gchar*, const gchar*, const gchar*, const gchar*, GVariant* parameters, gpointer center)
{
    guint32 id = 0;
    guint32 reason = 0;
    g_variant_get(parameters, "(uu)", &id, &reason);
    if (reason == dismissedByUser)
        static_cast<DesktopNotificationCenter*>(center)->answer(id, {});
}

} // namespace

DesktopNotificationCenter::DesktopNotificationCenter(EventTrace& trace, Log& log)
    : trace_(trace)
    , log_(log)
    , bus_(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr))
{
    if (!bus_)
        return;
    actionSubscription_ = g_dbus_connection_signal_subscribe(bus_.get(), nullptr, service, "ActionInvoked", objectPath,
        nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onActionInvoked, this, nullptr);
    closedSubscription_ = g_dbus_connection_signal_subscribe(bus_.get(), nullptr, service, "NotificationClosed",
        objectPath, nullptr, G_DBUS_SIGNAL_FLAGS_NONE, onClosed, this, nullptr);
}

DesktopNotificationCenter::~DesktopNotificationCenter()
{
    if (!bus_)
        return;
    g_dbus_connection_signal_unsubscribe(bus_.get(), actionSubscription_);
    g_dbus_connection_signal_unsubscribe(bus_.get(), closedSubscription_);
}

void DesktopNotificationCenter::registerCategory(const std::string& identifier,
    std::vector<UserNotificationAction> actions, UserNotificationCategoryDelegate* delegate)
{
    categories_.insert_or_assign(identifier, Category { std::move(actions), delegate });
}

void DesktopNotificationCenter::deliver(const UserNotification& notification)
{
    trace_.write("notification",
        { { "title", notification.title }, { "body", notification.body },
            { "category", notification.categoryIdentifier }, { "sound", notification.playsSound },
            { "userInfo", ValueJson::encode(Value(notification.userInfo)) } });
    log_.info("Notification: " + notification.title + ": " + notification.body);
    if (!bus_)
        return;
    GVariantBuilder actions;
    g_variant_builder_init(&actions, G_VARIANT_TYPE("as"));
    g_variant_builder_add(&actions, "s", "default");
    g_variant_builder_add(&actions, "s", notification.title.c_str());
    if (auto category = categories_.find(notification.categoryIdentifier); category != categories_.end()) {
        for (const UserNotificationAction& action : category->second.actions) {
            g_variant_builder_add(&actions, "s", action.identifier.c_str());
            g_variant_builder_add(&actions, "s", action.title.c_str());
        }
    }
    GVariantBuilder hints;
    g_variant_builder_init(&hints, G_VARIANT_TYPE("a{sv}"));
    if (!notification.playsSound)
        g_variant_builder_add(&hints, "{sv}", "suppress-sound", g_variant_new_boolean(TRUE));
    GVariantHandle reply(g_dbus_connection_call_sync(bus_.get(), service, objectPath, service, "Notify",
        g_variant_new("(susssasa{sv}i)", applicationName, 0u, "", notification.title.c_str(), notification.body.c_str(),
            &actions, &hints, -1),
        G_VARIANT_TYPE("(u)"), G_DBUS_CALL_FLAGS_NONE, notifyTimeoutMilliseconds, nullptr, nullptr));
    if (!reply)
        return;
    guint32 id = 0;
    g_variant_get(reply.get(), "(u)", &id);
    delivered_.insert_or_assign(id, Delivered { notification.categoryIdentifier, notification.userInfo });
}

void DesktopNotificationCenter::answer(uint32_t notificationId, const UserNotificationResponse& response)
{
    auto delivered = delivered_.find(notificationId);
    if (delivered == delivered_.end())
        return;
    Delivered notification = delivered->second;
    delivered_.erase(delivered);
    auto category = categories_.find(notification.category);
    if (category != categories_.end() && category->second.delegate)
        category->second.delegate->handleResponse(notification.category, response, notification.userInfo);
}

} // namespace vardel::linux_desktop
