#include "platform/linux/ScriptingCommandServer.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace vardel {

namespace {

constexpr int requestTimeoutMilliseconds = 1000;

std::runtime_error failure(const std::string& what)
{
    return std::runtime_error(what + ": " + std::strerror(errno));
}

sockaddr_un addressOf(const std::filesystem::path& path)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (path.string().size() >= sizeof address.sun_path)
        throw std::runtime_error("The scripting socket path is too long: " + path.string());
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    return address;
}

// The folder is the user's alone, whatever the umask made of it.
void prepareFolder(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error)
        throw std::runtime_error("The scripting folder " + folder.string() + " cannot be created: " + error.message());
    struct stat status { };
    if (::lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) || status.st_uid != ::getuid())
        throw std::runtime_error("The scripting folder " + folder.string() + " is not a folder of this user");
    if (::chmod(folder.c_str(), 0700) != 0)
        throw failure("The scripting folder " + folder.string() + " cannot be made private");
}

// Whether a process accepts connections on the socket file.
bool someoneListens(const sockaddr_un& address)
{
    int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (probe < 0)
        throw failure("A socket cannot be created");
    bool connected = ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    ::close(probe);
    return connected;
}

void removeStaleSocket(const std::filesystem::path& path, const sockaddr_un& address)
{
    struct stat status { };
    if (::lstat(path.c_str(), &status) != 0)
        return;
    if (!S_ISSOCK(status.st_mode))
        throw std::runtime_error("Something other than a socket is in the way at " + path.string());
    if (someoneListens(address))
        throw std::runtime_error("Another Vardel tracker already answers scripting commands on " + path.string());
    ::unlink(path.c_str());
}

std::optional<double> secondsIn(std::string_view text)
{
    double seconds = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(seconds) || seconds < 0)
        return std::nullopt;
    return seconds;
}

std::string_view trimmed(std::string_view text)
{
    const char* space = " \t\r\n";
    size_t first = text.find_first_not_of(space);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(space) - first + 1);
}

std::string formatSeconds(double seconds)
{
    char text[64];
    std::snprintf(text, sizeof text, "%g", seconds);
    return text;
}

// Reads up to a newline, the end of the stream or longestRequest bytes, waiting at most the
// request time-out for each part.
std::string readRequest(int connection)
{
    std::string request;
    char buffer[ScriptingCommandServer::longestRequest];
    while (request.size() < ScriptingCommandServer::longestRequest && request.find('\n') == std::string::npos) {
        pollfd waiting { connection, POLLIN, 0 };
        if (::poll(&waiting, 1, requestTimeoutMilliseconds) <= 0)
            break;
        ssize_t count = ::recv(connection, buffer, ScriptingCommandServer::longestRequest - request.size(), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        request.append(buffer, static_cast<size_t>(count));
    }
    return request.substr(0, request.find('\n'));
}

void sendAll(int connection, const std::string& text)
{
    size_t sent = 0;
    while (sent < text.size()) {
        ssize_t count = ::send(connection, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return;
        sent += static_cast<size_t>(count);
    }
}

// The socket's modes already keep other users out; the peer's own credentials still decide, so that a
// loosened folder or socket file does not hand the tracker to them.
bool fromTheSameUser(int connection)
{
    ucred peer {};
    socklen_t length = sizeof peer;
    return ::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 && peer.uid == ::getuid();
}

} // namespace

std::optional<std::filesystem::path> ScriptingCommandServer::socketPath(const EnvironmentLookup& environment)
{
    const char* runtimeFolder = environment("XDG_RUNTIME_DIR");
    if (!runtimeFolder || !*runtimeFolder || !std::filesystem::path(runtimeFolder).is_absolute())
        return std::nullopt;
    return std::filesystem::path(runtimeFolder) / "vardel" / "tracker.sock";
}

ScriptingCommandServer::ScriptingCommandServer(
    std::filesystem::path socketPath, std::function<void(double fors)> pause, std::function<void()> resume)
    : socketPath_(std::move(socketPath))
    , pause_(std::move(pause))
    , resume_(std::move(resume))
{
    sockaddr_un address = addressOf(socketPath_);
    prepareFolder(socketPath_.parent_path());
    removeStaleSocket(socketPath_, address);
    listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (listener_ < 0)
        throw failure("The scripting socket cannot be created");
    struct stat status { };
    if (::bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0
        || ::chmod(socketPath_.c_str(), 0600) != 0 || ::listen(listener_, 8) != 0
        || ::stat(socketPath_.c_str(), &status) != 0) {
        auto error = failure("The scripting socket " + socketPath_.string() + " cannot be set up");
        ::close(listener_);
        throw error;
    }
    socketInode_ = status.st_ino;
}

ScriptingCommandServer::~ScriptingCommandServer()
{
    ::close(listener_);
    struct stat status { };
    if (::lstat(socketPath_.c_str(), &status) == 0 && status.st_ino == socketInode_)
        ::unlink(socketPath_.c_str());
}

void ScriptingCommandServer::serveReadyConnections()
{
    while (true) {
        int connection = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (connection < 0) {
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            return;
        }
        serve(connection);
        ::close(connection);
    }
}

void ScriptingCommandServer::serve(int connection)
{
    // The request is read even from another user, so that the refusal reaches a client still writing.
    std::string request = readRequest(connection);
    // A client that only checks whether a tracker listens sends nothing and expects nothing.
    if (trimmed(request).empty())
        return;
    if (!fromTheSameUser(connection)) {
        sendAll(connection, "error: only the user who runs the tracker may command it\n");
        return;
    }
    sendAll(connection, answer(request) + "\n");
}

std::string ScriptingCommandServer::answer(std::string_view request)
{
    std::string_view line = trimmed(request);
    std::string_view command = line.substr(0, line.find_first_of(" \t"));
    std::string_view argument = trimmed(line.substr(command.size()));
    if (command == "resume" && argument.empty()) {
        resume_();
        return "ok: resumed";
    }
    if (command == "pause") {
        auto seconds = argument.empty() ? std::optional(0.0) : secondsIn(argument);
        if (!seconds)
            return "error: pause takes a number of seconds (0 or more), not \"" + std::string(argument) + "\"";
        pause_(*seconds);
        return *seconds > 0 ? "ok: paused for " + formatSeconds(*seconds) + " seconds" : "ok: paused until resumed";
    }
    return "error: unknown command \"" + std::string(line) + "\"; expected \"pause [SECONDS]\" or \"resume\"";
}

} // namespace vardel
