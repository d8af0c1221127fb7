#include "platform/linux/ScriptingCommandServer.h"
#include "support/TemporaryFolder.h"
#include "tools/ScriptingCommandClient.h"
#include "tools/VardelCommand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vardel {
namespace {

using Outcome = ScriptingCommandClient::Outcome;

// The tracker's side runs on the test's thread, as on the tracker's run loop; the client on another.
template<typename Client> auto whileServing(ScriptingCommandServer& server, Client client)
{
    auto answer = std::async(std::launch::async, client);
    while (answer.wait_for(std::chrono::milliseconds(0)) != std::future_status::ready) {
        pollfd ready { server.fileDescriptor(), POLLIN, 0 };
        ::poll(&ready, 1, 20);
        server.serveReadyConnections();
    }
    return answer.get();
}

mode_t permissions(const std::filesystem::path& path)
{
    struct stat status { };
    ::lstat(path.c_str(), &status);
    return status.st_mode & 0777;
}

class ScriptingCommandTest : public ::testing::Test {
protected:
    std::filesystem::path socket() const { return runtime_.path() / "vardel" / "tracker.sock"; }

    std::unique_ptr<ScriptingCommandServer> startServer()
    {
        return std::make_unique<ScriptingCommandServer>(
            socket(), [this](double fors) { pauses_.push_back(fors); }, [this] { ++resumes_; });
    }

    Outcome send(ScriptingCommandServer& server, const std::string& request)
    {
        return whileServing(server, [&] { return ScriptingCommandClient::send(socket(), request); });
    }

    const char* environment(const char* name) const
    {
        return std::string_view(name) == "XDG_RUNTIME_DIR" ? runtimePath_.c_str() : nullptr;
    }

