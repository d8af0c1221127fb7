#pragma once

#include "platform/Log.h"
#include "platform/ScriptingCommands.h"
#include "platform/linux/PollRunLoop.h"
#include "platform/linux/ScriptingCommandServer.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace vardel::linux_desktop {

// Commands from `vardel pause` and `vardel resume`, received on the tracker's socket. The socket is
// opened when the program starts listening, and closed when it stops.
class SocketScriptingCommands final : public ScriptingCommands {
public:
    SocketScriptingCommands(PollRunLoop& runLoop, Log& log, std::optional<std::filesystem::path> socketPath)
        : runLoop_(runLoop)
        , log_(log)
        , socketPath_(std::move(socketPath))
    {
    }
    ~SocketScriptingCommands() override { close(); }

    void setHandler(std::function<void(const ScriptingCommandRequest&)> handler) override;

private:
    void open();
    void close();

    PollRunLoop& runLoop_;
    Log& log_;
    std::optional<std::filesystem::path> socketPath_;
    std::function<void(const ScriptingCommandRequest&)> handler_;
    std::unique_ptr<vardel::ScriptingCommandServer> server_;
    std::optional<PollRunLoop::SourceId> source_;
};

} // namespace vardel::linux_desktop
