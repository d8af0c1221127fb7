#pragma once

#include "platform/PowerManagement.h"

namespace vardel::linux_desktop {

// Power-management assertions are logind's inhibitors (ListInhibitors on the system bus), keyed by
// the holder's pid: `what` is the assertion type, `why` its name, `who` the process name, `mode`
// ("block", "delay") its level. Without logind the snapshot is empty, which is not an error: other
// programs' session inhibitors cannot be listed at all.
class LogindPowerManagement final : public PowerManagement {
public:
    AssertionsByProcess copyAssertionsByProcess() override;
    // /proc/PID/exe.
    std::optional<std::string> pathForProcess(ProcessIdentifier) override;

    struct Inhibitor {
        std::string what, who, why, mode;
        uint32_t uid = 0;
        uint32_t pid = 0;
    };
    static Value::Dictionary assertionsOf(const std::vector<Inhibitor>&);
};

} // namespace vardel::linux_desktop
