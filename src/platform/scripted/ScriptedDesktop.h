#pragma once

#include "platform/Platform.h"
#include "platform/scripted/ScenarioError.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <iosfwd>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel::scripted {

// The desktop described by a scenario file, run in virtual time. It implements every platform
// service; its control surface is the scenario itself (timeline steps, answers).
class ScriptedDesktop final : public Platform {
public:
    // Throws ScenarioError.
    static std::unique_ptr<ScriptedDesktop> load(const std::filesystem::path& scenarioFile);
    // sourceName names the scenario in error messages; relative paths in it are taken relative to
    // baseDirectory. Throws ScenarioError.
    static std::unique_ptr<ScriptedDesktop> fromJson(
        std::string_view jsonText, std::string sourceName = "scenario.json", std::filesystem::path baseDirectory = {});
    ~ScriptedDesktop() override;

    // Where trace lines go (nullptr: nowhere). Events are also kept in memory when recording.
    void setTraceStream(std::ostream*);
    void setRecordingEvents(bool);
    // Where printed text goes instead of the process's standard output and standard error.
    void redirectStandardStreams(std::ostream& output, std::ostream& error);
    const std::vector<nlohmann::ordered_json>& recordedEvents() const;

    // Virtual seconds since the scenario's start.
    double elapsedSeconds() const;
    // The scenario's end, in seconds after start.
    double endSeconds() const;
    // Serves the run loop (timeline steps and timers) up to and including that virtual time,
    // without stopping the run; for tests that drive the logic step by step.
    void runUntil(double seconds);
    // Why the run loop stopped: "end" when the run reached the scenario's end, else the reason given
    // to stop(); empty while it runs.
    std::string stopReason() const;

    // An element by its scenario id, for tests.
    std::optional<AXUIElement> element(std::string_view id);

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
    FileEventStreams& fileEventStreams() override;
    CurrentProcess currentProcess() override;
    LoginItems& loginItems() override;
    // The bundle's Contents/Info.plist, read now.
    InstalledBuild installedBuild() override;
    // Opens the bundle again.
    std::string relaunchScript(double delaySeconds, const CurrentProcess&) override;
    // The product's own texts, as on the desktop it was made for.
    DesktopTexts desktopTexts() override;
    // Whether the scenario lets the product's database exist.
    bool databaseAvailable() const;
    std::vector<std::string> preferredLanguages() override;
    Alerts& alerts() override;
    StatusBar& statusBar() override;
    ScriptingCommands& scriptingCommands() override;
    GlobalShortcuts& globalShortcuts() override;
    // How the status item looks now; none before the program installed it.
    std::optional<StatusItemAppearance> statusItemAppearance() const;

private:
    struct State;
    explicit ScriptedDesktop(std::unique_ptr<State>);
    std::unique_ptr<State> state_;
};

} // namespace vardel::scripted
