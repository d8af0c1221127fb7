#include "support/HeadlessDesktop.h"

#include "support/WaitUntil.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 15s;

// Reads one line the child writes to the pipe, within the time-out.
std::string readLine(int descriptor, std::chrono::milliseconds timeout)
{
    std::string line;
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (line.find('\n') == std::string::npos) {
        auto remaining
            = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (remaining.count() <= 0)
            break;
        pollfd waiting { descriptor, POLLIN, 0 };
        if (::poll(&waiting, 1, static_cast<int>(remaining.count())) <= 0)
            break;
        char buffer[256];
        ssize_t received = ::read(descriptor, buffer, sizeof buffer);
        if (received <= 0)
            break;
        line.append(buffer, static_cast<size_t>(received));
    }
    return line.substr(0, line.find('\n'));
}

std::vector<char*> argumentVector(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<char*> argv { const_cast<char*>(program.c_str()) };
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    return argv;
}

// Starts the program in a process group of its own, with the descriptors `files` arranges; consumes
// `files`. Throws HeadlessDesktopError when it cannot start.
pid_t spawnInOwnGroup(const std::string& program, const std::vector<std::string>& arguments,
    posix_spawn_file_actions_t& files, char* const* environment)
{
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    auto argv = argumentVector(program, arguments);
    pid_t pid = 0;
    int error = ::posix_spawnp(&pid, program.c_str(), &files, &attributes, argv.data(), environment);
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    if (error != 0)
        throw HeadlessDesktopError("cannot start " + program + ": " + std::strerror(error));
    return pid;
}

// Starts the program with the write end of a new pipe as descriptor `target`; returns its pid and
// the read end, which the caller closes.
std::pair<pid_t, int> spawnWritingToPipe(
    const std::string& program, const std::vector<std::string>& arguments, int target, bool quietOutput)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw HeadlessDesktopError("cannot create a pipe");
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, ends[1], target);
    if (quietOutput)
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    try {
        pid = spawnInOwnGroup(program, arguments, files, environ);
    } catch (...) {
        ::close(ends[0]);
        ::close(ends[1]);
        throw;
    }
    ::close(ends[1]);
    return { pid, ends[0] };
}

bool succeeds(const std::string& command)
{
    return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

} // namespace

HeadlessDesktop::HeadlessDesktop()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "vardel-desktop-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw HeadlessDesktopError("cannot create the desktop's runtime folder");
    runtimeFolder_ = pattern;
    std::filesystem::permissions(runtimeFolder_, std::filesystem::perms::owner_all);
    for (const char* name : { "DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "HOME" }) {
        const char* value = std::getenv(name);
        savedEnvironment_[name] = value ? value : "";
    }
    ::setenv("XDG_RUNTIME_DIR", runtimeFolder_.c_str(), 1);
    // Applications keep profiles and caches in the home folder; keep them out of the user's.
    std::filesystem::create_directories(runtimeFolder_ / "home");
    ::setenv("HOME", (runtimeFolder_ / "home").c_str(), 1);
    try {
        startDisplay();
        startSessionBus();
        startAccessibilityBus();
        startWindowManager();
    } catch (...) {
        tearDown();
        throw;
    }
}

HeadlessDesktop::~HeadlessDesktop()
{
    tearDown();
}

void HeadlessDesktop::tearDown()
{
    // Applications first, the display last.
    while (!started_.empty())
        stop(started_.back());
    for (const auto& [name, value] : savedEnvironment_) {
        if (value.empty())
            ::unsetenv(name.c_str());
        else
            ::setenv(name.c_str(), value.c_str(), 1);
    }
    savedEnvironment_.clear();
    std::error_code ignored;
    if (!runtimeFolder_.empty())
        std::filesystem::remove_all(runtimeFolder_, ignored);
    runtimeFolder_.clear();
}

