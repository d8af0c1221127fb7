#pragma once

#include "calls/CallEndReaction.h"
#include "platform/UserNotificationCenter.h"

#include <string>

namespace vardel {

// What the user is offered when a call has ended: the call-ended notification with its actions, the
// time-entry editor, an entry saved without asking, and the report of a call that was none.
class CallTimeEntryOffers final : public CallEndReaction, public UserNotificationCategoryDelegate {
public:
    static constexpr const char* categoryIdentifier = "info.quenby.Vardel2.callEnded";

    // Registers the notification category with this object as its delegate.
    void registerNotificationCategory();

    bool canOfferTimeEntries() override;
    std::optional<TaskActivity> saveTimeEntry(const CallProperties&, const std::string& key) override;
    void editTimeEntry(const TaskActivity& entry) override;
    void presentCallEditor(const CallProperties&, const std::string& key) override;
    void requestNotificationPermission(std::function<void(bool granted)> answer) override;
    void presentCallEndedNotification(const CallProperties&, const std::string& key) override;

    void handleResponse(
        const std::string& category, const UserNotificationResponse&, const Value::Dictionary& userInfo) override;

private:
    void reportFalsePositive(const Value::Dictionary& userInfo);
    void stopAskingForApplication(const Value::Dictionary& userInfo);
};

} // namespace vardel
