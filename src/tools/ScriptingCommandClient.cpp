#include "tools/ScriptingCommandClient.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace vardel {

namespace {

using Outcome = ScriptingCommandClient::Outcome;

// Closes the socket however the exchange ends.
struct Connection {
    int descriptor;
    ~Connection() { ::close(descriptor); }
};

Outcome failedWith(const std::string& what)
{
    return { Outcome::Status::failed, what + ": " + std::strerror(errno) };
}

bool sendAll(int descriptor, const std::string& text)
{
    size_t sent = 0;
    while (sent < text.size()) {
        ssize_t count = ::send(descriptor, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        sent += static_cast<size_t>(count);
    }
    return true;
}

} // namespace

ScriptingCommandClient::Outcome ScriptingCommandClient::send(
    const std::filesystem::path& socketPath, const std::string& request)
{
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (socketPath.string().size() >= sizeof address.sun_path)
        return { Outcome::Status::failed, "the socket path is too long: " + socketPath.string() };
    std::strncpy(address.sun_path, socketPath.c_str(), sizeof address.sun_path - 1);

    Connection connection { ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0) };
    if (connection.descriptor < 0)
        return failedWith("a socket cannot be created");
    if (::connect(connection.descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        if (errno == ENOENT || errno == ECONNREFUSED)
            return { Outcome::Status::noTracker,
                "no Vardel tracker is running (nothing answers on " + socketPath.string() + ")" };
        return failedWith("cannot reach the tracker on " + socketPath.string());
    }
    if (!sendAll(connection.descriptor, request + "\n"))
        return failedWith("cannot send the command to the tracker");

    std::string answer;
    char buffer[512];
    while (answer.find('\n') == std::string::npos) {
        pollfd waiting { connection.descriptor, POLLIN, 0 };
        int ready = ::poll(&waiting, 1, answerTimeoutMilliseconds);
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready < 0)
            return failedWith("cannot wait for the tracker's answer");
        if (ready == 0)
            return { Outcome::Status::failed, "the tracker did not answer within 5 seconds" };
        ssize_t count = ::recv(connection.descriptor, buffer, sizeof buffer, 0);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return failedWith("cannot read the tracker's answer");
        if (count == 0)
            break;
        answer.append(buffer, static_cast<size_t>(count));
    }
    if (answer.empty())
        return { Outcome::Status::failed, "the tracker closed the connection without answering" };
    return { Outcome::Status::answered, answer.substr(0, answer.find('\n')) };
}

} // namespace vardel
