#pragma once

#include "platform/ProcessLauncher.h"
#include "platform/scripted/RelaunchScript.h"
#include "platform/scripted/ScriptedDefaultsDomains.h"
#include "platform/scripted/TraceWriter.h"

#include <functional>

namespace vardel::scripted {

// Starts no process: each is traced and exits at once with status 0. A boolean write of the defaults
// tool is applied to its domain, as the real tool would; the tracker's relaunch script goes to the
// relaunch handler, which plays its effect on the tracker.
class ScriptedProcessLauncher final : public ProcessLauncher {
public:
    ScriptedProcessLauncher(ScriptedDefaultsDomains& domains, TraceWriter& trace, ProcessIdentifier trackerPid)
        : domains_(domains)
        , trace_(trace)
        , trackerPid_(trackerPid)
    {
    }

    void setRelaunchHandler(std::function<void(const RelaunchScript&)> handler)
    {
        relaunchHandler_ = std::move(handler);
    }

    int runAndWait(const std::string& path, const std::vector<std::string>& arguments) override;
    // Traced like any started process; it always starts.
    std::optional<std::string> launch(const std::string& path, const std::vector<std::string>& arguments) override;

private:
    void applyDefaultsWrite(const std::vector<std::string>& arguments);

    ScriptedDefaultsDomains& domains_;
    TraceWriter& trace_;
    ProcessIdentifier trackerPid_;
    std::function<void(const RelaunchScript&)> relaunchHandler_;
};

} // namespace vardel::scripted
