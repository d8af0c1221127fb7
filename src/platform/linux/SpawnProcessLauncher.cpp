#include "platform/linux/SpawnProcessLauncher.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace vardel::linux_desktop {

namespace {

constexpr int cannotStartStatus = 127;
constexpr int signalStatusBase = 128;

// argv for exec: the path, then the arguments, then nullptr. Points into the given strings.
std::vector<char*> argumentVector(const std::string& path, const std::vector<std::string>& arguments)
{
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(path.c_str()));
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    return argv;
}

pid_t waitFor(pid_t pid, int& status)
{
    pid_t result;
    do {
        result = ::waitpid(pid, &status, 0);
    } while (result < 0 && errno == EINTR);
    return result;
}

} // namespace

int SpawnProcessLauncher::runAndWait(const std::string& path, const std::vector<std::string>& arguments)
{
    trace_.write("process", { { "path", path }, { "arguments", arguments } });
    auto argv = argumentVector(path, arguments);
    pid_t pid = 0;
    if (::posix_spawn(&pid, path.c_str(), nullptr, nullptr, argv.data(), environ) != 0)
        return cannotStartStatus;
    int status = 0;
    if (waitFor(pid, status) < 0)
        return cannotStartStatus;
    if (WIFSIGNALED(status))
        return signalStatusBase + WTERMSIG(status);
    return WEXITSTATUS(status);
}

std::optional<std::string> SpawnProcessLauncher::launch(
    const std::string& path, const std::vector<std::string>& arguments)
{
    trace_.write("process", { { "path", path }, { "arguments", arguments } });
    auto argv = argumentVector(path, arguments);
    // The grandchild reports a failed exec through this pipe; a successful exec closes it.
    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0)
        return std::string("cannot create a pipe: ") + std::strerror(errno);
    pid_t child = ::fork();
    if (child < 0) {
        int error = errno;
        ::close(report[0]);
        ::close(report[1]);
        return std::string("cannot fork: ") + std::strerror(error);
    }
    if (child == 0) {
        // Only async-signal-safe calls from here on.
        ::setsid();
        pid_t grandchild = ::fork();
        if (grandchild == 0) {
            ::execv(path.c_str(), argv.data());
            int error = errno;
            [[maybe_unused]] auto written = ::write(report[1], &error, sizeof error);
            ::_exit(cannotStartStatus);
        }
        ::_exit(grandchild < 0 ? cannotStartStatus : 0);
    }
    ::close(report[1]);
    int status = 0;
    waitFor(child, status);
    int execError = 0;
    ssize_t received;
    do {
        received = ::read(report[0], &execError, sizeof execError);
    } while (received < 0 && errno == EINTR);
    ::close(report[0]);
    if (received == sizeof execError)
        return "cannot start " + path + ": " + std::strerror(execError);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return "cannot start " + path;
    return std::nullopt;
}

} // namespace vardel::linux_desktop
