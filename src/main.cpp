// vardel-tracker: the tracker process. With VARDEL_DESKTOP it runs on the scripted desktop that the
// scenario file describes, in virtual time; otherwise on the Wayland or X11 desktop of the session.

#include "extractors/BuiltInExtractors.h"
#include "platform/JsonLinesTrace.h"
#include "platform/OwnerOnlyFiles.h"
#include "platform/Platform.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "product/AnalyticsWrapper.h"
#include "product/DataFolder.h"
#include "product/DatabaseWrapper.h"
#include "product/InfoLogger.h"
#include "product/SupportRequests.h"
#include "shell/VDHelperAppDelegate.h"

#if VARDEL_WITH_LINUX_DESKTOP
#include "platform/linux/JsonFilePreferenceStore.h"
#include "platform/linux/LinuxDesktop.h"
#include "platform/linux/MemoryPreferenceStore.h"
#include "platform/linux/PollRunLoop.h"
#include "platform/linux/RunMarker.h"
#include "platform/linux/StandardErrorLog.h"
#endif

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <sys/signalfd.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int usageErrorStatus = 2;

const char* environment(const char* name)
{
    const char* value = std::getenv(name);
    return value && *value ? value : nullptr;
}

// Where VARDEL_TRACE sends the trace: standard output for "-", else the named file opened into file;
// nullptr when no trace is asked for, nothing (said on standard error) when the file cannot be written.
std::optional<std::ostream*> requestedTrace(std::ofstream& file)
{
    const char* destination = environment("VARDEL_TRACE");
    if (!destination)
        return nullptr;
    if (std::string(destination) == "-")
        return &std::cout;
    file.open(destination, std::ios::out | std::ios::trunc);
    if (!file) {
        std::cerr << "vardel-tracker: cannot write the trace to " << destination << '\n';
        return std::nullopt;
    }
    return &file;
}

// What an older version or a looser umask left readable by others becomes the user's alone.
void restrictToOwner(const std::filesystem::path& folder)
{
    if (auto changed = vardel::OwnerOnlyFiles::tighten(folder))
        vardel::platform().log().info(
            "Made " + std::to_string(changed) + " entries in " + folder.string() + " readable by their owner only");
}

// The product's stores live in the data folder; the scenario may say the database is unavailable.
void configureProductStores(bool databaseAvailable)
{
    auto dataFolder = vardel::DataFolder::fromEnvironment(std::getenv);
    if (dataFolder) {
        restrictToOwner(*dataFolder);
        vardel::AnalyticsWrapper::sharedInstance().configure(*dataFolder);
        vardel::SupportRequests::sharedInstance().configure(*dataFolder);
    }
    if (dataFolder && databaseAvailable)
        vardel::DatabaseWrapper::sharedInstance().configure(*dataFolder);
    else
        vardel::DatabaseWrapper::sharedInstance().configureUnavailable();
}

int runTracker(vardel::Platform& platform, const std::vector<std::string>& arguments)
{
    vardel::BuiltInExtractors::install();
    vardel::InfoLogger infoLogger;
    vardel::VDHelperAppDelegate delegate(infoLogger);
    delegate.awakeFromNib(arguments);
    vardel::VDHelperAppDelegate::applicationDidFinishLaunching(arguments);
    return platform.runLoop().run();
}

// Closes the database, so that its write-ahead log is merged back before the process ends.
void finish(vardel::Platform& platform, int status, const std::string& reason)
{
    vardel::DatabaseWrapper::sharedInstance().configureUnavailable();
    platform.trace().write("exit", { { "status", status }, { "reason", reason } });
    vardel::Platform::install(nullptr);
}

int runOnScriptedDesktop(const char* scenario, const std::vector<std::string>& arguments)
{
    std::unique_ptr<vardel::scripted::ScriptedDesktop> desktop;
    try {
        desktop = vardel::scripted::ScriptedDesktop::load(scenario);
    } catch (const vardel::scripted::ScenarioError& error) {
        std::cerr << error.what() << '\n';
        return usageErrorStatus;
    }

    std::ofstream traceFile;
    auto traceStream = requestedTrace(traceFile);
    if (!traceStream)
        return usageErrorStatus;
    if (*traceStream)
        desktop->setTraceStream(*traceStream);

    vardel::Platform::install(desktop.get());
    configureProductStores(desktop->databaseAvailable());
    int status = runTracker(*desktop, arguments);
    finish(*desktop, status, desktop->stopReason());
    return status;
}

