// One call-detector sample with the Linux backend's call evidence: ten applications, each recording
// and playing through a PulseAudio server of the benchmark's own, so twenty running streams. The
// rest of the desktop is scripted; the streams and their mapping to applications are real.

#include "calls/RunningCallDetector.h"
#include "platform/ProcessWide.h"
#include "platform/linux/LinuxPowerManagement.h"
#include "platform/scripted/ScriptedDesktop.h"
#include "support/TestAudioServer.h"

#include <benchmark/benchmark.h>
#include <nlohmann/json.hpp>

namespace vardel {
namespace {

constexpr int callApplications = 10;

// The scripted desktop with the Linux backend's power management in place of its own.
class DesktopWithLinuxCallEvidence final : public Platform {
public:
    DesktopWithLinuxCallEvidence(scripted::ScriptedDesktop& desktop)
        : desktop_(desktop)
        , powerManagement_(desktop.workspace(), desktop.clock(), desktop.log())
    {
    }

    linux_desktop::LinuxPowerManagement& linuxPowerManagement() { return powerManagement_; }

    Accessibility& accessibility() override { return desktop_.accessibility(); }
    Workspace& workspace() override { return desktop_.workspace(); }
    WindowServer& windowServer() override { return desktop_.windowServer(); }
    PreferenceStore& standardUserDefaults() override { return desktop_.standardUserDefaults(); }
    PreferenceStore& productPreferences() override { return desktop_.productPreferences(); }
    DefaultsDomains& defaultsDomains() override { return desktop_.defaultsDomains(); }
    Clock& clock() override { return desktop_.clock(); }
    RunLoop& runLoop() override { return desktop_.runLoop(); }
    ProcessLauncher& processLauncher() override { return desktop_.processLauncher(); }
    AnalyticsSink& analytics() override { return desktop_.analytics(); }
    Log& log() override { return desktop_.log(); }
    EventTrace& trace() override { return desktop_.trace(); }
    PropertyListFiles& propertyListFiles() override { return desktop_.propertyListFiles(); }
    StandardStreams& standardStreams() override { return desktop_.standardStreams(); }
    PowerManagement& powerManagement() override { return powerManagement_; }
    UserNotificationCenter& userNotificationCenter() override { return desktop_.userNotificationCenter(); }
    TimeEntryEditor& timeEntryEditor() override { return desktop_.timeEntryEditor(); }
    RunningTaskSource& runningTasks() override { return desktop_.runningTasks(); }
    Alerts& alerts() override { return desktop_.alerts(); }
    StatusBar& statusBar() override { return desktop_.statusBar(); }
    ScriptingCommands& scriptingCommands() override { return desktop_.scriptingCommands(); }
    FileEventStreams& fileEventStreams() override { return desktop_.fileEventStreams(); }
    GlobalShortcuts& globalShortcuts() override { return desktop_.globalShortcuts(); }
    CurrentProcess currentProcess() override { return desktop_.currentProcess(); }
    LoginItems& loginItems() override { return desktop_.loginItems(); }
    InstalledBuild installedBuild() override { return desktop_.installedBuild(); }
    std::string relaunchScript(double delaySeconds, const CurrentProcess& process) override
    {
        return desktop_.relaunchScript(delaySeconds, process);
    }
    DesktopTexts desktopTexts() override { return desktop_.desktopTexts(); }
    std::vector<std::string> preferredLanguages() override { return desktop_.preferredLanguages(); }

private:
    scripted::ScriptedDesktop& desktop_;
    linux_desktop::LinuxPowerManagement powerManagement_;
};

void linuxCallDetectorSample(benchmark::State& state)
{
    ProcessWideState::resetAll();
    testing::TestAudioServer audio;
    nlohmann::json applications = nlohmann::json::array();
    for (int index = 0; index < callApplications; ++index) {
        // The application's audio runs in child processes, as a browser's does; a client the busy
        // server turned away tries again.
        pid_t application = audio.startClient({ "/bin/sh", "-c",
            "while ! paplay --raw --device=speaker /dev/zero; do sleep 0.2; done & "
            "while ! parecord --raw --device=microphone /dev/null; do sleep 0.2; done & wait" });
        applications.push_back(
            { { "pid", application }, { "bundleIdentifier", "com.example.Call" + std::to_string(index) },
                { "localizedName", "Call " + std::to_string(index) } });
    }
    auto desktop = scripted::ScriptedDesktop::fromJson(
        nlohmann::json { { "applications", applications }, { "end", 1e9 } }.dump());
    DesktopWithLinuxCallEvidence platform(*desktop);
    Platform::install(&platform);
    auto streamsRunning = [&] {
        return platform.linuxPowerManagement().copyAssertionsByProcess().assertions->size()
            == 2 * static_cast<size_t>(callApplications);
    };
    if (!testing::waitUntil(streamsRunning, std::chrono::seconds(20))) {
        size_t seen = platform.linuxPowerManagement().copyAssertionsByProcess().assertions->size();
        Platform::install(nullptr);
        return state.SkipWithError(
            ("only " + std::to_string(seen) + " of the audio clients' streams appeared").c_str());
    }
    auto& detector = RunningCallDetector::sharedInstance();
    // Virtual time moves a millisecond per sample, so that a long run never makes the streams look
    // too old to be a call.
    double second = 0;
    for (auto _ : state) {
        desktop->runUntil(second += 0.001);
        detector.updateCallStatusForActivity(nullptr, true);
    }
    if (detector.runningCallsByBundleIdentifier().size() != callApplications)
        state.SkipWithError("expected a running call in every application");
    Platform::install(nullptr);
}

BENCHMARK(linuxCallDetectorSample)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace vardel
