#include "platform/scripted/ScriptedScriptingCommands.h"

namespace vardel::scripted {

void ScriptedScriptingCommands::deliver(const ScriptCommand& command)
{
    if (!handler_)
        return;
    ScriptingCommandRequest request;
    request.name = command.command == ScriptCommand::Command::Pause ? "pause" : "resume";
    if (command.seconds)
        request.arguments.emplace("fors", Value(*command.seconds));
    handler_(request);
}

} // namespace vardel::scripted