#if VARDEL_WITH_LINUX_DESKTOP
// SIGTERM and SIGINT stop the run loop, so that the tracker ends as after any other stop. Blocked
// before any thread starts, so that every thread inherits the mask and only the descriptor sees them.
int blockTerminationSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

void stopOnTerminationSignals(vardel::linux_desktop::PollRunLoop& runLoop, int signalDescriptor)
{
    if (signalDescriptor < 0)
        return;
    runLoop.addReadableSource(signalDescriptor, [&runLoop, signalDescriptor] {
        signalfd_siginfo received {};
        if (read(signalDescriptor, &received, sizeof received) == sizeof received)
            runLoop.requestTermination("signal " + std::to_string(received.ssi_signo));
    });
}

// Under a systemd user unit (INVOCATION_ID is set) the unit's Restart=on-failure starts the tracker
// again after a crash; the mark the crashed run left makes that start the crash recovery. A dump
// neither reads nor leaves a mark.
std::optional<vardel::linux_desktop::RunMarker> markRun(const std::vector<std::string>& arguments)
{
    auto path = vardel::linux_desktop::RunMarker::defaultPath(std::getenv);
    if (!path || (arguments.size() > 1 && arguments[1].starts_with("--dump")))
        return std::nullopt;
    return std::optional<vardel::linux_desktop::RunMarker>(std::in_place, *path);
}

std::vector<std::string> startArguments(
    std::vector<std::string> arguments, const std::optional<vardel::linux_desktop::RunMarker>& marker)
{
    if (marker && marker->previousRunCrashed() && environment("INVOCATION_ID") && arguments.size() == 1)
        arguments.emplace_back("--fromCrashRecovery");
    return arguments;
}

int runOnLinuxDesktop(const std::vector<std::string>& arguments)
{
    int signalDescriptor = blockTerminationSignals();
    auto start = std::chrono::steady_clock::now();
    vardel::JsonLinesTrace trace(
        [start] { return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(); });
    std::ofstream traceFile;
    auto traceStream = requestedTrace(traceFile);
    if (!traceStream)
        return usageErrorStatus;
    if (*traceStream)
        trace.setStream(*traceStream);

    vardel::linux_desktop::StandardErrorLog storeLog(trace);
    auto configuration = vardel::JsonFilePreferenceStore::configurationFolder(std::getenv);
    if (!configuration) {
        std::cerr << "vardel-tracker: neither XDG_CONFIG_HOME nor HOME names a folder for the preferences\n";
        return usageErrorStatus;
    }
    vardel::JsonFilePreferenceStore defaults(*configuration / "defaults.json", storeLog);
    vardel::JsonFilePreferenceStore preferences(*configuration / "preferences.json", storeLog);
    vardel::linux_desktop::MemoryDefaultsDomains domains(trace);
    std::unique_ptr<vardel::linux_desktop::LinuxDesktop> desktop;
    try {
        desktop = vardel::linux_desktop::LinuxDesktop::open({ defaults, preferences, domains }, trace);
    } catch (const vardel::linux_desktop::LinuxDesktopError& error) {
        std::cerr << "vardel-tracker: " << error.what() << '\n';
        return usageErrorStatus;
    }
    stopOnTerminationSignals(desktop->pollRunLoop(), signalDescriptor);

    vardel::Platform::install(desktop.get());
    restrictToOwner(*configuration);
    configureProductStores(true);
    auto marker = markRun(arguments);
    int status = runTracker(*desktop, startArguments(arguments, marker));
    finish(*desktop, status, desktop->stopReason());
    return status;
}
#endif

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> arguments(argv, argv + argc);
    vardel::OwnerOnlyFiles::restrictNewFiles();
    if (const char* scenario = environment("VARDEL_DESKTOP"))
        return runOnScriptedDesktop(scenario, arguments);
#if VARDEL_WITH_LINUX_DESKTOP
    if (environment("WAYLAND_DISPLAY") || environment("DISPLAY"))
        return runOnLinuxDesktop(arguments);
    std::cerr << "vardel-tracker: there is no desktop to track: neither WAYLAND_DISPLAY nor DISPLAY names a display; "
                 "set one, or set VARDEL_DESKTOP to a scenario file to run on the scripted desktop\n";
#else
    std::cerr << "vardel-tracker: this build has no Linux desktop backend; set VARDEL_DESKTOP to a scenario file "
                 "to run on the scripted desktop\n";
#endif
    return usageErrorStatus;
}
