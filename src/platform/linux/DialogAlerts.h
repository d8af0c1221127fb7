#pragma once

#include "platform/Alerts.h"
#include "platform/Log.h"
#include "platform/linux/UnattendedAlerts.h"

#include <optional>
#include <string>

namespace vardel::linux_desktop {

// Alerts as real modal dialogs, shown by vardel-dialog. The tracker waits for the answer, as a modal
// alert asks. Without the program, or when it cannot show the alert (no display, closed without an
// answer), the alert is answered as an unattended one and the reason logged.
class DialogAlerts final : public Alerts {
public:
    // program: vardel-dialog's path; nothing when it is not installed.
    DialogAlerts(std::optional<std::string> program, Log& log);

    AlertResponse runModal(const AlertRequest& request) override;

private:
    std::optional<std::string> program_;
    Log& log_;
    UnattendedAlerts unattended_;
};

} // namespace vardel::linux_desktop