pid_t HeadlessDesktop::start(const std::string& program, const std::vector<std::string>& arguments,
    const std::map<std::string, std::string>& environment)
{
    std::vector<std::string> variables;
    for (char** entry = environ; *entry; ++entry) {
        std::string variable = *entry;
        std::string name = variable.substr(0, variable.find('='));
        if (!environment.contains(name))
            variables.push_back(variable);
    }
    for (const auto& [name, value] : environment)
        variables.push_back(name + "=" + value);
    std::vector<char*> envp;
    for (std::string& variable : variables)
        envp.push_back(variable.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(
        &files, STDERR_FILENO, (runtimeFolder_ / "errors.log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    pid_t pid = spawnInOwnGroup(program, arguments, files, envp.data());
    started_.push_back(pid);
    return pid;
}

void HeadlessDesktop::stop(pid_t pid)
{
    auto found = std::find(started_.begin(), started_.end(), pid);
    if (found == started_.end())
        return;
    started_.erase(found);
    // A stopped process must be continued to handle SIGTERM.
    ::kill(-pid, SIGCONT);
    ::kill(-pid, SIGTERM);
    int status = 0;
    bool ended = waitUntil([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 2000ms);
    if (!ended) {
        ::kill(-pid, SIGKILL);
        ::waitpid(pid, &status, 0);
    }
    // Children left in the group (renderers, helpers) go with it.
    ::kill(-pid, SIGKILL);
}

std::string HeadlessDesktop::run(const std::string& program, const std::vector<std::string>& arguments)
{
    constexpr auto runTimeout = 90s;
    auto [pid, output] = spawnWritingToPipe(program, arguments, STDOUT_FILENO, false);
    // A program that hangs must not hang the test: it is stopped at the deadline.
    std::string text;
    auto deadline = std::chrono::steady_clock::now() + runTimeout;
    bool timedOut = false;
    while (true) {
        auto remaining
            = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting { output, POLLIN, 0 };
        if (remaining.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(remaining.count())) <= 0) {
            timedOut = true;
            break;
        }
        char buffer[4096];
        ssize_t received = ::read(output, buffer, sizeof buffer);
        if (received <= 0)
            break;
        text.append(buffer, static_cast<size_t>(received));
    }
    ::close(output);
    if (timedOut)
        ::kill(-pid, SIGKILL);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (timedOut)
        throw HeadlessDesktopError(program + " did not finish in time");
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw HeadlessDesktopError(program + " failed");
    return text;
}

std::string HeadlessDesktop::startReportingOnDescriptor3(
    const std::string& program, const std::vector<std::string>& arguments)
{
    auto [pid, report] = spawnWritingToPipe(program, arguments, 3, true);
    started_.push_back(pid);
    std::string line = readLine(report, startTimeout);
    ::close(report);
    return line;
}

void HeadlessDesktop::startDisplay()
{
    // Xvfb picks a free display itself and writes its number to the descriptor.
    std::string number = startReportingOnDescriptor3(
        "Xvfb", { "-displayfd", "3", "-screen", "0", "1280x800x24", "-nolisten", "tcp", "+extension", "RANDR" });
    if (number.empty())
        throw HeadlessDesktopError("Xvfb did not report its display");
    display_ = ":" + number;
    ::setenv("DISPLAY", display_.c_str(), 1);
}

void HeadlessDesktop::startSessionBus()
{
    std::string busAddress
        = startReportingOnDescriptor3("dbus-daemon", { "--session", "--nofork", "--nosyslog", "--print-address=3" });
    if (busAddress.empty())
        throw HeadlessDesktopError("the session bus did not report its address");
    ::setenv("DBUS_SESSION_BUS_ADDRESS", busAddress.c_str(), 1);
}

void HeadlessDesktop::startAccessibilityBus()
{
    // --a11y=1 sets org.a11y.Status.IsEnabled, so that applications started later expose their trees.
    start("/usr/libexec/at-spi-bus-launcher", { "--launch-immediately", "--a11y=1" });
    bool ready = waitUntil(
        [] {
            return succeeds(
                "dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress");
        },
        startTimeout);
    if (!ready)
        throw HeadlessDesktopError("the AT-SPI bus did not start");
}

void HeadlessDesktop::startWindowManager()
{
    // openbox now and then never takes over a fresh display, more often on a busy machine; another
    // one does.
    constexpr int attempts = 3;
    std::string outcomes;
    for (int attempt = 1; attempt <= attempts; ++attempt) {
        pid_t windowManager = start("openbox", { "--sm-disable" });
        bool ready = waitUntil(
            [] { return succeeds("xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'"); }, startTimeout / 2);
        if (ready)
            return;
        int status = 0;
        bool ended = ::waitpid(windowManager, &status, WNOHANG) == windowManager;
        outcomes += ended ? " exited with status " + std::to_string(WEXITSTATUS(status)) + ";" : " kept running;";
        if (ended)
            started_.erase(std::find(started_.begin(), started_.end(), windowManager));
        else
            stop(windowManager);
    }
    std::ifstream errors(runtimeFolder_ / "errors.log");
    std::string text((std::istreambuf_iterator<char>(errors)), std::istreambuf_iterator<char>());
    throw HeadlessDesktopError("openbox did not take over the display (it" + outcomes
        + " errors: " + text.substr(text.size() > 600 ? text.size() - 600 : 0) + ")");
}

std::string HeadlessDesktop::activeWindowId()
{
    std::string text = run("xdotool", { "getactivewindow" });
    return text.substr(0, text.find('\n'));
}

void HeadlessDesktop::waitForActiveWindow(pid_t pid, const std::string& titleContains, double timeoutSeconds)
{
    auto matches = [&] {
        try {
            std::string window = activeWindowId();
            std::string owner = run("xdotool", { "getwindowpid", window });
            std::string title = run("xdotool", { "getwindowname", window });
            pid_t ownerPid = 0;
            std::from_chars(owner.data(), owner.data() + owner.size(), ownerPid);
            return ownerPid == pid && title.find(titleContains) != std::string::npos;
        } catch (const std::exception&) {
            return false;
        }
    };
    if (!waitUntil(matches, std::chrono::milliseconds(static_cast<int>(timeoutSeconds * 1000))))
        throw HeadlessDesktopError(
            "no active window of process " + std::to_string(pid) + " titled '" + titleContains + "'");
}

} // namespace vardel::testing
