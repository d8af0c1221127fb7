#pragma once

#include "platform/EventTrace.h"
#include "platform/Log.h"
#include "platform/UserNotificationCenter.h"
#include "platform/linux/GLibHandles.h"

#include <map>
#include <string>

typedef struct _GDBusConnection GDBusConnection;

namespace vardel::linux_desktop {

// Notifications go to org.freedesktop.Notifications on the session bus, with the category's
// actions as buttons; answers (ActionInvoked, NotificationClosed) reach the category's delegate
// when the GLib main context is served. Without a session bus or notification server the
// notification is only logged. Every delivery is traced.
class DesktopNotificationCenter final : public UserNotificationCenter {
public:
    DesktopNotificationCenter(EventTrace&, Log&);
    ~DesktopNotificationCenter() override;
    DesktopNotificationCenter(const DesktopNotificationCenter&) = delete;
    DesktopNotificationCenter& operator=(const DesktopNotificationCenter&) = delete;

    void registerCategory(const std::string& identifier, std::vector<UserNotificationAction> actions,
        UserNotificationCategoryDelegate* delegate) override;
    // Notification servers need no permission.
    void requestPermission(std::function<void(bool granted)> answer) override { answer(true); }
    void deliver(const UserNotification&) override;

    // What the server reported for one of our notifications.
    void answer(uint32_t notificationId, const UserNotificationResponse&);

private:
    struct Category {
        std::vector<UserNotificationAction> actions;
        UserNotificationCategoryDelegate* delegate = nullptr;
    };
    struct Delivered {
        std::string category;
        Value::Dictionary userInfo;
    };

    EventTrace& trace_;
    Log& log_;
    GObjectHandle<GDBusConnection> bus_;
    unsigned actionSubscription_ = 0;
    unsigned closedSubscription_ = 0;
    std::map<std::string, Category> categories_;
    std::map<uint32_t, Delivered> delivered_;
};

} // namespace vardel::linux_desktop
