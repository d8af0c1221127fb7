#pragma once

#include "platform/JsonLinesTrace.h"
#include "platform/Platform.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace vardel::linux_desktop {

class PollRunLoop;

// The preference stores the creator keeps; the desktop only uses them.
struct LinuxDesktopStores {
    PreferenceStore& standardUserDefaults;
    PreferenceStore& productPreferences;
    DefaultsDomains& defaultsDomains;
};

// Why the desktop cannot be used: no display, or an X display that cannot be opened.
class LinuxDesktopError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The real Linux desktop: X11 (one xcb connection) or, in a Wayland session, the compositor for
// windows, screens and the frontmost application, AT-SPI2 for other applications' element trees,
// real time on a poll() run loop.
class LinuxDesktop final : public Platform {
public:
    // display: an X display to use, nullptr to choose from the session (WindowSystemChoice). Throws
    // LinuxDesktopError without a display, or when the shipped application identifier table is
    // unreadable. Without an accessibility bus it runs on the display's facts alone and logs one
    // warning.
    static std::unique_ptr<LinuxDesktop> open(
        const LinuxDesktopStores&, JsonLinesTrace& trace, const char* display = nullptr);
    ~LinuxDesktop() override;

    // The run loop with its file-descriptor sources, for services that watch descriptors.
    PollRunLoop& pollRunLoop();
    // Why the run loop stopped: the reason given to stop(), empty while it runs.
    std::string stopReason() const;

    Accessibility& accessibility() override;
    Workspace& workspace() override;
    WindowServer& windowServer() override;
    PreferenceStore& standardUserDefaults() override;
    PreferenceStore& productPreferences() override;
    DefaultsDomains& defaultsDomains() override;
    Clock& clock() override;
    RunLoop& runLoop() override;
    ProcessLauncher& processLauncher() override;
    AnalyticsSink& analytics() override;
    Log& log() override;
    EventTrace& trace() override;
    PropertyListFiles& propertyListFiles() override;
    StandardStreams& standardStreams() override;
    PowerManagement& powerManagement() override;
    UserNotificationCenter& userNotificationCenter() override;
    TimeEntryEditor& timeEntryEditor() override;
    RunningTaskSource& runningTasks() override;
    Alerts& alerts() override;
    StatusBar& statusBar() override;
    ScriptingCommands& scriptingCommands() override;
    FileEventStreams& fileEventStreams() override;
    GlobalShortcuts& globalShortcuts() override;
    CurrentProcess currentProcess() override;
    // An XDG autostart entry for this executable.
    LoginItems& loginItems() override;
    // The identity of the file at the executable's path (device, inode, size, modification time).
    InstalledBuild installedBuild() override;
    // Starts the executable again; the standard user default LinuxDesktop_relaunchDelay, when a
    // number, replaces the delay.
    std::string relaunchScript(double delaySeconds, const CurrentProcess&) override;
    // The accessibility question names the AT-SPI bus; the system line the distribution and kernel.
    DesktopTexts desktopTexts() override;
    // From LANGUAGE, else LC_ALL, LC_MESSAGES or LANG.
    std::vector<std::string> preferredLanguages() override;

    static std::vector<std::string> languagesFromEnvironment(const char* language, const char* locale);

private:
    struct State;
    explicit LinuxDesktop(std::unique_ptr<State>);
    std::unique_ptr<State> state_;
};

} // namespace vardel::linux_desktop
