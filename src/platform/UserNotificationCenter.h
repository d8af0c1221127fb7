#pragma once

#include "platform/Value.h"

#include <functional>
#include <string>
#include <vector>

namespace vardel {

struct UserNotification {
    std::string title;
    std::string body;
    std::string categoryIdentifier;
    bool playsSound = false;
    Value::Dictionary userInfo;
};

struct UserNotificationAction {
    std::string identifier;
    std::string title;
};

// How the user answered a delivered notification.
struct UserNotificationResponse {
    enum class Kind { dismissed, clicked, action };
    Kind kind = Kind::dismissed;
    std::string actionIdentifier; // for an action

    std::string description() const
    {
        return kind == Kind::dismissed ? "dismissed" : kind == Kind::clicked ? "clicked" : actionIdentifier;
    }
};

class UserNotificationCategoryDelegate {
public:
    virtual ~UserNotificationCategoryDelegate() = default;
    virtual void handleResponse(
        const std::string& categoryIdentifier, const UserNotificationResponse&, const Value::Dictionary& userInfo)
        = 0;
};

// The desktop's user notifications: categories with actions, permission, delivery and answers.
class UserNotificationCenter {
public:
    virtual ~UserNotificationCenter() = default;

    // The delegate is not owned and answers every notification of the category.
    virtual void registerCategory(const std::string& identifier, std::vector<UserNotificationAction> actions,
        UserNotificationCategoryDelegate* delegate)
        = 0;
    // The answer may come later, on the main run loop.
    virtual void requestPermission(std::function<void(bool granted)> answer) = 0;
    virtual void deliver(const UserNotification&) = 0;
};

} // namespace vardel
