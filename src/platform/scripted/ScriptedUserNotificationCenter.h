#pragma once

#include "platform/EventTrace.h"
#include "platform/UserNotificationCenter.h"
#include "platform/scripted/Scenario.h"

#include <map>
#include <string>
#include <vector>

namespace vardel::scripted {

// Notifications are traced as delivered; the scenario's `respond` steps answer them, and
// `notificationsPermitted` answers the permission request at once.
class ScriptedUserNotificationCenter final : public UserNotificationCenter {
public:
    ScriptedUserNotificationCenter(const bool& permitted, EventTrace& trace)
        : permitted_(permitted)
        , trace_(trace)
    {
    }

    void registerCategory(const std::string& identifier, std::vector<UserNotificationAction> actions,
        UserNotificationCategoryDelegate* delegate) override;
    void requestPermission(std::function<void(bool granted)> answer) override { answer(permitted_); }
    void deliver(const UserNotification&) override;

    // Answers a delivered notification as the user would; an answer to no notification is ignored.
    void respond(const NotificationResponse&);

private:
    struct Category {
        std::vector<UserNotificationAction> actions;
        UserNotificationCategoryDelegate* delegate = nullptr;
    };

    const bool& permitted_;
    EventTrace& trace_;
    std::map<std::string, Category, std::less<>> categories_;
    std::vector<UserNotification> delivered_;
};

} // namespace vardel::scripted
