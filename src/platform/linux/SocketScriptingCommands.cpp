#include "platform/linux/SocketScriptingCommands.h"

#include <stdexcept>

namespace vardel::linux_desktop {

void SocketScriptingCommands::setHandler(std::function<void(const ScriptingCommandRequest&)> handler)
{
    handler_ = std::move(handler);
    if (handler_)
        open();
    else
        close();
}

void SocketScriptingCommands::open()
{
    if (server_)
        return;
    if (!socketPath_) {
        log_.warning("No XDG_RUNTIME_DIR: vardel pause and vardel resume cannot reach the tracker");
        return;
    }
    auto deliver = [this](const ScriptingCommandRequest& request) {
        if (handler_)
            handler_(request);
    };
    try {
        server_ = std::make_unique<ScriptingCommandServer>(
            *socketPath_,
            [deliver](double fors) {
                deliver({ "pause", { { "fors", Value(fors) } } });
            },
            [deliver] {
                deliver({ "resume", {} });
            });
    } catch (const std::runtime_error& error) {
        log_.warning(error.what());
        return;
    }
    source_ = runLoop_.addReadableSource(server_->fileDescriptor(), [this] { server_->serveReadyConnections(); });
}

void SocketScriptingCommands::close()
{
    if (source_)
        runLoop_.removeSource(*source_);
    source_.reset();
    server_.reset();
}

} // namespace vardel::linux_desktop
