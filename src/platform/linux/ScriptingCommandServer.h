#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace vardel {

// Serves the scripting commands (pause, resume) on a local socket that only the user can reach:
// a folder of mode 0700 holding a socket of mode 0600. Each client sends one line and gets one
// line back:
//
//   "pause SECONDS" / "pause"  ->  "ok: paused for SECONDS seconds" / "ok: paused until resumed"
//   "resume"                   ->  "ok: resumed"
//   anything else              ->  "error: …"
class ScriptingCommandServer {
public:
    using EnvironmentLookup = std::function<const char*(const char* name)>;
    static constexpr size_t longestRequest = 256;

    // $XDG_RUNTIME_DIR/vardel/tracker.sock; nothing when XDG_RUNTIME_DIR is unset or relative.
    static std::optional<std::filesystem::path> socketPath(const EnvironmentLookup&);

    // Listens on the path. A socket file that nobody listens on (left by a tracker that died) is
    // replaced; one that a running tracker listens on is left to it. Throws std::runtime_error,
    // with a message fit for the log, when the socket cannot be set up or another tracker has it.
    ScriptingCommandServer(
        std::filesystem::path socketPath, std::function<void(double fors)> pause, std::function<void()> resume);
    ~ScriptingCommandServer();
    ScriptingCommandServer(const ScriptingCommandServer&) = delete;
    ScriptingCommandServer& operator=(const ScriptingCommandServer&) = delete;

    // The listening socket, for the run loop to wait on; it never blocks.
    int fileDescriptor() const { return listener_; }
    // Answers every client waiting to be accepted. A client gets a second to send its line.
    void serveReadyConnections();

    // The reply to one request line, after carrying the command out.
    std::string answer(std::string_view request);

private:
    void serve(int connection);

    std::filesystem::path socketPath_;
    std::function<void(double)> pause_;
    std::function<void()> resume_;
    int listener_ = -1;
    // The socket file this server made, so that it never removes a successor's.
    ino_t socketInode_ = 0;
};

} // namespace vardel
