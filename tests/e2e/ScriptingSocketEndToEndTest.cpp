// The tracker's scripting socket under load and abuse on the real desktop: the well-formed requests
// are answered, the rest refused, and the samples keep their time.

#include "TrackerOnDesktopTest.h"

#include <cstring>
#include <future>
#include <sys/un.h>

namespace vardel::testing {

namespace {

int connectTo(const std::filesystem::path& socket)
{
    int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socket.c_str(), sizeof address.sun_path - 1);
    if (::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(connection);
        return -1;
    }
    return connection;
}

// Sends the bytes and reads the answer line; a refusal may come before everything is sent.
std::string ask(const std::filesystem::path& socket, const std::string& request)
{
    int connection = connectTo(socket);
    if (connection < 0)
        return "(no connection)";
    for (size_t sent = 0; sent < request.size();) {
        ssize_t written = ::send(connection, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
        if (written <= 0)
            break;
        sent += static_cast<size_t>(written);
    }
    std::string answer;
    char byte = 0;
    while (::recv(connection, &byte, 1, 0) == 1 && byte != '\n')
        answer += byte;
    ::close(connection);
    return answer;
}

std::vector<double> sampleTimes(const Trace& trace)
{
    std::vector<double> times;
    for (const auto& event : trace) {
        if (event["event"] == "sample")
            times.push_back(event["t"]);
    }
    return times;
}

class ScriptingSocketEndToEndTest : public LinuxDesktopEndToEndTest { };

TEST_F(ScriptingSocketEndToEndTest, AbuseNeitherStopsTheAnswersNorDelaysASample)
{
    startTracker();
    std::filesystem::path socket = desktop().scratchFolder() / "vardel" / "tracker.sock";
    waitForTrace([&](const Trace& trace) { return samples(trace) >= 2 && std::filesystem::exists(socket); });

    int silent = connectTo(socket);
    auto overlong = std::async(std::launch::async, [&] { return ask(socket, std::string(10'000'000, 'x') + "\n"); });
    auto garbage
        = std::async(std::launch::async, [&] { return ask(socket, std::string("\0\xff\x01pause\x7f\n", 10)); });
    std::vector<std::future<std::string>> wellFormed;
    for (int client = 0; client < 50; ++client)
        wellFormed.push_back(std::async(std::launch::async, [&] { return ask(socket, "resume\n"); }));

    for (auto& answer : wellFormed)
        EXPECT_TRUE(answer.get().starts_with("ok: "));
    EXPECT_EQ(overlong.get(), "error: a request is one line of at most 256 bytes");
    EXPECT_TRUE(garbage.get().starts_with("error: unknown command"));
    size_t before = samples(readTrace(tracePath_));
    // A few samples more with the silent client still connected.
    auto trace = waitForTrace([&](const Trace& trace) { return samples(trace) >= before + 3; });
    ::close(silent);

    auto times = sampleTimes(trace);
    for (size_t index = 1; index < times.size(); ++index)
        EXPECT_LE(times[index] - times[index - 1], 1.1) << "the sample after " << times[index - 1] << " s was late";
}

} // namespace

} // namespace vardel::testing
