#pragma once

#include "platform/linux/FileDescriptor.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
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
//
// Clients are served side by side without ever blocking the caller: a client that connects and
// never writes, or writes slowly, holds up nobody and is dropped after a second.
class ScriptingCommandServer {
public:
    using EnvironmentLookup = std::function<const char*(const char* name)>;
    static constexpr size_t longestRequest = 256;
    // Clients served at once; one more is told to try again.
    static constexpr size_t mostClients = 64;
    static constexpr std::chrono::milliseconds requestTimeout { 1000 };

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

    // Readable whenever a client connects or writes, or one runs out of time: for the run loop to
    // wait on.
    int fileDescriptor() const { return events_.get(); }
    // Takes what is ready without waiting: accepts clients, reads what they sent, answers complete
    // lines and drops clients whose second has passed.
    void serveReadyConnections();

    // The reply to one request line, after carrying the command out.
    std::string answer(std::string_view request);

private:
    struct Client {
        linux_desktop::FileDescriptor connection;
        std::string received;
        bool tooLong = false;
        std::chrono::steady_clock::time_point deadline;
    };

    void acceptWaitingClients();
    void readFrom(int connection);
    void respond(Client&);
    void dropExpiredClients();
    void armTimerForNextDeadline();

    std::filesystem::path socketPath_;
    std::function<void(double)> pause_;
    std::function<void()> resume_;
    linux_desktop::FileDescriptor listener_;
    linux_desktop::FileDescriptor events_;
    linux_desktop::FileDescriptor timer_;
    std::map<int, Client> clients_;
    // The socket file this server made, so that it never removes a successor's.
    ino_t socketInode_ = 0;
};

} // namespace vardel
