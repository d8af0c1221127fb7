#include "support/HeadlessWaylandDesktop.h"

#include "support/WaitUntil.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <grp.h>
#include <iterator>
#include <optional>
#include <poll.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace vardel::testing {

namespace {

using namespace std::chrono_literals;

constexpr auto startTimeout = 15s;
constexpr const char* sessionUser = "nobody";

struct SessionUser {
    uid_t uid = 0;
    gid_t gid = 0;
};

SessionUser sessionUserIds()
{
    const passwd* entry = ::getpwnam(sessionUser);
    if (!entry)
        throw HeadlessDesktopError(std::string("there is no user ") + sessionUser + " to run the compositor as");
    return { entry->pw_uid, entry->pw_gid };
}

void giveToSessionUser(const std::filesystem::path& path, bool dropsRoot)
{
    if (!dropsRoot)
        return;
    SessionUser user = sessionUserIds();
    if (::chown(path.c_str(), user.uid, user.gid) != 0)
        throw HeadlessDesktopError("cannot give " + path.string() + " to " + sessionUser);
}

std::string readLine(int descriptor, std::chrono::milliseconds timeout)
{
    std::string line;
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (line.find('\n') == std::string::npos) {
        auto remaining
            = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting { descriptor, POLLIN, 0 };
        if (remaining.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(remaining.count())) <= 0)
            break;
        char buffer[256];
        ssize_t received = ::read(descriptor, buffer, sizeof buffer);
        if (received <= 0)
            break;
        line.append(buffer, static_cast<size_t>(received));
    }
    return line.substr(0, line.find('\n'));
}

// Everything the descriptor gives until its end or the time-out.
std::string readAll(int descriptor, std::chrono::milliseconds timeout)
{
    std::string text;
    auto deadline = std::chrono::steady_clock::now() + timeout;
    while (true) {
        auto remaining
            = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting { descriptor, POLLIN, 0 };
        if (remaining.count() <= 0 || ::poll(&waiting, 1, static_cast<int>(remaining.count())) <= 0)
            return text;
        char buffer[4096];
        ssize_t received = ::read(descriptor, buffer, sizeof buffer);
        if (received <= 0)
            return text;
        text.append(buffer, static_cast<size_t>(received));
    }
}

// The texts as the null-terminated array exec takes; they must outlive it.
std::vector<char*> nullTerminated(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

// The only file in the folder whose name starts with the prefix and ends with the suffix.
std::optional<std::filesystem::path> fileNamed(
    const std::filesystem::path& folder, const std::string& prefix, const std::string& suffix)
{
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
        std::string name = entry.path().filename().string();
        if (name.starts_with(prefix) && name.ends_with(suffix))
            return entry.path();
    }
    return std::nullopt;
}

} // namespace

void becomeSessionUser()
{
    if (::geteuid() != 0)
        return;
    SessionUser user = sessionUserIds();
    if (::setgroups(0, nullptr) != 0 || ::setresgid(user.gid, user.gid, user.gid) != 0
        || ::setresuid(user.uid, user.uid, user.uid) != 0)
        throw HeadlessDesktopError(std::string("cannot run as ") + sessionUser);
}

HeadlessWaylandDesktop::HeadlessWaylandDesktop(WaylandCompositor compositor)
    : dropsRoot_(::geteuid() == 0)
{
    std::string pattern = (std::filesystem::temp_directory_path() / "vardel-wayland-XXXXXX").string();
    if (!::mkdtemp(pattern.data()))
        throw HeadlessDesktopError("cannot create the session's runtime folder");
    runtimeFolder_ = pattern;
    std::filesystem::permissions(runtimeFolder_, std::filesystem::perms::owner_all);
    giveToSessionUser(runtimeFolder_, dropsRoot_);
    for (const char* name : { "DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "HOME",
             "SWAYSOCK", "XDG_SESSION_TYPE" }) {
        const char* value = std::getenv(name);
        savedEnvironment_[name] = value ? value : "";
    }
    ::unsetenv("DISPLAY");
    ::setenv("XDG_RUNTIME_DIR", runtimeFolder_.c_str(), 1);
    ::setenv("XDG_SESSION_TYPE", "wayland", 1);
    ::setenv("HOME", makeFolder(runtimeFolder_ / "home").c_str(), 1);
    try {
        startSessionBus();
        startAccessibilityBus();
        if (compositor == WaylandCompositor::sway)
            startSway();
        else
            startKWin();
    } catch (...) {
        tearDown();
        throw;
    }
}

HeadlessWaylandDesktop::~HeadlessWaylandDesktop()
{
    tearDown();
}

