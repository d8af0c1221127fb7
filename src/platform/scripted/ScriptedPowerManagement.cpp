#include "platform/scripted/ScriptedPowerManagement.h"

namespace vardel::scripted {

AssertionsByProcess ScriptedPowerManagement::copyAssertionsByProcess()
{
    // The scenario reader keeps the status within the platform's 32-bit range.
    int status = static_cast<int>(world_.powerAssertionsStatus);
    if (status != 0)
        return { status, nullptr };
    return { 0, world_.powerAssertions };
}

std::optional<std::string> ScriptedPowerManagement::pathForProcess(ProcessIdentifier pid)
{
    if (const ScriptedApplication* application = world_.runningApplication(pid))
        return application->description.executablePath;
    for (const ProcessDescription& process : world_.processes) {
        if (process.pid == pid)
            return process.path;
    }
    return std::nullopt;
}

} // namespace vardel::scripted
