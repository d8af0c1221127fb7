#pragma once

#include "platform/ProcessLauncher.h"
#include "platform/scripted/ScriptedDefaultsDomains.h"
#include "platform/scripted/TraceWriter.h"

namespace vardel::scripted {

// Starts no process: each is traced and exits at once with status 0. A boolean write of the defaults
// tool is applied to its domain, as the real tool would.
class ScriptedProcessLauncher final : public ProcessLauncher {
public:
    ScriptedProcessLauncher(ScriptedDefaultsDomains& domains, TraceWriter& trace)
        : domains_(domains)
        , trace_(trace)
    {
    }

    int runAndWait(const std::string& path, const std::vector<std::string>& arguments) override;
    // Traced like any started process; it always starts.
    std::optional<std::string> launch(const std::string& path, const std::vector<std::string>& arguments) override;

private:
    void applyDefaultsWrite(const std::vector<std::string>& arguments);

    ScriptedDefaultsDomains& domains_;
    TraceWriter& trace_;
};

} // namespace vardel::scripted
