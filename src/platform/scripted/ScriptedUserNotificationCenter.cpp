#include "platform/scripted/ScriptedUserNotificationCenter.h"

#include "platform/ValueJson.h"

namespace vardel::scripted {

namespace {

UserNotificationResponse responseFor(const std::string& action)
{
    if (action == "clicked")
        return { UserNotificationResponse::Kind::clicked, {} };
    if (action == "dismissed")
        return { UserNotificationResponse::Kind::dismissed, {} };
    return { UserNotificationResponse::Kind::action, action };
}

} // namespace

void ScriptedUserNotificationCenter::registerCategory(const std::string& identifier,
    std::vector<UserNotificationAction> actions, UserNotificationCategoryDelegate* delegate)
{
    categories_.insert_or_assign(identifier, Category { std::move(actions), delegate });
}

void ScriptedUserNotificationCenter::deliver(const UserNotification& notification)
{
    delivered_.push_back(notification);
    trace_.write("notification",
        { { "title", notification.title }, { "body", notification.body },
            { "category", notification.categoryIdentifier }, { "sound", notification.playsSound },
            { "userInfo", ValueJson::encode(Value(notification.userInfo)) } });
}

void ScriptedUserNotificationCenter::respond(const NotificationResponse& response)
{
    if (delivered_.empty())
        return;
    auto index = response.notificationIndex.value_or(static_cast<int64_t>(delivered_.size()) - 1);
    if (index < 0 || index >= static_cast<int64_t>(delivered_.size()))
        return;
    // Copied: the delegate may deliver further notifications while it answers.
    UserNotification notification = delivered_[static_cast<size_t>(index)];
    auto category = categories_.find(notification.categoryIdentifier);
    if (category == categories_.end() || !category->second.delegate)
        return;
    category->second.delegate->handleResponse(
        notification.categoryIdentifier, responseFor(response.action), notification.userInfo);
}

} // namespace vardel::scripted
