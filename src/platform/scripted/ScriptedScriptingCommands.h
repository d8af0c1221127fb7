#pragma once

#include "platform/ScriptingCommands.h"
#include "platform/scripted/Scenario.h"

namespace vardel::scripted {

// Delivers the scenario's `script` steps: "pause" with its "fors" argument, or "resume".
class ScriptedScriptingCommands final : public ScriptingCommands {
public:
    void setHandler(std::function<void(const ScriptingCommandRequest&)> handler) override
    {
        handler_ = std::move(handler);
    }

    void deliver(const ScriptCommand&);

private:
    std::function<void(const ScriptingCommandRequest&)> handler_;
};

} // namespace vardel::scripted
