#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vardel::testing {

// Why a headless desktop could not be made; tests fail with it rather than skip.
class HeadlessDesktopError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A desktop of its own for a test: Xvfb on a free display, a private session bus, the AT-SPI bus
// launcher with accessibility switched on, and openbox as the EWMH window manager. The test process's
// DISPLAY, DBUS_SESSION_BUS_ADDRESS and XDG_RUNTIME_DIR point at it while it lives, so that
// whatever the test starts joins it. Every process it starts is stopped by its pid (its process
// group) when the desktop goes.
class HeadlessDesktop {
public:
    // Throws HeadlessDesktopError.
    HeadlessDesktop();
    ~HeadlessDesktop();
    HeadlessDesktop(const HeadlessDesktop&) = delete;
    HeadlessDesktop& operator=(const HeadlessDesktop&) = delete;

    const std::string& display() const { return display_; }
    const std::filesystem::path& scratchFolder() const { return runtimeFolder_; }

    // Starts a program in its own process group with extra environment variables; it is stopped when
    // the desktop goes, unless stopped before. Throws HeadlessDesktopError when it cannot start.
    pid_t start(const std::string& program, const std::vector<std::string>& arguments,
        const std::map<std::string, std::string>& environment = {});
    // SIGTERM to the process group, SIGKILL after two seconds; waits for the process.
    void stop(pid_t);

    // Runs a program to its end and returns its standard output; throws when it fails.
    std::string run(const std::string& program, const std::vector<std::string>& arguments);

    // Waits until the X11 active window belongs to the process and its title contains the text;
    // throws HeadlessDesktopError on time-out.
    void waitForActiveWindow(pid_t, const std::string& titleContains, double timeoutSeconds = 20);
    // The X11 id of the process's active window.
    std::string activeWindowId();

private:
    void tearDown();
    // Starts a program that reports one line on descriptor 3 once it is ready, and returns the line.
    std::string startReportingOnDescriptor3(const std::string& program, const std::vector<std::string>& arguments);
    void startDisplay();
    void startSessionBus();
    void startAccessibilityBus();
    void startWindowManager();

    std::filesystem::path runtimeFolder_;
    std::string display_;
    std::vector<pid_t> started_;
    std::map<std::string, std::string> savedEnvironment_;
};

} // namespace vardel::testing
