#pragma once

#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <csignal>
#include <fcntl.h>
#include <cstdlib>
#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace vardel::testing {

// A PulseAudio server of the test's own, with a null sink "speaker" and a null source "microphone",
// listening on a socket in a temporary folder. PULSE_SERVER points at it while it lives, so that the
// test's audio clients and the code under test reach it. Programs started with play() and record()
// are the server's clients; everything is stopped by its pid.
class TestAudioServer {
public:
    TestAudioServer()
        : socket_(folder_.path() / "native")
    {
        if (const char* previous = std::getenv("PULSE_SERVER"))
            previousServer_ = previous;
        setenv("PULSE_SERVER", ("unix:" + socket_.string()).c_str(), 1);
        start();
    }
    ~TestAudioServer()
    {
        for (pid_t client : clients_)
            stopProcess(client);
        stopProcess(server_);
        if (previousServer_.empty())
            unsetenv("PULSE_SERVER");
        else
            setenv("PULSE_SERVER", previousServer_.c_str(), 1);
    }
    TestAudioServer(const TestAudioServer&) = delete;
    TestAudioServer& operator=(const TestAudioServer&) = delete;

    // The server ends as if it crashed, and a new one takes its place on the same socket.
    void restart()
    {
        kill(server_, SIGKILL);
        waitpid(server_, nullptr, 0);
        std::filesystem::remove(socket_);
        start();
    }

    // A client that plays silence to the speaker until stopped.
    pid_t play() { return startClient({ "/bin/sh", "-c", "exec paplay --raw --device=speaker /dev/zero" }); }
    // A client that records from a source ("microphone", or "speaker.monitor") until stopped.
    pid_t record(const std::string& source = "microphone")
    {
        return startClient({ "/bin/sh", "-c", "exec parecord --raw --device=" + source + " /dev/null" });
    }
    // Any program, as a client the server outlives.
    pid_t startClient(const std::vector<std::string>& arguments)
    {
        pid_t client = spawn(arguments);
        clients_.push_back(client);
        return client;
    }
    void stopClient(pid_t client)
    {
        stopProcess(client);
        std::erase(clients_, client);
    }

    // Runs pactl against the server and says whether it succeeded.
    bool control(const std::string& arguments)
    {
        return std::system(("pactl " + arguments + " >/dev/null 2>&1").c_str()) == 0;
    }

private:
    void start()
    {
        server_ = spawn({ "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--disable-shm=yes",
            "--use-pid-file=no", "--system=false", "-F", "/dev/null",
            "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socket_.string(),
            "--load=module-null-sink sink_name=speaker", "--load=module-null-source source_name=microphone" },
            /*quiet=*/true);
        if (!waitUntil([this] { return control("info"); }, std::chrono::seconds(20), std::chrono::milliseconds(100)))
            throw std::runtime_error("the test audio server did not start");
        // Applications that record or play "the default device" use these.
        control("set-default-source microphone");
        control("set-default-sink speaker");
    }

    static pid_t spawn(const std::vector<std::string>& arguments, bool quiet = false)
    {
        std::vector<char*> argv;
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        if (quiet)
            posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawnattr_t attributes;
        posix_spawnattr_init(&attributes);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
        pid_t pid = 0;
        int failed = posix_spawnp(&pid, argv[0], &actions, &attributes, argv.data(), environ);
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        if (failed)
            throw std::runtime_error("cannot start " + arguments[0]);
        return pid;
    }

    static void stopProcess(pid_t pid)
    {
        if (pid <= 0 || kill(pid, SIGTERM) != 0)
            return;
        waitpid(pid, nullptr, 0);
    }

    TemporaryFolder folder_;
    std::filesystem::path socket_;
    std::string previousServer_;
    pid_t server_ = 0;
    std::vector<pid_t> clients_;
};

} // namespace vardel::testing
