#include "platform/linux/ScriptingCommandServer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <sys/un.h>
#include <unistd.h>

namespace vardel {

namespace {

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

// Whether the run loop's epoll set could take the descriptor; it reports it when readable.
bool watch(int events, int descriptor)
{
    epoll_event interest {};
    interest.events = EPOLLIN;
    interest.data.fd = descriptor;
    return ::epoll_ctl(events, EPOLL_CTL_ADD, descriptor, &interest) == 0;
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
    listener_ = linux_desktop::FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    events_ = linux_desktop::FileDescriptor(::epoll_create1(EPOLL_CLOEXEC));
    timer_ = linux_desktop::FileDescriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC));
    if (!listener_ || !events_ || !timer_)
        throw failure("The scripting socket cannot be created");
    struct stat status { };
    if (::bind(listener_.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0
        || ::chmod(socketPath_.c_str(), 0600) != 0 || ::listen(listener_.get(), 16) != 0
        || ::stat(socketPath_.c_str(), &status) != 0 || !watch(events_.get(), listener_.get())
        || !watch(events_.get(), timer_.get()))
        throw failure("The scripting socket " + socketPath_.string() + " cannot be set up");
    socketInode_ = status.st_ino;
}

ScriptingCommandServer::~ScriptingCommandServer()
{
    struct stat status { };
    if (::lstat(socketPath_.c_str(), &status) == 0 && status.st_ino == socketInode_)
        ::unlink(socketPath_.c_str());
}

void ScriptingCommandServer::serveReadyConnections()
{
    std::array<epoll_event, 32> ready {};
    int count = ::epoll_wait(events_.get(), ready.data(), static_cast<int>(ready.size()), 0);
    for (int index = 0; index < count; ++index) {
        int descriptor = ready[static_cast<size_t>(index)].data.fd;
        if (descriptor == listener_.get())
            acceptWaitingClients();
        else if (descriptor != timer_.get())
            readFrom(descriptor);
    }
    dropExpiredClients();
    armTimerForNextDeadline();
}

void ScriptingCommandServer::acceptWaitingClients()
{
    while (true) {
        linux_desktop::FileDescriptor connection(
            ::accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (!connection) {
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            return;
        }
        if (clients_.size() >= mostClients) {
            sendAll(connection.get(), "error: the tracker is busy; try again\n");
            continue;
        }
        if (!watch(events_.get(), connection.get()))
            continue;
        int descriptor = connection.get();
        clients_.emplace(
            descriptor, Client { std::move(connection), {}, false, std::chrono::steady_clock::now() + requestTimeout });
    }
}

// Reads what the client has sent so far. A line, or the end of what it sends, gets the answer; a
// line longer than a request can be is read to its end and refused.
void ScriptingCommandServer::readFrom(int connection)
{
    auto found = clients_.find(connection);
    if (found == clients_.end())
        return;
    Client& client = found->second;
    std::array<char, 4096> buffer {};
    while (true) {
        ssize_t count = ::recv(connection, buffer.data(), buffer.size(), 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        if (count <= 0)
            break;
        std::string_view arrived(buffer.data(), static_cast<size_t>(count));
        size_t newline = arrived.find('\n');
        if (!client.tooLong)
            client.received.append(arrived.substr(0, newline));
        client.tooLong = client.tooLong || client.received.size() > longestRequest;
        if (newline != std::string_view::npos)
            break;
    }
    respond(client);
    clients_.erase(found);
}

void ScriptingCommandServer::respond(Client& client)
{
    // A client that only checks whether a tracker listens sends nothing and expects nothing.
    if (!client.tooLong && trimmed(client.received).empty())
        return;
    if (!fromTheSameUser(client.connection.get())) {
        sendAll(client.connection.get(), "error: only the user who runs the tracker may command it\n");
        return;
    }
    if (client.tooLong) {
        sendAll(client.connection.get(),
            "error: a request is one line of at most " + std::to_string(longestRequest) + " bytes\n");
        return;
    }
    sendAll(client.connection.get(), answer(client.received) + "\n");
}

void ScriptingCommandServer::dropExpiredClients()
{
    auto now = std::chrono::steady_clock::now();
    std::erase_if(clients_, [now](const auto& entry) { return entry.second.deadline <= now; });
}

void ScriptingCommandServer::armTimerForNextDeadline()
{
    uint64_t expirations = 0;
    while (::read(timer_.get(), &expirations, sizeof expirations) > 0) { }
    itimerspec next {};
    if (!clients_.empty()) {
        auto earliest = std::min_element(clients_.begin(), clients_.end(), [](const auto& left, const auto& right) {
            return left.second.deadline < right.second.deadline;
        })->second.deadline;
        auto wait = std::max(std::chrono::nanoseconds(1), earliest - std::chrono::steady_clock::now());
        next.it_value.tv_sec = static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(wait).count());
        next.it_value.tv_nsec = static_cast<long>((wait % std::chrono::seconds(1)).count());
    }
    ::timerfd_settime(timer_.get(), 0, &next, nullptr);
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
