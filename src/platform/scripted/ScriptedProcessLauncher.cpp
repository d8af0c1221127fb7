#include "platform/scripted/ScriptedProcessLauncher.h"

namespace vardel::scripted {

int ScriptedProcessLauncher::runAndWait(const std::string& path, const std::vector<std::string>& arguments)
{
    trace_.write("process", { { "path", path }, { "arguments", arguments } });
    if (path == "/usr/bin/defaults")
        applyDefaultsWrite(arguments);
    return 0;
}

std::optional<std::string> ScriptedProcessLauncher::launch(
    const std::string& path, const std::vector<std::string>& arguments)
{
    trace_.write("process", { { "path", path }, { "arguments", arguments } });
    if (relaunchHandler_) {
        if (auto script = RelaunchScript::recognize(path, arguments, trackerPid_))
            relaunchHandler_(*script);
    }
    return std::nullopt;
}

// Only "write DOMAIN KEY -bool true|false" is understood; anything else leaves the domains alone.
void ScriptedProcessLauncher::applyDefaultsWrite(const std::vector<std::string>& arguments)
{
    if (arguments.size() != 5 || arguments[0] != "write" || arguments[3] != "-bool")
        return;
    const std::string& value = arguments[4];
    if (value != "true" && value != "false")
        return;
    domains_.openForWriting(arguments[1]).setObject(arguments[2], Value(value == "true"));
}

} // namespace vardel::scripted
