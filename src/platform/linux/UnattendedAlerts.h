#pragma once

#include "platform/Alerts.h"
#include "platform/Log.h"

namespace vardel::linux_desktop {

// This build shows no dialogs on the Linux desktop. An alert is written to the log and taken as
// closed: its first button, its check box as it opened.
class UnattendedAlerts final : public Alerts {
public:
    explicit UnattendedAlerts(Log& log)
        : log_(log)
    {
    }

    AlertResponse runModal(const AlertRequest& request) override
    {
        log_.warning("Alert not shown, answered with \"" + (request.buttons.empty() ? "OK" : request.buttons.front())
            + "\": " + request.message);
        return { 1, request.suppressionState };
    }

private:
    Log& log_;
};

} // namespace vardel::linux_desktop
