#pragma once

#include "support/HeadlessDesktop.h"

#include <filesystem>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vardel::testing {

enum class WaylandCompositor { sway, kwin };

// Makes the calling process the session's user for good (real, effective and saved ids), so that it
// may connect to the session's buses, which admit their owner only (libdbus also ignores the session
// bus's address in a process that could regain root). For a child forked to measure in the session;
// nothing happens when the process is not root. Throws HeadlessDesktopError.
void becomeSessionUser();

// A Wayland session of its own for a test: a private session bus, the AT-SPI bus launcher with
// accessibility on, and a compositor on its headless backend (sway, or weston). Compositors refuse
// to run as root, so when the test runs as root the session and everything started in it run as
// the unprivileged user `nobody`. The test process's WAYLAND_DISPLAY, DBUS_SESSION_BUS_ADDRESS,
// XDG_RUNTIME_DIR, HOME and SWAYSOCK point at the session while it lives, and DISPLAY is unset.
// Every process it starts is stopped by its pid (its process group) when the desktop goes.
class HeadlessWaylandDesktop {
public:
    // Throws HeadlessDesktopError.
    explicit HeadlessWaylandDesktop(WaylandCompositor);
    ~HeadlessWaylandDesktop();
    HeadlessWaylandDesktop(const HeadlessWaylandDesktop&) = delete;
    HeadlessWaylandDesktop& operator=(const HeadlessWaylandDesktop&) = delete;

    // A folder the session's user owns, for the files of the programs it runs.
    const std::filesystem::path& scratchFolder() const { return runtimeFolder_; }
    const std::string& waylandDisplay() const { return waylandDisplay_; }
    pid_t compositor() const { return compositor_; }
    // Makes a folder (and its parents below the scratch folder) that the session's user owns.
    std::filesystem::path makeFolder(const std::filesystem::path&);

    // Starts a program as the session's user, in its own process group, with extra environment
    // variables; it is stopped when the desktop goes, unless stopped before.
    pid_t start(const std::string& program, const std::vector<std::string>& arguments,
        const std::map<std::string, std::string>& environment = {});
    // SIGTERM to the process group, SIGKILL after two seconds; waits for the process.
    void stop(pid_t);
    // Runs a program as the session's user to its end and returns its standard output; throws when
    // it fails or takes more than 30 seconds.
    std::string run(const std::string& program, const std::vector<std::string>& arguments);

private:
    void tearDown();
    std::vector<std::string> asSessionUser(const std::string& program, const std::vector<std::string>& arguments);
    std::string reachableProgram(const std::string& program);
    pid_t spawn(const std::string& program, const std::vector<std::string>& arguments,
        const std::map<std::string, std::string>& environment, int reportDescriptor);
    void startSessionBus();
    void startAccessibilityBus();
    void startSway();
    void startKWin();
    std::string errors() const;

    bool dropsRoot_ = false;
    pid_t compositor_ = 0;
    std::filesystem::path runtimeFolder_;
    std::string waylandDisplay_;
    std::vector<pid_t> started_;
    std::map<std::string, std::string> savedEnvironment_;
    std::map<std::string, std::string> programCopies_;
};

} // namespace vardel::testing
