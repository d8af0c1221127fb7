#include "platform/linux/DialogProcess.h"

#include "platform/JsonText.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace vardel::linux_desktop {

namespace {

// Writes the whole text; the request is far smaller than a pipe's buffer, so this never waits for
// the program.
bool writeAll(int descriptor, const std::string& text)
{
    size_t written = 0;
    while (written < text.size()) {
        ssize_t result = ::write(descriptor, text.data() + written, text.size() - written);
        if (result < 0 && errno == EINTR)
            continue;
        if (result <= 0)
            return false;
        written += static_cast<size_t>(result);
    }
    return true;
}

struct SpawnSetup {
    posix_spawn_file_actions_t files {};
    posix_spawnattr_t attributes {};

    SpawnSetup(int input, int output)
    {
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
        // The tracker's own descriptors (the X connection, sockets, inotify) stay its own.
        posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
        posix_spawnattr_init(&attributes);
        // The tracker blocks the termination signals for its signalfd; the dialog must not.
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
    }
    ~SpawnSetup()
    {
        posix_spawn_file_actions_destroy(&files);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;
};

} // namespace

std::optional<std::string> DialogProcess::programBeside(const std::string& executablePath)
{
    auto program = std::filesystem::path(executablePath).parent_path() / programName;
    if (::access(program.c_str(), X_OK) != 0)
        return std::nullopt;
    return program.string();
}

std::unique_ptr<DialogProcess> DialogProcess::start(
    const std::string& program, const std::string& mode, const nlohmann::json& request)
{
    std::array<int, 2> input {};
    std::array<int, 2> output {};
    if (::pipe2(input.data(), O_CLOEXEC) != 0)
        return nullptr;
    FileDescriptor inputRead(input[0]);
    FileDescriptor inputWrite(input[1]);
    if (::pipe2(output.data(), O_CLOEXEC) != 0)
        return nullptr;
    FileDescriptor outputRead(output[0]);
    FileDescriptor outputWrite(output[1]);

    pid_t pid = 0;
    std::array<char*, 3> argv { const_cast<char*>(program.c_str()), const_cast<char*>(mode.c_str()), nullptr };
    {
        SpawnSetup setup(inputRead.get(), outputWrite.get());
        if (::posix_spawn(&pid, program.c_str(), &setup.files, &setup.attributes, argv.data(), environ) != 0)
            return nullptr;
    }
    inputRead = FileDescriptor();
    outputWrite = FileDescriptor();
    writeAll(inputWrite.get(), jsonText(request));
    inputWrite = FileDescriptor();
    ::fcntl(outputRead.get(), F_SETFL, ::fcntl(outputRead.get(), F_GETFL) | O_NONBLOCK);
    return std::unique_ptr<DialogProcess>(new DialogProcess(pid, std::move(outputRead)));
}

DialogProcess::DialogProcess(pid_t pid, FileDescriptor output)
    : pid_(pid)
    , output_(std::move(output))
{
}

DialogProcess::~DialogProcess()
{
    if (!ended_)
        ::kill(pid_, SIGTERM);
    pid_t result;
    do {
        result = ::waitpid(pid_, nullptr, 0);
    } while (result < 0 && errno == EINTR);
}

bool DialogProcess::readAvailable()
{
    std::array<char, 4096> buffer {};
    while (!ended_) {
        ssize_t received = ::read(output_.get(), buffer.data(), buffer.size());
        if (received > 0)
            received_.append(buffer.data(), static_cast<size_t>(received));
        else if (received < 0 && errno == EINTR)
            continue;
        else if (received < 0 && errno == EAGAIN)
            break;
        else
            ended_ = true;
    }
    return ended_;
}

// A modal alert waits for the user as long as they take: only the program's end ends the wait.
void DialogProcess::readToEnd()
{
    while (!readAvailable()) {
        pollfd waiting { output_.get(), POLLIN, 0 };
        ::poll(&waiting, 1, -1);
    }
}

std::optional<nlohmann::json> DialogProcess::answer() const
{
    auto parsed = nlohmann::json::parse(received_.substr(0, received_.find('\n')), nullptr, false);
    if (parsed.is_discarded())
        return std::nullopt;
    return parsed;
}

} // namespace vardel::linux_desktop