void HeadlessWaylandDesktop::tearDown()
{
    // Applications first, the compositor and the buses last.
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

std::filesystem::path HeadlessWaylandDesktop::makeFolder(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    for (auto path = folder; path != runtimeFolder_ && path.has_relative_path(); path = path.parent_path())
        giveToSessionUser(path, dropsRoot_);
    return folder;
}

// A program of the build may lie in a folder only root may enter (a clone in root's home): the
// session's user runs a copy in the session's folder, with the `share` folder beside it that the
// tracker reads its tables from.
std::string HeadlessWaylandDesktop::reachableProgram(const std::string& program)
{
    std::filesystem::path path(program);
    if (!dropsRoot_ || !path.is_absolute() || program.starts_with("/usr/")
        || program.starts_with(runtimeFolder_.string()))
        return program;
    if (auto copied = programCopies_.find(program); copied != programCopies_.end())
        return copied->second;
    auto folder = makeFolder(runtimeFolder_ / "programs" / std::to_string(programCopies_.size()));
    auto copy = folder / path.filename();
    std::filesystem::copy_file(path, copy);
    auto share = path.parent_path() / "share";
    if (std::filesystem::is_directory(share))
        std::filesystem::copy(share, folder / "share", std::filesystem::copy_options::recursive);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        giveToSessionUser(entry.path(), dropsRoot_);
    programCopies_.emplace(program, copy.string());
    return copy.string();
}

std::vector<std::string> HeadlessWaylandDesktop::asSessionUser(
    const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command;
    if (dropsRoot_) {
        // setpriv executes the program in its own place: the pid stays the program's.
        SessionUser user = sessionUserIds();
        command = { "setpriv", "--reuid=" + std::to_string(user.uid), "--regid=" + std::to_string(user.gid),
            "--clear-groups", "--" };
    }
    command.push_back(reachableProgram(program));
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

pid_t HeadlessWaylandDesktop::spawn(const std::string& program, const std::vector<std::string>& arguments,
    const std::map<std::string, std::string>& environment, int reportDescriptor)
{
    std::vector<std::string> variables;
    for (char** entry = environ; *entry; ++entry) {
        std::string variable = *entry;
        if (!environment.contains(variable.substr(0, variable.find('='))))
            variables.push_back(variable);
    }
    for (const auto& [name, value] : environment)
        variables.push_back(std::string(name).append("=").append(value));
    std::vector<char*> envp = nullTerminated(variables);
    std::vector<std::string> command = asSessionUser(program, arguments);
    std::vector<char*> argv = nullTerminated(command);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    if (reportDescriptor >= 0)
        posix_spawn_file_actions_adddup2(&files, reportDescriptor, 3);
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(
        &files, STDERR_FILENO, (runtimeFolder_ / "errors.log").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
    posix_spawnattr_setpgroup(&attributes, 0);
    pid_t pid = 0;
    int error = ::posix_spawnp(&pid, argv[0], &files, &attributes, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&files);
    posix_spawnattr_destroy(&attributes);
    if (error != 0)
        throw HeadlessDesktopError("cannot start " + program + ": " + std::strerror(error));
    started_.push_back(pid);
    return pid;
}

pid_t HeadlessWaylandDesktop::start(const std::string& program, const std::vector<std::string>& arguments,
    const std::map<std::string, std::string>& environment)
{
    return spawn(program, arguments, environment, -1);
}

void HeadlessWaylandDesktop::stop(pid_t pid)
{
    auto found = std::find(started_.begin(), started_.end(), pid);
    if (found == started_.end())
        return;
    started_.erase(found);
    ::kill(-pid, SIGCONT);
    ::kill(-pid, SIGTERM);
    int status = 0;
    if (!waitUntil([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 2000ms)) {
        ::kill(-pid, SIGKILL);
        ::waitpid(pid, &status, 0);
    }
    ::kill(-pid, SIGKILL);
}

std::string HeadlessWaylandDesktop::run(const std::string& program, const std::vector<std::string>& arguments)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw HeadlessDesktopError("cannot create a pipe");
    std::vector<std::string> command = asSessionUser(program, arguments);
    std::vector<char*> argv = nullTerminated(command);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t pid = 0;
    int error = ::posix_spawnp(&pid, argv[0], &files, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&files);
    ::close(ends[1]);
    if (error != 0) {
        ::close(ends[0]);
        throw HeadlessDesktopError("cannot run " + program);
    }
    std::string text = readAll(ends[0], 30s);
    ::close(ends[0]);
    int status = 0;
    if (!waitUntil([&] { return ::waitpid(pid, &status, WNOHANG) == pid; }, 30s)) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, &status, 0);
        throw HeadlessDesktopError(program + " did not finish in time");
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        throw HeadlessDesktopError(program + " failed");
    return text;
}

void HeadlessWaylandDesktop::startSessionBus()
{
    // The stock session configuration listens in /tmp; the session's user must own its bus's folder.
    auto configuration = runtimeFolder_ / "session-bus.conf";
    std::ofstream(configuration)
        << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
           "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig><type>session</type><listen>unix:dir="
        << runtimeFolder_.string()
        << "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\" "
           "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>\n";
    giveToSessionUser(configuration, dropsRoot_);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        throw HeadlessDesktopError("cannot create a pipe");
    spawn("dbus-daemon", { "--config-file=" + configuration.string(), "--nofork", "--nosyslog", "--print-address=3" },
        {}, ends[1]);
    ::close(ends[1]);
    std::string address = readLine(ends[0], startTimeout);
    ::close(ends[0]);
    if (address.empty())
        throw HeadlessDesktopError("the session bus did not report its address: " + errors());
    ::setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
}

void HeadlessWaylandDesktop::startAccessibilityBus()
{
    // --a11y=1 sets org.a11y.Status.IsEnabled, so that applications started later expose their trees.
    start("/usr/libexec/at-spi-bus-launcher", { "--launch-immediately", "--a11y=1" });
    bool ready = waitUntil(
        [this] {
            try {
                run("dbus-send",
                    { "--session", "--print-reply", "--dest=org.a11y.Bus", "/org/a11y/bus",
                        "org.a11y.Bus.GetAddress" });
                return true;
            } catch (const HeadlessDesktopError&) {
                return false;
            }
        },
        startTimeout);
    if (!ready)
        throw HeadlessDesktopError("the AT-SPI bus did not start: " + errors());
}

void HeadlessWaylandDesktop::startSway()
{
    auto configuration = runtimeFolder_ / "sway.conf";
    std::ofstream(configuration) << "output HEADLESS-1 resolution 1920x1080\nxwayland disable\n";
    giveToSessionUser(configuration, dropsRoot_);
    compositor_ = start("sway", { "-c", configuration.string() },
        { { "WLR_BACKENDS", "headless" }, { "WLR_LIBINPUT_NO_DEVICES", "1" }, { "WLR_RENDERER", "pixman" } });
    std::optional<std::filesystem::path> socket;
    std::optional<std::filesystem::path> commands;
    bool ready = waitUntil(
        [&] {
            socket = fileNamed(runtimeFolder_, "wayland-", ".lock");
            commands = fileNamed(runtimeFolder_, "sway-ipc.", ".sock");
            return socket && commands;
        },
        startTimeout);
    if (!ready)
        throw HeadlessDesktopError("sway did not start: " + errors());
    waylandDisplay_ = socket->stem().string();
    ::setenv("WAYLAND_DISPLAY", waylandDisplay_.c_str(), 1);
    ::setenv("SWAYSOCK", commands->c_str(), 1);
    if (!waitUntil(
            [this] {
                try {
                    return run("swaymsg", { "-t", "get_outputs" }).find("HEADLESS-1") != std::string::npos;
                } catch (const HeadlessDesktopError&) {
                    return false;
                }
            },
            startTimeout))
        throw HeadlessDesktopError("sway does not answer: " + errors());
}

void HeadlessWaylandDesktop::startKWin()
{
    // Debian's kwin_wayland carries a file capability (cap_sys_resource) that a container may refuse
    // to grant at exec; a copy carries none and runs the same.
    auto program = runtimeFolder_ / "kwin_wayland";
    std::filesystem::copy_file("/usr/bin/kwin_wayland", program);
    giveToSessionUser(program, dropsRoot_);
    waylandDisplay_ = "wayland-vardel";
    compositor_ = start(program.string(),
        { "--virtual", "--socket", waylandDisplay_, "--width", "1280", "--height", "800", "--no-lockscreen",
            "--no-global-shortcuts" });
    if (!waitUntil([this] { return std::filesystem::exists(runtimeFolder_ / waylandDisplay_); }, startTimeout))
        throw HeadlessDesktopError("kwin_wayland did not start: " + errors());
    ::setenv("WAYLAND_DISPLAY", waylandDisplay_.c_str(), 1);
}

std::string HeadlessWaylandDesktop::errors() const
{
    std::ifstream file(runtimeFolder_ / "errors.log");
    std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    return text.substr(text.size() > 800 ? text.size() - 800 : 0);
}

} // namespace vardel::testing
