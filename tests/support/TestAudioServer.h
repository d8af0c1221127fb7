#pragma once

#include "support/TemporaryFolder.h"
#include "support/WaitUntil.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace vardel::testing {

// An audio server of the test's own, with a null sink "speaker" and a null source "microphone",
// listening on a socket in a temporary folder: PulseAudio itself, or PipeWire with its PulseAudio
// server. PULSE_SERVER points at it while it lives, so that the test's audio clients and the code
// under test reach it. Programs started with play() and record() are the server's clients;
// everything is stopped by its pid.
class TestAudioServer {
public:
    enum class Kind { pulseAudio, pipeWire };

    explicit TestAudioServer(Kind kind = Kind::pulseAudio)
        : kind_(kind)
        , socket_(kind == Kind::pulseAudio ? folder_.path() / "native" : folder_.path() / "pulse" / "native")
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
        stopServer();
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
        for (pid_t server : servers_)
            killpg(server, SIGKILL);
        stopServer();
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
        if (kind_ == Kind::pulseAudio)
            startPulseAudio();
        else
            startPipeWire();
        if (!waitUntil([this] { return control("info"); }, std::chrono::seconds(20), std::chrono::milliseconds(100)))
            throw std::runtime_error("the test audio server did not start");
        if (kind_ == Kind::pipeWire
            && !(control("load-module module-null-sink sink_name=speaker")
                && control("load-module module-null-sink media.class=Audio/Source/Virtual sink_name=microphone")))
            throw std::runtime_error("the test audio server has no speaker or microphone");
        // Applications that record or play "the default device" use these.
        control("set-default-source microphone");
        control("set-default-sink speaker");
    }

    void startPulseAudio()
    {
        servers_.push_back(
            spawn({ "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--disable-shm=yes",
                      "--use-pid-file=no", "--system=false", "-F", "/dev/null",
                      "--load=module-native-protocol-unix auth-anonymous=1 socket=" + socket_.string(),
                      "--load=module-null-sink sink_name=speaker", "--load=module-null-source source_name=microphone" },
                /*quiet=*/true));
    }

    // The three find each other and place their sockets through the runtime folder; the session
    // manager, which links streams to devices, wants a session bus of its own.
    void startPipeWire()
    {
        std::string folder = folder_.path().string();
        servers_.push_back(
            spawn({ "dbus-run-session", "--", "sh", "-c", "pipewire & wireplumber & exec pipewire-pulse" },
                /*quiet=*/true, { "XDG_RUNTIME_DIR=" + folder, "PIPEWIRE_RUNTIME_DIR=" + folder }));
    }

    // Each server runs in a process group of its own, with whatever it started.
    void stopServer()
    {
        for (pid_t server : servers_) {
            killpg(server, SIGTERM);
            waitpid(server, nullptr, 0);
        }
        servers_.clear();
    }

    static pid_t spawn(const std::vector<std::string>& arguments, bool quiet = false,
        const std::vector<std::string>& extraEnvironment = {})
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
        std::vector<std::string> environmentTexts(extraEnvironment);
        for (char** variable = environ; *variable; ++variable)
            environmentTexts.emplace_back(*variable);
        std::vector<char*> environment;
        for (std::string& variable : environmentTexts)
            environment.push_back(variable.data());
        environment.push_back(nullptr);
        pid_t pid = 0;
        int failed = posix_spawnp(&pid, argv[0], &actions, &attributes, argv.data(), environment.data());
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&actions);
        if (failed)
            throw std::runtime_error("cannot start " + arguments[0]);
        return pid;
    }

    // A client with whatever it started: it leads a process group of its own.
    static void stopProcess(pid_t pid)
    {
        if (pid <= 0 || killpg(pid, SIGTERM) != 0)
            return;
        waitpid(pid, nullptr, 0);
    }

    Kind kind_;
    TemporaryFolder folder_;
    std::filesystem::path socket_;
    std::string previousServer_;
    std::vector<pid_t> servers_;
    std::vector<pid_t> clients_;
};

} // namespace vardel::testing