    testing::TemporaryFolder runtime_;
    std::string runtimePath_ = runtime_.path().string();
    std::vector<double> pauses_;
    int resumes_ = 0;
};

TEST_F(ScriptingCommandTest, PauseAndResumeReachTheTrackerAndBadRequestsDoNot)
{
    auto server = startServer();
    EXPECT_EQ(send(*server, "pause 600").text, "ok: paused for 600 seconds");
    EXPECT_EQ(send(*server, "pause").text, "ok: paused until resumed");
    EXPECT_EQ(send(*server, "  resume \r").text, "ok: resumed");
    for (const char* refused : { "pause -5", "pause soon", "pause nan", "pause 1e999", "resume now", "dance", "" }) {
        Outcome outcome = send(*server, refused);
        EXPECT_EQ(outcome.status, refused[0] ? Outcome::Status::answered : Outcome::Status::failed) << refused;
        if (refused[0]) {
            EXPECT_TRUE(outcome.text.starts_with("error: ")) << outcome.text;
        }
    }
    EXPECT_EQ(pauses_, (std::vector<double> { 600, 0 }));
    EXPECT_EQ(resumes_, 1);
}

TEST_F(ScriptingCommandTest, OnlyTheUserCanReachTheSocket)
{
    auto server = startServer();
    EXPECT_EQ(permissions(socket().parent_path()), 0700u);
    EXPECT_EQ(permissions(socket()), 0600u);
    server.reset();
    EXPECT_FALSE(std::filesystem::exists(socket()));
}

TEST_F(ScriptingCommandTest, AnotherUserIsRefusedEvenWhereLoosenedModesLetItConnect)
{
    if (::getuid() != 0)
        GTEST_SKIP() << "acting as another user needs root";
    auto server = startServer();
    for (const auto& folder : { runtime_.path(), socket().parent_path() })
        ::chmod(folder.c_str(), 0755);
    ::chmod(socket().c_str(), 0666);

    int answerPipe[2];
    ASSERT_EQ(::pipe(answerPipe), 0);
    // Forked before any other thread runs; the child is "nobody".
    pid_t child = ::fork();
    if (child == 0) {
        ::close(answerPipe[0]);
        if (::setgid(65534) != 0 || ::setuid(65534) != 0)
            ::_exit(2);
        std::string answer = ScriptingCommandClient::send(socket(), "pause 5").text;
        ::_exit(::write(answerPipe[1], answer.data(), answer.size()) < 0 ? 3 : 0);
    }
    ::close(answerPipe[1]);
    std::string answer;
    char buffer[256];
    for (ssize_t count = 1; count > 0;) {
        pollfd ready[] { { server->fileDescriptor(), POLLIN, 0 }, { answerPipe[0], POLLIN, 0 } };
        ::poll(ready, 2, 1000);
        server->serveReadyConnections();
        if (ready[1].revents == 0)
            continue;
        count = ::read(answerPipe[0], buffer, sizeof buffer);
        answer.append(buffer, static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    ::close(answerPipe[0]);
    int status = 0;
    ::waitpid(child, &status, 0);

    EXPECT_EQ(status, 0);
    EXPECT_EQ(answer, "error: only the user who runs the tracker may command it");
    EXPECT_TRUE(pauses_.empty());
}

// A client that connects and then does nothing more.
int connectSilently(const std::filesystem::path& socket)
{
    int connection = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socket.c_str(), sizeof address.sun_path - 1);
    EXPECT_EQ(::connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    return connection;
}

TEST_F(ScriptingCommandTest, ASilentClientHoldsUpNobodyAndIsDroppedAfterASecond)
{
    auto server = startServer();
    int silent = connectSilently(socket());
    auto started = std::chrono::steady_clock::now();
    server->serveReadyConnections();
    // Serving never waits for a client: the tracker samples on time whatever clients do.
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(250));

    EXPECT_EQ(send(*server, "pause 5").text, "ok: paused for 5 seconds");

    // The server's descriptor wakes the run loop when the silent client's time is up.
    bool dropped = false;
    char byte = 0;
    for (auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(3);
         !dropped && std::chrono::steady_clock::now() < deadline;) {
        pollfd ready { server->fileDescriptor(), POLLIN, 0 };
        ::poll(&ready, 1, 100);
        server->serveReadyConnections();
        dropped = ::recv(silent, &byte, 1, MSG_DONTWAIT) == 0;
    }
    ::close(silent);
    EXPECT_TRUE(dropped);
    EXPECT_EQ(pauses_, (std::vector<double> { 5 }));
}

TEST_F(ScriptingCommandTest, AnOverlongLineOrBinaryGarbageGetsAClearRefusal)
{
    auto server = startServer();
    EXPECT_EQ(send(*server, std::string(10'000'000, 'x')).text, "error: a request is one line of at most 256 bytes");
    std::string garbage = { '\0', '\xff', '\x01', 'p', 'a', 'u', 's', 'e', '\x7f' };
    EXPECT_TRUE(send(*server, garbage).text.starts_with("error: unknown command")) << send(*server, garbage).text;
    EXPECT_TRUE(pauses_.empty());
    EXPECT_EQ(resumes_, 0);
}

TEST_F(ScriptingCommandTest, FiftyClientsAtOnceAreAllAnswered)
{
    auto server = startServer();
    std::vector<std::future<Outcome>> answers;
    for (int client = 0; client < 50; ++client) {
        std::string request = client % 2 == 0 ? "pause 1" : "resume";
        answers.push_back(std::async(
            std::launch::async, [this, request] { return ScriptingCommandClient::send(socket(), request); }));
    }
    auto allAnswered = [&] {
        return std::all_of(answers.begin(), answers.end(), [](const auto& answer) {
            return answer.wait_for(std::chrono::milliseconds(0)) == std::future_status::ready;
        });
    };
    while (!allAnswered()) {
        pollfd ready { server->fileDescriptor(), POLLIN, 0 };
        ::poll(&ready, 1, 20);
        server->serveReadyConnections();
    }
    for (auto& answer : answers)
        EXPECT_TRUE(answer.get().text.starts_with("ok: "));
    EXPECT_EQ(pauses_.size(), 25u);
    EXPECT_EQ(resumes_, 25);
}

TEST_F(ScriptingCommandTest, ADeadTrackersSocketIsReplacedButALiveOneIsNotTaken)
{
    // What a killed tracker leaves: a socket file that nobody listens on.
    std::filesystem::create_directories(socket().parent_path());
    int dead = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, socket().c_str(), sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(dead, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(dead);

    auto first = startServer();
    try {
        ScriptingCommandServer second(
            socket(), [](double) {}, [] {});
        ADD_FAILURE() << "a second tracker took the socket";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("Another Vardel tracker"), std::string::npos) << error.what();
    }
    EXPECT_EQ(send(*first, "resume").text, "ok: resumed");
}

TEST_F(ScriptingCommandTest, TheVardelCommandDeliversPauseAndResume)
{
    auto server = startServer();
    auto run = [&](std::vector<std::string> arguments) {
        return whileServing(*server, [&] {
            std::ostringstream output, errors;
            int status = VardelCommand::run(
                arguments, output, errors, [this](const char* name) { return environment(name); }, Date {});
            return std::make_tuple(status, output.str(), errors.str());
        });
    };
    EXPECT_EQ(run({ "pause", "90" }), std::make_tuple(0, std::string("paused for 90 seconds\n"), std::string()));
    EXPECT_EQ(run({ "resume" }), std::make_tuple(0, std::string("resumed\n"), std::string()));
    EXPECT_EQ(pauses_, (std::vector<double> { 90 }));
}

TEST_F(ScriptingCommandTest, WithoutATrackerTheCommandSaysSoAndFails)
{
    std::ostringstream output, errors;
    auto lookup = [this](const char* name) { return environment(name); };
    EXPECT_EQ(VardelCommand::run({ "pause", "60" }, output, errors, lookup, Date {}), VardelCommand::failureStatus);
    EXPECT_EQ(errors.str(), "vardel: no Vardel tracker is running (nothing answers on " + socket().string() + ")\n");
    EXPECT_EQ(output.str(), "");

    errors.str("");
    auto nothing = [](const char*) -> const char* { return nullptr; };
    EXPECT_EQ(VardelCommand::run({ "resume" }, output, errors, nothing, Date {}), VardelCommand::failureStatus);
    EXPECT_NE(errors.str().find("XDG_RUNTIME_DIR is not set"), std::string::npos);
}

} // namespace
} // namespace vardel
