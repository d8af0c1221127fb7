#pragma once

#include "platform/EventTrace.h"
#include "platform/Log.h"
#include "platform/UserNotificationCenter.h"
#include "platform/linux/GLibHandles.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

typedef struct _GDBusConnection GDBusConnection;

namespace vardel::linux_desktop {

// Notifications go to org.freedesktop.Notifications on the session bus, with the category's
// actions as buttons; answers (ActionInvoked, NotificationClosed) reach the category's delegate
// when the GLib main context is served. Permission is granted when the server shows actions; a
// server without them, or none at all, is a denial, and the notification is then only logged. Every
// delivery is traced. What was delivered is kept in a file, so that an answer still reaches its
// delegate after the tracker restarted; a notification's user info keeps its texts only.
class DesktopNotificationCenter final : public UserNotificationCenter {
public:
    // deliveredFile: where delivered notifications are remembered; nothing to keep them in memory.
    DesktopNotificationCenter(EventTrace&, Log&, std::optional<std::filesystem::path> deliveredFile);
    ~DesktopNotificationCenter() override;
    DesktopNotificationCenter(const DesktopNotificationCenter&) = delete;
    DesktopNotificationCenter& operator=(const DesktopNotificationCenter&) = delete;

    void registerCategory(const std::string& identifier, std::vector<UserNotificationAction> actions,
        UserNotificationCategoryDelegate* delegate) override;
    // Asks the server for its capabilities; answers on the GLib main context.
    void requestPermission(std::function<void(bool granted)> answer) override;
    void deliver(const UserNotification&) override;

    // What the server reported for one of our notifications.
    void answer(uint32_t notificationId, const UserNotificationResponse&);

    // The file the delivered notifications are kept in, for the user's session:
    // $XDG_RUNTIME_DIR/vardel/notifications.json.
    static std::optional<std::filesystem::path> deliveredFileIn(const char* runtimeFolder);

private:
    struct Category {
        std::vector<UserNotificationAction> actions;
        UserNotificationCategoryDelegate* delegate = nullptr;
    };
    struct Delivered {
        std::string category;
        Value::Dictionary userInfo;
    };

    // A restarted session bus closes the connection: a new one is made when it is needed.
    bool connectIfGone();
    void unsubscribe();
    void loadDelivered();
    void saveDelivered() const;

    EventTrace& trace_;
    Log& log_;
    GObjectHandle<GDBusConnection> bus_;
    unsigned actionSubscription_ = 0;
    unsigned closedSubscription_ = 0;
    std::map<std::string, Category> categories_;
    std::map<uint32_t, Delivered> delivered_;
    std::optional<std::filesystem::path> deliveredFile_;
};

} // namespace vardel::linux_desktop
