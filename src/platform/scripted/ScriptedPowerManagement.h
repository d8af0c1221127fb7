#pragma once

#include "platform/PowerManagement.h"
#include "platform/scripted/DesktopWorld.h"

namespace vardel::scripted {

// The scenario's assertions, and its applications and plain processes as the holders.
class ScriptedPowerManagement final : public PowerManagement {
public:
    explicit ScriptedPowerManagement(const DesktopWorld& world)
        : world_(world)
    {
    }

    // The scenario's dictionary, or none with a non-zero status.
    AssertionsByProcess copyAssertionsByProcess() override;
    // A running application's executable, else a plain process's path.
    std::optional<std::string> pathForProcess(ProcessIdentifier) override;

private:
    const DesktopWorld& world_;
};

} // namespace vardel::scripted
