#pragma once

#include "calls/CallProperties.h"
#include "product/TaskActivity.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace vardel {

// What the product offers for a finished call: time entries, the editor and the call-ended
// notification. Without one, the detector behaves as without a database.
class CallEndReaction {
public:
    virtual ~CallEndReaction() = default;

    // A database that takes time entries, and no task timer running.
    virtual bool canOfferTimeEntries() = 0;
    // Saves the call without asking; the new entry when one was created.
    virtual std::optional<TaskActivity> saveTimeEntry(const CallProperties&, const std::string& key) = 0;
    // Opens a saved entry in the editor, for the user to correct it.
    virtual void editTimeEntry(const TaskActivity& entry) = 0;
    virtual void presentCallEditor(const CallProperties&, const std::string& key) = 0;
    virtual void requestNotificationPermission(std::function<void(bool granted)> answer) = 0;
    virtual void presentCallEndedNotification(const CallProperties&, const std::string& key) = 0;
};

} // namespace vardel
